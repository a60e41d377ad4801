// The copy command's source resolution, as the frame runs it once the
// destination is chosen: the tree's folder copied as a whole, the list's
// selected rows with the replacement questions (files: the command's own Yes
// To All; folders: the shared answer, which a No also turns into Yes To
// All), destination folders created before anything is copied, and the
// messages when a folder cannot be made. Also the first two steps of the
// command (no selection, a lone ".." row).
#include <gtest/gtest.h>

#include <wx/filefn.h>

#include <sys/stat.h>

#include <vector>

#include "copy/CopyAnswer.h"
#include "copy_questions_env.h"
#include "destination/Des_PathInfo.h"
#include "destination_env.h"
#include "frame_on_volumes_env.h"

namespace {

const char kFolderTitle[] = "Confirmation of Folder Replacement";
const char kFileTitle[] = "Confirmation of File Replacement";

wxString FolderQuestion(const wxString& name) {
  return "This folder already contains a folder named '" + name +
         "' \n\nIf the files in the existing Folder are the same name as files in \nthe folder "
         "you are copying. They will be replaced.\nDo you still want to copy the folder? ";
}
wxString FileQuestion(const wxString& name) {
  return "This folder already contains a file named '" + name +
         "' \n\nWould you like to replace the existing file with this one? ";
}

std::vector<wxString> Items() {
  std::vector<wxString> v;
  for (const wxString& s : g_Des_PathInfo.m_sourceItems) v.push_back(s);
  return v;
}
std::vector<wxString> Titles(const std::vector<vt::SeenQuestion>& seen) {
  std::vector<wxString> v;
  for (const vt::SeenQuestion& q : seen) v.push_back(q.title);
  return v;
}

// C: holds folders alpha and docs (with readme.txt and inner/deep.c) and the
// files Makefile, a.exe and b.txt; the destination is E:\dest.
class CopySourceTest : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    vt::FillListTestVolume();
    mkdir("/mnt/E/dest", 0755);
  }
  void SetUp() override {
    vt::FrameOnTestVolumes::SetUp();
    g_Des_PathInfo.m_sourceItems.Clear();
    g_Des_PathInfo.m_sourceItems.Add("left from before");
    g_Des_PathInfo.m_sourcePath = "before";
    g_Des_PathInfo.m_destPath = "/mnt/E/dest/";
    g_copy_dialog_return = 0;
  }
  // The list shows `folder` with exactly the rows `names` selected and had
  // the focus last.
  void ListSource(const wxString& folder, const std::vector<wxString>& names) {
    my_listctrl* list = frame->GetListCtrl();
    list->Copy_Refresh_Filelisttabel(folder);
    wxListCtrl* rows = list->GetListCtrl();
    for (long i = 0; i < rows->GetItemCount(); ++i)
      rows->SetItemState(i, 0, wxLIST_STATE_SELECTED);
    for (const wxString& name : names) {
      bool found = false;
      for (long i = 0; i < rows->GetItemCount(); ++i)
        if (rows->GetItemText(i) == name) {
          rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
          found = true;
        }
      EXPECT_TRUE(found) << "no row " << name.utf8_string();
    }
    vt::Pump(20);
    list->SetIsLastFocus_listctrl(true);
    frame->GetTreeCtrl()->SetIsLastFocus_treectrl(false);
  }
  // Selects the ".." row (row 0) as a range selection of the virtual list
  // can leave it: the selection notice, on which the list drops the row, is
  // held back.
  void HoldDotDotSelected() {
    wxListCtrl* rows = frame->GetListCtrl()->GetListCtrl();
    ASSERT_EQ(rows->GetItemText(0), "..");
    auto hold = [](wxListEvent&) {};
    rows->Bind(wxEVT_LIST_ITEM_SELECTED, hold);
    rows->SetItemState(0, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
    rows->Unbind(wxEVT_LIST_ITEM_SELECTED, hold);
  }
  void TreeSource(const wxString& path) {
    frame->GetTreeCtrl()->SetPath(path);
    vt::Pump(20);
    ASSERT_EQ(frame->GetTreeCtrl()->GetPath(), path);
    frame->GetListCtrl()->SetIsLastFocus_listctrl(false);
    frame->GetTreeCtrl()->SetIsLastFocus_treectrl(true);
  }
  // Runs the source resolution expecting the one message of a destination
  // folder that cannot be made; the copy is abandoned.
  void ExpectFolderNotCreated() {
    vt::SeenBox box;
    int rc = -2;
    wxTEST_DIALOG(rc = frame->GetSourcePath(), MessageSeen(&box));
    EXPECT_EQ(rc, -1);
    EXPECT_EQ(box.message, "Create folder is error !");
    EXPECT_EQ(box.caption, "Confirm Folder");
    EXPECT_EQ(box.style & (wxOK | wxCANCEL | wxYES_NO), wxOK);
    EXPECT_EQ(box.count, 1);
  }
  void Copy() {
    wxCommandEvent ev(wxEVT_BUTTON, ID_MYFRAME_COPY);
    frame->GetEventHandler()->ProcessEvent(ev);
  }
};

