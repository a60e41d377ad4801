#include "help/KelnoraAboutDialog.h"

#include <wx/collpane.h>
#include <wx/datetime.h>
#include <wx/hyperlink.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

wxAboutDialogInfo KelnoraAboutDialog::GetDefaultInfo() {
  wxAboutDialogInfo info;
  const wxString warning = wxGetTranslation(
      "Warning: this program is protected by copyright law. It is provided as is, "
      "without any warranty; copy only data you are entitled to.");
  info.SetCopyright(wxString::Format(wxGetTranslation("(C) %d The Vantori developers.\n%s"),
                                     wxDateTime::Now().GetYear(), warning));
  return info;
}

void KelnoraAboutDialog::Show(const wxAboutDialogInfo& info) {
  KelnoraAboutDialog dlg(info);
  dlg.ShowModal();
}

wxString KelnoraAboutDialog::AllAsString(const wxArrayString& array) {
  wxString s;
  const size_t count = array.size();
  for (size_t n = 0; n < count; n++) {
    s << array[n] << (n == count - 1 ? wxT("\n") : wxT(", "));
  }
  return s;
}

bool KelnoraAboutDialog::Create(const wxAboutDialogInfo& info) {
  if (!wxDialog::Create(nullptr, wxID_ANY, wxGetTranslation("About ") + info.GetName(),
                        wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE))
    return false;

  m_sizerText = new wxBoxSizer(wxVERTICAL);
  wxString nameAndVersion = info.GetName();
  nameAndVersion.Replace(wxT("&"), wxT("&&"));
  if (info.HasVersion()) nameAndVersion << wxT(' ') << info.GetVersion();
  wxStaticText* label = new wxStaticText(this, wxID_ANY, nameAndVersion);
  wxFont fontBig(GetFont());
  fontBig.SetPointSize(fontBig.GetPointSize() + 2);
  fontBig.SetWeight(wxFONTWEIGHT_BOLD);
  label->SetFont(fontBig);
  m_sizerText->Add(label, wxSizerFlags().Centre().Border());
  m_sizerText->AddSpacer(5);

  AddText(info.GetCopyright());
  AddText(info.GetDescription());
  if (info.HasWebSite()) {
    AddControl(new wxHyperlinkCtrl(this, wxID_ANY, info.GetWebSiteDescription(),
                                   info.GetWebSiteURL()));
  }
  if (info.HasLicence()) AddCollapsiblePane(wxGetTranslation("License"), info.GetLicence());
  if (info.HasDevelopers())
    AddCollapsiblePane(wxGetTranslation("Developers"), AllAsString(info.GetDevelopers()));
  if (info.HasDocWriters())
    AddCollapsiblePane(wxGetTranslation("Documents writers"), AllAsString(info.GetDocWriters()));
  if (info.HasArtists())
    AddCollapsiblePane(wxGetTranslation("Artists"), AllAsString(info.GetArtists()));
  if (info.HasTranslators())
    AddCollapsiblePane(wxGetTranslation("Translators"), AllAsString(info.GetTranslators()));

  DoAddCustomControls();

  wxSizer* sizerIconAndText = new wxBoxSizer(wxHORIZONTAL);
  if (info.HasIcon() && info.GetIcon().IsOk()) {
    sizerIconAndText->Add(new wxStaticBitmap(this, wxID_ANY, info.GetIcon()),
                          wxSizerFlags().Border(wxRIGHT));
  }
  sizerIconAndText->Add(m_sizerText, wxSizerFlags(1).Expand());

  wxSizer* sizerTop = new wxBoxSizer(wxVERTICAL);
  sizerTop->Add(sizerIconAndText, wxSizerFlags(1).Expand().Border());
  wxSizer* buttons = CreateButtonSizer(wxOK);
  if (buttons) sizerTop->Add(buttons, wxSizerFlags().Right().Border(wxALL & ~wxTOP));
  SetSizerAndFit(sizerTop);
  CentreOnScreen();
  return true;
}

void KelnoraAboutDialog::AddControl(wxWindow* win, const wxSizerFlags& flags) {
  m_sizerText->Add(win, flags);
}

void KelnoraAboutDialog::AddControl(wxWindow* win) {
  AddControl(win, wxSizerFlags().Border(wxDOWN).Centre());
}

void KelnoraAboutDialog::AddText(const wxString& text) {
  if (!text.empty()) AddControl(new wxStaticText(this, wxID_ANY, text));
}

void KelnoraAboutDialog::AddCollapsiblePane(const wxString& title, const wxString& text) {
  // One width for the text of every pane, the widest seen so far.
  static int maxWidth = 400;
  wxCollapsiblePane* pane = new wxCollapsiblePane(this, wxID_ANY, title, wxDefaultPosition,
                                                  wxDefaultSize, wxBORDER_NONE | wxTAB_TRAVERSAL);
  wxWindow* win = pane->GetPane();
  wxStaticText* txt = new wxStaticText(win, wxID_ANY, text, wxDefaultPosition, wxDefaultSize,
                                       wxALIGN_CENTRE);
  txt->Wrap(maxWidth);
  if (txt->GetSize().x > maxWidth) maxWidth = txt->GetSize().x;
  wxSizer* sz = new wxBoxSizer(wxVERTICAL);
  sz->Add(txt, wxSizerFlags().Expand());
  win->SetSizer(sz);
  AddControl(pane, wxSizerFlags().Expand().Border(wxBOTTOM));
}
