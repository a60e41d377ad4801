#include "browser/FileTypeIcons.h"

#include <wx/image.h>
#include <wx/log.h>

namespace listing {

namespace {
const IconFile kFiles[kSourceListImages] = {
    {"./res/vantori/bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG},
    {"./res/vantori/bmp/File_10.png", wxBITMAP_TYPE_PNG},
    {"./res/vantori/bmp/bat.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/bmp.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/c.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/cfg.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/cpp.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/db.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/dll.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/doc.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/dsp.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/dsw.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/exe.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/gif.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/h.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/ie.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/ini.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/jpg.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/mdb.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/mp3.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/mpg.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/pcx.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/pdf.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/ppt.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/psd.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/pub.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/rar.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/reg.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/txt.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/wav.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/xls.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/bmp/normal.bmp", wxBITMAP_TYPE_BMP},
    {"./res/vantori/up.png", wxBITMAP_TYPE_PNG},
    {"./res/vantori/down.png", wxBITMAP_TYPE_PNG},
    {"./res/vantori/disk.png", wxBITMAP_TYPE_PNG},
    {"./res/vantori/usb.png", wxBITMAP_TYPE_PNG},
};
}  // namespace

const IconFile& ListIconFile(int index) {
  if (index < 0) index = 0;
  if (index >= kSourceListImages) index = kSourceListImages - 1;
  return kFiles[index];
}

void LoadImageFile(wxBitmap& bitmap, const wxString& path, int type) {
  if (type == wxBITMAP_TYPE_BMP && !wxImage::FindHandler(wxBITMAP_TYPE_BMP))
    wxImage::AddHandler(new wxBMPHandler);
  if (type == wxBITMAP_TYPE_PNG && !wxImage::FindHandler(wxBITMAP_TYPE_PNG))
    wxImage::AddHandler(new wxPNGHandler);
  wxImage image;
  {
    wxLogNull quiet;
    if (!image.LoadFile(path, static_cast<wxBitmapType>(type))) {
      bitmap = wxBitmap();
      return;
    }
  }
  bitmap = wxBitmap(image, -1);
}

void FillListImages(wxImageList& list, int count) {
  for (int i = 0; i < count && i < kSourceListImages; ++i) {
    wxBitmap bmp;
    LoadImageFile(bmp, wxString::FromAscii(kFiles[i].path), kFiles[i].type);
    if (!bmp.IsOk() || bmp.GetWidth() != 16 || bmp.GetHeight() != 16) {
      if (bmp.IsOk()) {
        wxImage img = bmp.ConvertToImage();
        img.Rescale(16, 16);
        bmp = wxBitmap(img, -1);
      } else {
        bmp = wxBitmap(16, 16);  // empty slot keeps the later indices in place
      }
    }
    list.Add(bmp);
  }
}

}  // namespace listing
