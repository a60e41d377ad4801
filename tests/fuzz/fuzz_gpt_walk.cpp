// Fuzz target: the partition tables of a disk as discovery reads them, GUID
// partition table first (protective master boot record, primary and backup
// headers, CRCs, entry arrays of any declared size and count), over a disk
// made of the fuzz input (encoding in FuzzDisk.h). A disk without an end
// counts as 2^32 sectors.
#include <stdlib.h>
#include <string.h>

#include "FuzzDisk.h"
#include "disk/GptTable.h"
#include "disk/PartitionTable.h"

namespace {

FuzzDisk g_disk;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_disk.Install("gpt walk");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  g_disk.Load(data, size);
  const unsigned short bps = static_cast<unsigned short>(g_disk.SectorSize());
  const uint64_t total = g_disk.SizeBytes() != 0 ? g_disk.SizeBytes() / bps : (1ULL << 32);

  PartitionInformation* parts = nullptr;
  int table = -1;
  const int count = GetDiskPartitions(FuzzDisk::kFd, bps, total, &parts, &table);
  if (table < GPT_RESULT_NOT_GPT || table > GPT_RESULT_DAMAGED) FuzzDisk::Broken("table kind", table);
  if (count < 0 || count > MAX_PARTITION_RECORDS) FuzzDisk::Broken("record count out of range", count);
  if (count > 0 && parts == nullptr) FuzzDisk::Broken("records counted but no array", count);
  const bool gpt = table == GPT_RESULT_PRIMARY || table == GPT_RESULT_BACKUP;
  int lastNumber = 0;
  for (int i = 0; i < count; ++i) {
    const PartitionInformation& p = parts[i];
    if (p.FileSystem != nullptr) FuzzDisk::Broken("walk attached a file-system record", i);
    if (p.DriveLetter != 0) FuzzDisk::Broken("walk gave a drive letter", p.DriveLetter);
    if (!gpt) continue;
    if (p.TableKind != PARTITION_TABLE_GPT) FuzzDisk::Broken("GPT record of another kind", i);
    // Numbered by their place in the entry array: increasing, from 1.
    if (p.PartitionNumber <= lastNumber) FuzzDisk::Broken("GPT numbers not increasing", p.PartitionNumber);
    lastNumber = p.PartitionNumber;
    if (p.SectorCount == 0 || p.StartSector == 0 || p.StartSector >= total ||
        p.SectorCount > total - p.StartSector)
      FuzzDisk::Broken("GPT partition outside the disk", i);
    if (memchr(p.Name, 0, sizeof(p.Name)) == nullptr) FuzzDisk::Broken("name not terminated", i);
    if (p.NoLetter > 1) FuzzDisk::Broken("letter flag", p.NoLetter);
    if (!p.NoLetter && !GptPartitionGetsLetter(p.TypeGuid, 0))
      FuzzDisk::Broken("letter given to a type that gets none", i);
  }
  free(parts);
  g_disk.ExpectAllClosed();
  return 0;
}
