// Disk image files as disks: the option, the image table's reads and
// answers, discovery after the real disks, and mounting through loop devices
// (read-only unless asked), against the device test double. Runs inside the
// private mount namespace.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <linux/hdreg.h>
#include <linux/loop.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "disk/DeviceSeam.h"
#include "disk/DiskDiscovery.h"
#include "disk/DiskImage.h"
#include "disk/View_Disk_Info.h"
#include "disk_test_util.h"

namespace {

using vt::VolumeSpec;

class DiskImages : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::FakeDevices::PrivateMntActive()) << "run inside tests/run-in-mntns.sh";
    ClearDiskImages();
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  void TearDown() override {
    if (table_) {
      table_->UI_FreeMemory();
      FreeHdInfoList(&table_->m_Computer, FreeFsInfo);
    }
    ClearDiskImages();
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  // An image file served to the image table by the double.
  std::string Image(const std::string& name, const std::vector<VolumeSpec>& volumes) {
    std::string path = vt::MakeVolumesImage(dir_.path(), name, volumes);
    fake_.AddFile(path);
    return path;
  }
  View_Disk_Info* Table() {
    table_.reset(new View_Disk_Info);
    table_->UI_TakeInventory();
    return table_.get();
  }
  bool Called(const std::string& prefix) {
    for (const std::string& c : fake_.Calls())
      if (c.compare(0, prefix.size(), prefix) == 0) return true;
    return false;
  }
  dt::TempDir dir_;
  vt::FakeDevices fake_;
  std::unique_ptr<View_Disk_Info> table_;
};

TEST_F(DiskImages, OptionWordsAfterTheNameInAnyOrder) {
  std::string path = Image("a,b.img", {{'F', "ONE"}});
  EXPECT_EQ(AddDiskImage((path + ",rw,usb").c_str()), 0);
  EXPECT_EQ(AddDiskImage((path + ",4096").c_str()), 0);
  EXPECT_EQ(AddDiskImage(path.c_str()), 0);
  ASSERT_EQ(DiskImageCount(), 3);
  const DiskImageInformation* a = DiskImageAt(0);
  EXPECT_EQ(std::string(a->FilePath), path);  // a comma inside the name stays
  EXPECT_EQ(a->Usb, 1);
  EXPECT_EQ(a->Writable, 1);
  EXPECT_EQ(a->SectorSize, 512);
  EXPECT_EQ(DiskImageAt(1)->SectorSize, 4096);
  EXPECT_EQ(DiskImageAt(1)->Usb, 0);
  EXPECT_EQ(DiskImageAt(2)->Writable, 0);
  EXPECT_EQ(DiskImageAt(2)->Bytes, DiskImageAt(0)->Bytes);
  EXPECT_EQ(DiskImageAt(3), nullptr);
}

TEST_F(DiskImages, MissingEmptyAndTinyFilesAreRefused) {
  std::string tiny = dir_.path() + "/tiny.img";
  vt::WriteAt(tiny, 0, std::vector<uint8_t>(100, 1));
  fake_.AddFile(tiny);
  EXPECT_EQ(AddDiskImage((dir_.path() + "/missing.img").c_str()), -1);
  EXPECT_EQ(AddDiskImage(tiny.c_str()), -1);
  EXPECT_EQ(AddDiskImage(""), -1);
  EXPECT_EQ(AddDiskImage(",usb"), -1);
  EXPECT_EQ(DiskImageCount(), 0);
}

TEST_F(DiskImages, CommandLineTakesBothSpellingsAndLeavesOtherArguments) {
  std::string a = Image("a.img", {{'F', "ONE"}});
  std::string b = Image("b.img", {{'F', "TWO"}});
  std::string withUsb = b + ",usb";
  std::string equals = "--image=" + a;
  const char* args[] = {"vantori", "--print-layout", "--image", withUsb.c_str(), equals.c_str()};
  EXPECT_EQ(AddDiskImagesFromArgs(5, const_cast<char**>(args)), 2);
  ASSERT_EQ(DiskImageCount(), 2);
  EXPECT_EQ(DiskImageAt(0)->Usb, 1);
  EXPECT_EQ(std::string(DiskImageAt(1)->FilePath), a);
  ClearDiskImages();
  const char* dangling[] = {"vantori", "--image"};
  EXPECT_EQ(AddDiskImagesFromArgs(2, const_cast<char**>(dangling)), -1);
}

