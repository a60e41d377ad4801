#include "browser/ListingRows.h"

#include <wx/intl.h>

#include "browser/ListingLogic.h"
#include "display/ListingText.h"

long ListingRows::Count() const {
  if (m_driveMode) return static_cast<long>(m_drives.size());
  return (m_dotRow ? 1 : 0) + static_cast<long>(m_dirs->GetCount() + m_files->GetCount());
}

wxString ListingRows::Text(long row, int column) const {
  if (row < 0 || row >= Count()) return wxString();
  if (m_driveMode) {
    const DriveRow& d = m_drives[static_cast<size_t>(row)];
    switch (column) {
      case 0: return d.name;
      case 1: return d.label;
      case 2: return d.size;
      case 3: return d.free;
      default: return wxString();
    }
  }
  if (m_dotRow) {
    if (row == 0) return column == 0 ? wxString("..") : wxString();
    --row;
  }
  const size_t nd = m_dirs->GetCount();
  if (static_cast<size_t>(row) < nd) {
    const Dir_List& d = m_dirs->Item(static_cast<size_t>(row));
    switch (column) {
      case 0: return d.m_name;
      case 2: return wxGetTranslation("Folder");
      case 3: return listing::FormatListTime(d.m_time);
      default: return wxString();
    }
  }
  const File_List& f = m_files->Item(static_cast<size_t>(row) - nd);
  switch (column) {
    case 0: return f.m_name;
    case 1: return listing::FormatSizeKB(f.m_size);
    case 2: return listing::FileTypeText(f.m_name);
    case 3: return listing::FormatListTime(f.m_time);
    default: return wxString();
  }
}

int ListingRows::Image(long row) const {
  if (row < 0 || row >= Count()) return -1;
  if (m_driveMode) return m_drives[static_cast<size_t>(row)].image;
  if (m_dotRow) {
    if (row == 0) return -1;
    --row;
  }
  const size_t nd = m_dirs->GetCount();
  if (static_cast<size_t>(row) < nd) return listing::IMG_FOLDER;
  return m_files->Item(static_cast<size_t>(row) - nd).m_imageIndex;
}
