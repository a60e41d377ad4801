// The source directory tree: one root per mounted volume ("C:", "D:", ...),
// folders read lazily on expansion in directory order. Through the folder
// pane it shares with the source file list it has folders listed there and
// follows the list's folder; it writes the frame's path field, and tells the
// frame through custom command codes 400 to 405 (MYCMD_TREE_*) what is
// current and what the user chose.
#pragma once

#include <wx/control.h>
#include <wx/imaglist.h>
#include <wx/textctrl.h>
#include <wx/treectrl.h>

#include <cstdint>

#include "browser/FolderPane.h"

class L_treectrl;
class my_TreeItemData;

// Positions in the tree's image list.
enum TreeImage {
  IMG_TREE_FOLDER = 0,       // a folder
  IMG_TREE_FOLDER_OPEN = 1,  // an expanded folder
  IMG_TREE_DISK = 2,         // a volume on a fixed disk
  IMG_TREE_USB = 3,          // a volume on a USB disk; also the hidden root
};

class my_DirTreeCtrl : public wxControl, public FolderPaneView {
 public:
  my_DirTreeCtrl();
  my_DirTreeCtrl(wxWindow* parent, int id, const wxString& dir, const wxPoint& pos,
                 const wxSize& size, long style, const wxString& filter, int defaultFilter,
                 const wxString& name);
  ~my_DirTreeCtrl() override;

  bool Create(wxWindow* parent, int id, const wxString& dir, const wxPoint& pos,
              const wxSize& size, long style, const wxString& filter, int defaultFilter,
              const wxString& name);
  virtual void Init();
  virtual void CollapseDir(wxTreeItemId parentId);
  virtual wxString GetPath() const;

  L_treectrl* CreateTreeCtrl(wxWindow* parent, my_DirTreeCtrl* dirTree, int id,
                             const wxPoint& pos, const wxSize& size, long style);
  wxTreeCtrl* GetTreeCtrl() const;
  wxTreeItemId GetRootId() const { return m_rootId; }
  wxTreeItemId AppendItem(const wxTreeItemId& parent, const wxString& text, int image = -1,
                          int selectedImage = -1, wxTreeItemData* data = nullptr);

  void SetupSections();
  void AddSection(const wxString& path, const wxString& name, int imageId, int partitionIndex);
  void ExpandDir(wxTreeItemId parentId);
  bool ExpandPath(const wxString& path);
  wxTreeItemId FindChild(wxTreeItemId parentId, const wxString& path, bool& done);
  void SetPath(const wxString& path);
  int GetPartition_index(const wxString& path);
  void UpdateMyDirTreeCtrl();
  wxString CovertPath(const wxString& path) const;

  void SetFilterIndex(int n);
  bool ExtractWildcard(const wxString& filterSpec, int n, wxString& filter,
                       wxString& description);
  void SetFocus() override;
  unsigned long long Account_Dir_File_Size(const wxString& path);

  int InitImage();
  void imageLoad(wxBitmap& bitmap, wxString path, int type);
  wxImageList* GetImageList() const { return m_imageList; }

  // Wiring: the tree shows the folder pane of the given list (until then a
  // pane of its own), and writes locations into the frame's path field.
  void SetListCtrlPoint(FolderPaneView* list);
  FolderPaneView* GetListCtrlPoint() const { return m_listView; }
  void SetTextCtrlPath(wxTextCtrl* text) { m_textCtrlPath = text; }
  wxTextCtrl* GetTextCtrlPath() const { return m_textCtrlPath; }
  void SetIsUpdata(bool flag) { m_isUpdata = flag; }
  bool GetIsUpdata() const { return m_isUpdata; }
  void SetIsLastFocus_treectrl(bool flag) {
    TreePane().SetLastFocus(FolderPane::FOCUS_TREE, flag);
  }
  bool GetIsLastFocus_treectrl() const {
    return TreePane().IsLastFocus(FolderPane::FOCUS_TREE);
  }
  bool GetSelIsFolder() const { return m_selIsFolder; }
  const wxArrayString& GetSectionPaths() const { return m_sectionPaths; }
  const wxString& GetDefaultPath() const { return m_defaultPath; }
  const wxString& GetCurrentFilter() const { return m_currentFilter; }

  // The item menu (400 "&Copy...", 402 "&Select All..." disabled, separator,
  // 403 "&Properties").
  wxMenu* CreateItemMenu() const;

  // Event handlers.
  void OnExpandItem(wxTreeEvent& event);
  void OnCollapseItem(wxTreeEvent& event);
  void OnBeginEditItem(wxTreeEvent& event);
  void OnEndEditItem(wxTreeEvent& event);
  void OnItemMenu(wxTreeEvent& event);
  void OnItemActivated(wxTreeEvent& event);
  void OnSelChanged(wxTreeEvent& event);
  void OnSize(wxSizeEvent& event);
  void OnCopy(wxCommandEvent& event);
  void OnAbout(wxCommandEvent& event);
  void OnSelectAll(wxCommandEvent& event);
  void OnProperties(wxCommandEvent& event);
  void ShowMenu(wxTreeItemId id, const wxPoint& pt);

  // What the list asks of the tree through the pane.
  void OnPaneFollowFolder(const wxString& folder) override;
  void OnPanePathText(const wxString& text) override;
  int OnPaneVolumeIndex(const wxString& path) override;

 private:
  // The pane the tree shows: the list's once joined, else its own.
  FolderPane& TreePane() const { return Pane() != nullptr ? *Pane() : m_ownPane; }
  my_TreeItemData* DataOf(const wxTreeItemId& id) const;
  void ShowInList(const wxString& folderWithSlash);

  bool m_showHidden;
  wxTreeItemId m_rootId;
  wxString m_defaultPath;
  wxString m_filter;
  int m_filterIndex;
  wxString m_currentFilter;
  L_treectrl* m_treeCtrl;
  wxImageList* m_imageList;
  bool m_isUpdata;
  wxArrayString m_sectionPaths;
  FolderPaneView* m_listView;
  mutable FolderPane m_ownPane;
  wxTextCtrl* m_textCtrlPath;
  wxWindow* m_parentWindow;  // target of posted codes, parent of the busy box
  bool m_selIsFolder;

  DECLARE_EVENT_TABLE()
};
