#include "shell/ModuleLifecycle.h"

#include <wx/intl.h>

#include "common/ImageHandlers.h"
#include "disk/View_Disk_Info.h"
#include "shell/my_frame.h"

namespace {
// Borderless child panel that takes part in tab traversal and gets every key.
const long kFrameStyle = wxBORDER_NONE | wxTAB_TRAVERSAL | wxWANTS_CHARS;
}  // namespace

wxWindow* CreateMainFrame(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size) {
  InitAllImageHandlersOnce();
  // The inventory is taken on the calling thread before any window exists.
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  wxString title = wxGetTranslation("Vantori");
  my_frame* frame = new my_frame(parent, id, title, pos, size, kFrameStyle);
  frame->Show(true);
  return frame;
}
