// Finding disks through the device nodes, their identity and geometry, and
// whole-sector reads, against faked devices.
#include <gtest/gtest.h>
#include <linux/cdrom.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <fcntl.h>
#include <limits.h>
#include <scsi/sg.h>
#include <string.h>

#include <algorithm>

#include "disk/DeviceSeam.h"
#include "disk/DiskDiscovery.h"
#include "disk/PartitionTable.h"
#include "disk/SectorIO.h"
#include "disk_test_util.h"

namespace {

using vt::BootRecord;
using vt::MbrEntry;

// Heads, sectors per track and cylinders as one text, so that a record's
// geometry is compared in one expectation.
std::string Chs(unsigned long heads, unsigned long sectors, unsigned long cylinders) {
  return std::to_string(heads) + "/" + std::to_string(sectors) + "/" + std::to_string(cylinders);
}
std::string Chs(const HardDiskInformation& d) { return Chs(d.Heads, d.SectorsPerTrack, d.Cylinders); }

// A sparse disk image with the given primary entries.
std::string DiskImage(const dt::TempDir& dir, const std::string& name, uint64_t sectors,
                      const std::vector<MbrEntry>& entries) {
  std::string path = dir / name;
  vt::MakeSparseFile(path, sectors * 512);
  vt::WriteAt(path, 0, BootRecord(entries));
  return path;
}

MbrEntry Primary(uint32_t start, uint32_t count, uint8_t type = 0x06) {
  MbrEntry e;
  e.type = type;
  e.start = start;
  e.count = count;
  return e;
}

// A disk whose table holds `count` partitions: up to three primaries and the
// rest as logical partitions in an extended one.
std::string ManyPartitions(const dt::TempDir& dir, const std::string& name, int count) {
  std::string path = dir / name;
  uint64_t sectors = 4096 + 64 * static_cast<uint64_t>(count);
  vt::MakeSparseFile(path, sectors * 512);
  std::vector<MbrEntry> mbr;
  int primaries = count <= 4 ? count : 3;
  for (int i = 0; i < primaries; ++i) mbr.push_back(Primary(2048 + 64 * i, 32));
  int logical = count - primaries;
  if (logical > 0) {
    uint32_t e = 2048 + 64 * primaries;
    mbr.push_back(Primary(e, 64 * logical, 0x05));
    for (int k = 0; k < logical; ++k) {
      std::vector<MbrEntry> ebr = {Primary(2, 32)};
      if (k + 1 < logical) ebr.push_back(Primary(64 * (k + 1), 64, 0x05));
      vt::WriteAt(path, (e + 64ull * k) * 512, BootRecord(ebr));
    }
  }
  vt::WriteAt(path, 0, BootRecord(mbr));
  return path;
}

void Release(MyComputer* root) { FreeHdInfoList(root, FreeFsInfo); }

TEST(DiskListFun, NoReadableNodeGivesZeroAndNullArray) {
  // Through the refusing table of the test program...
  MyComputer root = {5, nullptr};
  EXPECT_EQ(DiskListFun(&root, 1), 0);
  EXPECT_EQ(root.DiskCount, 0);
  EXPECT_EQ(root.Disks, nullptr);
  // ...and through the fake with no disks: every node was tried, nothing kept.
  vt::FakeDevices fake;
  EXPECT_EQ(DiskListFun(&root, 1), 0);
  EXPECT_EQ(root.Disks, nullptr);
  std::vector<std::string> opens = fake.CallsOf("open");
  // IDE, NVMe namespaces (8 controllers x 4), virtio, SD/eMMC, then the SCSI
  // generic list and the SCSI disks.
  EXPECT_EQ(opens.size(), 4u + 32u + 16u + 8u + 10u + 10u);
  EXPECT_EQ(opens.front(), "/dev/hda");
  EXPECT_EQ(opens[3], "/dev/hdd");
  EXPECT_EQ(opens[4], "/dev/nvme0n1");
  EXPECT_EQ(opens[5], "/dev/nvme0n2");
  EXPECT_EQ(opens[35], "/dev/nvme7n4");
  EXPECT_EQ(opens[36], "/dev/vda");
  EXPECT_EQ(opens[51], "/dev/vdp");
  EXPECT_EQ(opens[52], "/dev/mmcblk0");
  EXPECT_EQ(opens[59], "/dev/mmcblk7");
  EXPECT_EQ(opens[60], "/dev/sg0");
  EXPECT_EQ(opens[70], "/dev/sda");
  EXPECT_EQ(opens.back(), "/dev/sdj");
  EXPECT_EQ(DiskListFun(nullptr, 1), 0);
}

TEST(DiskListFun, WithoutRootOpensNoDeviceAndSaysSo) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir.path(), {"DATA"}), "DISK");
  fake.SetEuid(1000);
  MyComputer root = {3, nullptr};
  testing::internal::CaptureStderr();
  EXPECT_EQ(DiskListFun(&root, 1), 0);
  std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(root.DiskCount, 0);
  EXPECT_EQ(root.Disks, nullptr);
  EXPECT_TRUE(fake.Calls().empty()) << fake.Calls().front();
  EXPECT_NE(err.find("not running as root"), std::string::npos) << err;
  // As root the same disk is found.
  fake.SetEuid(0);
  EXPECT_EQ(DiskListFun(&root, 1), 1);
  Release(&root);
}

