// The host's window closed (its close box) while a copy runs: the copy stops
// at that yield, its partial file is removed, the volumes unmount for real
// (nothing of ours holds them, so no "in use" message), and nothing is used
// after it is freed.
#include <gtest/gtest.h>

#include <errno.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <wx/weakref.h>

#include <string>

#include "common/gui_testing.h"
#include "copy/CopyAnswer.h"
#include "copy/my_dialog_gauge.h"
#include "copy_env.h"
#include "destination/Des_PathInfo.h"
#include "disk/DeviceSeam.h"
#include "frame_on_volumes_env.h"
#include "timer_call.h"

namespace {

// The device table's umount, wrapped: for /mnt/C it first unmounts the real
// file system the test mounted there, so the kernel says whether anything
// still holds the volume.
struct RealUmountOfC {
  static int (*fakeUmount)(const char*);
  static int result;
  static int error;
  static int Umount(const char* target) {
    if (std::string(target) == "/mnt/C" && result == -2) {
      result = umount(target);
      error = errno;
    }
    return fakeUmount(target);
  }
  RealUmountOfC() {
    fakeUmount = g_DeviceSeam.Umount;
    result = -2;
    error = 0;
    g_DeviceSeam.Umount = Umount;
  }
  ~RealUmountOfC() {
    g_DeviceSeam.Umount = fakeUmount;
    if (result != 0) umount2("/mnt/C", MNT_DETACH);
  }
};
int (*RealUmountOfC::fakeUmount)(const char*) = nullptr;
int RealUmountOfC::result = -2;
int RealUmountOfC::error = 0;

using CloseDuringCopy = vt::FrameOnTestVolumes;

TEST_F(CloseDuringCopy, TheHostsCloseBoxStopsTheCopyRemovesThePartFileAndUnmounts) {
  ASSERT_EQ(mount("vantori-test-c", "/mnt/C", "tmpfs", 0, "size=160m"), 0) << strerror(errno);
  RealUmountOfC umountC;
  vt::WriteFile("/mnt/C/big.bin", vt::PatternBytes(96 << 20, 7));
  g_copy_dialog_return = 0;
  g_Des_PathInfo.m_sourceItems.clear();
  g_Des_PathInfo.m_sourceItems.Add("big.bin");
  g_Des_PathInfo.m_sourcePath = "/mnt/C/";
  g_Des_PathInfo.m_destPath = "/mnt/D/";
  wxWeakRef<wxFrame> host(top);
  bool closed = false;
  {
    vt::TimerCall closer(1, [&] {
      my_dialog_gauge* gauge = vt::OpenGauge();
      if (closed || gauge == nullptr || gauge->m_gauge == nullptr || gauge->m_gauge->GetValue() < 1)
        return;
      closed = true;
      host->Close(false);  // the close box
    });
    new my_dialog_gauge(frame, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                        wxDEFAULT_DIALOG_STYLE);
    ASSERT_TRUE(vt::PumpUntil([&] { return closed && !host; }, 20000)) << "closed " << closed;
  }
  top = nullptr;
  frame = nullptr;
  vt::Pump(50);
  EXPECT_TRUE(vt::UnexpectedDialogs().empty()) << "no message: nothing of ours held the volume";
  EXPECT_EQ(umountC.result, 0) << "umount /mnt/C: " << strerror(umountC.error);
  struct stat st;
  EXPECT_NE(stat("/mnt/D/big.bin", &st), 0) << "the partial copy stayed";
}

}  // namespace
