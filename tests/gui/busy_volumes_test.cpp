// Volumes in use by another program, in the main window: Refresh keeps
// their letters and says so once; at the end every volume is flushed, the
// user is told which drive stays in use, and that one is detached lazily
// (invoke() then reports it, for the host's exit status).
#include <gtest/gtest.h>

#include <wx/frame.h>
#include <wx/msgdlg.h>

#include <algorithm>
#include <sys/mount.h>

#include "common/fake_devices.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "disk/View_Disk_Info.h"
#include "browser/UnreadableFolder.h"
#include "browser_env.h"
#include "faultfs_mount.h"
#include "display/BusyDrives.h"
#include "main_window_env.h"
#include "shell/ModuleLifecycle.h"
#include "shell/my_frame.h"

namespace {


TEST(BusyDrivesText, NamesEachDriveInUseWithItsLabel) {
  VolumeInformation v[3] = {};
  v[0].DriveLetter = 'C';
  v[1].DriveLetter = 'D';
  v[1].Busy = 1;
  snprintf(v[1].VolumeLabel, sizeof(v[1].VolumeLabel), "Data Disk");
  v[2].DriveLetter = 'G';
  v[2].Busy = 1;
  snprintf(v[2].VolumeLabel, sizeof(v[2].VolumeLabel), "PHOTOS     ");
  EXPECT_EQ(BusyDrivesText(v, 1, false), "");
  EXPECT_EQ(BusyDrivesText(v, 3, false),
            "Drive D: (Data Disk) is in use by another program; close it and press Refresh "
            "again.\nDrive G: (PHOTOS) is in use by another program; close it and press Refresh "
            "again.");
  v[1].VolumeLabel[0] = 0;
  EXPECT_EQ(BusyDrivesText(v, 2, true),
            "Drive D: is still in use by another program. Everything has been written to it; "
            "Vantori detaches it now, and the system releases it when that program ends.");
}

class BusyVolumes : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "needs the private /mnt of tests/run-in-mntns.sh";
    vt::InstallShippedSettings();
    dir = vt::MakeTempDir("vantori-busy");
    fake.reset(new vt::FakeDevices);
    fake->AddIdeDisk("/dev/hda",
                     vt::MakeVolumesImage(dir, "ide.img",
                                          {{'F', "SYSTEM"}, {'N', "Data Disk"}, {'F', "PHOTOS"}}),
                     "TEST DISK");
    g_AllDiskPartitionInf.UI_FreeMemory();
    top = vt::NewHostWindow();
    top->Show();
    vt::CaptureStdout(
        [&] { frame = CreateMainFrame(top, wxID_ANY, wxPoint(0, 0), top->GetClientSize()); });
    ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
  }
  void TearDown() override {
    if (top) top->Destroy();
    vt::Pump(50);
    g_AllDiskPartitionInf.UI_FreeMemory();
    fake.reset();
    vt::RemoveTree(dir);
  }
  std::string Letters() const {
    std::string s;
    for (int i = 0; i < g_AllDiskPartitionInf.GetCurrentParttionNum(); ++i)
      s += g_AllDiskPartitionInf.m_Volume[i].DriveLetter;
    return s;
  }
  std::string dir;
  std::unique_ptr<vt::FakeDevices> fake;
  wxFrame* top = nullptr;
  wxWindow* frame = nullptr;
};

TEST_F(BusyVolumes, RefreshKeepsTheLettersAndSaysOnceWhichDriveIsInUse) {
  fake->FailUmount("/mnt/D", EBUSY);
  wxString message, caption;
  wxCommandEvent refresh(wxEVT_BUTTON, 3005);
  vt::CaptureStdout([&] {
    wxTEST_DIALOG(frame->GetEventHandler()->ProcessEvent(refresh),
                  vt::MessageBoxSeen(&message, &caption));
  });
  EXPECT_EQ(message,
            "Drive D: (Data Disk) is in use by another program; close it and press Refresh "
            "again.");
  EXPECT_EQ(caption, "Refresh");
  EXPECT_EQ(Letters(), "CDE");
  EXPECT_STREQ(g_AllDiskPartitionInf.m_Volume[2].VolumeLabel, "PHOTOS     ");
  // Once: nothing more comes from repainting or idle time (an unexpected
  // dialog would fail the test).
  vt::Pump(100);
  EXPECT_TRUE(vt::UnexpectedDialogs().empty());
}

