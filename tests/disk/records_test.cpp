// The inventory records: byte readers and releasing the tree.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <type_traits>

#include "disk/DeviceSeam.h"
#include "disk/DiskInformation.h"

namespace {

TEST(ByteReaders, LittleEndianWordDwordQword) {
  const unsigned char bytes[] = {0x00, 0x02, 0x00, 0x00, 0x34, 0x12, 0xEF, 0xCD, 0xAB, 0x89};
  EXPECT_EQ(ByteToWord(bytes, 0), 0x0200);
  EXPECT_EQ(ByteToWord(bytes, 4), 0x1234);
  EXPECT_EQ(ByteToDWord(bytes, 0), 512u);
  EXPECT_EQ(ByteToDWord(bytes, 4), 0xCDEF1234u);
  EXPECT_EQ(ByteToQWord(bytes, 2), 0x89ABCDEF12340000ull);
}

TEST(ByteReaders, QwordOfAllOnesIsMaximum) {
  const unsigned char ff[8] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  EXPECT_EQ(ByteToQWord(ff, 0), UINT64_MAX);
  EXPECT_EQ(ByteToDWord(ff, 4), UINT32_MAX);
  EXPECT_EQ(ByteToWord(ff, 6), 0xFFFF);
}

TEST(ByteReaders, UnalignedOffsetsReadBytewise) {
  unsigned char buffer[16];
  for (int i = 0; i < 16; ++i) buffer[i] = static_cast<unsigned char>(i + 1);
  EXPECT_EQ(ByteToDWord(buffer, 3), 0x07060504u);
  EXPECT_EQ(ByteToQWord(buffer, 7), 0x0F0E0D0C0B0A0908ull);
}

FileSystemInformation* NewFs(const char* label) {
  FileSystemInformation* fs =
      static_cast<FileSystemInformation*>(calloc(1, sizeof(FileSystemInformation)));
  if (label != nullptr) fs->VolumeLabel = strdup(label);
  return fs;
}

int g_released = 0;
void CountingRelease(void* record) {
  ++g_released;
  FreeFsInfo(record);
}

MyComputer TwoDisks() {
  MyComputer root;
  root.DiskCount = 2;
  root.Disks = static_cast<HardDiskInformation*>(calloc(2, sizeof(HardDiskInformation)));
  root.Disks[0].PartitionCount = 2;
  root.Disks[0].Partitions =
      static_cast<PartitionInformation*>(calloc(2, sizeof(PartitionInformation)));
  root.Disks[0].Partitions[0].FileSystem = NewFs("SYSTEM");
  root.Disks[0].Partitions[1].FileSystem = NewFs(nullptr);
  root.Disks[1].PartitionCount = 7;  // no array: the count stays
  root.Disks[1].Partitions = nullptr;
  return root;
}

TEST(FreeHdInfoList, ReleasesEveryRecordAndResetsCounts) {
  MyComputer root = TwoDisks();
  g_released = 0;
  FreeHdInfoList(&root, CountingRelease);
  EXPECT_EQ(g_released, 2);
  EXPECT_EQ(root.Disks, nullptr);
  EXPECT_EQ(root.DiskCount, 0);
}

TEST(FreeHdInfoList, NullDiskArrayIsNoOpAndKeepsCount) {
  MyComputer root;
  root.DiskCount = 3;
  root.Disks = nullptr;
  FreeHdInfoList(&root, FreeFsInfo);
  EXPECT_EQ(root.DiskCount, 3);
  FreeHdInfoList(nullptr, FreeFsInfo);  // no crash
}

// Seen from inside the release callback of the last disk's record: what the
// inner step already did to the disks before it.
MyComputer* g_watched = nullptr;
int g_seenCount0 = -1, g_seenCount1 = -1;
bool g_seenArray0Null = false;
void WatchingRelease(void* record) {
  if (g_watched != nullptr && g_watched->Disks[2].Partitions[0].FileSystem == record) {
    g_seenCount0 = g_watched->Disks[0].PartitionCount;
    g_seenArray0Null = g_watched->Disks[0].Partitions == nullptr;
    g_seenCount1 = g_watched->Disks[1].PartitionCount;
  }
  FreeFsInfo(record);
}

TEST(FreeHdInfoList, CountIsResetOnlyWhereAnArrayWasFreed) {
  MyComputer root;
  root.DiskCount = 3;
  root.Disks = static_cast<HardDiskInformation*>(calloc(3, sizeof(HardDiskInformation)));
  root.Disks[0].PartitionCount = 2;
  root.Disks[0].Partitions =
      static_cast<PartitionInformation*>(calloc(2, sizeof(PartitionInformation)));
  root.Disks[0].Partitions[1].FileSystem = NewFs("A");
  root.Disks[1].PartitionCount = 7;  // count without an array
  root.Disks[2].PartitionCount = 1;
  root.Disks[2].Partitions =
      static_cast<PartitionInformation*>(calloc(1, sizeof(PartitionInformation)));
  root.Disks[2].Partitions[0].FileSystem = NewFs("B");
  g_watched = &root;
  FreeHdInfoList(&root, WatchingRelease);
  g_watched = nullptr;
  EXPECT_EQ(g_seenCount0, 0);
  EXPECT_TRUE(g_seenArray0Null);
  EXPECT_EQ(g_seenCount1, 7);
  EXPECT_EQ(root.Disks, nullptr);
  EXPECT_EQ(root.DiskCount, 0);
}

TEST(FreeHdInfoList, NullCallbackStopsAtFirstRecordLeavingTheRest) {
  MyComputer root = TwoDisks();
  HardDiskInformation* disks = root.Disks;
  FreeHdInfoList(&root, nullptr);
  EXPECT_EQ(root.Disks, disks);
  EXPECT_EQ(root.DiskCount, 2);
  EXPECT_EQ(root.Disks[0].PartitionCount, 2);
  ASSERT_NE(root.Disks[0].Partitions, nullptr);
  EXPECT_NE(root.Disks[0].Partitions[0].FileSystem, nullptr);
  EXPECT_EQ(root.Disks[1].PartitionCount, 7);
  FreeHdInfoList(&root, FreeFsInfo);  // now everything goes
  EXPECT_EQ(root.Disks, nullptr);
}

TEST(FreeFsInfo, NullIsHarmlessAndLabelIsFreed) {
  FreeFsInfo(nullptr);
  FreeFsInfo(NewFs("DATA"));  // ASan checks the label is freed with it
}

TEST(Records, FieldWidths) {
  HardDiskInformation disk;
  // Room for the names of disk images (/dev/vantori-image0).
  EXPECT_EQ(sizeof(disk.DevicePath), 32u);
  EXPECT_EQ(sizeof(disk.Model), 40u);
  EXPECT_EQ(sizeof(disk.Flags), 1u);
  EXPECT_EQ(sizeof(disk.PartitionCount), 2u);
  EXPECT_EQ(sizeof(disk.BytesPerSector), 2u);
  EXPECT_EQ(sizeof(disk.Heads), 2u);
  EXPECT_EQ(sizeof(disk.SectorsPerTrack), 2u);
  EXPECT_EQ(sizeof(disk.Cylinders), 4u);
  // Disks beyond 2 TiB: sector counts and starts are 64-bit.
  EXPECT_EQ(sizeof(disk.TotalSectors), 8u);
  PartitionInformation part;
  EXPECT_EQ(sizeof(part.DriveLetter), 1u);
  EXPECT_EQ(sizeof(part.PartitionNumber), 1u);
  EXPECT_EQ(sizeof(part.StartSector), 8u);
  EXPECT_EQ(sizeof(part.SectorCount), 8u);
  // A GPT name of 36 UTF-16 units in UTF-8, and its NUL.
  EXPECT_EQ(sizeof(part.Name), 109u);
  EXPECT_EQ(sizeof(part.TypeGuid), 16u);
  FileSystemInformation fs;
  EXPECT_EQ(sizeof(fs.FsType), 1u);
  EXPECT_EQ(sizeof(fs.SectorsPerCluster), 1u);
  EXPECT_EQ(sizeof(fs.ReservedSectors), 2u);
  EXPECT_EQ(sizeof(fs.TotalSectors), 4u);
  EXPECT_EQ(sizeof(fs.RootDirSectors), 2u);
  EXPECT_EQ(sizeof(fs.SecondaryWord), 2u);
  EXPECT_EQ(sizeof(fs.RootLocation), 4u);
  EXPECT_EQ(sizeof(fs.FatSize), 4u);
  EXPECT_EQ(sizeof(fs.FirstDataSector), 4u);
  SgInformation sg;
  EXPECT_EQ(sizeof(sg.Handle), 20u);
  EXPECT_EQ(sizeof(sg.Identity), 25u);
  EXPECT_EQ(sizeof(sg.Flags), 1u);
  MyComputer root;
  EXPECT_EQ(sizeof(root.DiskCount), 4u);
  EXPECT_TRUE(std::is_signed<decltype(root.DiskCount)>::value);
  EXPECT_TRUE(std::is_unsigned<decltype(disk.Cylinders)>::value);
  EXPECT_TRUE(std::is_unsigned<decltype(fs.RootLocation)>::value);
}

TEST(DeviceTable, TestProgramsUseTheRefusingTable) {
  // Without a fake installed, every device call fails: the volume table that
  // was built at start-up could not have reached the machine's disks.
  errno = 0;
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/null", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(g_DeviceSeam.Mount("/dev/sda1", "/mnt/C", "vfat", 0, nullptr), -1);
  EXPECT_EQ(g_DeviceSeam.Mkdir("/mnt/C", 0777), -1);
  EXPECT_EQ(g_DeviceSeam.System("true"), -1);
  EXPECT_EQ(g_DeviceSeam.Statfs64("/", nullptr), -1);
}

}  // namespace
