// Owning object array of Dir_List records: Add and Insert store heap copies,
// RemoveAt, Clear, Empty and the destructor delete them.
#pragma once

#include <wx/dynarray.h>

#include "browser/Dir_List.h"

WX_DECLARE_OBJARRAY(Dir_List, ArrayDir);
