// The replacement question (copy_dialog) in GUI tests: wxTEST_DIALOG answers
// it by pressing one of its buttons, or by a test's own function, and
// records what it asked.
#pragma once

#include <functional>
#include <vector>

#include "common/gui_testing.h"
#include "common/test_support.h"
#include "copy/CopyAnswer.h"
#include "copy/copy_dialog.h"

namespace vt {

// One question as it was asked.
struct SeenQuestion {
  wxString title;
  wxString text;
  wxWindow* parent = nullptr;
  long style = 0;
  wxPoint position;
  wxSize size;
  int answerBefore = -1;  // g_copy_dialog_return when the dialog was shown
};

// Presses a button of the dialog as a click does: the click event starts
// at the button and travels up to the dialog's handlers.
inline void PressQuestionButton(copy_dialog* dlg, int id) {
  wxWindow* button = dlg->FindWindow(id);
  if (button == nullptr) {
    ADD_FAILURE() << "no button " << id;
    return;
  }
  wxCommandEvent ev(wxEVT_BUTTON, id);
  ev.SetEventObject(button);
  button->GetEventHandler()->ProcessEvent(ev);
}

}  // namespace vt

// The question while its ShowModal runs: records it into `seen` (when
// given), then presses the button `answer` (200 to 203), closes the dialog
// by its close box (answer wxID_CLOSE), or runs `drive` on it.
template <>
class wxExpectModal<copy_dialog> : public wxExpectModalBase<copy_dialog> {
 public:
  explicit wxExpectModal(int answer, std::vector<vt::SeenQuestion>* seen = nullptr)
      : m_answer(answer), m_seen(seen) {}
  explicit wxExpectModal(std::function<void(copy_dialog*)> drive,
                         std::vector<vt::SeenQuestion>* seen = nullptr)
      : m_answer(0), m_drive(std::move(drive)), m_seen(seen) {}

 protected:
  int OnInvoked(copy_dialog* dlg) const override {
    if (m_seen != nullptr) {
      vt::SeenQuestion q;
      q.title = dlg->GetTitle();
      q.text = dlg->m_messageLabel ? dlg->m_messageLabel->GetLabel() : wxString();
      q.parent = dlg->GetParent();
      q.style = dlg->GetWindowStyleFlag();
      q.position = dlg->GetPosition();
      q.size = dlg->GetSize();
      q.answerBefore = g_copy_dialog_return;
      m_seen->push_back(q);
    }
    if (m_drive) {
      m_drive(dlg);
    } else if (m_answer == wxID_CLOSE) {
      dlg->Close();
    } else {
      vt::PressQuestionButton(dlg, m_answer);
    }
    // What ShowModal returns does not matter: the answer is in the global.
    return wxID_CANCEL;
  }

 private:
  int m_answer;
  std::function<void(copy_dialog*)> m_drive;
  std::vector<vt::SeenQuestion>* m_seen;
};
