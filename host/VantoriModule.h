// Loading libvantori.so and resolving its five entry points by name.
#pragma once

#include <wx/gdicmn.h>
#include <wx/string.h>
#include <wx/window.h>

struct VantoriModule {
  void* handle = nullptr;
  wxWindow* (*create)(wxWindow*, int, const wxPoint&, const wxSize&) = nullptr;
  int (*show)(wxWindow*, bool) = nullptr;
  int (*invoke)() = nullptr;
  int (*destroy)(wxWindow*) = nullptr;
  int (*get_version)() = nullptr;
};

// Loads the library and resolves the entry points; on failure returns false
// and puts a message for the user into error.
bool LoadVantoriModule(const wxString& path, VantoriModule& module, wxString& error);
