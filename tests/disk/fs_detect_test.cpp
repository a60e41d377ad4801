// File-system recognition and labels over hand-built boot sectors.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "disk/FileSystemDetect.h"
#include "disk_test_util.h"

namespace {

using vt::DirEntry;
using vt::FatParams;

using vt::Put16;
using vt::Put32;

// One partition, /dev/hda1, served from a byte range of an image.
class Recognition : public ::testing::Test {
 protected:
  static const uint64_t kBase = 1 << 20;
  void SetUp() override {
    image_ = dir_ / "disk.img";
    vt::MakeSparseFile(image_, 16ull << 20);
    fake_.AddIdeDisk("/dev/hda", image_, "FS");
    fake_.SetPartitionRange("/dev/hda", 1, kBase, 8ull << 20);
  }
  void TearDown() override {
    EXPECT_EQ(fake_.OpenHandles(), 0);  // the device is always closed
    FreeFsInfo(part_.FileSystem);
  }
  void Sector(uint64_t sector, const std::vector<uint8_t>& bytes, size_t at = 0) {
    vt::WriteAt(image_, kBase + sector * 512 + at, bytes);
  }
  const FileSystemInformation& Detect(unsigned short bps = 512) {
    char node[] = "/dev/hda1";
    EXPECT_EQ(DetectPartition(node, bps, &part_), 0);
    EXPECT_NE(part_.FileSystem, nullptr);
    return *part_.FileSystem;
  }
  std::string Label() {
    const char* l = part_.FileSystem ? part_.FileSystem->VolumeLabel : nullptr;
    return l ? std::string(l) : std::string("<null>");
  }
  // A FAT12/16 volume: 1 reserved, 2 FATs of fatSize, 512 root entries (32
  // sectors), spc sectors per cluster, total sectors.
  void FatVolume(uint32_t total, uint32_t fatSize = 12, uint8_t spc = 1) {
    FatParams p;
    p.sectorsPerCluster = spc;
    p.fatSize = fatSize;
    p.totalSectors = total;
    Sector(0, vt::FatBootSector(p));
  }
  uint64_t RootStart(uint32_t fatSize = 12) { return 1 + 2 * fatSize; }
  // 512 bytes of directory: 16 file entries, no label among them.
  static std::vector<uint8_t> FileEntries() {
    std::vector<uint8_t> full;
    for (int i = 0; i < 16; ++i) {
      std::vector<uint8_t> e = DirEntry("FILE    BIN", 0x20);
      full.insert(full.end(), e.begin(), e.end());
    }
    return full;
  }

  dt::TempDir dir_;
  vt::FakeDevices fake_;
  std::string image_;
  PartitionInformation part_ = {};
};

TEST_F(Recognition, ExactlyFourThousandEightyFourClustersIsFat12) {
  FatVolume(1 + 24 + 32 + 4084);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT12);
  EXPECT_EQ(fs.SectorsPerCluster, 1);
  EXPECT_EQ(fs.ReservedSectors, 1);
  EXPECT_EQ(fs.TotalSectors, 4141u);
  EXPECT_EQ(fs.FatSize, 12u);
  EXPECT_EQ(fs.RootLocation, 25u);
  EXPECT_EQ(fs.RootDirSectors, 32);
  EXPECT_EQ(fs.FirstDataSector, 57u);
}

TEST_F(Recognition, FourThousandEightyFiveClustersIsFat16) {
  FatVolume(1 + 24 + 32 + 4085);
  EXPECT_EQ(Detect().FsType, FS_TYPE_FAT16);
}

TEST_F(Recognition, Fat16RootWithoutLabelLeavesEmpty12ByteLabel) {
  FatVolume(20000, 20, 4);
  Sector(RootStart(20), DirEntry("README  TXT", 0x20));
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT16);
  ASSERT_NE(fs.VolumeLabel, nullptr);
  EXPECT_EQ(memcmp(fs.VolumeLabel, "\0\0\0\0\0\0\0\0\0\0\0\0", 12), 0);
}

TEST_F(Recognition, LabelFoundInLaterRootSectorWithTrailingBlanks) {
  FatVolume(20000, 20, 4);
  const std::vector<uint8_t> full = FileEntries();
  Sector(RootStart(20), full);
  Sector(RootStart(20) + 1, DirEntry("SYSTEM ", 0x08));
  Detect();
  EXPECT_EQ(Label(), "SYSTEM     ");
}

