#include "common/CustomEvents.h"

#include <wx/window.h>

// A fresh event type, taken once when the module is loaded. Event tables hold
// a reference to it, so their order of construction does not matter.
const wxEventType wxEVT_MY_CUSTOM_COMMAND = wxNewEventType();

void PostMyCustomCommand(wxWindow* target, int code) {
  if (target == nullptr) return;
  wxCommandEvent event(wxEVT_MY_CUSTOM_COMMAND, code);
  event.SetEventObject(target);
  wxPostEvent(target->GetEventHandler(), event);
}
