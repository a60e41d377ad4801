// The file lists' small images in their fixed order: folder, file, the
// extension types, the default, the two sort arrows and, for the source list
// only, the fixed-disk and USB drive images.
#pragma once

#include <wx/imaglist.h>

namespace listing {

// Number of images the source list loads (the destination list loads the
// first 34 of them).
const int kSourceListImages = 36;
const int kDestListImages = 34;

// Adds the first `count` images to a 16x16 image list (names under
// "./res/vantori/"). A missing file still takes its slot (as an empty 16x16
// bitmap), so every later index holds.
void FillListImages(wxImageList& list, int count);

}  // namespace listing
