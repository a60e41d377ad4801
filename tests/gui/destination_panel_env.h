// The destination panel on the test volumes (inside tests/run-in-mntns.sh):
// a fixture that opens it over a host window and drives its controls.
#pragma once

#include <memory>

#include <wx/frame.h>

#include "destination_env.h"
#include "destination/Des_PathInfo.h"
#include "disk/View_Disk_Info.h"
#include "display/VolumeText.h"
#include "settings/CCtrlConfig.h"
#include "widgets/keln_BitmapButton.h"

class DesPanelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    vt::InstallShippedSettings();
    parent = new wxFrame(nullptr, wxID_ANY, "host", wxPoint(0, 0), wxSize(300, 200));
    parent->Show();
    g_Des_PathInfo.m_sourcePath = "/mnt/D/from";
    g_Des_PathInfo.m_destPath = "untouched";
    g_Des_PathInfo.m_result = 0;
  }
  void TearDown() override {
    if (panel) panel->Destroy();
    parent->Destroy();
    vt::Pump(50);
    volumes.reset();
    // The panel loaded the layout without a frame: release it as the frame
    // would, so that the next test loads the settings afresh.
    settings::CCtrlConfig::UnInstance();
  }
  void Volumes(bool with = true) {
    volumes.reset(new vt::TestVolumes(with));
    if (with) vt::FillListTestVolume();
  }
  void Open() {
    panel = new Des_Panel(parent, -1, "Destination", wxPoint(252, 151), wxSize(500, 400),
                          wxDEFAULT_DIALOG_STYLE);
    panel->Show();
    ASSERT_TRUE(vt::PumpUntil([&] { return panel->IsShownOnScreen(); }));
    vt::Pump(100);
  }
  // A control by its command id (a bitmap button sends its clicks with an
  // id of its own).
  wxWindow* Control(int id) const {
    for (wxWindow* w : panel->GetChildren())
      if (auto* b = dynamic_cast<keln_BitmapButton*>(w))
        if (b->GetCommandId() == id) return b;
    return panel->FindWindow(id);
  }
  void Press(int id) {
    wxCommandEvent ev(wxEVT_BUTTON, id);
    ev.SetEventObject(Control(id));
    panel->GetEventHandler()->ProcessEvent(ev);
  }
  void Choose(int row) {
    panel->GetDriveChoice()->SetSelection(row);
    wxCommandEvent ev(wxEVT_COMBOBOX, ID_DES_DRIVE_CHOICE);
    ev.SetInt(row);
    ev.SetEventObject(panel->GetDriveChoice());
    panel->GetEventHandler()->ProcessEvent(ev);
  }
  // The panel destroyed itself: it is gone after the next idle time.
  bool Closed() {
    wxWeakRef<Des_Panel> ref(panel);
    const bool hidden = !panel->IsShown();
    vt::PumpUntil([&] { return !ref; });
    panel = nullptr;
    return hidden && !ref;
  }
  wxListCtrl* Rows() const { return panel->GetDesList()->GetListView(); }
  long RowOf(const wxString& text) const {
    for (long i = 0; i < Rows()->GetItemCount(); ++i)
      if (Rows()->GetItemText(i) == text) return i;
    return -1;
  }
  void Select(const wxString& text) {
    Rows()->SetItemState(RowOf(text), wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  }

  std::unique_ptr<vt::TestVolumes> volumes;
  wxFrame* parent = nullptr;
  Des_Panel* panel = nullptr;
};

// The volume row of an inventory volume as the panel writes it.
inline wxString RowText(int volume) {
  const VolumeInformation& v = g_AllDiskPartitionInf.m_Volume[volume];
  return DesVolumeRowText(v.DriveLetter, VolumeText(v.VolumeLabel), VolumeText(v.FreeText));
}

