// The folder walk behind the properties dialog: counts folders, files and
// bytes below a path into the dialog's counters, yielding to the event loop
// so that the dialog can repaint and be closed meanwhile.
#pragma once

#include <wx/string.h>

class Properties_dialog;

// Returns kStatusStopped (10) when counting was stopped (the dialog's cancel
// flag, a stop left in its status by a deeper level, or the dialog destroyed
// during a yield) and kStatusWalked (1) otherwise. Symbolic links are
// followed, never into a folder that is one of its own ancestors; sizes come
// from a 64-bit stat. No folder stays open while the count yields, and
// nothing of the dialog is touched once it has been destroyed.
int CountDirFileInfo(Properties_dialog* dialog, const wxString& path);
