// The volume table: recognising, mounting, drive letters and size texts,
// against faked disks. Runs inside the private mount namespace.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>

#include "disk/DeviceSeam.h"
#include "disk/View_Disk_Info.h"
#include "disk_test_util.h"

namespace {

using vt::VolumeSpec;

const char* kNtfsOptions = "-o force,locale=zh_CN.utf8,umask=007,gid=46 > /dev/null 2>&1";

std::string NtfsMount(const std::string& node, const std::string& mp) {
  return "ntfs-3g " + node + " " + mp + " " + kNtfsOptions;
}

bool IsDir(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

class VolumeTable : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::FakeDevices::PrivateMntActive())
        << "run inside tests/run-in-mntns.sh (private tmpfs on /mnt)";
    // Each test starts with an empty /mnt.
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  void TearDown() override {
    // The table's destructor leaves the inventory alone (as at unload).
    if (table_) FreeHdInfoList(&table_->m_Computer, FreeFsInfo);
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  // Builds a table and takes the inventory of the fake's disks (construction
  // alone opens nothing).
  View_Disk_Info* Table() {
    table_.reset(new View_Disk_Info);
    table_->UI_TakeInventory();
    return table_.get();
  }
  std::string Letters(View_Disk_Info* t) {
    std::string s;
    for (int i = 0; i < t->GetCurrentParttionNum(); ++i) s += t->m_Volume[i].DriveLetter;
    return s;
  }
  dt::TempDir dir_;
  vt::FakeDevices fake_;
  std::unique_ptr<View_Disk_Info> table_;
};

TEST_F(VolumeTable, StartUpTableOfTestProgramIsEmpty) {
  // Built at load through the refusing device table.
  EXPECT_EQ(g_AllDiskPartitionInf.m_DiskCount, 0);
  EXPECT_EQ(g_AllDiskPartitionInf.m_Computer.Disks, nullptr);
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);
}

TEST_F(VolumeTable, TakingTheInventoryMountsNothing) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"DATA"}), "D");
  View_Disk_Info* t = Table();
  EXPECT_EQ(t->m_DiskCount, 1);
  EXPECT_EQ(t->m_Computer.DiskCount, 1);
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  EXPECT_TRUE(fake_.CallsOf("mkdir").empty());
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[0].FileSystem, nullptr);
  // The fresh inventory is the one mounted from: no second discovery.
  fake_.ClearCalls();
  t->UI_InitDevice();
  EXPECT_TRUE(fake_.CallsOf("open").size() == 1u) << fake_.CallsOf("open").size();
  EXPECT_EQ(t->GetCurrentParttionNum(), 1);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, ConstructionOpensNoDevice) {
  // The global table is constructed when the library is loaded: that must
  // not touch a disk (nor need root rights).
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"DATA"}), "D");
  View_Disk_Info table;
  EXPECT_TRUE(fake_.Calls().empty()) << fake_.Calls().front();
  EXPECT_EQ(table.m_DiskCount, 0);
  EXPECT_EQ(table.m_Computer.Disks, nullptr);
  EXPECT_EQ(table.GetCurrentParttionNum(), 0);
}

TEST_F(VolumeTable, InitDeviceWithoutRootOpensNoDeviceAndMountsNothing) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"DATA"}), "D");
  fake_.SetEuid(1000);
  View_Disk_Info table;
  testing::internal::CaptureStderr();
  EXPECT_EQ(table.UI_InitDevice(), 0);
  EXPECT_EQ(table.GetDiskParttionInfo(), 0);
  std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(table.GetCurrentParttionNum(), 0);
  EXPECT_TRUE(fake_.CallsOf("open").empty());
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  EXPECT_NE(err.find("not running as root"), std::string::npos) << err;
  table.UI_FreeMemory();
  EXPECT_TRUE(fake_.CallsOf("open").empty());
}

