// What the data-safety tests of copying share: file systems of their own
// inside the private /mnt, trees of files with varied contents, a copy run
// through the real progress dialog and what it left behind, and a tap on the
// file-operations table that acts at a chosen read of a source.
#pragma once

#include <gtest/gtest.h>

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/toplevel.h>

#include <errno.h>
#include <ftw.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "common/CustomEvents.h"
#include "common/disk_images.h"
#include "common/fake_fileops.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "copy_env.h"
#include "destination/Des_PathInfo.h"
#include "fileops/FileOpsSeam.h"
#include "timer_call.h"

namespace vt {

// A tmpfs mounted at a folder of the private /mnt for the test's lifetime.
class OwnTmpfs {
 public:
  OwnTmpfs(const std::string& point, const std::string& options) : point_(point) {
    mkdir(point.c_str(), 0755);
    ok_ = mount("vantori-copy-test", point.c_str(), "tmpfs", 0, options.c_str()) == 0;
    error_ = ok_ ? 0 : errno;
  }
  ~OwnTmpfs() {
    if (ok_) umount2(point_.c_str(), MNT_DETACH);
    rmdir(point_.c_str());
  }
  OwnTmpfs(const OwnTmpfs&) = delete;
  OwnTmpfs& operator=(const OwnTmpfs&) = delete;
  bool Ok() const { return ok_; }
  std::string Error() const { return strerror(error_); }

