// One control's layout record from controls.txt: rectangle (relative to the
// parent's client area), image numbers and text numbers.
#pragma once

#include <wx/bitmap.h>
#include <wx/dynarray.h>
#include <wx/gdicmn.h>
#include <wx/string.h>

class CONTROLINFO {
 public:
  wxRect& GetRect() { return rect; }

  // The bitmap of image slot nIdx (looked up in the resource centre).
  const wxBitmap& GetRes(int nIdx) const;
  // The text of text slot nIdx (looked up in the resource centre).
  const wxString& GetText(int nIdx) const;

  wxRect rect;
  wxArrayInt resources;  // image numbers; slot i is the control's i-th image
  wxArrayInt texts;      // text numbers; slot i is the control's i-th text
};
