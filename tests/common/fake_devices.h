// A stand-in for the machine's disks behind the disk layer's device table:
// disk image files served under the fixed node names (/dev/hdX, /dev/sdX,
// /dev/sgN and partition nodes such as /dev/sda5), ioctls answered from a
// scripted description of each disk, and mount, umount, mkdir, statfs and
// shell commands recorded (and failing on request).
//
// Mounting is faked: a successful mount (vfat, or the ntfs-3g shell command)
// creates the mount point directory for real and remembers it, so tests can
// put files under /mnt/<letter>. That only ever happens when /mnt is the
// private tmpfs of tests/run-in-mntns.sh; elsewhere mount and mkdir refuse.
//
// Typical use (a GUI test that wants volumes C: and D:):
//   vt::FakeDevices fake;                        // installs itself
//   fake.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir, {"DATA", "BACKUP"}),
//                   "TEST DISK");
//   g_AllDiskPartitionInf.UI_FreeMemory();       // inventory through the fake
//   g_AllDiskPartitionInf.UI_InitDevice();       // C: at /mnt/C, D: at /mnt/D
//   g_AllDiskPartitionInf.GetDiskParttionInfo();
//   ... write files under /mnt/C and /mnt/D ...
//   g_AllDiskPartitionInf.UI_FreeMemory();       // before the fake goes away
#pragma once

#include <errno.h>
#include <stdint.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

// The image builders that go with the fake (MakeVolumesImage, ...).
#include "disk_images.h"

struct DeviceSeam;

namespace vt {

struct FakeDisk {
  std::string node;       // /dev/hda, /dev/sdb, ...
  std::string image;      // backing file; empty: no medium (reads fail)
  bool optical = false;   // answers CDROM_DRIVE_STATUS

  int sectorSize = 512;            // BLKSSZGET
  long long byteSize = -1;         // BLKGETSIZE64; -1: the image file's size
  bool failSectorSize = false;
  bool failSize64 = false;
  bool failSize32 = false;         // BLKGETSIZE
  bool failGeometry = false;       // HDIO_GETGEO
  int geoHeads = 255, geoSectors = 63;

  // NVMe: the model number the identify-controller command answers with
  // (NVME_IOCTL_ADMIN_CMD); empty: the command fails.
  std::string nvmeModel;

  // ATA identify data (HDIO_GET_IDENTITY), 512 bytes.
  bool answersIdentify = false;
  unsigned char identify[512] = {};

  // SCSI addressing (SCSI_IOCTL_GET_IDLUN, _GET_BUS_NUMBER, _PROBE_HOST).
  bool scsi = false;
  int host = 0, channel = 0, id = 0, lun = 0;
  bool failProbeHost = false;

  // partition number -> (byte offset, byte length) inside the image.
  std::map<int, std::pair<uint64_t, uint64_t>> partitions;
};

// A SCSI generic node /dev/sgN.
struct FakeSg {
  int number = 0;
  int host = 0, channel = 0, id = 0, lun = 0;
  bool failScsiId = false;
  bool failInquiry = false;          // every SG_IO fails
  bool failLongInquiry = false;      // only an INQUIRY longer than 36 bytes fails
  unsigned char inquiry[256] = {};   // standard INQUIRY data
  std::string pciName;               // SCSI_IOCTL_GET_PCI; empty: refused
};

class FakeDevices {
 public:
  // Installs the fake into the device table (at most one at a time).
  FakeDevices();
  // Restores the previous table and closes what the layer left open.
  ~FakeDevices();
  FakeDevices(const FakeDevices&) = delete;
  FakeDevices& operator=(const FakeDevices&) = delete;

  static FakeDevices* Current();

  // An IDE/ATA disk: identify data with the model (readable text, space
  // padded to 40), removable bit, DMA and LBA bits. Partition nodes come from
  // the image's partition table (primary, and logical through the EBR chain).
  FakeDisk& AddIdeDisk(const std::string& node, const std::string& image,
                       const std::string& model, bool removable = false);
  // A SCSI disk (SATA, virtio, USB) and its generic node /dev/sg<sgNumber>
  // (-1: none) answering INQUIRY with vendor and product and the given
  // SCSI_IOCTL_GET_PCI name ("2-1:1.0" for a USB stick).
  FakeDisk& AddScsiDisk(const std::string& node, const std::string& image,
                        const std::string& vendor, const std::string& product, int host,
                        int channel, int id, int lun, int sgNumber,
                        const std::string& pciName = "0000:00:1f.2",
                        bool removableMedium = false);
  // An optical drive node (answers the drive-status query).
  FakeDisk& AddOpticalDrive(const std::string& node, int sgNumber = -1, int host = 0,
                            int channel = 0, int id = 0, int lun = 0);
  FakeSg& AddSg(int number, int host, int channel, int id, int lun, const std::string& vendor,
                const std::string& product, const std::string& pciName = "",
                bool removableMedium = false);
  // A plain file opened under its own path (a disk image file as the image
  // table opens it): read and written like a disk node of the file's size.
  FakeDisk& AddFile(const std::string& path);
  // Loop devices: /dev/loop-control hands out free numbers from first on;
  // /dev/loopN opens; LOOP_CONFIGURE (or LOOP_SET_FD + LOOP_SET_STATUS64)
  // is recorded as "ioctl /dev/loopN 0xREQ file=PATH offset=N limit=N
  // flags=0xF bs=N" and fails with err when err is not 0.
  void EnableLoopDevices(int first, int err = 0);
  FakeDisk* Disk(const std::string& node);
  FakeSg* Sg(int number);

