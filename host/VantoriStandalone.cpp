// vantori-standalone: the module's window as a program of its own. A small
// start-up window is on screen first; once it has been painted it reads the
// disks and mounts their volumes, then opens the main window and hides
// itself. Takes the same --image options as the host program.
#include <wx/app.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/uilocale.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <unistd.h>

#include "ProgramStart.h"
#include "shell/ModuleLifecycle.h"
#include "shell/fore_message.h"
#include "shell/my_frame.h"

namespace {

int g_exit = -1;


class StandaloneApp : public wxApp {
 public:
  bool OnInit() override {
    ReportToolkitChecksOnStderr("vantori-standalone");
    UseUtf8Locale();
    SetAppName(wxT("vantori"));
    for (int i = 1; i < argc; ++i) {
      wxString arg = argv[i];
      if (arg == wxT("--help")) {
        std::printf(
            "usage: vantori-standalone [--image FILE[,usb][,rw][,4096]]...\n"
            "Starts Vantori as a program of its own: a start-up window is shown while the\n"
            "disks are read and their volumes mounted, then the main window opens. Run it\n"
            "as root. The host program (vantori) shows the same window inside its own.\n"
            "  --image FILE[,usb][,rw][,4096]  a disk image file as one more disk (see\n"
            "                                  vantori --help)\n");
        g_exit = 0;
        return false;
      }
      if (arg == wxT("--image") && i + 1 < argc) {
        ++i;
      } else if (!arg.StartsWith(wxT("--image="))) {
        std::fprintf(stderr, "vantori-standalone: unknown option %s (see --help)\n",
                     static_cast<const char*>(arg.utf8_str()));
        g_exit = 2;
        return false;
      }
    }
    if (RegisterDiskImagesFromCommandLine() < 0) {
      g_exit = 2;
      return false;
    }
    // Images and settings are taken relative to the program's directory.
    wxFileName exe(wxStandardPaths::Get().GetExecutablePath());
    wxSetWorkingDirectory(exe.GetPath());
    fore_message* start = new fore_message(nullptr, wxID_ANY, wxT("Vantori"), wxDefaultPosition,
                                           wxSize(320, 90), wxCAPTION, wxT("fore_message"));
    start->Centre();
    start->Show(true);
    return true;
  }

  // The program ends with its main frame (the Exit button or the close box
  // of its window): the hidden start-up window does not keep it alive.
  int FilterEvent(wxEvent& event) override {
    if (event.GetEventType() == wxEVT_DESTROY &&
        dynamic_cast<my_frame*>(event.GetEventObject()) != nullptr) {
      CallAfter([this] { ExitMainLoop(); });
    }
    return Event_Skip;
  }
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(StandaloneApp);

int main(int argc, char** argv) {
  if (geteuid() != 0) {
    std::fprintf(stderr,
                 "vantori-standalone: running without root rights: no disks can be read and no "
                 "volumes mounted. Start it as root to see the machine's drives.\n");
  }
  int rc = wxEntry(argc, argv);
  if (rc == -1) return g_exit >= 0 ? g_exit : 1;
  return rc;
}
