#include "common/ResourcePaths.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>

namespace common {

namespace {
wxString ExeDirNoSeparator() {
  const wxFileName exe(wxStandardPaths::Get().GetExecutablePath());
  return exe.GetPath(wxPATH_GET_VOLUME);
}
}  // namespace

wxString ResourcePath(const wxString& name) { return wxT("./res/vantori/") + name; }

wxString ExeDirectory() { return ExeDirNoSeparator() + wxFileName::GetPathSeparator(); }

wxString SettingsPath(const wxString& name) {
  return ExeDirectory() + wxT("setting/vantori/") + name;
}

wxString WorkingDirSettingsPath(const wxString& name) { return wxT("setting/vantori/") + name; }

wxString ExeDirJoined(const wxString& name) { return ExeDirNoSeparator() + name; }

}  // namespace common
