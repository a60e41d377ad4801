// A copy as the user makes it, on the test volumes of the disk layer's test
// double: rows selected in the source list with the mouse (or a folder
// clicked in the tree), Copy, the destination volume and folder chosen in the
// panel, OK, the replacement questions answered (Yes, Yes To All, No and
// Cancel, for files and for folders), the progress dialog left to run; then
// every destination file is compared byte for byte with its source, and the
// source browser must show the destination folder (command 1401).
#include <gtest/gtest.h>

#include <wx/filefn.h>
#include <wx/uiaction.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "common/fake_fileops.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "copy_env.h"
#include "copy_questions_env.h"
#include "destination/Des_PathInfo.h"
#include "destination_env.h"
#include "frame_on_volumes_env.h"
#include "timer_call.h"

namespace {

namespace fs = std::filesystem;

const char kFolderTitle[] = "Confirmation of Folder Replacement";
const char kFileTitle[] = "Confirmation of File Replacement";
const char kSource[] = "/mnt/C/data";
const char kTarget[] = "/mnt/E/backup";

std::string Bytes(size_t size, unsigned seed) { return vt::PatternBytes(size, seed); }

std::string U8(const wxString& s) { return s.utf8_string(); }

// Every file below the source folder `from` is in `to` with the same bytes,
// and every folder is there.
void ExpectSameTree(const std::string& from, const std::string& to) {
  ASSERT_TRUE(fs::is_directory(to)) << to;
  for (const fs::directory_entry& e : fs::recursive_directory_iterator(from)) {
    const std::string rel = fs::relative(e.path(), from).string();
    const std::string there = to + "/" + rel;
    if (e.is_directory()) {
      EXPECT_TRUE(fs::is_directory(there)) << there;
    } else {
      ASSERT_TRUE(fs::is_regular_file(there)) << there;
      EXPECT_TRUE(vt::ReadFile(e.path().string()) == vt::ReadFile(there))
          << there << " differs from its source";
    }
  }
}

// Names of everything below `dir`, relative to it.
std::vector<std::string> TreeNames(const std::string& dir) {
  std::vector<std::string> v;
  for (const fs::directory_entry& e : fs::recursive_directory_iterator(dir))
    v.push_back(fs::relative(e.path(), dir).string());
  std::sort(v.begin(), v.end());
  return v;
}

using vt::OpenGauge;

std::vector<wxString> Titles(const std::vector<vt::SeenQuestion>& seen) {
  std::vector<wxString> v;
  for (const vt::SeenQuestion& q : seen) v.push_back(q.title);
  return v;
}
std::vector<wxString> Names(const std::vector<vt::SeenQuestion>& seen) {
  std::vector<wxString> v;
  for (const vt::SeenQuestion& q : seen) {
    const int open = q.text.Find('\'');
    const int close = q.text.Find('\'', true);
    v.push_back(open == wxNOT_FOUND ? wxString() : q.text.Mid(open + 1, close - open - 1));
  }
  return v;
}

// C:\data holds the folders docs (readme.txt, .hidden, inner/deep.c),
// empty, and photos (two pictures over 1 MiB, one in 2019/), and the files
// Makefile, a.exe, b.txt, big.bin (3 MiB and 17 bytes), "two words.txt" and
// a file with non-ASCII letters in its name. E:\backup is the destination.
class CopyUserPathTest : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    const std::string d = kSource;
    vt::WriteFile(d + "/docs/readme.txt", Bytes(100, 1));
    vt::WriteFile(d + "/docs/.hidden", "hidden");
    vt::WriteFile(d + "/docs/inner/deep.c", "int x;\n");
    mkdir((d + "/empty").c_str(), 0755);
    vt::WriteFile(d + "/photos/a.jpg", Bytes((1 << 20) + 5, 2));
    vt::WriteFile(d + "/photos/2019/b.jpg", Bytes(1200000, 3));
    vt::WriteFile(d + "/Makefile", Bytes(512, 4));
    vt::WriteFile(d + "/a.exe", Bytes(511, 5));
    vt::WriteFile(d + "/b.txt", Bytes(1536, 6));
    vt::WriteFile(d + "/big.bin", Bytes(3 * (1 << 20) + 17, 7));
    vt::WriteFile(d + "/two words.txt", "two words");
    vt::WriteFile(d + "/" + U8(Umlaut()), "umlaut");
    mkdir(kTarget, 0755);
  }
  static wxString Umlaut() { return wxString::FromUTF8("\xc3\x9c" "ber \xe6\x96\x87.txt"); }

  void SetUp() override {
    vt::FrameOnTestVolumes::SetUp();
    if (HasFatalFailure()) return;
    g_copy_dialog_return = 0;
    g_Des_PathInfo.m_result = 0;
    g_lastCopyOutcome = CopyOutcome();
    list = frame->GetListCtrl();
    top->Raise();
    vt::Pump(50);
  }

  wxListCtrl* Rows() const { return list->GetListView(); }
  long RowOf(const wxString& name) const {
    for (long i = 0; i < Rows()->GetItemCount(); ++i)
      if (Rows()->GetItemText(i) == name) return i;
    return -1;
  }
  void ClickAt(const wxPoint& p, bool withCtrl = false) {
    wxUIActionSimulator sim;
    sim.MouseMove(p);
    vt::Pump(30);
    if (withCtrl) sim.KeyDown(WXK_CONTROL);
    sim.MouseClick();
    if (withCtrl) sim.KeyUp(WXK_CONTROL);
    vt::Pump(80);
  }
  // Opens C:\data in the list and selects the rows with the mouse: a click
  // on the first, Ctrl+click on the others.
  void SelectRows(const std::vector<wxString>& names) {
    list->Copy_Refresh_Filelisttabel(kSource);
    vt::Pump(50);
    bool first = true;
    for (const wxString& name : names) {
      const long row = RowOf(name);
      ASSERT_GE(row, 0) << U8(name);
      Rows()->EnsureVisible(row);
      vt::Pump(30);
      wxRect r;
      Rows()->GetItemRect(row, r, wxLIST_RECT_LABEL);
      ClickAt(Rows()->ClientToScreen(wxPoint(r.x + 10, r.y + r.height / 2)), !first);
      first = false;
    }
    ASSERT_EQ(Rows()->GetSelectedItemCount(), static_cast<int>(names.size()));
    for (const wxString& name : names)
      EXPECT_NE(Rows()->GetItemState(RowOf(name), wxLIST_STATE_SELECTED), 0) << U8(name);
    ASSERT_TRUE(list->GetIsLastFocus_listctrl());
    ASSERT_FALSE(frame->GetTreeCtrl()->GetIsLastFocus_treectrl());
  }
  // Clicks the folder C:\data\<name> in the tree.
  void ClickTreeFolder(const wxString& name) {
    my_DirTreeCtrl* tree = frame->GetTreeCtrl();
    tree->SetPath(kSource);
    vt::Pump(50);
    wxTreeCtrl* t = tree->GetTreeCtrl();
    wxTreeItemId parent = t->GetSelection();
    ASSERT_TRUE(parent.IsOk());
    t->Expand(parent);
    vt::Pump(50);
    const wxTreeItemId item = vt::TreeChildNamed(t, parent, name);
    ASSERT_TRUE(item.IsOk()) << U8(name);
    t->EnsureVisible(item);
    vt::Pump(30);
    wxRect r;
    ASSERT_TRUE(t->GetBoundingRect(item, r, true));
    ClickAt(t->ClientToScreen(wxPoint(r.x + r.width / 2, r.y + r.height / 2)));
    ASSERT_TRUE(vt::PumpUntil([&] { return tree->GetPath() == wxString(kSource) + "/" + name; }));
    ASSERT_TRUE(tree->GetIsLastFocus_treectrl());
    ASSERT_FALSE(list->GetIsLastFocus_listctrl());
  }
  // The destination panel: E: (the second volume offered: C:, the source,
  // is left out), into "backup", OK.
  wxExpectModal<Des_Panel> ChooseBackupOnE() {
    return wxExpectModal<Des_Panel>([](Des_Panel* panel) {
      EXPECT_EQ(panel->GetDriveChoice()->GetCount(), 2u);
      vt::ChoosePanelVolume(panel, 1);
      vt::OpenPanelRow(panel, "backup");
      // A folder row selected inside would become the destination: the
      // ".." row is chosen instead, which stands for the open folder.
      wxListCtrl* rows = panel->GetDesList()->GetListView();
      rows->SetItemState(0, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
      vt::Pump(20);
      EXPECT_EQ(panel->GetPathText()->GetValue(), "E:\\backup");
      vt::PressPanelButton(panel, ID_DES_OK);
      return static_cast<int>(wxID_CANCEL);
    });
  }
  // Presses Copy with the mouse, or by its click event (the copy then runs
  // outside the test's own yield, as under the application's main loop).
  void PressCopy(bool withMouse = false) {
    if (withMouse) {
      wxButton* copy = frame->GetCopyButton();
      ASSERT_TRUE(copy->IsEnabled());
      ClickAt(copy->GetScreenRect().GetPosition() + copy->GetSize() / 2);
    } else {
      wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_COPY);
      ev.SetEventObject(frame->GetCopyButton());
      frame->GetCopyButton()->GetEventHandler()->ProcessEvent(ev);
    }
    vt::Pump(30);
  }
  // Presses Copy and waits until the command has run its copy.
  void CopyAndWait(bool withMouse = false) {
    PressCopy(withMouse);
    vt::PumpUntil([] { return g_Des_PathInfo.m_result == DES_RESULT_CANCEL; }, 20000);
  }
  // After a copy: the progress dialog has gone, the answer is reset, the
  // frame is enabled again and the source browser shows E:\backup.
  void ExpectCopiedAndShown() {
    EXPECT_TRUE(vt::PumpUntil([] { return OpenGauge() == nullptr; }, 20000));
    EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
    EXPECT_EQ(g_copy_dialog_return, 0);
    EXPECT_EQ(g_lastCopyOutcome.result, 1) << "the copy ran to its end";
    EXPECT_TRUE(g_lastCopyOutcome.problems.empty());
    EXPECT_TRUE(frame->IsEnabled());
    EXPECT_EQ(frame->GetTargetPath(), kTarget);
    EXPECT_TRUE(vt::PumpUntil(
        [&] { return list->GetCurrentListctrlPath() == wxString(kTarget) + "/"; }));
    EXPECT_EQ(frame->GetTreeCtrl()->GetPath(), frame->GetTargetPath());
    EXPECT_EQ(list->GetCurrentListctrlPath(), frame->GetTargetPath() + "/");
  }
  // After an abandoned command: no progress dialog ran, nothing navigated.
  void ExpectNothingRan() {
    vt::Pump(100);
    EXPECT_EQ(OpenGauge(), nullptr);
    EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_OK) << "the copy never started";
    EXPECT_EQ(g_lastCopyOutcome.result, 0);
    EXPECT_NE(list->GetCurrentListctrlPath(), wxString(kTarget) + "/");
    EXPECT_TRUE(frame->IsEnabled());
  }
  // The names in the order of their rows in the list (the order in which
  // the command meets them).
  std::vector<wxString> InRowOrder(std::vector<wxString> names) const {
    std::sort(names.begin(), names.end(),
              [this](const wxString& a, const wxString& b) { return RowOf(a) < RowOf(b); });
    return names;
  }
  std::string Src(const std::string& rel) const { return std::string(kSource) + "/" + rel; }
  std::string Dst(const std::string& rel) const { return std::string(kTarget) + "/" + rel; }
  bool SameFile(const std::string& rel) const {
    return fs::is_regular_file(Dst(rel)) && vt::ReadFile(Src(rel)) == vt::ReadFile(Dst(rel));
  }

  my_listctrl* list = nullptr;
};

