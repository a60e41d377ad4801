#include "fake_devices.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <linux/loop.h>
#include <linux/hdreg.h>
#include <linux/nvme_ioctl.h>
#include <scsi/scsi.h>
#include <scsi/sg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

#include "disk/BootRecord.h"
#include "disk/DeviceSeam.h"
#include "disk/ScsiIoctl.h"


namespace vt {

namespace {

FakeDevices* g_current = nullptr;

// ---- trampolines from the C-style table into the installed fake ----------
int TOpen(const char* path, int flags) { return g_current->Open(path, flags); }
int TClose(int fd) { return g_current->Close(fd); }
int TIoctl(int fd, unsigned long request, void* arg) { return g_current->Ioctl(fd, request, arg); }
off64_t TLseek(int fd, off64_t offset, int whence) { return g_current->Lseek(fd, offset, whence); }
ssize_t TRead(int fd, void* buffer, size_t count) { return g_current->Read(fd, buffer, count); }
ssize_t TWrite(int fd, const void* buffer, size_t count) {
  return g_current->Write(fd, buffer, count);
}
int TMount(const char* source, const char* target, const char* type, unsigned long flags,
           const void* data) {
  int result = g_current->Mount(source, target, type, flags);
  // The layer mounts without options: a data string is refused (and the
  // mount undone), so a test that expects the volume sees it missing.
  if (result == 0 && data != nullptr) {
    fprintf(stderr, "FakeDevices: mount of %s given options\n", target ? target : "");
    g_current->Umount(target);
    errno = EINVAL;
    return -1;
  }
  return result;
}
int TUmount(const char* target) { return g_current->Umount(target); }
int TStatfs(const char* path, struct statfs64* out) { return g_current->Statfs(path, out); }
int TMkdir(const char* path, mode_t mode) { return g_current->Mkdir(path, mode); }
int TSystem(const char* command) { return g_current->System(command); }
uid_t TGeteuid(void) { return g_current->Euid(); }
int TUmount2(const char* target, int flags) { return g_current->Umount2(target, flags); }
void TSync(void) { g_current->Sync(); }

std::string Hex(unsigned long v) {
  char buf[32];
  snprintf(buf, sizeof(buf), "0x%lx", v);
  return buf;
}

bool StartsWith(const std::string& s, const std::string& prefix) {
  return s.compare(0, prefix.size(), prefix) == 0;
}

bool UnderMnt(const std::string& path) {
  return StartsWith(path, "/mnt/") && path.find("..") == std::string::npos;
}

void FillInquiry(unsigned char* inquiry, const std::string& vendor, const std::string& product,
                 bool removable, uint8_t deviceType) {
  memset(inquiry, 0, 256);
  inquiry[0] = deviceType;
  inquiry[1] = removable ? 0x80 : 0;
  inquiry[2] = 5;
  inquiry[3] = 2;
  inquiry[4] = 31;  // 36 bytes in all
  memset(inquiry + 8, ' ', 28);
  memcpy(inquiry + 8, vendor.data(), vendor.size() < 8 ? vendor.size() : 8);
  memcpy(inquiry + 16, product.data(), product.size() < 16 ? product.size() : 16);
  memcpy(inquiry + 32, "1.0 ", 4);
}

}  // namespace

// ---------------------------------------------------------------- set-up

FakeDevices::FakeDevices() {
  if (g_current != nullptr) {
    fprintf(stderr, "FakeDevices: only one may be installed at a time\n");
    abort();
  }
  g_current = this;
  saved_ = new DeviceSeam(g_DeviceSeam);
  g_DeviceSeam.Open64 = TOpen;
  g_DeviceSeam.Close = TClose;
  g_DeviceSeam.Ioctl = TIoctl;
  g_DeviceSeam.Lseek64 = TLseek;
  g_DeviceSeam.Read = TRead;
  g_DeviceSeam.Write = TWrite;
  g_DeviceSeam.Mount = TMount;
  g_DeviceSeam.Umount = TUmount;
  g_DeviceSeam.Statfs64 = TStatfs;
  g_DeviceSeam.Mkdir = TMkdir;
  g_DeviceSeam.System = TSystem;
  g_DeviceSeam.Geteuid = TGeteuid;
  g_DeviceSeam.Umount2 = TUmount2;
  g_DeviceSeam.Sync = TSync;
}

FakeDevices::~FakeDevices() {
  for (auto& h : handles_)
    if (h.second.realFd >= 0) ::close(h.second.realFd);
  g_DeviceSeam = *saved_;
  delete saved_;
  for (FakeDisk* d : disks_) delete d;
  for (FakeSg* s : sgs_) delete s;
  g_current = nullptr;
}

FakeDevices* FakeDevices::Current() { return g_current; }

// The mount that is visible on /mnt is the last one listed for it: the test
// tmpfs counts only when nothing was mounted over it.
bool FakeDevices::PrivateMntActive() {
  std::ifstream in("/proc/self/mountinfo");
  std::string line;
  bool active = false;
  while (std::getline(in, line)) {
    std::istringstream ls(line);
    std::string id, parent, mm, root, point;
    ls >> id >> parent >> mm >> root >> point;
    if (point != "/mnt") continue;
    size_t dash = line.find(" - ");
    if (dash == std::string::npos) continue;
    std::istringstream rest(line.substr(dash + 3));
    std::string fstype, source;
    rest >> fstype >> source;
    active = fstype == "tmpfs" && source == "vantori-test-mnt";
  }
  return active;
}

// The host:channel:id:lun address a disk and its sg node share.
template <class T>
static void SetScsiAddress(T* t, int host, int channel, int id, int lun) {
  t->host = host;
  t->channel = channel;
  t->id = id;
  t->lun = lun;
}

FakeDisk& FakeDevices::AddIdeDisk(const std::string& node, const std::string& image,
                                  const std::string& model, bool removable) {
  FakeDisk* d = new FakeDisk;
  d->node = node;
  d->image = image;
  d->answersIdentify = true;
  memset(d->identify + 54, ' ', 40);
  memcpy(d->identify + 54, model.data(), model.size() < 40 ? model.size() : 40);
  if (removable) d->identify[0] |= 0x80;
  d->identify[99] |= 0x03;  // DMA and LBA
  disks_.push_back(d);
  RescanPartitions(node);
  return *d;
}

FakeDisk& FakeDevices::AddScsiDisk(const std::string& node, const std::string& image,
                                   const std::string& vendor, const std::string& product,
                                   int host, int channel, int id, int lun, int sgNumber,
                                   const std::string& pciName, bool removableMedium) {
  FakeDisk* d = new FakeDisk;
  d->node = node;
  d->image = image;
  d->scsi = true;
  SetScsiAddress(d, host, channel, id, lun);
  disks_.push_back(d);
  if (sgNumber >= 0) AddSg(sgNumber, host, channel, id, lun, vendor, product, pciName, removableMedium);
  RescanPartitions(node);
  return *d;
}

FakeDisk& FakeDevices::AddOpticalDrive(const std::string& node, int sgNumber, int host,
                                       int channel, int id, int lun) {
  FakeDisk* d = new FakeDisk;
  d->node = node;
  d->optical = true;
  d->scsi = StartsWith(node, "/dev/sd") || StartsWith(node, "/dev/sr");
  SetScsiAddress(d, host, channel, id, lun);
  d->byteSize = 0;
  disks_.push_back(d);
  if (sgNumber >= 0) {
    FakeSg& sg = AddSg(sgNumber, host, channel, id, lun, "QEMU", "QEMU DVD-ROM", "ata2", true);
    sg.inquiry[0] = 5;  // CD/DVD device
  }
  return *d;
}

FakeSg& FakeDevices::AddSg(int number, int host, int channel, int id, int lun,
                           const std::string& vendor, const std::string& product,
                           const std::string& pciName, bool removableMedium) {
  FakeSg* s = new FakeSg;
  s->number = number;
  SetScsiAddress(s, host, channel, id, lun);
  s->pciName = pciName;
  FillInquiry(s->inquiry, vendor, product, removableMedium, 0);
  sgs_.push_back(s);
  return *s;
}

FakeDisk& FakeDevices::AddFile(const std::string& path) {
  FakeDisk* d = new FakeDisk;
  d->node = path;
  d->image = path;
  disks_.push_back(d);
  return *d;
}

void FakeDevices::EnableLoopDevices(int first, int err) {
  loopsEnabled_ = true;
  nextLoop_ = first;
  loopErr_ = err;
}

FakeDisk* FakeDevices::Disk(const std::string& node) {
  for (FakeDisk* d : disks_)
    if (d->node == node) return d;
  return nullptr;
}

FakeSg* FakeDevices::Sg(int number) {
  for (FakeSg* s : sgs_)
    if (s->number == number) return s;
  return nullptr;
}

// The kernel's view of the table: primary entries, and logical partitions
// found through the chain of extended boot records, each starting at its
// record's sector plus the record's slot-0 start.
void FakeDevices::RescanPartitions(const std::string& node) {
  FakeDisk* d = Disk(node);
  if (d == nullptr || d->image.empty()) return;
  d->partitions.clear();
  const uint64_t ss = static_cast<uint64_t>(d->sectorSize > 0 ? d->sectorSize : 512);
  std::vector<uint8_t> mbr = ReadAt(d->image, 0, BOOT_RECORD_SIZE);
  ByteView mbrView = MakeByteView(mbr.data(), mbr.size());
  if (!HasBootSignature(&mbrView)) return;
  // The kernel follows 0x85 too, and takes entries whatever their boot flag.
  auto extended = [](const PartitionEntry& e) {
    return PartitionEntryExtended(&e) || e.type == 0x85;
  };
  for (int i = 0; i < PARTITION_ENTRY_COUNT; ++i) {
    PartitionEntry e;
    if (ReadPartitionEntry(&mbrView, i, &e) != 0 || e.type == 0) continue;
    if (!extended(e)) {
      d->partitions[i + 1] = {e.start * ss, e.count * ss};
      continue;
    }
    d->partitions[i + 1] = {e.start * ss, (e.count < 2 ? e.count : 2) * ss};
    uint64_t ebr = e.start;
    int number = 5;
    for (int guard = 0; guard < 64; ++guard) {
      std::vector<uint8_t> rec = ReadAt(d->image, ebr * ss, BOOT_RECORD_SIZE);
      ByteView recView = MakeByteView(rec.data(), rec.size());
      PartitionEntry s0, s1;
      if (!HasBootSignature(&recView) || ReadPartitionEntry(&recView, 0, &s0) != 0 ||
          ReadPartitionEntry(&recView, 1, &s1) != 0)
        break;
      if (s0.type != 0 && s0.count != 0)
        d->partitions[number++] = {(ebr + s0.start) * ss, static_cast<uint64_t>(s0.count) * ss};
      if (!extended(s1) || s1.start == 0) break;
      ebr = e.start + s1.start;
    }
  }
}

void FakeDevices::SetPartitionRange(const std::string& node, int number, uint64_t offset,
                                    uint64_t length) {
  FakeDisk* d = Disk(node);
  if (d != nullptr) d->partitions[number] = {offset, length};
}

void FakeDevices::FailOpen(const std::string& path, int err) { failOpen_[path] = err; }
void FakeDevices::FailMount(const std::string& targetOrSource, int err) {
  failMount_[targetOrSource] = err;
}
void FakeDevices::FailMkdir(const std::string& path, int err) { failMkdir_[path] = err; }
void FakeDevices::FailUmount(const std::string& target, int err) { failUmount_[target] = err; }
void FakeDevices::FailShell(const std::string& text, int result) {
  failShell_.push_back({text, result});
}
void FakeDevices::SetStatfs(const std::string& path, long blockSize, unsigned long long blocks,
                            unsigned long long freeBlocks, unsigned long long availBlocks) {
  statfs_[path] = Space{blockSize, blocks, freeBlocks, availBlocks == ~0ull ? freeBlocks : availBlocks};
}

std::vector<std::string> FakeDevices::CallsOf(const std::string& verb) const {
  std::vector<std::string> out;
  for (const std::string& c : calls_)
    if (StartsWith(c, verb + " ")) out.push_back(c.substr(verb.size() + 1));
  return out;
}

// The partition number path names on disk d (/dev/sda1 on /dev/sda; a disk
// whose name ends in a digit names its partitions with a "p" before the
// number, nvme0n1p1, as the kernel does).
bool FakeDevices::PartitionOf(const FakeDisk& d, const std::string& path, int* number) {
  if (!StartsWith(path, d.node) || path.size() <= d.node.size()) return false;
  std::string rest = path.substr(d.node.size());
  if (rest[0] == 'p' && !d.node.empty() && isdigit(static_cast<unsigned char>(d.node.back())))
    rest = rest.substr(1);
  if (rest.empty() || rest.find_first_not_of("0123456789") != std::string::npos) return false;
  *number = atoi(rest.c_str());
  return true;
}

bool FakeDevices::NodeExists(const std::string& path) const {
  for (const std::string& loop : attachedLoops_)
    if (loop == path) return true;
  for (const FakeDisk* d : disks_) {
    if (d->node == path) return true;
    int number = 0;
    if (PartitionOf(*d, path, &number) && d->partitions.count(number)) return true;
  }
  return false;
}

FakeDevices::Handle* FakeDevices::Find(int fd) {
  auto it = handles_.find(fd);
  return it == handles_.end() ? nullptr : &it->second;
}

FakeDevices::Handle* FakeDevices::FindWithImage(int fd) {
  Handle* h = Find(fd);
  if (h == nullptr) {
    errno = EBADF;
    return nullptr;
  }
  if (h->realFd < 0) {
    errno = EIO;
    return nullptr;
  }
  return h;
}

// ---------------------------------------------------------------- the calls

int FakeDevices::Open(const char* path, int flags) {
  std::string p = path != nullptr ? path : "";
  calls_.push_back("open " + p);
  openFlags_.push_back({p, flags});
  auto f = failOpen_.find(p);
  if (f != failOpen_.end()) {
    errno = f->second;
    return -1;
  }
  Handle h;
  h.path = p;
  if (loopsEnabled_ && p == "/dev/loop-control") {
    h.loopControl = true;
    int fd = nextFd_++;
    handles_[fd] = h;
    return fd;
  }
  if (loopsEnabled_ && StartsWith(p, "/dev/loop") && p.size() > 9 &&
      p.find_first_not_of("0123456789", 9) == std::string::npos) {
    h.loop = atoi(p.c_str() + 9);
    int fd = nextFd_++;
    handles_[fd] = h;
    return fd;
  }
  for (FakeDisk* d : disks_) {
    if (d->node == p) {
      h.disk = d;
      h.base = 0;
      if (!d->image.empty()) {
        struct stat st;
        h.length = ::stat(d->image.c_str(), &st) == 0 ? st.st_size : 0;
      }
      break;
    }
    int number = 0;
    if (PartitionOf(*d, p, &number)) {
      auto part = d->partitions.find(number);
      if (part == d->partitions.end()) continue;
      h.disk = d;
      h.base = part->second.first;
      h.length = part->second.second;
      break;
    }
  }
  if (h.disk == nullptr && StartsWith(p, "/dev/sg")) {
    std::string rest = p.substr(7);
    if (!rest.empty() && rest.find_first_not_of("0123456789") == std::string::npos)
      h.sg = Sg(atoi(rest.c_str()));
  }
  if (h.disk == nullptr && h.sg == nullptr) {
    errno = ENOENT;
    return -1;
  }
  if (h.disk != nullptr && !h.disk->image.empty()) {
    h.realFd = ::open(h.disk->image.c_str(), O_RDWR | O_CLOEXEC);
    if (h.realFd < 0) return -1;
  }
  int fd = nextFd_++;
  handles_[fd] = h;
  return fd;
}

int FakeDevices::Close(int fd) {
  Handle* h = Find(fd);
  if (h == nullptr) {
    // Like close(2) on a descriptor that is not open; the layer hands on
    // the -1 of a failed open.
    calls_.push_back("close #" + std::to_string(fd));
    errno = EBADF;
    return -1;
  }
  calls_.push_back("close " + h->path);
  if (h->realFd >= 0) ::close(h->realFd);
  handles_.erase(fd);
  return 0;
}

long long FakeDevices::Lseek(int fd, long long offset, int whence) {
  Handle* h = Find(fd);
  if (h == nullptr) {
    errno = EBADF;
    return -1;
  }
  calls_.push_back("lseek " + h->path + " " + std::to_string(offset));
  long long base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? static_cast<long long>(h->pos)
                                                               : static_cast<long long>(h->length);
  if (base + offset < 0) {
    errno = EINVAL;
    return -1;
  }
  h->pos = static_cast<uint64_t>(base + offset);
  return static_cast<long long>(h->pos);
}

long FakeDevices::Read(int fd, void* buffer, size_t count) {
  Handle* h = FindWithImage(fd);
  if (h == nullptr) return -1;
  if (h->pos >= h->length) return 0;
  uint64_t n = h->length - h->pos;
  if (n > count) n = count;
  ssize_t got = ::pread(h->realFd, buffer, n, static_cast<off_t>(h->base + h->pos));
  if (got < 0) return -1;
  // Beyond the image's end a sparse device reads as zeros up to its size.
  if (static_cast<uint64_t>(got) < n) memset(static_cast<char*>(buffer) + got, 0, n - got);
  h->pos += n;
  return static_cast<long>(n);
}

long FakeDevices::Write(int fd, const void* buffer, size_t count) {
  Handle* h = FindWithImage(fd);
  if (h == nullptr) return -1;
  if (h->pos >= h->length) {
    errno = ENOSPC;
    return -1;
  }
  uint64_t n = h->length - h->pos;
  if (n > count) n = count;
  ssize_t done = ::pwrite(h->realFd, buffer, n, static_cast<off_t>(h->base + h->pos));
  if (done < 0) return -1;
  h->pos += done;
  return static_cast<long>(done);
}

int FakeDevices::Ioctl(int fd, unsigned long request, void* arg) {
  Handle* h = Find(fd);
  if (h == nullptr) {
    errno = EBADF;
    return -1;
  }
  std::string entry = "ioctl " + h->path + " " + Hex(request);
  if (request == SG_IO && arg != nullptr) {
    const sg_io_hdr_t* io = static_cast<const sg_io_hdr_t*>(arg);
    entry += " len=" + std::to_string(io->dxfer_len);
    entry += " id=" + std::string(1, static_cast<char>(io->interface_id));
    entry += " dir=" + std::to_string(io->dxfer_direction);
    entry += " cdb=";
    for (unsigned i = 0; i < io->cmd_len && io->cmdp != nullptr; ++i) {
      char byte[4];
      snprintf(byte, sizeof(byte), "%02x", io->cmdp[i]);
      entry += byte;
    }
    entry += " sense=" + std::to_string(io->mx_sb_len) + (io->sbp != nullptr ? "" : "(null)");
    entry += " timeout=" + std::to_string(io->timeout);
  }
  if (request == CDROM_DRIVE_STATUS) entry += " arg=" + Hex(reinterpret_cast<unsigned long>(arg));
  if (h->loopControl) {
    calls_.push_back(entry);
    if (request != LOOP_CTL_GET_FREE) {
      errno = ENOTTY;
      return -1;
    }
    return nextLoop_++;
  }
  if (h->loop >= 0) {
    const struct loop_info64* info = nullptr;
    int fileFd = -1;
    unsigned blockSize = 0;
    if (request == LOOP_CONFIGURE) {
      const struct loop_config* config = static_cast<const struct loop_config*>(arg);
      info = &config->info;
      fileFd = static_cast<int>(config->fd);
      blockSize = config->block_size;
    } else if (request == LOOP_SET_STATUS64) {
      info = static_cast<const struct loop_info64*>(arg);
    } else if (request == LOOP_SET_FD) {
      fileFd = static_cast<int>(reinterpret_cast<long>(arg));
    }
    Handle* file = fileFd >= 0 ? Find(fileFd) : nullptr;
    if (fileFd >= 0) entry += " file=" + (file != nullptr ? file->path : std::string("?"));
    if (info != nullptr) {
      entry += " offset=" + std::to_string(info->lo_offset) +
               " limit=" + std::to_string(info->lo_sizelimit) + " flags=" + Hex(info->lo_flags);
    }
    if (request == LOOP_CONFIGURE) entry += " bs=" + std::to_string(blockSize);
    calls_.push_back(entry);
    if (loopErr_ != 0) {
      errno = loopErr_;
      return -1;
    }
    if (request == LOOP_CONFIGURE || request == LOOP_SET_FD) attachedLoops_.push_back(h->path);
    if (request == LOOP_CONFIGURE || request == LOOP_SET_FD || request == LOOP_SET_STATUS64 ||
        request == LOOP_CLR_FD)
      return 0;
    errno = ENOTTY;
    return -1;
  }
  calls_.push_back(entry);

  if (h->sg != nullptr) {
    FakeSg* s = h->sg;
    switch (request) {
      case SG_GET_SCSI_ID: {
        if (s->failScsiId) break;
        struct sg_scsi_id* out = static_cast<struct sg_scsi_id*>(arg);
        out->host_no = s->host;
        out->channel = s->channel;
        out->scsi_id = s->id;
        out->lun = s->lun;
        out->scsi_type = s->inquiry[0] & 0x1f;
        return 0;
      }
      case SG_IO: {
        sg_io_hdr_t* io = static_cast<sg_io_hdr_t*>(arg);
        if (s->failInquiry || io->interface_id != 'S' || io->cmd_len < 6 || io->cmdp == nullptr ||
            io->cmdp[0] != 0x12 || io->dxfer_direction != SG_DXFER_FROM_DEV)
          break;
        if (s->failLongInquiry && io->dxfer_len > 36) break;
        unsigned int n = io->dxfer_len < 256 ? io->dxfer_len : 256;
        if (io->cmdp[4] < n) n = io->cmdp[4];
        memcpy(io->dxferp, s->inquiry, n);
        io->resid = static_cast<int>(io->dxfer_len - n);
        io->status = 0;
        io->info = SG_INFO_OK;
        return 0;
      }
      case SCSI_IOCTL_GET_PCI: {
        if (s->pciName.empty()) break;
        // Like the kernel: at most 20 bytes, no terminating NUL added.
        size_t n = s->pciName.size() < 20 ? s->pciName.size() : 20;
        memcpy(arg, s->pciName.data(), n);
        return 0;
      }
      default:
        break;
    }
    errno = EINVAL;
    return -1;
  }

  FakeDisk* d = h->disk;
  bool whole = h->base == 0 && d->node == h->path;
  uint64_t bytes = whole ? (d->byteSize >= 0 ? static_cast<uint64_t>(d->byteSize) : h->length)
                         : h->length;
  switch (request) {
    case BLKSSZGET:
      if (d->failSectorSize) break;
      *static_cast<int*>(arg) = d->sectorSize;
      return 0;
    case BLKGETSIZE64:
      if (d->failSize64) break;
      *static_cast<uint64_t*>(arg) = bytes;
      return 0;
    case BLKGETSIZE:
      if (d->failSize32) break;
      *static_cast<unsigned long*>(arg) = static_cast<unsigned long>(bytes / 512);
      return 0;
    default:
      break;
  }
  if (!whole) {
    errno = ENOTTY;
    return -1;
  }
  switch (request) {
    case CDROM_DRIVE_STATUS:
      if (!d->optical) break;
      return CDS_NO_DISC;
    case NVME_IOCTL_ADMIN_CMD: {
      struct nvme_admin_cmd* command = static_cast<struct nvme_admin_cmd*>(arg);
      if (d->nvmeModel.empty() || command->opcode != 0x06 || command->cdw10 != 1 ||
          command->data_len < 64)
        break;
      unsigned char* data = reinterpret_cast<unsigned char*>(static_cast<uintptr_t>(command->addr));
      memset(data, 0, command->data_len);
      memset(data + 24, ' ', 40);
      memcpy(data + 24, d->nvmeModel.data(), std::min<size_t>(40, d->nvmeModel.size()));
      return 0;
    }
    case HDIO_GET_IDENTITY:
      if (!d->answersIdentify) break;
      memcpy(arg, d->identify, 512);
      return 0;
    case HDIO_GETGEO: {
      if (d->failGeometry) break;
      struct hd_geometry* geo = static_cast<struct hd_geometry*>(arg);
      geo->heads = static_cast<unsigned char>(d->geoHeads);
      geo->sectors = static_cast<unsigned char>(d->geoSectors);
      uint64_t perCyl = static_cast<uint64_t>(d->geoHeads) * d->geoSectors;
      geo->cylinders =
          static_cast<unsigned short>(perCyl ? bytes / d->sectorSize / perCyl : 0);
      geo->start = 0;
      return 0;
    }
    case SCSI_IOCTL_PROBE_HOST:
      if (!d->scsi || d->failProbeHost) break;
      return 1;
    case SCSI_IOCTL_GET_BUS_NUMBER:
      if (!d->scsi) break;
      *static_cast<int*>(arg) = d->host;
      return 0;
    case SCSI_IOCTL_GET_IDLUN: {
      if (!d->scsi) break;
      int* idlun = static_cast<int*>(arg);
      idlun[0] = (d->id & 0xff) | ((d->lun & 0xff) << 8) | ((d->channel & 0xff) << 16) |
                 ((d->host & 0xff) << 24);
      idlun[1] = 1;
      return 0;
    }
    default:
      break;
  }
  errno = ENOTTY;
  return -1;
}

int FakeDevices::MountAt(const std::string& source, const std::string& target) {
  auto f = failMount_.find(target);
  if (f == failMount_.end()) f = failMount_.find(source);
  if (f != failMount_.end()) {
    errno = f->second;
    return -1;
  }
  if (!PrivateMntActive() || !UnderMnt(target)) {
    fprintf(stderr, "FakeDevices: refusing to mount on %s outside the private test /mnt\n",
            target.c_str());
    errno = EPERM;
    return -1;
  }
  if (!NodeExists(source)) {
    errno = ENOENT;
    return -1;
  }
  if (mounted_.count(target)) {
    errno = EBUSY;
    return -1;
  }
  if (::mkdir(target.c_str(), 0777) != 0 && errno != EEXIST) return -1;
  mounted_[target] = source;
  return 0;
}

int FakeDevices::Mount(const char* source, const char* target, const char* type,
                       unsigned long flags) {
  std::string s = source ? source : "", t = target ? target : "";
  calls_.push_back("mount " + s + " " + t + " " + (type ? type : "") + " " + Hex(flags));
  return MountAt(s, t);
}

int FakeDevices::Umount(const char* target) {
  std::string t = target ? target : "";
  calls_.push_back("umount " + t);
  auto f = failUmount_.find(t);
  if (f != failUmount_.end()) {
    errno = f->second;
    return -1;
  }
  if (mounted_.erase(t) == 0) {
    errno = EINVAL;
    return -1;
  }
  return 0;
}

// A lazy detach always succeeds on a mounted volume (the kernel takes it out
// of the mount table at once, whoever still uses it).
int FakeDevices::Umount2(const char* target, int flags) {
  std::string t = target ? target : "";
  calls_.push_back("umount2 " + t + " " + Hex(static_cast<unsigned long>(flags)));
  if (mounted_.erase(t) == 0) {
    errno = EINVAL;
    return -1;
  }
  return 0;
}

void FakeDevices::Sync() { calls_.push_back("sync"); }

int FakeDevices::Statfs(const char* path, void* out) {
  std::string p = path ? path : "";
  calls_.push_back("statfs " + p);
  struct statfs64* st = static_cast<struct statfs64*>(out);
  auto s = statfs_.find(p);
  if (s != statfs_.end()) {
    memset(st, 0, sizeof(*st));
    st->f_bsize = s->second.blockSize;
    st->f_blocks = s->second.blocks;
    st->f_bfree = s->second.freeBlocks;
    st->f_bavail = s->second.availBlocks;
    return 0;
  }
  if (PrivateMntActive() && UnderMnt(p)) return ::statfs64(p.c_str(), st);
  errno = ENOENT;
  return -1;
}

int FakeDevices::Mkdir(const char* path, unsigned mode) {
  std::string p = path ? path : "";
  char m[16];
  snprintf(m, sizeof(m), "0%o", mode);
  calls_.push_back("mkdir " + p + " " + m);
  auto f = failMkdir_.find(p);
  if (f != failMkdir_.end()) {
    errno = f->second;
    return -1;
  }
  if (!PrivateMntActive() || !UnderMnt(p)) {
    fprintf(stderr, "FakeDevices: refusing to make %s outside the private test /mnt\n", p.c_str());
    errno = EACCES;
    return -1;
  }
  return ::mkdir(p.c_str(), mode);
}

int FakeDevices::System(const char* command) {
  std::string c = command ? command : "";
  calls_.push_back("system " + c);
  for (const auto& f : failShell_)
    if (c.find(f.first) != std::string::npos) return f.second;
  std::istringstream in(c);
  std::string program, a, b;
  in >> program >> a >> b;
  if (program == "ntfsfix") return NodeExists(a) ? 0 : 256;
  if (program == "ntfs-3g") return MountAt(a, b) == 0 ? 0 : 256;
  fprintf(stderr, "FakeDevices: shell command not served: %s\n", c.c_str());
  return -1;
}

}  // namespace vt
