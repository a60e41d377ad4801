// The Delete button of the destination panel: the two questions, deleting a
// file and a folder tree with the progress dialog, names that a shell would
// read as commands, links, Cancel and the close box while counting and while
// deleting, a removal that fails, and the host window closed in the middle.
// Every case is checked on the disk afterwards, and the panel is enabled again.
#include "destination_panel_env.h"

#include <errno.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/fake_fileops.h"
#include "faultfs/faultfs_mount.h"
#include "common/stdout_capture.h"
#include "destination/DeleteFileProgress.h"
#include "timer_call.h"
#include "unit/fileops_test_tree.h"

namespace {

using vt::CountBelow;
using vt::Exists;

// A message box: records what it showed and gives `answer`.
class Answer : public wxExpectModal<wxMessageDialog> {
 public:
  Answer(int answer, vt::SeenBox* seen) : wxExpectModal<wxMessageDialog>(answer), m_seen(seen) {}

 protected:
  int OnInvoked(wxMessageDialog* dlg) const override {
    m_seen->message = dlg->GetMessage();
    m_seen->caption = dlg->GetCaption();
    m_seen->style = dlg->GetMessageDialogStyle();
    ++m_seen->count;
    return wxExpectModal<wxMessageDialog>::OnInvoked(dlg);
  }