TEST_F(DiskImages, ImageNodesReadInsideTheirStretchOnlyAndAnswerAsADisk) {
  std::string path = Image("d.img", {{'F', "ONE"}, {'N', "TWO"}});
  ASSERT_EQ(AddDiskImage(path.c_str()), 0);
  View_Disk_Info* t = Table();
  ASSERT_EQ(t->m_Computer.DiskCount, 1);
  const HardDiskInformation& disk = t->m_Computer.Disks[0];
  ASSERT_EQ(disk.PartitionCount, 2);
  const PartitionInformation& second = disk.Partitions[1];

  int fd = g_DeviceSeam.Open64("/dev/vantori-image0p2", O_RDWR);
  ASSERT_GE(fd, 0);
  uint64_t bytes = 0;
  ASSERT_EQ(g_DeviceSeam.Ioctl(fd, BLKGETSIZE64, &bytes), 0);
  EXPECT_EQ(bytes, static_cast<uint64_t>(second.SectorCount) * 512);
  int sector = 0;
  ASSERT_EQ(g_DeviceSeam.Ioctl(fd, BLKSSZGET, &sector), 0);
  EXPECT_EQ(sector, 512);
  struct hd_geometry geo;
  ASSERT_EQ(g_DeviceSeam.Ioctl(fd, HDIO_GETGEO, &geo), 0);
  EXPECT_EQ(geo.heads, 255);
  EXPECT_EQ(geo.start, second.StartSector);
  unsigned char identify[512];
  EXPECT_EQ(g_DeviceSeam.Ioctl(fd, HDIO_GET_IDENTITY, identify), -1);
  // The first sector of the node is the partition's boot sector.
  unsigned char buffer[1024];
  ASSERT_EQ(g_DeviceSeam.Read(fd, buffer, 512), 512);
  std::vector<uint8_t> expected = vt::ReadAt(path, uint64_t{second.StartSector} * 512, 512);
  EXPECT_EQ(0, memcmp(buffer, expected.data(), 512));
  // A read that reaches past the node's end stops at it; past it reads 0.
  ASSERT_EQ(g_DeviceSeam.Lseek64(fd, static_cast<off64_t>(bytes) - 100, SEEK_SET),
            static_cast<off64_t>(bytes) - 100);
  EXPECT_EQ(g_DeviceSeam.Read(fd, buffer, sizeof(buffer)), 100);
  EXPECT_EQ(g_DeviceSeam.Read(fd, buffer, sizeof(buffer)), 0);
  ASSERT_EQ(g_DeviceSeam.Lseek64(fd, 0, SEEK_END), static_cast<off64_t>(bytes));
  EXPECT_EQ(g_DeviceSeam.Lseek64(fd, -1, SEEK_SET), -1);
  // An image that was not given as writable refuses writes, whatever the
  // open asked for.
  ASSERT_EQ(g_DeviceSeam.Lseek64(fd, 0, SEEK_SET), 0);
  errno = 0;
  EXPECT_EQ(g_DeviceSeam.Write(fd, buffer, 512), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(g_DeviceSeam.Close(fd), 0);
  // Nodes that do not exist.
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/vantori-image0p3", O_RDONLY), -1);
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/vantori-image1", O_RDONLY), -1);
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/vantori-image0p", O_RDONLY), -1);
  EXPECT_EQ(fake_.OpenHandles(), 0);
}

TEST_F(DiskImages, FourKibibyteSectorsAreAnswered) {
  std::string path = Image("big.img", {{'F', "ONE"}});
  ASSERT_EQ(AddDiskImage((path + ",4096").c_str()), 0);
  int fd = g_DeviceSeam.Open64("/dev/vantori-image0", O_RDONLY);
  ASSERT_GE(fd, 0);
  int sector = 0;
  ASSERT_EQ(g_DeviceSeam.Ioctl(fd, BLKSSZGET, &sector), 0);
  EXPECT_EQ(sector, 4096);
  unsigned long units = 0;
  ASSERT_EQ(g_DeviceSeam.Ioctl(fd, BLKGETSIZE, &units), 0);
  EXPECT_EQ(uint64_t{units} * 512, DiskImageAt(0)->Bytes);
  g_DeviceSeam.Close(fd);
}

TEST_F(DiskImages, ImagesFollowTheRealDisksWithModelFlagsAndLetters) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeVolumesImage(dir_.path(), "ide.img", {{'F', "SYS"}}),
                   "IDE DISK");
  std::string fixed = Image("fixed.img", {{'N', "Data"}, {'F', "PHOTOS"}});
  std::string stick = Image("stick.img", {{'F', "STICK"}});
  ASSERT_EQ(AddDiskImage(fixed.c_str()), 0);
  ASSERT_EQ(AddDiskImage((stick + ",usb").c_str()), 0);
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 3);
  EXPECT_STREQ(root.Disks[0].DevicePath, "/dev/hda");
  EXPECT_STREQ(root.Disks[1].DevicePath, "/dev/vantori-image0");
  EXPECT_STREQ(root.Disks[2].DevicePath, "/dev/vantori-image1");
  EXPECT_EQ(std::string(root.Disks[1].Model, 10), "Disk image");
  EXPECT_EQ(root.Disks[1].Model[10], 0);
  EXPECT_EQ(root.Disks[1].Flags, DISK_FLAG_LBA);
  EXPECT_EQ(root.Disks[2].Flags, DISK_FLAG_LBA | DISK_FLAG_REMOVABLE);
  EXPECT_EQ(root.Disks[1].BytesPerSector, 512);
  EXPECT_EQ(uint64_t{root.Disks[1].TotalSectors} * 512, DiskImageAt(0)->Bytes);
  ASSERT_EQ(root.Disks[1].PartitionCount, 2);
  EXPECT_EQ(root.Disks[0].Partitions[0].DriveLetter, 'C');
  EXPECT_EQ(root.Disks[1].Partitions[0].DriveLetter, 'D');
  EXPECT_EQ(root.Disks[1].Partitions[1].DriveLetter, 'E');
  EXPECT_EQ(root.Disks[2].Partitions[0].DriveLetter, 'F');
  FreeHdInfoList(&root, FreeFsInfo);
  EXPECT_EQ(fake_.OpenHandles(), 0);
}

