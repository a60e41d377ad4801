// Location, number of files and folders and total size of a folder or of the
// selection on the source side. The frame fills the counters while it walks
// the folders (PropertiesCounter) and shows them; the dialog lays out the
// fields and closes. Closing it while a count is running only asks the count
// to stop; the frame then destroys it.
#pragma once

#include <wx/dialog.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <cstdint>

class Properties_dialog : public wxDialog {
 public:
  Properties_dialog(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
                    const wxSize& size, long style);

  void OnProDialogClose(wxCommandEvent& event);
  void OnClose(wxCloseEvent& event);

  // Field updates.
  void SetLocation(const wxString& displayPath);
  void ShowRunningCounts();  // "%d" files and folders, "%lld" bytes
  void ShowFileAndSize();    // grouped file count and "%s MB (%s)"
  void ShowFolders();        // "%d" folder count, while counting
  void ShowFinalCounts();    // all three, grouped

  // Re-enables the frame and destroys the dialog.
  void Dismiss();

  // Shows the dialog at the place it was created with (the toolkit would
  // centre a dialog on its parent when it first appears).
  bool Show(bool show = true) override;

  void SetCounting(bool counting) { m_counting = counting; }
  bool IsCounting() const { return m_counting; }

  wxTextCtrl* m_locationText;
  wxStaticText* m_filesText;
  wxStaticText* m_folderText;
  wxStaticText* m_sizeText;
  uint64_t m_totalBytes;
  int m_fileCount;
  int m_folderCount;
  int m_status;  // -1 at creation, 10 stopped, 11 finished
  bool m_cancel;
  wxWindow* m_parentWindow;

 private:
  // Enables the window the dialog was opened from and gives it the keyboard.
  void ReturnToParent();
  bool m_counting;
  wxPoint m_fixedPosition;

  DECLARE_EVENT_TABLE()
};

// "%s MB (%s)": whole mebibytes (truncated) and the exact byte count, both
// with thousands separators.
wxString FormatPropertiesSize(uint64_t bytes);
// "%d" with thousands separators.
wxString FormatPropertiesCount(int count);