 private:
  vt::SeenBox* m_seen;
};

class DesDeleteTest : public DesPanelTest {
 protected:
  // Opens the panel on C: and goes into /mnt/C/work (made first).
  void OpenInWork() {
    Volumes();
    mkdir("/mnt/C/work", 0755);
    Open();
    panel->GetDesList()->Read_FileDir_Array("/mnt/C/");
    panel->GetDesList()->List_FileTable();
    Enter("work");
  }
  void Enter(const wxString& folder) {
    Select(folder);
    wxListEvent act(wxEVT_LIST_ITEM_ACTIVATED, FolderListCtrl::kListId);
    act.m_itemIndex = RowOf(folder);
    act.SetEventObject(Rows());
    Rows()->GetEventHandler()->ProcessEvent(act);
  }
  // Reloads the current folder's rows (after files were made behind the list).
  void Reload() {
    panel->GetDesList()->Read_FileDir_Array(panel->GetDesList()->GetDesCurrentPath());
    panel->GetDesList()->List_FileTable();
  }
  // Selects `name`, presses Delete and answers Yes; standard output is kept.
  std::string DeleteSelected(const wxString& name) {
    Select(name);
    EXPECT_GE(RowOf(name), 0) << name;
    vt::StdoutCapture out;
    wxTEST_DIALOG(Press(ID_DES_DELETE), wxExpectModal<wxMessageDialog>(wxYES));
    return out.Stop();
  }
  // The state every delete leaves the panel in.
  void ExpectIdle() {
    EXPECT_TRUE(panel->IsEnabled());
    EXPECT_FALSE(panel->m_deleteDialog);
    vt::Pump(30);
    for (wxWindow* w : panel->GetChildren())
      EXPECT_EQ(dynamic_cast<DeleteFile_dialog*>(w), nullptr) << "the progress dialog is gone";
  }
  // Presses the progress dialog's Cancel (as the button does) or its close box.
  void CancelDialog(bool closeBox) {
    DeleteFile_dialog* d = panel->m_deleteDialog;
    if (d == nullptr) return;
    if (closeBox) {
      d->Close();
      return;
    }
    wxCommandEvent press(wxEVT_BUTTON, ID_DELETE_CANCEL);
    press.SetEventObject(d->m_cancelButton);
    d->m_cancelButton->GetEventHandler()->ProcessEvent(press);
  }
  // /mnt/C/work/big: 400 files.
  void MakeBig() {
    mkdir("/mnt/C/work/big", 0755);
    for (int i = 0; i < 400; ++i) vt::WriteFile("/mnt/C/work/big/f" + std::to_string(i), "x");
    Reload();
  }
};

TEST_F(DesDeleteTest, NothingSelectedShowsTheMessageAndFocusesTheList) {
  Volumes();
  Open();
  ASSERT_EQ(Rows()->GetSelectedItemCount(), 0);
  vt::SeenBox box;
  wxTEST_DIALOG(Press(ID_DES_DELETE), MessageSeen(&box));
  EXPECT_EQ(box.count, 1);
  EXPECT_EQ(box.message, "Please select a file or directory!");
  EXPECT_EQ(box.caption, "Error Selecting File or Folder");
  EXPECT_EQ(box.style & (wxOK | wxYES_NO), wxOK);
  vt::Pump(50);
  EXPECT_EQ(wxWindow::FindFocus(), Rows());
  EXPECT_TRUE(Exists("/mnt/C/docs/readme.txt"));
  ExpectIdle();
}

TEST_F(DesDeleteTest, AnsweringNoRemovesNothing) {
  Volumes();
  Open();
  Select("docs");
  vt::SeenBox box;
  wxTEST_DIALOG(Press(ID_DES_DELETE), Answer(wxNO, &box));
  EXPECT_EQ(box.count, 1);
  EXPECT_EQ(box.message, "If you delete it data will be lost. Do you want to continue?");
  EXPECT_EQ(box.caption, "Warning");
  EXPECT_EQ(box.style & (wxYES_NO | wxNO_DEFAULT | wxICON_EXCLAMATION),
            wxYES_NO | wxNO_DEFAULT | wxICON_EXCLAMATION);
  EXPECT_TRUE(Exists("/mnt/C/docs/inner/deep.c"));
  EXPECT_TRUE(Exists("/mnt/C/docs/readme.txt"));
  EXPECT_GE(RowOf("docs"), 0);
  ExpectIdle();
}

TEST_F(DesDeleteTest, AFileAtTheTopIsRemovedAndTheListReRead) {
  Volumes();
  Open();
  panel->GetDriveChoice()->SetString(0, "stale");
  const std::string out = DeleteSelected("b.txt");
  EXPECT_FALSE(Exists("/mnt/C/b.txt"));
  EXPECT_TRUE(Exists("/mnt/C/a.exe"));
  EXPECT_TRUE(Exists("/mnt/C/docs/readme.txt"));
  EXPECT_EQ(RowOf("b.txt"), -1);
  EXPECT_GE(RowOf("a.exe"), 0);
  EXPECT_NE(out.find("delete file = /mnt/C/b.txt;\n delete file order is rm -f /mnt/C/b.txt\n"),
            std::string::npos)
      << out;
  // At a volume's top the rows are left as they were.
  EXPECT_EQ(panel->GetDriveChoice()->GetString(0), "stale");
  EXPECT_EQ(panel->GetPathText()->GetValue(), "C:\\");
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C");
  ExpectIdle();
}

TEST_F(DesDeleteTest, AFolderTreeIsRemovedTheListReReadAndTheRowsRewritten) {
  OpenInWork();
  ASSERT_EQ(panel->GetDesList()->GetDesCurrentPath(), "/mnt/C/work/");
  std::string dir = "/mnt/C/work/tree";
  mkdir(dir.c_str(), 0755);
  for (int level = 0; level < 10; ++level) {  // ten levels deep
    vt::WriteFile(dir + "/file" + std::to_string(level), std::string(100, 'x'));
    dir += "/sub";
    mkdir(dir.c_str(), 0755);
  }
  mkdir("/mnt/C/work/tree/.hidden", 0755);
  vt::WriteFile("/mnt/C/work/tree/.hidden/.dot", "d");
  vt::WriteFile("/mnt/C/work/keep.txt", "k");
  Reload();
  panel->GetDriveChoice()->SetString(0, "stale");
  panel->GetDriveChoice()->SetString(1, "stale too");
  const std::string out = DeleteSelected("tree");
  EXPECT_FALSE(Exists("/mnt/C/work/tree"));
  EXPECT_TRUE(Exists("/mnt/C/work/keep.txt"));
  EXPECT_TRUE(Exists("/mnt/C/docs/inner/deep.c"));
  EXPECT_EQ(RowOf("tree"), -1);
  EXPECT_GE(RowOf("keep.txt"), 0);
  EXPECT_GE(RowOf(".."), 0);
  EXPECT_NE(out.find("Delete Path = /mnt/C/work/tree\n"), std::string::npos) << out;
  // Below a volume's top the rows get the free space read again.
  EXPECT_EQ(panel->GetDriveChoice()->GetString(0), RowText(0));
  EXPECT_EQ(panel->GetDriveChoice()->GetString(1), RowText(2));
  EXPECT_EQ(panel->GetDriveChoice()->GetSelection(), 0);
  EXPECT_EQ(panel->GetPathText()->GetValue(), "C:\\work");
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C/work") << "no folder is chosen afterwards";
  ExpectIdle();
}

TEST_F(DesDeleteTest, NamesAShellWouldRunAreRemovedExactly) {
  OpenInWork();
  // Were a name handed to a shell, "touch X" would make X in the current folder.
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir("/mnt/C/work"), 0);
  const std::vector<std::string> names = {
      "a $(touch X)",      "it's \"quoted\"",  "two  blanks ",   "`touch X`",
      "semi;touch X",      "pipe|touch X",     "amp&touch X",    "bang!hash#tilde~",
      "star*q?[b]{c}",     "back\\slash",      "tab\there",      "-rf",
      "\xc3\x9c" "ber \xe6\x96\x87"};
  for (const std::string& n : names) vt::WriteFile("/mnt/C/work/" + n, "n");
  vt::WriteFile("/mnt/C/work/survivor", "s");
  Reload();
  for (const std::string& n : names) {
    DeleteSelected(wxString::FromUTF8(n.c_str()));
    EXPECT_FALSE(Exists("/mnt/C/work/" + n)) << n;
    EXPECT_EQ(RowOf(wxString::FromUTF8(n.c_str())), -1) << n;
  }
  // A newline and bytes that are not UTF-8 inside a folder that is deleted.
  mkdir("/mnt/C/work/odd", 0755);
  vt::WriteFile("/mnt/C/work/odd/line\nbreak $(touch X)", "n");
  vt::WriteFile("/mnt/C/work/odd/bad\xff\xfe name", "n");
  mkdir("/mnt/C/work/odd/-rf *", 0755);
  vt::WriteFile("/mnt/C/work/odd/-rf */;touch X", "n");
  Reload();
  DeleteSelected("odd");
  EXPECT_FALSE(Exists("/mnt/C/work/odd"));
  EXPECT_TRUE(Exists("/mnt/C/work/survivor"));
  EXPECT_FALSE(Exists("/mnt/C/work/X")) << "a name was run as a command";
  EXPECT_EQ(CountBelow("/mnt/C/work"), 1);
  ASSERT_EQ(chdir(cwd), 0);
  ExpectIdle();
}

