// The disk inventory: plain records filled by raw sector reads and freed with
// free(). Shared by discovery, the partition walk, file-system recognition
// and the volume table.
#pragma once

#include <stdint.h>

#define VANTORI_EXPORT __attribute__((visibility("default")))

// File-system type numbers.
enum {
  FS_TYPE_UNKNOWN = 0,
  FS_TYPE_FAT12 = 1,
  FS_TYPE_FAT16 = 2,
  FS_TYPE_FAT32 = 3,
  FS_TYPE_NTFS = 4,
};

// Disk flag bits.
enum {
  DISK_FLAG_REMOVABLE = 0x01,
  DISK_FLAG_DMA = 0x02,
  DISK_FLAG_LBA = 0x04,
};

struct FileSystemInformation {
  uint8_t FsType;              // 0 unknown, 1 FAT12, 2 FAT16, 3 FAT32, 4 NTFS
  uint8_t SectorsPerCluster;   // boot-sector byte 13
  char* VolumeLabel;           // owned malloc string, or null
  uint16_t ReservedSectors;    // word at 14
  uint32_t TotalSectors;
  uint16_t RootDirSectors;     // FAT12/16 root sectors; NTFS word at 64
  uint16_t SecondaryWord;      // FAT32 FSInfo sector; NTFS word at 68
  uint32_t RootLocation;       // FAT12/16 root start; FAT32 root cluster; NTFS MFT cluster
  uint32_t FatSize;            // FAT sectors per FAT; NTFS MFT-mirror cluster
  uint32_t FirstDataSector;
};

// Partition table kinds.
enum {
  PARTITION_TABLE_MBR = 0,
  PARTITION_TABLE_GPT = 1,
};

// Longest GPT partition name in UTF-8: 36 UTF-16 units of up to 3 bytes
// each (a surrogate pair, 2 units, gives 4), and a NUL.
#define GPT_NAME_SIZE 109

struct PartitionInformation {
  char DriveLetter;            // 'C'..'Y', or 0
  uint8_t PartitionNumber;     // MBR: 1..4 primary, 5.. logical; GPT: 1.. in entry order
  uint64_t StartSector;
  uint64_t SectorCount;
  FileSystemInformation* FileSystem;  // owned, null until recognised
  uint8_t TableKind;           // PARTITION_TABLE_*
  // A GPT partition a desktop system gives no drive letter (EFI system,
  // reserved, recovery, hidden): listed, never mounted.
  uint8_t NoLetter;
  unsigned char TypeGuid[16];  // GPT: the partition type GUID as stored
  char Name[GPT_NAME_SIZE];    // GPT: the partition name in UTF-8, NUL-terminated
};

struct HardDiskInformation {
  char DevicePath[32];         // NUL-terminated, e.g. /dev/sda or /dev/vantori-image0
  char Model[40];              // not NUL-terminated when all 40 are used
  uint8_t Flags;               // DISK_FLAG_*
  uint16_t PartitionCount;
  uint16_t BytesPerSector;
  uint16_t Heads;
  uint16_t SectorsPerTrack;
  uint32_t Cylinders;
  uint64_t TotalSectors;
  PartitionInformation* Partitions;  // malloc array, or null
  // The table the partitions came from: a GPT_RESULT_* value (GptTable.h).
  uint8_t PartitionTable;
};

struct MyComputer {
  int32_t DiskCount;
  HardDiskInformation* Disks;  // malloc array, or null
};

struct SgInformation {
  char Handle[20];             // SCSI:hh:cc:ii:ll
  char Identity[25];           // INQUIRY vendor + product and a NUL
  uint8_t Flags;               // bit 0: removable medium or USB
};

extern "C" {
VANTORI_EXPORT uint16_t ByteToWord(const unsigned char* buffer, int offset);
VANTORI_EXPORT uint32_t ByteToDWord(const unsigned char* buffer, int offset);
VANTORI_EXPORT uint64_t ByteToQWord(const unsigned char* buffer, int offset);
}

void FreeHdInfoList(MyComputer* root, void (*release)(void*));
void FreeFsInfo(void* record);
