// NVMe namespaces, virtio disks and SD/eMMC cards: where they come in the
// inventory, their models and flags, their partition nodes, and the drive
// letters of a typical laptop (an NVMe system disk with a GPT and a USB
// stick). Runs inside the private mount namespace.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "disk/DeviceSeam.h"
#include "disk/DiskDiscovery.h"
#include "disk/View_Disk_Info.h"
#include "disk_test_util.h"
#include "gpt_image.h"

namespace {

uint64_t FileSize(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<uint64_t>(st.st_size) : 0;
}

std::string Model(const HardDiskInformation& d) { return std::string(d.Model, strnlen(d.Model, 40)); }

class ModernDisks : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::FakeDevices::PrivateMntActive()) << "run inside tests/run-in-mntns.sh";
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  void TearDown() override {
    if (table_) {
      table_->UI_FreeMemory();
      FreeHdInfoList(&table_->m_Computer, FreeFsInfo);
    }
    FreeHdInfoList(&root_, FreeFsInfo);
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  // A sysfs attribute file with the text the kernel would give.
  void Sysfs(const std::string& path, const std::string& text) {
    const std::string file = dir_ / ("sysfs-" + std::to_string(++files_));
    std::ofstream(file) << text;
    fake_.AddFile(file).node = path;
  }
  // An NVMe system disk as a desktop system installs it: EFI system,
  // reserved, the Windows volume (NTFS) and recovery, in a GPT.
  std::string WindowsNvmeImage() {
    const std::string image =
        vt::MakeVolumesImage(dir_.path(), "nvme.img", {{'0', ""}, {'0', ""}, {'N', "Windows"}, {'0', ""}});
    vt::GptImage g;
    g.totalSectors = FileSize(image) / 512;
    const uint64_t slot = 16384 + 64;
    const char* types[] = {"C12A7328-F81F-11D2-BA4B-00A0C93EC93B", "E3C9E316-0B5C-4DB8-817D-F92DF00215AE",
                           "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", "DE94BBA4-06D1-4D40-A16A-BFD50179D6AC"};
    const char16_t* names[] = {u"EFI system partition", u"Microsoft reserved partition",
                               u"Basic data partition", u""};
    for (int i = 0; i < 4; ++i) {
      const uint64_t start = 2048 + i * slot;
      g.parts.push_back({types[i], start, start + 16384 - 1, 0, names[i]});
      partitionStarts_.push_back(start);
    }
    g.Write(image);
    return image;
  }

  dt::TempDir dir_;
  vt::FakeDevices fake_;
  MyComputer root_ = {0, nullptr};
  std::unique_ptr<View_Disk_Info> table_;
  std::vector<uint64_t> partitionStarts_;
  int files_ = 0;
};

TEST_F(ModernDisks, OrderAfterIdeAndBeforeScsi) {
  const std::string image = vt::MakeFatVolumesImage(dir_.path(), {"DATA"});
  fake_.AddScsiDisk("/dev/sda", image, "Generic", "Flash Disk", 4, 0, 0, 0, 0, "2-1:1.0");
  fake_.AddIdeDisk("/dev/mmcblk0", image, "").answersIdentify = false;
  fake_.AddIdeDisk("/dev/vdb", image, "").answersIdentify = false;
  fake_.AddIdeDisk("/dev/nvme1n1", image, "").nvmeModel = "Samsung SSD 980 PRO 1TB";
  fake_.AddIdeDisk("/dev/nvme0n2", image, "").nvmeModel = "Second Namespace";
  fake_.AddIdeDisk("/dev/hda", image, "OLD IDE DISK");
  ASSERT_EQ(DiskListFun(&root_, 1), 6);
  const char* order[] = {"/dev/hda", "/dev/nvme0n2", "/dev/nvme1n1", "/dev/vdb", "/dev/mmcblk0", "/dev/sda"};
  for (int i = 0; i < 6; ++i) EXPECT_STREQ(root_.Disks[i].DevicePath, order[i]) << i;
  // The NVMe model number is the 40 bytes the controller gives.
  EXPECT_EQ(Model(root_.Disks[2]), "Samsung SSD 980 PRO 1TB" + std::string(17, ' '));
  EXPECT_EQ(root_.Disks[2].Flags, DISK_FLAG_DMA | DISK_FLAG_LBA);
  // Letters follow the order: the stick comes last.
  EXPECT_EQ(root_.Disks[2].Partitions[0].DriveLetter, 'E');
  EXPECT_EQ(root_.Disks[5].Partitions[0].DriveLetter, 'H');
}

