// The module's exported C interface: the host resolves exactly these five
// names (the disk layer's byte readers are exported beside them).
#include <wx/window.h>

#include "ModuleVersion.h"
#include "shell/ModuleLifecycle.h"

#define VANTORI_API extern "C" __attribute__((visibility("default")))

VANTORI_API wxWindow* create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size) {
  return CreateMainFrame(parent, id, pos, size);
}

VANTORI_API int show(wxWindow* frame, bool visible) {
  if (frame == nullptr) return 0;
  if (visible)
    frame->Show(true);
  else
    frame->Hide();
  return 1;
}

VANTORI_API int destroy(wxWindow* frame) {
  if (frame == nullptr) return 0;
  frame->Destroy();
  return 1;
}

// 0, or after the main frame has gone: the number of volumes that were
// still in use then and were detached lazily (the host turns it into its
// exit status).
VANTORI_API int invoke() { return g_volumesLeftInUse; }

VANTORI_API int get_version() { return VANTORI_MODULE_VERSION; }
