// The report of vantori-probe, run against faked disks, and its option and
// root handling.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>

#include "disk/DiskDiscovery.h"
#include "disk/View_Disk_Info.h"
#include "disk_test_util.h"
#include "probe_report.h"

namespace {

std::vector<std::string> Records(const std::string& text) {
  std::vector<std::string> out;
  for (const std::string& line : dt::Lines(text))
    if (line.rfind("disk\t", 0) == 0 || line.rfind("partition\t", 0) == 0 ||
        line.rfind("volume\t", 0) == 0)
      out.push_back(line);
  return out;
}

std::string Padded(const std::string& s, size_t n) { return s + std::string(n - s.size(), ' '); }

class Probe : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::FakeDevices::PrivateMntActive()) << "run inside tests/run-in-mntns.sh";
    dt::Run("rm -rf /mnt/* 2>/dev/null");
    // An IDE disk with FAT16 "DATA", a partition without a file system and an
    // NTFS "Win"; a USB stick with one FAT16 volume without label.
    ide_ = vt::MakeVolumesImage(dir_.path(), "ide.img", {{'F', "DATA"}, {'0', ""}, {'N', "Win"}});
    usb_ = vt::MakeVolumesImage(dir_.path(), "usb.img", {{'F', ""}});
    fake_.AddIdeDisk("/dev/hda", ide_, "PROBE DISK");
    fake_.AddScsiDisk("/dev/sda", usb_, "Generic", "Flash Disk", 4, 0, 0, 0, 0, "2-1:1.0");
    table_.reset(new View_Disk_Info);
  }
  void TearDown() override {
    FreeHdInfoList(&table_->m_Computer, FreeFsInfo);
    dt::Run("rm -rf /mnt/* 2>/dev/null");
  }
  std::string Run(const ProbeOptions& options) {
    dt::StdoutCapture out;
    EXPECT_EQ(RunProbe(table_.get(), options), 0);
    return out.Stop();
  }
  std::vector<std::string> ExpectedInventory() {
    // 3 x 16448 + 4096 sectors for ide.img; 16448 + 4096 for usb.img.
    const unsigned ideTotal = 2048 + 3 * (16384 + 64) + 2048;
    const unsigned usbTotal = 2048 + 16384 + 64 + 2048;
    return {
        "disk\t/dev/hda\t" + Padded("PROBE DISK", 40) + "\t6\t512\t255\t63\t" +
            std::to_string(ideTotal / (255 * 63)) + "\t" + std::to_string(ideTotal) + "\t3",
        "partition\t/dev/hda\t1\tC\t2048\t16384\t2\tDATA       ",
        "partition\t/dev/hda\t2\tD\t18496\t16384\t0\t",
        "partition\t/dev/hda\t3\tE\t34944\t16384\t4\tWin",
        "disk\t/dev/sda\tGeneric Flash Disk      \t7\t512\t255\t63\t" +
            std::to_string(usbTotal / (255 * 63)) + "\t" + std::to_string(usbTotal) + "\t1",
        "partition\t/dev/sda\t1\tF\t2048\t16384\t2\t",
    };
  }
  dt::TempDir dir_;
  vt::FakeDevices fake_;
  std::string ide_, usb_;
  std::unique_ptr<View_Disk_Info> table_;
};

TEST_F(Probe, NoMountPrintsInventoryOnlyAndMountsNothing) {
  ProbeOptions options;
  options.mount = false;
  std::string text = Run(options);
  EXPECT_EQ(Records(text), ExpectedInventory());
  EXPECT_TRUE(fake_.CallsOf("mount").empty());
  EXPECT_TRUE(fake_.CallsOf("system").empty());
  EXPECT_TRUE(fake_.CallsOf("mkdir").empty());
  EXPECT_EQ(fake_.OpenHandles(), 0);
}

TEST_F(Probe, DefaultMountsPrintsVolumesAndUnmounts) {
  fake_.SetStatfs("/mnt/C", 4096, 2048, 1024);
  fake_.SetStatfs("/mnt/D", 4096, 524288, 200000);
  fake_.SetStatfs("/mnt/E", 512, 16000, 100);
  std::string text = Run(ProbeOptions());
  std::vector<std::string> expected = ExpectedInventory();
  expected.push_back("volume\tC\t/mnt/C\t0\tFAT16\tDATA       \t4 MB\t8 MB");
  expected.push_back("volume\tD\t/mnt/D\t0\tNTFS\tWin\t781 MB\t2.0 GB");
  expected.push_back("volume\tE\t/mnt/E\t1\tFAT16\t\t0 MB\t7 MB");
  EXPECT_EQ(Records(text), expected);
  // Diagnostics of the module are on other lines.
  std::vector<std::string> lines = dt::Lines(text);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "/dev/hda1"), lines.end());
  EXPECT_NE(std::find(lines.begin(), lines.end(), "VolumeLable_1 = DATA        "), lines.end());
  // Everything was unmounted again before the end.
  EXPECT_TRUE(fake_.Mounted().empty());
  EXPECT_EQ(fake_.CallsOf("umount").size(), 3u);
  EXPECT_EQ(table_->GetCurrentParttionNum(), 0);
}

