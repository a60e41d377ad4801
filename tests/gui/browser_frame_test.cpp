// The source browser inside the main frame: the tree and list wired into the
// splitter, the custom command codes, the Up and Refresh buttons and the
// properties dialog with its counting and Cancel.
#include "browser_env.h"

#include <wx/stattext.h>

#include <sys/stat.h>

#include <functional>
#include <vector>

#include "common/fake_fileops.h"
#include "common/gui_testing.h"
#include "destination_env.h"
#include "timer_call.h"
#include "frame_on_volumes_env.h"
#include "main_window_env.h"
#include "browser/L_listctrl.h"
#include "destination/Des_PathInfo.h"
#include "dialogs/Properties_dialog.h"
#include "shell/my_frame.h"
#include "widgets/keln_BitmapButton.h"

using vt::TestVolumes;

namespace {

class BrowserFrameTest : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    mkdir("/mnt/C/docs", 0755);
    mkdir("/mnt/C/docs/sub", 0755);
    mkdir("/mnt/C/docs/sub/deeper", 0755);
    vt::WriteFile("/mnt/C/docs/a.bin", std::string(1000, 'a'));
    vt::WriteFile("/mnt/C/docs/sub/b.bin", std::string(572864, 'b'));
    vt::WriteFile("/mnt/C/docs/sub/deeper/c.bin", std::string(1000000, 'c'));
    vt::WriteFile("/mnt/C/top.txt", std::string(24, 't'));
  }
  void SetUp() override {
    FrameOnTestVolumes::SetUp();
    if (HasFatalFailure()) return;
    list = frame->GetListCtrl();
    tree = frame->GetTreeCtrl();
  }

  void Post(int code) {
    wxCommandEvent ev(wxEVT_MY_CUSTOM_COMMAND, code);
    frame->GetEventHandler()->ProcessEvent(ev);
  }
  bool UpEnabled() const {
    return frame->GetUpButton()->GetState() != keln_BitmapButton::STATE_DISABLED;
  }
  Properties_dialog* OpenDialog() const { return vt::OpenPropertiesDialog(); }
  // Shows C:\ in the list (the way the tree's activation does).
  void ShowC() {
    tree->SetPath("/mnt/C");
    list->Copy_Refresh_Filelisttabel("/mnt/C");
    ASSERT_EQ(list->GetCurrentListctrlPath(), "/mnt/C/");
  }
  long Row(const wxString& name) const {
    for (long i = 0; i < list->GetListCtrl()->GetItemCount(); ++i)
      if (list->GetListCtrl()->GetItemText(i) == name) return i;
    return -1;
  }
  void Select(const wxString& name) {
    list->GetListCtrl()->SetItemState(Row(name), wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  }

  my_listctrl* list = nullptr;
  my_DirTreeCtrl* tree = nullptr;
};

}  // namespace

TEST_F(BrowserFrameTest, TreeAndListSitInTheSplitter) {
  ASSERT_NE(list, nullptr);
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(list->GetId(), 1001);
  EXPECT_EQ(list->GetListCtrl()->GetId(), 1001);
  EXPECT_EQ(tree->GetId(), 1002);
  EXPECT_EQ(tree->GetTreeCtrl()->GetId(), 1004);
  EXPECT_EQ(frame->GetSplitter()->GetWindow1(), tree);
  EXPECT_EQ(frame->GetSplitter()->GetWindow2(), list);
  EXPECT_EQ(tree->GetListCtrlPoint(), list);
  EXPECT_EQ(tree->GetTextCtrlPath(), frame->GetPathBox());
  EXPECT_EQ(list->GetPDirTree(), tree);
  EXPECT_EQ(frame->GetPathBox()->GetValue(), "c:\\");
  EXPECT_EQ(list->GetListCtrl()->GetItemCount(), 3);
  // The list posted 424 at creation: Copy and Up are disabled.
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_FALSE(UpEnabled());
}

