// Images made by the real tools (sfdisk, mkfs.fat, mkntfs), read through the
// faked device nodes, and checked against sfdisk --dump and blkid on the same
// images.
#include <gtest/gtest.h>
#include <string.h>

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

#include "disk/DiskDiscovery.h"
#include "disk/FileSystemDetect.h"
#include "disk/View_Disk_Info.h"
#include "disk_test_util.h"

namespace {

bool HaveTools(std::string* missing) {
  for (const char* tool : {"sfdisk", "mkfs.fat", "mkntfs", "blkid", "dd"}) {
    if (dt::Run(std::string("command -v ") + tool + " >/dev/null 2>&1") != 0) {
      *missing = tool;
      return false;
    }
  }
  return true;
}

struct Oracle {
  // sfdisk --dump: partition number -> (start, size, type)
  struct Entry {
    uint32_t start, size;
    std::string type;
  };
  std::map<int, Entry> table;
};

Oracle::Entry ParseDumpLine(const std::string& line) {
  Oracle::Entry e = {0, 0, ""};
  size_t s = line.find("start=");
  size_t z = line.find("size=");
  size_t t = line.find("type=");
  if (s != std::string::npos) e.start = static_cast<uint32_t>(strtoul(line.c_str() + s + 6, nullptr, 10));
  if (z != std::string::npos) e.size = static_cast<uint32_t>(strtoul(line.c_str() + z + 5, nullptr, 10));
  if (t != std::string::npos) {
    e.type = line.substr(t + 5);
    e.type = e.type.substr(0, e.type.find_first_of(", \n"));
  }
  return e;
}

std::map<int, Oracle::Entry> SfdiskDump(const std::string& image) {
  std::string out;
  EXPECT_EQ(dt::Run("sfdisk --dump '" + image + "' 2>/dev/null", &out), 0);
  std::map<int, Oracle::Entry> table;
  for (const std::string& line : dt::Lines(out)) {
    size_t colon = line.find(" : ");
    if (colon == std::string::npos || line.compare(0, image.size(), image) != 0) continue;
    int number = atoi(line.c_str() + image.size());
    table[number] = ParseDumpLine(line);
  }
  return table;
}

// blkid's view of the volume at a byte offset: KEY -> value.
std::map<std::string, std::string> Blkid(const std::string& image, uint64_t offset) {
  std::string out;
  dt::Run("blkid -p -o export --offset " + std::to_string(offset) + " '" + image + "' 2>/dev/null",
          &out);
  std::map<std::string, std::string> keys;
  for (const std::string& line : dt::Lines(out)) {
    size_t eq = line.find('=');
    if (eq != std::string::npos) keys[line.substr(0, eq)] = line.substr(eq + 1);
  }
  return keys;
}

std::string TypeName(uint8_t type) {
  switch (type) {
    case FS_TYPE_FAT12: return "vfat/FAT12";
    case FS_TYPE_FAT16: return "vfat/FAT16";
    case FS_TYPE_FAT32: return "vfat/FAT32";
    case FS_TYPE_NTFS: return "ntfs";
    default: return "";
  }
}

std::string BlkidTypeName(const std::map<std::string, std::string>& keys) {
  auto t = keys.find("TYPE");
  if (t == keys.end()) return "";
  if (t->second == "vfat") {
    auto v = keys.find("VERSION");
    return "vfat/" + (v == keys.end() ? std::string("?") : v->second);
  }
  return t->second;
}

std::string TrimRight(std::string s) {
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return s;
}

class ToolImages : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string missing;
    ASSERT_TRUE(HaveTools(&missing)) << "tool not installed: " << missing
                                     << " (./dev.sh installs fdisk, dosfstools, ntfs-3g)";
  }
  // Makes the standard test disk: FAT16, FAT12 primaries; an extended
  // partition with FAT32, NTFS and an unformatted logical partition.
  std::string MakeDisk() {
    std::string img = dir_ / "disk.img";
    std::string part = dir_ / "ntfs.img";
    std::string script =
        "label: dos\n"
        "start=2048, size=16384, type=6\n"
        "start=18432, size=4096, type=1\n"
        "start=24576, type=f\n"
        "start=26624, size=69632, type=c\n"
        "start=98304, size=16384, type=7\n"
        "start=116736, size=2048, type=83\n";
    std::string cmd =
        "set -e; truncate -s 72M '" + img + "'; printf '" + script + "' | sfdisk -q '" + img +
        "' >/dev/null 2>&1;"
        "mkfs.fat -F 16 -s 2 -n FAT16VOL --offset 2048 '" + img + "' 8192 >/dev/null 2>&1;"
        "mkfs.fat -F 12 -n FAT12VOL --offset 18432 '" + img + "' 2048 >/dev/null 2>&1;"
        "mkfs.fat -F 32 -s 1 -n FAT32VOL --offset 26624 '" + img + "' 34816 >/dev/null 2>&1;"
        "truncate -s 8M '" + part + "';"
        "mkntfs -F -Q -p 98304 -H 255 -S 63 -L NTFSVOL '" + part + "' >/dev/null 2>&1;"
        "dd if='" + part + "' of='" + img + "' bs=512 seek=98304 conv=notrunc,sparse status=none;"
        "rm -f '" + part + "'";
    EXPECT_EQ(dt::Run(cmd), 0) << cmd;
    return img;
  }
  dt::TempDir dir_;
};

