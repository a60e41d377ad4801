#include "destination/Des_listctrl.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include "browser/ListingLogic.h"
#include "destination/DesLogic.h"
#include "destination/LDes_listctrl.h"

namespace {
// The box below is the one report of a failure (no second one from the
// library's log).
bool MakeFolder(const wxString& full) {
  wxLogNull quiet;
  // 0x777 (not octal 0777) is the permission value the folders have always
  // been made with; it is kept as it is.
  return wxFileName::Mkdir(full, 0x777, wxPATH_MKDIR_FULL);
}
}  // namespace

BEGIN_EVENT_TABLE(Des_listctrl, FolderListCtrl)
  EVT_LIST_COL_CLICK(FolderListCtrl::kListId, Des_listctrl::OnColClick)
  EVT_LIST_ITEM_ACTIVATED(FolderListCtrl::kListId, Des_listctrl::OnListDoubleClick)
  EVT_LIST_ITEM_ACTIVATED(FolderListCtrl::kListId, Des_listctrl::OnActivated)
  EVT_LIST_ITEM_SELECTED(FolderListCtrl::kListId, Des_listctrl::OnSelected)
  EVT_LIST_ITEM_DESELECTED(FolderListCtrl::kListId, Des_listctrl::OnDeselected)
  EVT_CHAR(Des_listctrl::OnChar)
END_EVENT_TABLE()

Des_listctrl::Des_listctrl() { Init(); }

Des_listctrl::Des_listctrl(wxWindow* parent, const wxArrayString& roots, int id,
                           const wxPoint& pos, const wxSize& size, long style,
                           const wxString& name) {
  Init();
  Create(parent, roots, id, pos, size, style, name);
}

void Des_listctrl::Init() {
  m_root = true;
  m_pathText = nullptr;
  m_rootIndex = 0;
  m_pane.Sort().Reset();
}

bool Des_listctrl::Create(wxWindow* parent, const wxArrayString& roots, int id,
                          const wxPoint& pos, const wxSize& size, long style,
                          const wxString& name) {
  m_rootPaths = roots;
  if (!CreateFolderList(parent, id, pos, size, style, name)) return false;
  InitColumnItems();
  // With no volume to offer there is nothing to read: the list stays empty.
  if (!m_rootPaths.IsEmpty()) Read_FileDir_Array(m_rootPaths[0]);
  List_FileTable();
  SetInitialSize(size);
  return true;
}

ListingListView* Des_listctrl::CreateListView(const wxSize& size, long style) {
  return new LDes_listctrl(this, GetRows(), kListId, wxPoint(0, 0), size,
                           style | wxLC_SINGLE_SEL);
}

LDes_listctrl* Des_listctrl::GetListCtrl() const { return static_cast<LDes_listctrl*>(m_list); }

void Des_listctrl::SetPathText(const wxString& text) {
  if (m_pathText != nullptr) m_pathText->SetValue(text);
}

void Des_listctrl::ForgetChoice() {
  m_deleteName.clear();
  m_copyDirName.clear();
}

void Des_listctrl::Return_Root(int index) {
  if (index < 0 || index >= static_cast<int>(m_rootPaths.GetCount())) return;
  m_rootIndex = index;
  m_root = true;
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  ForgetChoice();
  wxString root = m_rootPaths[static_cast<size_t>(index)];
  Read_FileDir_Array(root);
  List_FileTable();
  SetPathText(CovertPath(root));
}

void Des_listctrl::CreateFolder(const wxString& name) {
  const wxString folder = m_pane.Folder();
  const wxString full = folder + name;
  const long style = wxOK | wxICON_EXCLAMATION;  // 260
  if (wxFileName::DirExists(full)) {
    wxMessageBox(wxGetTranslation("The folder already exists."),
                 wxGetTranslation("Create Folder error"), style, nullptr);
  } else if (!MakeFolder(full)) {
    wxMessageBox(wxGetTranslation("Create folder is failed!"),
                 wxGetTranslation("Create Folder error"), style, nullptr);
  }
  ForgetChoice();
  Read_FileDir_Array(folder);
  List_FileTable();
  const ArrayDir& dirs = m_pane.Dirs();
  for (size_t k = 0; k < dirs.GetCount(); ++k) {
    if (dirs[k].m_name == name) {
      SetListFocus(DesCreatedFolderRow(static_cast<long>(k), m_root));
      m_list->SetFocus();
      break;
    }
  }
}

void Des_listctrl::SetFocus() {
  if (m_list != nullptr) m_list->SetFocus();
}

void Des_listctrl::OnColClick(wxListEvent& event) { SortByHeader(event.GetColumn()); }

void Des_listctrl::OnListDoubleClick(wxListEvent& event) {
  const long i = event.GetIndex();
  const wxString t = m_list->GetItemText(i);
  wxString p = m_pane.Folder() + t;
  m_deleteName.clear();
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  if (wxFileName::FileExists(p)) return;  // files are not opened
  p += "/";
  if (i == 0 && IsReportView() && !m_root) {  // the ".." row
    wxCommandEvent up;
    OnUpList(up);
    return;
  }
  if (wxFileName::DirExists(p)) {
    m_root = false;
    ForgetChoice();
    Read_FileDir_Array(p);
    List_FileTable();
  }
  SetListFocus(1);
  m_list->SetFocus();
  event.Skip();
}

void Des_listctrl::OnActivated(wxListEvent& event) { event.Skip(); }

void Des_listctrl::OnUpList(wxCommandEvent& WXUNUSED(event)) {
  m_deleteName.clear();
  if (GetCurrentColumnIndex() != -1) InitColumnUpDown();
  // Nothing above a volume's top folder is ever listed.
  if (listing::IsVolumeTop(listing::ParentFolder(m_pane.Folder()))) {
    if (m_root) return;
    m_root = true;
  }
  ForgetChoice();
  if (ListParentFolder()) SetListFocus(-1);
  SetPathText(DesUpFieldText(m_pane.Folder()));
}

void Des_listctrl::OnSelected(wxListEvent& event) {
  const long i = event.GetIndex();
  const wxString folder = m_pane.Folder();
  if (i >= 0 && !folder.empty()) {
    const wxString t = m_list->GetItemText(i);
    if (!m_root && i == 0) {  // the ".." row
      SetPathText(DesFolderFieldText(folder));
      ForgetChoice();
    } else if (wxFileName::DirExists(folder + t)) {
      wxString chosen = folder + t;
      SetPathText(CovertPath(chosen));
      m_deleteName = t;
      m_copyDirName = t;
    } else {
      SetPathText(DesFolderFieldText(folder));
      m_deleteName = t;
      m_copyDirName.clear();
    }
  }
  event.Skip();
}

void Des_listctrl::OnDeselected(wxListEvent& event) {
  SetPathText(DesFolderFieldText(m_pane.Folder()));
  ForgetChoice();
  event.Skip();
}

void Des_listctrl::OnChar(wxKeyEvent& event) { event.Skip(); }
