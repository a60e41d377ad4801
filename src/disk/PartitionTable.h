// Reading a disk's master boot record and chain of extended boot records.
#pragma once

#include "disk/DiskInformation.h"

// Most partition records one disk's walk keeps.
#define MAX_PARTITION_RECORDS 24

// Returns the number of partitions found and stores a new malloc array of
// them in *out; 0 (and *out untouched) when the boot record can't be used.
int GetPartitionInformation(int fd, unsigned short bytesPerSector, PartitionInformation** out);

// A disk's partitions from the table it holds: the GUID partition table when
// the master boot record is protective (its backup header when the first is
// damaged), else the master boot record and its extended chain (also for a
// hybrid table or a GPT whose headers are both damaged). *table (when not
// NULL) receives the GPT_RESULT_* value saying which.
int GetDiskPartitions(int fd, unsigned short bytesPerSector, uint64_t totalSectors,
                      PartitionInformation** out, int* table);
