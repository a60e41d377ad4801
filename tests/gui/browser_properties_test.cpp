// The properties dialog on its own (its fixed layout, the running figures the
// folder walk writes into it, how the walk stops) and reached from the
// context menus of the main frame's own tree and list.
#include "main_window_env.h"
#include "frame_on_volumes_env.h"
#include "browser_env.h"

#include <wx/button.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/timer.h>

#include <errno.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <wx/weakref.h>

#include "dialogs/PropertiesCounter.h"
#include "dialogs/Properties_dialog.h"
#include "common/fake_fileops.h"
#include "disk/DeviceSeam.h"
#include "shell/my_frame.h"
#include "timer_call.h"
#include "window_children.h"

using vt::ChildWithLabel;
using vt::TestVolumes;

namespace {

const long kDialogStyle = wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU;

using vt::OpenPropertiesDialog;

void DestroyPropertiesDialogs() {
  for (wxWindow* w : wxTopLevelWindows)
    if (dynamic_cast<Properties_dialog*>(w)) w->Destroy();
  vt::Pump(30);
}

class PropertiesDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    top = new wxFrame(nullptr, wxID_ANY, "owner", wxPoint(0, 0), wxSize(400, 300));
    top->Show();
    ASSERT_TRUE(vt::PumpUntil([&] { return top->IsShownOnScreen(); }));
    dialog = new Properties_dialog(top, wxID_ANY, "Properties", wxPoint(320, 230),
                                   wxSize(350, 275), kDialogStyle);
  }
  void TearDown() override {
    DestroyPropertiesDialogs();
    top->Destroy();
    vt::Pump(30);
  }
  wxFrame* top = nullptr;
  Properties_dialog* dialog = nullptr;
};

// A folder with `folders` empty subfolders and `files` files of `bytes` bytes.
std::string MakeCountTree(const char* name, int folders, int files, size_t bytes) {
  const std::string root = std::string("/mnt/C/") + name;
  mkdir(root.c_str(), 0755);
  for (int i = 0; i < folders; ++i) {
    char p[128];
    snprintf(p, sizeof p, "%s/d%03d", root.c_str(), i);
    mkdir(p, 0755);
  }
  for (int i = 0; i < files; ++i) {
    char p[128];
    snprintf(p, sizeof p, "%s/f%03d.bin", root.c_str(), i);
    vt::WriteFile(p, std::string(bytes, 'x'));
  }
  return root;
}

}  // namespace

TEST_F(PropertiesDialogTest, FixedLayoutTextsAndStartValues) {
  EXPECT_EQ(dialog->GetBackgroundColour(), wxColour(248, 248, 248));
  dialog->Show();
  ASSERT_TRUE(vt::PumpUntil([&] { return dialog->IsShownOnScreen(); }));
  vt::Pump(100);
  EXPECT_EQ(dialog->GetPosition(), wxPoint(320, 230)) << "not centred on its parent";
  EXPECT_EQ(dialog->GetSize(), wxSize(350, 275));
  EXPECT_EQ(dialog->m_status, -1);
  EXPECT_FALSE(dialog->m_cancel);
  EXPECT_EQ(dialog->m_fileCount, 0);
  EXPECT_EQ(dialog->m_folderCount, 0);
  EXPECT_EQ(dialog->m_totalBytes, 0u);

  wxStaticBox* box = ChildWithLabel<wxStaticBox>(dialog, "Basic");
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->GetPosition(), wxPoint(10, 10));
  EXPECT_EQ(box->GetSize(), wxSize(330, 195));

  const char* labels[] = {"Location: ", "Files: ", "Folder: ", "Size: "};
  const int ys[] = {45, 85, 125, 165};
  for (int i = 0; i < 4; ++i) {
    wxStaticText* t = ChildWithLabel<wxStaticText>(dialog, labels[i]);
    ASSERT_NE(t, nullptr) << labels[i];
    EXPECT_EQ(t->GetPosition(), wxPoint(30, ys[i])) << labels[i];
  }
  EXPECT_EQ(dialog->m_locationText->GetPosition(), wxPoint(90, 43));
  EXPECT_EQ(dialog->m_locationText->GetSize().x, 200);
  EXPECT_FALSE(dialog->m_locationText->IsEditable());
  EXPECT_EQ(dialog->m_filesText->GetPosition(), wxPoint(90, 85));
  EXPECT_EQ(dialog->m_folderText->GetPosition(), wxPoint(90, 125));
  EXPECT_EQ(dialog->m_sizeText->GetPosition(), wxPoint(90, 165));
  for (wxStaticText* v : {dialog->m_filesText, dialog->m_folderText, dialog->m_sizeText})
    EXPECT_EQ(v->GetSize(), wxSize(130, 25));

  wxButton* close = ChildWithLabel<wxButton>(dialog, "&Close");
  ASSERT_NE(close, nullptr);
  EXPECT_EQ(close->GetId(), 204);
  EXPECT_EQ(close->GetPosition(), wxPoint(250, 230));
  EXPECT_EQ(close->GetSize(), wxSize(80, 28));
}

