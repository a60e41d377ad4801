// The rows a file list shows in report view, served on demand from the
// listing arrays (folder mode: an optional ".." row, the folders, the files)
// or from the drive rows (drive mode). Texts are formatted when a row is
// drawn, so showing a folder costs nothing per entry.
#pragma once

#include <wx/string.h>

#include <vector>

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"

struct DriveRow {
  wxString name;   // "C:"
  wxString label;  // shown under the "Type" heading
  wxString size;
  wxString free;
  int image;       // 34 fixed disk, 35 USB
};

class ListingRows {
 public:
  ListingRows(const ArrayDir* dirs, const ArrayFile* files) : m_dirs(dirs), m_files(files) {}

  void ShowFolder(bool dotRow) {
    m_driveMode = false;
    m_dotRow = dotRow;
  }
  void ShowDrives(const std::vector<DriveRow>& drives) {
    m_driveMode = true;
    m_drives = drives;
  }
  bool DriveMode() const { return m_driveMode; }
  bool HasDotRow() const { return !m_driveMode && m_dotRow; }

  long Count() const;
  wxString Text(long row, int column) const;
  int Image(long row) const;

 private:
  const ArrayDir* m_dirs;
  const ArrayFile* m_files;
  bool m_driveMode = true;
  bool m_dotRow = true;
  std::vector<DriveRow> m_drives;
};
