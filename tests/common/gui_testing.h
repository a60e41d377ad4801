// Modal dialogs in GUI tests: include this instead of <wx/testing.h>.
// wxTEST_DIALOG(code, wxExpectModal<T>(...)) answers the expected dialogs;
// a dialog nobody expected is reported as a test failure and cancelled
// instead of blocking the run.
#pragma once

#include <gtest/gtest.h>
#include <wx/dialog.h>
#include <wx/modalhook.h>
#include <wx/msgdlg.h>

#include <string>
#include <vector>

class GTestModalHook;
#define wxTEST_DIALOG_HOOK_CLASS GTestModalHook
#include <wx/testing.h>

class GTestModalHook : public wxTestingModalHook {
 public:
  GTestModalHook(const char* file = nullptr, int line = 0, const char* func = nullptr)
      : wxTestingModalHook(file, line, func), m_file(file ? file : "?"), m_line(line) {}

 protected:
  void ReportFailure(const wxString& msg) override {
    ADD_FAILURE_AT(m_file, m_line) << msg.utf8_string();
  }
  int Enter(wxDialog* dlg) override {
    int rc = wxTestingModalHook::Enter(dlg);
    return rc == wxID_NONE ? wxID_CANCEL : rc;
  }

 private:
  const char* m_file;
  int m_line;
};

namespace vt {
// Message boxes seen by the always-on hook of the GUI test main (text and
// caption), for tests that check a message was shown without wxTEST_DIALOG.
struct SeenMessage {
  std::string message;
  std::string caption;
};
std::vector<SeenMessage>& UnexpectedDialogs();
}  // namespace vt

namespace vt {
// A message box expected by wxTEST_DIALOG: answers OK and keeps its text and
// caption.
class MessageBoxSeen : public wxExpectModal<wxMessageDialog> {
 public:
  MessageBoxSeen(wxString* message, wxString* caption)
      : wxExpectModal<wxMessageDialog>(wxID_OK), m_message(message), m_caption(caption) {}

 protected:
  int OnInvoked(wxMessageDialog* dlg) const override {
    *m_message = dlg->GetMessage();
    *m_caption = dlg->GetCaption();
    return wxExpectModal<wxMessageDialog>::OnInvoked(dlg);
  }

 private:
  wxString* m_message;
  wxString* m_caption;
};
}  // namespace vt
