#include "settings/CImageRes.h"

#include <wx/convauto.h>
#include <wx/log.h>
#include <wx/textfile.h>

#include "common/ImageFiles.h"
#include "common/ResourcePaths.h"
#include "settings/SettingsAssert.h"
#include "settings/SettingsParse.h"

#include <wx/arrimpl.cpp>
WX_DEFINE_OBJARRAY(ArrayOfBitmap);

namespace settings {

CImageRes::CImageRes() : m_BitmapRes(nullptr) {
  m_BitmapRes = new ArrayOfBitmap;

  wxTextFile file;
  wxString path;
  if (!OpenSettingsFile(wxT("resource.txt"), file, path)) return;
  const size_t count = file.GetLineCount();
  for (size_t i = 1; i < count; ++i) {
    wxString s = file.GetLine(i).AfterFirst('\t');

    wxBitmap bitmap;
    imageLoad(bitmap, s.BeforeFirst('\t'), wxBITMAP_TYPE_PNG);

    s = s.AfterFirst('\t');
    int x = 0, y = 0, w = 0, h = 0;
    NumberPair(s.BeforeFirst('\t'), x, y);
    s = s.AfterFirst('\t');
    NumberPair(s.BeforeFirst('\t'), w, h);

    // The cut-out of a missing image, or one that does not lie inside the
    // image, is an invalid bitmap; the entry keeps its number either way.
    wxBitmap part;
    if (bitmap.IsOk() && x >= 0 && y >= 0 && w > 0 && h > 0 && x <= bitmap.GetWidth() - w &&
        y <= bitmap.GetHeight() - h) {
      part = bitmap.GetSubBitmap(wxRect(x, y, w, h));
    } else if (bitmap.IsOk()) {
      wxLogDebug(wxT("resource.txt line %d: rectangle %d,%d %dx%d outside the image"),
                 static_cast<int>(i), x, y, w, h);
    }
    m_BitmapRes->Add(part, 1);
  }
  file.Close();
}

CImageRes::~CImageRes() {
  delete m_BitmapRes;
  m_BitmapRes = nullptr;
}

const wxBitmap& CImageRes::GetBitmap(int nIdx) {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_BitmapRes->GetCount(), "src/CImageRes", 71,
                  "const wxBitmap& settings::CImageRes::GetBitmap(int)",
                  "nIdx >= 0 && nIdx <= (int)m_BitmapRes->GetCount()");
  static const wxBitmap s_invalid;
  if (nIdx >= (int)m_BitmapRes->GetCount()) return s_invalid;
  return m_BitmapRes->Item(nIdx);
}

wxBitmap& CImageRes::imageLoad(wxBitmap& bitmap, wxString name, int type) {
  // A missing or undecodable file leaves bitmap unchanged, silently.
  common::LoadImageFile(bitmap, common::ExeDirJoined(name), type);
  return bitmap;
}

}  // namespace settings
