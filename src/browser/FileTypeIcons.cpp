#include "browser/FileTypeIcons.h"

#include "common/ImageFiles.h"

namespace listing {

namespace {
const common::ImageFile kFiles[kSourceListImages] = {
    {"bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG},
    {"bmp/File_10.png", wxBITMAP_TYPE_PNG},
    {"bmp/bat.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/bmp.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/c.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/cfg.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/cpp.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/db.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/dll.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/doc.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/dsp.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/dsw.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/exe.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/gif.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/h.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/ie.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/ini.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/jpg.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/mdb.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/mp3.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/mpg.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/pcx.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/pdf.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/ppt.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/psd.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/pub.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/rar.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/reg.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/txt.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/wav.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/xls.bmp", wxBITMAP_TYPE_BMP},
    {"bmp/normal.bmp", wxBITMAP_TYPE_BMP},
    {"up.png", wxBITMAP_TYPE_PNG},
    {"down.png", wxBITMAP_TYPE_PNG},
    {"disk.png", wxBITMAP_TYPE_PNG},
    {"usb.png", wxBITMAP_TYPE_PNG},
};
}  // namespace

void FillListImages(wxImageList& list, int count) {
  if (count > kSourceListImages) count = kSourceListImages;
  common::FillImageList(list, kFiles, count < 0 ? 0 : static_cast<size_t>(count));
}

}  // namespace listing