TEST_F(BrowserFrameTest, EnableAndDisableCodes) {
  Post(MYCMD_TREE_ENABLE_COPY);
  EXPECT_TRUE(frame->GetCopyButton()->IsEnabled());
  EXPECT_TRUE(UpEnabled());
  Post(MYCMD_LIST_DISABLE_COPY);
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_FALSE(UpEnabled());
  // 404 then 405: both enabled, though Up was disabled before 404.
  Post(MYCMD_TREE_DISABLE_COPY);
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_FALSE(UpEnabled());
  Post(MYCMD_TREE_ENABLE_COPY);
  EXPECT_TRUE(frame->GetCopyButton()->IsEnabled());
  EXPECT_TRUE(UpEnabled());
  // 404 leaves Up as it is.
  Post(MYCMD_TREE_DISABLE_COPY);
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_TRUE(UpEnabled());
  Post(MYCMD_LIST_ENABLE_COPY);
  EXPECT_TRUE(frame->GetCopyButton()->IsEnabled());
  EXPECT_TRUE(UpEnabled());
  Post(999);  // unknown codes are ignored
  EXPECT_TRUE(frame->GetCopyButton()->IsEnabled());
}


TEST_F(BrowserFrameTest, CopyCodesGoToTheCopyCommandAlike) {
  ShowC();
  tree->SetIsLastFocus_treectrl(false);
  list->SetIsLastFocus_listctrl(true);
  ASSERT_EQ(list->GetListCtrl()->GetSelectedItemCount(), 0);
  // The three ways into the copy command: the codes of the tree's and the
  // list's context menus and the Copy button.
  const char* names[] = {"code 400", "code 420", "Copy button"};
  const auto entries = std::vector<std::function<void()>>{
      [&] { Post(MYCMD_TREE_COPY); }, [&] { Post(MYCMD_LIST_COPY); },
      [&] {
        wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_COPY);
        frame->GetEventHandler()->ProcessEvent(ev);
      }};
  // Nothing selected while the list had the focus: each way shows the same
  // message and goes no further.
  for (size_t i = 0; i < entries.size(); ++i) {
    g_Des_PathInfo.m_sourcePath = "untouched";
    wxString message, caption;
    wxTEST_DIALOG(entries[i](), vt::MessageBoxSeen(&message, &caption));
    EXPECT_EQ(message, "Please select a file or directory!") << names[i];
    EXPECT_EQ(caption, "Error Selecting File or Folder") << names[i];
    EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "untouched") << names[i];
  }
  // A selected row: no message, and the command takes the list's folder as
  // its source.
  // The destination panel opens next; it is cancelled here.
  const auto cancel = [](Des_Panel* panel) {
    wxCommandEvent ev(wxEVT_BUTTON, ID_DES_CANCEL);
    panel->GetEventHandler()->ProcessEvent(ev);
    return static_cast<int>(wxID_CANCEL);
  };
  Select("docs");
  for (size_t i = 0; i < entries.size(); ++i) {
    g_Des_PathInfo.m_sourcePath = "untouched";
    wxTEST_DIALOG(entries[i](), wxExpectModal<Des_Panel>(cancel));
    EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/") << names[i];
  }
  // The tree had the focus last: its folder is the source, whatever the
  // list shows or selects.
  list->GetListCtrl()->SetItemState(Row("docs"), 0, wxLIST_STATE_SELECTED);
  list->SetIsLastFocus_listctrl(false);
  tree->SetIsLastFocus_treectrl(true);
  for (size_t i = 0; i < entries.size(); ++i) {
    g_Des_PathInfo.m_sourcePath = "untouched";
    wxTEST_DIALOG(entries[i](), wxExpectModal<Des_Panel>(cancel));
    EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C") << names[i];
  }
  vt::Pump(50);
  EXPECT_TRUE(vt::UnexpectedDialogs().empty());
}

TEST_F(BrowserFrameTest, CopyOfTheLoneDotDotRowStopsSilently) {
  ShowC();
  tree->SetIsLastFocus_treectrl(false);
  list->SetIsLastFocus_listctrl(true);
  // A click drops the ".." row from the selection at once; a range selection
  // of the virtual list can leave it selected alone. Hold the notice back so
  // that the row stays selected.
  L_listctrl* rows = list->GetListCtrl();
  auto hold = [](wxListEvent&) {};
  rows->Bind(wxEVT_LIST_ITEM_SELECTED, hold);
  rows->SetItemState(0, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  rows->Unbind(wxEVT_LIST_ITEM_SELECTED, hold);
  ASSERT_EQ(rows->GetSelectedItemCount(), 1);
  ASSERT_EQ(rows->GetItemText(0), "..");
  g_Des_PathInfo.m_sourcePath = "untouched";
  Post(MYCMD_TREE_COPY);
  Post(MYCMD_LIST_COPY);
  wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_COPY);
  frame->GetEventHandler()->ProcessEvent(ev);
  vt::Pump(50);
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "untouched");
  EXPECT_TRUE(vt::UnexpectedDialogs().empty());
}

