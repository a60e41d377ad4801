#include "shell/ModuleLifecycle.h"

#include <wx/app.h>
#include <wx/intl.h>

#include <string>
#include <vector>

#include "common/ImageHandlers.h"
#include "disk/DiskImage.h"
#include "disk/View_Disk_Info.h"
#include "shell/my_frame.h"

namespace {
// Borderless child panel that takes part in tab traversal and gets every key.
const long kFrameStyle = wxBORDER_NONE | wxTAB_TRAVERSAL | wxWANTS_CHARS;
}  // namespace

int g_volumesLeftInUse = 0;

int RegisterDiskImagesFromCommandLine() {
  ClearDiskImages();
  if (wxTheApp == nullptr) return 0;
  std::vector<std::string> args;
  for (int i = 0; i < wxTheApp->argc; ++i) {
    args.push_back(std::string(wxTheApp->argv[i].fn_str()));
  }
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(&arg[0]);
  return AddDiskImagesFromArgs(static_cast<int>(argv.size()), argv.data());
}

wxWindow* CreateMainFrame(wxWindow* parent, int id, const wxPoint& pos, const wxSize& size) {
  InitAllImageHandlersOnce();
  // Disk images given to the program (--image) join the inventory after the
  // machine's own disks.
  RegisterDiskImagesFromCommandLine();
  // The inventory is taken on the calling thread before any window exists.
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  wxString title = wxGetTranslation("Vantori");
  my_frame* frame = new my_frame(parent, id, title, pos, size, kFrameStyle);
  frame->Show(true);
  return frame;
}
