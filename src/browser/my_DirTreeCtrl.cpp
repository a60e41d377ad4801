#include "browser/my_DirTreeCtrl.h"

#include <wx/dir.h>
#include <wx/filedlg.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/menu.h>
#include <wx/settings.h>
#include <wx/tokenzr.h>

#include <cstdio>

#include "browser/L_treectrl.h"
#include "browser/ListingLogic.h"
#include "browser/my_TreeItemData.h"
#include "common/CustomEvents.h"
#include "common/ImageFiles.h"
#include "dialogs/CBusyMsgBox.h"
#include "disk/View_Disk_Info.h"
#include "display/ListingText.h"
#include "display/VolumeText.h"
#include "fileops/FolderWalker.h"

namespace {
const int kTreeId = 1004;
const long kDirsOnly = 0x10;
const long kSelectFirst = 0x20;
const long kShowBorder = 0x80;
const long kEditLabels = 0x100;

// Folder, opened folder, fixed-disk volume, USB volume (and the hidden root).
const common::ImageFile kTreeIcons[] = {
    {"bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG},
    {"bmp/FolderOpened_16x16.png", wxBITMAP_TYPE_PNG},
    {"disk.png", wxBITMAP_TYPE_PNG},
    {"usb.png", wxBITMAP_TYPE_PNG},
};
}  // namespace

BEGIN_EVENT_TABLE(my_DirTreeCtrl, wxControl)
  EVT_TREE_ITEM_EXPANDING(kTreeId, my_DirTreeCtrl::OnExpandItem)
  EVT_TREE_ITEM_COLLAPSED(kTreeId, my_DirTreeCtrl::OnCollapseItem)
  EVT_TREE_BEGIN_LABEL_EDIT(kTreeId, my_DirTreeCtrl::OnBeginEditItem)
  EVT_TREE_END_LABEL_EDIT(kTreeId, my_DirTreeCtrl::OnEndEditItem)
  EVT_TREE_ITEM_MENU(kTreeId, my_DirTreeCtrl::OnItemMenu)
  EVT_TREE_ITEM_ACTIVATED(kTreeId, my_DirTreeCtrl::OnItemActivated)
  EVT_TREE_SEL_CHANGED(kTreeId, my_DirTreeCtrl::OnSelChanged)
  EVT_SIZE(my_DirTreeCtrl::OnSize)
  EVT_MENU(MYCMD_TREE_COPY, my_DirTreeCtrl::OnCopy)
  EVT_MENU(MYCMD_TREE_ABOUT, my_DirTreeCtrl::OnAbout)
  EVT_MENU(MYCMD_TREE_SELECT_ALL, my_DirTreeCtrl::OnSelectAll)
  EVT_MENU(MYCMD_TREE_PROPERTIES, my_DirTreeCtrl::OnProperties)
END_EVENT_TABLE()

my_DirTreeCtrl::my_DirTreeCtrl() {
  m_ownPane.Attach(this);
  Init();
}

my_DirTreeCtrl::my_DirTreeCtrl(wxWindow* parent, int id, const wxString& dir,
                               const wxPoint& pos, const wxSize& size, long style,
                               const wxString& filter, int defaultFilter, const wxString& name) {
  m_ownPane.Attach(this);
  Init();
  Create(parent, id, dir, pos, size, style, filter, defaultFilter, name);
  m_parentWindow = parent;
}

my_DirTreeCtrl::~my_DirTreeCtrl() {}

void my_DirTreeCtrl::Init() {
  m_showHidden = false;
  m_filterIndex = 0;
  m_currentFilter.clear();
  m_treeCtrl = nullptr;
  m_imageList = nullptr;
  m_isUpdata = false;
  TreePane().SetLastFocus(FolderPane::FOCUS_TREE, false);
  m_listView = nullptr;
  m_textCtrlPath = nullptr;
  m_parentWindow = nullptr;
  m_selIsFolder = false;
}

bool my_DirTreeCtrl::Create(wxWindow* parent, int id, const wxString& dir, const wxPoint& pos,
                            const wxSize& size, long style, const wxString& filter,
                            int defaultFilter, const wxString& name) {
  if (!wxControl::Create(parent, id, pos, size, style & ~(kShowBorder | kEditLabels),
                         wxDefaultValidator, name))
    return false;
  SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_3DFACE));
  SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  Init();
  m_parentWindow = parent;

  long treeStyle = wxTR_HAS_BUTTONS | wxTR_HIDE_ROOT | wxTR_NO_LINES;
  if (style & kEditLabels) treeStyle |= wxTR_EDIT_LABELS;
  treeStyle |= (style & kShowBorder) ? wxBORDER_SUNKEN : wxBORDER_NONE;
  m_treeCtrl = CreateTreeCtrl(this, this, kTreeId, wxPoint(0, 0), GetClientSize(), treeStyle);

  m_defaultPath = dir;
  m_filter = filter.empty() ? wxString("*") : filter;
  SetFilterIndex(defaultFilter);
  m_showHidden = false;

  my_TreeItemData* rootData = new my_TreeItemData(wxString(), wxString(), true, false, -1);
  InitImage();
  m_treeCtrl->AssignImageList(m_imageList);
  m_rootId = m_treeCtrl->AddRoot(wxGetTranslation("Sections"), IMG_TREE_USB, -1, rootData);
  m_treeCtrl->SetItemHasChildren(m_rootId);
  ExpandDir(m_rootId);
  SetInitialSize(size);
  return true;
}

