// The display-independent rules of the destination panel and its list: which
// volumes are offered and how their rows read, the path field's texts, the
// row chosen after a new folder, and the destination folder that OK hands to
// the copy.
#pragma once

#include <wx/string.h>

#include <vector>

struct VolumeInformation;

// One volume offered as a destination.
struct DesVolumeRow {
  wxString text;      // "(%c:\) %s   (%s Free)"
  wxString rootText;  // "%c:\"
  wxString rootPath;  // mount point followed by "/"
  int icon = 0;       // 0 fixed disk, 1 USB
  int volumeIndex = 0;  // index of the volume in the inventory
};

// "(%c:\) %s   (%s Free)": letter, label, free-space text.
wxString DesVolumeRowText(char letter, const wxString& label, const wxString& freeText);

// Inventory index of the source volume: the sixth character of the source
// path (/mnt/D/...) minus 'C'; -1 when the path is too short to hold one.
int DesSourceVolumeIndex(const wxString& sourcePath);

// The rows of the volume choice from the first `count` volumes: every volume
// but the source one, which is offered only when it is the only volume.
// Labels, free texts and mount points are read as Latin-1 (VolumeText).
std::vector<DesVolumeRow> DesVolumeRows(const VolumeInformation* volumes, int count,
                                        int sourceIndex);

// Path field texts of a folder (a mounted path ending in "/"):
// the folder itself, its drive-letter form without the trailing "\" except
// at a volume's top (C:\dir\ reads C:\dir, C:\ stays C:\) ...
wxString DesFolderFieldText(const wxString& folder);
// ... and after going up: without the trailing "/" when the path is longer
// than a volume's top (/mnt/C/dir/ reads C:\dir, /mnt/C/ reads C:\).
wxString DesUpFieldText(const wxString& folder);

// Row selected after a new folder was made, from its position k among the
// folders: k + 2 below a volume's top (the row under the new folder), k at a
// volume's top (where no ".." row is shown).
inline long DesCreatedFolderRow(long k, bool root) { return root ? k : k + 2; }

// The destination folder: current folder `cur` (ending in "/") plus the
// selected folder `name`; the current folder without its "/" when nothing
// or a file is selected. Empty when there is no current folder.
wxString DesDestinationPath(const wxString& cur, const wxString& name);