TEST_F(ToolImages, PartitionsAgreeWithSfdisk) {
  std::string img = MakeDisk();
  std::map<int, Oracle::Entry> dump = SfdiskDump(img);
  ASSERT_EQ(dump.size(), 6u);
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", img, "TOOLS");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  const HardDiskInformation& disk = root.Disks[0];
  EXPECT_EQ(disk.TotalSectors, 72u * 2048);
  // The extended partition itself (3) is followed, not recorded.
  ASSERT_EQ(disk.PartitionCount, 5);
  const int numbers[] = {1, 2, 5, 6, 7};
  // Extended boot record of each logical partition, from the raw chain.
  for (int i = 0; i < disk.PartitionCount; ++i) {
    const PartitionInformation& p = disk.Partitions[i];
    SCOPED_TRACE("partition " + std::to_string(numbers[i]));
    EXPECT_EQ(p.PartitionNumber, numbers[i]);
    const Oracle::Entry& e = dump[numbers[i]];
    EXPECT_EQ(p.SectorCount, e.size);
    if (p.PartitionNumber < 5) {
      EXPECT_EQ(p.StartSector, e.start);
    } else {
      // A logical partition's start is the sector of the extended boot
      // record that describes it, not where its volume begins (sfdisk's
      // start): the record lies before the volume, inside the extended one.
      EXPECT_LT(p.StartSector, e.start);
      EXPECT_GE(p.StartSector, dump[3].start);
      std::vector<uint8_t> ebr = vt::ReadAt(img, static_cast<uint64_t>(p.StartSector) * 512, 512);
      ASSERT_EQ(ebr.size(), 512u);
      EXPECT_EQ(ebr[510], 0x55);
      EXPECT_EQ(ebr[511], 0xAA);
      EXPECT_EQ(p.StartSector + ByteToDWord(ebr.data(), 446 + 8), e.start);
    }
    EXPECT_EQ(p.DriveLetter, 'C' + i);
  }
  FreeHdInfoList(&root, FreeFsInfo);
}

TEST_F(ToolImages, VolumesAgreeWithBlkid) {
  std::string img = MakeDisk();
  std::map<int, Oracle::Entry> dump = SfdiskDump(img);
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", img, "TOOLS");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  const HardDiskInformation& disk = root.Disks[0];
  const char* expectedType[] = {"vfat/FAT16", "vfat/FAT12", "vfat/FAT32", "ntfs", ""};
  const char* expectedLabel[] = {"FAT16VOL   ", "FAT12VOL   ", "FAT32VOL   ", "NTFSVOL", nullptr};
  for (int i = 0; i < disk.PartitionCount; ++i) {
    PartitionInformation& p = disk.Partitions[i];
    SCOPED_TRACE("partition " + std::to_string(p.PartitionNumber));
    char node[32];
    snprintf(node, sizeof(node), "/dev/hda%d", p.PartitionNumber);
    ASSERT_EQ(DetectPartition(node, disk.BytesPerSector, &p), 0);
    const FileSystemInformation& fs = *p.FileSystem;
    std::map<std::string, std::string> keys =
        Blkid(img, static_cast<uint64_t>(dump[p.PartitionNumber].start) * 512);
    EXPECT_EQ(TypeName(fs.FsType), BlkidTypeName(keys));
    EXPECT_EQ(TypeName(fs.FsType), expectedType[i]);
    if (expectedLabel[i] == nullptr) {
      EXPECT_EQ(fs.VolumeLabel, nullptr);
      EXPECT_EQ(keys.count("LABEL"), 0u);
      continue;
    }
    ASSERT_NE(fs.VolumeLabel, nullptr);
    EXPECT_STREQ(fs.VolumeLabel, expectedLabel[i]);
    // blkid drops the blanks that pad a FAT label; the record keeps them.
    EXPECT_EQ(TrimRight(fs.VolumeLabel), keys["LABEL"]);
  }
  EXPECT_EQ(fake.OpenHandles(), 0);
  FreeHdInfoList(&root, FreeFsInfo);
}

