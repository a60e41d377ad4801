#include "dialogs/my_log_dialog.h"

#include <wx/button.h>
#include <wx/intl.h>

#include <algorithm>

#include "common/FixedPosition.h"

BEGIN_EVENT_TABLE(my_log_dialog, wxDialog)
  EVT_BUTTON(ID_LOG_CLEAN, my_log_dialog::OnCleanLog)
  EVT_CHAR_HOOK(my_log_dialog::OnCharHook)
  EVT_CLOSE(my_log_dialog::OnClose)
END_EVENT_TABLE()

bool LogTextAreaFits(const wxSize& client) {
  return client.GetWidth() - 20 >= kLogTextMinSide && client.GetHeight() - 80 >= kLogTextMinSide;
}

wxRect LogTextArea(const wxSize& client) {
  return wxRect(10, 10, std::max(1, client.GetWidth() - 20), std::max(1, client.GetHeight() - 80));
}

wxPoint LogCleanButtonPlace(const wxSize& client) {
  return wxPoint(10, std::max(0, client.GetHeight() - 40));
}

my_log_dialog::my_log_dialog(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                             const wxSize& size)
    : wxDialog(parent, id, title, pos, size, wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX),
      m_logText(nullptr),
      m_fixedPosition(pos) {
  SetBackgroundColour(wxColour(248, 248, 248));
  const wxSize client = GetClientSize();
  const wxRect area = LogTextArea(client);
  m_logText = new wxTextCtrl(this, wxID_ANY, wxEmptyString, area.GetPosition(), area.GetSize(),
                             wxTE_MULTILINE | wxSUNKEN_BORDER);
  // Too small a dialog has no room for the text: the area is there (text
  // can still be written into it and cleaned) but not shown.
  if (!LogTextAreaFits(client)) m_logText->Hide();
  new wxButton(this, ID_LOG_CLEAN, wxGetTranslation("&Clean"), LogCleanButtonPlace(client));
}

bool my_log_dialog::Show(bool show) {
  return common::ShowAtFixedPosition(this, show, m_fixedPosition);
}

void my_log_dialog::OnCleanLog(wxCommandEvent& /*event*/) { m_logText->Clear(); }

void my_log_dialog::OnClose(wxCloseEvent& /*event*/) {
  if (IsModal()) EndModal(wxID_CANCEL);
  Destroy();
}

// A dialog without a Cancel button ignores Escape by itself.
void my_log_dialog::OnCharHook(wxKeyEvent& event) {
  if (event.GetKeyCode() == WXK_ESCAPE)
    Close(true);
  else
    event.Skip();
}