L_treectrl* my_DirTreeCtrl::CreateTreeCtrl(wxWindow* parent, my_DirTreeCtrl* dirTree, int id,
                                           const wxPoint& pos, const wxSize& size, long style) {
  L_treectrl* tree = new L_treectrl(parent, id, pos, size, style);
  // A press on the tree makes it the last focused source pane (the list's
  // flag goes with it: one pane) and tells the frame whether a volume root
  // or a folder is current.
  tree->SetPressNotice([dirTree, parent] {
    dirTree->SetIsLastFocus_treectrl(true);
    PostMyCustomCommand(parent, dirTree->GetSelIsFolder() ? MYCMD_TREE_ENABLE_COPY
                                                          : MYCMD_TREE_DISABLE_COPY);
  });
  return tree;
}

wxTreeCtrl* my_DirTreeCtrl::GetTreeCtrl() const { return m_treeCtrl; }

wxTreeItemId my_DirTreeCtrl::AppendItem(const wxTreeItemId& parent, const wxString& text,
                                        int image, int selectedImage, wxTreeItemData* data) {
  if (m_treeCtrl == nullptr) {
    delete data;
    return wxTreeItemId();
  }
  return m_treeCtrl->AppendItem(parent, text, image, selectedImage, data);
}

int my_DirTreeCtrl::InitImage() {
  m_imageList = new wxImageList(16, 16, true, 1);
  common::FillImageList(*m_imageList, kTreeIcons, WXSIZEOF(kTreeIcons));
  return 0;
}

void my_DirTreeCtrl::imageLoad(wxBitmap& bitmap, wxString path, int type) {
  if (!common::LoadImageFile(bitmap, path, type)) bitmap = wxNullBitmap;
}

my_TreeItemData* my_DirTreeCtrl::DataOf(const wxTreeItemId& id) const {
  if (!id.IsOk() || m_treeCtrl == nullptr) return nullptr;
  return static_cast<my_TreeItemData*>(m_treeCtrl->GetItemData(id));
}

void my_DirTreeCtrl::SetupSections() {
  const int n = g_AllDiskPartitionInf.GetCurrentParttionNum() & 0xffff;
  printf("asldkf = %d \n", n);  // fixed output: tests check this line
  fflush(stdout);
  wxArrayString names;
  wxArrayInt images;
  for (int i = 0; i < n && i < MAX_VOLUME_COUNT; ++i) {
    const VolumeInformation& v = g_AllDiskPartitionInf.m_Volume[i];
    m_sectionPaths.Add(VolumeText(v.MountPoint));
    names.Add(listing::DriveName(v.DriveLetter));
    images.Add(v.Removable ? IMG_TREE_USB : IMG_TREE_DISK);
  }
  for (size_t i = 0; i < names.GetCount(); ++i)
    AddSection(m_sectionPaths[i], names[i], images[i], static_cast<int>(i));
}

void my_DirTreeCtrl::AddSection(const wxString& path, const wxString& name, int imageId,
                                int partitionIndex) {
  my_TreeItemData* data =
      new my_TreeItemData(path, name, true, true, static_cast<int16_t>(partitionIndex));
  wxTreeItemId id = AppendItem(m_rootId, name, imageId, -1, data);
  if (id.IsOk()) m_treeCtrl->SetItemHasChildren(id);
}

