// The module's one image loader and the filler of its small image lists.
#pragma once

#include <wx/bitmap.h>
#include <wx/imaglist.h>
#include <wx/string.h>

#include <cstddef>

namespace common {

// One picture of an image list: its name under "./res/vantori/" (see
// ResourcePaths.h) and its file type, wxBITMAP_TYPE_BMP (1) or
// wxBITMAP_TYPE_PNG (15).
struct ImageFile {
  const char* name;
  int type;
};

// Loads the image file at path as the given type into bitmap (screen depth)
// and returns true. A missing or undecodable file returns false, leaves
// bitmap as it was and reports nothing. The handler for the type is
// registered first if it is not yet.
bool LoadImageFile(wxBitmap& bitmap, const wxString& path, int type);

// The picture as an image-list slot of size w x h: a valid bitmap of another
// size is rescaled to it; an invalid one becomes an empty w x h bitmap, so
// that the slot is still taken.
wxBitmap FitImageSlot(const wxBitmap& bitmap, int w, int h);

// Appends the count pictures to list in their order, each loaded with
// LoadImageFile from ResourcePath(name) and fitted to the list's image size.
// A missing file still takes its slot, so every later index holds.
void FillImageList(wxImageList& list, const ImageFile* files, size_t count);

}  // namespace common