TEST(DiskListFun, IdeDiskIdentityGeometryAndPartitions) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image =
      DiskImage(dir, "ide.img", 8 * 2048, {Primary(2048, 4096), Primary(6144, 8192, 0x07)});
  fake.AddIdeDisk("/dev/hda", image, "TEST-IDE-DISK");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  const HardDiskInformation& d = root.Disks[0];
  EXPECT_STREQ(d.DevicePath, "/dev/hda");
  char model[40];
  memset(model, ' ', 40);
  memcpy(model, "TEST-IDE-DISK", 13);
  EXPECT_EQ(memcmp(d.Model, model, 40), 0);  // all 40 bytes, no terminator
  EXPECT_EQ(d.Flags, DISK_FLAG_DMA | DISK_FLAG_LBA);
  EXPECT_EQ(d.BytesPerSector, 512);
  EXPECT_EQ(d.TotalSectors, 8u * 2048);
  EXPECT_EQ(Chs(d), Chs(255, 63, 8u * 2048 / (255 * 63)));  // end head 254 + 1, from the table
  ASSERT_EQ(d.PartitionCount, 2);
  EXPECT_EQ(d.Partitions[0].PartitionNumber, 1);
  EXPECT_EQ(d.Partitions[0].StartSector, 2048u);
  EXPECT_EQ(d.Partitions[0].SectorCount, 4096u);
  EXPECT_EQ(d.Partitions[0].DriveLetter, 'C');
  EXPECT_EQ(d.Partitions[1].DriveLetter, 'D');
  EXPECT_EQ(d.Partitions[1].FileSystem, nullptr);
  EXPECT_EQ(fake.OpenHandles(), 0);
  Release(&root);
}

TEST(DiskListFun, WithoutPartitionsNoArrayAndNoLetters) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", DiskImage(dir, "a.img", 4096, {Primary(2048, 1024)}), "X");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 0), 1);
  EXPECT_EQ(root.Disks[0].Partitions, nullptr);
  EXPECT_EQ(root.Disks[0].PartitionCount, 0);
  Release(&root);
}

TEST(DiskListFun, IdeRemovableBitModelAbsentAndIdentifyFailure) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = DiskImage(dir, "a.img", 4096, {Primary(2048, 1024)});
  vt::FakeDisk& a = fake.AddIdeDisk("/dev/hda", image, "CF CARD", /*removable=*/true);
  a.identify[99] = 0x02;  // LBA, no DMA
  vt::FakeDisk& b = fake.AddIdeDisk("/dev/hdb", image, "");
  b.identify[54] = 0;  // no model: the field stays empty
  b.identify[55] = 'Q';
  vt::FakeDisk& c = fake.AddIdeDisk("/dev/hdd", image, "REFUSES");
  c.answersIdentify = false;
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 2);
  EXPECT_STREQ(root.Disks[0].DevicePath, "/dev/hda");
  EXPECT_EQ(root.Disks[0].Flags, DISK_FLAG_REMOVABLE | DISK_FLAG_LBA);
  EXPECT_STREQ(root.Disks[1].DevicePath, "/dev/hdb");
  char empty[40] = {};
  EXPECT_EQ(memcmp(root.Disks[1].Model, empty, 40), 0);
  // The dropped hdd left nothing behind.
  EXPECT_EQ(root.Disks[1].Partitions[0].DriveLetter, 'D');
  EXPECT_EQ(fake.OpenHandles(), 0);
  Release(&root);
}

