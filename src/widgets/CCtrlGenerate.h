// Builds standard controls straight from a layout record: each function
// creates the control on the heap as a child of parent, placed by the
// record's rectangle and labelled by its text slot 0 where it has a label.
#pragma once

class wxWindow;
class wxTextCtrl;
class wxChoice;
class wxRadioButton;
class wxCheckBox;
class wxButton;
class wxStaticText;
class keln_BitmapButton;
class CONTROLINFO;

class CCtrlGenerate {
 public:
  static wxTextCtrl* Crt_wxTextCtrl(wxWindow* parent, int id, CONTROLINFO& info);
  static wxChoice* Crt_wxChoice(wxWindow* parent, int id, CONTROLINFO& info);
  static wxRadioButton* Crt_wxRadioButton(wxWindow* parent, int id, CONTROLINFO& info);
  static wxCheckBox* Crt_wxCheckBox(wxWindow* parent, int id, CONTROLINFO& info);
  static wxButton* Crt_wxButton(wxWindow* parent, int id, CONTROLINFO& info);
  static wxStaticText* Crt_wxStaticText(wxWindow* parent, int id, CONTROLINFO& info);
  // Normal, hover and pressed pictures from image slots 0, 1 and 2; tool tip
  // from text slot 0 when the record has texts.
  static keln_BitmapButton* Crt_MyBitmapButton(wxWindow* parent, int id, CONTROLINFO& info);
};