using Q = wxExpectModal<copy_dialog>;

TEST_F(CopyUserPathTest, SelectedRowsAreCopiedByteForByteAndTheDestinationIsShown) {
  vt::WriteFile(Dst("old.txt"), "already there");
  SelectRows({"docs", "empty", "photos", "b.txt", "big.bin", "two words.txt", Umlaut()});
  wxTEST_DIALOG(
      CopyAndWait(true),
      ChooseBackupOnE());
  ExpectCopiedAndShown();
  for (const char* folder : {"docs", "empty", "photos"}) ExpectSameTree(Src(folder), Dst(folder));
  EXPECT_TRUE(SameFile("docs/.hidden"));
  for (const std::string file : {"b.txt", "big.bin", "two words.txt"}) EXPECT_TRUE(SameFile(file));
  EXPECT_TRUE(SameFile(U8(Umlaut())));
  // Exactly what was selected, beside what was there.
  EXPECT_FALSE(fs::exists(Dst("Makefile")));
  EXPECT_FALSE(fs::exists(Dst("a.exe")));
  EXPECT_EQ(vt::ReadFile(Dst("old.txt")), "already there");
  EXPECT_EQ(g_lastCopyOutcome.bytesCopied,
            static_cast<int64_t>(100 + 6 + 7 + (1 << 20) + 5 + 1200000 + 1536 + 3 * (1 << 20) +
                                 17 + 9 + 6));
  // The list shows the copied rows.
  for (const wxString& name : {wxString("docs"), wxString("photos"), wxString("big.bin")})
    EXPECT_GE(RowOf(name), 0) << U8(name);
}

