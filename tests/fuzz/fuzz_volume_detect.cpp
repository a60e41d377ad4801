// Fuzz target: file-system recognition and volume labels (DetectPartition,
// which runs DetectFatVolume / DetectNtVolume and GetVolumeLabel) over a
// partition made of the fuzz input (encoding in FuzzDisk.h). The partition
// is opened through its own node, so the input's sector 0 is the volume's
// boot sector. Option bits of the input's first byte: bits 2-3 choose the
// sector size the caller passes: 0 and 3 the device's, 1 one below 512
// (refused), 2 twice the device's.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "FuzzDisk.h"
#include "disk/FileSystemDetect.h"

namespace {

FuzzDisk g_disk;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_disk.Install("volume recognition");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  g_disk.Load(data, size);
  unsigned short bps = static_cast<unsigned short>(g_disk.SectorSize());
  char node[] = "/dev/sdz5";

  PartitionInformation part;
  memset(&part, 0, sizeof(part));
  part.PartitionNumber = 5;
  switch (g_disk.Options() & 3) {
    case 1:
      if (DetectPartition(node, 511, &part) != -1) FuzzDisk::Broken("sector size below 512 accepted", 511);
      if (part.FileSystem != nullptr) FuzzDisk::Broken("record attached for a refused sector size", 511);
      return 0;
    case 2:
      bps = static_cast<unsigned short>(bps * 2);
      break;
    default:
      break;
  }
  if (DetectPartition(node, bps, &part) != 0) FuzzDisk::Broken("DetectPartition failed", bps);
  const FileSystemInformation* fs = part.FileSystem;
  if (fs == nullptr) FuzzDisk::Broken("no file-system record attached", 0);
  if (fs->FsType > FS_TYPE_NTFS) FuzzDisk::Broken("file-system type", fs->FsType);
  if (fs->FsType != FS_TYPE_UNKNOWN) {
    unsigned spc = fs->SectorsPerCluster;
    if (spc < 1 || spc > 128 || (spc & (spc - 1)) != 0) FuzzDisk::Broken("sectors per cluster", spc);
  }
  if (fs->VolumeLabel != nullptr) {
    // strlen runs over the allocation under AddressSanitizer if the label
    // is not terminated inside it.
    size_t len = strlen(fs->VolumeLabel);
    if (fs->FsType == FS_TYPE_UNKNOWN) FuzzDisk::Broken("label on an unrecognised volume", static_cast<long long>(len));
    if (fs->FsType != FS_TYPE_NTFS && len > 11) FuzzDisk::Broken("FAT label longer than 11", static_cast<long long>(len));
    if (fs->FsType == FS_TYPE_NTFS && len > 127) FuzzDisk::Broken("NTFS label longer than 127", static_cast<long long>(len));
  } else if (fs->FsType >= FS_TYPE_FAT12 && fs->FsType <= FS_TYPE_FAT32) {
    FuzzDisk::Broken("FAT volume without a label buffer", fs->FsType);
  }
  // A second recognition replaces the first record.
  if (DetectPartition(node, bps, &part) != 0) FuzzDisk::Broken("second DetectPartition failed", bps);
  FreeFsInfo(part.FileSystem);
  g_disk.ExpectAllClosed();
  return 0;
}
