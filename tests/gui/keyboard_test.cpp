// The main window used with the keyboard alone, as the real keys reach it
// (X key events through the toolkit): where the focus is after start, the
// Tab cycle and its stops, and a whole browse without the mouse.
#include <gtest/gtest.h>

#include <wx/button.h>
#include <wx/textctrl.h>
#include <wx/treectrl.h>
#include <wx/uiaction.h>

#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "browser_env.h"
#include "destination_panel_env.h"
#include "common/gui_testing.h"
#include "frame_on_volumes_env.h"
#include "main_window_env.h"
#include "timer_call.h"
#include "widgets_pixels.h"
#include "browser/L_listctrl.h"
#include "browser/my_DirTreeCtrl.h"
#include "browser/my_listctrl.h"
#include "destination/Des_listctrl.h"
#include "dialogs/Properties_dialog.h"
#include "shell/my_frame.h"

namespace {

// Real key presses and where they leave the keyboard focus.
class Keys {
 public:
  // Presses a key (with modifiers) as the user would and lets it take effect.
  void Key(int key, int modifiers = wxMOD_NONE) {
    sim.Char(key, modifiers);
    vt::Pump(60);
  }
  // Presses Tab (Shift+Tab with wxMOD_SHIFT) `presses` times; the stop that
  // has the focus after each press.
  std::vector<int> TabWalk(int presses, int modifiers, const std::function<int()>& focusedStop) {
    std::vector<int> stops;
    for (int i = 0; i < presses; ++i) {
      Key(WXK_TAB, modifiers);
      stops.push_back(focusedStop());
    }
    return stops;
  }
  // The index of the stop that holds the keyboard focus, -1 for none.
  static int FocusedStop(const std::vector<wxWindow*>& stops) {
    wxWindow* focus = wxWindow::FindFocus();
    for (size_t i = 0; i < stops.size(); ++i)
      if (focus != nullptr && (stops[i] == focus || stops[i]->IsDescendant(focus)))
        return static_cast<int>(i);
    return -1;
  }
  static long Row(wxListCtrl* rows, const wxString& name) {
    for (long i = 0; i < rows->GetItemCount(); ++i)
      if (rows->GetItemText(i) == name) return i;
    return -1;
  }
  static long FocusedRow(wxListCtrl* rows) {
    return rows->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_FOCUSED);
  }
  // Moves the list's current row to `name` with the arrow keys; true when
  // it got there.
  bool ArrowTo(wxListCtrl* rows, const wxString& name) {
    const long target = Row(rows, name);
    for (int guard = 0; target != -1 && guard < 50 && FocusedRow(rows) != target; ++guard)
      Key(FocusedRow(rows) < target ? WXK_DOWN : WXK_UP);
    return target != -1 && FocusedRow(rows) == target;
  }

  wxUIActionSimulator sim;
};

class KeyboardTest : public vt::FrameOnTestVolumes, public Keys {
 protected:
  void MakeFiles() override {
    mkdir("/mnt/C/docs", 0755);
    mkdir("/mnt/C/docs/letters", 0755);
    vt::WriteFile("/mnt/C/docs/a.txt", std::string(1000, 'a'));
    vt::WriteFile("/mnt/C/docs/letters/b.txt", std::string(2000, 'b'));
    vt::WriteFile("/mnt/C/top.txt", std::string(24, 't'));
  }
  void SetUp() override {
    FrameOnTestVolumes::SetUp();
    if (HasFatalFailure()) return;
    list = frame->GetListCtrl();
    tree = frame->GetTreeCtrl();
    stops = {tree, list, frame->GetPathBox(), frame->GetHelpButton(), frame->GetCopyButton(),
             frame->GetExitButton()};
  }

  int FocusedStop() const { return Keys::FocusedStop(stops); }
  long Row(const wxString& name) const { return Keys::Row(list->GetListCtrl(), name); }
  long FocusedRow() const { return Keys::FocusedRow(list->GetListCtrl()); }
  void ArrowTo(const wxString& name) { ASSERT_TRUE(Keys::ArrowTo(list->GetListCtrl(), name)) << name; }
  // From the drive list that start shows: Enter on the first drive (C:).
  void OpenCByKeys() {
    ASSERT_EQ(FocusedStop(), 1);
    ASSERT_EQ(list->GetCurrentListctrlPath(), "");
    ASSERT_EQ(FocusedRow(), 0);
    Key(WXK_RETURN);
    ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath() == "/mnt/C/"; }));
    vt::Pump(60);
  }
  Properties_dialog* OpenProperties() const { return vt::OpenPropertiesDialog(); }

  my_listctrl* list = nullptr;
  my_DirTreeCtrl* tree = nullptr;
  std::vector<wxWindow*> stops;
};

TEST_F(KeyboardTest, TheListHasTheFocusAfterStart) {
  EXPECT_EQ(FocusedStop(), 1);
  EXPECT_EQ(wxWindow::FindFocus(), list->GetListCtrl());
}

