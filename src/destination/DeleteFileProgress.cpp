#include "destination/DeleteFileProgress.h"

#include <errno.h>
#include <string.h>

#include <wx/app.h>
#include <wx/intl.h>

#include "destination/DeleteFile_dialog.h"
#include "display/Conversion.h"
#include "display/PathBytes.h"
#include "fileops/WalkStatus.h"

namespace {
// Yield and current-item updates at most this often (milliseconds): the
// text cannot be read faster, and a Cancel click still arrives at once.
const long kUpdateEveryMs = 20;
}  // namespace

DeleteFileProgress::DeleteFileProgress(DeleteFile_dialog* dialog)
    : m_dialog(dialog), m_walk(DeleteWalkView{[this] { return Cancelled(); },
                            [this](int files, int folders) { Counted(files, folders); },
                            [this](int percent) { GaugeMoved(percent); },
                            [this](const std::string& path) { Removed(path); }}), m_lastYield(-kUpdateEveryMs) {
  m_clock.Start();
}

void DeleteFileProgress::YieldNowAndThen() {
  const long now = m_clock.Time();
  if (now - m_lastYield < kUpdateEveryMs) return;
  m_lastYield = now;
  wxYieldIfNeeded();
}

void DeleteFileProgress::Mirror() {
  if (!m_dialog) return;
  m_dialog->m_fileCount = m_walk.fileCount;
  m_dialog->m_folderCount = m_walk.folderCount;
  m_dialog->m_doneSinceStep = m_walk.doneSinceStep;
  m_dialog->m_percent = m_walk.percent;
  m_dialog->m_step = m_walk.step;
  m_dialog->m_status = m_walk.status;
}

bool DeleteFileProgress::Cancelled() {
  YieldNowAndThen();
  return !m_dialog || m_dialog->m_cancel;
}

void DeleteFileProgress::Counted(int files, int folders) {
  if (!m_dialog) return;
  m_dialog->m_fileCount = files;
  m_dialog->m_folderCount = folders;
}

void DeleteFileProgress::GaugeMoved(int percent) {
  Mirror();
  if (!m_dialog) return;
  m_dialog->m_gauge->SetValue(percent < 100 ? percent : 100);
  YieldNowAndThen();
}

void DeleteFileProgress::Removed(const std::string& path) {
  if (!m_dialog) return;
  m_dialog->m_doneSinceStep = m_walk.doneSinceStep;
  const long now = m_clock.Time();
  if (now - m_lastYield < kUpdateEveryMs) return;
  m_dialog->m_currentText->SetLabel(DeleteDisplayPath(path, 40));
  YieldNowAndThen();
}

int DeleteFileProgress::Count(const wxString& target) {
  const int status = m_walk.Count(DeletePathBytes(target));
  Mirror();
  wxYieldIfNeeded();
  if (!m_dialog) return kStatusStopped;
  m_dialog->m_filesCountText->SetLabel(Conversion_Str(wxString::Format("%d", m_walk.fileCount)));
  m_dialog->m_folderCountText->SetLabel(
      Conversion_Str(wxString::Format("%d", m_walk.folderCount)));
  return status;
}

int DeleteFileProgress::DeleteContents(const wxString& target) {
  const int status = m_walk.DeleteContents(DeletePathBytes(target));
  Mirror();
  return status;
}

void DeleteFileProgress::RemoveTarget(const wxString& target) {
  const std::string bytes = DeletePathBytes(target);
  m_walk.RemoveTarget(bytes);
  Mirror();
  if (!m_dialog) return;
  m_dialog->m_currentText->SetLabel(DeleteDisplayPath(bytes, 40));
  wxYieldIfNeeded();
}

wxString DeleteFileProgress::FailureMessage() const {
  if (m_walk.FailedCount() == 0) return wxString();
  return DeleteFailureMessage(m_walk.FailedCount(), m_walk.Failures());
}

std::string DeletePathBytes(const wxString& path) { return PathBytes(path); }

wxString DeleteDisplayPath(const std::string& path, int maxLength) {
  return Conversion_Path(PathFromBytes(path), maxLength);
}

wxString DeleteFailureReason(int error) {
  switch (error) {
    case EROFS: return wxGetTranslation("read-only volume");
    case EACCES:
    case EPERM: return wxGetTranslation("permission denied");
    case EIO: return wxGetTranslation("input/output error");
    case EBUSY: return wxGetTranslation("in use");
    case ENOTEMPTY:
    case EEXIST: return wxGetTranslation("not empty");
    case EXDEV: return wxGetTranslation("another volume is mounted here");
    default: return wxString::FromUTF8(strerror(error));
  }
}

wxString DeleteFailureMessage(int failedCount, const std::vector<DeleteFailure>& first) {
  wxString text = failedCount == 1
                      ? wxString(wxGetTranslation("1 item could not be deleted:"))
                      : wxString::Format(wxGetTranslation("%d items could not be deleted:"),
                                         failedCount);
  for (const DeleteFailure& f : first)
    text += "\n" + DeleteDisplayPath(f.path, -1) + " (" + DeleteFailureReason(f.error) + ")";
  const int more = failedCount - static_cast<int>(first.size());
  if (more > 0) text += "\n" + wxString::Format(wxGetTranslation("... and %d more."), more);
  return text;
}

wxString DeleteFailureCaption() { return wxGetTranslation("Error Deleting File or Folder"); }
