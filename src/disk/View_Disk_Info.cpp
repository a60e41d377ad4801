#include "disk/View_Disk_Info.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/statfs.h>

#include "disk/DeviceSeam.h"
#include "disk/DiskDiscovery.h"
#include "disk/DiskImage.h"
#include "disk/FileSystemDetect.h"
#include "disk/PrintableText.h"
#include "disk/VolumeSizeText.h"

View_Disk_Info g_AllDiskPartitionInf;

namespace {

// The mount flag word without options (MS_MGC_VAL).
const unsigned long kMountMagic = 0xC0ED0000UL;

// Copies text (or nothing when it is null) into a field of size bytes,
// cutting it to fit and always terminating it.
void CopyField(char* field, size_t size, const char* text) {
  if (size == 0) return;
  field[0] = 0;
  if (text == NULL) return;
  size_t n = strnlen(text, size - 1);
  memcpy(field, text, n);
  field[n] = 0;
}

const char* FsName(uint8_t type) {
  switch (type) {
    case FS_TYPE_FAT12: return "FAT12";
    case FS_TYPE_FAT16: return "FAT16";
    case FS_TYPE_FAT32: return "FAT32";
    case FS_TYPE_NTFS: return "NTFS";
    default: return "UNKNOWN";
  }
}

void Unrecognise(PartitionInformation* part) {
  if (part->FileSystem != NULL) part->FileSystem->FsType = FS_TYPE_UNKNOWN;
  part->DriveLetter = 0;
}

// Room for a label of up to 255 bytes, each escaped as \xNN.
const size_t kShownLabelSize = 4 * 255 + 1;

// The label as a diagnostic line shows it (a null label as empty).
const char* Shown(const char* label, char* shown) {
  EscapeControlChars(label, shown, kShownLabelSize);
  return shown;
}

// Mounts one recognised volume from source on mountPoint: NTFS through
// ntfsfix and ntfs-3g, FAT with the kernel's vfat. A read-only source (a disk
// image kept as it is) is mounted read-only and ntfsfix, which writes, is not
// run on it. True when the volume is mounted.
bool MountVolume(uint8_t type, const char* node, const char* source, const char* mountPoint,
                 bool readOnly) {
  if (type == FS_TYPE_NTFS) {
    char command[192];
    if (readOnly) {
      printf("ntfsfix skipped for %s: the disk image is read-only\n", source);
    } else {
      snprintf(command, sizeof(command), "ntfsfix %s > /dev/null 2>&1", source);
      g_DeviceSeam.System(command);
    }
    snprintf(command, sizeof(command),
             "ntfs-3g %s %s -o %sforce,locale=zh_CN.utf8,umask=007,gid=46 > /dev/null 2>&1", source,
             mountPoint, readOnly ? "ro," : "");
    if (g_DeviceSeam.System(command) != 0) {
      // ntfs-3g runs a second time and its result is ignored. The module
      // has always done this (a second chance for a failure that passes,
      // such as the device still settling after ntfsfix) and tests check
      // the sequence of shell commands, so it stays. The volume is left
      // out of the table either way and its letter goes to the next one.
      g_DeviceSeam.System(command);
      return false;
    }
    return true;
  }
  unsigned long flags = kMountMagic | (readOnly ? MS_RDONLY : 0);
  if (g_DeviceSeam.Mount(source, mountPoint, "vfat", flags, NULL) != 0) {
    // Nothing is retried for a vfat volume.
    if (errno == ENODEV)
      printf("FAT volume %s left out: this kernel has no vfat file system\n", node);
    return false;
  }
  return true;
}

// The entry among the first count whose partition node is node, or -1.
int FindVolume(const VolumeInformation* volumes, int count, const char* node) {
  for (int i = 0; i < count && i < MAX_VOLUME_COUNT; ++i) {
    if (strncmp(volumes[i].Node, node, sizeof(volumes[i].Node)) == 0) return i;
  }
  return -1;
}

bool LetterHeld(const VolumeInformation* volumes, int count, char letter) {
  for (int i = 0; i < count && i < MAX_VOLUME_COUNT; ++i) {
    if (volumes[i].DriveLetter == letter) return true;
  }
  return false;
}

}  // namespace

