#include "browser/my_listctrl.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/settings.h>

#include <cstdio>

#include "browser/FileTypeIcons.h"
#include "browser/L_listctrl.h"
#include "browser/ListingLogic.h"
#include "browser/my_DirTreeCtrl.h"
#include "common/CustomEvents.h"
#include "common/ImageFiles.h"
#include "dialogs/CBusyMsgBox.h"
#include "disk/View_Disk_Info.h"
#include "display/ListingText.h"

namespace {
const int kListId = 1001;
const long kViewBits = wxLC_ICON | wxLC_SMALL_ICON | wxLC_LIST | wxLC_REPORT;

wxString VolumeMountPoint(int index) {
  if (index < 0 || index >= MAX_VOLUME_COUNT) return wxString();
  return wxString::FromAscii(g_AllDiskPartitionInf.m_Volume[index].MountPoint);
}
}  // namespace

BEGIN_EVENT_TABLE(my_listctrl, wxControl)
  EVT_LIST_COL_CLICK(kListId, my_listctrl::OnColClick)
  EVT_LIST_ITEM_ACTIVATED(kListId, my_listctrl::OnListDoubleClick)
  EVT_LIST_ITEM_ACTIVATED(kListId, my_listctrl::OnActivated)
  EVT_LIST_ITEM_SELECTED(kListId, my_listctrl::OnSelected)
  EVT_LIST_ITEM_DESELECTED(kListId, my_listctrl::OnDeselected)
  EVT_LIST_KEY_DOWN(kListId, my_listctrl::OnListKeyDown)
  EVT_LIST_ITEM_FOCUSED(kListId, my_listctrl::OnFocused)
  EVT_MENU(MYCMD_LIST_ABOUT, my_listctrl::OnAbout)
  EVT_MENU(MYCMD_LIST_SELECT_ALL, my_listctrl::OnSelectAll)
  EVT_MENU(MYCMD_LIST_COPY, my_listctrl::OnCopy)
  EVT_MENU(MYCMD_LIST_PROPERTIES, my_listctrl::OnProperties)
  EVT_SIZE(my_listctrl::OnSize)
  EVT_CONTEXT_MENU(my_listctrl::OnContextMenu)
  EVT_CHAR(my_listctrl::OnChar)
END_EVENT_TABLE()

my_listctrl::my_listctrl() : m_rows(&m_dirs, &m_files) { Init(); }

my_listctrl::my_listctrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                         long style, const wxString& name)
    : m_rows(&m_dirs, &m_files) {
  Init();
  Create(parent, id, pos, size, style, name);
}

my_listctrl::~my_listctrl() {
  if (m_list != nullptr) {
    m_list->SetImageList(nullptr, wxIMAGE_LIST_SMALL);
    m_list->SetImageList(nullptr, wxIMAGE_LIST_NORMAL);
  }
  delete m_imageListSmall;
  delete m_imageListNormal;
}

void my_listctrl::Init() {
  m_list = nullptr;
  m_rowCounter = 0;
  m_imageListSmall = nullptr;
  m_imageListNormal = nullptr;
  m_iconView = 0;
  m_tree = nullptr;
  m_partitionIndex = 0;
  m_isUpdataTree = false;
  m_isLastFocus = false;
  m_hasFolder = false;
  m_parentWindow = nullptr;
  m_loadedFromTree = false;
  m_sort.Reset();
}

bool my_listctrl::Create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                         long style, const wxString& name) {
  m_parentWindow = parent;
  if (!wxControl::Create(parent, id, pos, size, style, wxDefaultValidator, name)) return false;
  SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
  SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  m_size = size;
  m_list = new L_listctrl(this, this, kListId, wxPoint(0, 0), GetClientSize(),
                          (style & ~kViewBits) | wxLC_REPORT | wxLC_VIRTUAL);
  InitImage();
  m_list->SetImageList(m_imageListSmall, wxIMAGE_LIST_SMALL);
  InitColumnUpDown();
  InitParttionList();
  PostMyCustomCommand(this, MYCMD_LIST_DISABLE_COPY);
  m_hasFolder = false;
  SetInitialSize(size);
  return true;
}

