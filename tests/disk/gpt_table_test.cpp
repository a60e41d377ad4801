// GUID partition tables: hand-built ones (both headers, damaged headers and
// entry arrays, small and large entries, hybrid tables, disks beyond 2 TiB,
// 4096-byte sectors) and ones made by sfdisk, mkfs.fat and mkntfs, checked
// against what sfdisk --json and blkid -p say about the same images.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <regex>
#include <string>
#include <vector>

#include "disk/DeviceSeam.h"
#include "disk/FileSystemDetect.h"
#include "disk/GptTable.h"
#include "disk/PartitionTable.h"
#include "disk_test_util.h"
#include "gpt_image.h"

namespace {

using vt::GptImage;
using vt::GptPart;

const char kEsp[] = "C12A7328-F81F-11D2-BA4B-00A0C93EC93B";
const char kMsr[] = "E3C9E316-0B5C-4DB8-817D-F92DF00215AE";
const char kData[] = "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7";
const char kRecovery[] = "DE94BBA4-06D1-4D40-A16A-BFD50179D6AC";
const char kLinux[] = "0FC63DAF-8483-4772-8E79-3D69D8477DE4";

std::string Guid(const PartitionInformation& p) {
  char text[37];
  GptGuidText(p.TypeGuid, text);
  return text;
}

class GptTable : public ::testing::Test {
 protected:
  // A Windows system disk: EFI system, reserved, basic data, recovery.
  GptImage WindowsDisk() {
    GptImage g;
    g.totalSectors = 1ull << 20;  // 512 MiB
    g.parts = {{kEsp, 2048, 206847, 0, u"EFI system partition"},
               {kMsr, 206848, 239615, 0, u"Microsoft reserved partition"},
               {kData, 239616, 900000, 0, u"Basic data partition"},
               {kRecovery, 900001, 1000000, 1ull | (1ull << 63), u"Recovery"}};
    return g;
  }
  std::vector<PartitionInformation> Read(const GptImage& g, int* table, const char* damage = "") {
    const std::string path = dir_ / "gpt.img";
    g.Write(path);
    Damage(path, g, damage);
    vt::FakeDisk& disk = fake_.AddIdeDisk("/dev/hda", path, "GPT");
    disk.sectorSize = static_cast<int>(g.bps);
    int fd = g_DeviceSeam.Open64("/dev/hda", 0);
    PartitionInformation* out = nullptr;
    const int n = GetDiskPartitions(fd, static_cast<unsigned short>(g.bps), g.totalSectors, &out, table);
    g_DeviceSeam.Close(fd);
    std::vector<PartitionInformation> v(out, out + (n > 0 ? n : 0));
    free(out);
    return v;
  }
  // Flips one byte: "primary-header", "primary-entries", "backup-header",
  // "backup-entries", or a comma-separated list of them.
  static void Damage(const std::string& path, const GptImage& g, const std::string& what) {
    auto flip = [&](uint64_t offset) {
      std::vector<uint8_t> b = vt::ReadAt(path, offset, 1);
      b[0] ^= 0x5A;
      vt::WriteAt(path, offset, b);
    };
    if (what.find("primary-header") != std::string::npos) flip(1ull * g.bps + 60);
    if (what.find("primary-entries") != std::string::npos) flip(2ull * g.bps + 40);
    if (what.find("backup-header") != std::string::npos) flip((g.totalSectors - 1) * g.bps + 60);
    if (what.find("backup-entries") != std::string::npos)
      flip((g.totalSectors - 1 - g.EntrySectors()) * g.bps + 40);
  }
  static void ExpectWindows(const std::vector<PartitionInformation>& p) {
    ASSERT_EQ(p.size(), 4u);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(p[i].PartitionNumber, i + 1);
      EXPECT_EQ(p[i].TableKind, PARTITION_TABLE_GPT);
    }
    EXPECT_EQ(Guid(p[0]), kEsp);
    EXPECT_EQ(Guid(p[1]), kMsr);
    EXPECT_EQ(Guid(p[2]), kData);
    EXPECT_EQ(Guid(p[3]), kRecovery);
    EXPECT_STREQ(p[0].Name, "EFI system partition");
    EXPECT_STREQ(p[2].Name, "Basic data partition");
    EXPECT_EQ(p[0].StartSector, 2048u);
    EXPECT_EQ(p[0].SectorCount, 204800u);
    EXPECT_EQ(p[2].StartSector, 239616u);
    EXPECT_EQ(p[2].SectorCount, 900000u - 239616u + 1);
    // Only the basic-data partition gets a letter.
    EXPECT_EQ(p[0].NoLetter, 1);
    EXPECT_EQ(p[1].NoLetter, 1);
    EXPECT_EQ(p[2].NoLetter, 0);
    EXPECT_EQ(p[3].NoLetter, 1);
  }