TEST_F(Probe, KeepMountedLeavesVolumesMounted) {
  ProbeOptions options;
  options.keepMounted = true;
  std::string text = Run(options);
  EXPECT_EQ(Records(text).size(), 6u + 3u);
  EXPECT_EQ(fake_.Mounted().size(), 3u);
  EXPECT_TRUE(fake_.CallsOf("umount").empty());
  table_->UI_FreeMemory();
}

TEST_F(Probe, PartitionLineShowsRecognitionEvenWhenMountFails) {
  fake_.FailMount("/dev/hda1", EINVAL);
  std::string text = Run(ProbeOptions());
  std::vector<std::string> records = Records(text);
  ASSERT_EQ(records.size(), 6u + 2u);
  EXPECT_EQ(records[1], "partition\t/dev/hda\t1\tC\t2048\t16384\t2\tDATA       ");
  EXPECT_EQ(records[6].rfind("volume\tC\t/mnt/C\t0\tNTFS\tWin\t", 0), 0u);
}

TEST(ProbeFields, ModelBoundedAndNonPrintableEscaped) {
  ASSERT_TRUE(vt::FakeDevices::PrivateMntActive());
  dt::TempDir dir;
  vt::FakeDevices fake;
  std::string img = vt::MakeVolumesImage(dir.path(), "a.img", {{'F', "A\tB\x01"}});
  vt::FakeDisk& d = fake.AddIdeDisk("/dev/hda", img, "");
  // 40 model bytes without a terminator, two of them not printable, and the
  // record after the model (the flags) must not leak into the field.
  for (int i = 0; i < 40; ++i) d.identify[54 + i] = static_cast<unsigned char>('a' + i % 26);
  d.identify[54 + 5] = 0x09;
  d.identify[54 + 39] = 0xFF;
  View_Disk_Info table;
  ProbeOptions options;
  options.mount = false;
  dt::StdoutCapture out;
  RunProbe(&table, options);
  std::vector<std::string> records = Records(out.Stop());
  ASSERT_EQ(records.size(), 2u);
  std::vector<std::string> disk = dt::Split(records[0], '\t');
  ASSERT_EQ(disk.size(), 10u);
  EXPECT_EQ(disk[2], "abcde\\x09ghijklmnopqrstuvwxyzabcdefghijklm\\xFF");
  std::vector<std::string> part = dt::Split(records[1], '\t');
  ASSERT_EQ(part.size(), 8u);
  EXPECT_EQ(part[7], "A\\x09B\\x01       ");
  FreeHdInfoList(&table.m_Computer, FreeFsInfo);
}

TEST(ProbeOptionsParsing, OptionsAndErrors) {
  FILE* err = tmpfile();
  char prog[] = "vantori-probe", noMount[] = "--no-mount", keep[] = "--keep-mounted",
       help[] = "--help", bogus[] = "--bogus";
  {
    ProbeOptions o;
    char* argv[] = {prog, noMount};
    EXPECT_EQ(ParseProbeArgs(2, argv, &o, err), 0);
    EXPECT_FALSE(o.mount);
  }
  {
    ProbeOptions o;
    char* argv[] = {prog, keep};
    EXPECT_EQ(ParseProbeArgs(2, argv, &o, err), 0);
    EXPECT_TRUE(o.mount);
    EXPECT_TRUE(o.keepMounted);
  }
  {
    ProbeOptions o;
    char* argv[] = {prog, bogus};
    EXPECT_EQ(ParseProbeArgs(2, argv, &o, err), 2);
  }
  {
    ProbeOptions o;
    char* argv[] = {prog, noMount, keep};
    EXPECT_EQ(ParseProbeArgs(3, argv, &o, err), 2);
  }
  {
    // Help works without root and says what every option does.
    char* argv[] = {prog, help};
    dt::StdoutCapture out;
    EXPECT_EQ(ProbeMain(2, argv, 1000, &g_AllDiskPartitionInf, err), 0);
    std::string text = out.Stop();
    for (const char* word : {"--no-mount", "--keep-mounted", "disk", "partition", "volume", "root"})
      EXPECT_NE(text.find(word), std::string::npos) << word;
  }
  fclose(err);
}

