// Where the module finds its files. Two rules, kept as the program has them:
//
//  - Pictures and the help book lie under "./res/vantori/", a path relative
//    to the process's current directory (the host starts the module in the
//    directory that holds res/). ResourcePath builds these.
//  - Settings files lie under the directory of the running executable (the
//    host program's, since the module runs in its process) followed by
//    "setting/vantori/". SettingsPath builds these.
//
// Two readers keep older habits of their own, each through this header:
// the About box reads config.ini relative to the current directory
// (WorkingDirSettingsPath), and the picture names of resource.txt begin
// with "/" and are glued straight onto the executable's directory
// (ExeDirJoined).
#pragma once

#include <wx/string.h>

namespace common {

// "./res/vantori/" + name, relative to the current directory.
wxString ResourcePath(const wxString& name);

// Directory of the running executable followed by the path separator.
wxString ExeDirectory();

// ExeDirectory() + "setting/vantori/" + name.
wxString SettingsPath(const wxString& name);

// "setting/vantori/" + name, relative to the current directory.
wxString WorkingDirSettingsPath(const wxString& name);

// Directory of the running executable without a trailing separator, with
// name appended as it stands (no separator is inserted).
wxString ExeDirJoined(const wxString& name);

}  // namespace common
