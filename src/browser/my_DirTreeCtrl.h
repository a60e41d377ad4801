// The source directory tree: one root per mounted volume ("C:", "D:", ...),
// folders read lazily on expansion in directory order. It fills the source
// file list and the frame's path field, and tells the frame through custom
// command codes 400 to 405 (MYCMD_TREE_*) what is current and what the user chose.
#pragma once

#include <wx/control.h>
#include <wx/imaglist.h>
#include <wx/textctrl.h>
#include <wx/treectrl.h>

#include <cstdint>

class L_treectrl;
class my_listctrl;
class my_TreeItemData;

class my_DirTreeCtrl : public wxControl {
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

  // Wiring.
  void SetListCtrlPoint(my_listctrl* list) { m_listCtrl = list; }
  my_listctrl* GetListCtrlPoint() const { return m_listCtrl; }
  void SetTextCtrlPath(wxTextCtrl* text) { m_textCtrlPath = text; }
  wxTextCtrl* GetTextCtrlPath() const { return m_textCtrlPath; }
  void SetIsUpdata(bool flag) { m_isUpdata = flag; }
  bool GetIsUpdata() const { return m_isUpdata; }
  void SetIsLastFocus_treectrl(bool flag) { m_isLastFocus = flag; }
  bool GetIsLastFocus_treectrl() const { return m_isLastFocus; }
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

 private:
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
  bool m_isLastFocus;
  wxArrayString m_sectionPaths;
  my_listctrl* m_listCtrl;
  wxTextCtrl* m_textCtrlPath;
  wxWindow* m_parentWindow;  // target of posted codes, parent of the busy box
  bool m_selIsFolder;

  DECLARE_EVENT_TABLE()
};
