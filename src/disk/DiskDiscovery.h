// Finding the machine's hard disks through their fixed device nodes, their
// identity and geometry (the sector reads are in SectorIO.h).
#pragma once

#include "disk/DiskInformation.h"

// Most disks a discovery run keeps, of every kind together.
#define MAX_DISK_COUNT 14
// Most SCSI generic records a discovery run keeps.
#define MAX_SG_COUNT 10

// Fills root with the disks found (IDE first, then NVMe, virtio and SD/eMMC
// disks, then SCSI); with
// readPartitions 1 also reads every partition table and gives the partitions
// drive letters 'C'..'Y'. Returns the number of disks (0 leaves root's array
// as it was, null after a release).
int DiskListFun(MyComputer* root, int readPartitions);

int GetIdeHardDisk(int fd, HardDiskInformation* disk, int readPartitions);
int GetScsiHardDisk(int fd, HardDiskInformation* disk, SgInformation* sgList, int sgCount,
                    int readPartitions);

// Writes up to MAX_SG_COUNT records; returns how many.
int GetSgInfomation(SgInformation* list);

// Writes "SCSI:hh:cc:ii:ll" into out (which holds at least 20 chars; the text
// is cut to 19) and returns its length.
int GetScsiHandle(int host, int channel, int id, int lun, char* out);

// 1 when text is a USB interface name such as 1-1.2:1.0, else 0.
int IsUsbDevice(char* text);

// mode 0: geometry from the master boot record, else HDIO_GETGEO;
// mode 1: HDIO_GETGEO only; mode 2: master boot record only.
int GetDiskCHSParameter(int fd, HardDiskInformation* disk, unsigned char mode);
