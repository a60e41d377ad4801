#include "disk/PartitionTable.h"

#include <stdlib.h>
#include <string.h>

#include "disk/SectorIO.h"

namespace {

// Offsets inside a boot record.
const int kEntryBase = 446;
const int kEntrySize = 16;
const int kSlot0Count = 0x1CA;  // sector count of slot 0
const int kSlot1Start = 0x1D6;  // LBA start of slot 1

struct Walk {
  PartitionInformation records[MAX_PARTITION_RECORDS];
  int count;
  int nextLogical;
};

const unsigned char* Entry(const unsigned char* sector, int slot) {
  return sector + kEntryBase + kEntrySize * slot;
}

// Boot indicator 0x00 or 0x80..0xFF, and a type.
bool IsUsed(const unsigned char* entry) {
  return static_cast<signed char>(entry[0]) <= 0 && entry[4] != 0;
}

bool IsExtended(const unsigned char* entry) { return entry[4] == 0x05 || entry[4] == 0x0F; }

// The table never grows beyond its 24 records, whatever the disk holds.
void Append(Walk* walk, unsigned char number, uint32_t start, uint32_t count) {
  if (walk->count >= MAX_PARTITION_RECORDS) return;
  PartitionInformation* rec = &walk->records[walk->count++];
  rec->PartitionNumber = number;
  rec->StartSector = start;
  rec->SectorCount = count;
}

// One whole sector with the boot signature in its first 512 bytes.
bool ReadSignedSector(int fd, uint64_t sector, unsigned char* buffer, unsigned short bps) {
  if (DirectReadDisk(fd, static_cast<unsigned long>(sector), 1, buffer, bps) != 1) return false;
  return buffer[510] == 0x55 && buffer[511] == 0xAA;
}

// Follows the extended partition that starts at sector e. Links are relative
// to e; the start kept for a logical partition is the sector of the extended
// boot record that describes it. e + link is a 32-bit sector number like the
// start it becomes: the record read is always the one the start names.
void WalkExtended(int fd, unsigned short bps, uint32_t e, unsigned char* sector, Walk* walk) {
  if (!ReadSignedSector(fd, e, sector, bps)) return;
  int k = Entry(sector, 0)[4] == 0 ? 1 : 0;
  const unsigned char* slot = Entry(sector, k);
  if (!IsUsed(slot)) return;
  uint32_t link;
  if (IsExtended(slot)) {
    link = ByteToDWord(slot, 8);
  } else {
    if (walk->count < MAX_PARTITION_RECORDS)
      Append(walk, static_cast<unsigned char>(walk->nextLogical++), e,
             ByteToDWord(sector, kSlot0Count));
    link = ByteToDWord(sector, kSlot1Start);
  }
  while (walk->count < MAX_PARTITION_RECORDS && link != 0) {
    const uint32_t at = e + link;
    if (!ReadSignedSector(fd, at, sector, bps)) break;
    if (!IsUsed(Entry(sector, 0))) break;
    Append(walk, static_cast<unsigned char>(walk->nextLogical++), at,
           ByteToDWord(sector, kSlot0Count));
    link = ByteToDWord(sector, kSlot1Start);
  }
}

}  // namespace

int GetPartitionInformation(int fd, unsigned short bytesPerSector, PartitionInformation** out) {
  if (fd == -1 || out == NULL || bytesPerSector < 512) return 0;
  unsigned char* mbr = static_cast<unsigned char*>(malloc(bytesPerSector));
  unsigned char* ebr = static_cast<unsigned char*>(malloc(bytesPerSector));
  Walk* walk = static_cast<Walk*>(calloc(1, sizeof(Walk)));
  int result = 0;
  if (mbr != NULL && ebr != NULL && walk != NULL && ReadSignedSector(fd, 0, mbr, bytesPerSector)) {
    walk->nextLogical = 5;
    for (int i = 0; i < 4; ++i) {
      const unsigned char* entry = Entry(mbr, i);
      if (!IsUsed(entry)) continue;
      if (IsExtended(entry))
        WalkExtended(fd, bytesPerSector, ByteToDWord(entry, 8), ebr, walk);
      else
        Append(walk, static_cast<unsigned char>(i + 1), ByteToDWord(entry, 8),
               ByteToDWord(entry, 12));
    }
    PartitionInformation* array =
        static_cast<PartitionInformation*>(malloc(sizeof(PartitionInformation) * walk->count));
    if (array != NULL || walk->count == 0) {
      if (walk->count > 0) memcpy(array, walk->records, sizeof(PartitionInformation) * walk->count);
      *out = array;
      result = walk->count;
    }
  }
  free(walk);
  free(ebr);
  free(mbr);
  return result;
}