TEST(DiskListFun, OpticalDrivesAreSkipped) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddOpticalDrive("/dev/hdc");
  fake.AddOpticalDrive("/dev/sda", 0, 1, 0, 0, 0);
  fake.AddScsiDisk("/dev/sdb", DiskImage(dir, "b.img", 4096, {Primary(2048, 1024)}), "ATA",
                   "DISK", 2, 0, 0, 0, 1, "ata3");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  EXPECT_STREQ(root.Disks[0].DevicePath, "/dev/sdb");
  // The optical nodes were asked for their drive status and nothing else.
  for (const std::string& c : fake.CallsOf("ioctl")) {
    if (c.rfind("/dev/hdc ", 0) == 0 || c.rfind("/dev/sda ", 0) == 0) {
      char expected[32];
      snprintf(expected, sizeof(expected), "0x%x", CDROM_DRIVE_STATUS);
      EXPECT_NE(c.find(expected), std::string::npos) << c;
    }
  }
  EXPECT_EQ(fake.OpenHandles(), 0);
  Release(&root);
}

TEST(DiskListFun, ScsiSataUsbAndRemovableMedium) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = DiskImage(dir, "s.img", 4096, {Primary(2048, 1024)});
  fake.AddIdeDisk("/dev/hda", image, "IDE");
  // SATA disk behind libata, an empty CD-ROM taking sg1, a USB stick, a disk
  // whose medium is removable, and a disk without any generic record.
  fake.AddScsiDisk("/dev/sda", image, "ATA", "TEST-SATA-DISK", 0, 0, 0, 0, 0, "ata1");
  fake.AddSg(1, 1, 0, 0, 0, "QEMU", "QEMU DVD-ROM", "ata2", true);
  fake.AddScsiDisk("/dev/sdb", image, "QEMU", "QEMU HARDDISK", 4, 0, 0, 0, 2, "2-1:1.0");
  fake.AddScsiDisk("/dev/sdc", image, "VEND", "ZIP", 5, 0, 3, 1, 3, "virtio0", true);
  fake.AddScsiDisk("/dev/sdd", image, "X", "Y", 6, 0, 0, 0, -1);
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 5);
  EXPECT_STREQ(root.Disks[0].DevicePath, "/dev/hda");  // IDE first
  const HardDiskInformation& sata = root.Disks[1];
  EXPECT_STREQ(sata.DevicePath, "/dev/sda");
  EXPECT_STREQ(sata.Model, "ATA     TEST-SATA-DISK  ");
  EXPECT_EQ(sata.Flags, DISK_FLAG_DMA | DISK_FLAG_LBA);
  const HardDiskInformation& usb = root.Disks[2];
  EXPECT_STREQ(usb.Model, "QEMU    QEMU HARDDISK   ");
  EXPECT_EQ(usb.Flags, DISK_FLAG_REMOVABLE | DISK_FLAG_DMA | DISK_FLAG_LBA);
  EXPECT_EQ(root.Disks[3].Flags, DISK_FLAG_REMOVABLE | DISK_FLAG_DMA | DISK_FLAG_LBA);
  EXPECT_STREQ(root.Disks[3].Model, "VEND    ZIP             ");
  // No generic record: kept, no model, no flags.
  EXPECT_STREQ(root.Disks[4].DevicePath, "/dev/sdd");
  EXPECT_STREQ(root.Disks[4].Model, "");
  EXPECT_EQ(root.Disks[4].Flags, 0);
  // Letters run over all disks in order.
  for (int d = 0; d < 5; ++d) EXPECT_EQ(root.Disks[d].Partitions[0].DriveLetter, 'C' + d);
  EXPECT_EQ(fake.OpenHandles(), 0);
  Release(&root);
}

TEST(DiskListFun, ScsiQueryFailureDropsTheDisk) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = DiskImage(dir, "s.img", 4096, {Primary(2048, 1024)});
  fake.AddScsiDisk("/dev/sda", image, "A", "B", 0, 0, 0, 0, 0).failProbeHost = true;
  fake.AddScsiDisk("/dev/sdb", image, "C", "D", 1, 0, 0, 0, 1);
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  EXPECT_STREQ(root.Disks[0].DevicePath, "/dev/sdb");
  EXPECT_STREQ(root.Disks[0].Model, "C       D               ");
  Release(&root);
}

