// The module's start-up, Refresh and teardown take, re-take and free the disk
// inventory, with volumes served by the faked devices.
#include <gtest/gtest.h>

#include <wx/frame.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

#include "common/fake_devices.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "disk/View_Disk_Info.h"
#include "shell/ModuleLifecycle.h"
#include "main_window_env.h"
#include "shell/my_frame.h"

namespace {

bool Contains(const std::vector<std::string>& v, const std::string& s) {
  return std::find(v.begin(), v.end(), s) != v.end();
}

class InventoryWiring : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "needs the private /mnt of tests/run-in-mntns.sh";
    vt::InstallShippedSettings();
    dir = vt::MakeTempDir("vantori-wiring");
    fake.reset(new vt::FakeDevices);
    fake->AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir, {"DATA", "BACKUP"}), "TEST DISK");
    // The inventory the module took when it was loaded saw no disk.
    g_AllDiskPartitionInf.UI_FreeMemory();
    top = vt::NewHostWindow();
    top->Show();
  }
  void TearDown() override {
    if (top) top->Destroy();
    vt::Pump(50);
    g_AllDiskPartitionInf.UI_FreeMemory();
    fake.reset();
    vt::RemoveTree(dir);
  }
  std::string dir;
  std::unique_ptr<vt::FakeDevices> fake;
  wxFrame* top = nullptr;
};

TEST_F(InventoryWiring, StartUpMountsRefreshRemountsTeardownUnmounts) {
  wxWindow* frame = nullptr;
  std::string out = vt::CaptureStdout(
      [&] { frame = CreateMainFrame(top, wxID_ANY, wxPoint(0, 0), top->GetClientSize()); });
  ASSERT_NE(frame, nullptr);
  EXPECT_TRUE(frame->IsShown());
  // The inventory was taken before the frame was built: node names, labels,
  // then the layout file.
  const std::string expectStart =
      "/dev/hda1\n"
      "VolumeLable_1 = DATA        \n"
      "VolumeLable_2 =  \n"
      "VolumeLable_11 = DATA        \n"
      "VolumeLable_22 = DATA        \n"
      "/dev/hda2\n"
      "VolumeLable_1 = BACKUP      \n"
      "VolumeLable_2 =  \n"
      "VolumeLable_11 = BACKUP      \n"
      "VolumeLable_22 = BACKUP      \n"
      "epen ";
  EXPECT_EQ(out.substr(0, expectStart.size()), expectStart) << out;
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 2);
  EXPECT_STREQ(g_AllDiskPartitionInf.m_Volume[0].MountPoint, "/mnt/C");
  EXPECT_STREQ(g_AllDiskPartitionInf.m_Volume[1].MountPoint, "/mnt/D");
  EXPECT_STREQ(g_AllDiskPartitionInf.m_Volume[0].FsName, "FAT16");
  EXPECT_NE(g_AllDiskPartitionInf.m_Volume[0].SizeText[0], '\0');
  EXPECT_EQ(fake->Mounted().size(), 2u);

  // Refresh: everything unmounted, the disks read again, mounted again.
  fake->ClearCalls();
  wxCommandEvent refresh(wxEVT_BUTTON, 3005);
  out = vt::CaptureStdout([&] { frame->GetEventHandler()->ProcessEvent(refresh); });
  std::vector<std::string> umounts = fake->CallsOf("umount");
  std::vector<std::string> mounts = fake->CallsOf("mount");
  EXPECT_TRUE(Contains(umounts, "/mnt/C")) << fake->Calls().size();
  EXPECT_TRUE(Contains(umounts, "/mnt/D"));
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0], "/dev/hda1 /mnt/C vfat 0xc0ed0000");
  EXPECT_EQ(mounts[1], "/dev/hda2 /mnt/D vfat 0xc0ed0000");
  EXPECT_NE(out.find("/dev/hda1\n"), std::string::npos);
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 2);

  // Teardown after destroy: the frame's destructor unmounts both volumes.
  fake->ClearCalls();
  frame->Destroy();
  vt::Pump(50);
  umounts = fake->CallsOf("umount");
  EXPECT_TRUE(Contains(umounts, "/mnt/C"));
  EXPECT_TRUE(Contains(umounts, "/mnt/D"));
  EXPECT_TRUE(fake->Mounted().empty());
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);

  // A second start-up after the first frame is gone takes the inventory and
  // the layout file again.
  fake->ClearCalls();
  out = vt::CaptureStdout(
      [&] { frame = CreateMainFrame(top, wxID_ANY, wxPoint(0, 0), top->GetClientSize()); });
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(out.substr(0, expectStart.size()), expectStart) << out;
  mounts = fake->CallsOf("mount");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0], "/dev/hda1 /mnt/C vfat 0xc0ed0000");
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 2);
  frame->Destroy();
  vt::Pump(50);
  EXPECT_TRUE(fake->Mounted().empty());
}

}  // namespace
