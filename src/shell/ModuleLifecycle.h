// What the exported entry points do, callable from inside the module.
#pragma once

#include <wx/gdicmn.h>
#include <wx/window.h>

// Takes a fresh disk inventory (discovers, recognises and mounts the
// volumes), then builds and shows the main frame under parent.
wxWindow* CreateMainFrame(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size);