using Q = wxExpectModal<copy_dialog>;

TEST_F(CopySourceTest, TreeFolderIsCopiedAsAWholeIntoAFolderOfItsName) {
  TreeSource("/mnt/C/docs");
  EXPECT_EQ(frame->GetSourcePath(), 0);
  EXPECT_TRUE(g_Des_PathInfo.m_sourceItems.IsEmpty());
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/docs");
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/dest/docs");
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/docs"));
  EXPECT_TRUE(vt::UnexpectedDialogs().empty()) << "no question for a new folder";
}

TEST_F(CopySourceTest, TreeFolderThatExistsIsAskedAbout) {
  TreeSource("/mnt/C/docs");
  mkdir("/mnt/E/dest/docs", 0755);
  for (int answer : {200, 201}) {
    std::vector<vt::SeenQuestion> seen;
    g_Des_PathInfo.m_destPath = "/mnt/E/dest/";
    int rc = -2;
    wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(answer, &seen));
    EXPECT_EQ(rc, 0) << answer;
    EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/dest/docs");
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].title, kFolderTitle);
    EXPECT_EQ(seen[0].text, FolderQuestion("docs"));
    EXPECT_EQ(seen[0].parent, frame);
    EXPECT_EQ(seen[0].size, wxSize(500, 170));
    EXPECT_EQ(seen[0].style & (wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU | wxRESIZE_BORDER | wxMAXIMIZE_BOX | wxMINIMIZE_BOX), wxDEFAULT_DIALOG_STYLE);
    EXPECT_EQ(seen[0].answerBefore, 0);
  }
  for (int answer : {202, 203, static_cast<int>(wxID_CLOSE)}) {
    g_Des_PathInfo.m_destPath = "/mnt/E/dest/";
    int rc = -2;
    wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(answer));
    EXPECT_EQ(rc, -1) << answer;
    EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/dest/") << "left as it was";
  }
}

TEST_F(CopySourceTest, TheQuestionStandsAtItsPlaceOverTheFrame) {
  TreeSource("/mnt/C/docs");
  mkdir("/mnt/E/dest/docs", 0755);
  wxPoint where;
  wxTEST_DIALOG(frame->GetSourcePath(), Q([&](copy_dialog* dlg) {
                  dlg->Show();
                  vt::PumpUntil([&] { return dlg->IsShownOnScreen(); });
                  vt::Pump(100);
                  where = dlg->GetScreenPosition();
                  vt::PressQuestionButton(dlg, COPY_ANSWER_YES);
                }));
  EXPECT_EQ(where, wxPoint(250, 230));
}

TEST_F(CopySourceTest, TreeFolderThatCannotBeCreatedIsReported) {
  TreeSource("/mnt/C/docs");
  vt::WriteFile("/mnt/E/dest/docs", "a file where the folder would go");
  ExpectFolderNotCreated();
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/dest/");
  EXPECT_EQ(vt::ReadFile("/mnt/E/dest/docs"), "a file where the folder would go");
}

TEST_F(CopySourceTest, ListRowsWithoutClashesAreTakenAndFoldersMadeAtOnce) {
  ListSource("/mnt/C", {"docs", "alpha", "b.txt", "Makefile"});
  EXPECT_EQ(frame->GetSourcePath(), 0);
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/");
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "/mnt/E/dest/") << "unchanged for a list source";
  EXPECT_EQ(Items(), (std::vector<wxString>{"alpha", "docs", "Makefile", "b.txt"}));
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/alpha"));
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/docs"));
  EXPECT_FALSE(wxDirExists("/mnt/E/dest/docs/inner")) << "only the selected folder itself";
  EXPECT_FALSE(wxFileExists("/mnt/E/dest/b.txt")) << "nothing copied yet";
  EXPECT_TRUE(vt::UnexpectedDialogs().empty());
}

