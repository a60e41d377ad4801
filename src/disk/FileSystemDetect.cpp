#include "disk/FileSystemDetect.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "disk/BootRecord.h"
#include "disk/DeviceSeam.h"
#include "disk/SectorIO.h"

namespace {

const size_t kDirEntrySize = 32;
const unsigned char kLabelAttribute = 0x08;
const unsigned char kVolumeNameAttribute = 0x60;
const int kFatWindowSectors = 128;
const uint32_t kFatWindowEntries = 16384;
const uint32_t kLastDataCluster = 0x0FFFFFEF;

enum ScanResult { SCAN_GO_ON, SCAN_DONE };

// Looks through the 32-byte entries of the first 512 bytes of a directory
// sector. An entry starting with 0 ends the directory; an entry whose
// attribute byte is exactly 8 is the label (its 11 name bytes are copied).
ScanResult ScanForLabel(const unsigned char* sector, unsigned short bps, char* label) {
  ByteView view = MakeByteView(sector, bps);
  for (size_t off = 0; off + kDirEntrySize <= 512; off += kDirEntrySize) {
    const unsigned char* entry = ByteViewAt(&view, off, kDirEntrySize);
    if (entry == NULL) break;
    if (entry[0] == 0) return SCAN_DONE;
    if (entry[11] == kLabelAttribute) {
      memcpy(label, entry, 11);
      label[11] = 0;
      return SCAN_DONE;
    }
  }
  return SCAN_GO_ON;
}

void FatFixedRootLabel(unsigned short bps, FileSystemInformation* fs, int fd, char* label) {
  unsigned char* sector = static_cast<unsigned char*>(malloc(bps));
  if (sector == NULL) return;
  for (uint32_t i = 0; i < fs->RootDirSectors; ++i) {
    if (DirectReadDisk(fd, static_cast<unsigned long>(fs->RootLocation) + i, 1, sector, bps) != 1)
      break;
    if (ScanForLabel(sector, bps, label) == SCAN_DONE) break;
  }
  free(sector);
}

// Walks the root directory's cluster chain. Besides the plausibility bound
// on cluster numbers, the walk visits at most as many clusters as that bound
// allows, so a chain that loops back on itself ends.
void Fat32RootLabel(unsigned short bps, FileSystemInformation* fs, int fd, char* label) {
  unsigned char* sector = static_cast<unsigned char*>(malloc(bps));
  unsigned char* fat = static_cast<unsigned char*>(malloc(static_cast<size_t>(bps) * kFatWindowSectors));
  if (sector != NULL && fat != NULL) {
    const uint64_t bound = static_cast<uint64_t>(fs->FatSize) * 16;
    // A directory holds at most 65536 entries of 32 bytes: a root chain
    // longer than that many bytes of clusters loops, however large the FAT
    // claims to be.
    const uint64_t clusterBytes = static_cast<uint64_t>(bps) * fs->SectorsPerCluster;
    const uint64_t dirClusters =
        clusterBytes == 0 ? 0 : (65536ull * 32 + clusterBytes - 1) / clusterBytes;
    const uint64_t maxVisits = bound < dirClusters ? bound : dirClusters;
    ByteView fatView = MakeByteView(NULL, 0);  // the window read last
    uint64_t window = UINT64_MAX;
    uint64_t visited = 0;
    uint32_t cluster = fs->RootLocation;
    bool done = false;
    while (!done && cluster <= kLastDataCluster) {
      if (cluster >= bound || cluster < 2 || visited++ >= maxVisits) break;
      uint64_t first = fs->FirstDataSector + static_cast<uint64_t>(fs->SectorsPerCluster) * (cluster - 2);
      for (uint32_t j = 0; j < fs->SectorsPerCluster; ++j) {
        if (DirectReadDisk(fd, static_cast<unsigned long>(first + j), 1, sector, bps) != 1 ||
            ScanForLabel(sector, bps, label) == SCAN_DONE) {
          done = true;
          break;
        }
      }
      if (done) break;
      uint64_t index = cluster >> 14;
      if (index != window) {
        uint64_t at = fs->ReservedSectors + index * kFatWindowSectors;
        if (DirectReadDisk(fd, static_cast<unsigned long>(at), kFatWindowSectors, fat, bps) !=
            kFatWindowSectors)
          break;
        window = index;
        fatView = MakeByteView(fat, static_cast<size_t>(bps) * kFatWindowSectors);
      }
      // (cluster - index * 16384) * 4 + 3 < 65536 <= 128 * bps: inside the window.
      cluster = ViewLe32(&fatView, static_cast<size_t>((cluster - index * kFatWindowEntries) * 4));
      if (fatView.failed) break;
    }
  }
  free(fat);
  free(sector);
}

// The label of an NTFS volume: the volume-name attribute of file record 3,
// read as two sectors. Every offset taken from the record is checked against
// those two sectors before it is used.
char* NtfsLabel(unsigned short bps, FileSystemInformation* fs, int fd) {
  const size_t size = static_cast<size_t>(bps) * 2;
  unsigned char* record = static_cast<unsigned char*>(malloc(size));
  if (record == NULL) return NULL;
  char* label = NULL;
  uint64_t at = static_cast<uint64_t>(fs->RootLocation) * fs->SectorsPerCluster + 6;
  if (DirectReadDisk(fd, static_cast<unsigned long>(at), 2, record, bps) == 2) {
    ByteView view = MakeByteView(record, size);
    size_t attr = ViewU8(&view, 20);
    bool found = false;
    for (int n = 0; n < 6 && ByteViewHas(&view, attr, 1); ++n) {
      if (ViewU8(&view, attr) == kVolumeNameAttribute) {
        found = true;
        break;
      }
      if (!ByteViewHas(&view, attr + 4, 1)) break;
      attr += ViewU8(&view, attr + 4);
    }
    if (found && ByteViewHas(&view, attr + 20, 1)) {
      size_t chars = ViewU8(&view, attr + 16) / 2;
      size_t value = attr + ViewU8(&view, attr + 20);
      // Stop at the end of the two sectors.
      size_t fit = ByteViewHas(&view, value, 0) ? (size - value) / 2 : 0;
      if (chars > fit) chars = fit;
      label = static_cast<char*>(malloc(chars + 1));
      if (label != NULL) {
        for (size_t c = 0; c < chars; ++c) label[c] = static_cast<char>(ViewU8(&view, value + 2 * c));
        label[chars] = 0;
      }
    }
  }
  free(record);
  return label;
}

}  // namespace