TEST_F(Recognition, LabelWithArchiveBitIsNotFoundDeletedOneIs) {
  FatVolume(20000, 20, 4);
  Sector(RootStart(20), DirEntry("ARCHIVED", 0x28));
  Detect();
  EXPECT_EQ(Label(), std::string(""));
  std::vector<uint8_t> deleted = DirEntry("XOLDLABEL", 0x08);
  deleted[0] = 0xE5;
  Sector(RootStart(20), DirEntry("ARCHIVED", 0x28));
  Sector(RootStart(20), deleted, 32);
  Detect();
  EXPECT_EQ(Label(), "\xE5" "OLDLABEL  ");
}

TEST_F(Recognition, EndEntryStopsTheSearch) {
  FatVolume(20000, 20, 4);
  Sector(RootStart(20), DirEntry("A", 0x20));
  Sector(RootStart(20), std::vector<uint8_t>(32, 0), 32);
  Sector(RootStart(20), DirEntry("HIDDEN", 0x08), 64);
  Detect();
  EXPECT_EQ(Label(), "");
}

TEST_F(Recognition, RootEntriesZeroWithSixteenBitFatIsUnknown) {
  FatParams p;
  p.rootEntries = 0;
  p.fatSize = 20;
  Sector(0, vt::FatBootSector(p));
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, NoTotalIsUnknown) {
  FatVolume(0);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, AreasFillingTheVolumeGiveNoType) {
  FatVolume(40, 12, 1);  // fewer sectors than reserved + FATs + root
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, BytesPerSectorMismatchIsUnknown) {
  FatParams p;
  p.bytesPerSector = 1024;
  p.fatSize = 20;
  p.totalSectors = 20000;
  std::vector<uint8_t> boot = vt::FatBootSector(p);
  boot.resize(512);
  vt::PutBootSignature(boot);
  Sector(0, boot);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, ImplausibleSectorsPerClusterOrSignature) {
  for (uint8_t spc : {0, 3, 6, 255}) {
    FatVolume(20000, 20, spc);
    EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN) << int(spc);
  }
  FatVolume(20000, 20, 128);
  EXPECT_EQ(Detect().FsType, FS_TYPE_FAT12);  // 128 is allowed; few clusters
  Sector(0, {0x00, 0x00}, 510);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, NtfsNameWithReservedSectorsIsTriedAsFat) {
  FatVolume(20000, 20, 4);
  Sector(0, {'N', 'T', 'F', 'S', ' ', ' ', ' ', ' '}, 3);
  EXPECT_EQ(Detect().FsType, FS_TYPE_FAT16);
}

TEST_F(Recognition, PartitionNodeOpenedReadWriteNonBlocking) {
  FatVolume(20000, 20, 4);
  fake_.ClearCalls();
  Detect();
  ASSERT_EQ(fake_.OpenFlags().size(), 1u);
  EXPECT_EQ(fake_.OpenFlags()[0].first, "/dev/hda1");
  EXPECT_EQ(fake_.OpenFlags()[0].second, O_RDWR | O_NONBLOCK);
  std::vector<std::string> closes = fake_.CallsOf("close");
  ASSERT_EQ(closes.size(), 1u);
  EXPECT_EQ(closes[0], "/dev/hda1");
}

TEST_F(Recognition, FieldsAreStoredOnlyOnceTheChecksBeforeThemPassed) {
  // Sector size mismatch: sectors per cluster and reserved sectors not stored.
  FatParams p;
  p.bytesPerSector = 1024;
  p.sectorsPerCluster = 4;
  std::vector<uint8_t> boot = vt::FatBootSector(p);
  boot.resize(512);
  Sector(0, boot);
  EXPECT_EQ(Detect().SectorsPerCluster, 0);
  EXPECT_EQ(part_.FileSystem->ReservedSectors, 0);
  // Implausible sectors per cluster: stored, but not the reserved sectors.
  FatVolume(20000, 20, 6);
  EXPECT_EQ(Detect().SectorsPerCluster, 6);
  EXPECT_EQ(part_.FileSystem->ReservedSectors, 0);
  EXPECT_EQ(part_.FileSystem->FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Recognition, SixteenBitVolumeWithThirtyTwoBitTotal) {
  // 100000 sectors do not fit the word at 19: the double word at 32 counts.
  FatVolume(100000, 100, 4);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT16);
  EXPECT_EQ(fs.TotalSectors, 100000u);
  EXPECT_EQ(fs.FatSize, 100u);
  EXPECT_EQ(fs.RootLocation, 201u);
}

