#include "browser/FolderListCtrl.h"

#include <wx/intl.h>
#include <wx/msgdlg.h>
#include <wx/settings.h>

#include <algorithm>

#include "browser/FileTypeIcons.h"
#include "browser/ListingLogic.h"
#include "browser/UnreadableFolder.h"
#include "display/Conversion.h"
#include "display/ListingText.h"

namespace {
const long kViewBits = wxLC_ICON | wxLC_SMALL_ICON | wxLC_LIST | wxLC_REPORT;
}  // namespace

BEGIN_EVENT_TABLE(FolderListCtrl, wxControl)
  EVT_LIST_KEY_DOWN(FolderListCtrl::kListId, FolderListCtrl::OnListKeyDown)
  EVT_LIST_ITEM_FOCUSED(FolderListCtrl::kListId, FolderListCtrl::OnFocused)
  EVT_SIZE(FolderListCtrl::OnSize)
END_EVENT_TABLE()

FolderListCtrl::FolderListCtrl()
    : m_list(nullptr),
      m_imageListSmall(nullptr),
      m_imageListNormal(nullptr),
      m_rowCounter(0),
      m_iconView(0),
      m_parentWindow(nullptr) {
  m_pane.Attach(this);
}

FolderListCtrl::~FolderListCtrl() {
  if (m_list != nullptr) {
    m_list->SetImageList(nullptr, wxIMAGE_LIST_SMALL);
    m_list->SetImageList(nullptr, wxIMAGE_LIST_NORMAL);
  }
  delete m_imageListSmall;
  delete m_imageListNormal;
}

bool FolderListCtrl::CreateFolderList(wxWindow* parent, int id, const wxPoint& pos,
                                      const wxSize& size, long style, const wxString& name) {
  m_parentWindow = parent;
  if (!wxControl::Create(parent, id, pos, size, style, wxDefaultValidator, name)) return false;
  SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
  SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  m_size = size;
  m_list = CreateListView(GetClientSize(), (style & ~kViewBits) | wxLC_REPORT | wxLC_VIRTUAL);
  InitImage();
  m_list->SetImageList(m_imageListSmall, wxIMAGE_LIST_SMALL);
  InitColumnUpDown();
  return true;
}

void FolderListCtrl::DestroyListView() {
  if (m_list == nullptr) return;
  m_list->SetImageList(nullptr, wxIMAGE_LIST_SMALL);
  m_list->SetImageList(nullptr, wxIMAGE_LIST_NORMAL);
  m_list->Destroy();
  m_list = nullptr;
}

bool FolderListCtrl::ReCreate(long style) {
  const long view = style & kViewBits;
  if (view != wxLC_ICON && view != wxLC_REPORT) return true;  // other views: nothing to build
  const long base = style & ~kViewBits;
  DestroyListView();
  if (view == wxLC_ICON) {
    m_iconView = 1;
    m_list = CreateListView(GetClientSize(), base | wxLC_ICON);
    m_list->SetImageList(m_imageListNormal, wxIMAGE_LIST_NORMAL);
    List_FileTable();
  } else {
    m_iconView = 0;
    m_list = CreateListView(GetClientSize(), base | wxLC_REPORT | wxLC_VIRTUAL);
    InitColumnItems();
    m_list->SetImageList(m_imageListSmall, wxIMAGE_LIST_SMALL);
    List_FileTable();
  }
  SetInitialSize(m_size);
  return true;
}

void FolderListCtrl::InitColumnItems() {
  m_list->InsertColumn(listing::COL_NAME, wxGetTranslation("Name"), wxLIST_FORMAT_LEFT, 130);
  m_list->InsertColumn(listing::COL_SIZE, wxGetTranslation("Size"), wxLIST_FORMAT_RIGHT, 80);
  m_list->InsertColumn(listing::COL_TYPE, wxGetTranslation("Type"), wxLIST_FORMAT_LEFT, 60);
  m_list->InsertColumn(listing::COL_MODIFIED, wxGetTranslation("Modified"), wxLIST_FORMAT_LEFT,
                       130);
}

void FolderListCtrl::SetColumnImage(int column, bool ascending) {
  if (column < 0 || column >= m_list->GetColumnCount()) return;
  wxListItem item;
  item.SetMask(wxLIST_MASK_IMAGE);
  item.SetImage(ascending ? listing::IMG_SORT_UP : listing::IMG_SORT_DOWN);
  m_list->SetColumn(column, item);
}

void FolderListCtrl::ApplyColumnImages() {
  const int n = std::min(m_list->GetColumnCount(), ColumnSortState::kColumns);
  for (int c = 0; c < n; ++c) {
    wxListItem item;
    item.SetMask(wxLIST_MASK_IMAGE);
    item.SetImage(m_pane.Sort().HeaderImage(c));
    m_list->SetColumn(c, item);
  }
}

void FolderListCtrl::InitColumnUpDown() {
  m_pane.Sort().Reset();
  if (m_list != nullptr && m_list->IsVirtualView()) ApplyColumnImages();
}