TEST_F(CopySourceTest, FileAnswers) {
  vt::WriteFile("/mnt/E/dest/b.txt", "old");
  vt::WriteFile("/mnt/E/dest/a.exe", "old");
  vt::WriteFile("/mnt/E/dest/Makefile", "old");
  ListSource("/mnt/C", {"a.exe", "b.txt", "Makefile"});
  // Yes to Makefile, No to a.exe, Yes to b.txt.
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200, &seen), Q(202, &seen), Q(200, &seen));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(Items(), (std::vector<wxString>{"Makefile", "b.txt"}));
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].title, kFileTitle);
  EXPECT_EQ(seen[0].text, FileQuestion("Makefile"));
  EXPECT_EQ(seen[1].text, FileQuestion("a.exe"));
  EXPECT_EQ(seen[2].text, FileQuestion("b.txt"));
  EXPECT_EQ(seen[2].parent, frame);

  // Yes To All at the first: no more file questions.
  seen.clear();
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(201, &seen));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(seen.size(), 1u);
  EXPECT_EQ(Items(), (std::vector<wxString>{"Makefile", "a.exe", "b.txt"}));

  // Cancel at the second abandons the copy.
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200), Q(203));
  EXPECT_EQ(rc, -1);
  // The close box counts as Cancel.
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(wxID_CLOSE));
  EXPECT_EQ(rc, -1);
}

TEST_F(CopySourceTest, EveryRowAnsweredNoCopiesNothing) {
  vt::WriteFile("/mnt/E/dest/a.exe", "old");
  vt::WriteFile("/mnt/E/dest/b.txt", "old");
  ListSource("/mnt/C", {"a.exe", "b.txt"});
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(202), Q(202));
  EXPECT_EQ(rc, -1);
  EXPECT_TRUE(g_Des_PathInfo.m_sourceItems.IsEmpty());
  EXPECT_EQ(vt::ReadFile("/mnt/E/dest/a.exe"), "old");
}

TEST_F(CopySourceTest, NoToTheFirstExistingFolderMergesTheSecondWithoutAQuestion) {
  mkdir("/mnt/E/dest/alpha", 0755);
  mkdir("/mnt/E/dest/docs", 0755);
  ListSource("/mnt/C", {"alpha", "docs"});
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(202, &seen));
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].title, kFolderTitle);
  EXPECT_EQ(seen[0].text, FolderQuestion("alpha"));
  EXPECT_EQ(Items(), (std::vector<wxString>{"docs"}));
  EXPECT_EQ(g_copy_dialog_return, COPY_ANSWER_YES_TO_ALL);
}

TEST_F(CopySourceTest, FolderAnswersYesAndCancel) {
  mkdir("/mnt/E/dest/alpha", 0755);
  mkdir("/mnt/E/dest/docs", 0755);
  ListSource("/mnt/C", {"alpha", "docs"});
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200, &seen), Q(200, &seen));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(seen.size(), 2u) << "Yes asks again at the next folder";
  EXPECT_EQ(Items(), (std::vector<wxString>{"alpha", "docs"}));
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200), Q(203));
  EXPECT_EQ(rc, -1);
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(wxID_CLOSE));
  EXPECT_EQ(rc, -1);
}

TEST_F(CopySourceTest, FolderYesToAllDoesNotSuppressFileQuestions) {
  mkdir("/mnt/E/dest/alpha", 0755);
  mkdir("/mnt/E/dest/docs", 0755);
  vt::WriteFile("/mnt/E/dest/a.exe", "old");
  vt::WriteFile("/mnt/E/dest/b.txt", "old");
  ListSource("/mnt/C", {"alpha", "docs", "a.exe", "b.txt"});
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(201, &seen), Q(200, &seen), Q(202, &seen));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(Titles(seen),
            (std::vector<wxString>{kFolderTitle, kFileTitle, kFileTitle}));
  EXPECT_EQ(seen[1].text, FileQuestion("a.exe"));
  EXPECT_EQ(seen[2].text, FileQuestion("b.txt"));
  EXPECT_EQ(Items(), (std::vector<wxString>{"alpha", "docs", "a.exe"}));
}