TEST_F(VolumeTable, SecondInitDeviceUnmountsTheFirstInventoryFirst) {
  // A second create without destroy takes the inventory again: the volumes
  // of the first one are unmounted before anything is mounted again, so
  // every volume ends up mounted exactly once.
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"A", "B"}), "D");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  t->GetDiskParttionInfo();
  ASSERT_EQ(Letters(t), "CD");
  fake_.ClearCalls();
  t->UI_InitDevice();
  t->GetDiskParttionInfo();
  EXPECT_EQ(Letters(t), "CD");
  std::map<std::string, std::string> expected = {{"/mnt/C", "/dev/hda1"}, {"/mnt/D", "/dev/hda2"}};
  EXPECT_EQ(fake_.Mounted(), expected);
  std::vector<std::string> mountCalls;
  for (const std::string& c : fake_.Calls())
    if (c.rfind("mount ", 0) == 0 || c.rfind("umount ", 0) == 0) mountCalls.push_back(c);
  std::vector<std::string> expectedCalls = {"umount /mnt/C", "umount /mnt/D",
                                            "mount /dev/hda1 /mnt/C vfat 0xc0ed0000",
                                            "mount /dev/hda2 /mnt/D vfat 0xc0ed0000"};
  EXPECT_EQ(mountCalls, expectedCalls);
  EXPECT_STREQ(t->m_Volume[1].VolumeLabel, "B          ");
  EXPECT_EQ(fake_.OpenHandles(), 0);
  t->UI_FreeMemory();
  EXPECT_TRUE(fake_.Mounted().empty());
}

