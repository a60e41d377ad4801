#include "disk/DiskImage.h"

#include <errno.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <linux/loop.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "disk/DeviceSeam.h"

namespace {

// Partitions of one image as its partition walk found them.
const int kMaxImagePartitions = 128;
struct ImagePartition {
  int number;
  uint64_t startSector;
  uint64_t sectorCount;
};
struct ImageEntry {
  DiskImageInformation info;
  ImagePartition parts[kMaxImagePartitions];
  int partCount;
};
ImageEntry s_images[MAX_DISK_IMAGES];
int s_imageCount = 0;

// An image node opened through the table: reads and writes are mapped into
// the node's stretch of the file and never leave it.
const int kMaxOpenNodes = 64;
struct OpenNode {
  int fd;  // -1 when the slot is free
  int image;
  uint64_t base;
  uint64_t length;
  uint64_t position;
  bool writable;
};
OpenNode s_open[kMaxOpenNodes];

// The table the image nodes sit on: everything that is not an image node
// goes there (the real calls, or a test double installed before).
DeviceSeam s_lower;
bool s_installed = false;

OpenNode* FindOpen(int fd) {
  if (fd < 0) return NULL;
  for (int i = 0; i < kMaxOpenNodes; ++i) {
    if (s_open[i].fd == fd) return &s_open[i];
  }
  return NULL;
}

// Parses an image node path: *image gets the image number, *part the
// partition number (0 for the whole disk). Returns true for an image node.
bool ParseNode(const char* path, int* image, int* part) {
  static const char kPrefix[] = "/dev/vantori-image";
  if (path == NULL || strncmp(path, kPrefix, sizeof(kPrefix) - 1) != 0) return false;
  const char* p = path + sizeof(kPrefix) - 1;
  if (*p < '0' || *p > '9') return false;
  int n = 0;
  while (*p >= '0' && *p <= '9' && n < 1000) n = n * 10 + (*p++ - '0');
  int k = 0;
  if (*p == 'p') {
    ++p;
    if (*p < '1' || *p > '9') return false;
    while (*p >= '0' && *p <= '9' && k < 100000) k = k * 10 + (*p++ - '0');
  }
  if (*p != 0) return false;
  *image = n;
  *part = k;
  return true;
}

// The stretch of the image file a node covers; false when the node does not
// exist (no such image or partition, or a partition beyond the file).
bool NodeStretch(int image, int part, uint64_t* base, uint64_t* length) {
  if (image < 0 || image >= s_imageCount) return false;
  const ImageEntry& entry = s_images[image];
  if (part == 0) {
    *base = 0;
    *length = entry.info.Bytes;
    return true;
  }
  for (int i = 0; i < entry.partCount; ++i) {
    if (entry.parts[i].number != part) continue;
    uint64_t sector = entry.info.SectorSize;
    uint64_t start = entry.parts[i].startSector * sector;
    uint64_t bytes = entry.parts[i].sectorCount * sector;
    if (start >= entry.info.Bytes) return false;
    if (bytes > entry.info.Bytes - start) bytes = entry.info.Bytes - start;
    *base = start;
    *length = bytes;
    return true;
  }
  return false;
}

int ImageOpen64(const char* path, int flags) {
  int image = 0, part = 0;
  if (!ParseNode(path, &image, &part)) return s_lower.Open64(path, flags);
  uint64_t base = 0, length = 0;
  if (!NodeStretch(image, part, &base, &length)) {
    errno = ENOENT;
    return -1;
  }
  int slot = -1;
  for (int i = 0; i < kMaxOpenNodes && slot < 0; ++i) {
    if (s_open[i].fd == -1) slot = i;
  }
  if (slot < 0) {
    errno = EMFILE;
    return -1;
  }
  const DiskImageInformation& info = s_images[image].info;
  bool wantsWrite = (flags & O_ACCMODE) != O_RDONLY;
  // The disk layer opens disks read-write out of habit; an image that is
  // evidence is opened read-only whatever is asked, and refuses writes.
  int fd = s_lower.Open64(info.FilePath, info.Writable && wantsWrite ? O_RDWR : O_RDONLY);
  if (fd == -1) return -1;
  s_open[slot].fd = fd;
  s_open[slot].image = image;
  s_open[slot].base = base;
  s_open[slot].length = length;
  s_open[slot].position = 0;
  s_open[slot].writable = info.Writable && wantsWrite;
  return fd;
}

int ImageClose(int fd) {
  OpenNode* node = FindOpen(fd);
  if (node != NULL) node->fd = -1;
  return s_lower.Close(fd);
}

off64_t ImageLseek64(int fd, off64_t offset, int whence) {
  OpenNode* node = FindOpen(fd);
  if (node == NULL) return s_lower.Lseek64(fd, offset, whence);
  int64_t from;
  switch (whence) {
    case SEEK_SET: from = 0; break;
    case SEEK_CUR: from = static_cast<int64_t>(node->position); break;
    case SEEK_END: from = static_cast<int64_t>(node->length); break;
    default: errno = EINVAL; return -1;
  }
  if ((offset > 0 && from > INT64_MAX - offset) || from + offset < 0) {
    errno = EINVAL;
    return -1;
  }
  node->position = static_cast<uint64_t>(from + offset);
  return static_cast<off64_t>(node->position);
}

// Moves the file to the node's current position and returns how many of
// count bytes lie inside the node from there (0 at or past its end).
ssize_t Transfer(OpenNode* node, size_t count, bool write, void* buffer) {
  if (node->position >= node->length) return 0;
  uint64_t left = node->length - node->position;
  size_t n = count < left ? count : static_cast<size_t>(left);
  uint64_t at = node->base + node->position;
  if (at > static_cast<uint64_t>(INT64_MAX) ||
      s_lower.Lseek64(node->fd, static_cast<off64_t>(at), SEEK_SET) == -1)
    return -1;
  ssize_t done = write ? s_lower.Write(node->fd, buffer, n) : s_lower.Read(node->fd, buffer, n);
  if (done > 0) node->position += static_cast<uint64_t>(done);
  return done;
}

ssize_t ImageRead(int fd, void* buffer, size_t count) {
  OpenNode* node = FindOpen(fd);
  if (node == NULL) return s_lower.Read(fd, buffer, count);
  return Transfer(node, count, false, buffer);
}

ssize_t ImageWrite(int fd, const void* buffer, size_t count) {
  OpenNode* node = FindOpen(fd);
  if (node == NULL) return s_lower.Write(fd, buffer, count);
  if (!node->writable) {
    errno = EROFS;
    return -1;
  }
  return Transfer(node, count, true, const_cast<void*>(buffer));
}

// The answers a disk (or partition) of the node's size gives.
int ImageIoctl(int fd, unsigned long request, void* arg) {
  OpenNode* node = FindOpen(fd);
  if (node == NULL) return s_lower.Ioctl(fd, request, arg);
  const DiskImageInformation& info = s_images[node->image].info;
  switch (request) {
    case BLKSSZGET:
      *static_cast<int*>(arg) = info.SectorSize;
      return 0;
    case BLKGETSIZE64:
      *static_cast<uint64_t*>(arg) = node->length;
      return 0;
    case BLKGETSIZE:
      *static_cast<unsigned long*>(arg) = static_cast<unsigned long>(node->length / 512);
      return 0;
    case HDIO_GETGEO: {
      struct hd_geometry* geo = static_cast<struct hd_geometry*>(arg);
      uint64_t cylinders = node->length / 512 / (255 * 63);
      geo->heads = 255;
      geo->sectors = 63;
      geo->cylinders = static_cast<unsigned short>(cylinders > 0xFFFF ? 0xFFFF : cylinders);
      geo->start = static_cast<unsigned long>(node->base / 512);
      return 0;
    }
    default:
      // No identity, no SCSI, no drive status: an image is a plain disk.
      errno = ENOTTY;
      return -1;
  }
}

void InstallImageTable() {
  if (s_installed) return;
  // Nodes still open from an earlier set of images are served no more.
  for (int i = 0; i < kMaxOpenNodes; ++i) s_open[i].fd = -1;
  s_lower = g_DeviceSeam;
  g_DeviceSeam.Open64 = ImageOpen64;
  g_DeviceSeam.Close = ImageClose;
  g_DeviceSeam.Ioctl = ImageIoctl;
  g_DeviceSeam.Lseek64 = ImageLseek64;
  g_DeviceSeam.Read = ImageRead;
  g_DeviceSeam.Write = ImageWrite;
  s_installed = true;
}

bool EndsWith(const char* text, size_t len, const char* word) {
  size_t n = strlen(word);
  return len > n && text[len - n - 1] == ',' && strncmp(text + len - n, word, n) == 0;
}

}  // namespace

