// Per-item data of the source tree: the folder's mounted path, its label and
// whether its children have been read.
#pragma once

#include <wx/string.h>
#include <wx/treebase.h>

#include <cstdint>

class my_TreeItemData : public wxTreeItemData {
 public:
  my_TreeItemData(const wxString& path, const wxString& name, bool isDir, bool isSection,
                  int16_t partitionIndex);

  bool HasSubDirs() const;
  bool HasFiles(const wxString& filter = wxString()) const;
  void SetNewDirName(const wxString& path);

  wxString m_path;
  wxString m_name;
  bool m_isHidden;
  bool m_isExpanded;
  bool m_isDir;
  bool m_isSection;
  int16_t m_partitionIndex;
};
