// Display texts of the file lists: the modified time and size cells of
// folder mode and the path field's drive-letter form of a mounted path.
#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

namespace listing {

wxString FormatListTime(const wxDateTime& t);  // "%d-%02d-%02d %02d:%02d", local
wxString FormatSizeKB(double bytes);           // "%u  KB", rounded to nearest

// Mounted path to the path field's drive-letter form: /mnt/C/dir/sub gives
// C:\dir\sub, /mnt/C/ gives C:\, /mnt/C gives C, paths of 4 characters or
// fewer are returned unchanged.
wxString CovertPath(const wxString& path);

}  // namespace listing