// The global table is constructed when the library is loaded: nothing here
// may touch a device.
View_Disk_Info::View_Disk_Info() {
  memset(m_Volume, 0, sizeof(m_Volume));
  m_Computer.DiskCount = 0;
  m_Computer.Disks = NULL;
  m_DiskCount = 0;
  m_VolumeCount = 0;
  m_InventoryFresh = 0;
}

// Volumes stay mounted unless UI_FreeMemory ran.
View_Disk_Info::~View_Disk_Info() {}

int View_Disk_Info::UI_TakeInventory() {
  // A volume in use cannot be unmounted: it stays where it is with its
  // letter, so that no other volume takes that letter (a copy to "F:" must
  // reach the same disk as before). Any other failure (already unmounted
  // from outside) drops the entry.
  int kept = 0;
  for (int i = 0; i < m_VolumeCount && i < MAX_VOLUME_COUNT; ++i) {
    if (g_DeviceSeam.Umount(m_Volume[i].MountPoint) != 0 && errno == EBUSY) {
      m_Volume[i].Busy = 1;
      if (kept != i) m_Volume[kept] = m_Volume[i];
      ++kept;
    }
  }
  for (int i = kept; i < MAX_VOLUME_COUNT; ++i) memset(&m_Volume[i], 0, sizeof(m_Volume[i]));
  m_VolumeCount = static_cast<uint16_t>(kept);
  FreeHdInfoList(&m_Computer, FreeFsInfo);
  m_DiskCount = static_cast<uint16_t>(DiskListFun(&m_Computer, 1));
  m_InventoryFresh = 1;
  return m_DiskCount;
}

int View_Disk_Info::UI_InitDevice() {
  // A second start without UI_FreeMemory in between would otherwise mount
  // every volume a second time over the first.
  if (!m_InventoryFresh) UI_TakeInventory();
  m_InventoryFresh = 0;
  char letter = 'C';
  // Volumes still in use from before keep their letters.
  const int kept = m_VolumeCount;
  if (m_Computer.Disks == NULL) return 0;
  for (int d = 0; d < m_Computer.DiskCount; ++d) {
    HardDiskInformation* disk = &m_Computer.Disks[d];
    if (disk->Partitions == NULL) continue;
    for (int p = 0; p < disk->PartitionCount; ++p) {
      PartitionInformation* part = &disk->Partitions[p];
      // EFI system, reserved, recovery and hidden partitions are listed
      // but get no letter and are never mounted.
      if (part->NoLetter) {
        part->DriveLetter = 0;
        continue;
      }
      char node[32];
      PartitionNodeName(disk, part, node, sizeof(node));
      printf("%s\n", node);  // fixed output, checked by tests: not a debugging leftover
      if (DetectPartition(node, disk->BytesPerSector, part) != 0) continue;
      FileSystemInformation* fs = part->FileSystem;
      uint8_t type = fs->FsType;
      if (type == FS_TYPE_UNKNOWN || type > FS_TYPE_NTFS) {
        part->DriveLetter = 0;
        continue;
      }
      // The volume in use that this partition still is: nothing is mounted
      // over it, and it keeps its letter.
      int same = FindVolume(m_Volume, kept, node);
      if (same >= 0) {
        part->DriveLetter = m_Volume[same].DriveLetter;
        printf("%s is in use at %s: left mounted\n", node, m_Volume[same].MountPoint);
        continue;
      }
      while (letter <= 'Z' && LetterHeld(m_Volume, kept, letter)) ++letter;
      if (letter > 'Z' || m_VolumeCount >= MAX_VOLUME_COUNT) {
        Unrecognise(part);
        continue;
      }
      char mountPoint[32];
      snprintf(mountPoint, sizeof(mountPoint), "/mnt/%c", letter);
      if (g_DeviceSeam.Mkdir(mountPoint, 0777) != 0 && errno != EEXIST) {
        Unrecognise(part);
        continue;
      }
      // A disk image's partition is mounted through a loop device; any
      // other node is its own source.
      char source[32];
      int readOnly = 0;
      int hold = -1;
      if (DiskImageMountSource(node, source, sizeof(source), &readOnly, &hold) != 0) {
        Unrecognise(part);
        continue;
      }
      bool mounted = MountVolume(type, node, source, mountPoint, readOnly != 0);
      DiskImageReleaseLoop(hold);
      if (!mounted) {
        Unrecognise(part);
        continue;
      }

      VolumeInformation* volume = &m_Volume[m_VolumeCount];
      CopyField(volume->Node, sizeof(volume->Node), node);
      volume->Busy = 0;
      volume->Removable = (disk->Flags & DISK_FLAG_REMOVABLE) ? 1 : 0;
      volume->DriveLetter = letter;
      part->DriveLetter = letter;
      CopyField(volume->MountPoint, sizeof(volume->MountPoint), mountPoint);
      volume->FsType = type;
      // The four label lines are fixed output, checked by tests: not
      // debugging leftovers. Control bytes of a label are escaped there.
      char shown[kShownLabelSize];
      if (type != FS_TYPE_NTFS) {
        printf("VolumeLable_1 = %s \n", Shown(fs->VolumeLabel, shown));
        printf("VolumeLable_2 = %s \n", Shown(volume->VolumeLabel, shown));
      }
      // An NTFS volume without a volume-name attribute gets an empty label.
      CopyField(volume->VolumeLabel, sizeof(volume->VolumeLabel), fs->VolumeLabel);
      printf("VolumeLable_11 = %s \n", Shown(fs->VolumeLabel, shown));
      printf("VolumeLable_22 = %s \n", Shown(volume->VolumeLabel, shown));
      ++letter;
      ++m_VolumeCount;
    }
  }
  // The table stays in letter order with the kept volumes among the new.
  for (int i = 1; i < m_VolumeCount; ++i) {
    VolumeInformation moving = m_Volume[i];
    int j = i;
    for (; j > 0 && m_Volume[j - 1].DriveLetter > moving.DriveLetter; --j)
      m_Volume[j] = m_Volume[j - 1];
    m_Volume[j] = moving;
  }
  return 0;
}

