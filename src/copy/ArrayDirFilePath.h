// The items of a copy job in the order they were collected (a folder before
// what lies below it). Owns its elements: Add and Insert store copies.
#pragma once

#include <wx/dynarray.h>

#include "copy/DirFilePath.h"

WX_DECLARE_OBJARRAY(DirFilePath, ArrayDirFilePath);
