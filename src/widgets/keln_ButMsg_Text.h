// A small caption box in the manner of a button's tool tip: the text on a
// pale yellow background inside a thin black frame.
#pragma once

#include <wx/event.h>
#include <wx/panel.h>
#include <wx/string.h>

class keln_ButMsg_Text : public wxPanel {
 public:
  // The panel is created without an id of its own (-1); id is not used.
  keln_ButMsg_Text(wxWindow* parent, int id, const wxString& text,
                   const wxPoint& pos = wxDefaultPosition, const wxSize& size = wxDefaultSize,
                   long style = 0);
  virtual ~keln_ButMsg_Text();

  const wxString& GetText() const { return m_strText; }

 protected:
  void OnPaint(wxPaintEvent& event);

 private:
  wxString m_strText;

  DECLARE_EVENT_TABLE()
};