TEST_F(PropertiesDialogTest, RunningFiguresEvery18thFolderAnd134thFile) {
  ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
  TestVolumes volumes;
  // 17 folders and 133 files: the fields are never written by the walk.
  const std::string few = MakeCountTree("few", 17, 133, 1024);
  dialog->ShowRunningCounts();
  EXPECT_EQ(dialog->m_folderText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_sizeText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_filesText->GetLabel(), "0");
  EXPECT_EQ(CountDirFileInfo(dialog, few), 1);
  EXPECT_EQ(dialog->m_folderCount, 17);
  EXPECT_EQ(dialog->m_fileCount, 133);
  EXPECT_EQ(dialog->m_totalBytes, 133u * 1024u);
  EXPECT_EQ(dialog->m_folderText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_filesText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_sizeText->GetLabel(), "0");

  // One more of each: the 18th folder and the 134th file write their fields.
  const std::string more = MakeCountTree("more", 1, 1, 1024);
  EXPECT_EQ(CountDirFileInfo(dialog, more), 1);
  EXPECT_EQ(dialog->m_folderText->GetLabel(), "18");
  EXPECT_EQ(dialog->m_filesText->GetLabel(), "134");
  EXPECT_EQ(dialog->m_sizeText->GetLabel(), "0 MB (137,216)");
  // Every call stored the result of the level below it.
  EXPECT_EQ(dialog->m_status, 1);
}

TEST_F(PropertiesDialogTest, WalkStopsOnTheCancelFlagAndOnAStoppedStatus) {
  ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
  TestVolumes volumes;
  const std::string tree = MakeCountTree("tree", 3, 3, 10);
  // A stop left in the status ends every later call at once.
  dialog->m_status = 10;
  EXPECT_EQ(CountDirFileInfo(dialog, tree), 10);
  EXPECT_EQ(CountDirFileInfo(dialog, tree + "/f000.bin"), 10);
  EXPECT_EQ(dialog->m_fileCount, 0);
  EXPECT_EQ(dialog->m_folderCount, 0);
  // The cancel flag is read before each entry of a folder: nothing counted.
  dialog->m_status = -1;
  dialog->m_cancel = true;
  EXPECT_EQ(CountDirFileInfo(dialog, tree), 10);
  EXPECT_EQ(dialog->m_fileCount, 0);
  EXPECT_EQ(dialog->m_folderCount, 0);
  // A path naming a file is counted before any entry is read.
  EXPECT_EQ(CountDirFileInfo(dialog, tree + "/f000.bin"), 1);
  EXPECT_EQ(dialog->m_fileCount, 1);
  EXPECT_EQ(dialog->m_totalBytes, 10u);
}

TEST_F(PropertiesDialogTest, CloseButtonClickedWithTheMouseDestroysTheDialog) {
  top->Enable(false);
  dialog->Show();
  ASSERT_TRUE(vt::PumpUntil([&] { return dialog->IsShownOnScreen(); }));
  vt::Pump(100);
  wxButton* close = ChildWithLabel<wxButton>(dialog, "&Close");
  ASSERT_NE(close, nullptr);
  const wxRect r = close->GetScreenRect();
  wxUIActionSimulator sim;
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(50);
  sim.MouseClick();
  EXPECT_TRUE(vt::PumpUntil([] { return OpenPropertiesDialog() == nullptr; }));
  EXPECT_TRUE(top->IsEnabled()) << "closing gives the owner back its input";
  dialog = nullptr;
}

