// Deleting a file or a folder tree on a destination volume: first counting
// its files and folders, then removing them one by one with progress, and
// last the selected item itself. Every removal is made in this process
// through the file-operations table (unlinkat; AT_REMOVEDIR for a folder),
// never through a shell: a name read from a damaged or hostile disk is never
// run as a command.
//
// Order and diagnostics: one removal per file, a folder's contents
// depth-first before the folder, the selected item last. Standard output
// receives, as the deleting has always written them,
//   "Delete Path = <path>\n"                 at the start of every folder
//   "delete dir = <child>\n "                before every entry
//   "delete file of dir order is :rm -f <escaped child>"   before a file of a folder
//   "delete file = <escaped path>;\n delete file order is rm -f <escaped path>\n"
//                                            after the selected item when it is a file
// where <escaped ...> is the 13-character shell escape (ShellEscape.h) of
// the path: the text that names the removal in the diagnostics.
//
// Safety: a symbolic link is removed as a link and never entered; a folder
// on another device than the one the selected item lies on (a mount point)
// is neither entered nor removed; a removal that fails is counted and the
// first few such paths are kept for the one message at the end. A path that
// is already gone counts as removed (as "rm -f" does).
//
// Paths are bytes, not text: names that are not valid UTF-8 are removed as
// well as any other.
#pragma once

#include <string>
#include <functional>
#include <vector>

// What the deleting tells its progress dialog, and how it learns of Cancel:
// callbacks that the dialog's side sets (an unset one does nothing, and an
// unset cancelled lets the walk run to its end).
struct DeleteWalkView {
  // Asked before every entry of both walks; true stops the walk. May let the
  // event loop run (that is how a Cancel click arrives).
  std::function<bool()> cancelled;
  // The counts changed (once per counted entry).
  std::function<void(int files, int folders)> counted;
  // The gauge value moved (it is not limited to 100 here).
  std::function<void(int percent)> gaugeMoved;
  // One item was removed (or its removal failed and was recorded).
  std::function<void(const std::string& path)> removed;
};

struct DeleteFailure {
  std::string path;
  int error = 0;  // errno of the failed removal; EXDEV for a mount point left alone
};

class DeleteWalk {
 public:
  // How many failed paths are kept for the message.
  static const int kFailuresKept = 5;

  explicit DeleteWalk(DeleteWalkView view) : view_(std::move(view)) {}

  // Counts the files and folders below target (a folder) into fileCount and
  // folderCount; a file, a link or a missing path has nothing to count. A
  // link counts as a file; a mount point inside counts as a folder and is not
  // entered. Returns kStatusStopped (and keeps it in status) when cancelled,
  // otherwise kStatusWalked.
  int Count(const std::string& target);

  // Removes what lies in target (a folder), or target itself when it is not
  // a folder, with the diagnostics and gauge steps above; step is
  // (fileCount + folderCount) / 100. Returns kStatusStopped when cancelled
  // (what was removed stays removed, the rest stays), else kStatusWalked.
  int DeleteContents(const std::string& target);

  // Removes target itself (the selected item, after its contents). A target
  // already gone is fine. Sets percent to 100.
  void RemoveTarget(const std::string& target);

  // Removals that failed (and mount points left alone), and the first few.
  int FailedCount() const { return failedCount_; }
  const std::vector<DeleteFailure>& Failures() const { return failures_; }

  // The progress state the dialog shows (its members of the same names).
  int fileCount = 0;
  int folderCount = 0;
  int doneSinceStep = 0;
  int percent = 0;
  int step = 0;
  int status = 0;

 private:
  void GaugeStep();
  // Removes one path (flags 0 or AT_REMOVEDIR); a failure other than "gone
  // already" is recorded.
  void Remove(const std::string& path, int flags);
  void Fail(const std::string& path, int error);
  // Counts one removal and shows it.
  void Done(const std::string& path);

  DeleteWalkView view_;
  int failedCount_ = 0;
  std::vector<DeleteFailure> failures_;
};