TEST_F(VolumeTable, ControlCharactersInLabelLinesAreEscaped) {
  // Label bytes below 0x20 and 0x7f would reach the terminal as control
  // sequences; other bytes (also >= 0x80) print as they are.
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img",
                                        {{'F', "\x1b[2J\x07\x7f\xe9t\xe9"}, {'N', "Donn\xe9\x1b"}}),
                   "D");
  View_Disk_Info* t = Table();
  dt::StdoutCapture out;
  t->UI_InitDevice();
  std::string text = out.Stop();
  ASSERT_EQ(t->GetCurrentParttionNum(), 2);
  // The volume table keeps the label bytes as they are.
  EXPECT_STREQ(t->m_Volume[0].VolumeLabel, "\x1b[2J\x07\x7f\xe9t\xe9  ");
  const std::string fat = "\\x1b[2J\\x07\\x7f\xe9t\xe9  ";
  const std::string ntfs = "Donn\xe9\\x1b";
  EXPECT_EQ(text, "/dev/hda1\n"
                  "VolumeLable_1 = " + fat + " \n"
                  "VolumeLable_2 =  \n"
                  "VolumeLable_11 = " + fat + " \n"
                  "VolumeLable_22 = " + fat + " \n"
                  "/dev/hda2\n"
                  "VolumeLable_11 = " + ntfs + " \n"
                  "VolumeLable_22 = " + ntfs + " \n");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, IdeNtfsNtfsFatThenUsbFatGiveCDEAndRemovableF) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "ide.img",
                                        {{'N', "System"}, {'N', "Data"}, {'F', "FATVOL"}}),
                   "IDE DISK");
  fake_.AddScsiDisk("/dev/sda", vt::MakeVolumesImage(dir_.path(), "usb.img", {{'F', "STICK"}}),
                    "Generic", "Flash Disk", 4, 0, 0, 0, 0, "2-1:1.0");
  View_Disk_Info* t = Table();
  EXPECT_EQ(t->UI_InitDevice(), 0);
  ASSERT_EQ(t->GetCurrentParttionNum(), 4);
  EXPECT_EQ(Letters(t), "CDEF");
  const VolumeInformation* v = t->m_Volume;
  EXPECT_STREQ(v[0].MountPoint, "/mnt/C");
  EXPECT_EQ(v[0].FsType, FS_TYPE_NTFS);
  EXPECT_STREQ(v[0].VolumeLabel, "System");
  EXPECT_EQ(v[0].Removable, 0);
  EXPECT_EQ(v[1].FsType, FS_TYPE_NTFS);
  EXPECT_STREQ(v[1].VolumeLabel, "Data");
  EXPECT_EQ(v[2].FsType, FS_TYPE_FAT16);
  EXPECT_STREQ(v[2].VolumeLabel, "FATVOL     ");
  EXPECT_STREQ(v[2].MountPoint, "/mnt/E");
  EXPECT_EQ(v[2].Removable, 0);
  EXPECT_STREQ(v[3].MountPoint, "/mnt/F");
  EXPECT_EQ(v[3].Removable, 1);
  EXPECT_STREQ(v[3].VolumeLabel, "STICK      ");
  // The partitions carry the letters given at mounting.
  EXPECT_EQ(t->m_Computer.Disks[1].Partitions[0].DriveLetter, 'F');
  // What ran: mkdir, ntfsfix + ntfs-3g for NTFS, mount(2) vfat for FAT.
  std::vector<std::string> shell = fake_.CallsOf("system");
  std::vector<std::string> expected = {
      "ntfsfix /dev/hda1 > /dev/null 2>&1", NtfsMount("/dev/hda1", "/mnt/C"),
      "ntfsfix /dev/hda2 > /dev/null 2>&1", NtfsMount("/dev/hda2", "/mnt/D")};
  EXPECT_EQ(shell, expected);
  std::vector<std::string> mounts = fake_.CallsOf("mount");
  std::vector<std::string> expectedMounts = {"/dev/hda3 /mnt/E vfat 0xc0ed0000",
                                             "/dev/sda1 /mnt/F vfat 0xc0ed0000"};
  EXPECT_EQ(mounts, expectedMounts);
  std::vector<std::string> mkdirs = fake_.CallsOf("mkdir");
  std::vector<std::string> expectedDirs = {"/mnt/C 0777", "/mnt/D 0777", "/mnt/E 0777",
                                           "/mnt/F 0777"};
  EXPECT_EQ(mkdirs, expectedDirs);
  for (const char* d : {"/mnt/C", "/mnt/D", "/mnt/E", "/mnt/F"}) EXPECT_TRUE(IsDir(d)) << d;
  EXPECT_EQ(fake_.OpenHandles(), 0);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, UnknownPartitionTakesNoLetter) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'F', "ONE"}, {'0', ""}, {'F', "TWO"}}),
                   "D");
  View_Disk_Info* t = Table();
  // Discovery gave C, D, E to the three partitions.
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[1].DriveLetter, 'D');
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "CD");
  const PartitionInformation* p = t->m_Computer.Disks[0].Partitions;
  EXPECT_EQ(p[0].DriveLetter, 'C');
  EXPECT_EQ(p[1].DriveLetter, 0);
  EXPECT_EQ(p[1].FileSystem->FsType, 0);
  EXPECT_EQ(p[2].DriveLetter, 'D');
  EXPECT_STREQ(t->m_Volume[1].VolumeLabel, "TWO        ");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, SizeTexts) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'F', "A"}, {'F', "B"}, {'F', "C"}}),
                   "D");
  // 1.05 GiB total with 900 MiB free (the blocks reserved for root count as
  // free); exactly 1 GiB; and a volume whose statfs fails.
  const unsigned long long kib = 1024;
  fake_.SetStatfs("/mnt/C", 1024, 1101005, 900 * kib, 10);
  fake_.SetStatfs("/mnt/D", 4096, 262144, 0);
  fake_.FailMount("never-matches");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  ASSERT_EQ(t->GetCurrentParttionNum(), 3);
  // /mnt/E answers through the real statfs of the private tmpfs: make it fail.
  fake_.SetStatfs("/mnt/E", 0, 0, 0);
  EXPECT_EQ(t->GetDiskParttionInfo(), 0);
  EXPECT_STREQ(t->m_Volume[0].SizeText, "1.1 GB");
  EXPECT_STREQ(t->m_Volume[0].FreeText, "900 MB");
  EXPECT_STREQ(t->m_Volume[0].FsName, "FAT16");
  EXPECT_STREQ(t->m_Volume[1].SizeText, "1024 MB");
  EXPECT_STREQ(t->m_Volume[1].FreeText, "0 MB");
  EXPECT_STREQ(t->m_Volume[2].SizeText, "0 MB");
  char mp[] = "/mnt/C";
  EXPECT_EQ(t->Ui_GetVolumeSpace(mp), 1101005LL * 1024);
  EXPECT_EQ(t->Ui_GetVolumeFreeSpace(mp), 900LL * 1024 * 1024);
  char nowhere[] = "/nowhere";
  EXPECT_EQ(t->Ui_GetVolumeSpace(nowhere), -1);
  EXPECT_EQ(t->Ui_GetVolumeFreeSpace(nowhere), -1);
  t->UI_FreeMemory();
}