// ---- through the main frame ------------------------------------------------

namespace {

class PropertiesFromMenusTest : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    mkdir("/mnt/C/pics", 0755);
    mkdir("/mnt/C/pics/2020", 0755);
    vt::WriteFile("/mnt/C/pics/a.jpg", std::string(3000, 'a'));
    vt::WriteFile("/mnt/C/pics/2020/b.jpg", std::string(2000, 'b'));
    vt::WriteFile("/mnt/C/notes.txt", std::string(700, 'n'));
  }
  // Chooses a context-menu entry of a control, as the pop-up menu does.
  static void ChooseMenuEntry(wxWindow* control, int id) {
    wxCommandEvent ev(wxEVT_MENU, id);
    ev.SetEventObject(control);
    control->GetEventHandler()->ProcessEvent(ev);
  }
};

}  // namespace

TEST_F(PropertiesFromMenusTest, TreeMenuPropertiesCountsTheSelectedFolder) {
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C/pics");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/pics");
  ChooseMenuEntry(tree, MYCMD_TREE_PROPERTIES);
  // The tree posts the code; it travels up to the frame, which counts.
  ASSERT_TRUE(vt::PumpUntil([] {
    Properties_dialog* d = OpenPropertiesDialog();
    return d != nullptr && d->m_status == 11;
  }));
  Properties_dialog* d = OpenPropertiesDialog();
  EXPECT_EQ(d->GetTitle(), "Properties");
  EXPECT_EQ(d->GetParent(), frame);
  EXPECT_EQ(d->GetWindowStyleFlag() & kDialogStyle, kDialogStyle);
  EXPECT_EQ(d->GetSize(), wxSize(350, 275));
  EXPECT_EQ(d->GetPosition(), wxPoint(320, 230));
  EXPECT_EQ(frame->GetPropertiesDialog(), d);
  EXPECT_FALSE(frame->IsEnabled());
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\pics");
  EXPECT_EQ(d->m_filesText->GetLabel(), "2");
  EXPECT_EQ(d->m_folderText->GetLabel(), "1");
  EXPECT_EQ(d->m_sizeText->GetLabel(), "0 MB (5,000)");
  d->Close();
  EXPECT_TRUE(vt::PumpUntil([] { return OpenPropertiesDialog() == nullptr; }));
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_EQ(frame->GetPropertiesDialog(), nullptr) << "no pointer to the destroyed dialog";
}

TEST_F(PropertiesFromMenusTest, ListMenuPropertiesCountsTheSelectedRows) {
  my_listctrl* list = frame->GetListCtrl();
  list->Copy_Refresh_Filelisttabel("/mnt/C");
  ASSERT_EQ(list->GetCurrentListctrlPath(), "/mnt/C/");
  wxListCtrl* rows = list->GetListCtrl();
  for (long i = 0; i < rows->GetItemCount(); ++i)
    if (rows->GetItemText(i) == "pics" || rows->GetItemText(i) == "notes.txt")
      rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  ASSERT_EQ(rows->GetSelectedItemCount(), 2);
  ChooseMenuEntry(list, MYCMD_LIST_PROPERTIES);
  ASSERT_TRUE(vt::PumpUntil([] {
    Properties_dialog* d = OpenPropertiesDialog();
    return d != nullptr && d->m_status == 11;
  }));
  Properties_dialog* d = OpenPropertiesDialog();
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\");
  EXPECT_EQ(d->m_filesText->GetLabel(), "3");
  EXPECT_EQ(d->m_folderText->GetLabel(), "1");
  EXPECT_EQ(d->m_sizeText->GetLabel(), "0 MB (5,700)");
  EXPECT_FALSE(frame->IsEnabled());
}

