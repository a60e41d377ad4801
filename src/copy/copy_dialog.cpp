#include "copy/copy_dialog.h"

#include <wx/intl.h>

#include "common/FixedPosition.h"
#include "copy/CopyAnswer.h"

BEGIN_EVENT_TABLE(copy_dialog, wxDialog)
  EVT_BUTTON(COPY_ANSWER_YES, copy_dialog::OnButtonYes)
  EVT_BUTTON(COPY_ANSWER_YES_TO_ALL, copy_dialog::OnButtonYestoall)
  EVT_BUTTON(COPY_ANSWER_NO, copy_dialog::OnButtonNo)
  EVT_BUTTON(COPY_ANSWER_CANCEL, copy_dialog::OnButtonCacel)
  EVT_CLOSE(copy_dialog::OnClose)
END_EVENT_TABLE()

copy_dialog::copy_dialog(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                         const wxSize& size, long style, long buttons)
    : wxDialog(parent, id, title, pos, size, style), m_fixedPosition(pos) {
  g_copy_dialog_return = COPY_ANSWER_NONE;
  m_messageLabel = nullptr;
  m_yesButton = nullptr;
  m_yesToAllButton = nullptr;
  m_noButton = nullptr;
  m_cancelButton = nullptr;

  // The label grows with the text it is given.
  m_messageLabel = new wxStaticText(this, -1, wxString(), wxPoint(30, 10), wxSize(30, -1), 0);

  if (buttons == 1) {
    m_yesButton = new wxButton(this, COPY_ANSWER_YES, wxGetTranslation("&Yes"), wxPoint(60, 120),
                               wxSize(80, 28), 0, wxDefaultValidator);
    m_yesToAllButton = new wxButton(this, COPY_ANSWER_YES_TO_ALL, wxGetTranslation("Yes To &All"),
                                    wxPoint(160, 120), wxSize(80, 28), 0, wxDefaultValidator);
    m_noButton = new wxButton(this, COPY_ANSWER_NO, wxGetTranslation("&No"), wxPoint(260, 120),
                              wxSize(80, 28), 0, wxDefaultValidator);
    m_cancelButton = new wxButton(this, COPY_ANSWER_CANCEL, wxGetTranslation("&Cancel"),
                                  wxPoint(360, 120), wxSize(80, 28), 0, wxDefaultValidator);
  }

  SetBackgroundColour(wxColour(248, 248, 248));

  // No button carries the standard cancel id: Escape presses Cancel (203).
  // Without the buttons Escape finds nothing to press and the close box is
  // the only way out, which answers Cancel as well.
  SetEscapeId(COPY_ANSWER_CANCEL);
}

bool copy_dialog::Show(bool show) { return common::ShowAtFixedPosition(this, show, m_fixedPosition); }

void copy_dialog::SetcopyLableMessage(const wxString& text) { m_messageLabel->SetLabel(text); }

void copy_dialog::OnButtonYes(wxCommandEvent& /*event*/) { Answer(COPY_ANSWER_YES); }

void copy_dialog::OnButtonYestoall(wxCommandEvent& /*event*/) { Answer(COPY_ANSWER_YES_TO_ALL); }

void copy_dialog::OnButtonNo(wxCommandEvent& /*event*/) { Answer(COPY_ANSWER_NO); }

void copy_dialog::OnButtonCacel(wxCommandEvent& /*event*/) { Answer(COPY_ANSWER_CANCEL); }

void copy_dialog::OnClose(wxCloseEvent& /*event*/) { Answer(COPY_ANSWER_CANCEL); }

void copy_dialog::Answer(int value) {
  g_copy_dialog_return = value;
  // Ending the modal loop first keeps the dialog alive until ShowModal has
  // returned; Destroy alone would leave the loop running over a dialog that
  // the idle time deletes when no other top-level window is shown.
  if (IsModal()) EndModal(value);
  Destroy();
}