TEST_F(CopySourceTest, FileYesToAllDoesNotSuppressFolderQuestions) {
  // The list shows every folder before the files: each folder is asked
  // about although the files are answered Yes To All.
  mkdir("/mnt/E/dest/alpha", 0755);
  mkdir("/mnt/E/dest/docs", 0755);
  vt::WriteFile("/mnt/E/dest/Makefile", "old");
  vt::WriteFile("/mnt/E/dest/a.exe", "old");
  vt::WriteFile("/mnt/E/dest/b.txt", "old");
  ListSource("/mnt/C", {"alpha", "docs", "Makefile", "a.exe", "b.txt"});
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200, &seen), Q(200, &seen), Q(201, &seen));
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(Titles(seen), (std::vector<wxString>{kFolderTitle, kFolderTitle, kFileTitle}));
  EXPECT_EQ(Items(), (std::vector<wxString>{"alpha", "docs", "Makefile", "a.exe", "b.txt"}));
}

TEST_F(CopySourceTest, DestinationFolderIsMadeEvenWhenALaterRowCancels) {
  vt::WriteFile("/mnt/E/dest/b.txt", "old");
  ListSource("/mnt/C", {"alpha", "docs", "b.txt"});
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(203));
  EXPECT_EQ(rc, -1);
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/alpha"));
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/docs"));
  EXPECT_EQ(vt::ReadFile("/mnt/E/dest/b.txt"), "old");
}

TEST_F(CopySourceTest, FolderThatCannotBeCreatedIsReportedAndAbandonsTheCopy) {
  vt::WriteFile("/mnt/E/dest/docs", "a file named like the folder");
  ListSource("/mnt/C", {"alpha", "docs", "b.txt"});
  ExpectFolderNotCreated();
  EXPECT_TRUE(wxDirExists("/mnt/E/dest/alpha")) << "the earlier row's folder stays";
}

TEST_F(CopySourceTest, DotRowsAreNeverCopied) {
  ListSource("/mnt/C/docs", {"inner", "readme.txt"});
  HoldDotDotSelected();
  ASSERT_EQ(frame->GetListCtrl()->GetListCtrl()->GetSelectedItemCount(), 3);
  EXPECT_EQ(frame->GetSourcePath(), 0);
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "/mnt/C/docs/");
  EXPECT_EQ(Items(), (std::vector<wxString>{"inner", "readme.txt"}));
}

TEST_F(CopySourceTest, NamesWithBlanksQuotesAndNonAsciiLetters) {
  for (const wxString& name : vt::OddNames()) {
    vt::WriteFile(("/mnt/C/" + name + ".txt").utf8_string(), "new");
    vt::WriteFile(("/mnt/E/dest/" + name + ".txt").utf8_string(), "old");
  }
  std::vector<wxString> names;
  for (const wxString& name : vt::OddNames()) names.push_back(name + ".txt");
  ListSource("/mnt/C", names);
  std::vector<vt::SeenQuestion> seen;
  int rc = -2;
  wxTEST_DIALOG(rc = frame->GetSourcePath(), Q(200, &seen), Q(200, &seen), Q(200, &seen),
                Q(200, &seen));
  EXPECT_EQ(rc, 0);
  ASSERT_EQ(seen.size(), 4u);
  for (const vt::SeenQuestion& q : seen) {
    bool matched = false;
    for (const wxString& n : names) matched = matched || q.text == FileQuestion(n);
    EXPECT_TRUE(matched) << q.text.utf8_string();
  }
  EXPECT_EQ(g_Des_PathInfo.m_sourceItems.GetCount(), 4u);
}

TEST_F(CopySourceTest, NoRowSelectedWithTheListFocusedShowsTheErrorBox) {
  ListSource("/mnt/C", {});
  vt::SeenBox box;
  wxTEST_DIALOG(Copy(), MessageSeen(&box));
  EXPECT_EQ(box.message, "Please select a file or directory!");
  EXPECT_EQ(box.caption, "Error Selecting File or Folder");
  EXPECT_EQ(box.parent, wxGetTopLevelParent(frame));
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "before") << "stopped before anything";
}

TEST_F(CopySourceTest, OnlyTheDotDotRowSelectedDoesNothing) {
  ListSource("/mnt/C/docs", {});
  HoldDotDotSelected();
  wxListCtrl* rows = frame->GetListCtrl()->GetListCtrl();
  ASSERT_EQ(rows->GetSelectedItemCount(), 1);
  ASSERT_EQ(rows->GetItemText(rows->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)), "..");
  Copy();
  vt::Pump(50);
  for (const vt::SeenMessage& m : vt::UnexpectedDialogs())
    ADD_FAILURE() << "shown: " << m.caption << ": " << m.message;
  EXPECT_EQ(g_Des_PathInfo.m_sourcePath, "before");
  EXPECT_EQ(frame->GetDesPanel(), nullptr);
}

}  // namespace