TEST_F(Recognition, LabelEntriesAreLookedForInTheFirst512BytesOfEachSector) {
  // 1024-byte sectors: the scan of a root-directory sector covers its first
  // 512 bytes only, so a label in the second half is not seen.
  fake_.Disk("/dev/hda")->sectorSize = 1024;
  FatParams p;
  p.bytesPerSector = 1024;
  p.sectorsPerCluster = 4;
  p.fatSize = 20;
  p.totalSectors = 20000;
  vt::WriteAt(image_, kBase, vt::FatBootSector(p));
  const uint64_t root = (1 + 2 * 20) * 1024ull;  // 16 root sectors of 1024 bytes
  const std::vector<uint8_t> files = FileEntries();
  vt::WriteAt(image_, kBase + root, files);
  vt::WriteAt(image_, kBase + root + 512, DirEntry("HIDDEN", 0x08));
  const FileSystemInformation& fs = Detect(1024);
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT16);
  EXPECT_EQ(fs.RootDirSectors, 16);
  EXPECT_EQ(Label(), "");
  // The next sector's first entry is found.
  vt::WriteAt(image_, kBase + root + 1024, DirEntry("SECOND", 0x08));
  Detect(1024);
  EXPECT_EQ(Label(), "SECOND     ");
}

TEST_F(Recognition, UnopenableOrUnreadableNodeGivesTypeZeroRecord) {
  fake_.FailOpen("/dev/hda1", ENXIO);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, 0);
  EXPECT_EQ(fs.VolumeLabel, nullptr);
  char missing[] = "/dev/hda9";
  EXPECT_EQ(DetectPartition(missing, 512, &part_), 0);  // replaces the record
  EXPECT_EQ(part_.FileSystem->FsType, 0);
  char node[] = "/dev/hda1";
  PartitionInformation other = {};
  EXPECT_EQ(DetectPartition(node, 256, &other), -1);
  EXPECT_EQ(other.FileSystem, nullptr);
  EXPECT_EQ(DetectPartition(node, 512, nullptr), -1);
}

// ---- FAT32 --------------------------------------------------------------

class Fat32 : public Recognition {
 protected:
  // reserved 32, 2 FATs of 64 sectors, 1 sector per cluster: data at 160;
  // cluster c is at sector 160 + (c - 2).
  void SetUp() override {
    Recognition::SetUp();
    Fat32Volume(64, 1, 16000);
    Link(0, 0x0FFFFFF8);
    Link(1, 0x0FFFFFFF);
  }
  // A FAT32 boot sector: 32 reserved, 2 FATs of fatSize32, root at cluster 2.
  void Fat32Volume(uint32_t fatSize32, uint8_t spc, uint32_t total) {
    FatParams p;
    p.reserved = 32;
    p.fatSize = 0;
    p.fatSize32 = fatSize32;
    p.sectorsPerCluster = spc;
    p.rootEntries = 0;
    p.totalSectors = total;
    p.rootCluster = 2;
    Sector(0, vt::FatBootSector(p));
  }
  void Link(uint32_t cluster, uint32_t next) {
    std::vector<uint8_t> v(4);
    Put32(v, 0, next);
    vt::WriteAt(image_, kBase + 32 * 512 + cluster * 4, v);
  }
  uint64_t ClusterSector(uint32_t c) { return 160 + (c - 2); }
  void FillCluster(uint32_t c) { Sector(ClusterSector(c), FileEntries()); }
};

TEST_F(Fat32, LabelFoundAlongTheRootChain) {
  FillCluster(2);
  Link(2, 7);
  FillCluster(7);
  Link(7, 9);
  Sector(ClusterSector(9), DirEntry("BIG VOLUME", 0x08));
  Link(9, 0x0FFFFFFF);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT32);
  EXPECT_EQ(fs.RootLocation, 2u);
  EXPECT_EQ(fs.SecondaryWord, 1);
  EXPECT_EQ(fs.FirstDataSector, 160u);
  EXPECT_EQ(fs.FatSize, 64u);
  EXPECT_EQ(Label(), "BIG VOLUME ");
}