TEST(DiskListFun, MoreThan24PartitionsGetLettersCtoYOnly) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", ManyPartitions(dir, "a.img", 20), "A");
  fake.AddScsiDisk("/dev/sda", ManyPartitions(dir, "b.img", 7), "V", "P", 0, 0, 0, 0, 0);
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 2);
  ASSERT_EQ(root.Disks[0].PartitionCount, 20);
  ASSERT_EQ(root.Disks[1].PartitionCount, 7);
  std::string letters;
  for (int d = 0; d < 2; ++d)
    for (int p = 0; p < root.Disks[d].PartitionCount; ++p) {
      char l = root.Disks[d].Partitions[p].DriveLetter;
      letters += l ? l : '0';
    }
  EXPECT_EQ(letters, "CDEFGHIJKLMNOPQRSTUVWXY0000");
  Release(&root);
}

// ---- geometry --------------------------------------------------------------

class Geometry : public ::testing::Test {
 protected:
  void SetUp() override { fake_ = new vt::FakeDevices; }
  void TearDown() override { delete fake_; }
  int Open(const std::string& image, int heads = 16, int sectors = 32) {
    vt::FakeDisk& d = fake_->AddIdeDisk("/dev/hda", image, "G");
    d.geoHeads = heads;
    d.geoSectors = sectors;
    return g_DeviceSeam.Open64("/dev/hda", 0);
  }
  dt::TempDir dir_;
  vt::FakeDevices* fake_ = nullptr;
};

TEST_F(Geometry, TableAgreementGivesGeometryFromTable) {
  MbrEntry a = Primary(63, 1000), b = Primary(2048, 1000);
  a.endHead = b.endHead = 15;
  a.endSector = 0xC0 | 32;  // cylinder bits above the sector number
  b.endSector = 32;
  int fd = Open(DiskImage(dir_, "g.img", 100000, {a, b}), 99, 9);
  HardDiskInformation disk = {};
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 0), 0);
  EXPECT_EQ(Chs(disk), Chs(16, 32, 100000u / (16 * 32)));
  EXPECT_EQ(disk.TotalSectors, 100000u);
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 2), 0);
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), 0);  // from the driver
  EXPECT_EQ(Chs(disk), Chs(99, 9, 100000u / (99 * 9)));  // the driver's cylinders are not used
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 3), -1);
  g_DeviceSeam.Close(fd);
}

TEST_F(Geometry, DisagreeingEntriesFallBackToDriver) {
  MbrEntry a = Primary(63, 1000), b = Primary(2048, 1000);
  b.endHead = 15;
  int fd = Open(DiskImage(dir_, "g.img", 50000, {a, b}));
  HardDiskInformation disk = {};
  // The failed walk leaves entry 0's end head and end sector in the record
  // (not yet plus one), and no cylinders.
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 2), -1);
  EXPECT_EQ(Chs(disk), Chs(254, 63, 0u));
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 0), 0);
  EXPECT_EQ(Chs(disk), Chs(16, 32, 50000u / (16 * 32)));
  fake_->Disk("/dev/hda")->failGeometry = true;
  HardDiskInformation other = {};
  EXPECT_EQ(GetDiskCHSParameter(fd, &other, 0), -1);
  // Both attempts failed: what the table walk wrote stays.
  EXPECT_EQ(Chs(other), Chs(254, 63, 0u));
  EXPECT_EQ(other.BytesPerSector, 512);  // sector size and total were still taken
  EXPECT_EQ(other.TotalSectors, 50000u);
  // A fresh record that nothing was written to keeps its zeros.
  vt::WriteAt(dir_ / "g.img", 510, {0, 0});
  HardDiskInformation fresh = {};
  EXPECT_EQ(GetDiskCHSParameter(fd, &fresh, 0), -1);
  EXPECT_EQ(Chs(fresh), Chs(0, 0, 0u));
  g_DeviceSeam.Close(fd);
}

