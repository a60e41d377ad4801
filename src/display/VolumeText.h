// Display text of a volume record's byte strings (label, size and free
// texts, mount point). The disk layer keeps a label as single bytes: an NTFS
// label as the low byte of each UTF-16 character, a FAT label in the disk's
// OEM code page. Read as Latin-1, every byte keeps its code point, so
// "Données" from an NTFS label shows as written and no byte is lost.
#pragma once

#include <wx/string.h>

wxString VolumeText(const char* bytes);
