#include "display/VolumeText.h"

#include <wx/strconv.h>

wxString VolumeText(const char* bytes) {
  if (bytes == nullptr) return wxString();
  return wxString(bytes, wxConvISO8859_1);
}
