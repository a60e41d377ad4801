// The dialog in which the user picks where a copy goes: a choice of the
// destination volumes (the source volume only when it is the only one), a
// read-only path field, the destination list with Up, New folder and Delete
// buttons, and OK / Cancel. OK and Cancel leave their id (1057 / 1058) in
// g_Des_PathInfo.m_result and destroy the dialog; the copy command then asks
// GetDestinationPath for the folder chosen. Placement, texts and images of
// the controls come from the layout records 15 to 24.
#pragma once

#include <wx/bmpcbox.h>
#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/textctrl.h>
#include <wx/weakref.h>

#include <vector>

#include "common/TabCycle.h"
#include "destination/DeleteFile_dialog.h"
#include "destination/DesLogic.h"

class DeleteFileProgress;
class Des_listctrl;
class keln_BitmapButton;

// Window ids of the panel.
enum {
  ID_DES_DRIVE_CHOICE = 1050,
  ID_DES_LIST = 1051,
  ID_DES_PATH_TEXT = 1052,
  ID_DES_UP = 1054,
  ID_DES_NEW = 1055,
  ID_DES_DELETE = 1056,
  ID_DES_OK = 1057,
  ID_DES_CANCEL = 1058,
};

class Des_Panel : public wxDialog {
 public:
  Des_Panel(wxWindow* parent, int id, const wxString& title, const wxPoint& pos,
            const wxSize& size, long style);

  // The destination folder as a mounted path (see DesDestinationPath); empty
  // when there is no volume to copy to.
  wxString GetDestinationPath();

  // Shows the panel at the place it was created with.
  bool Show(bool show = true) override;

  void OnChoice(wxCommandEvent& event);
  void OnDesButtonUp(wxCommandEvent& event);
  void OnDesButtonNew(wxCommandEvent& event);
  // Delete: after the warning, counts and deletes the selected entry with the
  // progress dialog, then re-reads the list and the volume rows' free space.
  void OnDesButtonDel(wxCommandEvent& event);
  void OnDesButtonOk(wxCommandEvent& event);
  void OnDesButtonCancel(wxCommandEvent& event);
  // The close box closes the panel as Cancel does.
  void OnClose(wxCloseEvent& event);
  // Tab and Shift+Tab move along the panel's keyboard cycle.
  void OnCharHook(wxKeyEvent& event);

  wxBitmapComboBox* GetDriveChoice() const { return m_driveChoice; }
  Des_listctrl* GetDesList() const { return m_desList; }
  wxTextCtrl* GetPathText() const { return m_pathText; }
  // The volumes offered, in the order of the choice's rows.
  const std::vector<DesVolumeRow>& GetVolumeRows() const { return m_volumes; }

  wxBitmapComboBox* m_driveChoice;
  Des_listctrl* m_desList;
  wxTextCtrl* m_pathText;
  keln_BitmapButton* m_bitmapButton;  // the Up, New and Delete buttons in turn: ends on Delete
  wxButton* m_okButton;
  wxButton* m_cancelButton;
  // The progress dialog while a delete runs, else null (also once the
  // dialog went away with its owner).
  wxWeakRef<DeleteFile_dialog> m_deleteDialog;

  // Counting and deleting of the delete that runs (10 when cancelled, or
  // when no delete runs).
  int count_DirFileInfo(const wxString& path);
  int DeleteDirFile(const wxString& path);
  // The 13-character shell escape, in the caller's buffer (ShellEscape.h).
  static bool ChangeEscapeCharacter(char* s);

 private:
  // Re-reads the free space of the volumes, rewrites the volume rows and
  // selects the row of the volume the list shows.
  void RefreshVolumeRows();
  // Ends a delete: the dialog goes, the panel is enabled again.
  void EndDelete();

  // Sets m_result to `id` and closes the panel (ends its modal run first).
  void Finish(int id);

  std::vector<DesVolumeRow> m_volumes;
  // Tab order: volume choice, list, New, Delete, OK, Cancel (Up is
  // Backspace in the list).
  common::TabCycle m_tabCycle;
  wxPoint m_fixedPosition;
  DeleteFileProgress* m_deleteRun;

  DECLARE_EVENT_TABLE()
};
