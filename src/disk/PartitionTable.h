// Reading a disk's master boot record and chain of extended boot records.
#pragma once

#include "disk/DiskInformation.h"

// Most partition records one disk's walk keeps.
#define MAX_PARTITION_RECORDS 24

// Returns the number of partitions found and stores a new malloc array of
// them in *out; 0 (and *out untouched) when the boot record can't be used.
int GetPartitionInformation(int fd, unsigned short bytesPerSector, PartitionInformation** out);
