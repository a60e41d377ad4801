#include "common/fake_fileops.h"

#include <errno.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstdio>

#include "fileops/FileOpsSeam.h"

namespace vt {
namespace {

FakeFileOps* g_current = nullptr;
FileOpsSeam g_saved;

FakeFileOps& F() { return *g_current; }
std::string S(const char* p) { return p != nullptr ? std::string(p) : std::string(); }

int TOpen(const char* path, int flags, mode_t mode) {
  if (F().Before(FakeFileOps::kOpen, S(path), nullptr) != 0) return -1;
  const int fd = F().Real().Open(path, flags, mode);
  if (fd >= 0) F().Opened(fd, S(path));
  return fd;
}
int TOpenat(int dirFd, const char* path, int flags, mode_t mode) {
  const std::string full = F().AtPath(dirFd, path);
  if (F().Before(FakeFileOps::kOpenat, full, nullptr) != 0) return -1;
  const int fd = F().Real().Openat(dirFd, path, flags, mode);
  if (fd >= 0) F().Opened(fd, full);
  return fd;
}
ssize_t TRead(int fd, void* buffer, size_t count) {
  if (F().Before(FakeFileOps::kRead, F().PathOf(fd), &count) != 0) return -1;
  return F().Real().Read(fd, buffer, count);
}
ssize_t TWrite(int fd, const void* buffer, size_t count) {
  if (F().Before(FakeFileOps::kWrite, F().PathOf(fd), &count) != 0) return -1;
  return F().Real().Write(fd, buffer, count);
}
int TClose(int fd) {
  if (F().Before(FakeFileOps::kClose, F().PathOf(fd), nullptr) != 0) return -1;
  F().Closed(fd);
  return F().Real().Close(fd);
}
int TStat(const char* path, struct stat64* out) {
  if (F().Before(FakeFileOps::kStat, S(path), nullptr) != 0) return -1;
  const int r = F().Real().Stat(path, out);
  if (r == 0) F().AfterStat(S(path), out);
  return r;
}
int TLstat(const char* path, struct stat64* out) {
  if (F().Before(FakeFileOps::kLstat, S(path), nullptr) != 0) return -1;
  const int r = F().Real().Lstat(path, out);
  if (r == 0) F().AfterStat(S(path), out);
  return r;
}
int TFstat(int fd, struct stat64* out) {
  const std::string path = F().PathOf(fd);
  if (F().Before(FakeFileOps::kFstat, path, nullptr) != 0) return -1;
  const int r = F().Real().Fstat(fd, out);
  if (r == 0) F().AfterStat(path, out);
  return r;
}
int TFstatat(int dirFd, const char* path, struct stat64* out, int flags) {
  const std::string full = F().AtPath(dirFd, path);
  if (F().Before(FakeFileOps::kFstatat, full, nullptr) != 0) return -1;
  const int r = F().Real().Fstatat(dirFd, path, out, flags);
  if (r == 0) F().AfterStat(full, out);
  return r;
}
DIR* TOpendir(const char* path) {
  if (F().Before(FakeFileOps::kOpendir, S(path), nullptr) != 0) return nullptr;
  DIR* d = F().Real().Opendir(path);
  if (d != nullptr) F().OpenedFolder(d, S(path));
  return d;
}
DIR* TFdopendir(int fd) {
  const std::string path = F().PathOf(fd);
  if (F().Before(FakeFileOps::kFdopendir, path, nullptr) != 0) return nullptr;
  DIR* d = F().Real().Fdopendir(fd);
  if (d != nullptr) {
    F().Closed(fd);  // the handle owns the descriptor now
    F().OpenedFolder(d, path);
  }
  return d;
}
struct dirent64* TReaddir(DIR* dir) {
  if (F().Before(FakeFileOps::kReaddir, F().FolderPath(dir), nullptr) != 0) return nullptr;
  return F().Real().Readdir(dir);
}
int TClosedir(DIR* dir) {
  if (F().Before(FakeFileOps::kClosedir, F().FolderPath(dir), nullptr) != 0) return -1;
  F().ClosedFolder(dir);
  return F().Real().Closedir(dir);
}
int TMkdir(const char* path, mode_t mode) {
  if (F().Before(FakeFileOps::kMkdir, S(path), nullptr) != 0) return -1;
  return F().Real().Mkdir(path, mode);
}
int TMkdirat(int dirFd, const char* path, mode_t mode) {
  if (F().Before(FakeFileOps::kMkdirat, F().AtPath(dirFd, path), nullptr) != 0) return -1;
  return F().Real().Mkdirat(dirFd, path, mode);
}
int TUnlinkat(int dirFd, const char* path, int flags) {
  if (F().Before(FakeFileOps::kUnlinkat, F().AtPath(dirFd, path), nullptr) != 0) return -1;
  return F().Real().Unlinkat(dirFd, path, flags);
}
int TUtimensat(int dirFd, const char* path, const struct timespec times[2], int flags) {
  if (F().Before(FakeFileOps::kUtimensat, F().AtPath(dirFd, path), nullptr) != 0) return -1;
  return F().Real().Utimensat(dirFd, path, times, flags);
}
int TSyncfs(int fd) {
  if (F().Before(FakeFileOps::kSyncfs, F().PathOf(fd), nullptr) != 0) return -1;
  return F().Real().Syncfs(fd);
}
ssize_t TCopyFileRange(int fdIn, off64_t* offsetIn, int fdOut, off64_t* offsetOut,
                       size_t length, unsigned int flags) {
  // Source side: failures, delays and short reads; target side: short writes.
  if (F().Before(FakeFileOps::kCopyFileRange, F().PathOf(fdIn), &length) != 0) return -1;
  if (F().Before(FakeFileOps::kWrite, F().PathOf(fdOut), &length) != 0) return -1;
  return F().Real().CopyFileRange(fdIn, offsetIn, fdOut, offsetOut, length, flags);
}

ssize_t TPread(int fd, void* buffer, size_t count, off64_t offset) {
  if (F().Before(FakeFileOps::kPread, F().PathOf(fd), &count) != 0) return -1;
  return F().Real().Pread(fd, buffer, count, offset);
}
off64_t TLseek(int fd, off64_t offset, int whence) {
  if (F().Before(FakeFileOps::kLseek, F().PathOf(fd), nullptr) != 0) return -1;
  return F().Real().Lseek(fd, offset, whence);
}

bool Matches(const std::string& pattern, const std::string& path) {
  return pattern.empty() || fnmatch(pattern.c_str(), path.c_str(), 0) == 0;
}

}  // namespace

const char* FakeFileOps::CallName(Call call) {
  static const char* const kNames[kCallKinds] = {
      "open",    "openat",    "read",    "write",    "close",   "stat",     "lstat",
      "fstat",   "fstatat",   "opendir", "fdopendir", "readdir", "closedir", "mkdir",
      "mkdirat", "unlinkat",  "utimensat", "syncfs", "copy_file_range",
      "pread",   "lseek"};
  return call >= 0 && call < kCallKinds ? kNames[call] : "?";
}

FakeFileOps::FakeFileOps() : real_(&g_saved) {
  if (g_current != nullptr) {
    std::fprintf(stderr, "FakeFileOps: a second fake while one is installed\n");
    std::abort();
  }
  g_saved = g_FileOpsSeam;
  g_current = this;
  g_FileOpsSeam = FileOpsSeam{TOpen,     TOpenat,    TRead,     TWrite,     TClose,
                              TStat,     TLstat,     TFstat,    TFstatat,   TOpendir,
                              TFdopendir, TReaddir,  TClosedir, TMkdir,     TMkdirat,
                              TUnlinkat, TUtimensat, TSyncfs,   TCopyFileRange,
                              TPread,    TLseek};
}

FakeFileOps::~FakeFileOps() {
  g_FileOpsSeam = g_saved;
  g_current = nullptr;
}

FakeFileOps* FakeFileOps::Current() { return g_current; }

void FakeFileOps::Add(const Rule& rule) {
  std::lock_guard<std::mutex> lock(mutex_);
  rules_.push_back(rule);
}

void FakeFileOps::Fail(Call call, int err, const std::string& pattern, int nth) {
  Rule r{kFail, call, pattern, nth};
  r.err = err;
  Add(r);
}

void FakeFileOps::ShortRead(size_t maxBytes, const std::string& pattern, int nth) {
  Rule r{kShortRead, kRead, pattern, nth};
  r.maxBytes = maxBytes;
  Add(r);
}

void FakeFileOps::ShortWrite(size_t maxBytes, const std::string& pattern, int nth) {
  Rule r{kShortWrite, kWrite, pattern, nth};
  r.maxBytes = maxBytes;
  Add(r);
}

void FakeFileOps::Delay(Call call, int milliseconds, const std::string& pattern, int nth) {
  Rule r{kDelay, call, pattern, nth};
  r.milliseconds = milliseconds;
  Add(r);
}

void FakeFileOps::SetDevice(const std::string& pattern, dev_t device) {
  std::lock_guard<std::mutex> lock(mutex_);
  devices_.emplace_back(pattern, device);
}

void FakeFileOps::ClearRules() {
  std::lock_guard<std::mutex> lock(mutex_);
  rules_.clear();
  devices_.clear();
}

int FakeFileOps::Count(Call call) const {
  std::lock_guard<std::mutex> lock(mutex_);
  return counts_[call];
}

std::vector<std::string> FakeFileOps::Calls() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return calls_;
}

