// Deleting in the destination with its progress dialog: counts, then deletes
// (DeleteWalk: in-process removals, links never entered, mount points left
// alone), keeping the dialog's members, counts, gauge and current-item text
// up to date and letting the event loop run so that Cancel and the close box
// reach m_cancel. The dialog's owner creates and destroys the dialog; this
// class only fills it. The dialog may go away while events run (its owner
// was closed): the run then stops as if cancelled and touches it no more.
#pragma once

#include <wx/stopwatch.h>
#include <wx/string.h>
#include <wx/weakref.h>

#include <string>
#include <vector>

#include "fileops/DeleteWalk.h"

#include "destination/DeleteFile_dialog.h"

class DeleteFileProgress {
 public:
  explicit DeleteFileProgress(DeleteFile_dialog* dialog);

  // count_DirFileInfo: counts below target (a mounted path), then writes the
  // counts through Conversion_Str. 10 when cancelled.
  int Count(const wxString& target);
  // DeleteDirFile: removes what is in target (or target, a file). 10 when
  // cancelled.
  int DeleteContents(const wxString& target);
  // The final removal of target itself; the gauge goes to 100.
  void RemoveTarget(const wxString& target);

  // Removals that failed, and the message that names them (empty when none).
  int FailedCount() const { return m_walk.FailedCount(); }
  wxString FailureMessage() const;

  const DeleteWalk& Deleting() const { return m_walk; }

 private:
  // What the walk tells the dialog (set as the walk's callbacks).
  bool Cancelled();
  void Counted(int files, int folders);
  void GaugeMoved(int percent);
  void Removed(const std::string& path);
  // Copies the walk's progress into the dialog's members.
  void Mirror();
  // Lets pending events run, at most every few milliseconds.
  void YieldNowAndThen();

  wxWeakRef<DeleteFile_dialog> m_dialog;
  DeleteWalk m_walk;
  wxStopWatch m_clock;
  long m_lastYield;
};

// The target as the bytes the file system knows it by.
std::string DeletePathBytes(const wxString& path);
// A path's bytes shown in drive-letter form (Conversion_Path): bytes that
// are not UTF-8 show as "_" as every other non-ASCII character does.
wxString DeleteDisplayPath(const std::string& path, int maxLength);

// Why a removal failed, in words.
wxString DeleteFailureReason(int error);
// The one message at the end of a deleting that did not remove everything:
// "3 items could not be deleted:\nD:\a\b (permission denied)\n...", the
// first paths given (in drive-letter form) and "... and N more." when more
// failed than are listed.
wxString DeleteFailureMessage(int failedCount, const std::vector<DeleteFailure>& first);
// Its caption.
wxString DeleteFailureCaption();
