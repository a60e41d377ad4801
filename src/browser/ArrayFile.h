// Owning object array of File_List records: Add and Insert store heap copies,
// RemoveAt, Clear, Empty and the destructor delete them.
#pragma once

#include <wx/dynarray.h>

#include "browser/File_List.h"

WX_DECLARE_OBJARRAY(File_List, ArrayFile);