TEST(FormatVolumeSize, TerabytesAboveOneTibGigabytesAboveOneGibElseWholeMegabytes) {
  char out[16];
  FormatVolumeSize(1127428916LL, out, sizeof(out));  // 1.05 GiB
  EXPECT_STREQ(out, "1.1 GB");
  FormatVolumeSize(900LL << 20, out, sizeof(out));
  EXPECT_STREQ(out, "900 MB");
  FormatVolumeSize(1LL << 30, out, sizeof(out));
  EXPECT_STREQ(out, "1024 MB");
  FormatVolumeSize((1LL << 30) + 1, out, sizeof(out));
  EXPECT_STREQ(out, "1.0 GB");
  FormatVolumeSize(-1, out, sizeof(out));
  EXPECT_STREQ(out, "0 MB");
  FormatVolumeSize((1LL << 20) - 1, out, sizeof(out));
  EXPECT_STREQ(out, "0 MB");
  // TB above 1024 GB.
  FormatVolumeSize(1LL << 40, out, sizeof(out));
  EXPECT_STREQ(out, "1024.0 GB");
  FormatVolumeSize((1LL << 40) + (1LL << 30), out, sizeof(out));
  EXPECT_STREQ(out, "1.0 TB");
  FormatVolumeSize(4000787030016LL, out, sizeof(out));  // a "4 TB" disk
  EXPECT_STREQ(out, "3.6 TB");
  FormatVolumeSize(500LL << 40, out, sizeof(out));
  EXPECT_STREQ(out, "500.0 TB");
  FormatVolumeSize(INT64_MAX, out, sizeof(out));  // fits the 16-char field
  EXPECT_STREQ(out, "8388608.0 TB");
  char small[6];
  FormatVolumeSize(900LL << 20, small, sizeof(small));
  EXPECT_STREQ(small, "900 M");  // cut to fit
}

TEST(VolumeEntry, FieldWidths) {
  VolumeInformation v;
  EXPECT_EQ(sizeof(v.MountPoint), 32u);
  EXPECT_EQ(sizeof(v.DriveLetter), 1u);
  EXPECT_EQ(sizeof(v.Removable), 1u);
  EXPECT_EQ(sizeof(v.FsType), 1u);
  EXPECT_EQ(sizeof(v.FsName), 16u);
  EXPECT_EQ(sizeof(v.VolumeLabel), 32u);
  EXPECT_EQ(sizeof(v.FreeText), 16u);
  EXPECT_EQ(sizeof(v.SizeText), 16u);
  EXPECT_EQ(sizeof(g_AllDiskPartitionInf.m_Volume) / sizeof(v), 26u);
  EXPECT_EQ(sizeof(g_AllDiskPartitionInf.m_DiskCount), 2u);
  EXPECT_EQ(sizeof(g_AllDiskPartitionInf.m_VolumeCount), 2u);
}

