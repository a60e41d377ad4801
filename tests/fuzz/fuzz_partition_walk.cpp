// Fuzz target: the partition table walk (master boot record and extended boot
// record chains) and the geometry taken from the master boot record, over a
// disk made of the fuzz input (encoding in FuzzDisk.h). Option bits of the
// input's first byte: bits 2-3 the geometry mode (0..3; 3 is refused),
// bit 4 makes HDIO_GETGEO answer.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "FuzzDisk.h"
#include "disk/DiskDiscovery.h"
#include "disk/PartitionTable.h"

namespace {

FuzzDisk g_disk;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_disk.Install("partition walk");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  g_disk.Load(data, size);
  g_disk.answerGeometry = (g_disk.Options() & 4) != 0;
  const unsigned short bps = static_cast<unsigned short>(g_disk.SectorSize());

  PartitionInformation* parts = nullptr;
  int count = GetPartitionInformation(FuzzDisk::kFd, bps, &parts);
  if (count < 0 || count > MAX_PARTITION_RECORDS) FuzzDisk::Broken("record count out of range", count);
  if (count > 0 && parts == nullptr) FuzzDisk::Broken("records counted but no array", count);
  int lastLogical = 4;
  for (int i = 0; i < count; ++i) {
    const PartitionInformation& p = parts[i];
    if (p.PartitionNumber == 0) FuzzDisk::Broken("partition number 0", i);
    if (p.PartitionNumber >= 5) {
      // Logical partitions are numbered 5, 6, ... in chain order.
      if (p.PartitionNumber != lastLogical + 1) FuzzDisk::Broken("logical numbers not consecutive", p.PartitionNumber);
      lastLogical = p.PartitionNumber;
    }
    if (p.FileSystem != nullptr) FuzzDisk::Broken("walk attached a file-system record", i);
    if (p.DriveLetter != 0) FuzzDisk::Broken("walk gave a drive letter", p.DriveLetter);
  }
  free(parts);

  HardDiskInformation disk;
  memset(&disk, 0, sizeof(disk));
  unsigned char mode = static_cast<unsigned char>(g_disk.Options() & 3);
  int rc = GetDiskCHSParameter(FuzzDisk::kFd, &disk, mode);
  if (rc == 0) {
    if (disk.BytesPerSector != bps) FuzzDisk::Broken("bytes per sector", disk.BytesPerSector);
    if (disk.SectorsPerTrack < 1 || disk.SectorsPerTrack > 63) FuzzDisk::Broken("sectors per track", disk.SectorsPerTrack);
    if (disk.Heads < 1 || disk.Heads > 256) FuzzDisk::Broken("heads", disk.Heads);
    uint32_t expect = static_cast<uint32_t>(disk.TotalSectors / (static_cast<uint32_t>(disk.Heads) * disk.SectorsPerTrack));
    if (disk.Cylinders != expect) FuzzDisk::Broken("cylinders", disk.Cylinders);
  } else if (rc != -1) {
    FuzzDisk::Broken("geometry result", rc);
  }
  g_disk.ExpectAllClosed();
  return 0;
}
