// The module's about box: name and version, logo, rights notice, and
// collapsible panes with the licence and the credits.
#pragma once

#include <wx/aboutdlg.h>
#include <wx/dialog.h>
#include <wx/sizer.h>

class KelnoraAboutDialog : public wxDialog {
 public:
  KelnoraAboutDialog() { Init(); }
  explicit KelnoraAboutDialog(const wxAboutDialogInfo& info) {
    Init();
    Create(info);
  }

  static wxAboutDialogInfo GetDefaultInfo();
  // Builds the dialog, shows it modally and destroys it.
  static void Show(const wxAboutDialogInfo& info);
  // Joins the items with ", " and ends the text with a line break.
  static wxString AllAsString(const wxArrayString& array);

  bool Create(const wxAboutDialogInfo& info);
  void Init() { m_sizerText = nullptr; }

 protected:
  virtual void DoAddCustomControls() {}
  void AddControl(wxWindow* win, const wxSizerFlags& flags);
  void AddControl(wxWindow* win);
  void AddText(const wxString& text);
  void AddCollapsiblePane(const wxString& title, const wxString& text);

 private:
  wxSizer* m_sizerText;
};