TEST_F(VolumeTable, FreeMemoryUnmountsAndRebuilds) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"A", "B"}), "D");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  t->GetDiskParttionInfo();
  ASSERT_EQ(t->GetCurrentParttionNum(), 2);
  ASSERT_EQ(fake_.Mounted().size(), 2u);
  fake_.ClearCalls();
  EXPECT_EQ(t->UI_FreeMemory(), 0);
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_EQ(t->m_VolumeCount, 0);
  std::vector<std::string> umounts = fake_.CallsOf("umount");
  std::vector<std::string> expected = {"/mnt/C", "/mnt/D"};
  EXPECT_EQ(umounts, expected);
  EXPECT_TRUE(fake_.Mounted().empty());
  VolumeInformation zero;
  memset(&zero, 0, sizeof(zero));
  EXPECT_EQ(memcmp(&t->m_Volume[0], &zero, sizeof(zero)), 0);
  EXPECT_EQ(memcmp(&t->m_Volume[1], &zero, sizeof(zero)), 0);
  // The inventory was taken again, without recognition or mounting.
  EXPECT_EQ(t->m_DiskCount, 1);
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[0].FileSystem, nullptr);
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  // Mount points stay.
  EXPECT_TRUE(IsDir("/mnt/C"));
  // And the next round mounts again from C.
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "CD");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, VfatMountFailureRunsNothingAndKeepsTheLetter) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'N', "NT"}, {'F', "BAD"}, {'F', "GOOD"}}),
                   "D");
  fake_.FailMount("/dev/hda2", EINVAL);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "CD");
  EXPECT_STREQ(t->m_Volume[1].MountPoint, "/mnt/D");
  EXPECT_STREQ(t->m_Volume[1].VolumeLabel, "GOOD       ");
  const PartitionInformation* p = t->m_Computer.Disks[0].Partitions;
  EXPECT_EQ(p[1].DriveLetter, 0);
  EXPECT_EQ(p[1].FileSystem->FsType, 0);
  // Only the NTFS volume's two commands ran; nothing after the failed mount.
  std::vector<std::string> shell = fake_.CallsOf("system");
  ASSERT_EQ(shell.size(), 2u);
  EXPECT_EQ(shell[1], NtfsMount("/dev/hda1", "/mnt/C"));
  // The failed volume's mount point was made and stays.
  EXPECT_TRUE(IsDir("/mnt/D"));
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, NtfsMountFailureRunsTheCommandOnceMore) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'N', "BROKEN"}, {'F', "OK"}}), "D");
  fake_.FailShell("ntfs-3g /dev/hda1", 256);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "C");
  EXPECT_STREQ(t->m_Volume[0].VolumeLabel, "OK         ");
  std::vector<std::string> shell = fake_.CallsOf("system");
  std::vector<std::string> expected = {"ntfsfix /dev/hda1 > /dev/null 2>&1",
                                       NtfsMount("/dev/hda1", "/mnt/C"),
                                       NtfsMount("/dev/hda1", "/mnt/C")};
  EXPECT_EQ(shell, expected);
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[0].DriveLetter, 0);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, NtfsfixResultIsIgnored) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeVolumesImage(dir_.path(), "a.img", {{'N', "X"}}), "D");
  fake_.FailShell("ntfsfix", 256);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "C");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, MountPointThatCannotBeMadeResetsTheVolume) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"A", "B"}), "D");
  fake_.FailMkdir("/mnt/C", EACCES);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  // C could not be made: the volume is dropped and the letter is not used
  // up, so the next volume tries /mnt/C again (and fails the same way).
  EXPECT_EQ(Letters(t), "");
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[0].DriveLetter, 0);
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[1].DriveLetter, 0);
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[1].FileSystem->FsType, 0);
  std::vector<std::string> mkdirs = fake_.CallsOf("mkdir");
  std::vector<std::string> expected = {"/mnt/C 0777", "/mnt/C 0777"};
  EXPECT_EQ(mkdirs, expected);
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, ExistingMountPointIsUsed) {
  ASSERT_EQ(mkdir("/mnt/C", 0755), 0);
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"A"}), "D");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  EXPECT_EQ(Letters(t), "C");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, NtfsWithoutLabelGetsEmptyLabelAndLongLabelsAreCut) {
  std::string longName(60, 'L');
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'N', ""}, {'N', longName}}), "D");
  View_Disk_Info* t = Table();
  dt::StdoutCapture out;
  t->UI_InitDevice();
  std::string text = out.Stop();
  ASSERT_EQ(t->GetCurrentParttionNum(), 2);
  EXPECT_EQ(t->m_Computer.Disks[0].Partitions[0].FileSystem->VolumeLabel, nullptr);
  EXPECT_STREQ(t->m_Volume[0].VolumeLabel, "");
  EXPECT_EQ(std::string(t->m_Volume[1].VolumeLabel), std::string(31, 'L'));
  std::string expected = "/dev/hda1\n"
                         "VolumeLable_11 =  \n"
                         "VolumeLable_22 =  \n"
                         "/dev/hda2\n"
                         "VolumeLable_11 = " + longName + " \n"
                         "VolumeLable_22 = " + std::string(31, 'L') + " \n";
  EXPECT_EQ(text, expected);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, DiagnosticsOnStandardOutput) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'F', "DATA"}, {'0', ""}}), "D");
  fake_.AddScsiDisk("/dev/sda", vt::MakeVolumesImage(dir_.path(), "b.img", {{'F', ""}}), "A", "B",
                    0, 0, 0, 0, 0);
  View_Disk_Info* t = Table();
  dt::StdoutCapture out;
  t->UI_InitDevice();
  std::string text = out.Stop();
  EXPECT_EQ(text,
            "/dev/hda1\n"
            "VolumeLable_1 = DATA        \n"
            "VolumeLable_2 =  \n"
            "VolumeLable_11 = DATA        \n"
            "VolumeLable_22 = DATA        \n"
            "/dev/hda2\n"
            "/dev/sda1\n"
            "VolumeLable_1 =  \n"
            "VolumeLable_2 =  \n"
            "VolumeLable_11 =  \n"
            "VolumeLable_22 =  \n");
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, LettersRunToZAtMountingAndStopThere) {
  // 26 FAT volumes on two disks: discovery gives C..Y to 23 of them, mounting
  // gives C..Z to the first 24; the last two find no letter.
  std::vector<VolumeSpec> first(20, VolumeSpec{'F', "V"});
  std::vector<VolumeSpec> second(6, VolumeSpec{'F', "W"});
  fake_.AddIdeDisk("/dev/hda", vt::MakeVolumesImage(dir_.path(), "a.img", first, 128), "A");
  fake_.AddIdeDisk("/dev/hdb", vt::MakeVolumesImage(dir_.path(), "b.img", second, 128), "B");
  View_Disk_Info* t = Table();
  const PartitionInformation* p2 = t->m_Computer.Disks[1].Partitions;
  ASSERT_EQ(t->m_Computer.Disks[1].PartitionCount, 6);
  EXPECT_EQ(p2[2].DriveLetter, 'Y');
  EXPECT_EQ(p2[3].DriveLetter, 0);
  t->UI_InitDevice();
  ASSERT_EQ(t->GetCurrentParttionNum(), 24);
  EXPECT_EQ(Letters(t), "CDEFGHIJKLMNOPQRSTUVWXYZ");
  EXPECT_STREQ(t->m_Volume[23].MountPoint, "/mnt/Z");
  EXPECT_EQ(p2[3].DriveLetter, 'Z');
  EXPECT_EQ(p2[4].DriveLetter, 0);
  EXPECT_EQ(p2[4].FileSystem->FsType, 0);
  EXPECT_EQ(p2[5].DriveLetter, 0);
  EXPECT_EQ(fake_.CallsOf("mount").size(), 24u);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, PartitionThatCannotBeExaminedKeepsItsDiscoveryLetter) {
  // A disk whose sector size is below 512 bytes: recognition refuses its
  // partitions without attaching a record, and mounting passes them by with
  // the letters discovery gave them, without using up a letter.
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'F', "ODD"}, {'F', "SIZE"}}), "A");
  fake_.AddIdeDisk("/dev/hdb", vt::MakeVolumesImage(dir_.path(), "b.img", {{'F', "NEXT"}}), "B");
  View_Disk_Info* t = Table();
  ASSERT_EQ(t->m_Computer.DiskCount, 2);
  t->m_Computer.Disks[0].BytesPerSector = 256;
  dt::StdoutCapture out;
  t->UI_InitDevice();
  std::string text = out.Stop();
  const PartitionInformation* p = t->m_Computer.Disks[0].Partitions;
  EXPECT_EQ(p[0].DriveLetter, 'C');
  EXPECT_EQ(p[1].DriveLetter, 'D');
  EXPECT_EQ(p[0].FileSystem, nullptr);
  EXPECT_EQ(p[1].FileSystem, nullptr);
  // The next disk's volume is mounted as C (discovery had given it E).
  EXPECT_EQ(Letters(t), "C");
  EXPECT_EQ(t->m_Computer.Disks[1].Partitions[0].DriveLetter, 'C');
  EXPECT_STREQ(t->m_Volume[0].VolumeLabel, "NEXT       ");
  // The node names were still printed.
  EXPECT_EQ(text.rfind("/dev/hda1\n/dev/hda2\n/dev/hdb1\n", 0), 0u) << text;
  std::vector<std::string> opens;
  for (const auto& o : fake_.OpenFlags()) opens.push_back(o.first);
  EXPECT_EQ(std::count(opens.begin(), opens.end(), "/dev/hda1"), 0);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, RemovableIdeDisk) {
  fake_.AddIdeDisk("/dev/hdc", vt::MakeFatVolumesImage(dir_.path(), {"CF"}), "CF CARD", true);
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  ASSERT_EQ(t->GetCurrentParttionNum(), 1);
  EXPECT_EQ(t->m_Volume[0].Removable, 1);
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, GuiStyleVolumesWithRealFilesUnderMnt) {
  // What a GUI test does to give the frame volumes C: and D:.
  fake_.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir_.path(), {"DATA", "BACKUP"}), "D");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  t->GetDiskParttionInfo();
  ASSERT_EQ(Letters(t), "CD");
  EXPECT_NE(std::string(t->m_Volume[0].FreeText), "0 MB");  // the tmpfs answers
  FILE* f = fopen("/mnt/C/readme.txt", "w");
  ASSERT_NE(f, nullptr);
  fputs("hello", f);
  fclose(f);
  EXPECT_TRUE(IsDir("/mnt/D"));
  t->UI_FreeMemory();
}