TEST_F(ToolImages, EachFatSizeOnItsOwnDisk) {
  // One disk per FAT size, the volume written in place by mkfs.fat at the
  // partition's offset; labels in lower case are stored as given.
  struct Case {
    const char* fat;
    const char* sectors;  // partition size in sectors
    const char* label;
    uint8_t type;
  } cases[] = {{"12", "8192", "small", FS_TYPE_FAT12},
               {"16", "32768", "MEDIUM", FS_TYPE_FAT16},
               {"32", "81920", "LARGE", FS_TYPE_FAT32},
               // 100 MiB: the total no longer fits the boot sector's word at
               // 19 and is read from the double word at 32.
               {"16", "204800", "BIG16", FS_TYPE_FAT16}};
  const int kCases = static_cast<int>(sizeof(cases) / sizeof(cases[0]));
  vt::FakeDevices fake;
  char node = 'a';
  for (const Case& c : cases) {
    std::string img = dir_ / (std::string("fat") + c.fat + "-" + c.sectors + ".img");
    std::string bytes = std::to_string((2048ull + atoi(c.sectors) + 2048) * 512);
    std::string cmd = "set -e; truncate -s " + bytes + " '" + img +
                      "'; printf 'label: dos\\nstart=2048, size=" +
                      c.sectors + ", type=c\\n' | sfdisk -q '" + img + "' >/dev/null 2>&1;" +
                      "mkfs.fat -F " + c.fat + " -n '" + c.label + "' --offset 2048 '" + img +
                      "' " + std::to_string(atoi(c.sectors) / 2) + " >/dev/null 2>&1";
    ASSERT_EQ(dt::Run(cmd), 0) << cmd;
    fake.AddScsiDisk(std::string("/dev/sd") + node, img, "VENDOR", c.label, 0, 0, node - 'a', 0,
                     node - 'a');
    ++node;
  }
  View_Disk_Info table;
  ASSERT_EQ(table.UI_TakeInventory(), kCases);
  ASSERT_EQ(table.m_DiskCount, kCases);
  EXPECT_EQ(DetectAllPartitions(&table.m_Computer), kCases);
  for (int d = 0; d < kCases; ++d) {
    SCOPED_TRACE(cases[d].fat);
    const HardDiskInformation& disk = table.m_Computer.Disks[d];
    ASSERT_EQ(disk.PartitionCount, 1);
    const FileSystemInformation* fs = disk.Partitions[0].FileSystem;
    ASSERT_NE(fs, nullptr);
    EXPECT_EQ(fs->FsType, cases[d].type);
    std::map<std::string, std::string> keys = Blkid(
        dir_ / (std::string("fat") + cases[d].fat + "-" + cases[d].sectors + ".img"), 2048 * 512);
    EXPECT_EQ(TypeName(fs->FsType), BlkidTypeName(keys));
    ASSERT_NE(fs->VolumeLabel, nullptr);
    EXPECT_EQ(TrimRight(fs->VolumeLabel), keys["LABEL"]);
    EXPECT_EQ(disk.Partitions[0].StartSector, 2048u);
    EXPECT_EQ(disk.Partitions[0].SectorCount, static_cast<uint32_t>(atoi(cases[d].sectors)));
    // mkfs.fat was given the partition's size in KiB: the volume fills it.
    EXPECT_EQ(fs->TotalSectors, static_cast<uint32_t>(atoi(cases[d].sectors)));
  }
  FreeHdInfoList(&table.m_Computer, FreeFsInfo);
}

