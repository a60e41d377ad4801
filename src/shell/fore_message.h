// The start-up window of the stand-alone program: shown first, and once it
// has been painted it takes the disk inventory (which may take seconds while
// disks are probed and volumes mounted), creates the main frame as a window
// of its own, shows it and hides itself.
#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

class my_frame;

class fore_message : public wxDialog {
 public:
  fore_message(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
               const wxSize& size, long style, const wxString& name);
  ~fore_message() override;

  void OnPaint(wxPaintEvent& event);
  void OnTimerEvent(wxTimerEvent& event);

  // The main frame, once the timer handler has created it (else null).
  my_frame* MainFrame() const { return m_mainFrame; }
  bool TimerRunning() const { return m_timer.IsRunning(); }

 private:
  wxTimer m_timer;
  my_frame* m_mainFrame;
  int32_t m_painted;

  DECLARE_EVENT_TABLE()
};