TEST_F(Geometry, EmptyFirstSlotOrBootIndicatorGivesNoTableGeometry) {
  MbrEntry a = Primary(63, 1000), b = Primary(2048, 1000);
  a.type = 0;
  int fd = Open(DiskImage(dir_, "g.img", 50000, {a, b}));
  HardDiskInformation disk = {};
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 2), -1);
  g_DeviceSeam.Close(fd);
  // Entry 0 with boot indicator 0x01 is skipped the same way; a later entry
  // with boot indicator 0x7F too (so entry 0 alone decides).
  vt::WriteAt(dir_ / "g.img", 0, BootRecord({[] { MbrEntry e = Primary(63, 10); e.boot = 1; return e; }(), b}));
  fd = g_DeviceSeam.Open64("/dev/hda", 0);
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 2), -1);
  g_DeviceSeam.Close(fd);
  MbrEntry odd = Primary(4000, 10);
  odd.boot = 0x7F;
  odd.endHead = 3;
  vt::WriteAt(dir_ / "g.img", 0, BootRecord({b, odd}));
  fd = g_DeviceSeam.Open64("/dev/hda", 0);
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 2), 0);
  EXPECT_EQ(disk.Heads, 255);
  g_DeviceSeam.Close(fd);
}

TEST_F(Geometry, DriverWithZeroHeadsIsFailure) {
  int fd = Open(DiskImage(dir_, "g.img", 5000, {}), 0, 63);
  HardDiskInformation disk = {};
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), -1);
  // The driver's answer stays in the record; no cylinders are computed.
  EXPECT_EQ(Chs(disk), Chs(0, 63, 0u));
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 0), -1);  // empty table, no driver answer
  fake_->Disk("/dev/hda")->geoHeads = 16;
  fake_->Disk("/dev/hda")->geoSectors = 0;
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), -1);
  EXPECT_EQ(disk.Heads, 16);
  EXPECT_EQ(disk.SectorsPerTrack, 0);
  g_DeviceSeam.Close(fd);
}

TEST_F(Geometry, SizeQueries) {
  int fd = Open(DiskImage(dir_, "g.img", 5000, {Primary(63, 100)}));
  vt::FakeDisk* d = fake_->Disk("/dev/hda");
  HardDiskInformation disk = {};
  // The 64-bit size query is the one that answers (its 64-bit number).
  d->byteSize = 5000LL * 512 + 100;
  fake_->ClearCalls();
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 0), 0);
  EXPECT_EQ(disk.TotalSectors, 5000u);
  char size64[32], size32[32];
  snprintf(size64, sizeof(size64), "/dev/hda 0x%lx", static_cast<unsigned long>(BLKGETSIZE64));
  snprintf(size32, sizeof(size32), "/dev/hda 0x%lx", static_cast<unsigned long>(BLKGETSIZE));
  std::vector<std::string> ioctls = fake_->CallsOf("ioctl");
  EXPECT_NE(std::find(ioctls.begin(), ioctls.end(), size64), ioctls.end());
  EXPECT_EQ(std::find(ioctls.begin(), ioctls.end(), size32), ioctls.end());
  EXPECT_EQ(BLKGETSIZE64, 0x80081272UL);
  // Without it, the count of 512-byte units gives the total.
  d->failSize64 = true;
  d->sectorSize = 4096;
  d->byteSize = 4096LL * 777;
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), 0);
  EXPECT_EQ(disk.BytesPerSector, 4096);
  EXPECT_EQ(disk.TotalSectors, 777u);
  d->failSize32 = true;
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), -1);
  d->failSize32 = false;
  d->failSectorSize = true;
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), -1);
  d->failSectorSize = false;
  d->sectorSize = 0;
  EXPECT_EQ(GetDiskCHSParameter(fd, &disk, 1), -1);
  EXPECT_EQ(GetDiskCHSParameter(-1, &disk, 1), -1);
  EXPECT_EQ(GetDiskCHSParameter(fd, nullptr, 1), -1);
  g_DeviceSeam.Close(fd);
}

// ---- SCSI generic records ---------------------------------------------------