  dt::TempDir dir_;
  vt::FakeDevices fake_;
};

TEST_F(GptTable, Crc32OfTheStandardCheckString) {
  const char text[] = "123456789";
  EXPECT_EQ(GptCrc32(reinterpret_cast<const unsigned char*>(text), 9), 0xCBF43926u);
}

TEST_F(GptTable, PrimaryHeaderAndItsEntries) {
  int table = -1;
  std::vector<PartitionInformation> p = Read(WindowsDisk(), &table);
  EXPECT_EQ(table, GPT_RESULT_PRIMARY);
  ExpectWindows(p);
}

TEST_F(GptTable, ADamagedPrimaryHeaderFallsBackToTheBackup) {
  int table = -1;
  std::vector<PartitionInformation> p = Read(WindowsDisk(), &table, "primary-header");
  EXPECT_EQ(table, GPT_RESULT_BACKUP);
  ExpectWindows(p);
}

TEST_F(GptTable, ADamagedPrimaryEntryArrayFallsBackToTheBackup) {
  int table = -1;
  std::vector<PartitionInformation> p = Read(WindowsDisk(), &table, "primary-entries");
  EXPECT_EQ(table, GPT_RESULT_BACKUP);
  ExpectWindows(p);
}

TEST_F(GptTable, ADamagedBackupIsNotNeededWhileThePrimaryIsGood) {
  int table = -1;
  std::vector<PartitionInformation> p = Read(WindowsDisk(), &table, "backup-header,backup-entries");
  EXPECT_EQ(table, GPT_RESULT_PRIMARY);
  ExpectWindows(p);
}

TEST_F(GptTable, BothDamagedFallsBackToTheMasterBootRecord) {
  int table = -1;
  std::vector<PartitionInformation> p = Read(WindowsDisk(), &table, "primary-entries,backup-header");
  EXPECT_EQ(table, GPT_RESULT_DAMAGED);
  // The MBR walk as it always was: the protective entry is all it holds.
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].TableKind, PARTITION_TABLE_MBR);
  EXPECT_EQ(p[0].PartitionNumber, 1);
}

TEST_F(GptTable, AHybridTableIsWalkedAsAMasterBootRecord) {
  GptImage g = WindowsDisk();
  vt::MbrEntry fat;
  fat.type = 0x0C;
  fat.start = 239616;
  fat.count = 1000;
  g.extraMbr = {fat};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  EXPECT_EQ(table, GPT_RESULT_HYBRID);
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].StartSector, 239616u);
  EXPECT_EQ(p[1].TableKind, PARTITION_TABLE_MBR);
}

TEST_F(GptTable, FourEntriesAndEntriesOf256Bytes) {
  for (uint32_t size : {128u, 256u}) {
    GptImage g = WindowsDisk();
    g.entryCount = 4;
    g.entrySize = size;
    int table = -1;
    std::vector<PartitionInformation> p = Read(g, &table);
    EXPECT_EQ(table, GPT_RESULT_PRIMARY) << size;
    ExpectWindows(p);
  }
}

TEST_F(GptTable, NumbersFollowTheEntryPlaceAndEmptyEntriesAreSkipped) {
  GptImage g;
  g.parts = {{kData, 2048, 4095, 0, u"one"}, {"00000000-0000-0000-0000-000000000000", 0, 0, 0, u""},
             {kLinux, 8192, 10000, 0, u"linux"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].PartitionNumber, 1);
  EXPECT_EQ(p[1].PartitionNumber, 3);
  // Only basic data gets a letter, as on a desktop system.
  EXPECT_EQ(p[1].NoLetter, 1);
}

