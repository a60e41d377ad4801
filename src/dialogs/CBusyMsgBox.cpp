#include "dialogs/CBusyMsgBox.h"

#include <wx/app.h>
#include <wx/utils.h>
#include <wx/window.h>

#include "dialogs/CInfoFrame.h"

CBusyMsgBox::CBusyMsgBox(const wchar_t* text, wxWindow* parent, const wxColour& background)
    : m_pFrame(nullptr) {
  Open(wxString(text ? text : L""), parent, background);
}

CBusyMsgBox::CBusyMsgBox(const wxString& text, wxWindow* parent, const wxColour& background)
    : m_pFrame(nullptr) {
  Open(text, parent, background);
}

void CBusyMsgBox::Open(const wxString& text, wxWindow* parent, const wxColour& background) {
  m_pFrame = new CInfoFrame(parent, background, text);
  if (parent && parent->HasFlag(wxSTAY_ON_TOP))
    m_pFrame->SetWindowStyleFlag(m_pFrame->GetWindowStyleFlag() | wxSTAY_ON_TOP);
  m_pFrame->Show(true);
  m_pFrame->Refresh(true);
  m_pFrame->Update();
  // Let the window paint before the caller's work starts; input to other
  // windows stays disabled meanwhile.
  wxSafeYield(m_pFrame);
}

CBusyMsgBox::~CBusyMsgBox() {
  if (m_pFrame) {
    m_pFrame->Hide();
    m_pFrame->Close();
    m_pFrame = nullptr;
  }
}
