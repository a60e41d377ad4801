// The state behind a folder pane, without any window: the folder shown, its
// listing (the folder and file arrays and the rows a list draws from them),
// the column sort, which of the pane's views had the focus last, the flags
// that keep a list and a tree in step, and the names selected.
//
// Views (a file list; on the source side also the directory tree) attach to
// one pane and talk only to it: what one view asks of the pane reaches every
// attached view as a notification, so the views never call each other.
#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

#include <vector>

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"
#include "browser/ColumnSortState.h"
#include "browser/ListingRows.h"

class FolderPane;

// What a pane tells its views. Every notification goes to every attached
// view; a view acts on those that concern it and ignores the others.
class FolderPaneView {
 public:
  // The pane this view shows (null when it is attached to none).
  FolderPane* Pane() const { return m_pane; }

  // A view shows `folder` (a mounted path ending in "/") in the listing.
  virtual void OnPaneShowFolder(const wxString& folder) { (void)folder; }
  // A view opened the top folder of volume `index`: the list leaves the
  // drive list for the folder columns of that volume.
  virtual void OnPaneVolumeOpened(int index) { (void)index; }
  // The list moved to `folder`: the tree selects it, without loading the
  // list again.
  virtual void OnPaneFollowFolder(const wxString& folder) { (void)folder; }
  // The location to write into the path field (drive-letter form).
  virtual void OnPanePathText(const wxString& text) { (void)text; }
  // The volume index this view knows for `path`, -1 when it knows none.
  virtual int OnPaneVolumeIndex(const wxString& path) {
    (void)path;
    return -1;
  }

 protected:
  FolderPaneView() = default;
  virtual ~FolderPaneView();
  FolderPaneView(const FolderPaneView&) = delete;
  FolderPaneView& operator=(const FolderPaneView&) = delete;

 private:
  friend class FolderPane;
  FolderPane* m_pane = nullptr;
};

class FolderPane {
 public:
  // Which view of the pane had the focus last.
  enum Focus { FOCUS_NONE, FOCUS_LIST, FOCUS_TREE };

  FolderPane();
  ~FolderPane();
  FolderPane(const FolderPane&) = delete;
  FolderPane& operator=(const FolderPane&) = delete;

  // A view shows this pane from now on (it leaves the pane it showed
  // before); attaching twice changes nothing.
  void Attach(FolderPaneView* view);
  void Detach(FolderPaneView* view);
  size_t ViewCount() const { return m_views.size(); }

  // The folder shown: a mounted path ending in "/"; empty while a list
  // shows the drives.
  const wxString& Folder() const { return m_folder; }
  // Reads `folder` (ending in "/") into the arrays, emptied first (also when
  // it cannot be read). Returns 0 and makes it the pane's folder, or -1 and
  // keeps the folder as it was.
  int Read(const wxString& folder, int* error = nullptr);
  // The rows show the drives; the pane's folder becomes empty.
  void ShowDrives(const std::vector<DriveRow>& drives);
  // The rows show the listing, below a ".." row when `dotRow`.
  void ShowListing(bool dotRow) { m_rows.ShowFolder(dotRow); }
  void EmptyListing();

  ArrayDir& Dirs() { return m_dirs; }
  ArrayFile& Files() { return m_files; }
  const ArrayDir& Dirs() const { return m_dirs; }
  const ArrayFile& Files() const { return m_files; }
  const ListingRows& Rows() const { return m_rows; }

  // Sorting: the header state and the reordering of both arrays.
  ColumnSortState& Sort() { return m_sort; }
  const ColumnSortState& Sort() const { return m_sort; }
  void SortListing(int column, bool ascending);

  // Focus: `flag` true makes `who` the last focused view; false takes it
  // back only from `who`.
  void SetLastFocus(Focus who, bool flag);
  bool IsLastFocus(Focus who) const { return who != FOCUS_NONE && m_lastFocus == who; }

  // The tree expanded on the list's behalf (the list clears it once the tree
  // followed).
  void SetUpdateTree(bool flag) { m_updateTree = flag; }
  bool UpdateTree() const { return m_updateTree; }
  // The listing shown was loaded by the tree.
  void SetLoadedFromTree(bool flag) { m_loadedFromTree = flag; }
  bool LoadedFromTree() const { return m_loadedFromTree; }

  // The names of the selected rows, in row order, as the list last took them.
  void SetSelectedNames(const wxArrayString& names) { m_selected = names; }
  const wxArrayString& SelectedNames() const { return m_selected; }

  // Requests passed on to every view (see FolderPaneView).
  void ShowFolder(const wxString& folder);
  void OpenVolume(int index);
  // The views follow the pane's folder; then the update-tree flag is cleared.
  void FollowFolder();
  void ShowPathText(const wxString& text);
  // The first volume index a view knows for `path`, -1 when none does.
  int VolumeIndexOf(const wxString& path);

 private:
  std::vector<FolderPaneView*> m_views;
  wxString m_folder;
  ArrayDir m_dirs;
  ArrayFile m_files;
  ListingRows m_rows;
  ColumnSortState m_sort;
  Focus m_lastFocus = FOCUS_NONE;
  bool m_updateTree = false;
  bool m_loadedFromTree = false;
  wxArrayString m_selected;
};