TEST_F(DiskImages, ReadOnlyImageVolumesMountReadOnlyThroughLoopDevicesWithoutNtfsfix) {
  std::string path = Image("fixed.img", {{'N', "Data"}, {'F', "PHOTOS"}});
  ASSERT_EQ(AddDiskImage(path.c_str()), 0);
  fake_.EnableLoopDevices(4);
  View_Disk_Info* t = Table();
  vt::StdoutCapture out;
  t->UI_InitDevice();
  std::string printed = out.Stop();
  ASSERT_EQ(t->GetCurrentParttionNum(), 2);
  const PartitionInformation* parts = t->m_Computer.Disks[0].Partitions;
  std::string offset0 = std::to_string(uint64_t{parts[0].StartSector} * 512);
  std::string limit0 = std::to_string(uint64_t{parts[0].SectorCount} * 512);
  std::string offset1 = std::to_string(uint64_t{parts[1].StartSector} * 512);
  std::string limit1 = std::to_string(uint64_t{parts[1].SectorCount} * 512);
  std::string flags = "0x" + [] {
    char hex[16];
    snprintf(hex, sizeof(hex), "%x", LO_FLAGS_AUTOCLEAR | LO_FLAGS_READ_ONLY);
    return std::string(hex);
  }();
  char configure[16];
  snprintf(configure, sizeof(configure), "0x%lx", static_cast<unsigned long>(LOOP_CONFIGURE));
  std::vector<std::string> loops;
  for (const std::string& c : fake_.CallsOf("ioctl"))
    if (c.compare(0, 9, "/dev/loop") == 0 && c.find("loop-control") == std::string::npos)
      loops.push_back(c);
  std::vector<std::string> expectedLoops = {
      "/dev/loop4 " + std::string(configure) + " file=" + path + " offset=" + offset0 +
          " limit=" + limit0 + " flags=" + flags + " bs=512",
      "/dev/loop5 " + std::string(configure) + " file=" + path + " offset=" + offset1 +
          " limit=" + limit1 + " flags=" + flags + " bs=512"};
  EXPECT_EQ(loops, expectedLoops);
  // NTFS: no ntfsfix (it writes), ntfs-3g read-only on the loop device.
  std::vector<std::string> shell = fake_.CallsOf("system");
  std::vector<std::string> expectedShell = {
      "ntfs-3g /dev/loop4 /mnt/C -o ro,force,locale=zh_CN.utf8,umask=007,gid=46 > /dev/null "
      "2>&1"};
  EXPECT_EQ(shell, expectedShell);
  EXPECT_NE(printed.find("ntfsfix skipped for /dev/loop4: the disk image is read-only\n"),
            std::string::npos)
      << printed;
  // FAT: mount(2) read-only from the loop device.
  std::vector<std::string> mounts = fake_.CallsOf("mount");
  char flagsText[32];
  snprintf(flagsText, sizeof(flagsText), "0x%lx", 0xC0ED0000UL | MS_RDONLY);
  std::vector<std::string> expectedMounts = {"/dev/loop5 /mnt/D vfat " + std::string(flagsText)};
  EXPECT_EQ(mounts, expectedMounts);
  // The nodes the layer printed are the image's partition nodes.
  EXPECT_NE(printed.find("/dev/vantori-image0p1\n"), std::string::npos);
  EXPECT_NE(printed.find("/dev/vantori-image0p2\n"), std::string::npos);
  // Only the mounts hold the loop devices now: every descriptor is closed.
  EXPECT_EQ(fake_.OpenHandles(), 0);
}

