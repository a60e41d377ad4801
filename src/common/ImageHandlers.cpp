#include "common/ImageHandlers.h"

#include <wx/image.h>

void InitAllImageHandlersOnce() {
  // The TGA handler is registered by nothing but the full set.
  if (wxImage::FindHandler(wxBITMAP_TYPE_TGA) == nullptr) wxInitAllImageHandlers();
}