TEST(GetSgInfomation, RecordsHandlesIdentityAndFlags) {
  vt::FakeDevices fake;
  fake.AddSg(0, 0, 0, 0, 0, "ATA", "TEST-SATA-DISK", "ata1");
  fake.AddSg(2, 3, 1, 2, 4, "Generic", "Flash", "1-1.2:1.0");
  vt::FakeSg& removable = fake.AddSg(5, 7, 0, 1, 0, "IOMEGA", "ZIP 100", "");
  removable.inquiry[1] = 0x80;
  // Answers 96 bytes in all: asked again with the full length and accepted.
  vt::FakeSg& longer = fake.AddSg(6, 8, 0, 0, 0, "LONG", "INQUIRY", "ata9");
  longer.inquiry[4] = 91;
  // Fails the longer request: skipped.
  vt::FakeSg& refuses = fake.AddSg(7, 9, 0, 0, 0, "NO", "REPEAT", "");
  refuses.inquiry[4] = 91;
  refuses.failLongInquiry = true;
  // Claims a length below 36: never accepted.
  fake.AddSg(8, 10, 0, 0, 0, "SHORT", "X", "").inquiry[4] = 20;
  fake.AddSg(9, 11, 0, 0, 0, "NOID", "X", "").failScsiId = true;
  SgInformation list[MAX_SG_COUNT];
  memset(list, 0, sizeof(list));
  ASSERT_EQ(GetSgInfomation(list), 4);
  EXPECT_STREQ(list[0].Handle, "SCSI:00:00:00:00");
  EXPECT_STREQ(list[0].Identity, "ATA     TEST-SATA-DISK  ");
  EXPECT_EQ(list[0].Flags, 0);
  EXPECT_STREQ(list[1].Handle, "SCSI:03:01:02:04");
  EXPECT_EQ(list[1].Flags, 1);  // USB interface name
  EXPECT_STREQ(list[2].Handle, "SCSI:07:00:01:00");
  EXPECT_EQ(list[2].Flags, 1);  // removable medium
  EXPECT_STREQ(list[3].Handle, "SCSI:08:00:00:00");
  EXPECT_STREQ(list[3].Identity, "LONG    INQUIRY         ");
  EXPECT_EQ(list[4].Handle[0], 0);  // skipped nodes left nothing
  std::vector<std::string> ioctls = fake.CallsOf("ioctl");
  int asked96 = 0;
  for (const std::string& c : ioctls)
    if (c.find("/dev/sg6 ") == 0 && c.find("len=96") != std::string::npos) ++asked96;
  EXPECT_EQ(asked96, 1);
  EXPECT_EQ(fake.OpenHandles(), 0);
}

TEST(GetSgInfomation, PciNameOfTwentyBytesWithoutTerminator) {
  vt::FakeDevices fake;
  fake.AddSg(0, 0, 0, 0, 0, "A", "B", "1-1.1.1.1.1.1.1:1.0");  // 19 chars, USB
  fake.AddSg(1, 1, 0, 0, 0, "A", "B", "0000:00:1f.2-extra-bytes");  // cut to 20
  SgInformation list[MAX_SG_COUNT];
  memset(list, 0, sizeof(list));
  ASSERT_EQ(GetSgInfomation(list), 2);
  EXPECT_EQ(list[0].Flags, 1);
  EXPECT_EQ(list[1].Flags, 0);
}

TEST(GetScsiHandle, PiecesAppendedWhileNonNegative) {
  char out[20];
  EXPECT_EQ(GetScsiHandle(0, 0, 1, 0, out), 16);
  EXPECT_STREQ(out, "SCSI:00:00:01:00");
  GetScsiHandle(12, 3, 45, -1, out);
  EXPECT_STREQ(out, "SCSI:12:03:45");
  GetScsiHandle(1, -1, 5, 5, out);
  EXPECT_STREQ(out, "SCSI:01");
  EXPECT_EQ(GetScsiHandle(-1, 0, 0, 0, out), 0);
  EXPECT_STREQ(out, "");
  // Wide numbers are cut to the 20-char field.
  EXPECT_EQ(GetScsiHandle(123456, 255, 255, 255, out), 19);
  EXPECT_STREQ(out, "SCSI:123456:255:255");
}

TEST(IsUsbDevice, InterfaceNamesOnly) {
  char usb[] = "1-1:1.0", deep[] = "2-1.4.3:1.0", pci[] = "0000:00:1f.2", empty[] = "",
       ata[] = "ata1", virtio[] = "virtio0", trailing[] = "1-1:1.", nodot[] = "1-1:10",
       dash[] = "1-", letters[] = "1-1:1.0a", colonLast[] = "1-1.2";
  EXPECT_EQ(IsUsbDevice(usb), 1);
  EXPECT_EQ(IsUsbDevice(deep), 1);
  EXPECT_EQ(IsUsbDevice(pci), 0);
  EXPECT_EQ(IsUsbDevice(empty), 0);
  EXPECT_EQ(IsUsbDevice(ata), 0);
  EXPECT_EQ(IsUsbDevice(virtio), 0);
  EXPECT_EQ(IsUsbDevice(trailing), 1);  // nothing after the '.' is all digits
  EXPECT_EQ(IsUsbDevice(nodot), 0);
  EXPECT_EQ(IsUsbDevice(dash), 0);
  EXPECT_EQ(IsUsbDevice(letters), 0);
  EXPECT_EQ(IsUsbDevice(colonLast), 0);
  EXPECT_EQ(IsUsbDevice(nullptr), 0);
}

