// Reading a GUID partition table (GPT): the protective master boot record,
// the header at sector 1 (or its backup in the disk's last sector when the
// first is damaged), both CRC32 checks and the partition entries, all through
// the bounded readers.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "disk/DiskInformation.h"
#include "disk/PartitionTable.h"

// Which table a disk's partitions came from.
enum {
  GPT_RESULT_NOT_GPT = 0,        // no protective entry: the MBR walk applies
  GPT_RESULT_PRIMARY = 1,        // the header at sector 1
  GPT_RESULT_BACKUP = 2,         // the primary was damaged; the backup was used
  GPT_RESULT_HYBRID = 3,         // a protective entry beside other entries: MBR walk
  GPT_RESULT_DAMAGED = 4,        // neither header nor its entries check out: MBR walk
};

// Most entries a table may declare, and most bytes its entry array may
// take; a header beyond either is damaged.
#define GPT_MAX_ENTRIES 4096
#define GPT_MAX_ENTRY_BYTES (1024 * 1024)

// The CRC32 (IEEE 802.3, as GPT uses it) of size bytes.
uint32_t GptCrc32(const unsigned char* data, size_t size);

// The GUID of 16 on-disk bytes in its usual text form
// (EBD0A0A2-B9E5-4433-87C0-68B6B72699C7) with a NUL: out holds 37 bytes.
void GptGuidText(const unsigned char* guid, char* out);

// Whether a desktop system gives a partition of this type GUID and
// attributes a drive letter: basic-data partitions do unless hidden or
// marked "no drive letter"; EFI system, reserved, recovery and every other
// type do not.
int GptPartitionGetsLetter(const unsigned char* typeGuid, uint64_t attributes);

// Reads the GPT of an open disk of totalSectors sectors of bytesPerSector.
// With GPT_RESULT_PRIMARY or GPT_RESULT_BACKUP, *out holds a new malloc
// array of *count partitions in entry order (at most MAX_PARTITION_RECORDS;
// *out is NULL when there are none); with any other result *out and *count
// are left untouched and the caller walks the master boot record.
int GetGptPartitionInformation(int fd, unsigned short bytesPerSector, uint64_t totalSectors,
                               PartitionInformation** out, int* count);

// What a master boot record (sector 0, size bytes) says about a GPT:
// GPT_RESULT_NOT_GPT (no protective entry), GPT_RESULT_HYBRID (a protective
// entry beside others) or GPT_RESULT_PRIMARY (protective only).
int GptProtectiveKind(const unsigned char* mbr, size_t size);
