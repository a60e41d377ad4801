// The volume table the user sees: every recognised FAT or NTFS volume mounted
// under /mnt/<letter>, with its drive letter, label and size texts.
#pragma once

#include <stddef.h>

#include "disk/DiskInformation.h"
#include "disk/FileSystemDetect.h"
#include "disk/VolumeSizeText.h"

#define MAX_VOLUME_COUNT 26

struct VolumeInformation {
  char MountPoint[32];         // e.g. /mnt/C
  char DriveLetter;            // 'C'..'Z'
  uint8_t Removable;           // 1 removable medium or USB
  uint8_t FsType;              // FS_TYPE_*
  char FsName[16];             // "FAT12", "FAT16", "FAT32", "NTFS", "UNKNOWN"
  char VolumeLabel[32];
  char FreeText[16];           // e.g. "12.3 GB" or "900 MB"
  char SizeText[16];
  char Node[32];               // the partition node it was found at
  uint8_t Busy;                // 1: its unmount failed, it is in use and stays mounted
};

class View_Disk_Info {
 public:
  // Opens no device: the inventory is taken when it is first asked for
  // (UI_TakeInventory, UI_InitDevice or UI_FreeMemory).
  View_Disk_Info();
  ~View_Disk_Info();

  // Unmounts the volumes of the table, frees the inventory and takes it
  // anew (without recognising or mounting anything). Without root rights
  // the new inventory is empty and no device is opened. A volume that is in
  // use (its unmount fails with EBUSY) stays mounted and keeps its entry and
  // letter, marked Busy. Returns the number of disks found.
  int UI_TakeInventory();
  // Recognises and mounts the volumes of a fresh inventory; an inventory
  // that was already used (or none yet) is first taken anew, so the volumes
  // an earlier call mounted are unmounted before anything is mounted again.
  int UI_InitDevice();
  int GetDiskParttionInfo();
  long long Ui_GetVolumeSpace(char* path);
  long long Ui_GetVolumeFreeSpace(char* path);
  int GetCurrentParttionNum();
  // Unmounts everything and takes the inventory anew (UI_TakeInventory).
  int UI_FreeMemory();
  // Writes every file system's cached data to its disk.
  void UI_Sync();
  // The number of volumes in use (Busy) in the table.
  int BusyVolumeCount() const;
  // Detaches the volumes in use lazily (MNT_DETACH): they leave /mnt now and
  // are released by the system when their last user lets go. Their entries
  // go. Returns how many were detached.
  int UI_DetachBusyVolumes();

  VolumeInformation m_Volume[MAX_VOLUME_COUNT];
  MyComputer m_Computer;
  uint16_t m_DiskCount;
  uint16_t m_VolumeCount;
  // 1 from UI_TakeInventory until UI_InitDevice mounts from the inventory.
  uint8_t m_InventoryFresh;
};

extern View_Disk_Info g_AllDiskPartitionInf;