bool my_listctrl::ReCreate(long style) {
  const long view = style & kViewBits;
  if (view != wxLC_ICON && view != wxLC_REPORT) return true;  // other views: nothing to build
  const long base = style & ~kViewBits;
  if (m_list != nullptr) {
    m_list->SetImageList(nullptr, wxIMAGE_LIST_SMALL);
    m_list->SetImageList(nullptr, wxIMAGE_LIST_NORMAL);
    m_list->Destroy();
    m_list = nullptr;
  }
  if (view == wxLC_ICON) {
    m_iconView = 1;
    m_list = new L_listctrl(this, this, kListId, wxPoint(0, 0), GetClientSize(), base | wxLC_ICON);
    m_list->SetImageList(m_imageListNormal, wxIMAGE_LIST_NORMAL);
    List_FileTable();
  } else {
    m_iconView = 0;
    m_list = new L_listctrl(this, this, kListId, wxPoint(0, 0), GetClientSize(),
                            base | wxLC_REPORT | wxLC_VIRTUAL);
    InitColumnItems();
    m_list->SetImageList(m_imageListSmall, wxIMAGE_LIST_SMALL);
    List_FileTable();
  }
  SetInitialSize(m_size);
  return true;
}

bool my_listctrl::IsReportView() const { return m_iconView == 0; }

int my_listctrl::InitImage() {
  m_imageListSmall = new wxImageList(16, 16, true, 1);
  m_imageListNormal = new wxImageList(32, 32, true, 1);
  listing::FillListImages(*m_imageListSmall, listing::kSourceListImages);
  return 0;
}

void my_listctrl::imageLoad(wxBitmap& bitmap, wxString path, int type) {
  if (!common::LoadImageFile(bitmap, path, type)) bitmap = wxNullBitmap;
}

int my_listctrl::GetFileImageIndex(wxString name) { return listing::GetFileImageIndex(name); }

void my_listctrl::InitColumnItems() {
  m_list->InsertColumn(0, wxGetTranslation("Name"), wxLIST_FORMAT_LEFT, 130);
  m_list->InsertColumn(1, wxGetTranslation("Size"), wxLIST_FORMAT_RIGHT, 80);
  m_list->InsertColumn(2, wxGetTranslation("Type"), wxLIST_FORMAT_LEFT, 60);
  m_list->InsertColumn(3, wxGetTranslation("Modified"), wxLIST_FORMAT_LEFT, 130);
}

void my_listctrl::Refresh_column(int partitionIndex) {
  m_list->ClearAll();
  InitColumnItems();
  m_partitionIndex = partitionIndex;
}

int my_listctrl::InitParttionList() {
  m_list->ClearAll();
  std::vector<DriveRow> drives;
  const int n = g_AllDiskPartitionInf.GetCurrentParttionNum();
  for (int i = 0; i < n && i < MAX_VOLUME_COUNT; ++i) {
    const VolumeInformation& v = g_AllDiskPartitionInf.m_Volume[i];
    DriveRow row;
    row.name = listing::DriveName(v.DriveLetter);
    row.label = wxString::FromAscii(v.VolumeLabel);
    row.size = wxString::FromAscii(v.SizeText);
    row.free = wxString::FromAscii(v.FreeText);
    row.image = v.Removable == 0 ? listing::IMG_DISK : listing::IMG_USB;
    drives.push_back(row);
  }
  m_rows.ShowDrives(drives);
  if (m_list->IsVirtualView()) {
    m_list->InsertColumn(0, wxGetTranslation("Name"), wxLIST_FORMAT_LEFT, 110);
    m_list->InsertColumn(1, wxGetTranslation("Type"), wxLIST_FORMAT_RIGHT, 90);
    m_list->InsertColumn(2, wxGetTranslation("Size"), wxLIST_FORMAT_LEFT, 100);
    m_list->InsertColumn(3, wxGetTranslation("Free Size"), wxLIST_FORMAT_LEFT, 120);
    m_list->ReloadRows();
  } else {
    for (size_t i = 0; i < drives.size(); ++i)
      m_list->InsertItem(static_cast<long>(i), drives[i].name, drives[i].image);
  }
  m_currentPath.clear();
  SetListFocus(m_partitionIndex);
  return 0;
}

