#include "browser/FolderPane.h"

#include <algorithm>

#include "browser/ListingLogic.h"

FolderPaneView::~FolderPaneView() {
  if (m_pane != nullptr) m_pane->Detach(this);
}

FolderPane::FolderPane() : m_rows(&m_dirs, &m_files) {}

FolderPane::~FolderPane() {
  for (FolderPaneView* view : m_views) view->m_pane = nullptr;
}

void FolderPane::Attach(FolderPaneView* view) {
  if (view == nullptr || view->m_pane == this) return;
  if (view->m_pane != nullptr) view->m_pane->Detach(view);
  m_views.push_back(view);
  view->m_pane = this;
}

void FolderPane::Detach(FolderPaneView* view) {
  auto it = std::find(m_views.begin(), m_views.end(), view);
  if (it == m_views.end()) return;
  m_views.erase(it);
  view->m_pane = nullptr;
}

int FolderPane::Read(const wxString& folder, int* error) {
  if (!listing::ReadListing(folder, m_dirs, m_files, error)) return -1;
  m_folder = folder;
  return 0;
}

void FolderPane::ShowDrives(const std::vector<DriveRow>& drives) {
  m_rows.ShowDrives(drives);
  m_folder.clear();
}

void FolderPane::EmptyListing() {
  m_dirs.Empty();
  m_files.Empty();
}

void FolderPane::SortListing(int column, bool ascending) {
  listing::SortListing(m_dirs, m_files, column, ascending);
}

void FolderPane::SetLastFocus(Focus who, bool flag) {
  if (flag)
    m_lastFocus = who;
  else if (m_lastFocus == who)
    m_lastFocus = FOCUS_NONE;
}

// The views are called on a copy of the list: a view may attach or detach
// while it handles a notification.
void FolderPane::ShowFolder(const wxString& folder) {
  const std::vector<FolderPaneView*> views = m_views;
  for (FolderPaneView* view : views) view->OnPaneShowFolder(folder);
}

void FolderPane::OpenVolume(int index) {
  const std::vector<FolderPaneView*> views = m_views;
  for (FolderPaneView* view : views) view->OnPaneVolumeOpened(index);
}

void FolderPane::FollowFolder() {
  const std::vector<FolderPaneView*> views = m_views;
  const wxString folder = m_folder;
  for (FolderPaneView* view : views) view->OnPaneFollowFolder(folder);
  m_updateTree = false;
}

void FolderPane::ShowPathText(const wxString& text) {
  const std::vector<FolderPaneView*> views = m_views;
  for (FolderPaneView* view : views) view->OnPanePathText(text);
}

int FolderPane::VolumeIndexOf(const wxString& path) {
  const std::vector<FolderPaneView*> views = m_views;
  for (FolderPaneView* view : views) {
    const int index = view->OnPaneVolumeIndex(path);
    if (index >= 0) return index;
  }
  return -1;
}
