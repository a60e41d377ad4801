#include "disk/PartitionTable.h"

#include <stdlib.h>
#include <string.h>

#include "disk/BootRecord.h"
#include "disk/GptTable.h"
#include "disk/SectorIO.h"

namespace {

// Fields of an extended boot record that the chain reads directly.
const size_t kSlot0Count =
    PARTITION_ENTRY_BASE + PARTITION_ENTRY_COUNT_FIELD;                        // 0x1CA
const size_t kSlot1Start =
    PARTITION_ENTRY_BASE + PARTITION_ENTRY_SIZE + PARTITION_ENTRY_START;      // 0x1D6

struct Walk {
  PartitionInformation records[MAX_PARTITION_RECORDS];
  int count;
  int nextLogical;
};

// The entry of slot; an entry that does not fit the sector reads as unused.
PartitionEntry Entry(const ByteView* sector, int slot) {
  PartitionEntry entry;
  ReadPartitionEntry(sector, slot, &entry);
  return entry;
}

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
  ByteView view = MakeByteView(buffer, bps);
  return HasBootSignature(&view);
}

// Follows the extended partition that starts at sector e. Links are relative
// to e; the start kept for a logical partition is the sector of the extended
// boot record that describes it. e + link is a 32-bit sector number like the
// start it becomes: the record read is always the one the start names.
void WalkExtended(int fd, unsigned short bps, uint32_t e, unsigned char* buffer, Walk* walk) {
  if (!ReadSignedSector(fd, e, buffer, bps)) return;
  ByteView view = MakeByteView(buffer, bps);
  ByteView* sector = &view;
  int k = Entry(sector, 0).type == 0 ? 1 : 0;
  PartitionEntry slot = Entry(sector, k);
  if (!PartitionEntryUsed(&slot)) return;
  uint32_t link;
  if (PartitionEntryExtended(&slot)) {
    link = slot.start;
  } else {
    if (walk->count < MAX_PARTITION_RECORDS)
      Append(walk, static_cast<unsigned char>(walk->nextLogical++), e,
             ViewLe32(sector, kSlot0Count));
    link = ViewLe32(sector, kSlot1Start);
  }
  while (walk->count < MAX_PARTITION_RECORDS && link != 0) {
    const uint32_t at = e + link;
    if (!ReadSignedSector(fd, at, buffer, bps)) break;
    PartitionEntry first = Entry(sector, 0);
    if (!PartitionEntryUsed(&first)) break;
    Append(walk, static_cast<unsigned char>(walk->nextLogical++), at,
           ViewLe32(sector, kSlot0Count));
    link = ViewLe32(sector, kSlot1Start);
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
    ByteView mbrView = MakeByteView(mbr, bytesPerSector);
    walk->nextLogical = 5;
    for (int i = 0; i < PARTITION_ENTRY_COUNT; ++i) {
      PartitionEntry entry = Entry(&mbrView, i);
      if (!PartitionEntryUsed(&entry)) continue;
      if (PartitionEntryExtended(&entry))
        WalkExtended(fd, bytesPerSector, entry.start, ebr, walk);
      else
        Append(walk, static_cast<unsigned char>(i + 1), entry.start, entry.count);
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

int GetDiskPartitions(int fd, unsigned short bytesPerSector, uint64_t totalSectors,
                      PartitionInformation** out, int* table) {
  int count = 0;
  const int kind = GetGptPartitionInformation(fd, bytesPerSector, totalSectors, out, &count);
  if (table != NULL) *table = kind;
  if (kind == GPT_RESULT_PRIMARY || kind == GPT_RESULT_BACKUP) return count;
  return GetPartitionInformation(fd, bytesPerSector, out);
}