void my_DirTreeCtrl::ExpandDir(wxTreeItemId parentId) {
  my_TreeItemData* data = DataOf(parentId);
  if (data == nullptr || data->m_isExpanded) return;
  data->m_isExpanded = true;
  if (parentId == m_treeCtrl->GetRootItem()) {
    SetupSections();
    return;
  }

  wxString dirName = data->m_path;
  wxArrayString dirs;
  wxArrayString files;
  {
    wxLogNull quiet;
    wxDir d;
    if (wxDirExists(dirName) && d.Open(dirName)) {
      wxString name;
      bool more = d.GetFirst(&name, wxString(), wxDIR_DIRS | wxDIR_HIDDEN);
      while (more) {
        if (name != "." && name != "..") dirs.Add(name);
        more = d.GetNext(&name);
      }
    }
    if (!HasFlag(kDirsOnly) && wxDirExists(dirName)) {
      wxDir f;
      if (f.Open(dirName)) {
        int flags = wxDIR_FILES;
        if (m_showHidden) flags |= wxDIR_HIDDEN;
        wxStringTokenizer specs(m_currentFilter, ";");
        while (specs.HasMoreTokens()) {
          wxString spec = specs.GetNextToken();
          wxString name;
          bool more = f.GetFirst(&name, spec, flags);
          while (more) {
            if (name != "." && name != "..") files.Add(name);
            more = f.GetNext(&name);
          }
        }
      }
    }
  }

  const wxString prefix = dirName.EndsWith("/") ? dirName : dirName + "/";
  for (const wxString& name : dirs) {
    my_TreeItemData* child = new my_TreeItemData(prefix + name, name, true, false, -1);
    wxTreeItemId id = AppendItem(parentId, name, IMG_TREE_FOLDER, -1, child);
    if (!id.IsOk()) continue;
    m_treeCtrl->SetItemImage(id, IMG_TREE_FOLDER_OPEN, wxTreeItemIcon_Expanded);
    if (child->HasSubDirs() || (!HasFlag(kDirsOnly) && child->HasFiles(m_currentFilter)))
      m_treeCtrl->SetItemHasChildren(id);
  }
  for (const wxString& name : files) {
    my_TreeItemData* child = new my_TreeItemData(prefix + name, name, true, false, -1);
    AppendItem(parentId, name, -1, -1, child);
  }
}

void my_DirTreeCtrl::CollapseDir(wxTreeItemId parentId) {
  my_TreeItemData* data = DataOf(parentId);
  if (data == nullptr || !data->m_isExpanded) return;
  data->m_isExpanded = false;
  wxTreeItemIdValue cookie;
  wxTreeItemId child = m_treeCtrl->GetFirstChild(parentId, cookie);
  while (child.IsOk()) {
    m_treeCtrl->Delete(child);
    child = m_treeCtrl->GetFirstChild(parentId, cookie);
  }
  if (parentId != m_treeCtrl->GetRootItem()) m_treeCtrl->Collapse(parentId);
}

wxTreeItemId my_DirTreeCtrl::FindChild(wxTreeItemId parentId, const wxString& path, bool& done) {
  const wxString searched = listing::NormaliseSearchPath(path);
  wxTreeItemIdValue cookie;
  wxTreeItemId child = m_treeCtrl->GetFirstChild(parentId, cookie);
  while (child.IsOk()) {
    my_TreeItemData* data = DataOf(child);
    bool whole = false;
    if (data != nullptr && !data->m_path.empty() &&
        listing::ChildPathMatches(data->m_path, searched, &whole)) {
      done = whole;
      return child;
    }
    child = m_treeCtrl->GetNextChild(parentId, cookie);
  }
  return wxTreeItemId();
}

bool my_DirTreeCtrl::ExpandPath(const wxString& path) {
  bool done = false;
  wxTreeItemId id = FindChild(m_rootId, path, done);
  wxTreeItemId lastId = id;
  while (id.IsOk() && !done) {
    ExpandDir(id);
    id = FindChild(id, path, done);
    if (id.IsOk()) lastId = id;
  }
  if (!lastId.IsOk()) return false;
  my_TreeItemData* data = DataOf(lastId);
  if (data != nullptr && data->m_isDir) m_treeCtrl->Expand(lastId);
  if (HasFlag(kSelectFirst) && data != nullptr && data->m_isDir) {
    wxTreeItemIdValue cookie;
    wxTreeItemId child = m_treeCtrl->GetFirstChild(lastId, cookie);
    while (child.IsOk()) {
      my_TreeItemData* cd = DataOf(child);
      if (cd != nullptr && !cd->m_path.empty() && !cd->m_isDir) {
        m_treeCtrl->SelectItem(child);
        m_treeCtrl->EnsureVisible(child);
        return true;
      }
      child = m_treeCtrl->GetNextChild(lastId, cookie);
    }
  }
  m_treeCtrl->SelectItem(lastId);
  m_treeCtrl->EnsureVisible(lastId);
  return true;
}

