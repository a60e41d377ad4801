// One file of a listed directory: bare name, size in bytes, modification
// time and the index of its icon in the list's image list.
#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <cstdint>

class File_List {
 public:
  File_List() = default;
  File_List(const File_List& other) = default;
  File_List& operator=(const File_List& other) = default;

  wxString m_name;        // bare name with its extension
  double m_size = 0;      // bytes, as reported by the file system
  wxDateTime m_time;      // invalid until a time was read
  int32_t m_imageIndex = 31;  // icon index, see GetFileImageIndex
};
