#include "display/BusyDrives.h"

#include <wx/intl.h>

#include "display/VolumeText.h"

wxString BusyDrivesText(const VolumeInformation* volumes, int count, bool exiting) {
  wxString text;
  for (int i = 0; volumes != nullptr && i < count && i < MAX_VOLUME_COUNT; ++i) {
    const VolumeInformation& v = volumes[i];
    if (!v.Busy) continue;
    wxString label = VolumeText(v.VolumeLabel);
    label.Trim(true);
    wxString drive = wxString::Format(wxT("%c:"), v.DriveLetter);
    if (!label.empty()) drive += wxT(" (") + label + wxT(")");
    if (!text.empty()) text += wxT("\n");
    if (exiting) {
      text += wxString::Format(
          wxGetTranslation("Drive %s is still in use by another program. Everything has been "
                           "written to it; Vantori detaches it now, and the system releases it "
                           "when that program ends."),
          drive);
    } else {
      text += wxString::Format(
          wxGetTranslation("Drive %s is in use by another program; close it and press Refresh "
                           "again."),
          drive);
    }
  }
  return text;
}
