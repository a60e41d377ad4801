// Test environment of the source browser: volumes C: (FAT, "DATA"), D: (NTFS,
// labelled "Données" in the disk layer's Latin-1 bytes) on a fixed disk and
// E: (FAT, "STICK") on a removable one, mounted through the faked devices
// under the private /mnt, real files below them, and a window holding the source tree and list wired
// together as the main frame wires them.
#pragma once

#include <gtest/gtest.h>

#include <wx/frame.h>
#include <wx/listctrl.h>
#include <wx/menu.h>
#include <wx/eventfilter.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/splitter.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/time.h>

#include "browser/L_listctrl.h"
#include "browser/FolderListCtrl.h"
#include "browser/L_treectrl.h"
#include "browser/my_DirTreeCtrl.h"
#include "browser/my_TreeItemData.h"
#include "browser/my_listctrl.h"
#include "common/CustomEvents.h"
#include "common/fake_devices.h"
#include "common/test_support.h"
#include "dialogs/CInfoFrame.h"
#include "disk/View_Disk_Info.h"

namespace vt {

// Records pop-up menus instead of running GTK's menu loop.
struct MenuRecord {
  int popups = 0;
  std::vector<int> ids;
  std::vector<wxString> labels;
  std::vector<bool> enabled;
  void Take(wxMenu* menu) {
    ++popups;
    ids.clear();
    labels.clear();
    enabled.clear();
    for (wxMenuItem* item : menu->GetMenuItems()) {
      ids.push_back(item->GetId());
      labels.push_back(item->GetItemLabel());
      enabled.push_back(item->IsEnabled());
    }
  }
};

// Records every busy window that is shown while it exists: its text, parent
// and colour.
class BusyBoxWatcher : public wxEventFilter {
 public:
  struct Seen {
    wxString text;
    wxWindow* parent;
    wxColour colour;
  };
  BusyBoxWatcher() { wxEvtHandler::AddFilter(this); }
  ~BusyBoxWatcher() override { wxEvtHandler::RemoveFilter(this); }
  int FilterEvent(wxEvent& event) override {
    if (event.GetEventType() != wxEVT_SHOW) return Event_Skip;
    CInfoFrame* frame = dynamic_cast<CInfoFrame*>(event.GetEventObject());
    if (frame != nullptr && static_cast<wxShowEvent&>(event).IsShown())
      seen.push_back({frame->GetText()->GetLabel(), frame->GetParent(),
                      frame->GetBackgroundColour()});
    return Event_Skip;
  }
  // True when no busy window is on screen any more.
  static bool NoneShown() {
    for (wxWindow* w : wxTopLevelWindows)
      if (dynamic_cast<CInfoFrame*>(w) != nullptr && w->IsShown()) return false;
    return true;
  }
  std::vector<Seen> seen;
};

// A window class that records pop-up menus instead of showing them.
template <class Window>
class MenuRecording : public Window {
 public:
  MenuRecord menus;

 protected:
  bool DoPopupMenu(wxMenu* menu, int, int) override {
    menus.Take(menu);
    return true;
  }
};

using RecordingList = MenuRecording<my_listctrl>;
using RecordingTree = MenuRecording<my_DirTreeCtrl>;

// Mounts the test volumes; removes what the tests wrote under /mnt.
class TestVolumes {
 public:
  // D:'s label as the disk layer keeps it: "Données", one byte per character.
  static constexpr const char* kLatin1Label = "Donn\xe9" "es";

  explicit TestVolumes(bool withVolumes = true) {
    if (!InPrivateMnt()) return;
    ok_ = true;
    CleanMnt();
    if (withVolumes) {
      dirA_ = MakeTempDir("vantori-browser-a");
      dirB_ = MakeTempDir("vantori-browser-b");
      fake_.AddIdeDisk("/dev/hda",
                       MakeVolumesImage(dirA_, "volumes.img", {{'F', "DATA"}, {'N', kLatin1Label}}),
                       "TEST DISK");
      fake_.AddIdeDisk("/dev/hdb", MakeFatVolumesImage(dirB_, {"STICK"}), "STICK", true);
    }
    g_AllDiskPartitionInf.UI_FreeMemory();
    g_AllDiskPartitionInf.UI_InitDevice();
    g_AllDiskPartitionInf.GetDiskParttionInfo();
  }
  ~TestVolumes() {
    if (!ok_) return;
    g_AllDiskPartitionInf.UI_FreeMemory();
    CleanMnt();
    if (!dirA_.empty()) RemoveTree(dirA_);
    if (!dirB_.empty()) RemoveTree(dirB_);
  }
  bool Ok() const { return ok_; }
  FakeDevices& Fake() { return fake_; }