TEST_F(ModernDisks, ModelsFromSysfsAndTheRemovableSdCard) {
  const std::string image = vt::MakeFatVolumesImage(dir_.path(), {"DATA"});
  fake_.AddIdeDisk("/dev/nvme0n1", image, "");  // identify refused: sysfs model
  Sysfs("/sys/block/nvme0n1/device/model", "WDC PC SN530 SDBPNPZ-512G-1014   \n");
  fake_.AddIdeDisk("/dev/vda", image, "");  // no model text at all
  fake_.AddIdeDisk("/dev/mmcblk0", image, "");
  Sysfs("/sys/block/mmcblk0/device/name", "DG4064\n");
  Sysfs("/sys/block/mmcblk0/device/type", "MMC\n");
  fake_.AddIdeDisk("/dev/mmcblk1", image, "");
  Sysfs("/sys/block/mmcblk1/device/name", "SD32G\n");
  Sysfs("/sys/block/mmcblk1/device/type", "SD\n");
  ASSERT_EQ(DiskListFun(&root_, 1), 4);
  EXPECT_EQ(Model(root_.Disks[0]), "WDC PC SN530 SDBPNPZ-512G-1014");
  EXPECT_EQ(Model(root_.Disks[1]), "Virtio disk");
  EXPECT_EQ(Model(root_.Disks[2]), "DG4064");
  EXPECT_EQ(Model(root_.Disks[3]), "SD32G");
  // eMMC is built in; an SD card is removable.
  EXPECT_EQ(root_.Disks[2].Flags, DISK_FLAG_DMA | DISK_FLAG_LBA);
  EXPECT_EQ(root_.Disks[3].Flags, DISK_FLAG_DMA | DISK_FLAG_LBA | DISK_FLAG_REMOVABLE);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(root_.Disks[i].TotalSectors, FileSize(image) / 512);
}

TEST_F(ModernDisks, ANodeWithoutSizeIsNoDisk) {
  const std::string image = vt::MakeFatVolumesImage(dir_.path(), {"DATA"});
  fake_.AddIdeDisk("/dev/vda", image, "").failSize64 = true;
  EXPECT_EQ(DiskListFun(&root_, 1), 0);
}

TEST_F(ModernDisks, ALaptopWithAnNvmeGptSystemDiskAndAUsbStick) {
  const std::string nvme = WindowsNvmeImage();
  fake_.AddIdeDisk("/dev/nvme0n1", nvme, "").nvmeModel = "SAMSUNG MZVL2512HCJQ";
  for (int i = 0; i < 4; ++i)
    fake_.SetPartitionRange("/dev/nvme0n1", i + 1, partitionStarts_[i] * 512, 16384ull * 512);
  const std::string stick = vt::MakeFatVolumesImage(dir_.path(), {"STICK"});
  fake_.AddScsiDisk("/dev/sda", stick, "Generic", "Flash Disk", 4, 0, 0, 0, 0, "2-1:1.0");
  table_.reset(new View_Disk_Info);
  table_->UI_InitDevice();
  table_->GetDiskParttionInfo();
  ASSERT_EQ(table_->m_Computer.DiskCount, 2);
  const HardDiskInformation& disk = table_->m_Computer.Disks[0];
  EXPECT_EQ(disk.PartitionTable, GPT_RESULT_PRIMARY);
  ASSERT_EQ(disk.PartitionCount, 4);
  // C: is the Windows volume, D: the stick, as a desktop system gives them.
  ASSERT_EQ(table_->GetCurrentParttionNum(), 2);
  EXPECT_EQ(table_->m_Volume[0].DriveLetter, 'C');
  EXPECT_STREQ(table_->m_Volume[0].Node, "/dev/nvme0n1p3");
  EXPECT_STREQ(table_->m_Volume[0].MountPoint, "/mnt/C");
  EXPECT_EQ(table_->m_Volume[0].FsType, FS_TYPE_NTFS);
  EXPECT_EQ(table_->m_Volume[1].DriveLetter, 'D');
  EXPECT_STREQ(table_->m_Volume[1].Node, "/dev/sda1");
  EXPECT_EQ(table_->m_Volume[1].Removable, 1);
  // The EFI system, reserved and recovery partitions were never probed.
  for (const std::string& c : fake_.Calls()) {
    EXPECT_EQ(c.find("nvme0n1p1"), std::string::npos) << c;
    EXPECT_EQ(c.find("nvme0n1p2"), std::string::npos) << c;
    EXPECT_EQ(c.find("nvme0n1p4"), std::string::npos) << c;
  }
  std::map<std::string, std::string> mounted = {{"/mnt/C", "/dev/nvme0n1p3"}, {"/mnt/D", "/dev/sda1"}};
  EXPECT_EQ(fake_.Mounted(), mounted);
}

