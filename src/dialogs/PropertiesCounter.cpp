#include "dialogs/PropertiesCounter.h"

#include <wx/app.h>
#include <wx/dir.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/log.h>

#include "dialogs/Properties_dialog.h"

namespace {
const int kStopped = 10;

uint64_t FileSize(const wxString& path) {
  wxULongLong size = wxFileName::GetSize(path);
  return size == wxInvalidSize ? 0 : size.GetValue();
}
}  // namespace

int CountDirFileInfo(Properties_dialog* dialog, const wxString& path) {
  if (dialog == nullptr) return kStopped;
  if (dialog->m_status == kStopped) return kStopped;
  wxLogNull quiet;
  if (wxFileExists(path)) {
    dialog->m_totalBytes += FileSize(path);
    dialog->m_fileCount++;
    return 1;
  }
  wxDir dir;
  if (!wxDirExists(path) || !dir.Open(path)) return 1;
  wxString name;
  bool more = dir.GetFirst(&name, wxString(), wxDIR_FILES | wxDIR_DIRS | wxDIR_HIDDEN);
  while (more) {
    if (dialog->m_cancel) return kStopped;
    const wxString full = path + "/" + name;
    if (wxDirExists(full)) {
      dialog->m_folderCount++;
      wxYieldIfNeeded();
      if (dialog->m_folderCount % 18 == 0) dialog->ShowFolders();
      dialog->m_status = CountDirFileInfo(dialog, full);
      if (dialog->m_status == kStopped) return kStopped;
    } else if (wxFileExists(full)) {
      dialog->m_totalBytes += FileSize(full);
      dialog->m_fileCount++;
      if (dialog->m_fileCount % 134 == 0) {
        wxYieldIfNeeded();
        dialog->ShowFileAndSize();
      }
    }
    more = dir.GetNext(&name);
  }
  return 1;
}
