// The source file list: drive mode lists the mounted volumes, folder mode one
// folder under a volume's mount point (folders first, a ".." row on top).
// The folder listing, sorting and going up come from FolderListCtrl; this
// class adds the drive list, the context menu and the custom command codes
// 420 to 425 that tell the main frame what the user did. It keeps the source
// tree and the path field in step only through its folder pane, which the
// tree shares.
#pragma once

#include <wx/menu.h>

#include "browser/FolderListCtrl.h"

class L_listctrl;

class my_listctrl : public FolderListCtrl {
 public:
  my_listctrl();
  my_listctrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style,
              const wxString& name);

  bool Create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size, long style,
              const wxString& name);
  void Init();

  // Drive mode.
  int InitParttionList();
  void Refresh_column(int partitionIndex);

  // Listing.
  void Copy_Refresh_Filelisttabel(wxString path);

  // Icons.
  int InitImage() override;
  void imageLoad(wxBitmap& bitmap, wxString path, int type);

  // Selection and focus.
  bool ListctrlSelectAll();
  void SetFocus() override;

  // Wiring: the tree shows this list's pane (see FolderPane).
  void SetPDirTree(FolderPaneView* tree);
  FolderPaneView* GetPDirTree() const { return m_tree; }
  void SetIsUpdataTreeCtrl(bool flag) { m_pane.SetUpdateTree(flag); }
  bool GetIsUpdataTreeCtrl() const { return m_pane.UpdateTree(); }
  void SetIsLastFocus_listctrl(bool flag) { m_pane.SetLastFocus(FolderPane::FOCUS_LIST, flag); }
  bool GetIsLastFocus_listctrl() const { return m_pane.IsLastFocus(FolderPane::FOCUS_LIST); }
  void SetLoadedFromTree(bool flag) { m_pane.SetLoadedFromTree(flag); }
  bool GetLoadedFromTree() const { return m_pane.LoadedFromTree(); }
  bool GetHasFolder() const { return m_hasFolder; }
  int GetPartitionIndex() const { return m_partitionIndex; }

  L_listctrl* GetListCtrl() const;

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
  void OnUpList(wxCommandEvent& event) override;
  void OnAbout(wxCommandEvent& event);
  void OnSelectAll(wxCommandEvent& event);
  void OnCopy(wxCommandEvent& event);
  void OnProperties(wxCommandEvent& event);
  void OnContextMenu(wxContextMenuEvent& event);
  void ShowContextMenu(const wxPoint& pos);
  void OnChar(wxKeyEvent& event);

  // What the tree asks of the list through the pane.
  void OnPaneShowFolder(const wxString& folder) override;
  void OnPaneVolumeOpened(int index) override;

 protected:
  ListingListView* CreateListView(const wxSize& size, long style) override;
  bool ShowsDotRow() const override { return true; }
  bool HasDriveMode() const override { return true; }

 private:
  // The tree follows the list's folder; the path field shows it (keeping the
  // "/" of a volume's top when `keepShortSlash`).
  void SyncTree(bool keepShortSlash);

  FolderPaneView* m_tree;
  bool m_hasFolder;
  int m_partitionIndex;

  DECLARE_EVENT_TABLE()
};