TEST_F(VolumeTable, NoDisksNoVolumes) {
  View_Disk_Info* t = Table();
  EXPECT_EQ(t->m_DiskCount, 0);
  EXPECT_EQ(t->UI_InitDevice(), 0);
  EXPECT_EQ(t->GetDiskParttionInfo(), 0);
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_EQ(t->UI_FreeMemory(), 0);
}

TEST_F(VolumeTable, RecognitionWithoutMounting) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "a.img", {{'F', "A"}, {'N', "B"}, {'0', ""}}),
                   "D");
  View_Disk_Info* t = Table();
  EXPECT_EQ(DetectAllPartitions(&t->m_Computer), 2);
  EXPECT_TRUE(fake_.Calls().end() ==
              std::find_if(fake_.Calls().begin(), fake_.Calls().end(), [](const std::string& c) {
                return c.rfind("mount", 0) == 0 || c.rfind("mkdir", 0) == 0 ||
                       c.rfind("system", 0) == 0;
              }));
  const PartitionInformation* p = t->m_Computer.Disks[0].Partitions;
  EXPECT_EQ(p[0].FileSystem->FsType, FS_TYPE_FAT16);
  EXPECT_EQ(p[1].FileSystem->FsType, FS_TYPE_NTFS);
  EXPECT_STREQ(p[1].FileSystem->VolumeLabel, "B");
  EXPECT_EQ(p[2].FileSystem->FsType, 0);
  EXPECT_EQ(p[1].DriveLetter, 'D');  // the discovery letters are untouched
  EXPECT_EQ(DetectAllPartitions(nullptr), 0);
}

}  // namespace

