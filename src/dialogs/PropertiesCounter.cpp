#include "dialogs/PropertiesCounter.h"

#include <wx/app.h>
#include <wx/weakref.h>

#include "dialogs/Properties_dialog.h"
#include "fileops/FolderWalker.h"
#include "fileops/WalkStatus.h"

namespace {
// The running figures are written every 18th folder and every 134th file.
const int kFolderUpdateEvery = 18;
const int kFileUpdateEvery = 134;
}  // namespace

int CountDirFileInfo(Properties_dialog* dialog, const wxString& path) {
  if (dialog == nullptr) return kStatusStopped;
  if (dialog->m_status == kStatusStopped) return kStatusStopped;
  // Every yield may destroy the dialog (and the frame): after each one the
  // walk looks here first and ends without touching it.
  wxWeakRef<Properties_dialog> alive(dialog);
  const wxCharBuffer name = path.fn_str();
  FolderWalkOptions options;
  options.followLinks = true;

  FolderWalkEntry top;
  struct stat64 info;
  if (DescribePath(name.data(), options, &top, &info) != 0) return kStatusWalked;
  if (top.kind == kWalkFile) {
    dialog->m_totalBytes += top.size;
    dialog->m_fileCount++;
    return kStatusWalked;
  }

  int stopDepth = 0;
  const int result = WalkFolder(name.data(), options, [&](const FolderWalkEntry& e) -> int {
    if (!alive) return kWalkStop;
    if (e.event == kWalkError) return kWalkContinue;  // an unreadable folder counts as empty
    if (e.event == kWalkLeave) {
      // The level below ended normally.
      dialog->m_status = kStatusWalked;
      return kWalkContinue;
    }
    if (dialog->m_cancel || dialog->m_status == kStatusStopped) {
      stopDepth = e.depth;
      return kWalkStop;
    }
    if (e.kind == kWalkFolder) {
      dialog->m_folderCount++;
      wxYieldIfNeeded();
      if (!alive) return kWalkStop;
      if (dialog->m_folderCount % kFolderUpdateEvery == 0) dialog->ShowFolders();
    } else if (e.kind == kWalkFile) {
      dialog->m_totalBytes += e.size;
      dialog->m_fileCount++;
      if (dialog->m_fileCount % kFileUpdateEvery == 0) {
        wxYieldIfNeeded();
        if (!alive) return kWalkStop;
        dialog->ShowFileAndSize();
      }
    }
    return kWalkContinue;
  });
  if (!alive) return kStatusStopped;
  if (result != kWalkStopped) return kStatusWalked;
  // A stop below the first level is handed up through the status field, as
  // each level stores the result of the one below it.
  if (stopDepth >= 2) dialog->m_status = kStatusStopped;
  return kStatusStopped;
}
