// The partition table walk over hand-built boot records.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "disk/DeviceSeam.h"
#include "disk/PartitionTable.h"
#include "disk_test_util.h"

namespace {

using vt::BootRecord;
using vt::MbrEntry;

MbrEntry Slot(uint32_t start, uint32_t count, uint8_t type = 0x83, uint8_t boot = 0) {
  MbrEntry e;
  e.type = type;
  e.start = start;
  e.count = count;
  e.boot = boot;
  return e;
}

class PartitionWalk : public ::testing::Test {
 protected:
  void SetUp() override {
    image_ = dir_ / "disk.img";
    vt::MakeSparseFile(image_, 64ull << 20);
    fake_.AddIdeDisk("/dev/hda", image_, "WALK");
  }
  void Record(uint64_t sector, const std::vector<MbrEntry>& entries) {
    vt::WriteAt(image_, sector * 512, BootRecord(entries));
  }
  // Runs the walk; returns the records.
  std::vector<PartitionInformation> Walk(int* count = nullptr, unsigned short bps = 512) {
    int fd = g_DeviceSeam.Open64("/dev/hda", 0);
    PartitionInformation* out = nullptr;
    int n = GetPartitionInformation(fd, bps, &out);
    g_DeviceSeam.Close(fd);
    if (count) *count = n;
    std::vector<PartitionInformation> v;
    for (int i = 0; i < n; ++i) v.push_back(out[i]);
    stored_ = out != nullptr;
    free(out);
    return v;
  }
  dt::TempDir dir_;
  vt::FakeDevices fake_;
  std::string image_;
  bool stored_ = false;
};

TEST_F(PartitionWalk, PrimaryEntriesInSlotOrder) {
  Record(0, {Slot(2048, 100, 0x06), Slot(0, 0, 0), Slot(4096, 300, 0x07, 0x80), Slot(9000, 5, 0xEE)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 3u);
  EXPECT_EQ(p[0].PartitionNumber, 1);
  EXPECT_EQ(p[0].StartSector, 2048u);
  EXPECT_EQ(p[0].SectorCount, 100u);
  EXPECT_EQ(p[1].PartitionNumber, 3);
  EXPECT_EQ(p[1].StartSector, 4096u);
  EXPECT_EQ(p[2].PartitionNumber, 4);
  EXPECT_EQ(p[0].DriveLetter, 0);
  EXPECT_EQ(p[0].FileSystem, nullptr);
}

TEST_F(PartitionWalk, EmptyTableGivesZeroAndStoresZeroSizeAllocation) {
  Record(0, {});
  int n = -1;
  EXPECT_TRUE(Walk(&n).empty());
  EXPECT_EQ(n, 0);
  EXPECT_TRUE(stored_);  // glibc's malloc(0) gives a pointer, which is stored
}

TEST_F(PartitionWalk, UnusableBootRecordGivesZeroAndStoresNothing) {
  int fd = g_DeviceSeam.Open64("/dev/hda", 0);
  PartitionInformation* out = reinterpret_cast<PartitionInformation*>(0x1);
  EXPECT_EQ(GetPartitionInformation(fd, 512, &out), 0);  // no 55 AA
  EXPECT_EQ(out, reinterpret_cast<PartitionInformation*>(0x1));
  EXPECT_EQ(GetPartitionInformation(-1, 512, &out), 0);
  EXPECT_EQ(GetPartitionInformation(fd, 512, nullptr), 0);
  EXPECT_EQ(GetPartitionInformation(fd, 256, &out), 0);  // sector too small to hold a table
  g_DeviceSeam.Close(fd);
}

TEST_F(PartitionWalk, BootIndicatorBetween01And7FIsIgnored) {
  Record(0, {Slot(2048, 100, 0x06, 0x01), Slot(4096, 100, 0x06, 0x7F), Slot(8192, 100, 0x06, 0xFF)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].PartitionNumber, 3);
}

TEST_F(PartitionWalk, LogicalPartitionsStartAtTheirBootRecord) {
  // Extended partition at 10000; logical 1 at EBR 10000 (data at +63),
  // logical 2 at EBR 10000+5000, logical 3 at 10000+9000.
  Record(0, {Slot(2048, 100, 0x0B), Slot(10000, 20000, 0x0F), Slot(40000, 10, 0x07)});
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  Record(15000, {Slot(63, 1500), Slot(9000, 2000, 0x05)});
  Record(19000, {Slot(63, 1900)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 5u);
  EXPECT_EQ(p[0].PartitionNumber, 1);
  EXPECT_EQ(p[1].PartitionNumber, 5);
  EXPECT_EQ(p[1].StartSector, 10000u);
  EXPECT_EQ(p[1].SectorCount, 1000u);
  EXPECT_EQ(p[2].PartitionNumber, 6);
  EXPECT_EQ(p[2].StartSector, 15000u);
  EXPECT_EQ(p[2].SectorCount, 1500u);
  EXPECT_EQ(p[3].PartitionNumber, 7);
  EXPECT_EQ(p[3].StartSector, 19000u);
  EXPECT_EQ(p[4].PartitionNumber, 3);  // the primary after the extended slot
  EXPECT_EQ(p[4].StartSector, 40000u);
}

TEST_F(PartitionWalk, FirstRecordWithEmptySlot0AndDataInSlot1IsSizedBySlot0) {
  Record(0, {Slot(10000, 20000, 0x05)});
  Record(10000, {Slot(0, 0, 0), Slot(63, 777, 0x06)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].PartitionNumber, 5);
  EXPECT_EQ(p[0].StartSector, 10000u);
  EXPECT_EQ(p[0].SectorCount, 0u);  // slot 0's count
  // The link is slot 1's start all the same: here the data partition's
  // start, 63 sectors after E. A signed record there continues the chain.
  Record(10063, {Slot(5, 55)});
  p = Walk();
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].PartitionNumber, 6);
  EXPECT_EQ(p[1].StartSector, 10063u);
  EXPECT_EQ(p[1].SectorCount, 55u);
}

TEST_F(PartitionWalk, FirstRecordLinkingOnwardMakesNoRecordItself) {
  Record(0, {Slot(10000, 20000, 0x05)});
  Record(10000, {Slot(3000, 2000, 0x05)});
  Record(13000, {Slot(63, 600), Slot(0, 0, 0)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].PartitionNumber, 5);
  EXPECT_EQ(p[0].StartSector, 13000u);
  EXPECT_EQ(p[0].SectorCount, 600u);
}

TEST_F(PartitionWalk, BrokenChainKeepsWhatWasFound) {
  Record(0, {Slot(10000, 20000, 0x05), Slot(50000, 10, 0x06)});
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  // 15000 holds no signature: the chain ends there.
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].PartitionNumber, 5);
  EXPECT_EQ(p[1].PartitionNumber, 2);
  // An unsigned first record contributes nothing.
  vt::WriteAt(image_, 10000 * 512 + 510, {0, 0});
  EXPECT_EQ(Walk().size(), 1u);
  // A chained record whose slot 0 is unused ends the chain too.
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  Record(15000, {Slot(0, 0, 0), Slot(63, 5)});
  EXPECT_EQ(Walk().size(), 2u);
}