// A FAT volume made by mkfs.fat with the options given, written into image
// at byte offset (only its first MiB: boot sector, FATs and root folder).
void PutFatVolume(const std::string& dir, const std::string& image, uint64_t offset,
                  const std::string& options) {
  const std::string part = dir + "/fat.img";
  ASSERT_EQ(dt::Run("rm -f '" + part + "' && truncate -s 32M '" + part + "' && mkfs.fat " +
                    options + " '" + part + "' >/dev/null 2>&1 && dd if='" + part + "' of='" + image +
                    "' bs=1M count=1 seek=" + std::to_string(offset) +
                    " oflag=seek_bytes conv=notrunc status=none"),
            0);
}

TEST_F(ModernDisks, APartitionBeyondTwoTebibytesOnAFourTebibyteNvmeDiskIsMounted) {
  ASSERT_EQ(dt::Run("command -v mkfs.fat >/dev/null"), 0) << "mkfs.fat missing (dosfstools)";
  const std::string image = dir_ / "big.img";
  vt::GptImage g;
  g.totalSectors = 4ull << 31;  // 4 TiB of 512-byte sectors, sparse
  const uint64_t start = (2ull << 31) + 2048;
  g.parts = {{"EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", start, start + 65535, 0, u"far"}};
  g.Write(image);
  PutFatVolume(dir_.path(), image, start * 512, "-F 16 -n FARAWAY");
  fake_.AddIdeDisk("/dev/nvme0n1", image, "").nvmeModel = "BIG NVME";
  fake_.SetPartitionRange("/dev/nvme0n1", 1, start * 512, 65536ull * 512);
  table_.reset(new View_Disk_Info);
  table_->UI_InitDevice();
  table_->GetDiskParttionInfo();
  ASSERT_EQ(table_->m_Computer.DiskCount, 1);
  EXPECT_EQ(table_->m_Computer.Disks[0].TotalSectors, 4ull << 31);
  EXPECT_EQ(table_->m_Computer.Disks[0].Partitions[0].StartSector, start);
  ASSERT_EQ(table_->GetCurrentParttionNum(), 1);
  EXPECT_STREQ(table_->m_Volume[0].Node, "/dev/nvme0n1p1");
  EXPECT_STREQ(table_->m_Volume[0].VolumeLabel, "FARAWAY    ");
  EXPECT_EQ(fake_.Mounted().at("/mnt/C"), "/dev/nvme0n1p1");
}

TEST_F(ModernDisks, SectorsOf4096BytesAreReadAsTheDiskReportsThem) {
  ASSERT_EQ(dt::Run("command -v mkfs.fat >/dev/null"), 0) << "mkfs.fat missing (dosfstools)";
  const std::string image = dir_ / "4k.img";
  vt::GptImage g;
  g.bps = 4096;
  g.totalSectors = 32768;  // 128 MiB
  g.parts = {{"EBD0A0A2-B9E5-4433-87C0-68B6B72699C7", 256, 256 + 16383, 0, u"data"}};
  g.Write(image);
  PutFatVolume(dir_.path(), image, 256ull * 4096, "-F 32 -S 4096 -s 1 -n FOURK");
  vt::FakeDisk& disk = fake_.AddIdeDisk("/dev/nvme0n1", image, "");
  disk.nvmeModel = "4K NVME";
  disk.sectorSize = 4096;
  fake_.SetPartitionRange("/dev/nvme0n1", 1, 256ull * 4096, 16384ull * 4096);
  table_.reset(new View_Disk_Info);
  table_->UI_InitDevice();
  ASSERT_EQ(table_->m_Computer.DiskCount, 1);
  EXPECT_EQ(table_->m_Computer.Disks[0].BytesPerSector, 4096);
  EXPECT_EQ(table_->m_Computer.Disks[0].PartitionTable, GPT_RESULT_PRIMARY);
  ASSERT_EQ(table_->GetCurrentParttionNum(), 1);
  EXPECT_EQ(table_->m_Volume[0].FsType, FS_TYPE_FAT32);
  EXPECT_STREQ(table_->m_Volume[0].VolumeLabel, "FOURK      ");
}

}  // namespace
