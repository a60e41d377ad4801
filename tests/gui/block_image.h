// A 64 x 16 PNG of four 16 x 16 blocks of known colours, left to right, and
// the check that a bitmap is one of those blocks: the image tests draw their
// own pictures and know what every cut-out of them must look like.
#pragma once

#include <wx/bitmap.h>
#include <wx/image.h>

#include <string>

#include "common/test_support.h"

namespace vt {

const unsigned char kBlocks[4][3] = {{250, 10, 10}, {10, 200, 10}, {10, 10, 240}, {200, 200, 0}};

// Writes the four blocks to path (creating its directories); false when the
// file could not be written.
inline bool WriteBlocksPng(const std::string& path) {
  wxImage img(64, 16);
  for (int b = 0; b < 4; ++b)
    img.SetRGB(wxRect(16 * b, 0, 16, 16), kBlocks[b][0], kBlocks[b][1], kBlocks[b][2]);
  vt::WriteFile(path, "");
  return img.SaveFile(wxString::FromUTF8(path.c_str()), wxBITMAP_TYPE_PNG);
}

// True when every pixel of bmp has the colour of block b.
inline bool IsBlock(const wxBitmap& bmp, int b) {
  if (!bmp.IsOk()) return false;
  const wxImage img = bmp.ConvertToImage();
  for (int y = 0; y < img.GetHeight(); ++y)
    for (int x = 0; x < img.GetWidth(); ++x)
      if (img.GetRed(x, y) != kBlocks[b][0] || img.GetGreen(x, y) != kBlocks[b][1] ||
          img.GetBlue(x, y) != kBlocks[b][2])
        return false;
  return true;
}

}  // namespace vt
