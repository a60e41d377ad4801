#include "browser/my_listctrl.h"

#include <wx/filename.h>
#include <wx/intl.h>

#include <cstdio>

#include "browser/FileTypeIcons.h"
#include "browser/L_listctrl.h"
#include "browser/ListingLogic.h"
#include "common/CustomEvents.h"
#include "common/ImageFiles.h"
#include "dialogs/CBusyMsgBox.h"
#include "disk/View_Disk_Info.h"
#include "display/ListingText.h"
#include "display/VolumeText.h"

namespace {
wxString VolumeMountPoint(int index) {
  if (index < 0 || index >= MAX_VOLUME_COUNT) return wxString();
  return VolumeText(g_AllDiskPartitionInf.m_Volume[index].MountPoint);
}
}  // namespace

BEGIN_EVENT_TABLE(my_listctrl, FolderListCtrl)
  EVT_LIST_COL_CLICK(FolderListCtrl::kListId, my_listctrl::OnColClick)
  EVT_LIST_ITEM_ACTIVATED(FolderListCtrl::kListId, my_listctrl::OnListDoubleClick)
  EVT_LIST_ITEM_ACTIVATED(FolderListCtrl::kListId, my_listctrl::OnActivated)
  EVT_LIST_ITEM_SELECTED(FolderListCtrl::kListId, my_listctrl::OnSelected)
  EVT_LIST_ITEM_DESELECTED(FolderListCtrl::kListId, my_listctrl::OnDeselected)
  EVT_MENU(MYCMD_LIST_ABOUT, my_listctrl::OnAbout)
  EVT_MENU(MYCMD_LIST_SELECT_ALL, my_listctrl::OnSelectAll)
  EVT_MENU(MYCMD_LIST_COPY, my_listctrl::OnCopy)
  EVT_MENU(MYCMD_LIST_PROPERTIES, my_listctrl::OnProperties)
  EVT_CONTEXT_MENU(my_listctrl::OnContextMenu)
  EVT_CHAR(my_listctrl::OnChar)
END_EVENT_TABLE()

my_listctrl::my_listctrl() { Init(); }

my_listctrl::my_listctrl(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                         long style, const wxString& name) {
  Init();
  Create(parent, id, pos, size, style, name);
}

void my_listctrl::Init() {
  m_tree = nullptr;
  m_partitionIndex = 0;
  m_hasFolder = false;
  m_pane.SetUpdateTree(false);
  m_pane.SetLastFocus(FolderPane::FOCUS_LIST, false);
  m_pane.SetLoadedFromTree(false);
  m_pane.Sort().Reset();
}

bool my_listctrl::Create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size,
                         long style, const wxString& name) {
  if (!CreateFolderList(parent, id, pos, size, style, name)) return false;
  InitParttionList();
  PostMyCustomCommand(this, MYCMD_LIST_DISABLE_COPY);
  m_hasFolder = false;
  SetInitialSize(size);
  return true;
}

ListingListView* my_listctrl::CreateListView(const wxSize& size, long style) {
  L_listctrl* list = new L_listctrl(this, GetRows(), kListId, wxPoint(0, 0), size, style);
  // A press on the rows makes the list the last focused source pane and
  // tells the frame whether drives or a folder are shown.
  list->SetPressNotice([this] {
    NoteListClicked();
    return GetCurrentListctrlPath().empty() ? MYCMD_LIST_DISABLE_COPY : MYCMD_LIST_ENABLE_COPY;
  });
  return list;
}

L_listctrl* my_listctrl::GetListCtrl() const { return static_cast<L_listctrl*>(m_list); }

int my_listctrl::InitImage() {
  m_imageListSmall = new wxImageList(16, 16, true, 1);
  m_imageListNormal = new wxImageList(32, 32, true, 1);
  listing::FillListImages(*m_imageListSmall, listing::kSourceListImages);
  return 0;
}

void my_listctrl::imageLoad(wxBitmap& bitmap, wxString path, int type) {
  if (!common::LoadImageFile(bitmap, path, type)) bitmap = wxNullBitmap;
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
    row.label = VolumeText(v.VolumeLabel);
    row.size = VolumeText(v.SizeText);
    row.free = VolumeText(v.FreeText);
    row.image = v.Removable == 0 ? listing::IMG_DISK : listing::IMG_USB;
    drives.push_back(row);
  }
  m_pane.ShowDrives(drives);
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
  SetListFocus(m_partitionIndex);
  return 0;
}

void my_listctrl::Copy_Refresh_Filelisttabel(wxString path) {
  m_pane.ShowPathText(CovertPath(path));
  if (Read_FileDir_Array(path + "/") == 0) List_FileTable();
}