int my_listctrl::List_FileTable() {
  m_rows.ShowFolder(true);
  if (m_list->IsVirtualView()) {
    m_list->ReloadRows();
    m_rowCounter = static_cast<int>(m_rows.Count());
    return 0;
  }
  // Icon view: ordinary items, no ".." row.
  m_list->DeleteAllItems();
  m_rowCounter = 0;
  for (size_t i = 0; i < m_dirs.GetCount(); ++i)
    m_list->InsertItem(m_rowCounter++, m_dirs[i].m_name, listing::IMG_FOLDER);
  for (size_t i = 0; i < m_files.GetCount(); ++i)
    m_list->InsertItem(m_rowCounter++, m_files[i].m_name, m_files[i].m_imageIndex);
  m_list->Refresh();
  return 0;
}

void my_listctrl::ViewIconText() {
  if (m_list->IsVirtualView()) return;  // only the icon view holds inserted items
  m_list->DeleteAllItems();
  m_rowCounter = 0;
  for (size_t i = 0; i < m_files.GetCount(); ++i)
    m_list->InsertItem(0, m_files[i].m_name, listing::IMG_FILE);
  for (size_t i = 0; i < m_dirs.GetCount(); ++i)
    m_list->InsertItem(0, m_dirs[i].m_name, listing::IMG_FOLDER);
  m_list->Refresh();
}

void my_listctrl::SetColumnImage(int column, bool ascending) {
  if (column < 0 || column >= m_list->GetColumnCount()) return;
  wxListItem item;
  item.SetMask(wxLIST_MASK_IMAGE);
  item.SetImage(ascending ? listing::IMG_SORT_UP : listing::IMG_SORT_DOWN);
  m_list->SetColumn(column, item);
}

void my_listctrl::ApplyColumnImages() {
  const int n = std::min(m_list->GetColumnCount(), ColumnSortState::kColumns);
  for (int c = 0; c < n; ++c) {
    wxListItem item;
    item.SetMask(wxLIST_MASK_IMAGE);
    item.SetImage(m_sort.HeaderImage(c));
    m_list->SetColumn(c, item);
  }
}

void my_listctrl::InitColumnUpDown() {
  m_sort.Reset();
  if (m_list != nullptr && m_list->IsVirtualView()) ApplyColumnImages();
}

int my_listctrl::Read_FileDir_Array(wxString path) {
  if (m_currentPath.empty()) {
    m_list->ClearAll();
    if (m_list->IsVirtualView()) InitColumnItems();
  }
  if (!listing::ReadListing(path, m_dirs, m_files)) return -1;
  m_currentPath = path;
  return 0;
}

void my_listctrl::Sort_asc(int column) { listing::SortListing(m_dirs, m_files, column, true); }

void my_listctrl::Sort_drop(int column) { listing::SortListing(m_dirs, m_files, column, false); }

wxString my_listctrl::CovertPath(wxString& path) { return listing::CovertPath(path); }

void my_listctrl::Copy_Refresh_Filelisttabel(wxString path) {
  if (m_tree != nullptr && m_tree->GetTextCtrlPath() != nullptr)
    m_tree->GetTextCtrlPath()->SetValue(CovertPath(path));
  if (Read_FileDir_Array(path + "/") == 0) List_FileTable();
}