TEST_F(Fat32, ChainLoopingOnItselfEnds) {
  FillCluster(2);
  Link(2, 2);
  EXPECT_EQ(Detect().FsType, FS_TYPE_FAT32);
  EXPECT_EQ(Label(), "");
}

// A damaged boot sector may claim a FAT so large that its plausibility bound
// alone would allow millions of reads: a directory chain ends after 2 MiB
// of directory (65536 entries) all the same.
TEST_F(Fat32, LoopUnderAHugeFatEndsAfterTwoMebibytesOfDirectory) {
  Fat32Volume(70000, 1, 150000);  // bound 1,120,000 clusters
  vt::MakeSparseFile(image_, kBase + (80ull << 20));
  fake_.SetPartitionRange("/dev/hda", 1, kBase, 80ull << 20);
  const std::vector<uint8_t> full = FileEntries();
  Sector(32 + 2 * 70000, full);  // cluster 2, full of file entries
  Link(2, 2);
  fake_.ClearCalls();
  EXPECT_EQ(Detect().FsType, FS_TYPE_FAT32);
  EXPECT_EQ(Label(), "");
  size_t reads = 0;
  for (const std::string& c : fake_.CallsOf("lseek"))
    if (c.rfind("/dev/hda1 ", 0) == 0) ++reads;
  // 4096 one-sector clusters of directory, the boot sector and one FAT window.
  EXPECT_GE(reads, 4096u);
  EXPECT_LE(reads, 4096u + 4);
}

TEST_F(Fat32, ChainToFreeOrReservedClusterEnds) {
  FillCluster(2);
  Link(2, 0);
  Detect();
  EXPECT_EQ(Label(), "");
  Link(2, 1);
  Detect();
  EXPECT_EQ(Label(), "");
}

TEST_F(Fat32, ClusterBeyondFatSizeTimesSixteenEndsTheWalk) {
  FillCluster(2);
  Link(2, 64 * 16);  // the first cluster past the bound
  Sector(ClusterSector(64 * 16), DirEntry("TOO FAR", 0x08));
  Detect();
  EXPECT_EQ(Label(), "");
  Link(2, 64 * 16 - 1);
  Sector(ClusterSector(64 * 16 - 1), DirEntry("IN REACH", 0x08));
  Detect();
  EXPECT_EQ(Label(), "IN REACH   ");
}

TEST_F(Fat32, NextClusterIsUsedUnmasked) {
  // 0x10000009 names cluster 9 only when its top four bits are masked off;
  // unmasked it lies above 0x0FFFFFEF and ends the walk.
  FillCluster(2);
  Sector(ClusterSector(9), DirEntry("MASKED", 0x08));
  Link(2, 0x10000009);
  Detect();
  EXPECT_EQ(Label(), "");
  Link(2, 9);
  Detect();
  EXPECT_EQ(Label(), "MASKED     ");
}

TEST_F(Fat32, EverySectorOfAClusterIsScanned) {
  // 4 sectors per cluster: cluster c at 160 + 4 (c - 2); the label in the
  // third sector of cluster 3.
  Fat32Volume(64, 4, 16000);
  const std::vector<uint8_t> full = FileEntries();
  for (int j = 0; j < 4; ++j) Sector(160 + j, full);
  Sector(164, full);
  Sector(165, full);
  Sector(166, DirEntry("THIRD", 0x08));
  Link(2, 3);
  Link(3, 0x0FFFFFFF);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_FAT32);
  EXPECT_EQ(fs.FirstDataSector, 160u);
  EXPECT_EQ(Label(), "THIRD      ");
}