TEST_F(DesDeleteTest, LinksAreRemovedAsLinksAndTheirTargetsSurvive) {
  OpenInWork();
  mkdir("/mnt/C/outside", 0755);
  vt::WriteFile("/mnt/C/outside/precious", "p");
  mkdir("/mnt/C/work/tree", 0755);
  ASSERT_EQ(symlink("/mnt/C/outside", "/mnt/C/work/tree/to-outside"), 0);
  ASSERT_EQ(symlink(".", "/mnt/C/work/tree/loop"), 0);
  ASSERT_EQ(symlink("/mnt/C/outside", "/mnt/C/work/outlink"), 0);
  Reload();
  DeleteSelected("tree");
  EXPECT_FALSE(Exists("/mnt/C/work/tree"));
  EXPECT_TRUE(Exists("/mnt/C/outside/precious"));
  // The link itself, selected.
  DeleteSelected("outlink");
  EXPECT_FALSE(Exists("/mnt/C/work/outlink"));
  EXPECT_TRUE(Exists("/mnt/C/outside/precious"));
  ExpectIdle();
}

TEST_F(DesDeleteTest, CancelWhileCountingRemovesNothing) {
  OpenInWork();
  MakeBig();
  vt::FakeFileOps fake;
  fake.Delay(vt::FakeFileOps::kLstat, 2, "*/big/f*");  // counting takes about 0.8 s
  bool pressed = false;
  vt::TimerCall cancel(50, [&] {
    if (!pressed && panel->m_deleteDialog && panel->m_deleteDialog->m_fileCount > 20) {
      pressed = true;
      CancelDialog(false);
    }
  });
  DeleteSelected("big");
  cancel.Stop();
  EXPECT_TRUE(pressed);
  EXPECT_EQ(fake.Count(vt::FakeFileOps::kUnlinkat), 0);
  EXPECT_EQ(CountBelow("/mnt/C/work/big"), 400);
  EXPECT_GE(RowOf("big"), 0);
  ExpectIdle();
}

