// The source file list: drive mode lists the mounted volumes, folder mode one
// folder under a volume's mount point (folders first, a ".." row on top).
// It reads a folder into its listing arrays, sorts them by the clicked
// column, keeps the source tree and the path field in step, and tells the
// main frame through custom command codes 420 to 425 what the user did.
#pragma once

#include <wx/control.h>
#include <wx/imaglist.h>
#include <wx/listctrl.h>
#include <wx/menu.h>

#include <cstdint>

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"
#include "browser/ColumnSortState.h"
#include "browser/ListingRows.h"

class L_listctrl;
class my_DirTreeCtrl;

class my_listctrl : public wxControl {
 public:
  my_listctrl();
  my_listctrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style,
              const wxString& name);
  ~my_listctrl() override;

  bool Create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style,
              const wxString& name);
  bool ReCreate(long style);
  void Init();

  // Drive mode and folder mode.
  int InitParttionList();
  int List_FileTable();
  void ViewIconText();
  void InitColumnItems();
  void Refresh_column(int partitionIndex);
  void SetColumnImage(int column, bool ascending);
  void InitColumnUpDown();

  // Listing.
  int Read_FileDir_Array(wxString path);
  void Sort_asc(int column);
  void Sort_drop(int column);
  void Copy_Refresh_Filelisttabel(wxString path);
  wxString GetCurrentListctrlPath() const { return m_currentPath; }
  int GetCurrentColumnIndex() const { return m_sort.SortedColumn(); }
  wxString CovertPath(wxString& path);

  // Icons.
  int InitImage();
  void imageLoad(wxBitmap& bitmap, wxString path, int type);
  int GetFileImageIndex(wxString name);

  // Selection and focus.
  bool SetListFocus(int row);
  bool ListctrlSelectAll();
  void SetFocus() override;

  // Wiring with the tree and the frame.
  void SetPDirTree(my_DirTreeCtrl* tree) { m_tree = tree; }
  my_DirTreeCtrl* GetPDirTree() const { return m_tree; }
  void SetIsUpdataTreeCtrl(bool flag) { m_isUpdataTree = flag; }
  bool GetIsUpdataTreeCtrl() const { return m_isUpdataTree; }
  void SetIsLastFocus_listctrl(bool flag) { m_isLastFocus = flag; }
  bool GetIsLastFocus_listctrl() const { return m_isLastFocus; }
  void SetLoadedFromTree(bool flag) { m_loadedFromTree = flag; }
  bool GetLoadedFromTree() const { return m_loadedFromTree; }
  bool GetHasFolder() const { return m_hasFolder; }
  int GetPartitionIndex() const { return m_partitionIndex; }
  bool IsIconView() const { return m_iconView != 0; }

  L_listctrl* GetListCtrl() const { return m_list; }
  const ArrayDir& GetDirArray() const { return m_dirs; }
  const ArrayFile& GetFileArray() const { return m_files; }
  const ListingRows* GetRows() const { return &m_rows; }
  wxImageList* GetSmallImageList() const { return m_imageListSmall; }
  wxImageList* GetNormalImageList() const { return m_imageListNormal; }

  // A press on the inner list: the list becomes the last focused source pane
  // and the has-folder flag follows the mode.
  void NoteListClicked();

  // The context menu's entries (ids 420, 422, separator, 423).
  wxMenu* CreateContextMenu() const;

  // Event handlers.
  void OnColClick(wxListEvent& event);
  void OnListDoubleClick(wxListEvent& event);
  void OnActivated(wxListEvent& event);
  void OnSelected(wxListEvent& event);
  void OnDeselected(wxListEvent& event);
  void OnListKeyDown(wxListEvent& event);
  void OnFocused(wxListEvent& event);
  void OnUpList(wxCommandEvent& event);
  void OnAbout(wxCommandEvent& event);
  void OnSelectAll(wxCommandEvent& event);
  void OnCopy(wxCommandEvent& event);
  void OnProperties(wxCommandEvent& event);
  void OnSize(wxSizeEvent& event);
  void OnContextMenu(wxContextMenuEvent& event);
  void ShowContextMenu(const wxPoint& pos);
  void OnChar(wxKeyEvent& event);

 private:
  bool IsReportView() const;
  void ApplyColumnImages();
  void SelectRowsFrom(int start);
  void SyncTree(bool keepShortSlash);

  L_listctrl* m_list;
  ArrayDir m_dirs;
  ArrayFile m_files;
  my_DirTreeCtrl* m_tree;
  bool m_hasFolder;
  wxImageList* m_imageListSmall;
  wxImageList* m_imageListNormal;
  int m_rowCounter;
  wxString m_currentPath;  // mounted folder path ending in "/"; empty in drive mode
  wxArrayString m_unused;
  uint16_t m_iconView;
  wxSize m_size;
  int m_partitionIndex;
  bool m_isUpdataTree;
  bool m_isLastFocus;
  ColumnSortState m_sort;
  wxWindow* m_parentWindow;
  bool m_loadedFromTree;
  ListingRows m_rows;

  DECLARE_EVENT_TABLE()
};