TEST_F(PropertiesFromMenusTest, ListMenuSelectAllSelectsEveryRowButDotDot) {
  my_listctrl* list = frame->GetListCtrl();
  list->Copy_Refresh_Filelisttabel("/mnt/C");
  ChooseMenuEntry(list, MYCMD_LIST_SELECT_ALL);
  wxListCtrl* rows = list->GetListCtrl();
  ASSERT_TRUE(vt::PumpUntil([&] { return rows->GetSelectedItemCount() > 0; }));
  EXPECT_EQ(rows->GetSelectedItemCount(), rows->GetItemCount() - 1);
  EXPECT_EQ(rows->GetItemState(0, wxLIST_STATE_SELECTED), 0);
}

namespace {

// Presses the Close button of the open properties dialog with the mouse once
// the count has passed `threshold` folders; the timer runs during the
// count's own yields, as user input does.
class CloseDuringCount : public wxTimer {
 public:
  explicit CloseDuringCount(int threshold) : threshold_(threshold) { Start(5); }
  void Notify() override {
    Properties_dialog* d = OpenPropertiesDialog();
    if (d == nullptr || !d->IsShown()) return;
    lastSeen = d->m_folderCount;
    if (clicked || d->m_folderCount < threshold_) return;
    clicked = true;
    countAtClick = d->m_folderCount;
    labelAtClick = d->m_folderText->GetLabel();
    countingAtClick = d->IsCounting();
    wxWindow* close = d->FindWindow(204);
    const wxRect r = close->GetScreenRect();
    wxUIActionSimulator sim;
    sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
    sim.MouseClick();
  }
  bool clicked = false;
  bool countingAtClick = false;
  int countAtClick = -1;
  int lastSeen = -1;
  wxString labelAtClick;

 private:
  int threshold_;
};

// 50 x 50 folders with a file each under /mnt/C/many.
void MakeManyFolders() {
  for (int i = 0; i < 50; ++i) {
    for (int j = 0; j < 50; ++j) {
      char p[96];
      snprintf(p, sizeof p, "/mnt/C/many/d%02d/e%02d/f.txt", i, j);
      vt::WriteFile(p, "x");
    }
  }
}

}  // namespace

TEST_F(PropertiesFromMenusTest, CloseWithTheMouseStopsALongCountOfTheTreeFolder) {
  MakeManyFolders();
  const int total = 50 + 50 * 50;
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C/many");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/many");
  {
    // The dialog must be where the mouse will go.
    CloseDuringCount closer(40);
    ChooseMenuEntry(tree, MYCMD_TREE_PROPERTIES);
    ASSERT_TRUE(vt::PumpUntil([&] { return closer.clicked && OpenPropertiesDialog() == nullptr; }))
        << "clicked " << closer.clicked << " at " << closer.countAtClick;
    EXPECT_TRUE(closer.countingAtClick);
    EXPECT_GE(closer.countAtClick, 40);
    EXPECT_NE(closer.labelAtClick, "0") << "the folder field follows the count";
    EXPECT_LT(closer.lastSeen, total) << "the count stopped before the end";
  }
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_EQ(frame->GetPropertiesDialog(), nullptr);
}

