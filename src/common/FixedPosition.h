// Dialogs of the module stand at the fixed place they were created with. The
// toolkit places a dialog by itself when it first appears (centred on its
// parent), so the place is applied again once the dialog is shown.
#pragma once

#include <wx/dialog.h>

namespace common {

// Shows or hides `dialog` (the plain wxDialog::Show, so a class may call it
// from its own Show override) and, when it has just appeared, moves it back
// to `pos`; wxDefaultPosition leaves the toolkit's place. Returns what
// wxDialog::Show returned (true when the visibility changed).
bool ShowAtFixedPosition(wxDialog* dialog, bool show, const wxPoint& pos);

}  // namespace common
