#include "VantoriHost.h"

#include "ProgramStart.h"

#include <wx/cmdline.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/textentry.h>
#include <wx/uilocale.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <unistd.h>

int g_startupExit = -1;
// The module's invoke entry: after its window has gone it tells how many
// volumes were still in use and had to be detached lazily.
static int (*g_moduleInvoke)() = nullptr;

namespace {

const int kClientWidth = 660;
const int kClientHeight = 540;


// A disk image option must name a file that can be read.
bool CheckImageOption(const wxString& value) {
  wxString file = value;
  for (;;) {
    if (file.EndsWith(wxT(",usb"))) file.RemoveLast(4);
    else if (file.EndsWith(wxT(",rw"))) file.RemoveLast(3);
    else if (file.EndsWith(wxT(",4096"))) file.RemoveLast(5);
    else break;
  }
  if (file.empty() || access(file.fn_str(), R_OK) != 0) {
    std::fprintf(stderr, "vantori: cannot read the disk image %s\n",
                 static_cast<const char*>(file.utf8_str()));
    g_startupExit = 2;
    return false;
  }
  return true;
}

}  // namespace

VantoriHostFrame::VantoriHostFrame(const VantoriModule& module, bool printLayout)
    : wxFrame(nullptr, wxID_ANY, wxT("Vantori"), wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX)),
      m_module(module),
      m_moduleWindow(nullptr) {
  SetClientSize(kClientWidth, kClientHeight);
  Bind(wxEVT_CLOSE_WINDOW, &VantoriHostFrame::OnClose, this);
  m_moduleWindow = m_module.create(this, wxID_ANY, wxPoint(0, 0), GetClientSize());
  if (m_moduleWindow != nullptr) {
    // The module's Exit button destroys its window; the program ends with it.
    m_moduleWindow->Bind(wxEVT_DESTROY, &VantoriHostFrame::OnModuleDestroyed, this);
  }
  if (printLayout) CallAfter(&VantoriHostFrame::PrintLayout);
}

void VantoriHostFrame::OnModuleDestroyed(wxWindowDestroyEvent& event) {
  if (event.GetEventObject() == m_moduleWindow) {
    m_moduleWindow = nullptr;
    CallAfter([this] { Close(true); });
  }
  event.Skip();
}

void VantoriHostFrame::OnClose(wxCloseEvent& /*event*/) {
  if (m_moduleWindow != nullptr) {
    wxWindow* w = m_moduleWindow;
    m_moduleWindow = nullptr;
    w->Unbind(wxEVT_DESTROY, &VantoriHostFrame::OnModuleDestroyed, this);
    m_module.destroy(w);
  }
  Destroy();
}

// Prints the window tree with screen rectangles, one window a line, for the
// technician (and the tests) to see what was built where.
void VantoriHostFrame::PrintLayout() {
  struct Walker {
    static void Walk(wxWindow* w, int depth) {
      wxRect r = w->GetScreenRect();
      wxTextEntry* entry = dynamic_cast<wxTextEntry*>(w);
      wxString label = entry ? entry->GetValue() : w->GetLabel();
      label.Replace("\n", " ");
      std::printf("window\t%d\t%s\t%d\t%d,%d,%d,%d\t%d\t%s\n", depth,
                  static_cast<const char*>(w->GetClassInfo()->GetClassName() ? wxString(w->GetClassInfo()->GetClassName()).utf8_str() : "?"),
                  w->GetId(), r.x, r.y, r.width, r.height, w->IsShownOnScreen() ? 1 : 0,
                  static_cast<const char*>(label.utf8_str()));
      for (wxWindow* child : w->GetChildren()) Walk(child, depth + 1);
    }
  };
  Walker::Walk(this, 0);
  std::printf("layout-end\n");
  std::fflush(stdout);
}