namespace {

// A Refresh while D: is in use (its unmount answers EBUSY): D: stays
// mounted with its letter and entry, nothing is mounted over it or twice,
// and every other volume keeps its letter, Refresh after Refresh.
TEST_F(VolumeTable, AVolumeInUseKeepsItsLetterAndNothingIsMountedTwice) {
  fake_.AddIdeDisk("/dev/hda",
                   vt::MakeVolumesImage(dir_.path(), "ide.img",
                                        {{'N', "System"}, {'N', "Data Disk"}, {'F', "PHOTOS"}}),
                   "IDE DISK");
  fake_.AddScsiDisk("/dev/sda", vt::MakeVolumesImage(dir_.path(), "usb.img", {{'F', "STICK"}}),
                    "Generic", "Flash Disk", 4, 0, 0, 0, 0, "2-1:1.0");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  ASSERT_EQ(Letters(t), "CDEF");
  EXPECT_STREQ(t->m_Volume[1].Node, "/dev/hda2");
  EXPECT_EQ(t->BusyVolumeCount(), 0);
  fake_.FailUmount("/mnt/D", EBUSY);
  for (int refresh = 0; refresh < 2; ++refresh) {
    SCOPED_TRACE("refresh " + std::to_string(refresh + 1));
    fake_.ClearCalls();
    dt::StdoutCapture out;
    t->UI_FreeMemory();
    t->UI_InitDevice();
    std::string printed = out.Stop();
    ASSERT_EQ(Letters(t), "CDEF");
    EXPECT_EQ(t->BusyVolumeCount(), 1);
    EXPECT_EQ(t->m_Volume[1].Busy, 1);
    EXPECT_STREQ(t->m_Volume[1].MountPoint, "/mnt/D");
    EXPECT_STREQ(t->m_Volume[1].VolumeLabel, "Data Disk");
    EXPECT_STREQ(t->m_Volume[2].VolumeLabel, "PHOTOS     ");
    EXPECT_STREQ(t->m_Volume[3].VolumeLabel, "STICK      ");
    EXPECT_EQ(t->m_Volume[3].Removable, 1);
    // The busy volume's partition keeps its letter in the inventory too.
    EXPECT_EQ(t->m_Computer.Disks[0].Partitions[1].DriveLetter, 'D');
    // Neither ntfsfix nor ntfs-3g touched /dev/hda2, nothing went to /mnt/D.
    for (const std::string& c : fake_.CallsOf("system"))
      EXPECT_EQ(c.find("/dev/hda2"), std::string::npos) << c;
    for (const std::string& c : fake_.CallsOf("mount"))
      EXPECT_EQ(c.find("/mnt/D"), std::string::npos) << c;
    std::vector<std::string> mkdirs = fake_.CallsOf("mkdir");
    std::vector<std::string> expectedDirs = {"/mnt/C 0777", "/mnt/E 0777", "/mnt/F 0777"};
    EXPECT_EQ(mkdirs, expectedDirs);
    EXPECT_NE(printed.find("/dev/hda2 is in use at /mnt/D: left mounted\n"), std::string::npos)
        << printed;
  }
  // At the end: a flush, then the volume in use is detached lazily.
  fake_.ClearCalls();
  t->UI_Sync();
  t->UI_FreeMemory();
  EXPECT_EQ(Letters(t), "D");
  dt::StdoutCapture out;
  EXPECT_EQ(t->UI_DetachBusyVolumes(), 1);
  EXPECT_NE(out.Stop().find("/mnt/D detached while in use\n"), std::string::npos);
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  std::vector<std::string> calls = fake_.Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.front(), "sync");
  char detach[64];
  snprintf(detach, sizeof(detach), "/mnt/D 0x%x", MNT_DETACH);
  std::vector<std::string> expected = {detach};
  EXPECT_EQ(fake_.CallsOf("umount2"), expected);
}

// A volume unmounted from outside (the unmount answers EINVAL) is no longer
// kept: Refresh mounts it again under its letter.
TEST_F(VolumeTable, AVolumeUnmountedFromOutsideIsMountedAgain) {
  fake_.AddIdeDisk("/dev/hda", vt::MakeVolumesImage(dir_.path(), "ide.img", {{'F', "ONE"}}),
                   "IDE DISK");
  View_Disk_Info* t = Table();
  t->UI_InitDevice();
  fake_.FailUmount("/mnt/C", EINVAL);
  t->UI_FreeMemory();
  EXPECT_EQ(t->GetCurrentParttionNum(), 0);
  EXPECT_EQ(t->BusyVolumeCount(), 0);
}

}  // namespace