bool my_listctrl::ListctrlSelectAll() {
  if (m_pane.Folder().empty()) return false;
  const bool row0 = m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0;
  SelectRowsFrom(listing::SelectAllStartRow(row0));
  return true;
}

void my_listctrl::SetFocus() {
  NoteListClicked();
  PostMyCustomCommand(this, m_hasFolder ? MYCMD_LIST_ENABLE_COPY : MYCMD_LIST_DISABLE_COPY);
  if (m_list != nullptr) m_list->SetFocus();
}

void my_listctrl::NoteListClicked() {
  m_pane.SetLastFocus(FolderPane::FOCUS_LIST, true);
  m_hasFolder = !m_pane.Folder().empty();
}

void my_listctrl::SetPDirTree(FolderPaneView* tree) {
  m_tree = tree;
  m_pane.Attach(tree);
}

void my_listctrl::OnPaneShowFolder(const wxString& folder) {
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  Read_FileDir_Array(folder);
  List_FileTable();
}

void my_listctrl::OnPaneVolumeOpened(int index) { Refresh_column(index); }

void my_listctrl::SyncTree(bool keepShortSlash) {
  m_pane.FollowFolder();
  wxString shown = m_pane.Folder();
  if (!(keepShortSlash && shown.length() <= 7) && shown.EndsWith("/")) shown.RemoveLast();
  m_pane.ShowPathText(CovertPath(shown));
}

void my_listctrl::OnListDoubleClick(wxListEvent& event) {
  printf("dClick list item\n");  // fixed output: tests check this line
  fflush(stdout);
  const long i = event.GetIndex();
  const wxString t = m_list->GetItemText(i);
  wxString p = m_pane.Folder() + t;
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  if (wxFileName::FileExists(p)) return;  // files are not opened

  const bool driveMode = m_pane.Folder().empty();
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
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  const wxString folder = m_pane.Folder();
  if (folder.empty()) return;

  // The volume's top is read from the folder itself, never from an inventory
  // entry that a refresh may have cleared: nothing above it is ever listed.
  if (listing::IsVolumeTop(folder)) {
    m_pane.EmptyListing();
    const int index = m_pane.VolumeIndexOf(folder);
    if (index >= 0) m_partitionIndex = index;
    InitParttionList();  // selects the partition index row
    PostMyCustomCommand(this, MYCMD_LIST_DISABLE_COPY);
    m_hasFolder = false;
    return;
  }

  if (ListParentFolder()) SetListFocus(1);
  m_list->SetFocus();
  SyncTree(true);
}

void my_listctrl::OnColClick(wxListEvent& event) {
  printf("OnColClick\n");  // fixed output: tests check this line
  fflush(stdout);
  const int column = event.GetColumn();
  if (m_pane.Folder().empty() || column == listing::COL_TYPE) return;
  SortByHeader(column);
}

void my_listctrl::OnSelected(wxListEvent& event) {
  if (IsReportView() && !m_pane.Folder().empty()) {
    const long i = event.GetIndex();
    if (i >= 0 && listing::IsDotRowText(m_list->GetItemText(i)))
      m_list->SetItemState(i, 0, wxLIST_STATE_SELECTED);
    // A range selection in the virtual list reports only one row: the ".."
    // row must not stay selected through it either.
    if (m_pane.Rows().HasDotRow() && m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0)
      m_list->SetItemState(0, 0, wxLIST_STATE_SELECTED);
  }
  event.Skip();
}

void my_listctrl::OnDeselected(wxListEvent& event) { event.Skip(); }

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

wxMenu* my_listctrl::CreateContextMenu() const {
  wxMenu* menu = new wxMenu;
  menu->Append(MYCMD_LIST_COPY, wxGetTranslation("&Copy..."), wxString());
  menu->Append(MYCMD_LIST_SELECT_ALL, wxGetTranslation("&Select All..."), wxString());
  menu->AppendSeparator();
  menu->Append(MYCMD_LIST_PROPERTIES, wxGetTranslation("&Properties"), wxString());
  return menu;
}

void my_listctrl::OnContextMenu(wxContextMenuEvent& event) {
  if (m_pane.Folder().empty()) return;  // no menu on the drive list
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
  if (event.GetKeyCode() == 1 && !m_pane.Folder().empty()) {
    if (m_list->GetItemState(0, wxLIST_STATE_SELECTED) != 0)
      m_list->SetItemState(0, 0, wxLIST_STATE_SELECTED);
    SelectRowsFrom(1);
  }
  event.Skip();
}
