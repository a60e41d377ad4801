// Recognising FAT12/16/32 and NTFS volumes from their boot sectors and
// reading their labels, through the partition's own device node.
#pragma once

#include <stddef.h>

#include "disk/DiskInformation.h"

// Attaches a new FileSystemInformation to part (replacing an earlier one)
// and fills it. 0 when a record was attached, -1 when bytesPerSector is below
// 512 or no record could be allocated.
int DetectPartition(char* path, unsigned short bytesPerSector, PartitionInformation* part);

// bootSector holds at least one whole sector of bytesPerSector (>= 512)
// bytes. Both return 0; the verdict is fs->FsType.
int DetectFatVolume(unsigned char* bootSector, unsigned short bytesPerSector,
                    FileSystemInformation* fs, int fd);
int DetectNtVolume(unsigned char* bootSector, unsigned short bytesPerSector,
                   FileSystemInformation* fs, int fd);

// Fills fs->VolumeLabel according to fs->FsType.
void GetVolumeLabel(unsigned short bytesPerSector, FileSystemInformation* fs, int fd);

// The partition node: the disk's node followed by the partition number
// (/dev/hda5; "p" and the number after a node that ends in a digit), written
// into out (cut to size).
void PartitionNodeName(const HardDiskInformation* disk, const PartitionInformation* part,
                       char* out, size_t size);

// Recognises every partition of the inventory (attaches its
// FileSystemInformation and label) without mounting anything. Returns the
// number of partitions found to hold FAT or NTFS.
int DetectAllPartitions(MyComputer* computer);
