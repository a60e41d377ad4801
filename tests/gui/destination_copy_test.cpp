// The copy command opens the destination panel: from the list and from the
// tree, the panel driven while its ShowModal runs; OK hands the chosen
// folder to the frame, Cancel and the close box nothing; without any volume
// OK is refused with a message. With VANTORI_SCREENSHOT set, the panel is
// also saved there as a PNG (tools/screenshot-docs.sh).
#include "destination_env.h"

#include <wx/filefn.h>

#include <cstdlib>
#include <sys/stat.h>

#include "destination/Des_PathInfo.h"
#include "main_window_env.h"
#include "shell/my_frame.h"
#include "widgets_pixels.h"

namespace {

class CopyOpensPanelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    vt::InstallShippedSettings();
  }
  void Start(bool withVolumes = true) {
    volumes.reset(new vt::TestVolumes(withVolumes));
    if (withVolumes) {
      vt::FillListTestVolume();
      mkdir("/mnt/E/backup", 0755);
      vt::WriteFile("/mnt/E/backup/old.txt", "o");
    }
    frame = vt::ShowMainFrame(top);
    list = frame->GetListCtrl();
    g_Des_PathInfo.m_destPath = "untouched";
    g_Des_PathInfo.m_result = 0;
  }
  void TearDown() override {
    if (top) top->Destroy();
    vt::Pump(50);
    volumes.reset();
  }
  // The list shows C:\ with docs selected and had the focus last.
  void ListSource() {
    list->Copy_Refresh_Filelisttabel("/mnt/C");
    list->SetIsLastFocus_listctrl(true);
    frame->GetTreeCtrl()->SetIsLastFocus_treectrl(false);
    wxListCtrl* rows = list->GetListCtrl();
    for (long i = 0; i < rows->GetItemCount(); ++i)
      if (rows->GetItemText(i) == "docs")
        rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  }
  void TreeSource() {
    frame->GetTreeCtrl()->SetPath("/mnt/C/docs");
    list->SetIsLastFocus_listctrl(false);
    frame->GetTreeCtrl()->SetIsLastFocus_treectrl(true);
  }
  void Copy() {
    wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_COPY);
    frame->GetEventHandler()->ProcessEvent(ev);
  }

  std::unique_ptr<vt::TestVolumes> volumes;
  wxFrame* top = nullptr;
  my_frame* frame = nullptr;
  my_listctrl* list = nullptr;
};

void Press(Des_Panel* panel, int id) { vt::PressPanelButton(panel, id); }
void Choose(Des_Panel* panel, int row) { vt::ChoosePanelVolume(panel, row); }
void Open(Des_Panel* panel, const wxString& name) { vt::OpenPanelRow(panel, name); }

}  // namespace

TEST_F(CopyOpensPanelTest, FromTheListOkGivesTheChosenFolder) {
  Start();
  ListSource();
  wxString title;
  wxPoint where;
  wxTEST_DIALOG(Copy(), wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  title = panel->GetTitle();
                  where = panel->GetPosition();
                  EXPECT_EQ(panel->GetSize(), wxSize(500, 400));
                  EXPECT_EQ(panel->GetBackgroundColour(), wxColour(248, 248, 248));
                  EXPECT_EQ(frame->GetDesPanel(), panel);
                  // The source is on C: (left out): D: and E: are offered.
                  EXPECT_EQ(panel->GetDriveChoice()->GetCount(), 2u);
                  EXPECT_EQ(panel->GetPathText()->GetValue(), "D:\\");
                  Choose(panel, 1);
                  Open(panel, "backup");
                  // old.txt, the row under "..", is selected: the field shows the folder.
                  EXPECT_EQ(panel->GetPathText()->GetValue(), "E:\\backup");
                  Press(panel, ID_DES_OK);
                  return static_cast<int>(wxID_CANCEL);  // what ShowModal returns after Destroy
                }));
  EXPECT_EQ(title, "Destination");
  EXPECT_EQ(where, wxPoint(252, 151));
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/");
  // OK went on to the copy, after which the command sets 1058.
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
  EXPECT_TRUE(wxFileExists("/mnt/E/backup/docs/readme.txt"));
  // Row 1 below ".." (old.txt) was selected after the walk: a file, so the
  // current folder is the destination.
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/backup/");
  EXPECT_EQ(frame->GetTargetPath(), "/mnt/E/backup");
  vt::PumpUntil([&] { return frame->GetDesPanel() == nullptr; });
  EXPECT_EQ(frame->GetDesPanel(), nullptr) << "the panel is deleted after the command";
  EXPECT_TRUE(vt::UnexpectedDialogs().empty());
}

