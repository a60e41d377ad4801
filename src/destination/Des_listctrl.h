// The file list of the destination panel: one folder of a destination
// volume, folders first, a ".." row on top except at the volume's top
// folder. The user walks into folders and back up (".." row, Backspace or
// the panel's Up button), sorts by header clicks and selects one row: the
// folder into which the copy goes, or the entry the delete command removes.
// Reading, sorting, the rows and their cells come from FolderListCtrl, as
// for the source list; this class has no drive list, no context menu and
// posts no command codes. It writes the location into the panel's path field.
#pragma once

#include <wx/arrstr.h>
#include <wx/textctrl.h>

#include "browser/FolderListCtrl.h"
#include "destination/Des_Listing.h"

class LDes_listctrl;

class Des_listctrl : public FolderListCtrl {
 public:
  Des_listctrl();
  Des_listctrl(wxWindow* parent, const wxArrayString& roots, int id, const wxPoint& pos,
               const wxSize& size, long style, const wxString& name);

  // Keeps the volumes' top folders (mounted paths ending in "/"), builds the
  // single-selection list and lists the first of them.
  bool Create(wxWindow* parent, const wxArrayString& roots, int id, const wxPoint& pos,
              const wxSize& size, long style, const wxString& name);
  void Init();

  // Lists the top folder of volume `index` of the roots (another drive was
  // chosen) and shows it in the path field.
  void Return_Root(int index);
  // Makes folder `name` in the current folder, lists the folder again and
  // selects the row of the rule DesCreatedFolderRow.
  void CreateFolder(const wxString& name);

  void SetPpathname(wxTextCtrl* pathText) { m_pathText = pathText; }
  wxTextCtrl* GetPpathname() const { return m_pathText; }

  wxString GetDesCurrentPath() const { return m_pane.Folder(); }
  wxString GetDesDeleteDirFileName() const { return m_deleteName; }
  wxString GetDesCopyDirName() const { return m_copyDirName; }
  void SetDesCopyDirName(const wxString& name) { m_copyDirName = name; }
  bool IsRoot() const { return m_root; }
  int GetRootIndex() const { return m_rootIndex; }
  const wxArrayString& GetRootPaths() const { return m_rootPaths; }
  int GetSelectedItemCount() const { return m_list->GetSelectedItemCount(); }
  LDes_listctrl* GetListCtrl() const;

  // Only gives the keyboard focus to the inner list.
  void SetFocus() override;

  // Event handlers.
  void OnColClick(wxListEvent& event);
  void OnListDoubleClick(wxListEvent& event);
  void OnActivated(wxListEvent& event);
  void OnSelected(wxListEvent& event);
  void OnDeselected(wxListEvent& event);
  void OnUpList(wxCommandEvent& event) override;
  void OnChar(wxKeyEvent& event);

 protected:
  ListingListView* CreateListView(const wxSize& size, long style) override;
  bool ShowsDotRow() const override { return !m_root; }
  bool HasDriveMode() const override { return false; }

 private:
  void SetPathText(const wxString& text);
  // A new listing: nothing in it is chosen for delete or copy yet.
  void ForgetChoice();

  wxString m_deleteName;
  wxString m_copyDirName;
  bool m_root;
  wxTextCtrl* m_pathText;
  wxArrayString m_rootPaths;
  int m_rootIndex;

  DECLARE_EVENT_TABLE()
};
