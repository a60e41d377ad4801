// The module's exported C interface: the host resolves exactly these five
// names (the disk layer's byte readers are exported beside them).
#include <wx/image.h>
#include <wx/intl.h>
#include <wx/window.h>

#include "disk/View_Disk_Info.h"
#include "shell/ImageHandlers.h"
#include "shell/my_frame.h"

#define VANTORI_API extern "C" __attribute__((visibility("default")))

namespace {
const int kModuleVersion = 4538;
// Borderless child panel that takes part in tab traversal and gets every key.
const long kFrameStyle = wxBORDER_NONE | wxTAB_TRAVERSAL | wxWANTS_CHARS;
}  // namespace

VANTORI_API wxWindow* create(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size) {
  InitAllImageHandlersOnce();
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  wxString title = wxGetTranslation("Vantori");
  my_frame* frame = new my_frame(parent, id, title, pos, size, kFrameStyle);
  frame->Show(true);
  return frame;
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

VANTORI_API int invoke() { return 0; }

VANTORI_API int get_version() { return kModuleVersion; }
