#include "common/ImageFiles.h"

#include <wx/filename.h>
#include <wx/image.h>
#include <wx/log.h>

#include "common/ResourcePaths.h"

namespace common {

bool LoadImageFile(wxBitmap& bitmap, const wxString& path, int type) {
  if (type == wxBITMAP_TYPE_BMP && !wxImage::FindHandler(wxBITMAP_TYPE_BMP))
    wxImage::AddHandler(new wxBMPHandler);
  if (type == wxBITMAP_TYPE_PNG && !wxImage::FindHandler(wxBITMAP_TYPE_PNG))
    wxImage::AddHandler(new wxPNGHandler);
  wxImage image;
  {
    wxLogNull quiet;
    if (!wxFileName::FileExists(path) ||
        !image.LoadFile(path, static_cast<wxBitmapType>(type), -1))
      return false;
  }
  bitmap = wxBitmap(image, -1);
  return true;
}

wxBitmap FitImageSlot(const wxBitmap& bitmap, int w, int h) {
  if (!bitmap.IsOk()) return wxBitmap(w, h);
  if (bitmap.GetWidth() == w && bitmap.GetHeight() == h) return bitmap;
  wxImage image = bitmap.ConvertToImage();
  image.Rescale(w, h);
  return wxBitmap(image, -1);
}

void FillImageList(wxImageList& list, const ImageFile* files, size_t count) {
  const wxSize size = list.GetSize();
  for (size_t i = 0; i < count; ++i) {
    wxBitmap bitmap;
    LoadImageFile(bitmap, ResourcePath(wxString::FromAscii(files[i].name)), files[i].type);
    list.Add(FitImageSlot(bitmap, size.x, size.y));
  }
}

}  // namespace common
