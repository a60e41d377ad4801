// The file lists' small images in their fixed order: folder, file, the
// extension types, the default, the two sort arrows and, for the source list
// only, the fixed-disk and USB drive images.
#pragma once

#include <wx/bitmap.h>
#include <wx/imaglist.h>
#include <wx/string.h>

namespace listing {

struct IconFile {
  const char* path;  // relative to the current directory
  int type;          // wxBITMAP_TYPE_BMP (1) or wxBITMAP_TYPE_PNG (15)
};

// Number of images the source list loads (the destination list loads the
// first 34 of them).
const int kSourceListImages = 36;
const int kDestListImages = 34;

const IconFile& ListIconFile(int index);

// Loads one image file as the given bitmap type into `bitmap` (an empty
// bitmap when the file is missing or unreadable).
void LoadImageFile(wxBitmap& bitmap, const wxString& path, int type);

// Adds the first `count` images to a 16x16 image list. A missing file still
// takes its slot (as an empty 16x16 bitmap), so every later index holds.
void FillListImages(wxImageList& list, int count);

}  // namespace listing
