#include "destination/Des_Panel.h"

#include <wx/intl.h>
#include <wx/msgdlg.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textdlg.h>

#include "common/FixedPosition.h"
#include "destination/Des_PathInfo.h"
#include "destination/Des_listctrl.h"
#include "disk/View_Disk_Info.h"
#include "settings/CCtrlConfig.h"
#include "settings/CONTROLINFO.h"
#include "widgets/CCtrlGenerate.h"
#include "widgets/keln_BitmapButton.h"

namespace {
CONTROLINFO& Info(int index) { return settings::CCtrlConfig::Instance()->GetCtrlInfo(index); }
}  // namespace

BEGIN_EVENT_TABLE(Des_Panel, wxDialog)
  EVT_COMBOBOX(ID_DES_DRIVE_CHOICE, Des_Panel::OnChoice)
  EVT_BUTTON(ID_DES_UP, Des_Panel::OnDesButtonUp)
  EVT_BUTTON(ID_DES_NEW, Des_Panel::OnDesButtonNew)
  EVT_BUTTON(ID_DES_DELETE, Des_Panel::OnDesButtonDel)
  EVT_BUTTON(ID_DES_OK, Des_Panel::OnDesButtonOk)
  EVT_BUTTON(ID_DES_CANCEL, Des_Panel::OnDesButtonCancel)
  EVT_CLOSE(Des_Panel::OnClose)
END_EVENT_TABLE()

Des_Panel::Des_Panel(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                     const wxSize& size, long style)
    : wxDialog(parent, id, title, pos, size, style),
      m_driveChoice(nullptr),
      m_desList(nullptr),
      m_pathText(nullptr),
      m_bitmapButton(nullptr),
      m_okButton(nullptr),
      m_cancelButton(nullptr),
      m_fixedPosition(pos) {
  // The volume rows: the source volume is left out unless it is the only one.
  const int n = g_AllDiskPartitionInf.GetCurrentParttionNum() & 0xffff;
  m_volumes = DesVolumeRows(g_AllDiskPartitionInf.m_Volume,
                            n < MAX_VOLUME_COUNT ? n : MAX_VOLUME_COUNT,
                            DesSourceVolumeIndex(g_Des_PathInfo.m_sourcePath));

  CONTROLINFO& box = Info(15);
  new wxStaticBox(this, wxID_ANY, box.GetText(0), box.GetRect().GetPosition(),
                  box.GetRect().GetSize());
  CCtrlGenerate::Crt_wxStaticText(this, wxID_ANY, Info(16));

  CONTROLINFO& choice = Info(17);
  m_driveChoice = new wxBitmapComboBox(this, ID_DES_DRIVE_CHOICE, wxEmptyString,
                                       choice.GetRect().GetPosition(),
                                       choice.GetRect().GetSize(), 0, nullptr, wxCB_READONLY);
  for (const DesVolumeRow& row : m_volumes) m_driveChoice->Append(row.text, choice.GetRes(row.icon));
  if (!m_volumes.empty()) m_driveChoice->SetSelection(0);

  m_bitmapButton = CCtrlGenerate::Crt_MyBitmapButton(this, ID_DES_UP, Info(18));
  m_bitmapButton = CCtrlGenerate::Crt_MyBitmapButton(this, ID_DES_NEW, Info(19));
  m_bitmapButton = CCtrlGenerate::Crt_MyBitmapButton(this, ID_DES_DELETE, Info(20));

  CONTROLINFO& label = Info(21);
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Path"), label.GetRect().GetPosition(),
                   label.GetRect().GetSize(), wxALIGN_RIGHT);
  // With no volume at all the field stays empty.
  m_pathText = new wxTextCtrl(this, ID_DES_PATH_TEXT,
                              m_volumes.empty() ? wxString() : m_volumes[0].rootText,
                              wxPoint(60, 53), wxSize(420, 25), wxTE_READONLY);

  wxArrayString roots;
  for (const DesVolumeRow& row : m_volumes) roots.Add(row.rootPath);
  CONTROLINFO& list = Info(22);
  m_desList = new Des_listctrl(this, roots, ID_DES_LIST, list.GetRect().GetPosition(),
                               list.GetRect().GetSize(), wxBORDER_SUNKEN, "Des_listctrl");

  CONTROLINFO& ok = Info(23);
  m_okButton = new wxButton(this, ID_DES_OK, wxGetTranslation("&OK"), ok.GetRect().GetPosition(),
                            ok.GetRect().GetSize());
  CONTROLINFO& cancel = Info(24);
  m_cancelButton = new wxButton(this, ID_DES_CANCEL, wxGetTranslation("&Cancel"),
                                cancel.GetRect().GetPosition(), cancel.GetRect().GetSize());
  // Escape presses Cancel.
  SetEscapeId(ID_DES_CANCEL);

  m_desList->SetPpathname(m_pathText);
}

bool Des_Panel::Show(bool show) { return common::ShowAtFixedPosition(this, show, m_fixedPosition); }

wxString Des_Panel::GetDestinationPath() {
  return DesDestinationPath(m_desList->GetDesCurrentPath(), m_desList->GetDesCopyDirName());
}

void Des_Panel::OnChoice(wxCommandEvent& WXUNUSED(event)) {
  m_desList->Return_Root(m_driveChoice->GetSelection());
}

void Des_Panel::OnDesButtonUp(wxCommandEvent& event) { m_desList->OnUpList(event); }

void Des_Panel::OnDesButtonNew(wxCommandEvent& WXUNUSED(event)) {
  wxTextEntryDialog dialog(this, "Folder Name:\n", "Create a new folder", wxString(),
                           wxTextEntryDialogStyle, wxDefaultPosition);
  if (dialog.ShowModal() != wxID_OK) {
    m_desList->SetFocus();
    return;
  }
  const wxString name = dialog.GetValue();
  if (name.empty()) {
    wxMessageBox(wxGetTranslation("The folder is error!"), wxGetTranslation("Create Folder error"),
                 wxOK | wxICON_EXCLAMATION, this);
    return;
  }
  m_desList->CreateFolder(name);
}

// The Delete button: deleting the selected entry is not built yet, so the
// button does nothing.
void Des_Panel::OnDesButtonDel(wxCommandEvent& WXUNUSED(event)) {}

void Des_Panel::Finish(int id) {
  g_Des_PathInfo.m_result = id;
  // Ending the modal run before Destroy: the dialog is then deleted after
  // ShowModal returned, never inside it.
  if (IsModal()) EndModal(id);
  Destroy();
}

void Des_Panel::OnDesButtonOk(wxCommandEvent& WXUNUSED(event)) { Finish(DES_RESULT_OK); }

void Des_Panel::OnDesButtonCancel(wxCommandEvent& WXUNUSED(event)) { Finish(DES_RESULT_CANCEL); }

void Des_Panel::OnClose(wxCloseEvent& WXUNUSED(event)) { Finish(DES_RESULT_CANCEL); }
