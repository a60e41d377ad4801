// The folder walk behind the properties dialog: counts folders, files and
// bytes below a path into the dialog's counters, yielding to the event loop
// so that the dialog can repaint and be closed meanwhile.
#pragma once

#include <wx/string.h>

class Properties_dialog;

// Returns 10 when counting was stopped (the dialog's cancel flag, or a stop
// left in its status by a deeper level) and 1 otherwise.
int CountDirFileInfo(Properties_dialog* dialog, const wxString& path);