TEST_F(GptTable, HiddenAndNoLetterAttributesKeepTheLetterAway) {
  GptImage g;
  g.parts = {{kData, 2048, 4095, 1ull << 62, u"hidden"},
             {kData, 4096, 8191, 1ull << 63, u"no letter"},
             {kData, 8192, 9000, 1ull << 60, u"read-only"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  ASSERT_EQ(p.size(), 3u);
  EXPECT_EQ(p[0].NoLetter, 1);
  EXPECT_EQ(p[1].NoLetter, 1);
  EXPECT_EQ(p[2].NoLetter, 0);
}

TEST_F(GptTable, NamesInUtf8) {
  GptImage g;
  g.parts = {{kData, 2048, 4095, 0, u"Donn\u00e9es \u6587\U0001F4BE"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  ASSERT_EQ(p.size(), 1u);
  EXPECT_STREQ(p[0].Name, "Donn\xc3\xa9" "es \xe6\x96\x87\xf0\x9f\x92\xbe");
}

TEST_F(GptTable, EntriesOutsideTheDiskAreLeftOut) {
  GptImage g;
  g.parts = {{kData, 2048, 4095, 0, u"fine"}, {kData, 5000, 4000, 0, u"backwards"},
             {kData, 100000, 131072, 0, u"past the end"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  ASSERT_EQ(p.size(), 1u);
  EXPECT_STREQ(p[0].Name, "fine");
}

TEST_F(GptTable, AHeaderClaimingTooManyEntriesIsDamaged) {
  GptImage g = WindowsDisk();
  g.entryCount = GPT_MAX_ENTRIES + 1;
  int table = -1;
  Read(g, &table);
  EXPECT_EQ(table, GPT_RESULT_DAMAGED);
}

TEST_F(GptTable, APartitionBeyondTwoTebibytesOnASparseFourTebibyteDisk) {
  GptImage g;
  g.totalSectors = 4ull << 31;  // 4 TiB of 512-byte sectors
  const uint64_t start = (2ull << 31) + 2048;  // beyond 2 TiB
  g.parts = {{kData, 2048, 4095, 0, u"low"}, {kData, start, start + (1ull << 30) - 1, 0, u"high"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  EXPECT_EQ(table, GPT_RESULT_PRIMARY);
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].StartSector, start);
  EXPECT_EQ(p[1].SectorCount, 1ull << 30);
}

TEST_F(GptTable, SectorsOf4096Bytes) {
  GptImage g;
  g.bps = 4096;
  g.totalSectors = 16384;  // 64 MiB
  g.parts = {{kData, 256, 8191, 0, u"data"}};
  int table = -1;
  std::vector<PartitionInformation> p = Read(g, &table);
  EXPECT_EQ(table, GPT_RESULT_PRIMARY);
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].StartSector, 256u);
  EXPECT_EQ(p[0].SectorCount, 8191u - 256 + 1);
}

TEST_F(GptTable, NoProtectiveEntryIsAnMbrDisk) {
  const std::string path = dir_ / "mbr.img";
  vt::MakeSparseFile(path, 64ull << 20);
  vt::MbrEntry fat;
  fat.type = 0x0C;
  fat.start = 2048;
  fat.count = 4096;
  vt::WriteAt(path, 0, vt::BootRecord({fat}));
  fake_.AddIdeDisk("/dev/hda", path, "MBR");
  int fd = g_DeviceSeam.Open64("/dev/hda", 0);
  PartitionInformation* out = nullptr;
  int table = -1;
  const int n = GetDiskPartitions(fd, 512, 131072, &out, &table);
  g_DeviceSeam.Close(fd);
  EXPECT_EQ(table, GPT_RESULT_NOT_GPT);
  ASSERT_EQ(n, 1);
  EXPECT_EQ(out[0].TableKind, PARTITION_TABLE_MBR);
  EXPECT_EQ(out[0].NoLetter, 0);
  free(out);
}

// ---- tables the usual tools write -----------------------------------------

struct ToolPart {
  uint64_t start, size;
  std::string type, name;
};

// The partitions sfdisk --json reports for an image.
std::vector<ToolPart> SfdiskParts(const std::string& image) {
  std::string json;
  EXPECT_EQ(dt::Run("sfdisk --json '" + image + "'", &json), 0);
  std::vector<ToolPart> parts;
  const std::regex object("\\{[^{}]*\"start\"[^{}]*\\}");
  auto field = [](const std::string& text, const std::string& name) {
    std::smatch m;
    const std::regex re("\"" + name + "\":\\s*\"?([^\",]*)\"?");
    return std::regex_search(text, m, re) ? m[1].str() : std::string();
  };
  for (std::sregex_iterator it(json.begin(), json.end(), object), end; it != end; ++it) {
    const std::string text = it->str();
    parts.push_back({std::stoull(field(text, "start")), std::stoull(field(text, "size")),
                     field(text, "type"), field(text, "name")});
  }
  return parts;
}

TEST_F(GptTable, ToolMadeTablesMatchSfdiskAndBlkid) {
  for (const char* tool : {"sfdisk", "mkfs.fat", "mkntfs", "blkid"})
    ASSERT_EQ(dt::Run(std::string("command -v ") + tool + " >/dev/null"), 0) << tool << " missing";
  const std::string image = dir_ / "tool.img";
  ASSERT_EQ(dt::Run("truncate -s 96M '" + image + "'"), 0);
  const std::string script = std::string("label: gpt\n") +
                             "size=16MiB,type=" + kEsp + ",name=\"EFI system partition\"\n" +
                             "size=8MiB,type=" + kMsr + "\n" +
                             "size=40MiB,type=" + kData + ",name=\"Basic data partition\"\n" +
                             "type=" + kData + ",name=\"Donn\xc3\xa9" "es\"\n";
  ASSERT_EQ(dt::Run("printf '%s' '" + script + "' | sfdisk -q --no-reread --no-tell-kernel '" +
                    image + "' >/dev/null"),
            0);
  const std::vector<ToolPart> expected = SfdiskParts(image);
  ASSERT_EQ(expected.size(), 4u);
  // File systems in partitions 1, 3 and 4, written into the image in place.
  auto format = [&](const ToolPart& p, const std::string& command) {
    const std::string part = dir_ / "part.img";
    ASSERT_EQ(dt::Run("truncate -s " + std::to_string(p.size * 512) + " '" + part + "' && " +
                      command + " '" + part + "' >/dev/null 2>&1 && dd if='" + part + "' of='" +
                      image + "' bs=512 seek=" + std::to_string(p.start) +
                      " conv=notrunc status=none && rm -f '" + part + "'"),
              0)
        << command;
  };
  format(expected[0], "mkfs.fat -F 32 -n ESP");
  format(expected[2], "mkntfs -F -Q -q -L Windows");
  format(expected[3], "mkfs.fat -F 16 -n DATA");

  fake_.AddIdeDisk("/dev/hda", image, "TOOLS");
  int fd = g_DeviceSeam.Open64("/dev/hda", 0);
  PartitionInformation* out = nullptr;
  int table = -1;
  const int n = GetDiskPartitions(fd, 512, (96ull << 20) / 512, &out, &table);
  g_DeviceSeam.Close(fd);
  EXPECT_EQ(table, GPT_RESULT_PRIMARY);
  ASSERT_EQ(n, 4);
  std::string pttype;
  dt::Run("blkid -p -o value -s PTTYPE '" + image + "'", &pttype);
  EXPECT_EQ(pttype, "gpt\n");
  for (int i = 0; i < n; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(out[i].PartitionNumber, i + 1);
    EXPECT_EQ(out[i].StartSector, expected[i].start);
    EXPECT_EQ(out[i].SectorCount, expected[i].size);
    EXPECT_EQ(Guid(out[i]), expected[i].type);
    EXPECT_EQ(std::string(out[i].Name), expected[i].name);
    // The file system blkid finds at the partition's start is the one the
    // layer recognises there.
    fake_.SetPartitionRange("/dev/hda", i + 1, out[i].StartSector * 512, out[i].SectorCount * 512);
    std::string type;
    dt::Run("blkid -p -O " + std::to_string(out[i].StartSector * 512) + " -o value -s TYPE '" +
                image + "'",
            &type);
    PartitionInformation part = out[i];
    part.FileSystem = nullptr;
    std::string node = "/dev/hda" + std::to_string(i + 1);
    const int rc = DetectPartition(&node[0], 512, &part);
    const int fs = rc == 0 && part.FileSystem ? part.FileSystem->FsType : 0;
    if (type == "vfat\n")
      EXPECT_TRUE(fs == FS_TYPE_FAT16 || fs == FS_TYPE_FAT32) << fs;
    else if (type == "ntfs\n")
      EXPECT_EQ(fs, FS_TYPE_NTFS);
    else
      EXPECT_EQ(fs, FS_TYPE_UNKNOWN) << type;
    FreeFsInfo(part.FileSystem);
  }
  EXPECT_EQ(out[0].NoLetter, 1);
  EXPECT_EQ(out[1].NoLetter, 1);
  EXPECT_EQ(out[2].NoLetter, 0);
  EXPECT_EQ(out[3].NoLetter, 0);
  free(out);
}

}  // namespace