TEST_F(DiskImages, WritableImageRunsNtfsfixOnTheLoopDeviceAndMountsReadWrite) {
  std::string path = Image("fixed.img", {{'N', "Data"}});
  ASSERT_EQ(AddDiskImage((path + ",rw").c_str()), 0);
  fake_.EnableLoopDevices(0);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  ASSERT_EQ(t->GetCurrentParttionNum(), 1);
  std::vector<std::string> shell = fake_.CallsOf("system");
  std::vector<std::string> expectedShell = {
      "ntfsfix /dev/loop0 > /dev/null 2>&1",
      "ntfs-3g /dev/loop0 /mnt/C -o force,locale=zh_CN.utf8,umask=007,gid=46 > /dev/null 2>&1"};
  EXPECT_EQ(shell, expectedShell);
  bool autoclearOnly = false;
  char flags[16];
  snprintf(flags, sizeof(flags), "flags=0x%x", LO_FLAGS_AUTOCLEAR);
  for (const std::string& c : fake_.CallsOf("ioctl"))
    if (c.find(flags) != std::string::npos) autoclearOnly = true;
  EXPECT_TRUE(autoclearOnly);
}

TEST_F(DiskImages, NoLoopDeviceLeavesTheVolumeOutAndTheLetterGoesOn) {
  std::string path = Image("fixed.img", {{'F', "ONE"}, {'F', "TWO"}});
  ASSERT_EQ(AddDiskImage(path.c_str()), 0);
  fake_.EnableLoopDevices(0, EACCES);
  View_Disk_Info* t = Table();
  vt::StdoutCapture out;
  t->UI_InitDevice();
  std::string printed = out.Stop();
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  EXPECT_NE(printed.find("no loop device for /dev/vantori-image0p1: Permission denied"),
            std::string::npos)
      << printed;
  EXPECT_EQ(fake_.OpenHandles(), 0);
}

TEST_F(DiskImages, AKernelWithoutVfatIsNamedWhenAFatVolumeIsLeftOut) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeVolumesImage(dir_.path(), "ide.img", {{'F', "SYS"}}),
                   "IDE DISK");
  fake_.FailMount("/dev/hda1", ENODEV);
  View_Disk_Info* t = Table();
  vt::StdoutCapture out;
  t->UI_InitDevice();
  std::string printed = out.Stop();
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_NE(printed.find("FAT volume /dev/hda1 left out: this kernel has no vfat file system\n"),
            std::string::npos)
      << printed;
}

TEST_F(DiskImages, ClearingGivesTheDeviceTableBack) {
  auto open = g_DeviceSeam.Open64;
  std::string path = Image("a.img", {{'F', "ONE"}});
  ASSERT_EQ(AddDiskImage(path.c_str()), 0);
  EXPECT_NE(g_DeviceSeam.Open64, open);
  ClearDiskImages();
  EXPECT_EQ(g_DeviceSeam.Open64, open);
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/vantori-image0", O_RDONLY), -1);
}

}  // namespace
