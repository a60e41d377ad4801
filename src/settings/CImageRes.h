// The image table: bitmaps by number, each cut out of a PNG file named in
// <exe dir>/setting/vantori/resource.txt.
#pragma once

#include <wx/bitmap.h>
#include <wx/dynarray.h>
#include <wx/string.h>

// Owning array of bitmaps; Add(bitmap, count) appends count copies.
WX_DECLARE_OBJARRAY(wxBitmap, ArrayOfBitmap);

namespace settings {

class CImageRes {
 public:
  CImageRes();
  virtual ~CImageRes();

  // Image number nIdx. The check admits nIdx == count (the table's own lax
  // bound); that index then gives an invalid bitmap.
  const wxBitmap& GetBitmap(int nIdx);

  // Loads <exe dir> + name (glued as they stand) with the given type into
  // bitmap; on failure bitmap is left as it was. Returns bitmap.
  wxBitmap& imageLoad(wxBitmap& bitmap, wxString name, int type);

  int GetCount() const { return static_cast<int>(m_BitmapRes->GetCount()); }

 private:
  CImageRes(const CImageRes&) = delete;
  CImageRes& operator=(const CImageRes&) = delete;

  ArrayOfBitmap* m_BitmapRes;
};

}  // namespace settings