TEST_F(DesDeleteTest, CancelWhileDeletingKeepsWhatWasRemovedAndLeavesTheRest) {
  for (bool closeBox : {false, true}) {
    SCOPED_TRACE(closeBox ? "close box" : "Cancel button");
    OpenInWork();
    MakeBig();
    panel->GetDriveChoice()->SetString(0, "stale");
    vt::FakeFileOps fake;
    fake.Delay(vt::FakeFileOps::kUnlinkat, 2, "*/big/f*");  // deleting takes about 0.8 s
    bool pressed = false;
    vt::TimerCall cancel(50, [&] {
      if (!pressed && fake.Count(vt::FakeFileOps::kUnlinkat) > 20) {
        pressed = true;
        CancelDialog(closeBox);
      }
    });
    DeleteSelected("big");
    cancel.Stop();
    EXPECT_TRUE(pressed);
    const int removed = fake.Count(vt::FakeFileOps::kUnlinkat);
    EXPECT_GT(removed, 20);
    EXPECT_LT(removed, 400);
    EXPECT_TRUE(Exists("/mnt/C/work/big"));
    EXPECT_EQ(CountBelow("/mnt/C/work/big"), 400 - removed);
    // Cancelled: the volume rows are read again all the same.
    EXPECT_EQ(panel->GetDriveChoice()->GetString(0), RowText(0));
    EXPECT_EQ(panel->GetDriveChoice()->GetSelection(), 0);
    ExpectIdle();
    panel->Destroy();
    panel = nullptr;
    vt::Pump(30);
    volumes.reset();
  }
}

TEST_F(DesDeleteTest, ARemovalThatFailsIsReportedOnce) {
  OpenInWork();
  mkdir("/mnt/C/work/tree", 0755);
  vt::WriteFile("/mnt/C/work/tree/gone1", "g");
  vt::WriteFile("/mnt/C/work/tree/locked", "l");
  vt::WriteFile("/mnt/C/work/tree/gone2", "g");
  Reload();
  vt::FakeFileOps fake;
  fake.Fail(vt::FakeFileOps::kUnlinkat, EACCES, "*/tree/locked");
  Select("tree");
  vt::SeenBox confirm, failure;
  {
    vt::StdoutCapture quiet;
    wxTEST_DIALOG(Press(ID_DES_DELETE), Answer(wxYES, &confirm), MessageSeen(&failure));
  }
  EXPECT_EQ(confirm.count, 1);
  EXPECT_EQ(failure.count, 1);
  EXPECT_EQ(failure.caption, DeleteFailureCaption());
  EXPECT_EQ(failure.style & (wxOK | wxICON_EXCLAMATION), wxOK | wxICON_EXCLAMATION);
  EXPECT_EQ(failure.parent, panel);
  EXPECT_NE(failure.message.Find("could not be deleted"), wxNOT_FOUND) << failure.message;
  EXPECT_NE(failure.message.Find("C:\\work\\tree\\locked (permission denied)"), wxNOT_FOUND)
      << failure.message;
  EXPECT_TRUE(Exists("/mnt/C/work/tree/locked"));
  EXPECT_FALSE(Exists("/mnt/C/work/tree/gone1"));
  EXPECT_FALSE(Exists("/mnt/C/work/tree/gone2"));
  ExpectIdle();
}

