// The progress window in the middle of a copy from C: to the USB stick E:,
// as a user sees it. When VANTORI_SCREENSHOT names a file, the window is
// also saved there as a PNG (tools/screenshot-docs.sh uses this for the
// README's picture).
#include "browser_env.h"

#include <sys/stat.h>

#include <wx/image.h>

#include <cstdlib>

#include "common/fake_fileops.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "destination/Des_PathInfo.h"
#include "main_window_env.h"
#include "shell/my_frame.h"
#include "timer_call.h"
#include "widgets_pixels.h"

namespace {

TEST(CopyScreenshot, ProgressWindowInTheMiddleOfACopy) {
  ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
  vt::InstallShippedSettings();
  vt::TestVolumes volumes;
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
  mkdir("/mnt/C/Photos 2019", 0755);
  for (int i = 1; i <= 40; ++i)
    vt::WriteFile(wxString::Format("/mnt/C/Photos 2019/IMG_%04d.jpg", i).ToStdString(),
                  std::string(1536 * 1024 + i * 1000, static_cast<char>('a' + i % 26)));
  mkdir("/mnt/E/Backup", 0755);
  mkdir("/mnt/E/Backup/Photos 2019", 0755);

  wxFrame* top = nullptr;
  my_frame* frame = vt::ShowMainFrame(top);
  vt::FakeFileOps files;
  // Slow enough to be seen: every chunk read takes a moment.
  files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV);
  files.Delay(vt::FakeFileOps::kRead, 15, "*/Photos 2019/*");

  g_Des_PathInfo.m_sourceItems.clear();
  g_Des_PathInfo.m_sourcePath = "/mnt/C/Photos 2019";
  g_Des_PathInfo.m_destPath = "/mnt/E/Backup/Photos 2019";
  bool saved = false, seen = false;
  const char* out = std::getenv("VANTORI_SCREENSHOT");
  vt::TimerCall shooter(20, [&] {
    if (seen) return;
    for (wxWindow* w : wxTopLevelWindows) {
      my_dialog_gauge* g = dynamic_cast<my_dialog_gauge*>(w);
      if (!g || g->m_gauge->GetValue() < 40) continue;
      seen = true;
      EXPECT_EQ(g->m_totalFilesText->GetLabel(), "40");
      EXPECT_TRUE(g->m_currentText->GetLabel().StartsWith("C:\\Photos 2019\\IMG_"))
          << g->m_currentText->GetLabel();
      g->Refresh();
      g->Update();
      if (out) {
        wxImage shot = vt::GrabClient(g);
        saved = shot.IsOk() && shot.SaveFile(wxString::FromUTF8(out), wxBITMAP_TYPE_PNG);
      }
      g->m_cancel = true;
    }
  });
  new my_dialog_gauge(frame, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                      wxDEFAULT_DIALOG_STYLE);
  vt::Pump(100);
  EXPECT_TRUE(seen) << "the copy was seen past 40 %";
  EXPECT_EQ(g_lastCopyOutcome.result, 10);
  if (out) EXPECT_TRUE(saved);
  top->Destroy();
  vt::Pump(50);
}

}  // namespace