TEST_F(BrowserFrameTest, SelectAllCode) {
  ShowC();
  Post(MYCMD_LIST_SELECT_ALL);
  const long n = list->GetListCtrl()->GetItemCount();
  EXPECT_EQ(list->GetListCtrl()->GetSelectedItemCount(), n - 1);
  EXPECT_EQ(list->GetListCtrl()->GetItemState(0, wxLIST_STATE_SELECTED), 0);
}

TEST_F(BrowserFrameTest, UpButtonGoesUpOneLevel) {
  tree->SetPath("/mnt/C/docs");
  list->Copy_Refresh_Filelisttabel("/mnt/C/docs");
  list->Refresh_column(0);
  list->Read_FileDir_Array("/mnt/C/docs/");
  list->List_FileTable();
  Post(MYCMD_LIST_ENABLE_COPY);
  ASSERT_TRUE(UpEnabled());
  wxUIActionSimulator sim;
  wxRect r = frame->GetUpButton()->GetScreenRect();
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(30);
  sim.MouseClick();
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath() == "/mnt/C/"; }));
  EXPECT_EQ(frame->GetPathBox()->GetValue(), "C:\\");
  EXPECT_EQ(frame->GetTreeCtrl()->GetPath(), "/mnt/C");
  // Up again: the drives, C: selected, Copy and Up disabled by 424.
  vt::Pump(2 * vt::kDoubleClickMs + 60);  // not a double-click
  sim.MouseClick();
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath().empty(); }));
  EXPECT_TRUE(vt::PumpUntil([&] { return !UpEnabled(); }));
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
}

TEST_F(BrowserFrameTest, RefreshShowsTheDrivesAgainAndDisablesCopyAndUp) {
  ShowC();
  Post(MYCMD_LIST_ENABLE_COPY);
  ASSERT_TRUE(frame->GetCopyButton()->IsEnabled());
  wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_REFRESH);
  frame->GetEventHandler()->ProcessEvent(ev);
  EXPECT_TRUE(list->GetCurrentListctrlPath().empty());
  ASSERT_EQ(list->GetListCtrl()->GetItemCount(), 3);
  EXPECT_EQ(list->GetListCtrl()->GetItemText(0), "C:");
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_FALSE(UpEnabled());
  EXPECT_EQ(tree->GetSectionPaths().GetCount(), 3u);
  wxTreeCtrl* t = tree->GetTreeCtrl();
  EXPECT_EQ(t->GetChildrenCount(t->GetRootItem(), false), 3u);
}

TEST_F(BrowserFrameTest, OpenTargetCodeShowsTheFolder) {
  frame->SetTargetPath("/mnt/C/docs");
  Post(MYCMD_OPEN_TARGET);
  EXPECT_EQ(list->GetCurrentListctrlPath(), "/mnt/C/docs/");
  EXPECT_EQ(tree->GetPath(), "/mnt/C/docs");
  EXPECT_EQ(frame->GetPathBox()->GetValue(), "C:\\docs");
  EXPECT_NE(Row("a.bin"), -1);
}

