#include "destination/DeleteFile_dialog.h"

#include <wx/intl.h>
#include <wx/statbox.h>

#include "common/FixedPosition.h"

BEGIN_EVENT_TABLE(DeleteFile_dialog, wxDialog)
  EVT_BUTTON(ID_DELETE_CANCEL, DeleteFile_dialog::OnDeleteCancel)
  EVT_CLOSE(DeleteFile_dialog::OnClose)
END_EVENT_TABLE()

DeleteFile_dialog::DeleteFile_dialog(wxWindow* parent, wxWindowID id, const wxString& title,
                                     const wxPoint& pos, const wxSize& size, long style)
    : wxDialog(parent, id, title, pos, size, style),
      m_filesCountText(nullptr),
      m_folderCountText(nullptr),
      m_gauge(nullptr),
      m_currentText(nullptr),
      m_fileCount(0),
      m_folderCount(0),
      m_doneSinceStep(0),
      m_percent(0),
      m_step(0),
      m_lastIndex(-1),
      m_cancel(false),
      m_status(0),
      m_cancelButton(nullptr),
      m_parent(parent),
      m_fixedPosition(pos) {
  SetBackgroundColour(wxColour(248, 248, 248));
  new wxStaticBox(this, wxID_ANY, wxGetTranslation("Delete"), wxPoint(10, 10), wxSize(375, 150));
  // The texts keep their size: the counts and the current item change often.
  const long fixed = wxST_NO_AUTORESIZE;
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Files: "), wxPoint(30, 30), wxSize(50, 25));
  m_filesCountText = new wxStaticText(this, wxID_ANY, "0", wxPoint(90, 30), wxSize(130, 25), fixed);
  new wxStaticText(this, wxID_ANY, wxGetTranslation("Folder: "), wxPoint(30, 55), wxSize(50, 25));
  m_folderCountText = new wxStaticText(this, wxID_ANY, "0", wxPoint(90, 55), wxSize(130, 25), fixed);
  m_gauge = new wxGauge(this, wxID_ANY, 100, wxPoint(30, 90), wxSize(330, 25), wxGA_HORIZONTAL);
  m_gauge->SetValue(0);
  m_currentText = new wxStaticText(this, wxID_ANY, wxEmptyString, wxPoint(30, 125), wxSize(330, 25),
                                   fixed);
  m_cancelButton = new wxButton(this, ID_DELETE_CANCEL, wxGetTranslation("&Cancel"),
                                wxPoint(305, 180), wxSize(80, 28));
}

bool DeleteFile_dialog::Show(bool show) {
  return common::ShowAtFixedPosition(this, show, m_fixedPosition);
}

void DeleteFile_dialog::OnDeleteCancel(wxCommandEvent& WXUNUSED(event)) { m_cancel = true; }

void DeleteFile_dialog::OnClose(wxCloseEvent& WXUNUSED(event)) { m_cancel = true; }