TEST_F(DesDeleteTest, TheHostWindowClosedWhileDeletingEndsTheDeleteQuietly) {
  OpenInWork();
  MakeBig();
  vt::FakeFileOps fake;
  fake.Delay(vt::FakeFileOps::kUnlinkat, 2, "*/big/f*");
  wxWeakRef<Des_Panel> alive(panel);
  bool closed = false;
  vt::TimerCall close(50, [&] {
    if (!closed && fake.Count(vt::FakeFileOps::kUnlinkat) > 20) {
      closed = true;
      parent->Destroy();
    }
  });
  DeleteSelected("big");
  close.Stop();
  EXPECT_TRUE(closed);
  vt::PumpUntil([&] { return !alive; });
  EXPECT_FALSE(alive) << "the panel went with its host";
  const int removed = fake.Count(vt::FakeFileOps::kUnlinkat);
  EXPECT_LT(removed, 400) << "the delete stopped when its window went";
  EXPECT_EQ(CountBelow("/mnt/C/work/big"), 400 - removed);
  panel = nullptr;
  parent = new wxFrame(nullptr, wxID_ANY, "host", wxPoint(0, 0), wxSize(300, 200));
}

}  // namespace

// Deleting on a volume that fails: the removals the file system refuses with
// an I/O error (the fault file system) and a volume mounted read-only. Each
// failure is named once at the end, everything else goes, nothing hangs.
TEST_F(DesDeleteTest, RemovalsThatTheDiskRefusesWithIoErrorsAreReportedOnce) {
  OpenInWork();
  char backing[] = "/tmp/vantori-faulty-XXXXXX";
  ASSERT_NE(mkdtemp(backing), nullptr);
  mkdir("/mnt/C/work/faulty", 0755);
  vt::WriteFile(std::string(backing) + "/tree/bad1", "b");
  vt::WriteFile(std::string(backing) + "/tree/fine", "f");
  vt::WriteFile(std::string(backing) + "/tree/sub/bad2", "b");
  {
    vt::FaultFs faulty(backing, "/mnt/C/work/faulty", "tree/*bad* unlink-error EIO\n");
    ASSERT_TRUE(faulty.IsMounted()) << faulty.Error();
    Reload();
    Enter("faulty");
    Select("tree");
    vt::SeenBox confirm, failure;
    {
      vt::StdoutCapture quiet;
      wxTEST_DIALOG(Press(ID_DES_DELETE), Answer(wxYES, &confirm), MessageSeen(&failure));
    }
    EXPECT_EQ(confirm.count, 1);
    EXPECT_EQ(failure.count, 1) << "one message for every failure";
    EXPECT_NE(failure.message.Find("C:\\work\\faulty\\tree\\bad1"), wxNOT_FOUND) << failure.message;
    EXPECT_NE(failure.message.Find("C:\\work\\faulty\\tree\\sub\\bad2"), wxNOT_FOUND)
        << failure.message;
    EXPECT_TRUE(Exists(std::string(backing) + "/tree/bad1"));
    EXPECT_TRUE(Exists(std::string(backing) + "/tree/sub/bad2"));
    EXPECT_FALSE(Exists(std::string(backing) + "/tree/fine"));
    ExpectIdle();
  }
  std::filesystem::remove_all(backing);
}

TEST_F(DesDeleteTest, DeletingOnAReadOnlyVolumeRemovesNothingAndSaysWhy) {
  OpenInWork();
  mkdir("/mnt/C/work/ro", 0755);
  ASSERT_EQ(mount("vantori-test-ro", "/mnt/C/work/ro", "tmpfs", 0, "size=1m"), 0) << strerror(errno);
  vt::WriteFile("/mnt/C/work/ro/old/a.txt", "a");
  ASSERT_EQ(mount(nullptr, "/mnt/C/work/ro", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0)
      << strerror(errno);
  Reload();
  Enter("ro");
  Select("old");
  vt::SeenBox confirm, failure;
  {
    vt::StdoutCapture quiet;
    wxTEST_DIALOG(Press(ID_DES_DELETE), Answer(wxYES, &confirm), MessageSeen(&failure));
  }
  EXPECT_EQ(failure.count, 1);
  EXPECT_NE(failure.message.Find("read-only"), wxNOT_FOUND) << failure.message;
  EXPECT_TRUE(Exists("/mnt/C/work/ro/old/a.txt"));
  ExpectIdle();
  EXPECT_EQ(umount2("/mnt/C/work/ro", MNT_DETACH), 0);
}
