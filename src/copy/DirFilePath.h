// One item of a copy job: a folder or a file below the source folder.
#pragma once

#include <wx/string.h>

#include <string>

class DirFilePath {
 public:
  DirFilePath() : m_isFolder(false) {}
  DirFilePath(const wxString& path, bool isFolder, const std::string& bytes)
      : m_path(path), m_isFolder(isFolder), m_bytes(bytes) {}

  bool operator==(const DirFilePath& other) const {
    return m_isFolder == other.m_isFolder && m_bytes == other.m_bytes && m_path == other.m_path;
  }

  // The path relative to the source folder (the full path with the source
  // folder's characters cut off), as shown.
  wxString m_path;
  bool m_isFolder;
  // The same relative path as the file system's bytes (a name that is not
  // UTF-8 keeps its bytes here; the shown form cannot hold them).
  std::string m_bytes;
};