int View_Disk_Info::GetDiskParttionInfo() {
  for (int i = 0; i < m_VolumeCount && i < MAX_VOLUME_COUNT; ++i) {
    VolumeInformation* volume = &m_Volume[i];
    long long freeBytes = Ui_GetVolumeFreeSpace(volume->MountPoint);
    long long sizeBytes = Ui_GetVolumeSpace(volume->MountPoint);
    FormatVolumeSize(freeBytes, volume->FreeText, sizeof(volume->FreeText));
    FormatVolumeSize(sizeBytes, volume->SizeText, sizeof(volume->SizeText));
    CopyField(volume->FsName, sizeof(volume->FsName), FsName(volume->FsType));
  }
  return 0;
}

long long View_Disk_Info::Ui_GetVolumeSpace(char* path) {
  struct statfs64 info;
  memset(&info, 0, sizeof(info));
  if (path == NULL || g_DeviceSeam.Statfs64(path, &info) != 0) return -1;
  return static_cast<long long>(info.f_bsize) * static_cast<long long>(info.f_blocks);
}

long long View_Disk_Info::Ui_GetVolumeFreeSpace(char* path) {
  struct statfs64 info;
  memset(&info, 0, sizeof(info));
  if (path == NULL || g_DeviceSeam.Statfs64(path, &info) != 0) return -1;
  return static_cast<long long>(info.f_bsize) * static_cast<long long>(info.f_bfree);
}

int View_Disk_Info::GetCurrentParttionNum() { return m_VolumeCount; }

int View_Disk_Info::UI_FreeMemory() {
  UI_TakeInventory();
  return 0;
}

void View_Disk_Info::UI_Sync() { g_DeviceSeam.Sync(); }

int View_Disk_Info::BusyVolumeCount() const {
  int busy = 0;
  for (int i = 0; i < m_VolumeCount && i < MAX_VOLUME_COUNT; ++i) busy += m_Volume[i].Busy ? 1 : 0;
  return busy;
}

int View_Disk_Info::UI_DetachBusyVolumes() {
  int detached = 0, kept = 0;
  for (int i = 0; i < m_VolumeCount && i < MAX_VOLUME_COUNT; ++i) {
    if (m_Volume[i].Busy && g_DeviceSeam.Umount2(m_Volume[i].MountPoint, MNT_DETACH) == 0) {
      printf("%s detached while in use\n", m_Volume[i].MountPoint);
      ++detached;
      continue;
    }
    if (kept != i) m_Volume[kept] = m_Volume[i];
    ++kept;
  }
  for (int i = kept; i < MAX_VOLUME_COUNT; ++i) memset(&m_Volume[i], 0, sizeof(m_Volume[i]));
  m_VolumeCount = static_cast<uint16_t>(kept);
  return detached;
}