// The volume name keeps the low byte of each UTF-16 unit, where blkid
// decodes the whole character: the two agree on ASCII and on the code points
// below 0x100, and differ beyond them (Omega, U+03A9, keeps 0xA9).
TEST_F(ToolImages, NtfsLabelKeepsTheLowByteOfEachCharacter) {
  std::string img = dir_ / "ntfs-label.img";
  std::string part = dir_ / "ntfs-part.img";
  const std::string label = "Donn\xC3\xA9" "es \xCE\xA9";  // "Données Ω" in UTF-8
  std::string cmd =
      "set -e; truncate -s 16M '" + img + "';"
      "printf 'label: dos\\nstart=2048, size=16384, type=7\\n' | sfdisk -q '" + img +
      "' >/dev/null 2>&1; truncate -s 8M '" + part + "';"
      "LC_ALL=C.UTF-8 mkntfs -F -Q -p 2048 -H 255 -S 63 -L '" + label + "' '" + part +
      "' >/dev/null 2>&1;"
      "dd if='" + part + "' of='" + img + "' bs=512 seek=2048 conv=notrunc,sparse status=none";
  ASSERT_EQ(dt::Run(cmd), 0) << cmd;
  std::string blkidLabel;
  dt::Run("blkid -p -s LABEL -o value --offset " + std::to_string(2048 * 512) + " '" + img +
              "' 2>/dev/null",
          &blkidLabel);
  while (!blkidLabel.empty() && blkidLabel.back() == '\n') blkidLabel.pop_back();
  ASSERT_EQ(blkidLabel, label);
  // blkid's UTF-8, decoded, each code point cut to its low byte.
  std::string lowBytes;
  for (size_t i = 0; i < blkidLabel.size();) {
    unsigned char c = static_cast<unsigned char>(blkidLabel[i]);
    unsigned int cp = c;
    size_t len = 1;
    if (c >= 0xF0) { cp = c & 0x07; len = 4; }
    else if (c >= 0xE0) { cp = c & 0x0F; len = 3; }
    else if (c >= 0xC0) { cp = c & 0x1F; len = 2; }
    for (size_t k = 1; k < len && i + k < blkidLabel.size(); ++k)
      cp = (cp << 6) | (static_cast<unsigned char>(blkidLabel[i + k]) & 0x3F);
    lowBytes += static_cast<char>(cp & 0xFF);
    i += len;
  }
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", img, "TOOLS");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  ASSERT_EQ(root.Disks[0].PartitionCount, 1);
  char node[] = "/dev/hda1";
  ASSERT_EQ(DetectPartition(node, 512, &root.Disks[0].Partitions[0]), 0);
  const FileSystemInformation* fs = root.Disks[0].Partitions[0].FileSystem;
  ASSERT_EQ(fs->FsType, FS_TYPE_NTFS);
  ASSERT_NE(fs->VolumeLabel, nullptr);
  EXPECT_EQ(std::string(fs->VolumeLabel), lowBytes);
  EXPECT_EQ(std::string(fs->VolumeLabel), "Donn\xE9" "es \xA9");
  FreeHdInfoList(&root, FreeFsInfo);
}

TEST_F(ToolImages, MountingTheToolMadeDisk) {
  ASSERT_TRUE(vt::FakeDevices::PrivateMntActive()) << "run inside tests/run-in-mntns.sh";
  std::string img = MakeDisk();
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", img, "TOOLS");
  View_Disk_Info table;
  dt::StdoutCapture out;
  table.UI_InitDevice();
  table.GetDiskParttionInfo();
  out.Stop();
  ASSERT_EQ(table.GetCurrentParttionNum(), 4);
  const char* labels[] = {"FAT16VOL   ", "FAT12VOL   ", "FAT32VOL   ", "NTFSVOL"};
  const char* names[] = {"FAT16", "FAT12", "FAT32", "NTFS"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(table.m_Volume[i].DriveLetter, 'C' + i);
    EXPECT_STREQ(table.m_Volume[i].VolumeLabel, labels[i]);
    EXPECT_STREQ(table.m_Volume[i].FsName, names[i]);
  }
  // The unformatted logical partition 7 took no letter.
  EXPECT_EQ(table.m_Computer.Disks[0].Partitions[4].DriveLetter, 0);
  std::vector<std::string> shell = fake.CallsOf("system");
  ASSERT_EQ(shell.size(), 2u);
  EXPECT_EQ(shell[1].rfind("ntfs-3g /dev/hda6 /mnt/F ", 0), 0u);
  table.UI_FreeMemory();
  FreeHdInfoList(&table.m_Computer, FreeFsInfo);
  dt::Run("rm -rf /mnt/* 2>/dev/null");
}

