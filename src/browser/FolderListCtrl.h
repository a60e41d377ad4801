// What every file list of the module shares: a control holding an inner
// list widget (window id 1001; a virtual report list, or an icon view) and a
// folder pane with the listing. It reads a folder into the pane, fills the
// rows (folders first, a ".." row on top where the list shows one), sorts on
// header clicks with an arrow on the sorted column, goes up a level, and
// selects rows.
//
// On its own it is a plain folder list: a ListingListView with the file
// images, a ".." row, no drive list, and Backspace going up to the volume's
// top. A list class builds on it by creating its own inner widget
// (CreateListView), loading its images (InitImage), saying whether it shows a
// ".." row (ShowsDotRow) and has a drive list before its folders
// (HasDriveMode), and by its own event table and handlers; OnUpList is its
// way up a level (run by Backspace).
#pragma once

#include <wx/control.h>
#include <wx/imaglist.h>
#include <wx/listctrl.h>

#include <cstdint>

#include "browser/FolderPane.h"
#include "browser/ListingListView.h"

class FolderListCtrl : public wxControl, public FolderPaneView {
 public:
  // Window id of the inner list.
  static const int kListId = 1001;

  FolderListCtrl();
  ~FolderListCtrl() override;

  // Destroys the inner list and builds one of the given view (icon or
  // report; any other view builds nothing), listing the pane again.
  bool ReCreate(long style);

  // Columns and their arrows.
  void InitColumnItems();
  void SetColumnImage(int column, bool ascending);
  void InitColumnUpDown();
  int GetCurrentColumnIndex() const { return m_pane.Sort().SortedColumn(); }

  // Listing.
  int Read_FileDir_Array(wxString path);
  int List_FileTable();
  void ViewIconText();
  void Sort_asc(int column);
  void Sort_drop(int column);
  wxString GetCurrentListctrlPath() const { return m_pane.Folder(); }
  wxString CovertPath(wxString& path);
  int GetFileImageIndex(wxString name);

  // Selection.
  bool SetListFocus(int row);
  // The names of the selected rows in row order (also kept in the pane).
  wxArrayString GetSelectedNames();

  // Going up a level (the list's own rules).
  virtual void OnUpList(wxCommandEvent& event);

  FolderPane* GetPane() { return &m_pane; }
  ListingListView* GetListView() const { return m_list; }
  const ArrayDir& GetDirArray() const { return m_pane.Dirs(); }
  const ArrayFile& GetFileArray() const { return m_pane.Files(); }
  const ListingRows* GetRows() const { return &m_pane.Rows(); }
  wxImageList* GetSmallImageList() const { return m_imageListSmall; }
  wxImageList* GetNormalImageList() const { return m_imageListNormal; }
  bool IsIconView() const { return m_iconView != 0; }

  // Handlers bound by this class's event table.
  void OnListKeyDown(wxListEvent& event);  // Backspace runs OnUpList
  void OnFocused(wxListEvent& event);
  void OnSize(wxSizeEvent& event);

 protected:
  // Creates the control and its inner report list, loads the images and
  // clears the arrows (the list's own mode is set up by the caller).
  bool CreateFolderList(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                        long style, const wxString& name);

  virtual ListingListView* CreateListView(const wxSize& size, long style);
  virtual int InitImage();
  virtual bool ShowsDotRow() const { return true; }
  virtual bool HasDriveMode() const { return false; }

  bool IsReportView() const { return m_iconView == 0; }
  // A header click on a folder listing: the sort state moves, the arrows
  // follow, the arrays are sorted and the rows filled again.
  void SortByHeader(int column);
  // Lists the parent of the pane's folder. The rows are filled whether or
  // not the parent could be read (a folder that cannot be read lists as
  // empty); true when both reading and listing succeeded.
  bool ListParentFolder();
  // Selects rows `start` to the last at once; the focus ends on the last.
  void SelectRowsFrom(int start);
  void ApplyColumnImages();
  void DestroyListView();

  FolderPane m_pane;
  ListingListView* m_list;
  wxImageList* m_imageListSmall;
  wxImageList* m_imageListNormal;
  int m_rowCounter;
  uint16_t m_iconView;
  wxSize m_size;
  wxWindow* m_parentWindow;  // parent of the busy box

  DECLARE_EVENT_TABLE()
};