TEST_F(Fat32, ChainIntoTheSecondFatWindow) {
  // FAT of 2048 sectors (bound 32768 clusters). Cluster 20000 is entry
  // 20000 - 16384 of the window of 128 sectors read at reserved + 128.
  vt::MakeSparseFile(image_, kBase + (32ull << 20));
  fake_.SetPartitionRange("/dev/hda", 1, kBase, 32ull << 20);
  Fat32Volume(2048, 1, 60000);
  const uint64_t data = 32 + 2 * 2048;
  const std::vector<uint8_t> full = FileEntries();
  Sector(data, full);                  // cluster 2
  Sector(data + 19998, full);          // cluster 20000
  Sector(data + 29998, DirEntry("FAR AWAY", 0x08));  // cluster 30000
  Link(2, 20000);
  Link(20000, 30000);
  Link(30000, 0x0FFFFFFF);
  fake_.ClearCalls();
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FirstDataSector, data);
  EXPECT_EQ(Label(), "FAR AWAY   ");
  std::vector<std::string> seeks = fake_.CallsOf("lseek");
  auto sought = [&](uint64_t sector) {
    return std::count(seeks.begin(), seeks.end(), "/dev/hda1 " + std::to_string(sector * 512));
  };
  EXPECT_EQ(sought(32), 1);        // window 0, read once for cluster 2
  EXPECT_EQ(sought(32 + 128), 1);  // window 1, read once for 20000 and 30000
  EXPECT_EQ(sought(data + 29998), 1);
}

TEST_F(Fat32, RootClusterBelowTwoIsUnknown) {
  std::vector<uint8_t> v(4);
  Put32(v, 0, 1);
  Sector(0, v, 44);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Fat32, FatWindowThatCannotBeReadEndsTheWalk) {
  // Cluster 20000 lies in FAT window 1 (sectors 32 + 128 ...), beyond a
  // partition of only 100 KiB.
  fake_.SetPartitionRange("/dev/hda", 1, kBase, 100 * 1024);
  FillCluster(2);
  Link(2, 3);
  FillCluster(3);
  Link(3, 5);
  Detect();
  EXPECT_EQ(Label(), "");
}

// ---- NTFS -----------------------------------------------------------------

class Ntfs : public Recognition {
 protected:
  // spc sectors per cluster, MFT at cluster 4: record 3 at 4*spc + 6.
  void Boot(uint8_t spc, uint8_t clustersPerRecord, uint64_t total = 16000, uint64_t mft = 4) {
    vt::NtfsParams p;
    p.sectorsPerCluster = spc;
    p.clustersPerRecord = clustersPerRecord;
    p.totalSectors = static_cast<uint32_t>(total);
    p.mftCluster = static_cast<uint32_t>(mft);
    p.mirrorCluster = 2;
    Sector(0, vt::NtfsBootSector(p));
    spc_ = spc;
  }
  // File record 3 with the attributes given as (type, length, value bytes).
  void VolumeRecord(const std::vector<std::vector<uint8_t>>& attributes, uint8_t first = 0x38) {
    std::vector<uint8_t> rec(1024, 0);
    memcpy(&rec[0], "FILE", 4);
    rec[20] = first;
    size_t at = first;
    for (const auto& a : attributes) {
      for (size_t i = 0; i < a.size() && at + i < rec.size(); ++i) rec[at + i] = a[i];
      at += a[4];
    }
    vt::WriteAt(image_, kBase + (4ull * spc_ + 6) * 512, rec);
  }
  static std::vector<uint8_t> Attribute(uint8_t type, uint8_t length) {
    std::vector<uint8_t> a(length, 0);
    a[0] = type;
    a[4] = length;
    return a;
  }
  static std::vector<uint8_t> VolumeName(const std::u16string& name) {
    std::vector<uint8_t> a = Attribute(0x60, static_cast<uint8_t>((0x18 + name.size() * 2 + 7) & ~7));
    a[16] = static_cast<uint8_t>(name.size() * 2);
    a[20] = 0x18;
    for (size_t i = 0; i < name.size(); ++i) {
      a[0x18 + 2 * i] = name[i] & 0xff;
      a[0x18 + 2 * i + 1] = name[i] >> 8;
    }
    return a;
  }
  uint8_t spc_ = 8;
};

TEST_F(Ntfs, EightSectorsPerClusterWithF6IsAccepted) {
  Boot(8, 0xF6);
  VolumeRecord({Attribute(0x10, 0x60), Attribute(0x30, 0x68), VolumeName(u"Windows 7")});
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_NTFS);
  EXPECT_EQ(fs.TotalSectors, 16000u);
  EXPECT_EQ(fs.RootLocation, 4u);
  EXPECT_EQ(fs.FatSize, 2u);
  EXPECT_EQ(fs.RootDirSectors, 0xF6);
  EXPECT_EQ(fs.SecondaryWord, 1);
  EXPECT_EQ(fs.FirstDataSector, 0u);
  EXPECT_EQ(Label(), "Windows 7");
}

