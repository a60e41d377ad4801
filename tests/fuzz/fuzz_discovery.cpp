// Fuzz target: disk discovery (DiskListFun with the IDE, NVMe, virtio, SD/eMMC
// and SCSI probes, the
// SCSI generic list, geometry and the partition walks) against device nodes
// whose answers come from the fuzz input.
//
// Input: 2 bytes (little-endian) L, then L bytes of answers, then a disk in
// the encoding of FuzzDisk.h that every node that opens reads from. The
// answers are taken in the order the disk layer asks:
//   open                    1 byte: bit 0 set opens the node
//   CDROM_DRIVE_STATUS      1 byte: bit 1 set answers (an optical drive)
//   any other ioctl         1 byte: bit 0 set answers; then its data:
//     HDIO_GET_IDENTITY     128 bytes (the rest of the 512 are zero)
//     SCSI_IOCTL_GET_BUS_NUMBER 4, SCSI_IOCTL_GET_IDLUN 8,
//     SG_GET_SCSI_ID        sizeof(sg_scsi_id),
//     SG_IO                 as many bytes as the request asks for,
//     SCSI_IOCTL_GET_PCI    20 (the kernel copies at most 20, no NUL),
//     NVME_IOCTL_ADMIN_CMD  the first 64 bytes of the identify data,
//     BLKSSZGET 4, BLKGETSIZE64 8, BLKGETSIZE 8, HDIO_GETGEO 4
// When the answers run out, every further byte reads as zero.
#include <errno.h>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <linux/nvme_ioctl.h>
#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "FuzzDisk.h"
#include "disk/DeviceSeam.h"
#include "disk/ScsiIoctl.h"
#include "disk/DiskDiscovery.h"
#include "disk/PartitionTable.h"