  static void CleanMnt() {
    for (const char* d : {"/mnt/C", "/mnt/D", "/mnt/E", "/mnt/F"}) RemoveTree(d);
  }

 private:
  bool ok_ = false;
  FakeDevices fake_;
  std::string dirA_, dirB_;
};

// The child item of `parent` labelled `label`, or an invalid id.
inline wxTreeItemId TreeChildNamed(wxTreeCtrl* tree, const wxTreeItemId& parent,
                                   const wxString& label) {
  wxTreeItemIdValue cookie;
  for (wxTreeItemId c = tree->GetFirstChild(parent, cookie); c.IsOk();
       c = tree->GetNextChild(parent, cookie))
    if (tree->GetItemText(c) == label) return c;
  return wxTreeItemId();
}

// Rows, cells and input of a window holding one file list (`folderList`):
// what every file list's tests drive.
class ListDriver {
 public:
  wxListCtrl* L() const { return folderList->GetListView(); }

  int Rows() const { return L()->GetItemCount(); }
  wxString Cell(long row, int column) const { return L()->GetItemText(row, column); }
  std::vector<wxString> Column0() const {
    std::vector<wxString> v;
    for (long i = 0; i < Rows(); ++i) v.push_back(Cell(i, 0));
    return v;
  }
  std::vector<long> Selected() const {
    std::vector<long> v;
    long i = -1;
    while ((i = L()->GetNextItem(i, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) != -1) v.push_back(i);
    return v;
  }
  long Focused() const { return L()->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED); }
  long RowOf(const wxString& text) const {
    for (long i = 0; i < Rows(); ++i)
      if (Cell(i, 0) == text) return i;
    return -1;
  }

  // Screen point in the middle of a row's name cell.
  wxPoint RowPoint(long row) const {
    wxRect r;
    L()->GetItemRect(row, r, wxLIST_RECT_LABEL);
    return L()->ClientToScreen(wxPoint(r.x + 10, r.y + r.height / 2));
  }
  // Screen point on a column header.
  wxPoint HeaderPoint(int column) const {
    int x = 0;
    for (int c = 0; c < column; ++c) x += L()->GetColumnWidth(c);
    return L()->ClientToScreen(wxPoint(x + 20, 8));
  }

  void Click(const wxPoint& p, int button = wxMOUSE_BTN_LEFT) {
    wxUIActionSimulator sim;
    sim.MouseMove(p);
    Pump(30);
    sim.MouseClick(button);
    Pump(80);
  }
  // Header clicks come far enough apart not to count as a double-click.
  void ClickHeader(const wxPoint& p) {
    Pump(vt::kDoubleClickMs + 60);
    Click(p);
  }
  void DoubleClick(const wxPoint& p) {
    // GTK counts a press within twice the double-click time of an earlier
    // double-click as a triple click: wait that long.
    Pump(2 * vt::kDoubleClickMs + 60);
    wxUIActionSimulator sim;
    sim.MouseMove(p);
    Pump(30);
    sim.MouseDblClick();
    Pump(120);
  }
  void Key(int key, int modifiers = wxMOD_NONE) {
    wxUIActionSimulator sim;
    sim.Char(key, modifiers);
    Pump(120);
  }

  // Activates a row as a double-click does.
  void Activate(long row) { DoubleClick(RowPoint(row)); }

  FolderListCtrl* folderList = nullptr;
};

// A top-level window with the path field, the tree (id 1002) and the list
// (id 1001) in a splitter; every custom command code that reaches the
// window is recorded.
class BrowserWindow : public ListDriver {
 public:
  BrowserWindow() {
    top = new wxFrame(nullptr, wxID_ANY, "browser", wxPoint(0, 0), wxSize(900, 600));
    panel = new wxPanel(top, wxID_ANY);
    path = new wxTextCtrl(panel, wxID_ANY, "c:\\", wxPoint(5, 5), wxSize(600, 26));
    splitter = new wxSplitterWindow(panel, wxID_ANY, wxPoint(5, 40), wxSize(880, 520), 0x300,
                                    "splitter");
    tree = new RecordingTree;
    tree->Create(splitter, 1002, "D:\\", wxDefaultPosition, wxDefaultSize, 0x90, wxString(), 0,
                 wxString());
    list = new RecordingList;
    list->Create(splitter, 1001, wxDefaultPosition, wxDefaultSize, wxBORDER_SUNKEN, wxString());
    folderList = list;
    splitter->SplitVertically(tree, list, 200);
    splitter->SetMinimumPaneSize(1);
    tree->SetListCtrlPoint(list);
    tree->SetTextCtrlPath(path);
    list->SetPDirTree(tree);
    top->Bind(wxEventTypeTag<wxCommandEvent>(wxEVT_MY_CUSTOM_COMMAND), [this](wxCommandEvent& e) { codes.push_back(e.GetId()); });
    top->Show();
    top->Raise();
    PumpUntil([this] { return top->IsShownOnScreen(); });
    Pump(150);
  }
  ~BrowserWindow() {
    top->Destroy();
    Pump(30);
  }