TEST_F(Ntfs, EightSectorsPerClusterWith01IsRejected) {
  Boot(8, 0x01);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Ntfs, SmallClustersNeedTwoSectorRecords) {
  Boot(1, 2);
  VolumeRecord({VolumeName(u"A")});
  EXPECT_EQ(Detect().FsType, FS_TYPE_NTFS);
  EXPECT_EQ(Label(), "A");
  Boot(2, 1);
  EXPECT_EQ(Detect().FsType, FS_TYPE_NTFS);
  Boot(1, 1);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
  Boot(2, 0xF6);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Ntfs, NoTotalOrNoMftIsUnknown) {
  Boot(8, 0xF6, 0, 4);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
  Boot(8, 0xF6, 1000, 0);
  EXPECT_EQ(Detect().FsType, FS_TYPE_UNKNOWN);
}

TEST_F(Ntfs, CharactersKeepOnlyTheirLowByte) {
  Boot(8, 0xF6);
  VolumeRecord({VolumeName(u"\u0141\u00e9x")});
  Detect();
  EXPECT_EQ(Label(), "\x41\xe9x");
}

TEST_F(Ntfs, NoVolumeNameWithinSixAttributesGivesNoLabel) {
  Boot(8, 0xF6);
  std::vector<std::vector<uint8_t>> attrs;
  for (int i = 0; i < 6; ++i) attrs.push_back(Attribute(0x10, 0x20));
  attrs.push_back(VolumeName(u"SEVENTH"));
  VolumeRecord(attrs);
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_NTFS);
  EXPECT_EQ(fs.VolumeLabel, nullptr);
}

TEST_F(Ntfs, SixthAttributeIsStillVisited) {
  Boot(8, 0xF6);
  std::vector<std::vector<uint8_t>> attrs;
  for (int i = 0; i < 5; ++i) attrs.push_back(Attribute(0x10, 0x20));
  attrs.push_back(VolumeName(u"SIXTH"));
  VolumeRecord(attrs);
  Detect();
  EXPECT_EQ(Label(), "SIXTH");
}

TEST_F(Ntfs, TypeLengthAndValueFieldsAreReadAsSingleBytes) {
  Boot(8, 0xF6);
  // The first attribute is 0x160 bytes long: only its low byte 0x60 steps
  // on, to the volume name at 0x38 + 0x60. Its value length 0x104 counts as
  // 4 bytes (2 characters) and its value offset 0x118 as 0x18.
  std::vector<uint8_t> first = Attribute(0x10, 0x60);
  first[5] = 0x01;
  std::vector<uint8_t> name = VolumeName(u"ABCD");
  name[16] = 0x04;
  name[17] = 0x01;
  name[21] = 0x01;
  VolumeRecord({first, name});
  Detect();
  EXPECT_EQ(Label(), "AB");
  // An attribute whose type is 0x160 has the type byte 0x60.
  std::vector<uint8_t> odd = VolumeName(u"ODD");
  odd[1] = 0x01;
  VolumeRecord({odd});
  Detect();
  EXPECT_EQ(Label(), "ODD");
}

TEST_F(Ntfs, VolumeRecordIsReadAtMftClusterTimesClusterSizePlusSix) {
  Boot(4, 0xF6, 16000, 10);  // 4 sectors per cluster, MFT at cluster 10: sector 46
  std::vector<uint8_t> rec(1024, 0);
  rec[20] = 0x38;
  std::vector<uint8_t> name = VolumeName(u"AT46");
  std::copy(name.begin(), name.end(), rec.begin() + 0x38);
  vt::WriteAt(image_, kBase + 46 * 512, rec);
  fake_.ClearCalls();
  Detect();
  EXPECT_EQ(Label(), "AT46");
  std::vector<std::string> seeks = fake_.CallsOf("lseek");
  ASSERT_EQ(seeks.size(), 2u);
  EXPECT_EQ(seeks[1], "/dev/hda1 " + std::to_string(46 * 512));
}