void my_DirTreeCtrl::SetPath(const wxString& path) {
  m_defaultPath = path;
  if (m_rootId.IsOk()) ExpandPath(path);
}

wxString my_DirTreeCtrl::GetPath() const {
  if (m_treeCtrl == nullptr) return wxString();
  my_TreeItemData* data = DataOf(m_treeCtrl->GetSelection());
  return data ? data->m_path : wxString();
}

int my_DirTreeCtrl::GetPartition_index(const wxString& path) {
  bool done = false;
  my_TreeItemData* data = DataOf(FindChild(m_rootId, path, done));
  return data ? data->m_partitionIndex : -1;
}

void my_DirTreeCtrl::UpdateMyDirTreeCtrl() {
  for (const wxString& path : m_sectionPaths) {
    bool done = false;
    wxTreeItemId id = FindChild(m_rootId, path, done);
    if (id.IsOk()) m_treeCtrl->Delete(id);
  }
  m_sectionPaths.Clear();
  SetupSections();
}

wxString my_DirTreeCtrl::CovertPath(const wxString& path) const {
  return listing::CovertPath(path);
}

void my_DirTreeCtrl::SetFilterIndex(int n) {
  m_filterIndex = n;
  wxString spec, description;
  if (ExtractWildcard(m_filter, n, spec, description))
    m_currentFilter = spec;
  else
    m_currentFilter = "*";
}

bool my_DirTreeCtrl::ExtractWildcard(const wxString& filterSpec, int n, wxString& filter,
                                     wxString& description) {
  wxArrayString descriptions, filters;
  const size_t count = wxParseCommonDialogsFilter(filterSpec, descriptions, filters);
  if (count > 0 && n >= 0 && static_cast<size_t>(n) < count) {
    description = descriptions[n];
    filter = filters[n];
    return true;
  }
  return false;
}

void my_DirTreeCtrl::SetListCtrlPoint(FolderPaneView* list) {
  m_listView = list;
  if (list != nullptr && list->Pane() != nullptr) list->Pane()->Attach(this);
}

void my_DirTreeCtrl::OnPaneFollowFolder(const wxString& folder) {
  SetIsUpdata(true);
  SetPath(folder);
  SetIsUpdata(false);
}

void my_DirTreeCtrl::OnPanePathText(const wxString& text) {
  if (m_textCtrlPath != nullptr) m_textCtrlPath->SetValue(text);
}

int my_DirTreeCtrl::OnPaneVolumeIndex(const wxString& path) { return GetPartition_index(path); }

void my_DirTreeCtrl::SetFocus() {
  TreePane().SetLastFocus(FolderPane::FOCUS_TREE, true);
  // The list moves the selection while the tree does not have the focus, so
  // the kind of the selected item is read again: focused from the keyboard,
  // Copy follows what the tree shows selected.
  if (m_treeCtrl != nullptr && m_treeCtrl->GetSelection().IsOk())
    if (my_TreeItemData* data = DataOf(m_treeCtrl->GetSelection())) m_selIsFolder = !data->m_isSection;
  PostMyCustomCommand(m_parentWindow,
                      m_selIsFolder ? MYCMD_TREE_ENABLE_COPY : MYCMD_TREE_DISABLE_COPY);
  if (m_treeCtrl != nullptr) m_treeCtrl->SetFocus();
}

unsigned long long my_DirTreeCtrl::Account_Dir_File_Size(const wxString& path) {
  const wxCharBuffer name = path.fn_str();
  FolderWalkOptions options;
  options.followLinks = true;
  FolderWalkEntry top;
  struct stat64 info;
  if (DescribePath(name.data(), options, &top, &info) != 0) return 0;
  if (top.kind == kWalkFile) return top.size;
  // The sum is carried in a double, as the tree has always done.
  double total = 0;
  WalkFolder(name.data(), options, [&](const FolderWalkEntry& e) {
    if (e.event == kWalkEnter && e.kind == kWalkFile) total += static_cast<double>(e.size);
    return kWalkContinue;
  });
  return static_cast<unsigned long long>(total);
}

void my_DirTreeCtrl::ShowInList(const wxString& folderWithSlash) {
  TreePane().ShowFolder(folderWithSlash);
}