int FolderListCtrl::Read_FileDir_Array(wxString path) {
  if (HasDriveMode() && m_pane.Folder().empty()) {
    // Leaving the drive list: the folder columns replace the drive columns.
    m_list->ClearAll();
    if (m_list->IsVirtualView()) InitColumnItems();
  }
  int error = 0;
  int result = m_pane.Read(path, &error);
  if (result != 0) {
    // Shown as empty, and said once: this runs once for each folder the
    // user opens (nothing re-reads a folder by itself).
    wxString folder = path;
    if (folder.length() > 7 && folder.EndsWith(wxT("/"))) folder.RemoveLast();
    wxString shown = Conversion_Path(folder, 60);
    wxMessageBox(UnreadableFolderText(shown, error, VolumeGone(path)),
                 wxGetTranslation("Folder"), wxOK | wxICON_WARNING, this);
  }
  return result;
}

int FolderListCtrl::List_FileTable() {
  m_pane.ShowListing(ShowsDotRow());
  if (m_list->IsVirtualView()) {
    m_list->ReloadRows();
    m_rowCounter = static_cast<int>(m_pane.Rows().Count());
    return 0;
  }
  // Icon view: ordinary items, no ".." row.
  const ArrayDir& dirs = m_pane.Dirs();
  const ArrayFile& files = m_pane.Files();
  m_list->DeleteAllItems();
  m_rowCounter = 0;
  for (size_t i = 0; i < dirs.GetCount(); ++i)
    m_list->InsertItem(m_rowCounter++, dirs[i].m_name, listing::IMG_FOLDER);
  for (size_t i = 0; i < files.GetCount(); ++i)
    m_list->InsertItem(m_rowCounter++, files[i].m_name, files[i].m_imageIndex);
  m_list->Refresh();
  return 0;
}

void FolderListCtrl::ViewIconText() {
  if (m_list->IsVirtualView()) return;  // only the icon view holds inserted items
  const ArrayDir& dirs = m_pane.Dirs();
  const ArrayFile& files = m_pane.Files();
  m_list->DeleteAllItems();
  m_rowCounter = 0;
  for (size_t i = 0; i < files.GetCount(); ++i)
    m_list->InsertItem(0, files[i].m_name, listing::IMG_FILE);
  for (size_t i = 0; i < dirs.GetCount(); ++i)
    m_list->InsertItem(0, dirs[i].m_name, listing::IMG_FOLDER);
  m_list->Refresh();
}

void FolderListCtrl::Sort_asc(int column) { m_pane.SortListing(column, true); }

void FolderListCtrl::Sort_drop(int column) { m_pane.SortListing(column, false); }

wxString FolderListCtrl::CovertPath(wxString& path) { return listing::CovertPath(path); }

int FolderListCtrl::GetFileImageIndex(wxString name) { return listing::GetFileImageIndex(name); }

void FolderListCtrl::SortByHeader(int column) {
  ColumnSortState& sort = m_pane.Sort();
  if (!sort.Click(column)) return;
  ApplyColumnImages();
  if (sort.Ascending())
    Sort_asc(column);
  else
    Sort_drop(column);
  List_FileTable();
}

ListingListView* FolderListCtrl::CreateListView(const wxSize& size, long style) {
  return new ListingListView(this, kListId, wxPoint(0, 0), size, style, GetRows());
}

int FolderListCtrl::InitImage() {
  m_imageListSmall = new wxImageList(16, 16, true, 1);
  m_imageListNormal = new wxImageList(32, 32, true, 1);
  listing::FillListImages(*m_imageListSmall, listing::kDestListImages);
  return 0;
}

void FolderListCtrl::OnUpList(wxCommandEvent& WXUNUSED(event)) {
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  const wxString folder = m_pane.Folder();
  if (folder.empty() || listing::IsVolumeTop(folder)) return;
  if (ListParentFolder()) SetListFocus(1);
}

bool FolderListCtrl::ListParentFolder() {
  const wxString up = listing::ParentFolder(m_pane.Folder());
  const bool read = Read_FileDir_Array(up) == 0;
  const bool listed = List_FileTable() == 0;
  return read && listed;
}

bool FolderListCtrl::SetListFocus(int row) {
  if (row < 0 || row >= m_list->GetItemCount()) return false;
  m_list->SetItemState(row, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                       wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
  return true;
}

void FolderListCtrl::SelectRowsFrom(int start) {
  const int count = m_list->GetItemCount();
  if (start >= count) return;
  // Select the whole range at once (a folder can hold many thousand rows),
  // then take back the rows before `start`; the focus ends on the last row.
  m_list->SetItemState(-1, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  for (int r = 0; r < start; ++r) m_list->SetItemState(r, 0, wxLIST_STATE_SELECTED);
  m_list->SetItemState(count - 1, wxLIST_STATE_FOCUSED, wxLIST_STATE_FOCUSED);
}

wxArrayString FolderListCtrl::GetSelectedNames() {
  wxArrayString names;
  long row = -1;
  while ((row = m_list->GetNextItem(row, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) != -1)
    names.Add(m_list->GetItemText(row));
  m_pane.SetSelectedNames(names);
  return names;
}

void FolderListCtrl::OnListKeyDown(wxListEvent& event) {
  if (event.GetKeyCode() == WXK_BACK) {
    wxCommandEvent up;
    OnUpList(up);
    return;
  }
  event.Skip();  // every other key keeps the list's own handling
}

void FolderListCtrl::OnFocused(wxListEvent& event) { event.Skip(); }

void FolderListCtrl::OnSize(wxSizeEvent& event) {
  if (m_list != nullptr) m_list->SetSize(GetClientSize());
  event.Skip();
}
