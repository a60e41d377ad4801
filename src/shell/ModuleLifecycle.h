// What the exported entry points do, callable from inside the module.
#pragma once

#include <wx/gdicmn.h>
#include <wx/window.h>

// Takes a fresh disk inventory (discovers, recognises and mounts the
// volumes), then builds and shows the main frame under parent.
wxWindow* CreateMainFrame(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size);

// Takes the disk images named on the program's command line ("--image
// FILE[,usb][,rw][,4096]", repeatable) as the disks that follow the
// machine's own; earlier ones are forgotten. Returns how many were taken, or
// -1 when one of them cannot be used (a message on standard error says why).
int RegisterDiskImagesFromCommandLine();

// Volumes that were still in use when the main frame released them and were
// detached lazily, counted over the module's life; invoke() reports it.
extern int g_volumesLeftInUse;