TEST_F(Ntfs, OffsetsPastTheRecordStopTheWalk) {
  Boot(8, 0xF6);
  // First attribute near the end of the two sectors, with a huge length.
  VolumeRecord({Attribute(0x10, 0xFF), Attribute(0x10, 0xFF), Attribute(0x10, 0xFF),
                Attribute(0x10, 0xFF), Attribute(0x10, 0xFF)},
               0xF8);
  EXPECT_EQ(Detect().VolumeLabel, nullptr);
}

TEST_F(Ntfs, NameReachingPastTheRecordIsCutAtItsEnd) {
  Boot(8, 0xF6);
  // A volume-name attribute at 0x38 + 4 * 0xE0 = 0x3B8, whose value starts
  // at +0x40 (0x3F8) and claims 127 characters: only 4 fit in the record.
  std::vector<std::vector<uint8_t>> attrs;
  for (int i = 0; i < 4; ++i) attrs.push_back(Attribute(0x10, 0xE0));
  std::vector<uint8_t> name = Attribute(0x60, 0x48);
  name[16] = 0xFE;
  name[20] = 0x40;
  for (int i = 0; i < 4; ++i) name[0x40 + 2 * i] = static_cast<uint8_t>('W' + i);
  attrs.push_back(name);
  VolumeRecord(attrs);
  Detect();
  EXPECT_EQ(Label(), "WXYZ");
}

TEST_F(Ntfs, ShortRecordReadGivesNoLabel) {
  Boot(8, 0xF6, 16000, 100000);  // record far beyond the partition
  const FileSystemInformation& fs = Detect();
  EXPECT_EQ(fs.FsType, FS_TYPE_NTFS);
  EXPECT_EQ(fs.VolumeLabel, nullptr);
}

TEST(DetectDirect, NullArgumentsAndZeroClusterSize) {
  unsigned char boot[512] = {};
  FileSystemInformation fs = {};
  EXPECT_EQ(DetectFatVolume(boot, 512, &fs, -1), 0);
  EXPECT_EQ(fs.FsType, FS_TYPE_UNKNOWN);
  EXPECT_EQ(DetectNtVolume(boot, 512, &fs, -1), 0);
  EXPECT_EQ(DetectFatVolume(nullptr, 512, &fs, -1), 0);
  EXPECT_EQ(DetectNtVolume(boot, 512, nullptr, -1), 0);
  GetVolumeLabel(512, nullptr, -1);
  fs.FsType = FS_TYPE_FAT16;
  fs.RootDirSectors = 4;
  GetVolumeLabel(512, &fs, -1);  // unreadable: an empty label
  ASSERT_NE(fs.VolumeLabel, nullptr);
  EXPECT_STREQ(fs.VolumeLabel, "");
  free(fs.VolumeLabel);
}

TEST(PartitionNodeName, APathEndingInADigitTakesAPBeforeTheNumber) {
  HardDiskInformation disk = {};
  PartitionInformation part = {};
  part.PartitionNumber = 5;
  char node[32];
  strcpy(disk.DevicePath, "/dev/sdb");
  PartitionNodeName(&disk, &part, node, sizeof(node));
  EXPECT_STREQ(node, "/dev/sdb5");
  strcpy(disk.DevicePath, "/dev/vantori-image1");
  PartitionNodeName(&disk, &part, node, sizeof(node));
  EXPECT_STREQ(node, "/dev/vantori-image1p5");
}

TEST(PartitionNodeName, DevicePathFieldWithoutTerminatorIsBounded) {
  HardDiskInformation disk = {};
  memset(disk.DevicePath, 'x', sizeof(disk.DevicePath));
  PartitionInformation part = {};
  part.PartitionNumber = 27;
  char node[64];
  PartitionNodeName(&disk, &part, node, sizeof(node));
  EXPECT_EQ(std::string(node), std::string(sizeof(disk.DevicePath), 'x') + "27");
  char small[6];
  PartitionNodeName(&disk, &part, small, sizeof(small));
  EXPECT_STREQ(small, "xxxxx");
  strcpy(disk.DevicePath, "/dev/sdb");
  part.PartitionNumber = 5;
  PartitionNodeName(&disk, &part, node, sizeof(node));
  EXPECT_STREQ(node, "/dev/sdb5");
}

}  // namespace