void my_DirTreeCtrl::OnExpandItem(wxTreeEvent& event) {
  if (!m_rootId.IsOk()) m_rootId = m_treeCtrl->GetRootItem();
  const wxTreeItemId item = event.GetItem();
  ExpandDir(item);
  if (m_isUpdata) {
    m_isUpdata = false;
    TreePane().SetUpdateTree(true);
    return;
  }
  CBusyMsgBox busy(wxGetTranslation("Please wait, working..."), m_parentWindow,
                   wxColour("WHITE"));
  wxString path = GetPath();
  if (m_textCtrlPath != nullptr) m_textCtrlPath->SetValue(CovertPath(path));
  my_TreeItemData* data = DataOf(item);
  if (!path.empty() && data != nullptr && data->HasSubDirs()) {
    if (data->m_isSection) TreePane().OpenVolume(data->m_partitionIndex);
    path += "/";
    ShowInList(path);
    TreePane().SetLoadedFromTree(true);
  }
}

void my_DirTreeCtrl::OnCollapseItem(wxTreeEvent& event) {
  static int flag = 0;
  ++flag;
  if (flag == 1) {
    CBusyMsgBox flash(wxGetTranslation("Please wait, working..."), m_parentWindow,
                      wxColour("WHITE"));
  }
  if (flag == 2) flag = 0;

  const wxTreeItemId item = event.GetItem();
  CollapseDir(item);
  wxString path = GetPath();
  my_TreeItemData* data = DataOf(item);
  if (!path.empty() && data != nullptr && data->HasSubDirs()) {
    path += "/";
    ShowInList(path);
    if (m_textCtrlPath != nullptr) m_textCtrlPath->SetValue(CovertPath(path.BeforeLast('/')));
  }
}

void my_DirTreeCtrl::OnBeginEditItem(wxTreeEvent& WXUNUSED(event)) {}
void my_DirTreeCtrl::OnEndEditItem(wxTreeEvent& WXUNUSED(event)) {}

void my_DirTreeCtrl::OnItemActivated(wxTreeEvent& event) {
  wxString path = GetPath();
  if (path.empty()) return;
  const wxTreeItemId item = event.GetItem();
  my_TreeItemData* data = DataOf(item);
  if (data == nullptr) return;
  if (!data->HasSubDirs()) {
    path += "/";
    ShowInList(path);
    TreePane().SetLoadedFromTree(true);
    if (m_textCtrlPath != nullptr) m_textCtrlPath->SetValue(CovertPath(path));
  }
  if (!data->m_isExpanded) {
    SetPath(path);
  } else {
    OnCollapseItem(event);
  }
  if (m_textCtrlPath != nullptr) m_textCtrlPath->SetValue(CovertPath(path));
}

void my_DirTreeCtrl::OnSelChanged(wxTreeEvent& event) {
  if (!GetIsLastFocus_treectrl()) return;
  my_TreeItemData* data = DataOf(event.GetItem());
  if (data == nullptr) return;
  if (!data->m_isSection) {
    PostMyCustomCommand(m_parentWindow, MYCMD_TREE_ENABLE_COPY);
    m_selIsFolder = true;
  } else {
    PostMyCustomCommand(m_parentWindow, MYCMD_TREE_DISABLE_COPY);
    m_selIsFolder = false;
  }
}

void my_DirTreeCtrl::OnSize(wxSizeEvent& event) {
  if (m_treeCtrl != nullptr) m_treeCtrl->SetSize(GetClientSize());
  event.Skip();
}

void my_DirTreeCtrl::OnItemMenu(wxTreeEvent& event) {
  const wxTreeItemId item = event.GetItem();
  my_TreeItemData* data = DataOf(item);
  const wxPoint point = event.GetPoint();
  if (data != nullptr && !data->m_isSection) ShowMenu(item, point);
  event.Skip();
}

wxMenu* my_DirTreeCtrl::CreateItemMenu() const {
  wxMenu* menu = new wxMenu;
  menu->Append(MYCMD_TREE_COPY, wxGetTranslation("&Copy..."));
  menu->Append(MYCMD_TREE_SELECT_ALL, wxGetTranslation("&Select All..."));
  menu->AppendSeparator();
  menu->Append(MYCMD_TREE_PROPERTIES, wxGetTranslation("&Properties"));
  menu->Enable(MYCMD_TREE_SELECT_ALL, false);
  return menu;
}

void my_DirTreeCtrl::ShowMenu(wxTreeItemId id, const wxPoint& pt) {
  if (id.IsOk()) m_treeCtrl->SelectItem(id);
  wxMenu* menu = CreateItemMenu();  // a menu without a title
  PopupMenu(menu, pt);
  delete menu;
}

void my_DirTreeCtrl::OnCopy(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_TREE_COPY);
}
void my_DirTreeCtrl::OnAbout(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_TREE_ABOUT);
}
void my_DirTreeCtrl::OnSelectAll(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_TREE_SELECT_ALL);
}
void my_DirTreeCtrl::OnProperties(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_TREE_PROPERTIES);
}
