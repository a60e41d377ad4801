// The test program's device table refuses everything: the volume table
// built at start-up found no disk and nothing can reach the machine's own.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include "disk/DeviceSeam.h"
#include "disk/View_Disk_Info.h"

namespace {

TEST(DeviceTable, RefusesAndStartUpInventoryIsEmpty) {
  errno = 0;
  EXPECT_EQ(g_DeviceSeam.Open64("/dev/null", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(g_DeviceSeam.System("true"), -1);
  EXPECT_EQ(g_DeviceSeam.Mount("none", "/mnt/C", "vfat", 0, nullptr), -1);
  EXPECT_EQ(g_AllDiskPartitionInf.m_DiskCount, 0);
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);
}

}  // namespace