bool my_listctrl::SetListFocus(int row) {
  if (row < 0 || row >= m_list->GetItemCount()) return false;
  m_list->SetItemState(row, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                       wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
  return true;
}

void my_listctrl::SelectRowsFrom(int start) {
  const int count = m_list->GetItemCount();
  if (start >= count) return;
  // Select the whole range at once (a folder can hold many thousand rows),
  // then take back the rows before `start`; the focus ends on the last row.
  m_list->SetItemState(-1, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  for (int r = 0; r < start; ++r) m_list->SetItemState(r, 0, wxLIST_STATE_SELECTED);
  m_list->SetItemState(count - 1, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
}

bool my_listctrl::ListctrlSelectAll() {
  if (m_currentPath.empty()) return false;
  const bool row0 = m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0;
  SelectRowsFrom(listing::SelectAllStartRow(row0));
  return true;
}

void my_listctrl::SetFocus() {
  m_isLastFocus = true;
  if (m_tree != nullptr) m_tree->SetIsLastFocus_treectrl(false);
  m_hasFolder = !m_currentPath.empty();
  PostMyCustomCommand(this, m_hasFolder ? MYCMD_LIST_ENABLE_COPY : MYCMD_LIST_DISABLE_COPY);
  if (m_list != nullptr) m_list->SetFocus();
}

void my_listctrl::NoteListClicked() {
  m_isLastFocus = true;
  if (m_tree != nullptr) m_tree->SetIsLastFocus_treectrl(false);
  m_hasFolder = !m_currentPath.empty();
}

void my_listctrl::SyncTree(bool keepShortSlash) {
  if (m_tree == nullptr) return;
  m_tree->SetIsUpdata(true);
  m_tree->SetPath(m_currentPath);
  if (m_isUpdataTree) m_isUpdataTree = false;
  m_tree->SetIsUpdata(false);
  wxTextCtrl* text = m_tree->GetTextCtrlPath();
  if (text == nullptr) return;
  wxString shown = m_currentPath;
  if (!(keepShortSlash && shown.length() <= 7) && shown.EndsWith("/")) shown.RemoveLast();
  text->SetValue(CovertPath(shown));
}

void my_listctrl::OnListDoubleClick(wxListEvent& event) {
  printf("dClick list item\n");
  fflush(stdout);
  const long i = event.GetIndex();
  const wxString t = m_list->GetItemText(i);
  wxString p = m_currentPath + t;
  if (m_sort.SortedColumn() != -1) InitColumnUpDown();
  if (wxFileName::FileExists(p)) return;  // files are not opened

  const bool driveMode = m_currentPath.empty();
  if (driveMode) {
    m_list->ClearAll();
    p = VolumeMountPoint(static_cast<int>(i));
    InitColumnItems();
    m_partitionIndex = static_cast<int>(i);
    PostMyCustomCommand(this, MYCMD_LIST_ENABLE_COPY);
    m_hasFolder = true;
  }
  p += "/";

  if (i == 0 && IsReportView() && !driveMode) {
    CBusyMsgBox busy(wxGetTranslation("Please wait, working..."), m_parentWindow,
                     wxColour("WHITE"));
    wxCommandEvent up;
    OnUpList(up);
    return;
  }
  if (wxFileName::DirExists(p)) {
    CBusyMsgBox busy(wxGetTranslation("Please wait, working..."), m_parentWindow,
                     wxColour("WHITE"));
    Read_FileDir_Array(p);
    List_FileTable();
  }
  SetListFocus(2);
  m_list->SetFocus();
  SyncTree(false);
  event.Skip();
}

void my_listctrl::OnActivated(wxListEvent& event) { event.Skip(); }

void my_listctrl::OnUpList(wxCommandEvent& WXUNUSED(event)) {
  const wxString old = m_currentPath;
  if (m_sort.SortedColumn() != -1) InitColumnUpDown();
  if (m_currentPath.empty()) return;

  const wxString root = wxString::Format("%s/", VolumeMountPoint(m_partitionIndex));
  if (m_currentPath.length() == root.length()) {
    m_dirs.Empty();
    m_files.Empty();
    if (m_tree != nullptr) {
      int index = m_tree->GetPartition_index(m_currentPath);
      if (index >= 0) m_partitionIndex = index;
    }
    InitParttionList();  // selects the partition index row
    PostMyCustomCommand(this, MYCMD_LIST_DISABLE_COPY);
    m_hasFolder = false;
    return;
  }

  const wxString up = listing::ParentFolder(m_currentPath);
  if (Read_FileDir_Array(up) == 0 && List_FileTable() == 0) SetListFocus(1);
  m_list->SetFocus();
  SyncTree(true);
}

void my_listctrl::OnColClick(wxListEvent& event) {
  printf("OnColClick\n");
  fflush(stdout);
  const int column = event.GetColumn();
  if (m_currentPath.empty() || column == listing::COL_TYPE) return;
  if (!m_sort.Click(column)) return;
  ApplyColumnImages();
  if (m_sort.Ascending())
    Sort_asc(column);
  else
    Sort_drop(column);
  List_FileTable();
}

void my_listctrl::OnSelected(wxListEvent& event) {
  if (IsReportView() && !m_currentPath.empty()) {
    const long i = event.GetIndex();
    if (i >= 0 && listing::IsDotRowText(m_list->GetItemText(i)))
      m_list->SetItemState(i, 0, wxLIST_STATE_SELECTED);
    // A range selection in the virtual list reports only one row: the ".."
    // row must not stay selected through it either.
    if (m_rows.HasDotRow() && m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0)
      m_list->SetItemState(0, 0, wxLIST_STATE_SELECTED);
  }
  event.Skip();
}

void my_listctrl::OnDeselected(wxListEvent& event) { event.Skip(); }

void my_listctrl::OnListKeyDown(wxListEvent& event) {
  if (event.GetKeyCode() == WXK_BACK) {
    wxCommandEvent up;
    OnUpList(up);
    return;
  }
  event.Skip();  // every other key keeps the list's own handling
}

void my_listctrl::OnFocused(wxListEvent& event) { event.Skip(); }

void my_listctrl::OnAbout(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_LIST_ABOUT);
}
void my_listctrl::OnSelectAll(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_LIST_SELECT_ALL);
}
void my_listctrl::OnCopy(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_LIST_COPY);
}
void my_listctrl::OnProperties(wxCommandEvent& WXUNUSED(event)) {
  PostMyCustomCommand(this, MYCMD_LIST_PROPERTIES);
}

