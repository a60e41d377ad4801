// Scoped busy window: the message window appears when the object is
// constructed and goes away when it is destroyed; create it on the stack
// around a long piece of work on the GUI thread.
#pragma once

#include <wx/colour.h>
#include <wx/object.h>
#include <wx/string.h>

class wxWindow;
class CInfoFrame;

class CBusyMsgBox : public wxObject {
 public:
  CBusyMsgBox(const wchar_t* text, wxWindow* parent, const wxColour& background);
  // The same for a translated wxString.
  CBusyMsgBox(const wxString& text, wxWindow* parent, const wxColour& background);
  virtual ~CBusyMsgBox();

  CInfoFrame* GetFrame() const { return m_pFrame; }

 private:
  CBusyMsgBox(const CBusyMsgBox&) = delete;
  CBusyMsgBox& operator=(const CBusyMsgBox&) = delete;
  void Open(const wxString& text, wxWindow* parent, const wxColour& background);

  CInfoFrame* m_pFrame;
};