TEST_F(PartitionWalk, ChainedSlot0ExtendedIsRecordedAsData) {
  Record(0, {Slot(10000, 20000, 0x05)});
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  Record(15000, {Slot(63, 1500, 0x05)});  // type not checked again
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].StartSector, 15000u);
  EXPECT_EQ(p[1].SectorCount, 1500u);
}

TEST_F(PartitionWalk, SelfLinkingChainStopsAt24Records) {
  Record(0, {Slot(2048, 100, 0x06), Slot(10000, 20000, 0x05)});
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  Record(15000, {Slot(63, 1500), Slot(5000, 2000, 0x05)});  // links to itself
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 24u);
  EXPECT_EQ(p[0].PartitionNumber, 1);
  EXPECT_EQ(p[1].StartSector, 10000u);
  for (size_t i = 2; i < 24; ++i) EXPECT_EQ(p[i].StartSector, 15000u);
  EXPECT_EQ(p[23].PartitionNumber, 5 + 22);
}

TEST_F(PartitionWalk, PrimariesAfterAFullChainAreRefused) {
  // Slot 1 is a self-linking extended partition that fills the table; the
  // primaries in slots 2 and 3 would go beyond 24 records and are left out.
  Record(0, {Slot(10000, 20000, 0x05), Slot(40000, 10, 0x06), Slot(50000, 10, 0x07)});
  Record(10000, {Slot(63, 1000), Slot(5000, 2000, 0x05)});
  Record(15000, {Slot(63, 1500), Slot(5000, 2000, 0x05)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 24u);
  for (const PartitionInformation& r : p) EXPECT_GE(r.PartitionNumber, 5);
}

TEST_F(PartitionWalk, SecondExtendedSlotSharesLogicalNumbering) {
  Record(0, {Slot(10000, 5000, 0x05), Slot(20000, 5000, 0x0F)});
  Record(10000, {Slot(63, 100)});
  Record(20000, {Slot(63, 200), Slot(1000, 100, 0x05)});
  Record(21000, {Slot(63, 50)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 3u);
  EXPECT_EQ(p[0].PartitionNumber, 5);
  EXPECT_EQ(p[1].PartitionNumber, 6);
  EXPECT_EQ(p[1].StartSector, 20000u);
  EXPECT_EQ(p[2].PartitionNumber, 7);
  EXPECT_EQ(p[2].StartSector, 21000u);
}

TEST_F(PartitionWalk, LinkPastTheLast32BitSectorWrapsLikeTheRecordedStart) {
  // E = 0xFFFFFF00 and a link of 0x200: E + L is sector 0x100 in 32 bits,
  // which is both the record read and the start recorded.
  vt::MakeSparseFile(image_, 2200ull << 30);
  Record(0, {Slot(0xFFFFFF00u, 0x1000, 0x05)});
  Record(0xFFFFFF00ull, {Slot(63, 100), Slot(0x200, 100, 0x05)});
  Record(0x100, {Slot(63, 200)});
  // Beyond 2^32 sectors a record that would continue differently.
  Record(0x100000100ull, {Slot(63, 300), Slot(0x300, 100, 0x05)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].StartSector, 0xFFFFFF00u);
  EXPECT_EQ(p[0].SectorCount, 100u);
  EXPECT_EQ(p[1].StartSector, 0x100u);
  EXPECT_EQ(p[1].SectorCount, 200u);
}

TEST_F(PartitionWalk, Type85IsNotFollowed) {
  Record(0, {Slot(10000, 5000, 0x85)});
  Record(10000, {Slot(63, 100)});
  std::vector<PartitionInformation> p = Walk();
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].PartitionNumber, 1);
  EXPECT_EQ(p[0].StartSector, 10000u);
}

TEST_F(PartitionWalk, LargerSectorsReadTheTableFromTheFirst512Bytes) {
  fake_.Disk("/dev/hda")->sectorSize = 4096;
  Record(0, {Slot(256, 100, 0x06), Slot(1000, 500, 0x05)});
  Record(1000 * 8, {Slot(8, 50)});
  std::vector<PartitionInformation> p = Walk(nullptr, 4096);
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].StartSector, 1000u);
  EXPECT_EQ(p[1].SectorCount, 50u);
}

}  // namespace
