// The busy window: a small borderless frame with one line of text on a panel,
// both showing the hourglass cursor.
#pragma once

#include <wx/colour.h>
#include <wx/frame.h>
#include <wx/string.h>

class wxPanel;
class wxStaticText;

class CInfoFrame : public wxFrame {
 public:
  CInfoFrame(wxWindow* parent, const wxColour& background, const wxString& text);
  virtual ~CInfoFrame();

  wxPanel* GetPanel() const { return m_pPanel; }
  wxStaticText* GetText() const { return m_pText; }

 private:
  wxPanel* m_pPanel;
  wxStaticText* m_pText;
};