int AddDiskImage(const char* option) {
  if (option == NULL || option[0] == 0) {
    fprintf(stderr, "Vantori: --image needs a file name\n");
    return -1;
  }
  if (s_imageCount >= MAX_DISK_IMAGES) {
    fprintf(stderr, "Vantori: at most %d disk images can be opened\n", MAX_DISK_IMAGES);
    return -1;
  }
  ImageEntry* entry = &s_images[s_imageCount];
  memset(entry, 0, sizeof(*entry));
  DiskImageInformation* info = &entry->info;
  info->SectorSize = 512;
  size_t len = strlen(option);
  for (;;) {
    if (EndsWith(option, len, "usb")) {
      info->Usb = 1;
      len -= 4;
    } else if (EndsWith(option, len, "rw")) {
      info->Writable = 1;
      len -= 3;
    } else if (EndsWith(option, len, "4096")) {
      info->SectorSize = 4096;
      len -= 5;
    } else {
      break;
    }
  }
  if (len == 0 || len >= sizeof(info->FilePath)) {
    fprintf(stderr, "Vantori: no usable file name in --image %s\n", option);
    return -1;
  }
  memcpy(info->FilePath, option, len);
  info->FilePath[len] = 0;

  InstallImageTable();
  int fd = s_lower.Open64(info->FilePath, O_RDONLY);
  if (fd == -1) {
    fprintf(stderr, "Vantori: cannot open the disk image %s: %s\n", info->FilePath,
            strerror(errno));
    return -1;
  }
  unsigned char probe[512];
  off64_t end = s_lower.Lseek64(fd, 0, SEEK_END);
  bool readable = end >= static_cast<off64_t>(info->SectorSize) &&
                  s_lower.Lseek64(fd, 0, SEEK_SET) == 0 &&
                  s_lower.Read(fd, probe, sizeof(probe)) == static_cast<ssize_t>(sizeof(probe));
  int savedErrno = errno;
  s_lower.Close(fd);
  if (!readable) {
    fprintf(stderr, "Vantori: %s is not a disk image (%s)\n", info->FilePath,
            end >= 0 && end < static_cast<off64_t>(info->SectorSize) ? "smaller than one sector"
                                                                   : strerror(savedErrno));
    return -1;
  }
  info->Bytes = static_cast<uint64_t>(end);
  ++s_imageCount;
  return 0;
}

