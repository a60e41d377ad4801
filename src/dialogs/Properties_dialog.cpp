#include "dialogs/Properties_dialog.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/statbox.h>

#include "common/FixedPosition.h"
#include "display/Conversion.h"

namespace {
const int kCloseId = 204;
}

BEGIN_EVENT_TABLE(Properties_dialog, wxDialog)
  EVT_BUTTON(kCloseId, Properties_dialog::OnProDialogClose)
  EVT_CLOSE(Properties_dialog::OnClose)
END_EVENT_TABLE()

wxString FormatPropertiesSize(uint64_t bytes) {
  const wxString mb = Conversion_Str(wxString::Format("%lld", static_cast<long long>(bytes >> 20)));
  const wxString all = Conversion_Str(wxString::Format("%lld", static_cast<long long>(bytes)));
  return wxString::Format("%s MB (%s)", mb, all);
}

wxString FormatPropertiesCount(int count) {
  return Conversion_Str(wxString::Format("%d", count));
}

Properties_dialog::Properties_dialog(wxWindow* parent, int id, const wxString& title,
                                     const wxPoint& pos, const wxSize& size, long style)
    : wxDialog(parent, id, title, pos, size, style),
      m_locationText(nullptr),
      m_filesText(nullptr),
      m_folderText(nullptr),
      m_sizeText(nullptr),
      m_totalBytes(0),
      m_fileCount(0),
      m_folderCount(0),
      m_status(-1),
      m_cancel(false),
      m_parentWindow(parent),
      m_counting(false),
      m_fixedPosition(pos) {
  SetBackgroundColour(wxColour(248, 248, 248));
  new wxStaticBox(this, wxID_ANY, wxGetTranslation("Basic"), wxPoint(10, 10), wxSize(330, 195));
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Location: "), wxPoint(30, 45),
                   wxSize(50, 25));
  m_locationText = new wxTextCtrl(this, wxID_ANY, wxString(), wxPoint(90, 43), wxSize(200, 20),
                                  wxTE_READONLY);
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Files: "), wxPoint(30, 85), wxSize(50, 25));
  m_filesText = new wxStaticText(this, wxID_ANY, wxString(), wxPoint(90, 85), wxSize(130, 25),
                                 wxST_NO_AUTORESIZE);
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Folder: "), wxPoint(30, 125),
                   wxSize(50, 25));
  m_folderText = new wxStaticText(this, wxID_ANY, wxString(), wxPoint(90, 125), wxSize(130, 25),
                                  wxST_NO_AUTORESIZE);
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Size: "), wxPoint(30, 165), wxSize(50, 25));
  m_sizeText = new wxStaticText(this, wxID_ANY, wxString(), wxPoint(90, 165), wxSize(130, 25),
                                wxST_NO_AUTORESIZE);
  new wxButton(this, kCloseId, wxGetTranslation("&Close"), wxPoint(250, 230), wxSize(80, 28));
  // Escape closes the dialog as its Close button does.
  SetEscapeId(kCloseId);
}

bool Properties_dialog::Show(bool show) {
  const bool changed = common::ShowAtFixedPosition(this, show, m_fixedPosition);
  // The window it was opened from is disabled while it shows: the keyboard
  // comes here, to its Close button (Enter, Space or Escape close it).
  if (changed && show) {
    Raise();
    if (wxWindow* close = FindWindow(kCloseId)) close->SetFocus();
  }
  return changed;
}

void Properties_dialog::SetLocation(const wxString& displayPath) {
  m_locationText->SetValue(displayPath);
}

void Properties_dialog::ShowRunningCounts() {
  m_folderText->SetLabel(wxString::Format("%d", m_folderCount));
  m_sizeText->SetLabel(wxString::Format("%lld", static_cast<long long>(m_totalBytes)));
  m_filesText->SetLabel(wxString::Format("%d", m_fileCount));
}

void Properties_dialog::ShowFileAndSize() {
  m_filesText->SetLabel(FormatPropertiesCount(m_fileCount));
  m_sizeText->SetLabel(FormatPropertiesSize(m_totalBytes));
}

void Properties_dialog::ShowFolders() {
  m_folderText->SetLabel(wxString::Format("%d", m_folderCount));
}

void Properties_dialog::ShowFinalCounts() {
  m_folderText->SetLabel(FormatPropertiesCount(m_folderCount));
  m_sizeText->SetLabel(FormatPropertiesSize(m_totalBytes));
  m_filesText->SetLabel(FormatPropertiesCount(m_fileCount));
}

void Properties_dialog::ReturnToParent() {
  if (m_parentWindow == nullptr) return;
  m_parentWindow->Enable(true);
  // The keyboard goes back to the control of the window that had it.
  if (wxWindow* top = wxGetTopLevelParent(m_parentWindow)) top->Raise();
  m_parentWindow->SetFocus();
}

void Properties_dialog::Dismiss() {
  ReturnToParent();
  if (IsModal()) EndModal(kCloseId);
  Destroy();
}

void Properties_dialog::OnProDialogClose(wxCommandEvent& WXUNUSED(event)) {
  if (m_counting) {
    // The running count sees the flag at its next entry, stops, and the
    // frame destroys the dialog.
    m_cancel = true;
    Hide();
    ReturnToParent();
    return;
  }
  Dismiss();
}

void Properties_dialog::OnClose(wxCloseEvent& WXUNUSED(event)) {
  wxCommandEvent press(wxEVT_BUTTON, kCloseId);
  OnProDialogClose(press);
}
