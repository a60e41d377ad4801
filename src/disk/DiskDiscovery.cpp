#include "disk/DiskDiscovery.h"

#include <fcntl.h>
#include <limits.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <linux/nvme_ioctl.h>
#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "disk/BootRecord.h"
#include "disk/DeviceSeam.h"
#include "disk/DiskImage.h"
#include "disk/ScsiIoctl.h"
#include "disk/PartitionTable.h"
#include "disk/SectorIO.h"


namespace {

const int kOpenFlags = O_RDWR | O_NONBLOCK;

// An optical drive answers the drive-status query; a disk refuses it.
bool IsOpticalDrive(int fd) {
  return g_DeviceSeam.Ioctl(fd, CDROM_DRIVE_STATUS, reinterpret_cast<void*>(CDSL_CURRENT)) != -1;
}

void ReleaseSlot(HardDiskInformation* disk) {
  free(disk->Partitions);
  memset(disk, 0, sizeof(*disk));
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Geometry from the end head and end sector of the used entries of the
// master boot record; every used entry must agree with entry 0. Entry 0's
// end head and end sector go into the record as they are read, so a walk
// that fails afterwards leaves them there; only success adds 1 to the heads.
int GeometryFromBootRecord(int fd, HardDiskInformation* disk) {
  unsigned short bps = disk->BytesPerSector;
  if (bps < 512) return -1;
  unsigned char* sector = static_cast<unsigned char*>(malloc(bps));
  if (sector == NULL) return -1;
  int result = -1;
  ByteView view = MakeByteView(NULL, 0);
  if (DirectReadDisk(fd, 0, 1, sector, bps) == 1) view = MakeByteView(sector, bps);
  if (HasBootSignature(&view)) {
    bool found = false;
    for (int i = 0; i < PARTITION_ENTRY_COUNT; ++i) {
      PartitionEntry entry;
      if (ReadPartitionEntry(&view, i, &entry) != 0) break;
      if (!PartitionEntryUsed(&entry)) continue;
      if (i == 0) {
        disk->Heads = entry.endHead;
        disk->SectorsPerTrack = static_cast<uint16_t>(entry.endSector & 63);
        found = true;
      } else if (entry.endHead != disk->Heads || (entry.endSector & 63) != disk->SectorsPerTrack) {
        found = false;
        break;
      }
    }
    if (found && disk->Heads != 0 && disk->SectorsPerTrack != 0) {
      disk->Heads = static_cast<uint16_t>(disk->Heads + 1);
      result = 0;
    }
  }
  free(sector);
  return result;
}

// Heads and sectors per track as the driver reports them; zero heads or
// sectors is a failure that leaves the reported values in the record.
int GeometryFromDriver(int fd, HardDiskInformation* disk) {
  struct hd_geometry geo;
  memset(&geo, 0, sizeof(geo));
  if (g_DeviceSeam.Ioctl(fd, HDIO_GETGEO, &geo) == -1) return -1;
  disk->Heads = geo.heads;
  disk->SectorsPerTrack = geo.sectors;
  if (geo.heads == 0 || geo.sectors == 0) return -1;
  return 0;
}

// Sends a standard INQUIRY of len bytes; false when the request fails.
bool Inquiry(int fd, unsigned char* data, unsigned char len) {
  unsigned char cdb[6] = {0x12, 0, 0, 0, len, 0};
  unsigned char sense[32];
  memset(sense, 0, sizeof(sense));
  memset(data, 0, 256);
  sg_io_hdr_t io;
  memset(&io, 0, sizeof(io));
  io.interface_id = 'S';
  io.dxfer_direction = SG_DXFER_FROM_DEV;
  io.cmd_len = sizeof(cdb);
  io.mx_sb_len = sizeof(sense);
  io.dxfer_len = len;
  io.dxferp = data;
  io.cmdp = cdb;
  io.sbp = sense;
  io.timeout = 200;
  return g_DeviceSeam.Ioctl(fd, SG_IO, &io) != -1;
}

}  // namespace

// The fixed device nodes, probed in this order: IDE nodes, NVMe namespaces,
// virtio disks and SD/eMMC cards, then SCSI nodes (SATA, USB and others),
// each group in its own order. The SCSI generic list is taken just before
// the SCSI group.
enum NodeKind { NODE_IDE, NODE_NVME, NODE_VIRTIO, NODE_MMC, NODE_SCSI };
struct NodeGroup {
  NodeKind kind;
  int count;
};
static const NodeGroup kNodeGroups[] = {
    {NODE_IDE, 4},      // /dev/hda .. /dev/hdd
    {NODE_NVME, 32},    // /dev/nvme0n1 .. /dev/nvme7n4
    {NODE_VIRTIO, 16},  // /dev/vda .. /dev/vdp
    {NODE_MMC, 8},      // /dev/mmcblk0 .. /dev/mmcblk7 (not their boot or RPMB areas)
    {NODE_SCSI, 10},    // /dev/sda .. /dev/sdj
};

// The node of entry i of a group.
static void NodePath(NodeKind kind, int i, char* out, size_t size) {
  switch (kind) {
    case NODE_IDE: snprintf(out, size, "/dev/hd%c", 'a' + i); break;
    case NODE_NVME: snprintf(out, size, "/dev/nvme%dn%d", i / 4, i % 4 + 1); break;
    case NODE_VIRTIO: snprintf(out, size, "/dev/vd%c", 'a' + i); break;
    case NODE_MMC: snprintf(out, size, "/dev/mmcblk%d", i); break;
    case NODE_SCSI: snprintf(out, size, "/dev/sd%c", 'a' + i); break;
  }
}

static int GetBlockDisk(int fd, NodeKind kind, HardDiskInformation* disk, int readPartitions);

// Opens one node into slot and keeps it when it is a disk that answers its
// group's identity queries: true when kept, else the slot is left zeroed.
static bool ProbeNode(NodeKind kind, int i, HardDiskInformation* slot, SgInformation* sgList,
                      int sgCount, int readPartitions) {
  NodePath(kind, i, slot->DevicePath, sizeof(slot->DevicePath));
  int fd = g_DeviceSeam.Open64(slot->DevicePath, kOpenFlags);
  bool kept = false;
  if (fd != -1 && !IsOpticalDrive(fd)) {
    if (kind == NODE_SCSI)
      kept = GetScsiHardDisk(fd, slot, sgList, sgCount, readPartitions) == 0;
    else if (kind == NODE_IDE)
      kept = GetIdeHardDisk(fd, slot, readPartitions) == 0;
    else
      kept = GetBlockDisk(fd, kind, slot, readPartitions) == 0;
  }
  g_DeviceSeam.Close(fd);
  if (!kept) ReleaseSlot(slot);
  return kept;
}

static void ReadGeometryAndPartitions(int fd, HardDiskInformation* disk, int readPartitions);

// Opens image number index as the disk in slot: every image is kept (it was
// checked when it was added), with the model "Disk image" and, for an image
// given as a USB disk, the removable flag.
static bool ProbeImage(int index, HardDiskInformation* slot, int readPartitions) {
  const DiskImageInformation* info = DiskImageAt(index);
  if (info == NULL) return false;
  snprintf(slot->DevicePath, sizeof(slot->DevicePath), DISK_IMAGE_PATH_FORMAT, index);
  int fd = g_DeviceSeam.Open64(slot->DevicePath, kOpenFlags);
  if (fd == -1) {
    ReleaseSlot(slot);
    return false;
  }
  static const char kModel[] = "Disk image";
  memcpy(slot->Model, kModel, sizeof(kModel));
  slot->Flags = static_cast<uint8_t>(DISK_FLAG_LBA | (info->Usb ? DISK_FLAG_REMOVABLE : 0));
  ReadGeometryAndPartitions(fd, slot, readPartitions);
  // Where each partition's volume lies in the file, as the kernel would
  // make its node: a primary one at its start sector; a logical one at the
  // start its extended boot record (where the record's start sector points)
  // gives in its first entry.
  DiskImageClearPartitions(index);
  unsigned short bps = slot->BytesPerSector;
  unsigned char* sector = bps >= 512 ? static_cast<unsigned char*>(malloc(bps)) : NULL;
  for (int p = 0; slot->Partitions != NULL && p < slot->PartitionCount; ++p) {
    const PartitionInformation* part = &slot->Partitions[p];
    uint64_t start = part->StartSector;
    if (part->TableKind == PARTITION_TABLE_MBR && part->PartitionNumber > PARTITION_ENTRY_COUNT) {
      PartitionEntry entry;
      ByteView view = MakeByteView(NULL, 0);
      if (sector != NULL && DirectReadDisk(fd, part->StartSector, 1, sector, bps) == 1)
        view = MakeByteView(sector, bps);
      if (!HasBootSignature(&view) || ReadPartitionEntry(&view, 0, &entry) != 0) continue;
      start += entry.start;
    }
    DiskImageAddPartition(index, part->PartitionNumber, start, part->SectorCount);
  }
  free(sector);
  g_DeviceSeam.Close(fd);
  return true;
}

int DiskListFun(MyComputer* root, int readPartitions) {
  if (root == NULL) return 0;
  root->DiskCount = 0;
  // Without root rights no device node is even tried.
  if (g_DeviceSeam.Geteuid() != 0) {
    fprintf(stderr, "Vantori: not running as root: no disk device is opened\n");
    return 0;
  }
  HardDiskInformation table[MAX_DISK_COUNT + MAX_DISK_IMAGES];
  memset(table, 0, sizeof(table));
  int count = 0;
  SgInformation sgList[MAX_SG_COUNT];
  memset(sgList, 0, sizeof(sgList));
  int sgCount = 0;

  for (size_t g = 0; g < sizeof(kNodeGroups) / sizeof(kNodeGroups[0]); ++g) {
    const NodeGroup* group = &kNodeGroups[g];
    if (group->kind == NODE_SCSI) sgCount = GetSgInfomation(sgList);
    for (int i = 0; i < group->count && count < MAX_DISK_COUNT; ++i) {
      if (ProbeNode(group->kind, i, &table[count], sgList, sgCount, readPartitions)) ++count;
    }
  }
  // Disk images come after the machine's own disks.
  int realCount = count;
  for (int i = 0; i < DiskImageCount() && count < realCount + MAX_DISK_IMAGES; ++i) {
    if (ProbeImage(i, &table[count], readPartitions)) ++count;
  }

  if (readPartitions == 1) {
    // 'Z' is never given out here; partitions beyond 'Y' keep letter 0.
    char letter = 'C';
    for (int d = 0; d < count; ++d) {
      if (table[d].Partitions == NULL) continue;
      for (int p = 0; p < table[d].PartitionCount; ++p) {
        if (table[d].Partitions[p].NoLetter) continue;
        if (letter < 'Z') table[d].Partitions[p].DriveLetter = letter++;
      }
    }
  }

  if (count == 0) return 0;
  HardDiskInformation* disks =
      static_cast<HardDiskInformation*>(malloc(sizeof(HardDiskInformation) * count));
  if (disks == NULL) {
    for (int d = 0; d < count; ++d) ReleaseSlot(&table[d]);
    return 0;
  }
  memcpy(disks, table, sizeof(HardDiskInformation) * count);
  root->Disks = disks;
  root->DiskCount = count;
  return count;
}

// The last steps of every disk probe: the geometry (its result does not
// drop the disk) and, when asked, the partition table.
static void ReadGeometryAndPartitions(int fd, HardDiskInformation* disk, int readPartitions) {
  GetDiskCHSParameter(fd, disk, 0);
  if (readPartitions == 1) {
    free(disk->Partitions);
    disk->Partitions = NULL;
    int table = 0;
    disk->PartitionCount = static_cast<uint16_t>(
        GetDiskPartitions(fd, disk->BytesPerSector, disk->TotalSectors, &disk->Partitions, &table));
    disk->PartitionTable = static_cast<uint8_t>(table);
  }
}

int GetIdeHardDisk(int fd, HardDiskInformation* disk, int readPartitions) {
  if (disk == NULL) return -1;
  unsigned char identify[512];
  memset(identify, 0, sizeof(identify));
  if (g_DeviceSeam.Ioctl(fd, HDIO_GET_IDENTITY, identify) == -1) return -1;
  // Words 27..46: the model, copied as the device gives it.
  if (identify[54] != 0) memcpy(disk->Model, identify + 54, sizeof(disk->Model));
  uint8_t flags = 0;
  if (identify[0] & 0x80) flags |= DISK_FLAG_REMOVABLE;  // word 0 bit 7
  if (identify[99] & 0x01) flags |= DISK_FLAG_DMA;       // word 49 bit 8
  if (identify[99] & 0x02) flags |= DISK_FLAG_LBA;       // word 49 bit 9
  disk->Flags = flags;
  ReadGeometryAndPartitions(fd, disk, readPartitions);
  return 0;
}

int GetScsiHardDisk(int fd, HardDiskInformation* disk, SgInformation* sgList, int sgCount,
                    int readPartitions) {
  if (disk == NULL) return -1;
  unsigned char probe[50];
  memset(probe, 0, sizeof(probe));
  if (g_DeviceSeam.Ioctl(fd, SCSI_IOCTL_PROBE_HOST, probe) == -1) return -1;
  int host = 0;
  if (g_DeviceSeam.Ioctl(fd, SCSI_IOCTL_GET_BUS_NUMBER, &host) == -1) return -1;
  int idlun[2] = {0, 0};
  if (g_DeviceSeam.Ioctl(fd, SCSI_IOCTL_GET_IDLUN, idlun) == -1) return -1;
  int id = idlun[0] & 0xff;
  int lun = (idlun[0] >> 8) & 0xff;
  int channel = (idlun[0] >> 16) & 0xff;
  char handle[20];
  GetScsiHandle(host, channel, id, lun, handle);
  if (sgList != NULL) {
    if (sgCount > MAX_SG_COUNT) sgCount = MAX_SG_COUNT;
    for (int i = 0; i < sgCount; ++i) {
      if (strncmp(sgList[i].Handle, handle, sizeof(handle)) != 0) continue;
      memset(disk->Model, 0, sizeof(disk->Model));
      memcpy(disk->Model, sgList[i].Identity, sizeof(sgList[i].Identity) - 1);
      disk->Flags = static_cast<uint8_t>(sgList[i].Flags | DISK_FLAG_DMA | DISK_FLAG_LBA);
    }
  }
  ReadGeometryAndPartitions(fd, disk, readPartitions);
  return 0;
}

// The first line of a small text file (a sysfs attribute) without its line
// end, in out (size bytes with the NUL); false when it cannot be read.
static bool ReadTextLine(const char* path, char* out, size_t size) {
  if (size == 0) return false;
  out[0] = 0;
  int fd = g_DeviceSeam.Open64(path, O_RDONLY);
  if (fd == -1) return false;
  ssize_t n = g_DeviceSeam.Read(fd, out, size - 1);
  g_DeviceSeam.Close(fd);
  if (n <= 0) return false;
  out[n] = 0;
  for (ssize_t i = 0; i < n; ++i) {
    if (out[i] == '\n' || out[i] == '\r') {
      out[i] = 0;
      break;
    }
  }
  // Trailing blanks (sysfs pads some model texts) are not part of it.
  for (size_t end = strlen(out); end > 0 && out[end - 1] == ' '; --end) out[end - 1] = 0;
  return out[0] != 0;
}

// An attribute of the disk's sysfs entry, /sys/block/<node name>/<attribute>.
static bool ReadDiskAttribute(const HardDiskInformation* disk, const char* attribute, char* out,
                              size_t size) {
  const char* name = strrchr(disk->DevicePath, '/');
  if (name == NULL) return false;
  char path[96];
  snprintf(path, sizeof(path), "/sys/block/%s/%s", name + 1, attribute);
  return ReadTextLine(path, out, size);
}

// The model number of the NVMe controller (bytes 24-63 of its identify
// data), as the device gives it; false when the query fails.
static bool NvmeModel(int fd, char* model) {
  const size_t kIdentifySize = 4096;
  unsigned char* identify = static_cast<unsigned char*>(calloc(1, kIdentifySize));
  if (identify == NULL) return false;
  struct nvme_admin_cmd command;
  memset(&command, 0, sizeof(command));
  command.opcode = 0x06;  // identify
  command.addr = reinterpret_cast<uintptr_t>(identify);
  command.data_len = kIdentifySize;
  command.cdw10 = 1;  // the controller's data
  bool ok = g_DeviceSeam.Ioctl(fd, NVME_IOCTL_ADMIN_CMD, &command) != -1 && identify[24] != 0;
  if (ok) memcpy(model, identify + 24, 40);
  free(identify);
  return ok;
}

// An NVMe namespace, a virtio disk or an SD/eMMC card: a node that reports
// a size is a disk. Its model comes from the NVMe identify data or the
// sysfs model text (an SD/eMMC card's name); an SD card is removable.
static int GetBlockDisk(int fd, NodeKind kind, HardDiskInformation* disk, int readPartitions) {
  uint64_t bytes = 0;
  if (g_DeviceSeam.Ioctl(fd, BLKGETSIZE64, &bytes) == -1 || bytes == 0) return -1;
  char text[64];
  memset(disk->Model, 0, sizeof(disk->Model));
  const bool identified = kind == NODE_NVME && NvmeModel(fd, disk->Model);
  if (!identified) {
    if (ReadDiskAttribute(disk, kind == NODE_MMC ? "device/name" : "device/model", text,
                          sizeof(text))) {
      memcpy(disk->Model, text, strnlen(text, sizeof(disk->Model)));
    } else {
      const char* fallback = kind == NODE_NVME     ? "NVMe disk"
                             : kind == NODE_VIRTIO ? "Virtio disk"
                                                   : "SD/MMC card";
      memcpy(disk->Model, fallback, strlen(fallback));
    }
  }
  uint8_t flags = DISK_FLAG_DMA | DISK_FLAG_LBA;
  if (kind == NODE_MMC) {
    if ((ReadDiskAttribute(disk, "device/type", text, sizeof(text)) && strcmp(text, "SD") == 0) ||
        (ReadDiskAttribute(disk, "removable", text, sizeof(text)) && strcmp(text, "1") == 0))
      flags |= DISK_FLAG_REMOVABLE;
  }
  disk->Flags = flags;
  ReadGeometryAndPartitions(fd, disk, readPartitions);
  return 0;
}

int GetSgInfomation(SgInformation* list) {
  if (list == NULL) return 0;
  int count = 0;
  unsigned char data[256];
  for (int n = 0; n < MAX_SG_COUNT; ++n) {
    char path[16];
    snprintf(path, sizeof(path), "/dev/sg%d", n);
    int fd = g_DeviceSeam.Open64(path, kOpenFlags);
    if (fd == -1) {
      g_DeviceSeam.Close(fd);
      continue;
    }
    SgInformation* rec = &list[count];
    bool accepted = false;
    struct sg_scsi_id scsiId;
    memset(&scsiId, 0, sizeof(scsiId));
    if (g_DeviceSeam.Ioctl(fd, SG_GET_SCSI_ID, &scsiId) != -1) {
      GetScsiHandle(scsiId.host_no, scsiId.channel, scsiId.scsi_id, scsiId.lun, rec->Handle);
      unsigned char asked = 36;
      bool ok = Inquiry(fd, data, asked);
      if (ok) {
        int full = data[4] + 5;
        if (full >= 37 && full <= 255) {
          asked = static_cast<unsigned char>(full);
          ok = Inquiry(fd, data, asked);
        }
      }
      if (ok && asked == data[4] + 5) {
        uint8_t flags = 0;
        if (data[1] & 0x80) flags |= DISK_FLAG_REMOVABLE;
        char pci[64];
        memset(pci, 0, sizeof(pci));
        if (g_DeviceSeam.Ioctl(fd, SCSI_IOCTL_GET_PCI, pci) != -1) {
          pci[sizeof(pci) - 1] = 0;
          if (IsUsbDevice(pci)) flags |= DISK_FLAG_REMOVABLE;
        }
        rec->Flags = flags;
        memcpy(rec->Identity, data + 8, 24);
        rec->Identity[24] = 0;
        accepted = true;
      }
    }
    g_DeviceSeam.Close(fd);
    if (accepted)
      ++count;
    else
      memset(rec, 0, sizeof(*rec));
  }
  return count;
}

int GetScsiHandle(int host, int channel, int id, int lun, char* out) {
  if (out == NULL) return 0;
  char hostText[16] = "", channelText[16] = "", idText[16] = "", lunText[16] = "";
  if (host >= 0) {
    snprintf(hostText, sizeof(hostText), "SCSI:%02d", host);
    if (channel >= 0) {
      snprintf(channelText, sizeof(channelText), ":%02d", channel);
      if (id >= 0) {
        snprintf(idText, sizeof(idText), ":%02d", id);
        if (lun >= 0) snprintf(lunText, sizeof(lunText), ":%02d", lun);
      }
    }
  }
  // The handle field holds 20 chars: a longer handle is cut to 19.
  if (snprintf(out, 20, "%s%s%s%s", hostText, channelText, idText, lunText) < 0) out[0] = 0;
  return static_cast<int>(strlen(out));
}

int IsUsbDevice(char* text) {
  if (text == NULL || text[0] == 0) return 0;
  int i = 0;
  // digits up to the first '-'
  while (text[i] != '-') {
    if (!IsDigit(text[i]) || text[i + 1] == 0) return 0;
    ++i;
  }
  ++i;
  // digits and dots up to the next ':'
  while (text[i] != ':') {
    if (text[i] == 0 || !(IsDigit(text[i]) || text[i] == '.')) return 0;
    ++i;
  }
  ++i;
  // digits up to the next '.'
  while (text[i] != '.') {
    if (!IsDigit(text[i]) || text[i + 1] == 0) return 0;
    ++i;
  }
  ++i;
  // digits to the end
  for (; text[i] != 0; ++i) {
    if (!IsDigit(text[i])) return 0;
  }
  return 1;
}

int GetDiskCHSParameter(int fd, HardDiskInformation* disk, unsigned char mode) {
  if (fd == -1 || disk == NULL) return -1;
  int sectorSize = 0;
  if (g_DeviceSeam.Ioctl(fd, BLKSSZGET, &sectorSize) == -1 || sectorSize <= 0 ||
      sectorSize > 0xFFFF)
    return -1;
  disk->BytesPerSector = static_cast<uint16_t>(sectorSize);

  uint64_t bytes = 0;
  if (g_DeviceSeam.Ioctl(fd, BLKGETSIZE64, &bytes) != -1) {
    disk->TotalSectors = bytes / disk->BytesPerSector;
  } else {
    // The older query counts 512-byte units.
    unsigned long units = 0;
    if (g_DeviceSeam.Ioctl(fd, BLKGETSIZE, &units) == -1) return -1;
    disk->TotalSectors = static_cast<uint64_t>(units) * 512 / disk->BytesPerSector;
  }

  int result;
  switch (mode) {
    case 0:
      result = GeometryFromBootRecord(fd, disk);
      if (result != 0) result = GeometryFromDriver(fd, disk);
      break;
    case 1:
      result = GeometryFromDriver(fd, disk);
      break;
    case 2:
      result = GeometryFromBootRecord(fd, disk);
      break;
    default:
      return -1;
  }
  if (result != 0) return -1;
  // Cylinders stay a 32-bit count: a disk beyond what CHS can describe
  // gets the largest.
  const uint64_t cylinders =
      disk->TotalSectors / (static_cast<uint64_t>(disk->Heads) * disk->SectorsPerTrack);
  disk->Cylinders = cylinders > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(cylinders);
  return 0;
}