void FakeFileOps::ClearCalls() {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.clear();
  for (int& c : counts_) c = 0;
}

int FakeFileOps::OpenFolders() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(dirs_.size());
}

int FakeFileOps::OpenDescriptors() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(fds_.size());
}

int FakeFileOps::Before(Call call, const std::string& path, size_t* count) {
  // The rules are looked at under the lock; delays are summed and slept
  // after it is released, before the call fails or goes on.
  long sleepMs = 0;
  int failWith = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    counts_[call]++;
    calls_.push_back(std::string(CallName(call)) + " " + path);
    for (Rule& r : rules_) {
      // Short reads also apply to pread and to copy_file_range's source
      // side.
      const bool callMatches =
          r.call == call ||
          (r.type == kShortRead && (call == kCopyFileRange || call == kPread));
      if (!callMatches || !Matches(r.pattern, path)) continue;
      r.seen++;
      if (r.nth != 0 && r.seen != r.nth) continue;
      if (r.type == kDelay) {
        sleepMs += r.milliseconds;
      } else if (r.type == kFail) {
        // The first failure wins; the rules after it still count the call,
        // so that "the 2nd" and "the 3rd" call each mean what they say.
        if (failWith == 0) failWith = r.err;
      } else if (count != nullptr && *count > r.maxBytes) {
        *count = r.maxBytes;
      }
    }
  }
  if (sleepMs > 0) {
    struct timespec t = {sleepMs / 1000, (sleepMs % 1000) * 1000000L};
    while (nanosleep(&t, &t) != 0 && errno == EINTR) {
    }
  }
  if (failWith != 0) {
    errno = failWith;
    return -1;
  }
  return 0;
}

