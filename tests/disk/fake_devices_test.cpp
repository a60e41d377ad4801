// The faked devices themselves: what they refuse outside the private /mnt.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "disk/DeviceSeam.h"
#include "disk_test_util.h"

namespace {

TEST(FakeDevices, MountAndMkdirRefuseOutsideThePrivateTestMnt) {
  ASSERT_TRUE(vt::FakeDevices::PrivateMntActive()) << "run inside tests/run-in-mntns.sh";
  dt::TempDir dir;
  std::string img = vt::MakeFatVolumesImage(dir.path(), {"A"});
  pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    // A namespace of its own whose /mnt is another tmpfs, not the test one:
    // the fake must treat it as a machine's real /mnt.
    if (unshare(CLONE_NEWNS) != 0) _exit(10);
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) _exit(11);
    if (mount("other-tmpfs", "/mnt", "tmpfs", 0, "size=1m") != 0) _exit(12);
    if (vt::FakeDevices::PrivateMntActive()) _exit(13);
    int rc = 0;
    {
      vt::FakeDevices fake;
      fake.AddIdeDisk("/dev/hda", img, "X");
      if (g_DeviceSeam.Mkdir("/mnt/C", 0777) != -1 || errno != EACCES) rc = 14;
      if (g_DeviceSeam.Mount("/dev/hda1", "/mnt/C", "vfat", 0, nullptr) != -1 || errno != EPERM)
        rc = 15;
      if (g_DeviceSeam.System("ntfs-3g /dev/hda1 /mnt/D -o x") == 0) rc = 16;
      struct stat st;
      if (stat("/mnt/C", &st) == 0 || stat("/mnt/D", &st) == 0) rc = 17;
    }
    _exit(rc);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(FakeDevices, MountMakesTheDirectoryAndUmountForgetsIt) {
  ASSERT_TRUE(vt::FakeDevices::PrivateMntActive());
  dt::TempDir dir;
  vt::FakeDevices fake;
  fake.AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir.path(), {"A"}), "X");
  EXPECT_EQ(g_DeviceSeam.Mount("/dev/hda1", "/mnt/Q", "vfat", 0, nullptr), 0);
  struct stat st;
  EXPECT_EQ(stat("/mnt/Q", &st), 0);
  EXPECT_EQ(g_DeviceSeam.Mount("/dev/hda1", "/mnt/Q", "vfat", 0, nullptr), -1);  // busy
  EXPECT_EQ(errno, EBUSY);
  EXPECT_EQ(g_DeviceSeam.Mount("/dev/hda7", "/mnt/R", "vfat", 0, nullptr), -1);  // no node
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(fake.Mounted().at("/mnt/Q"), "/dev/hda1");
  EXPECT_EQ(g_DeviceSeam.Umount("/mnt/Q"), 0);
  EXPECT_EQ(g_DeviceSeam.Umount("/mnt/Q"), -1);
  EXPECT_TRUE(fake.Mounted().empty());
  EXPECT_EQ(g_DeviceSeam.System("echo hello"), -1);  // not served
  rmdir("/mnt/Q");
}

}  // namespace
