// One folder of a listed directory: its bare name and modification time.
#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

class Dir_List {
 public:
  Dir_List() = default;
  Dir_List(const Dir_List& other) = default;
  Dir_List& operator=(const Dir_List& other) = default;

  wxString m_name;  // bare name, no path
  wxDateTime m_time;  // invalid until a time was read
};
