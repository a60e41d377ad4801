// vantori-help: Vantori's own help program. It shows the zipped help book
// (res/vantori/doc/doc.zip beside the program) in the embedded help viewer,
// at the page given (default: the book's first page). config.ini names it
// as the program that Help starts, so help opens on a rescue system that has
// no web browser.
#include <wx/app.h>
#include <wx/filename.h>
#include <wx/html/htmlwin.h>
#include <wx/stdpaths.h>

#include <csignal>
#include <cstdio>

#include "ProgramStart.h"
#include "help/HelpDia.h"

namespace {

int g_exit = -1;


class HelpApp : public wxApp {
 public:
  bool OnInit() override {
    ReportToolkitChecksOnStderr("vantori-help");
    UseUtf8Locale();
    SetAppName(wxT("vantori"));
    wxString page = wxT("index.html");
    if (argc > 2 || (argc == 2 && (argv[1] == wxT("--help") || argv[1] == wxT("-h")))) {
      std::printf(
          "usage: vantori-help [PAGE]\n"
          "Shows Vantori's help book at PAGE (a page of the book such as copying.html;\n"
          "a path before the name is ignored). Without PAGE, the first page.\n");
      g_exit = argc > 2 ? 2 : 0;
      return false;
    }
    // The command that Help runs joins a folder and the page: the page's
    // own name is what the book knows.
    if (argc == 2 && !argv[1].empty()) page = wxFileName(argv[1]).GetFullName();

    // Ended from outside (SIGTERM, SIGINT): the normal way out, so the
    // help dialog removes its cache directory.
    SetSignalHandler(SIGTERM, [](int) { wxTheApp->ExitMainLoop(); });
    SetSignalHandler(SIGINT, [](int) { wxTheApp->ExitMainLoop(); });
    wxFileName exe(wxStandardPaths::Get().GetExecutablePath());
    wxSetWorkingDirectory(exe.GetPath());
    HelpDia* help = new HelpDia(nullptr, wxID_ANY, wxT("Vantori Help"), wxDefaultPosition,
                                wxDefaultSize, 0, wxT("dialogBox"));
    wxFileName book(exe.GetPath() + wxT("/res/vantori/doc/doc.zip"));
    if (!help->AddBook(book)) {
      std::fprintf(stderr, "vantori-help: cannot open the help book %s\n",
                   static_cast<const char*>(book.GetFullPath().utf8_str()));
      help->Destroy();
      g_exit = 1;
      return false;
    }
    if (!help->Display(page)) help->Display(wxT("index.html"));
    help->Show(true);
    // Which page is on screen, for the technician's terminal (and the tests).
    wxHtmlWindow* html = help->GetHelpWindow()->GetHtmlWindow();
    wxString shown = html->GetOpenedPage().AfterLast(wxT(':')).AfterLast(wxT('/'));
    std::printf("help page shown: %s \"%s\"\n", static_cast<const char*>(shown.utf8_str()),
                static_cast<const char*>(html->GetOpenedPageTitle().utf8_str()));
    std::fflush(stdout);
    return true;
  }
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(HelpApp);

int main(int argc, char** argv) {
  int rc = wxEntry(argc, argv);
  if (rc == -1) return g_exit >= 0 ? g_exit : 1;
  return rc;
}