TEST(ProbeHelp, HelpOpensNoDevice) {
  // The program's table is built when it starts (static construction) and
  // then --help is asked for: no device may be touched on that way, even
  // run as root with disks present.
  ASSERT_TRUE(vt::FakeDevices::PrivateMntActive());
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir.path(), {"DATA"}), "DISK");
  View_Disk_Info table;
  char prog[] = "vantori-probe", help[] = "--help";
  char* argv[] = {prog, help};
  dt::StdoutCapture out;
  EXPECT_EQ(ProbeMain(2, argv, 0, &table, stderr), 0);
  EXPECT_NE(out.Stop().find("--no-mount"), std::string::npos);
  EXPECT_TRUE(fake.Calls().empty()) << fake.Calls().front();
  FreeHdInfoList(&table.m_Computer, FreeFsInfo);
}

TEST(ProbeHelp, RealProgramWithHelpTriesNoDeviceNode) {
  // The built program, run as root in a private /dev that holds no disk,
  // under strace: with --help it must not even try to open a disk node
  // (its start-up used to take the whole inventory).
  std::string probe = VANTORI_PROBE_PATH;
  struct stat st;
  ASSERT_EQ(stat(probe.c_str(), &st), 0) << probe << " not built";
  if (dt::Run("command -v strace >/dev/null") != 0) GTEST_SKIP() << "strace is not installed";
  if (geteuid() != 0) GTEST_SKIP() << "needs root for the private /dev";
  dt::TempDir dir;
  const std::string log = dir / "trace";
  std::string out;
  // LeakSanitizer cannot run under ptrace: a sanitizer build of the program
  // is traced without it.
  int rc = dt::Run(std::string(VANTORI_SOURCE_DIR) +
                       "/tests/run-in-mntns.sh --empty-dev env ASAN_OPTIONS=detect_leaks=0 "
                       "strace -f -qq -e trace=open,openat -o '" + log + "' '" + probe + "' --help",
                   &out);
  ASSERT_EQ(rc, 0) << out;
  EXPECT_NE(out.find("--no-mount"), std::string::npos) << out;
  std::string trace;
  ASSERT_EQ(dt::Run("cat '" + log + "'", &trace), 0);
  ASSERT_NE(trace.find("open"), std::string::npos) << "strace recorded nothing: " << trace;
  for (const char* node : {"/dev/hd", "/dev/sd", "/dev/sg"})
    EXPECT_EQ(trace.find(node), std::string::npos) << node << " tried:\n" << trace;
}

TEST(ProbeRoot, NotRootFailsWithMessageAndPrintsNoRecords) {
  vt::FakeDevices fake;  // nothing would be reachable anyway
  FILE* err = tmpfile();
  char prog[] = "vantori-probe";
  char* argv[] = {prog};
  dt::StdoutCapture out;
  int rc = ProbeMain(1, argv, 1000, &g_AllDiskPartitionInf, err);
  std::string text = out.Stop();
  EXPECT_NE(rc, 0);
  EXPECT_TRUE(Records(text).empty());
  EXPECT_TRUE(fake.Calls().empty());
  rewind(err);
  char buf[256] = {};
  size_t n = fread(buf, 1, sizeof(buf) - 1, err);
  EXPECT_GT(n, 0u);
  EXPECT_NE(std::string(buf).find("root"), std::string::npos);
  fclose(err);
}

TEST(ProbeRoot, ProgramRunAsUnprivilegedUserExitsNonZero) {
  // The real program, run as nobody: its start-up inventory can open no
  // device node without root rights, and it stops with a message.
  std::string probe = VANTORI_PROBE_PATH;
  struct stat st;
  ASSERT_EQ(stat(probe.c_str(), &st), 0) << probe << " not built";
  ASSERT_EQ(dt::Run("command -v setpriv >/dev/null"), 0) << "setpriv (util-linux) missing";
  std::string out;
  int rc = dt::Run("setpriv --reuid=65534 --regid=65534 --clear-groups '" + probe +
                       "' 2>&1 >/dev/null",
                   &out);
  EXPECT_NE(rc, 0);
  EXPECT_NE(out.find("must be run as root"), std::string::npos) << out;
  rc = dt::Run("setpriv --reuid=65534 --regid=65534 --clear-groups '" + probe + "' --help", &out);
  EXPECT_EQ(rc, 0);
  EXPECT_NE(out.find("--no-mount"), std::string::npos);
}

}  // namespace
