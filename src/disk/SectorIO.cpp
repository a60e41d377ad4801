#include "disk/SectorIO.h"

#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include "disk/DeviceSeam.h"

int DirectReadDisk(int fd, unsigned long sector, int count, unsigned char* buffer,
                   unsigned short bytesPerSector) {
  if (buffer == NULL || fd == -1 || count < 1 || bytesPerSector == 0) return 0;
  off64_t offset = static_cast<off64_t>(static_cast<uint64_t>(sector) * bytesPerSector);
  if (offset < 0 || g_DeviceSeam.Lseek64(fd, offset, SEEK_SET) == -1) return 0;
  ssize_t done = g_DeviceSeam.Read(fd, buffer, static_cast<size_t>(count) * bytesPerSector);
  if (done <= 0) return 0;
  return static_cast<int>(done / bytesPerSector);
}

int DirectWriteDisk(int fd, unsigned long sector, int count, unsigned char* buffer,
                    unsigned short bytesPerSector) {
  if (buffer == NULL || fd == -1 || count < 1 || bytesPerSector == 0) return 0;
  off64_t offset = static_cast<off64_t>(static_cast<uint64_t>(sector) * bytesPerSector);
  if (offset < 0 || g_DeviceSeam.Lseek64(fd, offset, SEEK_SET) == -1) return 0;
  ssize_t done = g_DeviceSeam.Write(fd, buffer, static_cast<size_t>(count) * bytesPerSector);
  if (done <= 0) return 0;
  return static_cast<int>(done / bytesPerSector);
}