  // Re-reads the partition table of the disk's image (after it changed).
  void RescanPartitions(const std::string& node);
  void SetPartitionRange(const std::string& node, int number, uint64_t offset, uint64_t length);

  // Failures. err is the errno the call sets.
  void FailOpen(const std::string& path, int err = ENOENT);
  void FailMount(const std::string& targetOrSource, int err = EIO);
  void FailMkdir(const std::string& path, int err = EACCES);
  void FailUmount(const std::string& target, int err = EINVAL);
  // Any shell command containing text returns result (as system() would).
  void FailShell(const std::string& text, int result = 256);
  // The effective user id the layer sees (root unless set; not recorded
  // in Calls()).
  void SetEuid(unsigned uid) { euid_ = uid; }
  unsigned Euid() const { return euid_; }
  // statfs64 answers for a mount point (otherwise the real statfs64 of the
  // directory under the private /mnt).
  void SetStatfs(const std::string& path, long blockSize, unsigned long long blocks,
                 unsigned long long freeBlocks, unsigned long long availBlocks = ~0ull);

  // Every call, in order: "open PATH", "close PATH" ("close #FD" for a
  // descriptor that is not open), "ioctl PATH 0xREQ" (SG_IO adds
  // " len=N id=C dir=N cdb=HEX sense=N timeout=N", CDROM_DRIVE_STATUS adds
  // " arg=0xSLOT"), "lseek PATH OFFSET",
  // "mount SRC TARGET TYPE 0xFLAGS", "umount TARGET", "umount2 TARGET
  // 0xFLAGS", "sync", "mkdir PATH 0MODE",
  // "statfs PATH", "system COMMAND".
  const std::vector<std::string>& Calls() const { return calls_; }
  // The calls that start with verb + " ", without the verb.
  std::vector<std::string> CallsOf(const std::string& verb) const;
  void ClearCalls() {
    calls_.clear();
    openFlags_.clear();
  }
  // Mount point -> source node, of what is mounted now.
  const std::map<std::string, std::string>& Mounted() const { return mounted_; }
  // The path and flags of every open, in order.
  const std::vector<std::pair<std::string, int>>& OpenFlags() const { return openFlags_; }
  int OpenHandles() const { return static_cast<int>(handles_.size()); }

  static bool PrivateMntActive();


  // The table entries (public so the C-style trampolines can reach them).
  struct Handle {
    std::string path;
    FakeDisk* disk = nullptr;
    FakeSg* sg = nullptr;
    bool loopControl = false;  // /dev/loop-control
    int loop = -1;             // /dev/loopN
    int realFd = -1;
    uint64_t base = 0, length = 0, pos = 0;
  };
  int Open(const char* path, int flags);
  int Close(int fd);
  int Ioctl(int fd, unsigned long request, void* arg);
  long long Lseek(int fd, long long offset, int whence);
  long Read(int fd, void* buffer, size_t count);
  long Write(int fd, const void* buffer, size_t count);
  int Mount(const char* source, const char* target, const char* type, unsigned long flags);
  int Umount(const char* target);
  int Umount2(const char* target, int flags);
  void Sync();
  int Statfs(const char* path, void* out);
  int Mkdir(const char* path, unsigned mode);
  int System(const char* command);

 private:
  int MountAt(const std::string& source, const std::string& target);
  static bool PartitionOf(const FakeDisk& d, const std::string& path, int* number);
  bool NodeExists(const std::string& path) const;
  Handle* Find(int fd);
  // The handle of fd when it reads and writes an image; nullptr with errno
  // EBADF (not open) or EIO (a node without an image) otherwise.
  Handle* FindWithImage(int fd);

  std::vector<FakeDisk*> disks_;
  std::vector<FakeSg*> sgs_;
  std::map<int, Handle> handles_;
  int nextFd_ = 1000;
  bool loopsEnabled_ = false;
  std::vector<std::string> attachedLoops_;  // configured /dev/loopN, mountable
  int nextLoop_ = 0;
  int loopErr_ = 0;
  std::map<std::string, int> failOpen_, failMount_, failMkdir_, failUmount_;
  std::vector<std::pair<std::string, int>> failShell_;
  struct Space {
    long blockSize;
    unsigned long long blocks, freeBlocks, availBlocks;
  };
  std::map<std::string, Space> statfs_;
  std::vector<std::string> calls_;
  std::vector<std::pair<std::string, int>> openFlags_;
  std::map<std::string, std::string> mounted_;
  DeviceSeam* saved_;
  unsigned euid_ = 0;
};

}  // namespace vt
