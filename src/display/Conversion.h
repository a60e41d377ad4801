// Display forms: a mounted path as a drive-letter path, and a number with
// thousands separators.
#pragma once

#include <wx/string.h>

// /mnt/C/dir/file -> C:\dir\file. With maxLength other than -1 a longer
// result becomes "C:\...\<last component>". Characters outside ASCII are
// shown as "_".
wxString Conversion_Path(const wxString& mountedPath, int maxLength);

// "1234567" -> "1,234,567"; an empty text stays empty.
wxString Conversion_Str(wxString digits);
