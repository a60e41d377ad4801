#include "help/HelpDia.h"

#include <wx/config.h>
#include <wx/filesys.h>
#include <wx/fs_arc.h>
#include <wx/image.h>

#include "common/ImageHandlers.h"

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
  m_helpController.SetTempDir(wxT("/tmp/"));
}

HelpDia::~HelpDia() {
  // The help window is our child and goes with us; the controller must not
  // touch it afterwards.
  m_helpController.SetHelpWindow(nullptr);
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