int DetectPartition(char* path, unsigned short bytesPerSector, PartitionInformation* part) {
  if (bytesPerSector < 512 || part == NULL) return -1;
  FileSystemInformation* fs =
      static_cast<FileSystemInformation*>(calloc(1, sizeof(FileSystemInformation)));
  if (fs == NULL) return -1;
  if (part->FileSystem != NULL) FreeFsInfo(part->FileSystem);
  part->FileSystem = fs;
  if (path == NULL) return 0;

  int fd = g_DeviceSeam.Open64(path, O_RDWR | O_NONBLOCK);
  if (fd == -1) return 0;
  unsigned char* boot = static_cast<unsigned char*>(malloc(bytesPerSector));
  if (boot != NULL && DirectReadDisk(fd, 0, 1, boot, bytesPerSector) == 1) {
    ByteView view = MakeByteView(boot, bytesPerSector);
    uint8_t spc = ViewU8(&view, 13);
    bool plausible = HasBootSignature(&view) && ViewLe16(&view, 11) == bytesPerSector;
    if (plausible) {
      fs->SectorsPerCluster = spc;
      plausible = spc >= 1 && spc <= 128 && (spc & (spc - 1)) == 0;
    }
    if (plausible) {
      fs->ReservedSectors = ViewLe16(&view, 14);
      const unsigned char* oem = ByteViewAt(&view, 3, 4);
      if (oem != NULL && memcmp(oem, "NTFS", 4) == 0 && fs->ReservedSectors == 0)
        DetectNtVolume(boot, bytesPerSector, fs, fd);
      else
        DetectFatVolume(boot, bytesPerSector, fs, fd);
    }
  }
  free(boot);
  g_DeviceSeam.Close(fd);
  return 0;
}

int DetectFatVolume(unsigned char* bootSector, unsigned short bytesPerSector,
                    FileSystemInformation* fs, int fd) {
  if (bootSector == NULL || fs == NULL) return 0;
  fs->FsType = FS_TYPE_UNKNOWN;
  if (bytesPerSector < 512 || fs->SectorsPerCluster == 0) return 0;
  ByteView boot = MakeByteView(bootSector, bytesPerSector);
  unsigned int fatCount = ViewU8(&boot, 16);
  unsigned int rootEntries = ViewLe16(&boot, 17);
  fs->TotalSectors = ViewLe16(&boot, 19);
  fs->FatSize = ViewLe16(&boot, 22);
  if (rootEntries == 0 && fs->FatSize != 0) return 0;
  if (fs->TotalSectors == 0) {
    fs->TotalSectors = ViewLe32(&boot, 32);
    if (fs->TotalSectors == 0) return 0;
  }
  if (fs->FatSize == 0) {
    fs->FatSize = ViewLe32(&boot, 36);
    if (fs->FatSize == 0) return 0;
    // FAT32
    fs->SecondaryWord = ViewLe16(&boot, 48);
    fs->RootLocation = ViewLe32(&boot, 44);
    if (fs->RootLocation < 2) return 0;
    fs->FirstDataSector =
        static_cast<uint32_t>(static_cast<uint64_t>(fs->FatSize) * fatCount + fs->ReservedSectors);
    fs->FsType = FS_TYPE_FAT32;
  } else {
    uint64_t rootStart = static_cast<uint64_t>(fs->FatSize) * fatCount + fs->ReservedSectors;
    uint64_t rootSectors = (rootEntries * 32 + bytesPerSector - 1) / bytesPerSector;
    uint64_t firstData = rootStart + rootSectors;
    fs->RootLocation = static_cast<uint32_t>(rootStart);
    fs->RootDirSectors = static_cast<uint16_t>(rootSectors);
    fs->FirstDataSector = static_cast<uint32_t>(firstData);
    // A volume whose areas before the data already fill it holds no cluster.
    if (fs->TotalSectors < firstData) return 0;
    uint64_t clusters = (fs->TotalSectors - firstData) / fs->SectorsPerCluster;
    fs->FsType = clusters > 4084 ? FS_TYPE_FAT16 : FS_TYPE_FAT12;
  }
  GetVolumeLabel(bytesPerSector, fs, fd);
  return 0;
}

