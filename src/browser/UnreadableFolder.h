// What the user is told when a folder cannot be read as it is opened: the
// list shows it as empty, and one message names the folder and the system's
// reason, and suggests Refresh when the drive itself is gone.
#pragma once

#include <wx/string.h>

// True when the volume that holds path (/mnt/<letter>/...) is no longer
// there: its mount point is missing, unreachable (a file-system driver that
// died), or no longer a mount point (unmounted from outside).
bool VolumeGone(const wxString& path);

// The message for a folder shown as shownPath (the drive-letter form) that
// could not be read with errno error.
wxString UnreadableFolderText(const wxString& shownPath, int error, bool volumeGone);