TEST_F(BrowserFrameTest, PropertiesOfTheListSelection) {
  ShowC();
  Select("docs");
  Select("top.txt");
  Post(MYCMD_LIST_PROPERTIES);
  Properties_dialog* d = OpenDialog();
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->GetTitle(), "Properties");
  EXPECT_FALSE(frame->IsEnabled());
  EXPECT_EQ(d->m_status, 11);
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\");
  EXPECT_EQ(d->m_fileCount, 4);
  EXPECT_EQ(d->m_folderCount, 2);
  EXPECT_EQ(d->m_totalBytes, 1000u + 572864u + 1000000u + 24u);
  EXPECT_EQ(d->m_filesText->GetLabel(), "4");
  EXPECT_EQ(d->m_folderText->GetLabel(), "2");
  EXPECT_EQ(d->m_sizeText->GetLabel(), "1 MB (1,573,888)");
  // Close: the dialog goes and the frame is usable again.
  wxCommandEvent close(wxEVT_BUTTON, 204);
  d->GetEventHandler()->ProcessEvent(close);
  vt::Pump(50);
  EXPECT_EQ(OpenDialog(), nullptr);
  EXPECT_TRUE(frame->IsEnabled());
}

TEST_F(BrowserFrameTest, PropertiesOfTheTreeFolderAndTheCloseBox) {
  tree->SetPath("/mnt/C/docs/sub");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/docs/sub");
  Post(MYCMD_TREE_PROPERTIES);
  Properties_dialog* d = OpenDialog();
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\docs\\sub");
  EXPECT_EQ(d->m_folderText->GetLabel(), "1");
  EXPECT_EQ(d->m_filesText->GetLabel(), "2");
  EXPECT_EQ(d->m_sizeText->GetLabel(), "1 MB (1,572,864)");
  d->Close();
  vt::Pump(50);
  EXPECT_EQ(OpenDialog(), nullptr);
  EXPECT_TRUE(frame->IsEnabled());
}

TEST_F(BrowserFrameTest, PropertiesUnderOneMebibyte) {
  tree->SetPath("/mnt/C/docs/sub/deeper");
  Post(MYCMD_TREE_PROPERTIES);
  Properties_dialog* d = OpenDialog();
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->m_sizeText->GetLabel(), "0 MB (1,000,000)");
  EXPECT_EQ(d->m_folderText->GetLabel(), "0");
}

TEST_F(BrowserFrameTest, CancelStopsALongCount) {
  // 40 x 40 folders with a file each: far more than one yield's worth.
  for (int i = 0; i < 40; ++i) {
    char a[64];
    snprintf(a, sizeof a, "/mnt/C/many/d%02d", i);
    for (int j = 0; j < 40; ++j) {
      char b[96];
      snprintf(b, sizeof b, "%s/e%02d/f.txt", a, j);
      vt::WriteFile(b, "x");
    }
  }
  const int entries = 40 + 40 * 40 * 2;
  tree->SetPath("/mnt/C/many");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/many");
  vt::FakeFileOps files;  // counts what the walk examines and opens
  int seenFolders = -1;
  bool sawCounting = false;
  int examinedAtClose = -1, openedAtClose = -1;
  // A timer runs during the count's yields: it presses Close once 100
  // folders are counted.
  vt::TimerCall watch(1, [&] {
    Properties_dialog* d = OpenDialog();
    if (seenFolders >= 0 || d == nullptr || d->m_folderCount < 100) return;
    sawCounting = d->IsCounting();
    seenFolders = d->m_folderCount;
    examinedAtClose = files.Count(vt::FakeFileOps::kLstat);
    openedAtClose = files.Count(vt::FakeFileOps::kOpendir);
    wxCommandEvent close(wxEVT_BUTTON, 204);
    d->GetEventHandler()->ProcessEvent(close);
  });
  Post(MYCMD_TREE_PROPERTIES);
  vt::Pump(50);
  EXPECT_TRUE(sawCounting);
  EXPECT_GE(seenFolders, 100);
  // The walk stops at the next entry: at most the folder being entered is
  // opened and its first entry examined, far from the whole tree.
  EXPECT_LE(files.Count(vt::FakeFileOps::kOpendir) - openedAtClose, 1);
  EXPECT_LE(files.Count(vt::FakeFileOps::kLstat) - examinedAtClose, 1);
  // Far from the whole tree (how far the walk got before the timer's click
  // depends on the machine's load).
  EXPECT_LT(files.Count(vt::FakeFileOps::kLstat), entries / 4);
  EXPECT_EQ(files.OpenFolders(), 0);
  EXPECT_EQ(OpenDialog(), nullptr) << "a stopped count destroys the dialog";
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_EQ(frame->GetPropertiesDialog(), nullptr);
}
