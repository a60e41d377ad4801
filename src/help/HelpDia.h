// A help dialog over the zipped HTML help book; the frame builds and loads it
// at start-up.
#pragma once

#include <wx/dialog.h>
#include <wx/filename.h>
#include <wx/html/helpctrl.h>
#include <wx/html/helpwnd.h>

class HelpDia : public wxDialog {
 public:
  HelpDia(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos,
          const wxSize& size, long style, const wxString& name);
  ~HelpDia() override;

  bool AddBook(const wxFileName& book, bool showWaitMsg = false);
  bool Display(const wxString& topic);
  bool Show(bool show = true) override;
  void OnClose(wxCloseEvent& event);

  wxHtmlHelpController& GetController() { return m_helpController; }
  wxHtmlHelpWindow* GetHelpWindow() { return m_helpWindow; }
  // The directory made for this dialog where the help controller keeps its
  // cache of the book (empty when none could be made: then nothing is cached).
  const wxString& CacheDir() const { return m_cacheDir; }

 private:
  wxHtmlHelpController m_helpController;
  wxHtmlHelpWindow* m_helpWindow;
  wxString m_cacheDir;

  DECLARE_EVENT_TABLE()
};
