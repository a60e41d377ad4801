#include "browser/ArrayFile.h"

#include <wx/arrimpl.cpp>

WX_DEFINE_OBJARRAY(ArrayFile);
