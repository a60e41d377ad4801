// A stand-in for the file-operations table (src/fileops/FileOpsSeam.h): every
// call goes on to the real one (the table that was installed before), unless
// a rule says otherwise. Rules can make any call fail with any errno, make
// reads and writes come back short, make a call take its time, or make the
// stat calls report another device; each rule may apply only to paths that
// match a pattern (fnmatch, "*" also matches "/") and only to the Nth
// matching call. The fake also records every call and knows which folder
// handles and descriptors are open.
//
// Calls may come from several threads at once (a worker thread runs the
// blocking ones): rules, counters and records are kept under one lock, which
// is never held while a delay sleeps or while the real call runs.
//
// Typical use:
//   vt::FakeFileOps fake;                                  // installs itself
//   fake.Fail(vt::FakeFileOps::kOpendir, EACCES, "*/locked");
//   fake.Fail(vt::FakeFileOps::kRead, EIO, "*/big.bin", 3);  // the 3rd read only
//   fake.ShortWrite(100);                                  // every write <= 100 bytes
//   ... run the code under test ...
//   EXPECT_EQ(fake.OpenFolders(), 0);
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

struct FileOpsSeam;

namespace vt {

class FakeFileOps {
 public:
  enum Call {
    kOpen, kOpenat, kRead, kWrite, kClose, kStat, kLstat, kFstat, kFstatat, kOpendir,
    kFdopendir, kReaddir, kClosedir, kMkdir, kMkdirat, kUnlinkat, kUtimensat, kSyncfs,
    kCopyFileRange, kPread, kLseek, kCallKinds
  };
  static const char* CallName(Call call);

  // Installs the fake into g_FileOpsSeam (at most one at a time).
  FakeFileOps();
  // Puts the previous table back.
  ~FakeFileOps();
  FakeFileOps(const FakeFileOps&) = delete;
  FakeFileOps& operator=(const FakeFileOps&) = delete;
  static FakeFileOps* Current();

  // The call fails with err (-1 or null, errno = err). pattern empty: any
  // path; nth 0: every matching call, otherwise only the nth one (from 1).
  // Every rule counts every call it matches, whatever the other rules do:
  // Fail(kRead, EIO, p, 2) and Fail(kRead, EIO, p, 3) fail the 2nd and the
  // 3rd read. When several failures meet one call, the first rule's wins.
  void Fail(Call call, int err, const std::string& pattern = "", int nth = 0);
  // Reads (read, pread, copy_file_range's source) and writes (write,
  // copy_file_range's target) of matching descriptors move at most maxBytes.
  // A Fail or Delay rule names one call kind: a rule for kRead does not
  // touch pread, nor one for kPread read.
  void ShortRead(size_t maxBytes, const std::string& pattern = "", int nth = 0);
  void ShortWrite(size_t maxBytes, const std::string& pattern = "", int nth = 0);
  // The call sleeps that long before it runs.
  void Delay(Call call, int milliseconds, const std::string& pattern = "", int nth = 0);
  // stat, lstat, fstat and fstatat of matching paths report this st_dev.
  void SetDevice(const std::string& pattern, dev_t device);
  // Forgets every rule (not the record of calls).
  void ClearRules();

  // How many times a call was made; the record "opendir /path", "read
  // /path", ... in order; open folder handles and descriptors right now.
  // (Calls() is a copy, taken under the lock.)
  int Count(Call call) const;
  std::vector<std::string> Calls() const;
  void ClearCalls();
  int OpenFolders() const;
  int OpenDescriptors() const;
  // The path a descriptor or folder handle was opened with ("" if unknown).
  std::string PathOf(int fd) const;

  // What the trampolines call (public so the plain functions reach them).
  int Before(Call call, const std::string& path, size_t* count);
  void AfterStat(const std::string& path, struct stat64* out);
  void Opened(int fd, const std::string& path);
  void Closed(int fd);
  void OpenedFolder(void* dir, const std::string& path);
  void ClosedFolder(void* dir);
  std::string FolderPath(void* dir) const;
  std::string AtPath(int dirFd, const char* path) const;
  const FileOpsSeam& Real() const { return *real_; }

 private:
  enum RuleType { kFail, kShortRead, kShortWrite, kDelay };
  struct Rule {
    RuleType type;
    Call call;
    std::string pattern;
    int nth;
    int seen = 0;
    int err = 0;
    size_t maxBytes = 0;
    int milliseconds = 0;
  };
  void Add(const Rule& rule);

  mutable std::mutex mutex_;  // guards everything below but real_

  FileOpsSeam* real_;
  std::vector<Rule> rules_;
  std::vector<std::pair<std::string, dev_t>> devices_;
  int counts_[kCallKinds] = {};
  std::vector<std::string> calls_;
  std::map<int, std::string> fds_;
  std::map<void*, std::string> dirs_;
};

}  // namespace vt
