#include "widgets/CCtrlGenerate.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/intl.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/valgen.h>

#include "settings/CONTROLINFO.h"
#include "widgets/keln_BitmapButton.h"

wxTextCtrl* CCtrlGenerate::Crt_wxTextCtrl(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxTextCtrl(parent, id, wxGetTranslation(wxEmptyString), info.GetRect().GetPosition(),
                        info.GetRect().GetSize(), 0, wxDefaultValidator, wxTextCtrlNameStr);
}

wxChoice* CCtrlGenerate::Crt_wxChoice(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxChoice(parent, id, info.GetRect().GetPosition(), info.GetRect().GetSize(), 0,
                      nullptr, 0, wxDefaultValidator, wxChoiceNameStr);
}

wxRadioButton* CCtrlGenerate::Crt_wxRadioButton(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxRadioButton(parent, id, info.GetText(0), info.GetRect().GetPosition(),
                           wxDefaultSize, 0, wxDefaultValidator, wxRadioButtonNameStr);
}

wxCheckBox* CCtrlGenerate::Crt_wxCheckBox(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxCheckBox(parent, id, info.GetText(0), info.GetRect().GetPosition(), wxDefaultSize,
                        0, wxDefaultValidator, wxCheckBoxNameStr);
}

wxButton* CCtrlGenerate::Crt_wxButton(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxButton(parent, id, info.GetText(0), info.GetRect().GetPosition(),
                      info.GetRect().GetSize(), 0, wxDefaultValidator, wxButtonNameStr);
}

wxStaticText* CCtrlGenerate::Crt_wxStaticText(wxWindow* parent, int id, CONTROLINFO& info) {
  return new wxStaticText(parent, id, info.GetText(0), info.GetRect().GetPosition(),
                          info.GetRect().GetSize(), 0x20, wxStaticTextNameStr);
}

keln_BitmapButton* CCtrlGenerate::Crt_MyBitmapButton(wxWindow* parent, int id,
                                                     CONTROLINFO& info) {
  keln_BitmapButton* button = new keln_BitmapButton(
      parent, id, wxEmptyString, info.GetRect().GetPosition(), info.GetRect().GetSize());
  button->SetBitmap_Normal(info.GetRes(0));
  button->SetBitmap_Hover(info.GetRes(1));
  button->SetBitmap_Select(info.GetRes(2));
  if (!info.texts.IsEmpty()) button->SetToolTip(info.GetText(0));
  return button;
}
