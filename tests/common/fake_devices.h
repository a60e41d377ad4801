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
  // statfs64 answers for a mount point (otherwise the real statfs64 of the
  // directory under the private /mnt).
  void SetStatfs(const std::string& path, long blockSize, unsigned long long blocks,
                 unsigned long long freeBlocks, unsigned long long availBlocks = ~0ull);

  // Every call, in order: "open PATH", "close PATH" ("close #FD" for a
  // descriptor that is not open), "ioctl PATH 0xREQ" (SG_IO adds
  // " len=N id=C dir=N cdb=HEX sense=N timeout=N", CDROM_DRIVE_STATUS adds
  // " arg=0xSLOT"), "lseek PATH OFFSET",
  // "mount SRC TARGET TYPE 0xFLAGS", "umount TARGET", "mkdir PATH 0MODE",
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
  int Statfs(const char* path, void* out);
  int Mkdir(const char* path, unsigned mode);
  int System(const char* command);

 private:
  int MountAt(const std::string& source, const std::string& target);
  bool NodeExists(const std::string& path) const;
  Handle* Find(int fd);

  std::vector<FakeDisk*> disks_;
  std::vector<FakeSg*> sgs_;
  std::map<int, Handle> handles_;
  int nextFd_ = 1000;
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
};

// ---- disk images for tests ------------------------------------------------

struct MbrEntry {
  uint8_t boot = 0;
  uint8_t type = 0;
  uint32_t start = 0;
  uint32_t count = 0;
  uint8_t endHead = 254;
  uint8_t endSector = 63;
};

// Little-endian 16- and 32-bit values written into b at off.
void Put16(std::vector<uint8_t>& b, size_t off, uint32_t v);
void Put32(std::vector<uint8_t>& b, size_t off, uint32_t v);
// Creates (or extends) a sparse file of the given size.
void MakeSparseFile(const std::string& path, uint64_t bytes);
void WriteAt(const std::string& path, uint64_t offset, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> ReadAt(const std::string& path, uint64_t offset, size_t count);
// A boot record (MBR or EBR) of 512 bytes with four entries and 55 AA.
std::vector<uint8_t> BootRecord(const std::vector<MbrEntry>& entries);

struct FatParams {
  uint16_t bytesPerSector = 512;
  uint8_t sectorsPerCluster = 4;
  uint16_t reserved = 1;
  uint8_t fatCount = 2;
  uint16_t rootEntries = 512;
  uint32_t totalSectors = 16384;  // goes to the 16-bit field when it fits
  uint32_t fatSize = 16;          // 16-bit FAT size; 0 selects FAT32
  uint32_t fatSize32 = 0;         // FAT32: sectors per FAT
  uint32_t rootCluster = 2;       // FAT32
};
// A FAT boot sector (bytesPerSector long) as described by p.
std::vector<uint8_t> FatBootSector(const FatParams& p);
// A 32-byte directory entry.
std::vector<uint8_t> DirEntry(const std::string& name11, uint8_t attribute);

// One volume of MakeVolumesImage: kind 'F' FAT16, 'N' NTFS, '0' a partition
// holding no file system.
struct VolumeSpec {
  char kind;
  std::string label;
};
// Makes dir/name: one disk with a partition of partSectors per volume (up to
// four primaries; with more than four, three primaries and the rest logical
// partitions in an extended one). Only what recognition reads is written:
// boot sectors, root-directory labels, NTFS volume records. Returns the path.
std::string MakeVolumesImage(const std::string& dir, const std::string& name,
                             const std::vector<VolumeSpec>& volumes,
                             uint32_t partSectors = 16384);
// An NTFS boot sector (8 sectors per cluster, MFT at cluster 4) and the
// volume file record that goes at sector 38 of the volume.
std::vector<uint8_t> NtfsBootSector(uint32_t totalSectors);
std::vector<uint8_t> NtfsVolumeRecord(const std::string& label);

// Makes dir/fat-volumes.img: one disk with a FAT16 primary partition of
// 8 MiB per label, each with that label in its root directory. Returns the
// image path.
std::string MakeFatVolumesImage(const std::string& dir, const std::vector<std::string>& labels);

// A fresh directory under /tmp, and removing it with everything in it.
std::string MakeTempDir(const std::string& prefix);
void RemoveTree(const std::string& dir);

}  // namespace vt
