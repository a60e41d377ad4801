#include "common/FixedPosition.h"

namespace common {

bool ShowAtFixedPosition(wxDialog* dialog, bool show, const wxPoint& pos) {
  const bool changed = dialog->wxDialog::Show(show);
  if (show && changed && pos != wxDefaultPosition) {
    // The window still believes it stands at the place it was created with,
    // so a plain move to that place would be skipped: step aside first.
    dialog->Move(pos + wxPoint(1, 0));
    dialog->Move(pos);
  }
  return changed;
}

}  // namespace common