 private:
  std::string point_;
  bool ok_ = false;
  int error_ = 0;
};

// Entries below root by relative path ("a", "a/b.txt"), links not followed:
// 'd' folder, 'f' file, 'l' link, '?' anything else.
inline std::map<std::string, char> Entries(const std::string& root) {
  static std::map<std::string, char>* out;
  static size_t rootLength;
  std::map<std::string, char> found;
  out = &found;
  rootLength = root.size();
  nftw(root.c_str(), [](const char* p, const struct stat*, int type, struct FTW*) {
    std::string rel = p;
    if (rel.size() <= rootLength) return 0;
    rel = rel.substr(rootLength + 1);
    (*out)[rel] = type == FTW_D || type == FTW_DNR ? 'd' : type == FTW_F ? 'f'
                  : type == FTW_SL || type == FTW_SLN ? 'l' : '?';
    return 0;
  }, 16, FTW_PHYS);
  return found;
}

inline bool IsFile(const std::string& path) {
  struct stat64 st;
  return lstat64(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// The progress dialog that is still there (also one whose deferred
// destruction has not run yet), or null.
inline my_dialog_gauge* AnyCopyDialog() {
  for (wxWindow* w : wxTopLevelWindows)
    if (auto* d = dynamic_cast<my_dialog_gauge*>(w)) return d;
  return nullptr;
}
// What one copy through the progress dialog left.
struct CopyRun {
  bool dialogGone = false;       // destroyed, not only hidden
  bool parentEnabled = false;    // after the dialog went
  bool parentDisabledDuring = true;  // at every check while the job ran
  int posted1401 = 0;            // command 1401 events that reached the parent
  int answerAfter = -1;          // g_copy_dialog_return after the dialog went
  CopyOutcome outcome;           // g_lastCopyOutcome
  std::string output;            // standard output of the run
  std::chrono::steady_clock::time_point returned;  // when the constructor returned
};

// Copies what g_Des_PathInfo describes through a real progress dialog over
// `parent` (a shown window), the way the copy command opens it, and waits
// until the dialog has gone. Command 1401 events reaching the parent are
// counted (and passed on).
inline CopyRun CopyWithDialog(wxWindow* parent) {
  CopyRun run;
  int posted = 0;
  auto count = [&posted](wxCommandEvent& e) {
    if (e.GetId() == MYCMD_OPEN_TARGET) ++posted;
    e.Skip();
  };
  parent->Bind(wxEventTypeTag<wxCommandEvent>(wxEVT_MY_CUSTOM_COMMAND), count);
  g_lastCopyOutcome = CopyOutcome();
  g_copy_dialog_return = COPY_ANSWER_YES_TO_ALL;  // an answer the dialog must forget
  const size_t dialogsBefore = UnexpectedDialogs().size();
  {
    // The parent is checked while the job runs, at the job's own yields.
    TimerCall watch(5, [&] {
      if (OpenGauge() != nullptr && parent->IsEnabled()) run.parentDisabledDuring = false;
    });
    StdoutCapture output;
    new my_dialog_gauge(parent, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                        wxDEFAULT_DIALOG_STYLE);
    run.returned = std::chrono::steady_clock::now();
    run.dialogGone = PumpUntil([] { return AnyCopyDialog() == nullptr; }, 10000);
    Pump(30);  // the posted command
    run.output = output.Stop();
  }
  // What the test framework printed meanwhile went into the capture: the
  // message boxes nobody expected are named again here.
  for (size_t i = dialogsBefore; i < UnexpectedDialogs().size(); ++i)
    ADD_FAILURE() << "during the copy, a message box \"" << UnexpectedDialogs()[i].caption
                  << "\": " << UnexpectedDialogs()[i].message;
  parent->Unbind(wxEventTypeTag<wxCommandEvent>(wxEVT_MY_CUSTOM_COMMAND), count);
  run.parentEnabled = parent->IsEnabled();
  run.posted1401 = posted;
  run.answerAfter = g_copy_dialog_return;
  run.outcome = g_lastCopyOutcome;
  return run;
}

// Sits on top of the installed file-operations table (normally a
// FakeFileOps) and watches the reads of sources (read and copy_file_range):
// counts them, runs an action on the window's thread at the Nth one before
// it goes on, and notes when the first plain read of the file named by
// TimeReadsOf began and when it returned.
// The reads run on the copy's worker thread: the tap hands the action over
// to the window's thread and holds the read (at most 5 s) until the action
// starts there, which it does at the copy's next look at its event loop.
class SourceReadTap {
 public:
  using Clock = std::chrono::steady_clock;

  SourceReadTap() {
    saved_ = g_FileOpsSeam;
    tap_ = this;
    g_FileOpsSeam.Read = TapRead;
    g_FileOpsSeam.CopyFileRange = TapCopyRange;
  }
  ~SourceReadTap() {
    g_FileOpsSeam = saved_;
    tap_ = nullptr;
  }
  SourceReadTap(const SourceReadTap&) = delete;
  SourceReadTap& operator=(const SourceReadTap&) = delete;

  // Acts at the nth read (from 1) of the next run, counting only reads of
  // a path that ends in `suffix` when one is given; 0: never.
  void ActAt(int nth, std::function<void()> action, const std::string& suffix = "") {
    reads = 0;
    matching_ = 0;
    actAt_ = nth;
    action_ = std::move(action);
    actSuffix_ = suffix;
    acted = false;
  }
  // The file whose reads are timed ("" for none): a path ending in this.
  void TimeReadsOf(const std::string& suffix) { slowSuffix_ = suffix; }

  std::atomic<int> reads{0};
  std::atomic<bool> acted{false};
  std::atomic<bool> slowBegan{false};
  std::atomic<bool> slowReturned{false};
  Clock::time_point slowBeganAt, slowReturnedAt;

 private:
  static SourceReadTap* tap_;

  static bool EndsWith(const std::string& path, const std::string& suffix) {
    return path.size() >= suffix.size() &&
           path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
  }
  void Before(int fd, bool plainRead) {
    ++reads;
    const std::string path =
        FakeFileOps::Current() != nullptr ? FakeFileOps::Current()->PathOf(fd) : std::string();
    if (plainRead && !slowSuffix_.empty() && !slowBegan && EndsWith(path, slowSuffix_)) {
      slowBeganAt = Clock::now();
      slowBegan = true;
      slowFd_ = fd;
    }
    if (!actSuffix_.empty() && !EndsWith(path, actSuffix_)) return;
    if (++matching_ != actAt_ || !action_) return;
    if (wxIsMainThread()) {
      action_();
      acted = true;
      return;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    released_ = false;
    wxTheApp->CallAfter([this] {
      {
        // The read goes on as the action runs, as it would beside a click.
        std::lock_guard<std::mutex> go(mutex_);
        released_ = true;
        cv_.notify_all();
      }
      action_();
      acted = true;
    });
    cv_.wait_for(lock, std::chrono::seconds(5), [this] { return released_; });
  }
  void After(int fd) {
    if (fd == slowFd_ && slowBegan && !slowReturned) {
      slowReturnedAt = Clock::now();
      slowReturned = true;
    }
  }
  static ssize_t TapRead(int fd, void* buffer, size_t count) {
    SourceReadTap* t = tap_;
    t->Before(fd, true);
    const ssize_t r = t->saved_.Read(fd, buffer, count);
    t->After(fd);
    return r;
  }
  static ssize_t TapCopyRange(int fdIn, off64_t* offsetIn, int fdOut, off64_t* offsetOut,
                              size_t length, unsigned int flags) {
    SourceReadTap* t = tap_;
    t->Before(fdIn, false);
    const ssize_t r = t->saved_.CopyFileRange(fdIn, offsetIn, fdOut, offsetOut, length, flags);
    return r;
  }

  FileOpsSeam saved_;
  int actAt_ = 0;
  int matching_ = 0;
  std::string actSuffix_;
  std::function<void()> action_;
  std::string slowSuffix_;
  int slowFd_ = -1;
  std::mutex mutex_;
  std::condition_variable cv_;
  bool released_ = false;  // the window's thread has taken the action over
};

inline SourceReadTap* SourceReadTap::tap_ = nullptr;

// Presses the progress dialog's Cancel button (its click event).
inline void PressCopyCancel() {
  my_dialog_gauge* d = OpenGauge();
  if (d == nullptr) return;
  wxCommandEvent press(wxEVT_BUTTON, ID_GAUGE_CANCEL);
  press.SetEventObject(d->m_cancelButton);
  d->m_cancelButton->GetEventHandler()->ProcessEvent(press);
}

}  // namespace vt
