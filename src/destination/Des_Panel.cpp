#include "destination/Des_Panel.h"

#include <wx/intl.h>
#include <wx/msgdlg.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textdlg.h>
#include <wx/weakref.h>

#include "common/FixedPosition.h"
#include "destination/DeleteFileProgress.h"
#include "destination/DeleteFile_dialog.h"
#include "destination/Des_PathInfo.h"
#include "destination/Des_listctrl.h"
#include "disk/View_Disk_Info.h"
#include "display/VolumeText.h"
#include "fileops/ShellEscape.h"
#include "fileops/WalkStatus.h"
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
  EVT_CHAR_HOOK(Des_Panel::OnCharHook)
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
      m_deleteDialog(nullptr),
      m_fixedPosition(pos),
      m_deleteRun(nullptr) {
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
  keln_BitmapButton* newButton = m_bitmapButton =
      CCtrlGenerate::Crt_MyBitmapButton(this, ID_DES_NEW, Info(19));
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

  for (wxWindow* stop : std::initializer_list<wxWindow*>{m_driveChoice, m_desList, newButton,
                                                        m_bitmapButton, m_okButton,
                                                        m_cancelButton})
    m_tabCycle.Add(stop);
}

void Des_Panel::OnCharHook(wxKeyEvent& event) {
  if (!m_tabCycle.HandleKey(event)) event.Skip();
}

bool Des_Panel::Show(bool show) {
  const bool changed = common::ShowAtFixedPosition(this, show, m_fixedPosition);
  // The keyboard starts in the list, as in the main window.
  if (changed && show) m_desList->SetFocus();
  return changed;
}

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

void Des_Panel::OnDesButtonDel(wxCommandEvent& WXUNUSED(event)) {
  if (m_deleteDialog) return;  // a delete is running already
  const wxString name = m_desList->GetDesDeleteDirFileName();
  if (m_desList->GetSelectedItemCount() == 0 || name.empty()) {
    wxMessageBox(wxGetTranslation("Please select a file or directory!"),
                 wxGetTranslation("Error Selecting File or Folder"), wxOK);
    m_desList->SetFocus();
    return;
  }
  if (wxMessageBox(wxGetTranslation("If you delete it data will be lost. Do you want to continue?"),
                   wxGetTranslation("Warning"), wxYES_NO | wxNO_DEFAULT | wxICON_EXCLAMATION) !=
      wxYES)
    return;

  // Events run while the delete goes on (that is how Cancel arrives), and the
  // window holding the panel may be closed meanwhile: after every yield the
  // panel and the dialog are looked at through weak references only.
  wxWeakRef<Des_Panel> self(this);
  m_deleteDialog = new DeleteFile_dialog(this, wxID_ANY, wxGetTranslation("Deleting Data"),
                                         wxPoint(320, 230), wxSize(400, 225),
                                         wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX);
  wxWeakRef<DeleteFile_dialog> dialog(m_deleteDialog);
  m_deleteDialog->Show();
  Enable(false);
  wxYieldIfNeeded();
  if (!self) return;
  if (!dialog) {
    EndDelete();
    return;
  }
  dialog->m_filesCountText->SetLabel(wxString::Format("%d", dialog->m_fileCount));
  dialog->m_folderCountText->SetLabel(wxString::Format("%d", dialog->m_folderCount));

  const wxString target = m_desList->GetDesCurrentPath() + name;
  DeleteFileProgress run(dialog);
  m_deleteRun = &run;
  if (count_DirFileInfo(target) == kStatusStopped) {
    if (!self) return;
    EndDelete();
    return;
  }
  if (!self) return;
  const int result = DeleteDirFile(target);
  if (!self) return;
  m_desList->SetDesCopyDirName("");
  if (result == kStatusStopped) {
    EndDelete();
    RefreshVolumeRows();
  } else {
    run.RemoveTarget(target);
    if (!self) return;
    m_desList->Read_FileDir_Array(m_desList->GetDesCurrentPath());
    m_desList->List_FileTable();
    EndDelete();
    if (!m_desList->IsRoot()) {
      RefreshVolumeRows();
      m_pathText->SetValue(DesUpFieldText(m_desList->GetDesCurrentPath()));
    }
  }
  if (run.FailedCount() > 0)
    wxMessageBox(run.FailureMessage(), DeleteFailureCaption(), wxOK | wxICON_EXCLAMATION, this);
}

int Des_Panel::count_DirFileInfo(const wxString& path) {
  if (m_deleteRun == nullptr) return kStatusStopped;
  return m_deleteRun->Count(path);
}

int Des_Panel::DeleteDirFile(const wxString& path) {
  if (m_deleteRun == nullptr) return kStatusStopped;
  return m_deleteRun->DeleteContents(path);
}

bool Des_Panel::ChangeEscapeCharacter(char* s) { return ::ChangeEscapeCharacter(s); }

void Des_Panel::EndDelete() {
  m_deleteRun = nullptr;
  if (m_deleteDialog) m_deleteDialog->Destroy();
  m_deleteDialog = nullptr;
  Enable(true);
}

void Des_Panel::RefreshVolumeRows() {
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  const int n = g_AllDiskPartitionInf.GetCurrentParttionNum() & 0xffff;
  for (size_t row = 0; row < m_volumes.size(); ++row) {
    const int index = m_volumes[row].volumeIndex;
    if (index < 0 || index >= n || index >= MAX_VOLUME_COUNT) continue;
    const VolumeInformation& v = g_AllDiskPartitionInf.m_Volume[index];
    m_volumes[row].text =
        DesVolumeRowText(v.DriveLetter, VolumeText(v.VolumeLabel), VolumeText(v.FreeText));
    m_driveChoice->SetString(static_cast<unsigned int>(row), m_volumes[row].text);
  }
  if (m_desList->GetRootIndex() < static_cast<int>(m_volumes.size()))
    m_driveChoice->SetSelection(m_desList->GetRootIndex());
}

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
