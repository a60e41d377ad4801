// Disk image files taken as disks: a raw dump of a disk (or a disk's block
// device itself) given with --image joins the inventory after the machine's
// own disks, under a device path the layer names ("/dev/vantori-image0",
// partitions "/dev/vantori-image0p1"). Those paths exist only in the device
// table: the image table below serves them from the file, and the volumes
// are mounted through loop devices made for the partition's stretch of the
// file, read-only unless the image was given as writable.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "disk/DiskInformation.h"

#define MAX_DISK_IMAGES 8

// The device path format of image number n.
#define DISK_IMAGE_PATH_FORMAT "/dev/vantori-image%d"

struct DiskImageInformation {
  char FilePath[4096];
  uint8_t Usb;            // shown as a removable (USB) disk
  uint8_t Writable;       // ",rw": volumes mounted read-write, ntfsfix runs
  uint16_t SectorSize;    // 512, or 4096 with ",4096"
  uint64_t Bytes;         // the file's size when it was added
};

// Adds one image from an option "FILE[,usb][,rw][,4096]" (the words after
// the last commas, in any order). The file must open for reading and hold at
// least one sector. Returns 0, or -1 with a message on standard error.
int AddDiskImage(const char* option);
// Adds every "--image FILE..." and "--image=FILE..." of a command line
// (other arguments are left alone). Returns the number added, or -1 at the
// first option that cannot be added.
int AddDiskImagesFromArgs(int argc, char** argv);
// Forgets every image and gives the device table back its entries from
// before the first image was added.
void ClearDiskImages(void);
int DiskImageCount(void);
// The image with this number, or null.
const DiskImageInformation* DiskImageAt(int index);

// Called by discovery after an image's partition walk: the partition nodes
// of that image (number, where its volume starts, its length in sectors) can
// be opened from then on.
void DiskImageClearPartitions(int index);
void DiskImageAddPartition(int index, int number, uint64_t startSector, uint64_t sectorCount);

// For a partition node the volume table is about to mount: when it is an
// image's partition, attaches a loop device to that partition's stretch of
// the file (read-only unless the image is writable) and writes the loop
// node into source; *holdFd keeps the loop device until the mount holds it
// (give it to DiskImageReleaseLoop after mounting: the loop device is then
// released by itself when the volume is unmounted). For any other node,
// source is the node itself and *holdFd is -1. *readOnly tells whether the
// volume must be mounted read-only. Returns 0, or -1 when no loop device
// could be attached (a message says why).
int DiskImageMountSource(const char* node, char* source, size_t size, int* readOnly,
                         int* holdFd);
void DiskImageReleaseLoop(int holdFd);