int DetectNtVolume(unsigned char* bootSector, unsigned short bytesPerSector,
                   FileSystemInformation* fs, int fd) {
  if (bootSector == NULL || fs == NULL) return 0;
  fs->FsType = FS_TYPE_UNKNOWN;
  ByteView boot = MakeByteView(bootSector, bytesPerSector);
  fs->TotalSectors = static_cast<uint32_t>(ViewLe64(&boot, 40));
  fs->RootLocation = static_cast<uint32_t>(ViewLe64(&boot, 48));
  fs->FatSize = static_cast<uint32_t>(ViewLe64(&boot, 56));
  fs->RootDirSectors = ViewLe16(&boot, 64);
  fs->SecondaryWord = ViewLe16(&boot, 68);
  if (fs->TotalSectors == 0 || fs->RootLocation == 0) return 0;
  unsigned int spc = fs->SectorsPerCluster;
  if (spc == 1 || spc == 2) {
    if (spc * fs->RootDirSectors != 2) return 0;
  } else if (spc >= 3) {
    if (fs->RootDirSectors != 0xF6) return 0;  // 2^10 bytes per file record
  } else {
    return 0;
  }
  fs->FsType = FS_TYPE_NTFS;
  GetVolumeLabel(bytesPerSector, fs, fd);
  return 0;
}

void GetVolumeLabel(unsigned short bytesPerSector, FileSystemInformation* fs, int fd) {
  if (fs == NULL || bytesPerSector < 512) return;
  switch (fs->FsType) {
    case FS_TYPE_FAT12:
    case FS_TYPE_FAT16:
    case FS_TYPE_FAT32: {
      char* label = static_cast<char*>(calloc(12, 1));
      if (label == NULL) return;
      free(fs->VolumeLabel);
      fs->VolumeLabel = label;
      if (fs->FsType == FS_TYPE_FAT32)
        Fat32RootLabel(bytesPerSector, fs, fd, label);
      else
        FatFixedRootLabel(bytesPerSector, fs, fd, label);
      break;
    }
    case FS_TYPE_NTFS:
      free(fs->VolumeLabel);
      fs->VolumeLabel = NtfsLabel(bytesPerSector, fs, fd);
      break;
    default:
      break;
  }
}

void PartitionNodeName(const HardDiskInformation* disk, const PartitionInformation* part,
                       char* out, size_t size) {
  if (out == NULL || size == 0) return;
  out[0] = 0;
  if (disk == NULL || part == NULL) return;
  // The device path field is not trusted to hold its terminator.
  char path[sizeof(disk->DevicePath) + 1];
  size_t n = strnlen(disk->DevicePath, sizeof(disk->DevicePath));
  memcpy(path, disk->DevicePath, n);
  path[n] = 0;
  // A node name that ends in a digit takes a "p" before the partition
  // number, as the kernel names them (/dev/sda1, /dev/vantori-image0p1).
  bool digit = n > 0 && path[n - 1] >= '0' && path[n - 1] <= '9';
  if (snprintf(out, size, digit ? "%sp%d" : "%s%d", path, part->PartitionNumber) < 0) out[0] = 0;
}

int DetectAllPartitions(MyComputer* computer) {
  if (computer == NULL || computer->Disks == NULL) return 0;
  int recognised = 0;
  for (int d = 0; d < computer->DiskCount; ++d) {
    HardDiskInformation* disk = &computer->Disks[d];
    if (disk->Partitions == NULL) continue;
    for (int p = 0; p < disk->PartitionCount; ++p) {
      PartitionInformation* part = &disk->Partitions[p];
      char node[32];
      PartitionNodeName(disk, part, node, sizeof(node));
      if (DetectPartition(node, disk->BytesPerSector, part) != 0) continue;
      if (part->FileSystem->FsType != FS_TYPE_UNKNOWN) ++recognised;
    }
  }
  return recognised;
}