bool VantoriHostApp::OnInit() {
  ReportToolkitChecksOnStderr("vantori");
  UseUtf8Locale();
  SetAppName(wxT("vantori"));

  bool printLayout = false;
  for (int i = 1; i < argc; ++i) {
    wxString arg = argv[i];
    if (arg == wxT("--print-layout")) {
      printLayout = true;
    } else if (arg == wxT("--image") && i + 1 < argc) {
      // Taken by the module when it takes the inventory; checked here so
      // that a wrong name stops the start with a clear message.
      wxString value = argv[++i];
      if (!CheckImageOption(value)) return false;
    } else if (arg.StartsWith(wxT("--image="))) {
      if (!CheckImageOption(arg.Mid(8))) return false;
    } else if (arg == wxT("--help")) {
      std::printf(
          "usage: vantori [--image FILE[,usb][,rw][,4096]]... [--print-layout]\n"
          "Starts Vantori: it reads the machine's disks, mounts their FAT and NTFS volumes\n"
          "under /mnt/<letter> and copies files from them. Run it as root.\n"
          "  --image FILE[,usb][,rw][,4096]\n"
          "                  take a disk image file (a raw dump of a disk) as one more\n"
          "                  disk after the machine's own; its volumes are mounted\n"
          "                  read-only through loop devices unless ,rw is given; ,usb\n"
          "                  shows it as a USB disk; ,4096 gives it 4096-byte sectors.\n"
          "                  May be repeated.\n"
          "  --print-layout  print the window tree with screen rectangles once shown\n"
          "Exit status: 0 when every volume was released at the end, 4 when some were\n"
          "still in use by another program and were detached lazily.\n"
          "The same window also starts on its own, with a start-up window shown while\n"
          "the disks are read: vantori-standalone [--image ...].\n");
      g_startupExit = 0;
      return false;
    } else {
      std::fprintf(stderr, "vantori: unknown option %s (see --help)\n",
                   static_cast<const char*>(arg.utf8_str()));
      g_startupExit = 2;
      return false;
    }
  }

  // The module takes its images relative to the working directory.
  wxFileName exe(wxStandardPaths::Get().GetExecutablePath());
  const wxString dir = exe.GetPath();
  if (!wxSetWorkingDirectory(dir)) {
    std::fprintf(stderr, "vantori: cannot change to %s\n", static_cast<const char*>(dir.utf8_str()));
  }

  VantoriModule module;
  wxString error;
  if (!LoadVantoriModule(dir + wxT("/libvantori.so"), module, error)) {
    std::fprintf(stderr, "vantori: %s\n", static_cast<const char*>(error.utf8_str()));
    g_startupExit = 3;
    return false;
  }

  g_moduleInvoke = module.invoke;
  VantoriHostFrame* frame = new VantoriHostFrame(module, printLayout);
  frame->Show(true);
  SetTopWindow(frame);
  // Ended from outside (SIGTERM, SIGINT, SIGHUP): the window closes the
  // normal way, so the module unmounts its volumes and the loop devices of
  // disk images are released.
  for (int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SetSignalHandler(signal, [](int) {
      if (wxWindow* top = wxTheApp->GetTopWindow()) top->Close(true);
    });
  }
  return true;
}

int VantoriHostApp::OnExit() { return wxApp::OnExit(); }

wxIMPLEMENT_APP_NO_MAIN(VantoriHostApp);

int main(int argc, char** argv) {
  if (geteuid() != 0) {
    std::fprintf(stderr,
                 "vantori: running without root rights: no disks can be read and no volumes "
                 "mounted. Start it as root to see the machine's drives.\n");
  }
  int rc = wxEntry(argc, argv);
  // OnInit said no: report why it stopped (0 after --help).
  if (rc == -1) return g_startupExit >= 0 ? g_startupExit : 1;
  // Every volume released, or the status says not: some were still in use
  // at the end and were detached lazily (the system frees them later).
  int left = g_moduleInvoke != nullptr ? g_moduleInvoke() : 0;
  if (rc == 0 && left > 0) {
    std::fprintf(stderr,
                 "vantori: %d volume(s) were still in use at the end and were detached lazily\n",
                 left);
    return 4;
  }
  return rc;
}
