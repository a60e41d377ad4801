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
};

class View_Disk_Info {
 public:
  View_Disk_Info();
  ~View_Disk_Info();

  int UI_InitDevice();
  int GetDiskParttionInfo();
  long long Ui_GetVolumeSpace(char* path);
  long long Ui_GetVolumeFreeSpace(char* path);
  int GetCurrentParttionNum();
  int UI_FreeMemory();

  VolumeInformation m_Volume[MAX_VOLUME_COUNT];
  MyComputer m_Computer;
  uint16_t m_DiskCount;
  uint16_t m_VolumeCount;
};

extern View_Disk_Info g_AllDiskPartitionInf;