int AddDiskImagesFromArgs(int argc, char** argv) {
  int added = 0;
  for (int i = 1; i < argc && argv != NULL; ++i) {
    const char* arg = argv[i];
    if (arg == NULL) continue;
    const char* value = NULL;
    if (strcmp(arg, "--image") == 0) {
      if (i + 1 >= argc) {
        fprintf(stderr, "Vantori: --image needs a file name\n");
        return -1;
      }
      value = argv[++i];
    } else if (strncmp(arg, "--image=", 8) == 0) {
      value = arg + 8;
    } else {
      continue;
    }
    if (AddDiskImage(value) != 0) return -1;
    ++added;
  }
  return added;
}

void ClearDiskImages(void) {
  memset(s_images, 0, sizeof(s_images));
  s_imageCount = 0;
  // The table goes back to what it was before the first image, unless
  // someone replaced its entries since.
  if (s_installed && g_DeviceSeam.Open64 == ImageOpen64) {
    g_DeviceSeam.Open64 = s_lower.Open64;
    g_DeviceSeam.Close = s_lower.Close;
    g_DeviceSeam.Ioctl = s_lower.Ioctl;
    g_DeviceSeam.Lseek64 = s_lower.Lseek64;
    g_DeviceSeam.Read = s_lower.Read;
    g_DeviceSeam.Write = s_lower.Write;
  }
  s_installed = false;
}

int DiskImageCount(void) { return s_imageCount; }

const DiskImageInformation* DiskImageAt(int index) {
  if (index < 0 || index >= s_imageCount) return NULL;
  return &s_images[index].info;
}

