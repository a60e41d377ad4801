#include "browser/UnreadableFolder.h"

#include <wx/intl.h>

#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include "fileops/FileOpsSeam.h"

bool VolumeGone(const wxString& path) {
  if (!path.StartsWith(wxT("/mnt/")) || path.length() < 6) return false;
  wxString mountPoint = path.Left(6);  // /mnt/X
  struct stat64 volume, parent;
  if (g_FileOpsSeam.Stat(mountPoint.fn_str(), &volume) != 0) return true;
  if (g_FileOpsSeam.Stat("/mnt", &parent) != 0) return false;
  // Still on the file system of /mnt: nothing is mounted there any more.
  return volume.st_dev == parent.st_dev;
}

wxString UnreadableFolderText(const wxString& shownPath, int error, bool volumeGone) {
  wxString reason = wxString::FromUTF8(strerror(error != 0 ? error : EIO));
  wxString text = wxString::Format(wxGetTranslation("The folder %s cannot be read: %s."),
                                   shownPath, reason);
  if (volumeGone) {
    text += wxT("\n");
    text += wxGetTranslation(
        "The drive is no longer available. Press Refresh to read the disks again.");
  } else {
    text += wxT(" ");
    text += wxGetTranslation("It is shown as empty.");
  }
  return text;
}