// The TAB-separated fields of each line of text that starts with kind.
std::vector<std::vector<std::string>> ProbeLines(const std::string& text, const std::string& kind) {
  std::vector<std::vector<std::string>> lines;
  for (const std::string& line : dt::Lines(text)) {
    std::vector<std::string> fields;
    std::stringstream in(line);
    std::string field;
    while (std::getline(in, field, '\t')) fields.push_back(field);
    if (!fields.empty() && fields[0] == kind) lines.push_back(fields);
  }
  return lines;
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// Loop devices whose backing file is path (from sysfs).
int LoopsBackedBy(const std::string& path) {
  std::string out;
  dt::Run("cat /sys/block/loop*/loop/backing_file 2>/dev/null", &out);
  int n = 0;
  for (const std::string& line : dt::Lines(out))
    if (line == path) ++n;
  return n;
}

std::string ProbeCommand(const std::string& devOption, const std::string& args) {
  return std::string(VANTORI_SOURCE_DIR) + "/tests/run-in-mntns.sh " + devOption + " '" +
         VANTORI_PROBE_PATH + "' " + args;
}

TEST_F(ToolImages, ProbeTakesAnImageAsTheSameDiskARealNodeWouldBe) {
  std::string img = MakeDisk();
  // The in-process view of the same file as a real disk node.
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", img, "TOOLS");
  MyComputer root = {0, nullptr};
  ASSERT_EQ(DiskListFun(&root, 1), 1);
  DetectAllPartitions(&root);
  // The program, in a /dev without any disk, with the image.
  std::string out;
  ASSERT_EQ(dt::Run(ProbeCommand("--empty-dev", "--no-mount --image '" + img + "' 2>&1"), &out),
            0)
      << out;
  auto disks = ProbeLines(out, "disk");
  ASSERT_EQ(disks.size(), 1u) << out;
  EXPECT_EQ(disks[0][1], "/dev/vantori-image0");
  EXPECT_EQ(disks[0][2], "Disk image");
  EXPECT_EQ(disks[0][4], "512");
  EXPECT_EQ(disks[0][8], std::to_string(root.Disks[0].TotalSectors));
  EXPECT_EQ(disks[0][9], "5");
  auto parts = ProbeLines(out, "partition");
  ASSERT_EQ(parts.size(), 5u) << out;
  for (int i = 0; i < 5; ++i) {
    const PartitionInformation& p = root.Disks[0].Partitions[i];
    SCOPED_TRACE("partition " + std::to_string(p.PartitionNumber));
    EXPECT_EQ(parts[i][1], "/dev/vantori-image0");
    EXPECT_EQ(parts[i][2], std::to_string(p.PartitionNumber));
    EXPECT_EQ(parts[i][3], p.DriveLetter ? std::string(1, p.DriveLetter) : std::string("-"));
    EXPECT_EQ(parts[i][4], std::to_string(p.StartSector));
    EXPECT_EQ(parts[i][5], std::to_string(p.SectorCount));
    ASSERT_NE(p.FileSystem, nullptr);
    EXPECT_EQ(parts[i][6], std::to_string(p.FileSystem->FsType));
  }
  EXPECT_EQ(parts[3][7], "NTFSVOL");
  EXPECT_EQ(parts[0][7], "FAT16VOL   ");
  FreeHdInfoList(&root, FreeFsInfo);
  // A name that cannot be read stops the program before anything else.
  EXPECT_EQ(dt::Run(ProbeCommand("--empty-dev", "--no-mount --image '" + img + ".missing' 2>&1"),
                    &out),
            2)
      << out;
  EXPECT_NE(out.find("cannot open the disk image"), std::string::npos) << out;
}

TEST_F(ToolImages, ProbeMountsImageVolumesReadOnlyAndReleasesEveryLoopDevice) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root for loop devices";
  std::string img = MakeDisk();
  std::vector<uint8_t> before = vt::ReadAt(img, 0, 1 << 20);
  // 1. The default run: mount, print, unmount, exit.
  std::string out;
  ASSERT_EQ(dt::Run(ProbeCommand("--loop-dev", "--image '" + img + "' 2>&1"), &out), 0) << out;
  auto volumes = ProbeLines(out, "volume");
  auto ntfs = std::find_if(volumes.begin(), volumes.end(),
                           [](const std::vector<std::string>& v) { return v[4] == "NTFS"; });
  ASSERT_NE(ntfs, volumes.end()) << out;
  EXPECT_EQ((*ntfs)[5], "NTFSVOL");
  EXPECT_NE(out.find("ntfsfix skipped for /dev/loop"), std::string::npos) << out;
  if (volumes.size() < 4) {
    // This kernel has no vfat: the FAT volumes are left out and the output
    // says why.
    EXPECT_NE(out.find("left out: this kernel has no vfat file system"), std::string::npos)
        << out;
  }
  for (int i = 0; i < 100 && LoopsBackedBy(img) > 0; ++i) usleep(50 * 1000);
  EXPECT_EQ(LoopsBackedBy(img), 0) << "a loop device still holds the image after the run";
  // 2. Held until SIGTERM: meanwhile the NTFS volume is mounted read-only
  // from a loop device on the image; afterwards nothing is left.
  std::string dir = dir_.path();
  WriteText(dir + "/held.sh",
                "set -e\n"
                "cd \"$1\"\n"
                "mkfifo hold.in\n"
                "\"$2\" --hold --image \"$3\" < hold.in > hold.out 2>&1 &\n"
                "pid=$!\n"
                "exec 3> hold.in\n"
                "i=0\n"
                "while ! grep -q '^volume' hold.out && [ $i -lt 300 ]; do sleep 0.1; i=$((i+1)); done\n"
                "mp=$(awk -F'\\t' '$1 == \"volume\" && $5 == \"NTFS\" { print $3 }' hold.out)\n"
                "echo \"$mp\" > mountpoint\n"
                "awk -v mp=\"$mp\" '$5 == mp { print $6; print }' /proc/self/mountinfo > options\n"
                "if touch \"$mp/written\" 2>/dev/null; then echo yes > wrote; else echo no > wrote; fi\n"
                "cat /sys/block/loop*/loop/backing_file > during 2>/dev/null || true\n"
                "kill -TERM $pid\n"
                "rc=0; wait $pid || rc=$?\n"
                "echo $rc > rc\n"
                "grep -E ' /mnt/[C-Z] ' /proc/self/mountinfo > mounts_after || true\n");
  ASSERT_EQ(dt::Run(std::string(VANTORI_SOURCE_DIR) + "/tests/run-in-mntns.sh --loop-dev sh '" +
                        dir + "/held.sh' '" + dir + "' '" + VANTORI_PROBE_PATH + "' '" + img +
                        "' 2>&1",
                    &out),
            0)
      << out;
  std::string held = ReadText(dir + "/hold.out");
  EXPECT_NE(ReadText(dir + "/mountpoint"), "\n") << held;
  std::string options = ReadText(dir + "/options");
  // Mounted by ntfs-3g (a FUSE block-device mount), read-only.
  EXPECT_EQ(options.rfind("ro,", 0), 0u) << options << held;
  EXPECT_NE(options.find(" - fuseblk /dev/loop"), std::string::npos) << options;
  EXPECT_EQ(ReadText(dir + "/wrote"), "no\n");
  EXPECT_NE(ReadText(dir + "/during").find(img), std::string::npos)
      << "no loop device on the image while held";
  EXPECT_EQ(ReadText(dir + "/rc"), "0\n") << held;
  EXPECT_EQ(ReadText(dir + "/mounts_after"), "") << held;
  // The loop devices release themselves once ntfs-3g has let go; its
  // process ends just after the unmount.
  for (int i = 0; i < 100 && LoopsBackedBy(img) > 0; ++i) usleep(50 * 1000);
  EXPECT_EQ(LoopsBackedBy(img), 0);
  // The image is evidence: not one byte of it changed.
  EXPECT_TRUE(vt::ReadAt(img, 0, 1 << 20) == before);
}

}  // namespace