// ---- sector I/O -------------------------------------------------------------

TEST(DirectReadDisk, WholeSectorsOnlyAndNoSeekForNothing) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = dir / "io.img";
  vt::MakeSparseFile(image, 4096);
  vt::WriteAt(image, 1024, {0xAB, 0xCD});
  fake.AddIdeDisk("/dev/hda", image, "IO");
  fake.SetPartitionRange("/dev/hda", 1, 3072, 700);  // 1 whole sector and a bit
  int fd = g_DeviceSeam.Open64("/dev/hda", 0);
  unsigned char buf[2048];
  fake.ClearCalls();
  EXPECT_EQ(DirectReadDisk(fd, 0, 0, buf, 512), 0);
  EXPECT_TRUE(fake.CallsOf("lseek").empty());
  EXPECT_EQ(DirectReadDisk(fd, 0, 1, nullptr, 512), 0);
  EXPECT_EQ(DirectReadDisk(-1, 0, 1, buf, 512), 0);
  EXPECT_EQ(DirectReadDisk(fd, 0, 1, buf, 0), 0);
  EXPECT_EQ(DirectReadDisk(fd, 0, -3, buf, 512), 0);
  EXPECT_TRUE(fake.CallsOf("lseek").empty());
  EXPECT_EQ(DirectReadDisk(fd, 2, 1, buf, 512), 1);
  EXPECT_EQ(buf[0], 0xAB);
  EXPECT_EQ(buf[1], 0xCD);
  EXPECT_EQ(fake.CallsOf("lseek").back(), "/dev/hda 1024");
  EXPECT_EQ(DirectReadDisk(fd, 6, 4, buf, 512), 2);  // short: 2 of 4 sectors
  EXPECT_EQ(DirectReadDisk(fd, 8, 1, buf, 512), 0);  // at the end
  g_DeviceSeam.Close(fd);
  int part = g_DeviceSeam.Open64("/dev/hda1", 0);
  EXPECT_EQ(DirectReadDisk(part, 0, 2, buf, 512), 1);  // 700 bytes: one whole sector
  unsigned char out[512];
  memset(out, 0x5A, sizeof(out));
  EXPECT_EQ(DirectWriteDisk(part, 0, 1, out, 512), 1);
  EXPECT_EQ(DirectWriteDisk(part, 0, 0, out, 512), 0);
  EXPECT_EQ(DirectWriteDisk(part, 0, 1, nullptr, 512), 0);
  g_DeviceSeam.Close(part);
  EXPECT_EQ(vt::ReadAt(image, 3072, 1)[0], 0x5A);
}

TEST(DirectReadDisk, SeekOffsetIsComputedIn64Bits) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = dir / "big.img";
  vt::MakeSparseFile(image, 4096);
  fake.AddIdeDisk("/dev/hda", image, "IO");
  int fd = g_DeviceSeam.Open64("/dev/hda", 0);
  static unsigned char buf[4096];
  fake.ClearCalls();
  EXPECT_EQ(DirectReadDisk(fd, 0x01000000UL, 1, buf, 4096), 0);  // beyond the end
  EXPECT_EQ(fake.CallsOf("lseek").back(), "/dev/hda 68719476736");
  g_DeviceSeam.Close(fd);
}

// ---- system-call details ----------------------------------------------------