void FakeFileOps::AfterStat(const std::string& path, struct stat64* out) {
  std::lock_guard<std::mutex> lock(mutex_);
  for (const auto& d : devices_)
    if (Matches(d.first, path)) out->st_dev = d.second;
}

void FakeFileOps::Opened(int fd, const std::string& path) {
  std::lock_guard<std::mutex> lock(mutex_);
  fds_[fd] = path;
}
void FakeFileOps::Closed(int fd) {
  std::lock_guard<std::mutex> lock(mutex_);
  fds_.erase(fd);
}
void FakeFileOps::OpenedFolder(void* dir, const std::string& path) {
  std::lock_guard<std::mutex> lock(mutex_);
  dirs_[dir] = path;
}
void FakeFileOps::ClosedFolder(void* dir) {
  std::lock_guard<std::mutex> lock(mutex_);
  dirs_.erase(dir);
}

std::string FakeFileOps::PathOf(int fd) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = fds_.find(fd);
  return it == fds_.end() ? std::string() : it->second;
}

std::string FakeFileOps::FolderPath(void* dir) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = dirs_.find(dir);
  return it == dirs_.end() ? std::string() : it->second;
}

std::string FakeFileOps::AtPath(int dirFd, const char* path) const {
  const std::string p = S(path);
  if (dirFd == AT_FDCWD || (!p.empty() && p[0] == '/')) return p;
  const std::string base = PathOf(dirFd);
  if (base.empty()) return p;
  return base.back() == '/' ? base + p : base + "/" + p;
}

}  // namespace vt