TEST_F(KeyboardTest, TabVisitsTreeListPathHelpCopyExitAndBack) {
  // In a folder, with the tree on that folder too, so that Copy stays
  // enabled whichever of the two had the focus last.
  OpenCByKeys();
  ArrowTo("docs");
  Key(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath() == "/mnt/C/docs/"; }));
  ASSERT_EQ(tree->GetPath(), "/mnt/C/docs");
  ASSERT_TRUE(frame->GetCopyButton()->IsEnabled());
  ASSERT_EQ(FocusedStop(), 1);
  EXPECT_EQ(TabWalk(6, wxMOD_NONE, [&] { return FocusedStop(); }),
            (std::vector<int>{2, 3, 4, 5, 0, 1}));
  EXPECT_EQ(TabWalk(6, wxMOD_SHIFT, [&] { return FocusedStop(); }),
            (std::vector<int>{0, 5, 4, 3, 2, 1}));
}

TEST_F(KeyboardTest, ADisabledCopyIsPassedOver) {
  // The drive list: Copy is disabled there.
  ASSERT_FALSE(frame->GetCopyButton()->IsEnabled());
  frame->GetHelpButton()->SetFocus();
  vt::Pump(50);
  ASSERT_EQ(FocusedStop(), 3);
  Key(WXK_TAB);
  EXPECT_EQ(FocusedStop(), 5);
  Key(WXK_TAB, wxMOD_SHIFT);
  EXPECT_EQ(FocusedStop(), 3);
}

// Every stop looks different on the screen while it has the focus. The focus
// moves by keys only, as the toolkit draws focus marks after keyboard use.
TEST_F(KeyboardTest, EveryStopShowsItsFocus) {
  OpenCByKeys();
  const int count = static_cast<int>(stops.size());
  for (int i = 0; i < count; ++i) {
    // Tab to the stop after this one: this stop as it looks without focus.
    for (int guard = 0; guard < count && FocusedStop() != (i + 1) % count; ++guard) Key(WXK_TAB);
    ASSERT_EQ(FocusedStop(), (i + 1) % count);
    vt::Pump(100);
    const wxImage without = vt::GrabClient(stops[i]);
    Key(WXK_TAB, wxMOD_SHIFT);
    ASSERT_EQ(FocusedStop(), i);
    vt::Pump(100);
    const wxImage with = vt::GrabClient(stops[i]);
    ASSERT_TRUE(without.IsOk() && with.IsOk()) << "the screen cannot be read";
    ASSERT_EQ(without.GetSize(), with.GetSize());
    const size_t bytes = static_cast<size_t>(with.GetWidth()) * with.GetHeight() * 3;
    EXPECT_NE(memcmp(without.GetData(), with.GetData(), bytes), 0)
        << "stop " << i << " looks the same with and without the focus";
  }
}

// A whole browse without the mouse: a drive, a folder, up again, and the
// Properties of a folder through the menu key.
TEST_F(KeyboardTest, BrowseWithKeysOnly) {
  // The drive list: the arrows move between the drives.
  Key(WXK_DOWN);
  EXPECT_EQ(FocusedRow(), 1);
  Key(WXK_UP);
  EXPECT_EQ(FocusedRow(), 0);
  OpenCByKeys();

  ArrowTo("docs");
  Key(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath() == "/mnt/C/docs/"; }));
  EXPECT_EQ(frame->GetPathBox()->GetValue(), "C:\\docs");
  EXPECT_NE(Row("a.txt"), -1);

  // Backspace goes up one level.
  Key(WXK_BACK);
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath() == "/mnt/C/"; }));

  // The menu key opens the list's menu; its Properties item by its mnemonic.
  ArrowTo("docs");
  ASSERT_EQ(list->GetListCtrl()->GetItemState(Row("docs"), wxLIST_STATE_SELECTED),
            wxLIST_STATE_SELECTED);
  bool menuSeen = false;
  vt::TimerCall chooser(150, [&] {
    if (menuSeen) return;
    menuSeen = true;
    sim.Char('p');
  });
  Key(WXK_MENU);
  ASSERT_TRUE(vt::PumpUntil([&] { return OpenProperties() != nullptr; }));
  chooser.Stop();
  Properties_dialog* d = OpenProperties();
  ASSERT_TRUE(vt::PumpUntil([&] { return d->m_status == 11; }));
  EXPECT_EQ(d->m_locationText->GetValue(), "C:\\");
  EXPECT_EQ(d->m_fileCount, 2);
  EXPECT_EQ(d->m_folderCount, 1);
  EXPECT_EQ(d->m_totalBytes, 3000u);
  // Escape closes it and the keyboard is back in the list.
  ASSERT_NE(wxWindow::FindFocus(), nullptr);
  EXPECT_EQ(wxGetTopLevelParent(wxWindow::FindFocus()), d);
  Key(WXK_ESCAPE);
  ASSERT_TRUE(vt::PumpUntil([&] { return OpenProperties() == nullptr; }));
  vt::Pump(100);
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_EQ(FocusedStop(), 1);
}