void my_listctrl::OnSize(wxSizeEvent& event) {
  if (m_list != nullptr) m_list->SetSize(GetClientSize());
  event.Skip();
}

wxMenu* my_listctrl::CreateContextMenu() const {
  wxMenu* menu = new wxMenu;
  menu->Append(MYCMD_LIST_COPY, wxGetTranslation("&Copy..."), wxString());
  menu->Append(MYCMD_LIST_SELECT_ALL, wxGetTranslation("&Select All..."), wxString());
  menu->AppendSeparator();
  menu->Append(MYCMD_LIST_PROPERTIES, wxGetTranslation("&Properties"), wxString());
  return menu;
}

void my_listctrl::OnContextMenu(wxContextMenuEvent& event) {
  if (m_currentPath.empty()) return;  // no menu on the drive list
  wxPoint point = event.GetPosition();
  if (point == wxDefaultPosition) {
    const wxSize size = GetClientSize();
    point = wxPoint(size.x / 2, size.y / 2);
  } else {
    point = ScreenToClient(point);
  }
  ShowContextMenu(point);
}

void my_listctrl::ShowContextMenu(const wxPoint& pos) {
  wxMenu* menu = CreateContextMenu();
  PopupMenu(menu, pos);
  delete menu;
}

void my_listctrl::OnChar(wxKeyEvent& event) {
  if (event.GetKeyCode() == 1 && !m_currentPath.empty()) {
    if (m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0)
      m_list->SetItemState(0, 0, wxLIST_STATE_SELECTED);
    SelectRowsFrom(1);
  }
  event.Skip();
}
