#include "FuzzDisk.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "disk/DeviceSeam.h"

namespace {

FuzzDisk* g_current = nullptr;
const char* g_target = "fuzz target";

uint32_t Le32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
         static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

[[noreturn]] void Unexpected(const char* what) {
  fprintf(stderr, "fuzz disk: the disk layer called %s on a read-only path\n", what);
  abort();
}

int FuzzOpen64(const char* path, int) {
  if (path == nullptr) Unexpected("open64 with a null path");
  FuzzDisk* disk = FuzzDisk::Current();
  disk->position = 0;
  disk->openCount++;
  return FuzzDisk::kFd;
}

int FuzzClose(int fd) {
  FuzzDisk* disk = FuzzDisk::Current();
  if (fd != FuzzDisk::kFd) {  // e.g. -1 after a failed open: harmless
    errno = EBADF;
    return -1;
  }
  if (disk->openCount <= 0) Unexpected("close on a descriptor that is not open");
  disk->openCount--;
  return 0;
}

int FuzzIoctl(int fd, unsigned long request, void* arg) {
  FuzzDisk* disk = FuzzDisk::Current();
  if (fd != FuzzDisk::kFd) {
    errno = EBADF;
    return -1;
  }
  switch (request) {
    case BLKSSZGET:
      *static_cast<int*>(arg) = static_cast<int>(disk->SectorSize());
      return 0;
    case BLKGETSIZE64:
      *static_cast<uint64_t*>(arg) = disk->SizeBytes();
      return 0;
    case BLKGETSIZE:
      *static_cast<unsigned long*>(arg) = static_cast<unsigned long>(disk->SizeBytes() >> 9);
      return 0;
    case HDIO_GETGEO:
      if (disk->answerGeometry) {
        hd_geometry* geo = static_cast<hd_geometry*>(arg);
        geo->heads = 255;
        geo->sectors = 63;
        geo->cylinders = static_cast<unsigned short>(disk->SizeBytes() / disk->SectorSize() / (255 * 63));
        geo->start = 0;
        return 0;
      }
      break;
    default:
      break;
  }
  errno = ENOTTY;
  return -1;
}

off64_t FuzzLseek64(int fd, off64_t offset, int whence) {
  FuzzDisk* disk = FuzzDisk::Current();
  if (fd != FuzzDisk::kFd) {
    errno = EBADF;
    return -1;
  }
  int64_t base = whence == SEEK_SET ? 0
                 : whence == SEEK_CUR ? disk->position
                 : whence == SEEK_END ? static_cast<int64_t>(disk->SizeBytes())
                                      : -1;
  if (base < 0 || offset < 0 - base) {
    errno = EINVAL;
    return -1;
  }
  disk->position = base + offset;
  return disk->position;
}

ssize_t FuzzRead(int fd, void* buffer, size_t count) {
  FuzzDisk* disk = FuzzDisk::Current();
  if (fd != FuzzDisk::kFd) {
    errno = EBADF;
    return -1;
  }
  if (buffer == nullptr) Unexpected("read into a null buffer");
  // Touch the whole buffer the caller claims to have, so AddressSanitizer
  // sees a read that is longer than its buffer even where the device ends.
  memset(buffer, 0xA5, count);
  size_t done = disk->ReadAt(static_cast<uint64_t>(disk->position), static_cast<uint8_t*>(buffer), count);
  disk->position += static_cast<int64_t>(done);
  return static_cast<ssize_t>(done);
}

ssize_t FuzzWrite(int, const void*, size_t) { Unexpected("write"); }
int FuzzMount(const char*, const char*, const char*, unsigned long, const void*) { Unexpected("mount"); }
int FuzzUmount(const char*) { Unexpected("umount"); }
int FuzzStatfs64(const char*, struct statfs64*) { Unexpected("statfs64"); }
int FuzzMkdir(const char*, mode_t) { Unexpected("mkdir"); }
int FuzzSystem(const char*) { Unexpected("system"); }
// The disk is served to root: discovery runs whoever runs the fuzzer.
uid_t FuzzGeteuid(void) { return 0; }
int FuzzUmount2(const char*, int) { Unexpected("umount2"); }
void FuzzSync(void) { Unexpected("sync"); }

}  // namespace

void FuzzDisk::Load(const uint8_t* data, size_t size) {
  chunks_.clear();
  position = 0;
  openCount = 0;
  sectorSize_ = 512;
  options_ = 0;
  uint64_t sectors = 0;
  if (size >= 1) {
    sectorSize_ = 512u << (data[0] & 3);
    options_ = data[0] >> 2;
  }
  if (size >= 5) sectors = Le32(data + 1);
  sizeBytes_ = (sectors == 0 ? (uint64_t{1} << 32) : sectors) * sectorSize_;
  size_t at = 5;
  while (at + 4 < size) {
    uint64_t sector = Le32(data + at);
    at += 4;
    size_t take = size - at < sectorSize_ ? size - at : sectorSize_;
    chunks_[sector] = Chunk{data + at, take};
    at += take;
  }
}

size_t FuzzDisk::ReadAt(uint64_t offset, uint8_t* buffer, size_t count) const {
  if (offset >= sizeBytes_) return 0;
  if (count > sizeBytes_ - offset) count = static_cast<size_t>(sizeBytes_ - offset);
  memset(buffer, 0, count);
  const uint64_t end = offset + count;
  // Chunks that overlap [offset, end).
  auto it = chunks_.lower_bound(offset / sectorSize_);
  for (; it != chunks_.end(); ++it) {
    uint64_t chunkStart = it->first * sectorSize_;
    if (chunkStart >= end) break;
    uint64_t chunkEnd = chunkStart + it->second.size;
    uint64_t from = chunkStart > offset ? chunkStart : offset;
    uint64_t to = chunkEnd < end ? chunkEnd : end;
    if (from < to) memcpy(buffer + (from - offset), it->second.data + (from - chunkStart), to - from);
  }
  return count;
}

FuzzDisk* FuzzDisk::Current() {
  if (g_current == nullptr) Unexpected("the device table before a disk was installed");
  return g_current;
}

void FuzzDisk::Broken(const char* what, long long value) {
  fprintf(stderr, "%s: %s (%lld)\n", g_target, what, value);
  abort();
}

void FuzzDisk::ExpectAllClosed() const {
  if (openCount != 0) Broken("descriptors left open", openCount);
}

void FuzzDisk::Install(const char* target) {
  g_current = this;
  if (target != nullptr) g_target = target;
  g_DeviceSeam = DeviceSeam{FuzzOpen64, FuzzClose, FuzzIoctl, FuzzLseek64, FuzzRead, FuzzWrite,
                            FuzzMount, FuzzUmount, FuzzStatfs64, FuzzMkdir, FuzzSystem,
                            FuzzGeteuid, FuzzUmount2, FuzzSync};
}