void DiskImageClearPartitions(int index) {
  if (index >= 0 && index < s_imageCount) s_images[index].partCount = 0;
}

void DiskImageAddPartition(int index, int number, uint64_t startSector, uint64_t sectorCount) {
  if (index < 0 || index >= s_imageCount) return;
  ImageEntry* entry = &s_images[index];
  if (entry->partCount >= kMaxImagePartitions) return;
  ImagePartition* p = &entry->parts[entry->partCount++];
  p->number = number;
  p->startSector = startSector;
  p->sectorCount = sectorCount;
}

int DiskImageMountSource(const char* node, char* source, size_t size, int* readOnly,
                         int* holdFd) {
  *holdFd = -1;
  *readOnly = 0;
  int image = 0, part = 0;
  uint64_t base = 0, length = 0;
  if (!ParseNode(node, &image, &part)) {
    snprintf(source, size, "%s", node);
    return 0;
  }
  if (part == 0 || !NodeStretch(image, part, &base, &length)) {
    printf("no loop device for %s: no such partition\n", node);
    return -1;
  }
  const DiskImageInformation& info = s_images[image].info;
  *readOnly = info.Writable ? 0 : 1;
  int fileFd = g_DeviceSeam.Open64(info.FilePath, info.Writable ? O_RDWR : O_RDONLY);
  if (fileFd == -1) {
    printf("no loop device for %s: cannot open %s: %s\n", node, info.FilePath, strerror(errno));
    return -1;
  }
  // A free loop device can be taken by another program between the query
  // and the attach: ask again a few times.
  int loopFd = -1;
  int attachErrno = 0;
  for (int attempt = 0; attempt < 5 && loopFd == -1; ++attempt) {
    int control = g_DeviceSeam.Open64("/dev/loop-control", O_RDWR);
    int number = control == -1 ? -1 : g_DeviceSeam.Ioctl(control, LOOP_CTL_GET_FREE, NULL);
    attachErrno = errno;
    if (control != -1) g_DeviceSeam.Close(control);
    if (number < 0) break;
    char loopPath[32];
    snprintf(loopPath, sizeof(loopPath), "/dev/loop%d", number);
    int fd = g_DeviceSeam.Open64(loopPath, info.Writable ? O_RDWR : O_RDONLY);
    if (fd == -1) {
      attachErrno = errno;
      break;
    }
    struct loop_config config;
    memset(&config, 0, sizeof(config));
    config.fd = static_cast<uint32_t>(fileFd);
    config.block_size = info.SectorSize;
    config.info.lo_offset = base;
    config.info.lo_sizelimit = length;
    // Released by the kernel when the last user (the mount) lets go.
    config.info.lo_flags = LO_FLAGS_AUTOCLEAR | (info.Writable ? 0 : LO_FLAGS_READ_ONLY);
    snprintf(reinterpret_cast<char*>(config.info.lo_file_name), LO_NAME_SIZE, "%s", node);
    int rc = g_DeviceSeam.Ioctl(fd, LOOP_CONFIGURE, &config);
    if (rc != 0 && (errno == EINVAL || errno == ENOTTY)) {
      // Kernels before 5.8 know only the two-step attach.
      rc = g_DeviceSeam.Ioctl(fd, LOOP_SET_FD, reinterpret_cast<void*>(static_cast<long>(fileFd)));
      if (rc == 0) {
        rc = g_DeviceSeam.Ioctl(fd, LOOP_SET_STATUS64, &config.info);
        if (rc != 0) g_DeviceSeam.Ioctl(fd, LOOP_CLR_FD, NULL);
      }
    }
    attachErrno = errno;
    if (rc == 0) {
      loopFd = fd;
      snprintf(source, size, "%s", loopPath);
    } else {
      g_DeviceSeam.Close(fd);
      if (attachErrno != EBUSY) break;
    }
  }
  g_DeviceSeam.Close(fileFd);
  if (loopFd == -1) {
    printf("no loop device for %s: %s\n", node, strerror(attachErrno));
    return -1;
  }
  *holdFd = loopFd;
  return 0;
}

void DiskImageReleaseLoop(int holdFd) {
  if (holdFd != -1) g_DeviceSeam.Close(holdFd);
}
