// A dialog holding a multi-line text area and a "&Clean" button that empties
// it: the place where a report of log lines is shown. The layout is computed
// from the client size the dialog gets at construction; the dialog stands at
// the fixed place it was created with and destroys itself when it is closed.
#pragma once

#include <wx/dialog.h>
#include <wx/gdicmn.h>
#include <wx/textctrl.h>

enum { ID_LOG_CLEAN = 1000 };

// Where the text area goes in a client area of `client`: at (10, 10), of
// (w - 20) x (h - 80). A client area too small for that still gives a
// rectangle of at least 1 x 1, so that no control is ever made with a size
// the toolkit reads as "choose a default size" (-1) or refuses (0 or less).
wxRect LogTextArea(const wxSize& client);
// Whether that area is shown: a text area is drawn only when both sides are
// at least kLogTextMinSide pixels. Below that it shows no line of text, and
// the toolkit cannot fit its scroll bars in it (under GTK 3 it complains
// below about 19 pixels); the area then exists but stays hidden.
enum { kLogTextMinSide = 32 };
bool LogTextAreaFits(const wxSize& client);
// Where the "&Clean" button goes: (10, h - 40), but never above the top edge
// (a y of -1 would also be read as "choose a default place").
wxPoint LogCleanButtonPlace(const wxSize& client);

class my_log_dialog : public wxDialog {
 public:
  // The style is always caption + system menu + close box.
  my_log_dialog(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                const wxSize& size);

  void OnCleanLog(wxCommandEvent& event);
  // The close box and Escape close the dialog for good.
  void OnClose(wxCloseEvent& event);
  void OnCharHook(wxKeyEvent& event);

  // Shows the dialog at the place it was created with.
  bool Show(bool show = true) override;

  wxTextCtrl* m_logText;

 private:
  wxPoint m_fixedPosition;

  DECLARE_EVENT_TABLE()
};