  wxTreeCtrl* T() const { return tree->GetTreeCtrl(); }

  wxPoint TreeItemPoint(const wxTreeItemId& id) const {
    wxRect r;
    T()->GetBoundingRect(id, r, true);
    return T()->ClientToScreen(wxPoint(r.x + r.width / 2, r.y + r.height / 2));
  }

  wxTreeItemId TreeChild(const wxTreeItemId& parent, const wxString& label) const {
    return TreeChildNamed(T(), parent, label);
  }
  std::vector<wxString> TreeChildren(const wxTreeItemId& parent) const {
    std::vector<wxString> v;
    wxTreeItemIdValue cookie;
    for (wxTreeItemId c = T()->GetFirstChild(parent, cookie); c.IsOk();
         c = T()->GetNextChild(parent, cookie))
      v.push_back(T()->GetItemText(c));
    return v;
  }
  my_TreeItemData* TreeData(const wxTreeItemId& id) const {
    return static_cast<my_TreeItemData*>(T()->GetItemData(id));
  }
  bool Posted(int code) const {
    for (int c : codes)
      if (c == code) return true;
    return false;
  }

  wxFrame* top;
  wxPanel* panel;
  wxTextCtrl* path;
  wxSplitterWindow* splitter;
  RecordingTree* tree;
  RecordingList* list;
  std::vector<int> codes;
};

// C: as the file-list tests find it: folders docs (with readme.txt and
// inner/deep.c) and alpha, files b.txt (1536 bytes), a.exe (511) and
// Makefile (512), each with a known modification time.
inline void FillListTestVolume() {
  const auto setTime = [](const char* path, time_t t) {
    struct timeval tv[2] = {{t, 0}, {t, 0}};
    utimes(path, tv);
  };
  mkdir("/mnt/C/docs", 0755);
  mkdir("/mnt/C/docs/inner", 0755);
  mkdir("/mnt/C/alpha", 0755);
  WriteFile("/mnt/C/docs/readme.txt", std::string(100, 'r'));
  WriteFile("/mnt/C/docs/inner/deep.c", "int x;");
  WriteFile("/mnt/C/b.txt", std::string(1536, 'b'));
  WriteFile("/mnt/C/a.exe", std::string(511, 'a'));
  WriteFile("/mnt/C/Makefile", std::string(512, 'm'));
  setTime("/mnt/C/b.txt", 1000000000);
  setTime("/mnt/C/a.exe", 1200000000);
  setTime("/mnt/C/Makefile", 1100000000);
  setTime("/mnt/C/docs", 1300000000);
  setTime("/mnt/C/alpha", 1250000000);
}

// Folder and file names that must list and open like any other: blanks,
// quotes, non-ASCII letters and a leading dot.
inline std::vector<wxString> OddNames() {
  return {wxString::FromUTF8("two words"), wxString::FromUTF8("it's \"q\""),
          wxString::FromUTF8("\xc3\x9c" "ber \xe6\x96\x87"), wxString::FromUTF8(".hidden dir")};
}

// The list's columns read heads, widths and alignments, in this order.
inline void ExpectColumns(wxListCtrl* list, const std::vector<wxString>& heads,
                          const std::vector<int>& widths, const std::vector<int>& aligns) {
  ASSERT_EQ(list->GetColumnCount(), static_cast<int>(heads.size()));
  for (size_t c = 0; c < heads.size(); ++c) {
    wxListItem col;
    col.SetMask(wxLIST_MASK_TEXT | wxLIST_MASK_WIDTH | wxLIST_MASK_FORMAT);
    list->GetColumn(static_cast<long>(c), col);
    EXPECT_EQ(col.GetText(), heads[c]) << "column " << c;
    EXPECT_EQ(col.GetWidth(), widths[c]) << "column " << c;
    EXPECT_EQ(col.GetAlign(), aligns[c]) << "column " << c;
  }
}

}  // namespace vt
