#include "browser/my_TreeItemData.h"

#include <wx/dir.h>
#include <wx/filefn.h>
#include <wx/log.h>

my_TreeItemData::my_TreeItemData(const wxString& path, const wxString& name, bool isDir,
                                 bool isSection, int16_t partitionIndex)
    : m_path(path),
      m_name(name),
      m_isHidden(false),
      m_isExpanded(false),
      m_isDir(isDir),
      m_isSection(isSection),
      m_partitionIndex(partitionIndex) {}

bool my_TreeItemData::HasSubDirs() const {
  if (m_path.empty()) return false;
  wxLogNull quiet;
  wxDir dir;
  if (!wxDirExists(m_path) || !dir.Open(m_path)) return false;
  return dir.HasSubDirs(wxString());
}

bool my_TreeItemData::HasFiles(const wxString& WXUNUSED(filter)) const {
  if (m_path.empty()) return false;
  wxLogNull quiet;
  wxDir dir;
  if (!wxDirExists(m_path) || !dir.Open(m_path)) return false;
  return dir.HasFiles(wxString());
}

void my_TreeItemData::SetNewDirName(const wxString& path) {
  m_path = path;
  m_name = wxFileNameFromPath(path);
}
