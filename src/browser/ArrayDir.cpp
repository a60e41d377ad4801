#include "browser/ArrayDir.h"

#include <wx/arrimpl.cpp>

WX_DEFINE_OBJARRAY(ArrayDir);