TEST_F(BusyVolumes, ExitFlushesTellsDetachesAndReportsIt) {
  fake->FailUmount("/mnt/D", EBUSY);
  int before = g_volumesLeftInUse;
  fake->ClearCalls();
  wxString message, caption;
  wxCommandEvent exitButton(wxEVT_BUTTON, 3006);
  std::string out = vt::CaptureStdout([&] {
    wxTEST_DIALOG(frame->GetEventHandler()->ProcessEvent(exitButton),
                  vt::MessageBoxSeen(&message, &caption));
  });
  vt::Pump(50);
  EXPECT_EQ(message,
            "Drive D: (Data Disk) is still in use by another program. Everything has been "
            "written to it; Vantori detaches it now, and the system releases it when that "
            "program ends.");
  EXPECT_EQ(caption, "Exit");
  std::vector<std::string> calls = fake->Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.front(), "sync");
  char detach[64];
  snprintf(detach, sizeof(detach), "/mnt/D 0x%x", MNT_DETACH);
  EXPECT_EQ(fake->CallsOf("umount2"), std::vector<std::string>{detach});
  EXPECT_TRUE(fake->Mounted().empty()) << "something stayed mounted";
  EXPECT_EQ(g_volumesLeftInUse, before + 1);
  EXPECT_NE(out.find("/mnt/D detached while in use"), std::string::npos) << out;
}

TEST_F(BusyVolumes, ClosingTheHostWindowReleasesThemToo) {
  fake->FailUmount("/mnt/D", EBUSY);
  fake->ClearCalls();
  wxString message, caption;
  // The host's close box: the module releases its volumes before the host
  // destroys it, while a message can still be shown.
  vt::CaptureStdout(
      [&] { wxTEST_DIALOG(top->Close(false), vt::MessageBoxSeen(&message, &caption)); });
  top = nullptr;
  vt::Pump(50);
  EXPECT_EQ(message.Find("Drive D: (Data Disk) is still in use"), 0) << message;
  EXPECT_TRUE(fake->Mounted().empty());
}

}  // namespace

namespace {

TEST(UnreadableFolderText, NamesTheFolderAndTheReasonAndSuggestsRefreshWhenTheDriveIsGone) {
  EXPECT_EQ(UnreadableFolderText("D:\\Photos", ENOENT, false),
            "The folder D:\\Photos cannot be read: No such file or directory. It is shown as "
            "empty.");
  EXPECT_EQ(UnreadableFolderText("E:\\", ENOTCONN, true),
            "The folder E:\\ cannot be read: Transport endpoint is not connected.\nThe drive is "
            "no longer available. Press Refresh to read the disks again.");
}

// A volume unmounted from outside, and a mount point that is gone, are
// gone; a mounted volume is not.
TEST(UnreadableFolderText, AVolumeIsGoneWhenItsMountPointIsNoLongerAMount) {
  ASSERT_TRUE(vt::InPrivateMnt());
  ASSERT_EQ(system("mkdir -p /mnt/Q && mount -t tmpfs vantori-gone-test /mnt/Q"), 0);
  EXPECT_FALSE(VolumeGone("/mnt/Q/folder/"));
  ASSERT_EQ(system("umount /mnt/Q"), 0);
  EXPECT_TRUE(VolumeGone("/mnt/Q/folder/"));
  rmdir("/mnt/Q");
  EXPECT_TRUE(VolumeGone("/mnt/Q/folder/"));
  EXPECT_FALSE(VolumeGone("/home/folder/"));
}

}  // namespace

namespace {

// The file-system driver of a volume dies (its process is killed): opening a
// folder on it shows one message with the system's reason and suggests
// Refresh.
TEST(UnreadableFolderText, ADeadDriverIsNamedOnceAndRefreshSuggested) {
  ASSERT_TRUE(vt::InPrivateMnt());
  std::string backing = vt::MakeTempDir("vantori-dead-driver");
  ASSERT_EQ(mkdir((backing + "/sub").c_str(), 0755), 0);
  mkdir("/mnt/U", 0755);
  {
    vt::FaultFs fs(backing, "/mnt/U");
    ASSERT_TRUE(fs.IsMounted()) << fs.Error();
    vt::BrowserWindow win;
    ASSERT_EQ(win.list->Read_FileDir_Array("/mnt/U/"), 0);
    // (The bracket keeps the pattern from matching the shell that runs it.)
    ASSERT_EQ(system(("pkill -KILL -f -- '[/]faultfs --rules .* " + backing + " '").c_str()), 0);
    wxString message, caption;
    int result = 0;
    wxTEST_DIALOG(result = win.list->Read_FileDir_Array("/mnt/U/sub/"),
                  vt::MessageBoxSeen(&message, &caption));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(message,
              "The folder U:\\sub cannot be read: Transport endpoint is not connected.\nThe drive "
              "is no longer available. Press Refresh to read the disks again.");
    vt::Pump(50);
    EXPECT_TRUE(vt::UnexpectedDialogs().empty());
  }
  rmdir("/mnt/U");
  vt::RemoveTree(backing);
}

}  // namespace