TEST_F(PropertiesFromMenusTest, CloseWithTheMouseStopsALongCountOfTheListSelection) {
  MakeManyFolders();
  my_listctrl* list = frame->GetListCtrl();
  list->Copy_Refresh_Filelisttabel("/mnt/C");
  wxListCtrl* rows = list->GetListCtrl();
  for (long i = 0; i < rows->GetItemCount(); ++i)
    if (rows->GetItemText(i) == "many" || rows->GetItemText(i) == "pics")
      rows->SetItemState(i, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  ASSERT_EQ(rows->GetSelectedItemCount(), 2);
  {
    CloseDuringCount closer(40);
    ChooseMenuEntry(list, MYCMD_LIST_PROPERTIES);
    ASSERT_TRUE(vt::PumpUntil([&] { return closer.clicked && OpenPropertiesDialog() == nullptr; }))
        << "clicked " << closer.clicked << " at " << closer.countAtClick;
    EXPECT_TRUE(closer.countingAtClick);
    EXPECT_LT(closer.lastSeen, 50 + 50 * 50 + 1);
  }
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_EQ(frame->GetPropertiesDialog(), nullptr);
}

namespace {

// Types keys into whatever pop-up menu is open, from a timer that runs in the
// menu's own event loop; gives up with Escape if the menu does not answer.
class MenuTyper : public wxTimer {
 public:
  explicit MenuTyper(int key) : key_(key) { Start(250); }
  void Notify() override {
    wxUIActionSimulator sim;
    ++ticks;
    if (ticks == 1) {
      sim.Char(key_);
    } else if (ticks >= 8) {
      sim.Char(WXK_ESCAPE);
      Stop();
    }
  }
  int ticks = 0;

 private:
  int key_;
};

wxPoint ScreenCentre(wxWindow* w, const wxRect& r) {
  return w->ClientToScreen(wxPoint(r.x + r.width / 2, r.y + r.height / 2));
}

}  // namespace

TEST_F(PropertiesFromMenusTest, RightClickOnAListRowAndPropertiesFromTheRealMenu) {
  my_listctrl* list = frame->GetListCtrl();
  list->Copy_Refresh_Filelisttabel("/mnt/C");
  wxListCtrl* rows = list->GetListCtrl();
  long pics = -1;
  for (long i = 0; i < rows->GetItemCount(); ++i)
    if (rows->GetItemText(i) == "pics") pics = i;
  ASSERT_GT(pics, 0);
  wxRect r;
  rows->GetItemRect(pics, r, wxLIST_RECT_LABEL);
  wxUIActionSimulator sim;
  sim.MouseMove(ScreenCentre(rows, r));
  vt::Pump(30);
  sim.MouseClick();
  ASSERT_TRUE(vt::PumpUntil([&] { return rows->GetSelectedItemCount() == 1; }));
  vt::Pump(100);
  {
    MenuTyper typer('p');  // the mnemonic of "&Properties"
    sim.MouseClick(wxMOUSE_BTN_RIGHT);
    ASSERT_TRUE(vt::PumpUntil([] {
      Properties_dialog* d = OpenPropertiesDialog();
      return d != nullptr && d->m_status == 11;
    })) << "menu answered after " << typer.ticks << " ticks";
  }
  Properties_dialog* d = OpenPropertiesDialog();
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\");
  EXPECT_EQ(d->m_filesText->GetLabel(), "2");
  EXPECT_EQ(d->m_folderText->GetLabel(), "1");
  EXPECT_EQ(d->m_sizeText->GetLabel(), "0 MB (5,000)");
}

TEST_F(PropertiesFromMenusTest, RightClickOnATreeFolderAndPropertiesFromTheRealMenu) {
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C");
  wxTreeCtrl* t = tree->GetTreeCtrl();
  wxTreeItemId c = t->GetSelection();
  ASSERT_TRUE(c.IsOk());
  t->Expand(c);
  vt::Pump(50);
  wxTreeItemId pics;
  wxTreeItemIdValue cookie;
  for (wxTreeItemId i = t->GetFirstChild(c, cookie); i.IsOk(); i = t->GetNextChild(c, cookie))
    if (t->GetItemText(i) == "pics") pics = i;
  ASSERT_TRUE(pics.IsOk());
  wxRect r;
  ASSERT_TRUE(t->GetBoundingRect(pics, r, true));
  wxUIActionSimulator sim;
  sim.MouseMove(ScreenCentre(t, r));
  vt::Pump(30);
  {
    MenuTyper typer('p');
    sim.MouseClick(wxMOUSE_BTN_RIGHT);
    ASSERT_TRUE(vt::PumpUntil([] {
      Properties_dialog* d = OpenPropertiesDialog();
      return d != nullptr && d->m_status == 11;
    })) << "menu answered after " << typer.ticks << " ticks";
  }
  EXPECT_EQ(t->GetSelection(), pics) << "the menu selects its item";
  Properties_dialog* d = OpenPropertiesDialog();
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\pics");
  EXPECT_EQ(d->m_filesText->GetLabel(), "2");
  EXPECT_EQ(d->m_folderText->GetLabel(), "1");
}

// ---- the window going away, or Close, during a count's yield ---------------

namespace {

// The device table's umount, wrapped: for /mnt/C it first unmounts the real
// file system the test mounted there, so the kernel says whether anything
// (an open folder, a working directory) still holds the volume.
struct RealUmountOfC {
  static int (*fakeUmount)(const char*);
  static int result;
  static int error;
  static int foldersOpen;
  static int Umount(const char* target) {
    if (std::string(target) == "/mnt/C") {
      foldersOpen = vt::FakeFileOps::Current() ? vt::FakeFileOps::Current()->OpenFolders() : -1;
      result = umount(target);
      error = errno;
    }
    return fakeUmount(target);
  }
  RealUmountOfC() {
    fakeUmount = g_DeviceSeam.Umount;
    result = -2;
    error = 0;
    foldersOpen = -1;
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
int RealUmountOfC::foldersOpen = -1;

}  // namespace

TEST_F(PropertiesFromMenusTest, ClosingTheHostWindowDuringACountEndsTheWalkAndUnmounts) {
  // C: on a real file system (a tmpfs over its mount point).
  ASSERT_EQ(mount("vantori-test-c", "/mnt/C", "tmpfs", 0, "size=64m"), 0) << strerror(errno);
  RealUmountOfC umountC;
  MakeManyFolders();
  vt::FakeFileOps files;
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C/many");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/many");
  wxWeakRef<wxFrame> host(top);
  wxWeakRef<my_frame> module(frame);
  wxWeakRef<Properties_dialog> dialog;
  int openedAtClose = -1;
  {
    vt::TimerCall closer(1, [&] {
      Properties_dialog* d = OpenPropertiesDialog();
      if (openedAtClose >= 0 || d == nullptr || !d->IsCounting() || d->m_folderCount < 40) return;
      dialog = d;
      openedAtClose = files.Count(vt::FakeFileOps::kOpendir);
      // What the host does when its window is closed: the module's destroy
      // (the frame's Destroy), then its own Destroy.
      module->Destroy();
      host->Destroy();
    });
    ChooseMenuEntry(tree, 403);
    ASSERT_TRUE(vt::PumpUntil([&] { return openedAtClose >= 0 && !host && !module; }, 20000))
        << "closed " << (openedAtClose >= 0);
  }
  top = nullptr;
  frame = nullptr;
  EXPECT_FALSE(dialog) << "the dialog went with the frame";
  EXPECT_LE(files.Count(vt::FakeFileOps::kOpendir) - openedAtClose, 1)
      << "the walk ended at the yield where the window went";
  EXPECT_LT(files.Count(vt::FakeFileOps::kOpendir), 50 * 50 / 2);
  EXPECT_EQ(files.OpenFolders(), 0);
  EXPECT_EQ(umountC.foldersOpen, 0) << "no folder of the walk open at the unmount";
  EXPECT_EQ(umountC.result, 0) << "umount /mnt/C: " << strerror(umountC.error);
}

TEST_F(PropertiesFromMenusTest, CloseDuringTheLastYieldOfACountThatEndsNormallyLeavesNoDialog) {
  mkdir("/mnt/C/one", 0755);
  mkdir("/mnt/C/one/only", 0755);
  vt::FakeFileOps files;
  // The only entry is examined slowly, so the timer is due at the yield that
  // follows it: the count's last, after which no entry reads the cancel flag.
  files.Delay(vt::FakeFileOps::kLstat, 30, "*/one/only");
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C/one");
  ASSERT_EQ(tree->GetPath(), "/mnt/C/one");
  bool pressed = false, countingAtPress = false;
  {
    vt::TimerCall closer(5, [&] {
      Properties_dialog* d = OpenPropertiesDialog();
      if (pressed || d == nullptr || d->m_folderCount < 1) return;
      pressed = true;
      countingAtPress = d->IsCounting();
      wxCommandEvent close(wxEVT_BUTTON, 204);
      d->GetEventHandler()->ProcessEvent(close);
    });
    ChooseMenuEntry(tree, 403);
    ASSERT_TRUE(vt::PumpUntil([&] { return pressed; }));
    vt::Pump(100);
  }
  EXPECT_TRUE(countingAtPress) << "Close came while the count ran";
  EXPECT_EQ(OpenPropertiesDialog(), nullptr) << "no hidden dialog stays behind";
  EXPECT_EQ(frame->GetPropertiesDialog(), nullptr);
  EXPECT_TRUE(frame->IsEnabled());
}
