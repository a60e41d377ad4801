// One item of a copy job: a folder or a file below the source folder.
#pragma once

#include <wx/string.h>

#include <stdint.h>

#include <string>

class DirFilePath {
 public:
  DirFilePath() : m_isFolder(false), m_size(0) {}
  DirFilePath(const wxString& path, bool isFolder, const std::string& bytes, int64_t size = 0)
      : m_path(path), m_isFolder(isFolder), m_bytes(bytes), m_size(size) {}

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
  // A file's size when it was collected.
  int64_t m_size;
};