TEST(DiskListFun, NodesOpenedReadWriteNonBlockingAndAlwaysClosed) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = DiskImage(dir, "n.img", 4096, {Primary(2048, 1024)});
  fake.AddIdeDisk("/dev/hdb", image, "IDE");
  fake.AddOpticalDrive("/dev/hdc");
  fake.AddScsiDisk("/dev/sdc", image, "ATA", "DISK", 2, 0, 0, 0, 4, "ata3");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 2);
  const std::vector<std::pair<std::string, int>>& opens = fake.OpenFlags();
  ASSERT_EQ(opens.size(), 4u + 32u + 16u + 8u + 10u + 10u);
  for (const auto& o : opens) EXPECT_EQ(o.second, O_RDWR | O_NONBLOCK) << o.first;
  // Every node was handed to close, also the 76 whose open failed (as -1).
  std::vector<std::string> closes = fake.CallsOf("close");
  EXPECT_EQ(closes.size(), opens.size());
  EXPECT_EQ(std::count(closes.begin(), closes.end(), "#-1"), 76);
  for (const char* node : {"/dev/hdb", "/dev/hdc", "/dev/sg4", "/dev/sdc"})
    EXPECT_EQ(std::count(closes.begin(), closes.end(), node), 1) << node;
  // The drive-status question names the current slot, on every opened disk node.
  char status[64];
  snprintf(status, sizeof(status), "0x%x arg=0x%x", CDROM_DRIVE_STATUS, CDSL_CURRENT);
  for (const char* node : {"/dev/hdb ", "/dev/hdc ", "/dev/sdc "}) {
    std::vector<std::string> ioctls = fake.CallsOf("ioctl");
    EXPECT_NE(std::find(ioctls.begin(), ioctls.end(), std::string(node) + status), ioctls.end())
        << node;
  }
  EXPECT_EQ(fake.OpenHandles(), 0);
  Release(&root);
}

TEST(DiskListFun, ScsiAddressFromIdlunWordAndLastMatchingRecordWins) {
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string image = DiskImage(dir, "s.img", 4096, {Primary(2048, 1024)});
  // Host 3 (bus number), channel 2, target 5, LUN 1: SCSI:03:02:05:01.
  fake.AddScsiDisk("/dev/sda", image, "FIRST", "RECORD", 3, 2, 5, 1, 0, "ata1");
  fake.AddSg(1, 3, 2, 1, 5, "SWAPPED", "ID AND LUN", "1-1:1.0");  // another address
  fake.AddSg(2, 3, 2, 5, 1, "SECOND", "RECORD", "", /*removableMedium=*/true);
  SgInformation list[MAX_SG_COUNT];
  memset(list, 0, sizeof(list));
  ASSERT_EQ(GetSgInfomation(list), 3);
  EXPECT_STREQ(list[0].Handle, "SCSI:03:02:05:01");
  EXPECT_STREQ(list[1].Handle, "SCSI:03:02:01:05");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  // Both sg0 and sg2 match; the later one gives model and flags.
  EXPECT_STREQ(root.Disks[0].Model, "SECOND  RECORD          ");
  EXPECT_EQ(root.Disks[0].Flags, DISK_FLAG_REMOVABLE | DISK_FLAG_DMA | DISK_FLAG_LBA);
  Release(&root);
  // With only the first record matching, its (non-removable) flags count.
  fake.Sg(2)->channel = 0;
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  EXPECT_STREQ(root.Disks[0].Model, "FIRST   RECORD          ");
  EXPECT_EQ(root.Disks[0].Flags, DISK_FLAG_DMA | DISK_FLAG_LBA);
  Release(&root);
}

TEST(GetSgInfomation, InquiryRequestsOfThirtySixBytesThenTheFullLength) {
  vt::FakeDevices fake;
  fake.AddSg(0, 0, 0, 0, 0, "ATA", "DISK", "ata1");
  fake.AddSg(3, 1, 0, 0, 0, "LONG", "INQUIRY", "ata2").inquiry[4] = 91;
  SgInformation list[MAX_SG_COUNT];
  memset(list, 0, sizeof(list));
  ASSERT_EQ(GetSgInfomation(list), 2);
  char sgIo[16];
  snprintf(sgIo, sizeof(sgIo), "0x%x ", SG_IO);
  std::vector<std::string> requests;
  for (const std::string& c : fake.CallsOf("ioctl"))
    if (c.find(sgIo) != std::string::npos) requests.push_back(c);
  char dir[8];
  snprintf(dir, sizeof(dir), "%d", SG_DXFER_FROM_DEV);
  EXPECT_EQ(std::string(dir), "-3");
  std::vector<std::string> expected = {
      "/dev/sg0 " + std::string(sgIo) + "len=36 id=S dir=-3 cdb=120000002400 sense=32 timeout=200",
      "/dev/sg3 " + std::string(sgIo) + "len=36 id=S dir=-3 cdb=120000002400 sense=32 timeout=200",
      "/dev/sg3 " + std::string(sgIo) + "len=96 id=S dir=-3 cdb=120000006000 sense=32 timeout=200"};
  EXPECT_EQ(requests, expected);
  for (const auto& o : fake.OpenFlags()) EXPECT_EQ(o.second, O_RDWR | O_NONBLOCK) << o.first;
}

}  // namespace
