// What the user is told about volumes that are in use by another program
// (their unmount failed): at Refresh they stay mounted with their letters,
// at exit they are detached lazily.
#pragma once

#include <wx/string.h>

#include "disk/View_Disk_Info.h"

// One line per busy volume among the first count of volumes ("Drive D:
// (Data Disk) is in use ..."); empty when none is busy. exiting picks the
// words for the end of the program.
wxString BusyDrivesText(const VolumeInformation* volumes, int count, bool exiting);
