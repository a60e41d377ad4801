// The question asked before a copy replaces a file or merges into a folder
// that exists in the destination: Yes, Yes To All, No, Cancel. Each answer
// is stored in g_copy_dialog_return (the close box and Escape count as
// Cancel) and the dialog destroys itself; the caller reads the global once
// ShowModal has returned and never touches the dialog again.
#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/stattext.h>

class copy_dialog : public wxDialog {
 public:
  // buttons 1 makes the four buttons; any other value only the message.
  copy_dialog(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
              const wxSize& size, long style, long buttons);

  void SetcopyLableMessage(const wxString& text);

  // Shows the dialog at the place it was created with (the toolkit would
  // centre a dialog on its parent when it first appears).
  bool Show(bool show = true) override;

  void OnButtonYes(wxCommandEvent& event);
  void OnButtonYestoall(wxCommandEvent& event);
  void OnButtonNo(wxCommandEvent& event);
  void OnButtonCacel(wxCommandEvent& event);
  void OnClose(wxCloseEvent& event);

  wxStaticText* m_messageLabel;
  wxButton* m_yesButton;
  wxButton* m_yesToAllButton;
  wxButton* m_noButton;
  wxButton* m_cancelButton;

 private:
  // Stores the answer and ends the dialog.
  void Answer(int value);

  wxPoint m_fixedPosition;

  DECLARE_EVENT_TABLE()
};
