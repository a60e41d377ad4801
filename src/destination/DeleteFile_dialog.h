// The small modeless progress dialog of deleting in the destination: the
// numbers of files and folders, a gauge and the item being deleted, with a
// Cancel button. Cancel and the close box only set m_cancel; the dialog does
// not close itself (its owner destroys it when the deleting ends).
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/gauge.h>
#include <wx/stattext.h>

enum { ID_DELETE_CANCEL = 205 };

class DeleteFile_dialog : public wxDialog {
 public:
  DeleteFile_dialog(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos,
                    const wxSize& size, long style = wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX);

  // Shows the dialog at the place it was created with.
  bool Show(bool show = true) override;

  void OnDeleteCancel(wxCommandEvent& event);
  void OnClose(wxCloseEvent& event);

  wxStaticText* m_filesCountText;
  wxStaticText* m_folderCountText;
  wxGauge* m_gauge;
  wxStaticText* m_currentText;
  int m_fileCount;
  int m_folderCount;
  int m_doneSinceStep;
  int m_percent;
  int m_step;
  int m_lastIndex;
  bool m_cancel;
  int m_status;
  wxButton* m_cancelButton;
  wxWindow* m_parent;

 private:
  wxPoint m_fixedPosition;

  DECLARE_EVENT_TABLE()
};