namespace {

FuzzDisk g_disk;
const uint8_t* g_answers = nullptr;
size_t g_answerSize = 0;
size_t g_answerAt = 0;

uint8_t NextByte() { return g_answerAt < g_answerSize ? g_answers[g_answerAt++] : 0; }

void NextBytes(void* out, size_t count) {
  uint8_t* p = static_cast<uint8_t*>(out);
  for (size_t i = 0; i < count; ++i) p[i] = NextByte();
}

int AnswerOpen64(const char* path, int) {
  if (path == nullptr) FuzzDisk::Broken("open of a null path", 0);
  if ((NextByte() & 1) == 0) {
    errno = ENXIO;
    return -1;
  }
  g_disk.position = 0;
  g_disk.openCount++;
  return FuzzDisk::kFd;
}

int AnswerIoctl(int fd, unsigned long request, void* arg) {
  if (fd != FuzzDisk::kFd) {
    errno = EBADF;
    return -1;
  }
  if (request == CDROM_DRIVE_STATUS) {
    if (NextByte() & 2) return 0;
    errno = ENOSYS;
    return -1;
  }
  if ((NextByte() & 1) == 0) {
    errno = ENOTTY;
    return -1;
  }
  switch (request) {
    case HDIO_GET_IDENTITY: {
      uint8_t* id = static_cast<uint8_t*>(arg);
      memset(id, 0, 512);
      NextBytes(id, 128);
      return 0;
    }
    case SCSI_IOCTL_PROBE_HOST:
      return 1;
    case SCSI_IOCTL_GET_BUS_NUMBER:
      NextBytes(arg, 4);
      return 0;
    case SCSI_IOCTL_GET_IDLUN:
      NextBytes(arg, 8);
      return 0;
    case SG_GET_SCSI_ID:
      NextBytes(arg, sizeof(sg_scsi_id));
      return 0;
    case SG_IO: {
      sg_io_hdr_t* io = static_cast<sg_io_hdr_t*>(arg);
      if (io->interface_id != 'S' || io->cmdp == nullptr || io->cmd_len != 6)
        FuzzDisk::Broken("malformed SG_IO request", io->cmd_len);
      if (io->cmdp[0] != 0x12 || io->cmdp[4] != io->dxfer_len)
        FuzzDisk::Broken("SG_IO INQUIRY length differs from the transfer length", io->dxfer_len);
      if (io->dxfer_len > 0 && io->dxferp == nullptr) FuzzDisk::Broken("SG_IO without a buffer", io->dxfer_len);
      NextBytes(io->dxferp, io->dxfer_len);
      return 0;
    }
    case SCSI_IOCTL_GET_PCI:
      NextBytes(arg, 20);
      return 0;
    case NVME_IOCTL_ADMIN_CMD: {
      nvme_admin_cmd* command = static_cast<nvme_admin_cmd*>(arg);
      if (command->addr == 0 || command->data_len < 64) FuzzDisk::Broken("NVMe identify without room", command->data_len);
      NextBytes(reinterpret_cast<void*>(static_cast<uintptr_t>(command->addr)), 64);
      return 0;
    }
    case BLKSSZGET:
      NextBytes(arg, 4);
      return 0;
    case BLKGETSIZE64:
    case BLKGETSIZE:
      NextBytes(arg, 8);
      return 0;
    case HDIO_GETGEO: {
      hd_geometry* geo = static_cast<hd_geometry*>(arg);
      geo->heads = NextByte();
      geo->sectors = NextByte();
      geo->cylinders = static_cast<unsigned short>(NextByte() | NextByte() << 8);
      geo->start = 0;
      return 0;
    }
    default:
      errno = ENOTTY;
      return -1;
  }
}

// The group (0 IDE, 1 NVMe, 2 virtio, 3 SD/eMMC, 4 SCSI) and the place in
// it of a node discovery may keep; false for any other path.
bool NodeRank(const char* path, int* rank, int* index) {
  char c = 0, extra = 0;
  int a = 0, b = 0;
  if (sscanf(path, "/dev/hd%c%c", &c, &extra) == 1 && c >= 'a' && c <= 'd') {
    *rank = 0;
    *index = c - 'a';
  } else if (sscanf(path, "/dev/nvme%dn%d%c", &a, &b, &extra) == 2 && a >= 0 && a <= 7 && b >= 1 &&
             b <= 4) {
    *rank = 1;
    *index = a * 4 + b - 1;
  } else if (sscanf(path, "/dev/vd%c%c", &c, &extra) == 1 && c >= 'a' && c <= 'p') {
    *rank = 2;
    *index = c - 'a';
  } else if (sscanf(path, "/dev/mmcblk%d%c", &a, &extra) == 1 && a >= 0 && a <= 7) {
    *rank = 3;
    *index = a;
  } else if (sscanf(path, "/dev/sd%c%c", &c, &extra) == 1 && c >= 'a' && c <= 'j') {
    *rank = 4;
    *index = c - 'a';
  } else {
    return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_disk.Install("discovery");
  g_DeviceSeam.Open64 = AnswerOpen64;
  g_DeviceSeam.Ioctl = AnswerIoctl;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  size_t length = size >= 2 ? static_cast<size_t>(data[0] | data[1] << 8) : 0;
  if (length > size - (size >= 2 ? 2 : size)) length = size >= 2 ? size - 2 : 0;
  g_answers = data + (size >= 2 ? 2 : size);
  g_answerSize = length;
  g_answerAt = 0;
  const size_t diskAt = (size >= 2 ? 2 : size) + length;
  g_disk.Load(data + diskAt, size - diskAt);

  MyComputer root;
  memset(&root, 0, sizeof(root));
  const int readPartitions = 1;
  int count = DiskListFun(&root, readPartitions);
  if (count < 0 || count > MAX_DISK_COUNT) FuzzDisk::Broken("disk count", count);
  if (count != root.DiskCount) FuzzDisk::Broken("count differs from the inventory's", root.DiskCount);
  if (count > 0 && root.Disks == nullptr) FuzzDisk::Broken("disks counted but no array", count);
  int lastRank = -1, lastIndex = -1;
  char letter = 'C';
  for (int d = 0; d < count; ++d) {
    const HardDiskInformation& disk = root.Disks[d];
    if (memchr(disk.DevicePath, 0, sizeof(disk.DevicePath)) == nullptr) FuzzDisk::Broken("device path not terminated", d);
    int rank = -1, index = -1;
    if (!NodeRank(disk.DevicePath, &rank, &index)) FuzzDisk::Broken("device path", d);
    // IDE, NVMe, virtio, SD/eMMC, then SCSI nodes, each group in its order.
    if (rank < lastRank || (rank == lastRank && index <= lastIndex)) FuzzDisk::Broken("disk order", d);
    lastRank = rank;
    lastIndex = index;
    const bool scsi = rank == 4;
    if (rank >= 1 && rank <= 3 && (disk.Flags & 6) != 6) FuzzDisk::Broken("block disk without DMA and LBA bits", disk.Flags);
    if (disk.PartitionCount > MAX_PARTITION_RECORDS) FuzzDisk::Broken("partition count", disk.PartitionCount);
    if (disk.PartitionCount > 0 && disk.Partitions == nullptr) FuzzDisk::Broken("partitions counted but no array", d);
    if (disk.Flags & ~7u) FuzzDisk::Broken("unknown disk flag bits", disk.Flags);
    if (scsi && disk.Model[0] != 0 && (disk.Flags & 6) != 6) FuzzDisk::Broken("matched SCSI disk without DMA and LBA bits", disk.Flags);
    for (int p = 0; p < disk.PartitionCount; ++p) {
      // A GPT partition without a letter takes none from the others.
      char want = disk.Partitions[p].NoLetter ? 0 : letter < 'Z' ? letter++ : 0;
      if (disk.Partitions[p].DriveLetter != want) FuzzDisk::Broken("drive letter", disk.Partitions[p].DriveLetter);
    }
  }
  FreeHdInfoList(&root, FreeFsInfo);
  if (root.Disks != nullptr || root.DiskCount != 0) FuzzDisk::Broken("inventory not released", root.DiskCount);
  g_disk.ExpectAllClosed();
  return 0;
}
