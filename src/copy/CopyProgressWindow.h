// What a copy job shows its progress in and takes its Cancel from: the
// gauge, the texts and the cancel flag of the progress window. The window
// that runs the job (my_dialog_gauge) builds them; the job only fills them
// and reads the flag.
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/gauge.h>
#include <wx/stattext.h>

class CopyProgressWindow : public wxDialog {
 public:
  CopyProgressWindow(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                     const wxSize& size, long style)
      : wxDialog(parent, id, title, pos, size, style) {}

  wxGauge* m_gauge = nullptr;
  wxButton* m_cancelButton = nullptr;
  wxStaticText* m_currentText = nullptr;
  wxStaticText* m_totalFilesText = nullptr;
  wxStaticText* m_totalSizeText = nullptr;
  wxStaticText* m_doneFilesText = nullptr;
  wxStaticText* m_doneSizeText = nullptr;
  wxStaticText* m_timeLeftText = nullptr;
  bool m_cancel = false;  // set by the user, read by the job
};
