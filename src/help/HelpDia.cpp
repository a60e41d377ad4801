#include "help/HelpDia.h"

#include <wx/config.h>
#include <wx/filesys.h>
#include <wx/fs_arc.h>
#include <wx/image.h>

#include <dirent.h>
#include <string.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "common/ImageHandlers.h"

namespace {

// A private directory for the help controller's cache: made for this run
// (mode 0700, a name nobody can guess), so that no file of a fixed name in
// /tmp is ever written, and no link planted there can redirect the write.
wxString MakeCacheDir() {
  char pattern[] = "/tmp/vantori-help-XXXXXX";
  if (mkdtemp(pattern) == nullptr) return wxString();
  return wxString::FromUTF8(pattern);
}

// Removes the cache directory and the files the controller wrote into it;
// nothing is followed: a link in it is removed as the link itself.
void RemoveCacheDir(const wxString& dir) {
  if (dir.empty()) return;
  wxCharBuffer path = dir.utf8_str();
  int fd = open(path.data(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd >= 0) {
    DIR* listing = fdopendir(fd);
    if (listing != nullptr) {
      while (struct dirent* entry = readdir(listing)) {
        if (strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0) continue;
        unlinkat(dirfd(listing), entry->d_name, 0);
      }
      closedir(listing);
    } else {
      close(fd);
    }
  }
  rmdir(path.data());
}

}  // namespace

BEGIN_EVENT_TABLE(HelpDia, wxDialog)
  EVT_CLOSE(HelpDia::OnClose)
END_EVENT_TABLE()

HelpDia::HelpDia(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos,
                 const wxSize& /*size: always 680 x 480*/, long /*style: fixed below*/,
                 const wxString& name)
    : wxDialog(parent, id, title, pos, wxSize(680, 480),
               wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX | wxRESIZE_BORDER | wxDIALOG_NO_PARENT, name),
      m_helpController(wxHF_DEFAULT_STYLE),
      m_helpWindow(nullptr) {
  InitAllImageHandlersOnce();
  // The help book is read from inside its zip file. One handler serves every
  // frame the module builds.
  static bool archiveHandlerAdded = false;
  if (!archiveHandlerAdded) {
    wxFileSystem::AddHandler(new wxArchiveFSHandler);
    archiveHandlerAdded = true;
  }
  m_helpWindow = new wxHtmlHelpWindow;
  m_helpController.SetHelpWindow(m_helpWindow);
  m_helpWindow->Create(this, wxID_ANY, wxDefaultPosition, GetSize(),
                       wxTAB_TRAVERSAL | wxBORDER_NONE, wxHF_DEFAULT_STYLE);
  m_cacheDir = MakeCacheDir();
  // Without a directory of its own the controller caches nothing.
  m_helpController.SetTempDir(m_cacheDir.empty() ? wxString() : m_cacheDir + wxT("/"));
}

HelpDia::~HelpDia() {
  // The help window is our child and goes with us; the controller must not
  // touch it afterwards.
  m_helpController.SetHelpWindow(nullptr);
  RemoveCacheDir(m_cacheDir);
}

bool HelpDia::AddBook(const wxFileName& book, bool showWaitMsg) {
  m_helpController.UseConfig(wxConfigBase::Get(), wxEmptyString);
  return m_helpController.AddBook(book, showWaitMsg);
}

bool HelpDia::Display(const wxString& topic) { return m_helpController.Display(topic); }

// Centred on the screen, not on the frame that owns the dialog.
bool HelpDia::Show(bool show) {
  CentreOnScreen(wxBOTH);
  return wxDialog::Show(show);
}

void HelpDia::OnClose(wxCloseEvent& /*event*/) { Destroy(); }
