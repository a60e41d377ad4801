// Test environment of the destination side: a window holding the destination
// list alone (as the file-list tests drive every list), and the answers to
// the destination panel, the new-folder question and message boxes for
// wxTEST_DIALOG.
#pragma once

#include <functional>

#include "browser_env.h"
#include "common/gui_testing.h"
#include "destination/Des_Panel.h"
#include "destination/Des_listctrl.h"
#include "destination/LDes_listctrl.h"

#include <wx/stattext.h>
#include <wx/textdlg.h>

namespace vt {

// A destination list that records pop-up menus instead of showing them.
using RecordingDesList = MenuRecording<Des_listctrl>;

// The mounted volumes' top folders, in inventory order ("/mnt/C/", ...).
inline wxArrayString VolumeRoots() {
  wxArrayString roots;
  for (int i = 0; i < g_AllDiskPartitionInf.GetCurrentParttionNum(); ++i)
    roots.Add(wxString(g_AllDiskPartitionInf.m_Volume[i].MountPoint) + "/");
  return roots;
}

// A top-level window with a path field and the destination list (id 1051)
// over every mounted volume; every custom command code that reaches the
// window is recorded.
class DestListWindow : public ListDriver {
 public:
  DestListWindow() {
    top = new wxFrame(nullptr, wxID_ANY, "destination", wxPoint(0, 0), wxSize(600, 420));
    panel = new wxPanel(top, wxID_ANY);
    path = new wxTextCtrl(panel, wxID_ANY, "", wxPoint(5, 5), wxSize(500, 26), wxTE_READONLY);
    list = new RecordingDesList;
    list->Create(panel, VolumeRoots(), 1051, wxPoint(5, 40), wxSize(580, 340), wxBORDER_SUNKEN,
                 "Des_listctrl");
    list->SetPpathname(path);
    folderList = list;
    top->Bind(wxEventTypeTag<wxCommandEvent>(wxEVT_MY_CUSTOM_COMMAND),
              [this](wxCommandEvent& e) { codes.push_back(e.GetId()); });
    top->Show();
    top->Raise();
    PumpUntil([this] { return top->IsShownOnScreen(); });
    Pump(150);
  }
  ~DestListWindow() {
    top->Destroy();
    Pump(30);
  }

  wxFrame* top;
  wxPanel* panel;
  wxTextCtrl* path;
  RecordingDesList* list;
  std::vector<int> codes;
};

// The destination panel driven as a user drives it (events of its controls).
// Presses one of its buttons.
inline void PressPanelButton(Des_Panel* panel, int id) {
  wxCommandEvent ev(wxEVT_BUTTON, id);
  panel->GetEventHandler()->ProcessEvent(ev);
}
// Chooses row `row` of its volume chooser.
inline void ChoosePanelVolume(Des_Panel* panel, int row) {
  panel->GetDriveChoice()->SetSelection(row);
  wxCommandEvent ev(wxEVT_COMBOBOX, ID_DES_DRIVE_CHOICE);
  ev.SetInt(row);
  panel->GetEventHandler()->ProcessEvent(ev);
}
// Walks into `name` of its list as a double-click does.
inline void OpenPanelRow(Des_Panel* panel, const wxString& name) {
  wxListCtrl* rows = panel->GetDesList()->GetListView();
  for (long i = 0; i < rows->GetItemCount(); ++i) {
    if (rows->GetItemText(i) != name) continue;
    wxListEvent act(wxEVT_LIST_ITEM_ACTIVATED, FolderListCtrl::kListId);
    act.m_itemIndex = i;
    act.SetEventObject(rows);
    rows->GetEventHandler()->ProcessEvent(act);
    return;
  }
  ADD_FAILURE() << "no row " << name.utf8_string();
}

// A message box as it was shown: text, caption, style and parent.
struct SeenBox {
  wxString message;
  wxString caption;
  long style = 0;
  wxWindow* parent = nullptr;
  int count = 0;
};

}  // namespace vt

// A message box: records what it showed and answers OK.
class MessageSeen : public wxExpectModal<wxMessageDialog> {
 public:
  explicit MessageSeen(vt::SeenBox* seen) : wxExpectModal<wxMessageDialog>(wxID_OK), m_seen(seen) {}

 protected:
  int OnInvoked(wxMessageDialog* dlg) const override {
    m_seen->message = dlg->GetMessage();
    m_seen->caption = dlg->GetCaption();
    m_seen->style = dlg->GetMessageDialogStyle();
    m_seen->parent = dlg->GetParent();
    ++m_seen->count;
    return wxExpectModal<wxMessageDialog>::OnInvoked(dlg);
  }

 private:
  vt::SeenBox* m_seen;
};

// The new-folder question: records message and caption, types `value` and
// answers OK, or answers Cancel.
template <>
class wxExpectModal<wxTextEntryDialog> : public wxExpectModalBase<wxTextEntryDialog> {
 public:
  wxExpectModal(const wxString& value, int answer = wxID_OK, vt::SeenBox* seen = nullptr)
      : m_value(value), m_answer(answer), m_seen(seen) {}

 protected:
  int OnInvoked(wxTextEntryDialog* dlg) const override {
    if (m_seen != nullptr) {
      // The message is shown in static texts, one a line.
      m_seen->message.clear();
      for (wxWindow* w : dlg->GetChildren())
        if (dynamic_cast<wxStaticText*>(w)) m_seen->message += w->GetLabel();
      m_seen->caption = dlg->GetTitle();
      ++m_seen->count;
    }
    dlg->SetValue(m_value);
    return m_answer;
  }

 private:
  wxString m_value;
  int m_answer;
  vt::SeenBox* m_seen;
};

// The destination panel while its ShowModal runs: shows it on screen, runs
// the test's `drive` on it (choosing, walking, pressing its buttons) and
// returns what ShowModal is to return.
template <>
class wxExpectModal<Des_Panel> : public wxExpectModalBase<Des_Panel> {
 public:
  explicit wxExpectModal(std::function<int(Des_Panel*)> drive) : m_drive(std::move(drive)) {}

 protected:
  int OnInvoked(Des_Panel* dlg) const override {
    dlg->Show();
    dlg->Raise();
    vt::PumpUntil([&] { return dlg->IsShownOnScreen(); });
    vt::Pump(100);
    return m_drive(dlg);
  }

 private:
  std::function<int(Des_Panel*)> m_drive;
};