TEST_F(KeyboardTest, F5Refreshes) {
  OpenCByKeys();
  Key(WXK_F5);
  ASSERT_TRUE(vt::PumpUntil([&] { return list->GetCurrentListctrlPath().empty(); }));
  EXPECT_EQ(list->GetListCtrl()->GetItemCount(), 3) << "the drive list again";
}

// The destination panel with the keyboard alone.
class DesPanelKeyboardTest : public DesPanelTest, public Keys {
 protected:
  int FocusedStop() const {
    return Keys::FocusedStop({panel->GetDriveChoice(), panel->GetDesList(), Control(ID_DES_NEW),
                              Control(ID_DES_DELETE), Control(ID_DES_OK), Control(ID_DES_CANCEL)});
  }
  // Selects the row `name` with the arrow keys; a row that is current but
  // not selected is selected with Ctrl+Space.
  void ArrowTo(const wxString& name) {
    ASSERT_TRUE(Keys::ArrowTo(Rows(), name)) << name;
    const long target = RowOf(name);
    if (Rows()->GetItemState(target, wxLIST_STATE_SELECTED) == 0) Key(WXK_SPACE, wxMOD_CONTROL);
    ASSERT_EQ(Rows()->GetItemState(target, wxLIST_STATE_SELECTED), wxLIST_STATE_SELECTED);
  }
};

TEST_F(DesPanelKeyboardTest, TheListHasTheFocusAndTabGoesChoiceListButtons) {
  Volumes();
  Open();
  EXPECT_EQ(FocusedStop(), 1);
  EXPECT_EQ(TabWalk(6, wxMOD_NONE, [&] { return FocusedStop(); }),
            (std::vector<int>{2, 3, 4, 5, 0, 1}));
  EXPECT_EQ(TabWalk(6, wxMOD_SHIFT, [&] { return FocusedStop(); }),
            (std::vector<int>{0, 5, 4, 3, 2, 1}));
}

TEST_F(DesPanelKeyboardTest, PickAVolumeAndAFolderAndPressOk) {
  Volumes();
  Open();
  ASSERT_EQ(panel->GetVolumeRows().size(), 2u);
  // The choice: Down shows the next volume (E:), Up the first again (C:).
  Key(WXK_TAB, wxMOD_SHIFT);
  ASSERT_EQ(FocusedStop(), 0);
  Key(WXK_DOWN);
  ASSERT_TRUE(vt::PumpUntil([&] { return panel->GetDesList()->GetDesCurrentPath() == "/mnt/E/"; }));
  Key(WXK_UP);
  ASSERT_TRUE(vt::PumpUntil([&] { return panel->GetDesList()->GetDesCurrentPath() == "/mnt/C/"; }));
  // The list: into docs, up again with Backspace, then docs selected.
  Key(WXK_TAB);
  ASSERT_EQ(FocusedStop(), 1);
  ArrowTo("docs");
  Key(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return panel->GetDesList()->GetDesCurrentPath() == "/mnt/C/docs/"; }));
  Key(WXK_BACK);
  ASSERT_TRUE(vt::PumpUntil([&] { return panel->GetDesList()->GetDesCurrentPath() == "/mnt/C/"; }));
  ArrowTo("alpha");
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C/alpha");
  // Tab to OK and press it with Space.
  for (int guard = 0; guard < 6 && FocusedStop() != 4; ++guard) Key(WXK_TAB);
  ASSERT_EQ(FocusedStop(), 4);
  wxWeakRef<Des_Panel> open(panel);
  Key(WXK_SPACE);
  ASSERT_TRUE(vt::PumpUntil([&] { return g_Des_PathInfo.m_result == DES_RESULT_OK && !open; }));
  panel = nullptr;
}

TEST_F(DesPanelKeyboardTest, TheNewFolderAndDeleteButtonsTakeEnter) {
  Volumes();
  Open();
  Key(WXK_TAB);
  ASSERT_EQ(FocusedStop(), 2);
  // The expected dialog must appear: Enter pressed New.
  wxTEST_DIALOG({ Key(WXK_RETURN); }, wxExpectModal<wxTextEntryDialog>("", wxID_CANCEL));
  EXPECT_EQ(FocusedStop(), 1) << "no name given: the keyboard is back in the list";
  // Delete with nothing selected says so.
  Key(WXK_TAB);
  Key(WXK_TAB);
  ASSERT_EQ(FocusedStop(), 3);
  wxString message, caption;
  wxTEST_DIALOG({ Key(WXK_RETURN); }, vt::MessageBoxSeen(&message, &caption));
  EXPECT_EQ(message, "Please select a file or directory!");
}

}  // namespace
