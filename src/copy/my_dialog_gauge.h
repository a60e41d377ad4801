// The progress window of a copy. Its constructor shows it, builds the job
// from g_Des_PathInfo, collects and copies it, and destroys the window; on
// destruction the parent is enabled again, the replacement answer reset, the
// volumes' free space refreshed and command 1401 posted to the parent.
#pragma once

#include "copy/CopyProgressWindow.h"

class copyfile;

enum { ID_GAUGE_CANCEL = 1400 };

// The gauge, the texts and the cancel flag are the members of
// CopyProgressWindow, in the order the window shows them; the parent it
// disables is the window's own parent (m_parent).
class my_dialog_gauge : public CopyProgressWindow {
 public:
  my_dialog_gauge(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                  const wxSize& size, long style);
  ~my_dialog_gauge() override;

  void OnCacle(wxCommandEvent& event);
  void OnClose(wxCloseEvent& event);
  // Repaints the dialog at once.
  void Update() override;

  copyfile* m_job;

 private:
  bool m_running;  // the constructor is still running the job

  DECLARE_EVENT_TABLE()
};