TEST_F(CopyOpensPanelTest, FromTheTreeOkWithAFolderSelected) {
  Start();
  TreeSource();
  wxTEST_DIALOG(Copy(), wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  Choose(panel, 0);  // D:
                  mkdir("/mnt/D/target", 0755);
                  panel->GetDesList()->Return_Root(0);
                  wxListCtrl* rows = panel->GetDesList()->GetListView();
                  for (long i = 0; i < rows->GetItemCount(); ++i)
                    if (rows->GetItemText(i) == "target")
                      rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
                  EXPECT_EQ(panel->GetPathText()->GetValue(), "D:\\target");
                  Press(panel, ID_DES_OK);
                  return static_cast<int>(wxID_CANCEL);
                }));
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/docs");
  // The tree's folder goes as a whole into a folder of its name, made at once.
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/D/target/docs");
  EXPECT_TRUE(wxDirExists("/mnt/D/target/docs"));
  EXPECT_EQ(frame->GetTargetPath(), "/mnt/D/target");
}

TEST_F(CopyOpensPanelTest, CancelAndTheCloseBoxChooseNothing) {
  Start();
  ListSource();
  frame->SetTargetPath("/mnt/C/before");
  wxTEST_DIALOG(Copy(), wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  Choose(panel, 1);
                  Press(panel, ID_DES_CANCEL);
                  return static_cast<int>(wxID_CANCEL);
                }));
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "untouched");
  EXPECT_EQ(frame->GetTargetPath(), "/mnt/C/before");
  g_Des_PathInfo.m_result = DES_RESULT_OK;  // left from an earlier command
  wxTEST_DIALOG(Copy(), wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  panel->Close();
                  return static_cast<int>(wxID_CANCEL);
                }));
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "untouched");
  EXPECT_EQ(frame->GetTargetPath(), "/mnt/C/before");
}

TEST_F(CopyOpensPanelTest, WithoutAnyVolumeOkIsRefused) {
  Start(false);
  // The tree offers no folder: the source is whatever the tree holds.
  list->SetIsLastFocus_listctrl(false);
  frame->GetTreeCtrl()->SetIsLastFocus_treectrl(true);
  frame->SetTargetPath("/mnt/C/before");
  vt::SeenBox box;
  wxTEST_DIALOG(Copy(),
                wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  EXPECT_EQ(panel->GetDriveChoice()->GetCount(), 0u);
                  EXPECT_EQ(panel->GetPathText()->GetValue(), "");
                  Press(panel, ID_DES_OK);
                  return static_cast<int>(wxID_CANCEL);
                }),
                MessageSeen(&box));
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_OK);
  EXPECT_EQ(box.message, "There is no destination drive to copy to.");
  EXPECT_EQ(box.caption, "Destination");
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "untouched");
  EXPECT_EQ(frame->GetTargetPath(), "/mnt/C/before");
}

TEST_F(CopyOpensPanelTest, Screenshot) {
  Start();
  mkdir("/mnt/E/Photos 2019", 0755);
  mkdir("/mnt/E/Documents", 0755);
  vt::WriteFile("/mnt/E/notes.txt", std::string(912, 'n'));
  vt::WriteFile("/mnt/E/setup.exe", std::string(524088, 's'));
  ListSource();
  bool saved = false;
  wxTEST_DIALOG(Copy(), wxExpectModal<Des_Panel>([&](Des_Panel* panel) {
                  Choose(panel, 1);
                  wxListCtrl* rows = panel->GetDesList()->GetListView();
                  for (long i = 0; i < rows->GetItemCount(); ++i)
                    if (rows->GetItemText(i) == "Documents")
                      rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
                  vt::Pump(300);
                  EXPECT_EQ(panel->GetPathText()->GetValue(), "E:\\Documents");
                  if (const char* out = std::getenv("VANTORI_SCREENSHOT")) {
                    wxImage shot = vt::GrabClient(panel);
                    EXPECT_TRUE(shot.IsOk());
                    saved = shot.IsOk() && shot.SaveFile(wxString::FromUTF8(out), wxBITMAP_TYPE_PNG);
                  }
                  Press(panel, ID_DES_CANCEL);
                  return static_cast<int>(wxID_CANCEL);
                }));
  if (std::getenv("VANTORI_SCREENSHOT")) EXPECT_TRUE(saved);
}