TEST_F(CopyUserPathTest, FileQuestionsYesNoAndYesToAll) {
  // The old files differ in size from the new ones: a replaced file must
  // end where its source ends.
  std::map<wxString, std::string> old;
  unsigned seed = 40;
  for (const char* name : {"Makefile", "a.exe", "b.txt", "big.bin"}) {
    old[name] = Bytes(seed % 2 ? 7 : (4 << 20), seed);
    vt::WriteFile(Dst(name), old[name]);
    ++seed;
  }
  SelectRows({"Makefile", "a.exe", "b.txt", "big.bin", "two words.txt"});
  const std::vector<wxString> o = InRowOrder({"Makefile", "a.exe", "b.txt", "big.bin"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(CopyAndWait(), ChooseBackupOnE(), Q(COPY_ANSWER_YES, &seen),
                Q(COPY_ANSWER_NO, &seen), Q(COPY_ANSWER_YES_TO_ALL, &seen));
  ExpectCopiedAndShown();
  EXPECT_EQ(Titles(seen), (std::vector<wxString>{kFileTitle, kFileTitle, kFileTitle}));
  EXPECT_EQ(Names(seen), (std::vector<wxString>{o[0], o[1], o[2]}))
      << "the last file is replaced without a question after Yes To All";
  EXPECT_TRUE(SameFile(U8(o[0]))) << "Yes";
  EXPECT_EQ(vt::ReadFile(Dst(U8(o[1]))), old[o[1]]) << "No keeps the existing file";
  EXPECT_TRUE(SameFile(U8(o[2]))) << "Yes To All";
  EXPECT_TRUE(SameFile(U8(o[3]))) << "after Yes To All";
  EXPECT_TRUE(SameFile("two words.txt"));
}

TEST_F(CopyUserPathTest, FileQuestionCancelCopiesNothing) {
  vt::WriteFile(Dst("Makefile"), "old make");
  vt::WriteFile(Dst("a.exe"), "old exe");
  SelectRows({"docs", "Makefile", "a.exe", "b.txt"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(PressCopy(), ChooseBackupOnE(), Q(COPY_ANSWER_YES, &seen),
                Q(COPY_ANSWER_CANCEL, &seen));
  ExpectNothingRan();
  EXPECT_EQ(Names(seen), InRowOrder({"Makefile", "a.exe"}));
  EXPECT_EQ(vt::ReadFile(Dst("Makefile")), "old make") << "Yes to an earlier row copies nothing";
  EXPECT_EQ(vt::ReadFile(Dst("a.exe")), "old exe");
  EXPECT_FALSE(fs::exists(Dst("b.txt")));
  // The folder of the selected docs (folders come before the files) was
  // made before the questions; it stays, empty.
  EXPECT_TRUE(fs::is_directory(Dst("docs")));
  EXPECT_TRUE(fs::is_empty(Dst("docs")));
}

// docs and photos exist in the destination, each with one old file.
class CopyIntoExistingFoldersTest : public CopyUserPathTest {
 protected:
  void MakeFiles() override {
    CopyUserPathTest::MakeFiles();
    vt::WriteFile(Dst("docs/readme.txt"), "old readme, longer than the new one? no");
    vt::WriteFile(Dst("docs/keep.txt"), "kept");
    vt::WriteFile(Dst("photos/a.jpg"), "old picture");
  }
  // The folder as it was before the copy.
  void ExpectUntouched(const wxString& folder) {
    if (folder == "docs") {
      EXPECT_EQ(TreeNames(Dst("docs")), (std::vector<std::string>{"keep.txt", "readme.txt"}));
      EXPECT_EQ(vt::ReadFile(Dst("docs/readme.txt")), "old readme, longer than the new one? no");
    } else {
      EXPECT_EQ(TreeNames(Dst("photos")), (std::vector<std::string>{"a.jpg"}));
      EXPECT_EQ(vt::ReadFile(Dst("photos/a.jpg")), "old picture");
    }
  }
  // The folder merged: every source file copied, nothing removed.
  void ExpectMerged(const wxString& folder) {
    ExpectSameTree(Src(U8(folder)), Dst(U8(folder)));
    if (folder == "docs") EXPECT_EQ(vt::ReadFile(Dst("docs/keep.txt")), "kept");
  }
};

TEST_F(CopyIntoExistingFoldersTest, FolderYesToAllMergesEveryExistingFolder) {
  vt::WriteFile(Dst("b.txt"), "old b");
  SelectRows({"docs", "photos", "b.txt"});
  const std::vector<wxString> of = InRowOrder({"docs", "photos"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(CopyAndWait(), ChooseBackupOnE(), Q(COPY_ANSWER_YES_TO_ALL, &seen),
                Q(COPY_ANSWER_YES, &seen));
  ExpectCopiedAndShown();
  // The second folder is merged without a question; the file question is
  // still asked.
  EXPECT_EQ(Titles(seen), (std::vector<wxString>{kFolderTitle, kFileTitle}));
  EXPECT_EQ(Names(seen), (std::vector<wxString>{of[0], "b.txt"}));
  ExpectMerged("docs");
  ExpectMerged("photos");
  EXPECT_TRUE(SameFile("b.txt"));
}

TEST_F(CopyIntoExistingFoldersTest, FolderNoSkipsItAndTheNextExistingFolderIsMergedUnasked) {
  SelectRows({"docs", "photos", "big.bin"});
  const std::vector<wxString> of = InRowOrder({"docs", "photos"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(CopyAndWait(), ChooseBackupOnE(), Q(COPY_ANSWER_NO, &seen));
  ExpectCopiedAndShown();
  EXPECT_EQ(Names(seen), (std::vector<wxString>{of[0]}));
  ExpectUntouched(of[0]);
  ExpectMerged(of[1]);
  EXPECT_TRUE(SameFile("big.bin"));
}

TEST_F(CopyIntoExistingFoldersTest, FolderYesThenYesMergesBoth) {
  SelectRows({"docs", "photos"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(CopyAndWait(), ChooseBackupOnE(), Q(COPY_ANSWER_YES, &seen),
                Q(COPY_ANSWER_YES, &seen));
  ExpectCopiedAndShown();
  EXPECT_EQ(Names(seen), InRowOrder({"docs", "photos"})) << "Yes asks again at the next folder";
  ExpectMerged("docs");
  ExpectMerged("photos");
}

TEST_F(CopyIntoExistingFoldersTest, FolderCancelCopiesNothing) {
  SelectRows({"docs", "photos", "b.txt"});
  const std::vector<wxString> of = InRowOrder({"docs", "photos"});
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(PressCopy(), ChooseBackupOnE(), Q(COPY_ANSWER_YES, &seen),
                Q(COPY_ANSWER_CANCEL, &seen));
  ExpectNothingRan();
  EXPECT_EQ(Names(seen), of);
  ExpectUntouched("docs");
  ExpectUntouched("photos");
  EXPECT_FALSE(fs::exists(Dst("b.txt")));
}

TEST_F(CopyUserPathTest, FolderMadeForAnEarlierRowStaysWhenALaterFolderIsCancelled) {
  SelectRows({"docs", "empty", "photos", "b.txt"});
  const std::vector<wxString> of = InRowOrder({"docs", "empty", "photos"});
  // Only the last folder of the three exists in the destination.
  vt::WriteFile(Dst(U8(of[2]) + "/old.txt"), "old");
  std::vector<vt::SeenQuestion> seen;
  wxTEST_DIALOG(PressCopy(), ChooseBackupOnE(), Q(COPY_ANSWER_CANCEL, &seen));
  ExpectNothingRan();
  EXPECT_EQ(Names(seen), (std::vector<wxString>{of[2]}));
  for (int i : {0, 1}) {
    EXPECT_TRUE(fs::is_directory(Dst(U8(of[i])))) << U8(of[i]);
    EXPECT_TRUE(fs::is_empty(Dst(U8(of[i])))) << U8(of[i]);
  }
  EXPECT_EQ(TreeNames(Dst(U8(of[2]))), (std::vector<std::string>{"old.txt"}));
  EXPECT_FALSE(fs::exists(Dst("b.txt")));
}

TEST_F(CopyUserPathTest, TreeFolderIsCopiedAsAWhole) {
  ClickTreeFolder("photos");
  wxTEST_DIALOG(
      CopyAndWait(true),
      ChooseBackupOnE());
  EXPECT_TRUE(g_Des_PathInfo.m_sourceItems.IsEmpty());
  EXPECT_EQ(g_Des_PathInfo.m_destPath, Dst("photos"));
  ExpectCopiedAndShown();
  ExpectSameTree(Src("photos"), Dst("photos"));
  EXPECT_EQ(TreeNames(Dst("photos")), TreeNames(Src("photos")));
  EXPECT_FALSE(fs::exists(Dst("a.jpg"))) << "inside a folder of its name, not loose";
}

TEST_F(CopyUserPathTest, TreeFolderThatExistsYesAndYesToAllMerge) {
  for (int answer : {COPY_ANSWER_YES, COPY_ANSWER_YES_TO_ALL}) {
    fs::remove_all(Dst("docs"));
    vt::WriteFile(Dst("docs/readme.txt"), "old readme");
    vt::WriteFile(Dst("docs/keep.txt"), "kept");
    list->Copy_Refresh_Filelisttabel(kSource);
    ClickTreeFolder("docs");
    std::vector<vt::SeenQuestion> seen;
    g_Des_PathInfo.m_result = 0;
    wxTEST_DIALOG(
        CopyAndWait(),
        ChooseBackupOnE(), Q(answer, &seen));
    ExpectCopiedAndShown();
    EXPECT_EQ(Titles(seen), (std::vector<wxString>{kFolderTitle})) << answer;
    EXPECT_EQ(Names(seen), (std::vector<wxString>{"docs"}));
    ExpectSameTree(Src("docs"), Dst("docs"));
    EXPECT_EQ(vt::ReadFile(Dst("docs/keep.txt")), "kept");
  }
}

TEST_F(CopyUserPathTest, TreeFolderThatExistsNoAndCancelCopyNothing) {
  vt::WriteFile(Dst("docs/readme.txt"), "old readme");
  for (int answer : {COPY_ANSWER_NO, COPY_ANSWER_CANCEL}) {
    ClickTreeFolder("docs");
    g_Des_PathInfo.m_result = 0;
    wxTEST_DIALOG(PressCopy(), ChooseBackupOnE(), Q(answer));
    ExpectNothingRan();
    EXPECT_EQ(TreeNames(Dst("docs")), (std::vector<std::string>{"readme.txt"})) << answer;
    EXPECT_EQ(vt::ReadFile(Dst("docs/readme.txt")), "old readme");
  }
}

TEST_F(CopyUserPathTest, YesToAllLastsOneCopyCommand) {
  vt::WriteFile(Dst("docs/readme.txt"), "old readme");
  vt::WriteFile(Dst("photos/a.jpg"), "old picture");
  vt::WriteFile(Dst("a.exe"), "old exe");
  vt::WriteFile(Dst("b.txt"), "old b");
  for (int command = 0; command < 2; ++command) {
    SelectRows({"docs", "photos", "a.exe", "b.txt"});
    g_Des_PathInfo.m_result = 0;
    std::vector<vt::SeenQuestion> seen;
    wxTEST_DIALOG(
        CopyAndWait(),
        ChooseBackupOnE(), Q(COPY_ANSWER_YES_TO_ALL, &seen), Q(COPY_ANSWER_YES_TO_ALL, &seen));
    ExpectCopiedAndShown();
    // Each command asks again: once for the folders, once for the files.
    EXPECT_EQ(Titles(seen), (std::vector<wxString>{kFolderTitle, kFileTitle})) << command;
    EXPECT_EQ(Names(seen), (std::vector<wxString>{InRowOrder({"docs", "photos"})[0],
                                                  InRowOrder({"a.exe", "b.txt"})[0]}))
        << command;
    ExpectSameTree(Src("docs"), Dst("docs"));
    ExpectSameTree(Src("photos"), Dst("photos"));
    EXPECT_TRUE(SameFile("a.exe"));
    EXPECT_TRUE(SameFile("b.txt"));
  }
}

TEST_F(CopyUserPathTest, HostWindowClosedDuringTheCopy) {
  // Every chunk of big.bin takes its time: the host's window is closed
  // while the progress dialog runs. The command must end without touching
  // the frame that went with it, and no partial file may stay behind.
  vt::FakeFileOps files;
  files.Delay(vt::FakeFileOps::kRead, 150, "*/data/big.bin");
  files.Delay(vt::FakeFileOps::kCopyFileRange, 150, "*/data/big.bin");
  SelectRows({"b.txt", "big.bin"});
  wxFrame* host = top;
  bool closed = false;
  vt::TimerCall closer(20, [&] {
    if (closed || vt::OpenGauge() == nullptr) return;
    closed = true;
    host->Destroy();
  });
  wxTEST_DIALOG(PressCopy(), ChooseBackupOnE());
  closer.Stop();
  ASSERT_TRUE(closed) << "the window was closed while the copy ran";
  top = nullptr;  // gone, with the frame
  frame = nullptr;
  list = nullptr;
  EXPECT_TRUE(vt::PumpUntil([] { return vt::OpenGauge() == nullptr; }, 10000));
  vt::Pump(50);
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL) << "the command ran to its end";
  EXPECT_NE(g_lastCopyOutcome.result, 1) << "the copy was stopped";
  // big.bin is either absent or whole.
  if (fs::exists(Dst("big.bin"))) EXPECT_TRUE(SameFile("big.bin"));
  if (fs::exists(Dst("b.txt"))) EXPECT_TRUE(SameFile("b.txt"));
}

}  // namespace
