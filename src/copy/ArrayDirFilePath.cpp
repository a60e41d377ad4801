#include "copy/ArrayDirFilePath.h"

#include <wx/arrimpl.cpp>

WX_DEFINE_OBJARRAY(ArrayDirFilePath);
