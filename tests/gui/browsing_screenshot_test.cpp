// The main window browsing a folder of a volume, as a user sees it. When
// VANTORI_SCREENSHOT names a file, the window is also saved there as a PNG
// (tools/screenshot-docs.sh uses this for the README's picture).
#include "browser_env.h"

#include <wx/image.h>

#include <cstdlib>
#include <sys/stat.h>

#include "main_window_env.h"
#include "shell/my_frame.h"
#include "widgets_pixels.h"

namespace {

TEST(BrowsingScreenshot, MainWindowShowsAFolderOfDriveC) {
  ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
  vt::InstallShippedSettings();
  vt::TestVolumes volumes;
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
  mkdir("/mnt/C/Documents", 0755);
  mkdir("/mnt/C/Documents/Letters", 0755);
  mkdir("/mnt/C/Documents/Photos 2019", 0755);
  const char* files[][2] = {{"Budget 2020.xls", "41234"},   {"Report.doc", "182311"},
                            {"holiday.jpg", "2348120"},    {"notes.txt", "912"},
                            {"setup.exe", "5240880"},      {"Übersicht.pdf", "88213"},
                            {"song.mp3", "4199210"},       {"backup.zip", "15200100"}};
  for (auto& f : files)
    vt::WriteFile(std::string("/mnt/C/Documents/") + f[0],
                  std::string(static_cast<size_t>(std::atol(f[1])), 'x'));

  wxFrame* top = nullptr;
  my_frame* frame = vt::ShowMainFrame(top);

  // Open the folder the way the copy command's follow-up does.
  frame->SetTargetPath("/mnt/C/Documents");
  wxCommandEvent open(wxEVT_MY_CUSTOM_COMMAND, MYCMD_OPEN_TARGET);
  frame->GetEventHandler()->ProcessEvent(open);
  vt::Pump(300);

  wxListCtrl* rows = frame->GetListCtrl()->GetListCtrl();
  ASSERT_EQ(frame->GetListCtrl()->GetCurrentListctrlPath(), "/mnt/C/Documents/");
  EXPECT_EQ(frame->GetPathBox()->GetValue(), "C:\\Documents");
  // "..", two folders, eight files.
  EXPECT_EQ(rows->GetItemCount(), 11);
  EXPECT_EQ(rows->GetItemText(0), "..");

  if (const char* out = std::getenv("VANTORI_SCREENSHOT")) {
    wxImage shot = vt::GrabClient(top);
    ASSERT_TRUE(shot.IsOk());
    EXPECT_TRUE(shot.SaveFile(wxString::FromUTF8(out), wxBITMAP_TYPE_PNG));
  }
  top->Destroy();
  vt::Pump(50);
}

}  // namespace
