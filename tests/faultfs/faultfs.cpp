// faultfs: a FUSE file system for tests that serves a backing folder as it is
// (passthrough) and injects faults named in a rules file: read errors at byte
// ranges (always or the first N times), reads that sleep, short reads, files
// that shrink, grow or vanish after they were counted, and on the write side
// ENOSPC or EIO after N bytes. Names are passed through as bytes, so a name
// that is not valid UTF-8 in the backing folder is served as it is.
//
// Usage:
//   faultfs --rules <rules-file> [--parent <pid>] [--debug] <backing-dir> <mount-point>
// It stays in the foreground, serves with several threads (a sleeping read
// does not hold up requests to other files) and ends when the mount point is
// unmounted (umount2, fusermount3 -u), on SIGTERM/SIGINT, or, with --parent,
// when that process is gone (it then detaches its mount).
//
// The rules file is read again whenever it changed (another inode, size or
// modification time: write a new file and rename it over the old one); the
// new rules start with fresh counters. A rules file that does not parse at
// start is an error (exit 2); one that does not parse later is reported on
// standard error and the rules in force stay. The format is described in
// faultfs_rules.h; in short, one rule per line:
//   <glob> read-eio <from>-<to> [times N]
//   <glob> read-sleep <seconds> [at <offset>] [times N]
//   <glob> read-short <bytes> [times N]
//   <glob> shrink-after-count <newsize> [at open N | at getattr N]
//   <glob> grow-after-count <bytes> [at open N | at getattr N]
//   <glob> vanish-after-count [at open N | at getattr N]
//   <glob> write-enospc-after <bytes>
//   <glob> write-eio-after <bytes>
//   <glob> <op>-error <ERRNO> [times N]      op: open create mkdir unlink rmdir
//                                            rename truncate utimens fsync flush
//   <glob> statfs-free <bytes>
//
// Mount options: the kernel page cache is off for every file (direct_io) and
// attributes and entries are never cached (attr_timeout=0, entry_timeout=0,
// negative_timeout=0), so each read reaches the rules and size changes are
// seen at once. As root the mount is made directly and allows other users.
#define FUSE_USE_VERSION 31

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <fuse.h>
#include <fuse_lowlevel.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "faultfs_rules.h"

namespace ff = vt::faultfs;

namespace {

int g_root = -1;               // the backing folder (O_PATH)
std::string g_rulesPath;
std::string g_mountPoint;
ff::Rules g_rules;
std::mutex g_rulesFileMutex;   // the check for a changed rules file
struct stat g_rulesStat;
std::atomic<bool> g_exiting{false};

// An open file: its descriptor and its path relative to the mount root (the
// rules match on it; the high-level library does not always give one).
struct OpenFile {
  int fd;
  std::string rel;
};

void Log(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
void Log(const char* fmt, ...) {
  char buf[1024];
  va_list ap;
  va_start(ap, fmt);
  vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  fprintf(stderr, "faultfs: %s\n", buf);
  fflush(stderr);
}

bool ReadRulesFile(std::string* text) {
  FILE* f = fopen(g_rulesPath.c_str(), "rb");
  if (!f) return false;
  char buf[4096];
  size_t n;
  text->clear();
  while ((n = fread(buf, 1, sizeof buf, f)) > 0) text->append(buf, n);
  fclose(f);
  return true;
}

bool SameStat(const struct stat& a, const struct stat& b) {
  return a.st_ino == b.st_ino && a.st_dev == b.st_dev && a.st_size == b.st_size &&
         a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// Loads the rules file when it changed since the last look.
void RefreshRules() {
  std::lock_guard<std::mutex> lock(g_rulesFileMutex);
  struct stat st;
  if (stat(g_rulesPath.c_str(), &st) != 0 || SameStat(st, g_rulesStat)) return;
  g_rulesStat = st;
  std::string text, error;
  std::vector<ff::Rule> rules;
  if (!ReadRulesFile(&text)) {
    Log("cannot read the rules file %s: %s", g_rulesPath.c_str(), strerror(errno));
    return;
  }
  if (!ff::ParseRules(text, &rules, &error)) {
    Log("rules file %s: %s; the rules in force stay", g_rulesPath.c_str(), error.c_str());
    return;
  }
  Log("rules loaded: %zu", rules.size());
  g_rules.Replace(std::move(rules));
}

// The path below the backing folder for a path of the mount ("/a/b" -> "a/b").
const char* Rel(const char* path) {
  while (*path == '/') ++path;
  return *path ? path : ".";
}

// The path the rules match ("" for the root).
std::string RulePath(const char* path) {
  while (*path == '/') ++path;
  return path;
}

OpenFile* Handle(struct fuse_file_info* fi) { return reinterpret_cast<OpenFile*>(fi->fh); }

// Applies the shrink, grow and vanish changes a trigger released; returns
// -ENOENT when the file vanished.
int ApplyTrigger(const std::string& rel, ff::Trigger trigger) {
  if (rel.empty()) return 0;
  int result = 0;
  for (const ff::Change& c : g_rules.OnTrigger(rel, trigger)) {
    if (c.action == ff::Action::Vanish) {
      if (unlinkat(g_root, rel.c_str(), 0) != 0) Log("vanish %s: %s", rel.c_str(), strerror(errno));
      Log("%s vanished", rel.c_str());
      result = -ENOENT;
      continue;
    }
    int fd = openat(g_root, rel.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
      Log("size change of %s: %s", rel.c_str(), strerror(errno));
      continue;
    }
    struct stat st;
    if (fstat(fd, &st) == 0) {
      if (c.action == ff::Action::Shrink) {
        if (ftruncate(fd, static_cast<off_t>(c.bytes)) != 0) Log("shrink %s: %s", rel.c_str(), strerror(errno));
        Log("%s shrunk from %lld to %llu bytes", rel.c_str(), static_cast<long long>(st.st_size),
            static_cast<unsigned long long>(c.bytes));
      } else {
        std::string extra(c.bytes, '\0');
        for (uint64_t i = 0; i < c.bytes; ++i) extra[i] = ff::GrowByte(st.st_size + i);
        if (pwrite(fd, extra.data(), extra.size(), st.st_size) != static_cast<ssize_t>(extra.size())) {
          Log("grow %s: %s", rel.c_str(), strerror(errno));
        }
        Log("%s grew by %llu bytes", rel.c_str(), static_cast<unsigned long long>(c.bytes));
      }
    }
    close(fd);
  }
  return result;
}

// The fault an operation meets (a negative errno) or 0.
int OpFault(const char* path, ff::Op op) {
  RefreshRules();
  int e = g_rules.OpFault(RulePath(path), op);
  if (e) Log("%s: injected error %d", RulePath(path).c_str(), e);
  return -e;
}

// Sleeps without any lock; an interrupted request or an unmount ends it early.
void FaultSleep(double seconds) {
  struct timespec start;
  clock_gettime(CLOCK_MONOTONIC, &start);
  for (;;) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    double done = (now.tv_sec - start.tv_sec) + (now.tv_nsec - start.tv_nsec) / 1e9;
    if (done >= seconds || g_exiting || fuse_interrupted()) return;
    struct fuse_context* ctx = fuse_get_context();
    if (ctx && ctx->fuse && fuse_session_exited(fuse_get_session(ctx->fuse))) return;
    double step = seconds - done < 0.02 ? seconds - done : 0.02;
    struct timespec ts = {0, static_cast<long>(step * 1e9)};
    nanosleep(&ts, nullptr);
  }
}

void* FsInit(struct fuse_conn_info* conn, struct fuse_config* cfg) {
  cfg->use_ino = 1;
  cfg->nullpath_ok = 1;
  cfg->hard_remove = 1;  // no .fuse_hidden files in the backing folder
  cfg->direct_io = 1;
  cfg->attr_timeout = 0;
  cfg->entry_timeout = 0;
  cfg->negative_timeout = 0;
  // One request at a time per direct read, in order: "times N" counts the
  // same way on every run.
  conn->want &= ~FUSE_CAP_ASYNC_DIO;
  conn->want &= ~FUSE_CAP_WRITEBACK_CACHE;
  return nullptr;
}

int FsGetattr(const char* path, struct stat* st, struct fuse_file_info* fi) {
  if (fi) return fstat(Handle(fi)->fd, st) == 0 ? 0 : -errno;
  RefreshRules();
  int r = ApplyTrigger(RulePath(path), ff::Trigger::Getattr);
  if (r) return r;
  return fstatat(g_root, Rel(path), st, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : -errno;
}

int FsReadlink(const char* path, char* buf, size_t size) {
  ssize_t n = readlinkat(g_root, Rel(path), buf, size - 1);
  if (n < 0) return -errno;
  buf[n] = '\0';
  return 0;
}

int FsOpendir(const char* path, struct fuse_file_info* fi) {
  int fd = openat(g_root, Rel(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return -errno;
  DIR* d = fdopendir(fd);
  if (!d) {
    int e = errno;
    close(fd);
    return -e;
  }
  fi->fh = reinterpret_cast<uint64_t>(d);
  return 0;
}

// The whole folder in one go (offset 0 for every entry: the library keeps
// the list for the kernel).
int FsReaddir(const char*, void* buf, fuse_fill_dir_t filler, off_t, struct fuse_file_info* fi,
              enum fuse_readdir_flags) {
  DIR* d = reinterpret_cast<DIR*>(fi->fh);
  rewinddir(d);
  while (struct dirent* e = readdir(d)) {
    struct stat st;
    memset(&st, 0, sizeof st);
    st.st_ino = e->d_ino;
    st.st_mode = static_cast<mode_t>(DTTOIF(e->d_type));
    if (filler(buf, e->d_name, &st, 0, static_cast<fuse_fill_dir_flags>(0))) break;
  }
  return 0;
}

int FsReleasedir(const char*, struct fuse_file_info* fi) {
  closedir(reinterpret_cast<DIR*>(fi->fh));
  return 0;
}

int FsMkdir(const char* path, mode_t mode) {
  if (int e = OpFault(path, ff::Op::Mkdir)) return e;
  return mkdirat(g_root, Rel(path), mode) == 0 ? 0 : -errno;
}

int FsUnlink(const char* path) {
  if (int e = OpFault(path, ff::Op::Unlink)) return e;
  return unlinkat(g_root, Rel(path), 0) == 0 ? 0 : -errno;
}

int FsRmdir(const char* path) {
  if (int e = OpFault(path, ff::Op::Rmdir)) return e;
  return unlinkat(g_root, Rel(path), AT_REMOVEDIR) == 0 ? 0 : -errno;
}

int FsSymlink(const char* target, const char* path) {
  return symlinkat(target, g_root, Rel(path)) == 0 ? 0 : -errno;
}

int FsRename(const char* from, const char* to, unsigned int flags) {
  if (int e = OpFault(from, ff::Op::Rename)) return e;
  return renameat2(g_root, Rel(from), g_root, Rel(to), flags) == 0 ? 0 : -errno;
}

int FsChmod(const char* path, mode_t mode, struct fuse_file_info* fi) {
  if (fi) return fchmod(Handle(fi)->fd, mode) == 0 ? 0 : -errno;
  return fchmodat(g_root, Rel(path), mode, 0) == 0 ? 0 : -errno;
}

int FsChown(const char* path, uid_t uid, gid_t gid, struct fuse_file_info* fi) {
  if (fi) return fchown(Handle(fi)->fd, uid, gid) == 0 ? 0 : -errno;
  return fchownat(g_root, Rel(path), uid, gid, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : -errno;
}

int FsTruncate(const char* path, off_t size, struct fuse_file_info* fi) {
  if (int e = OpFault(fi ? Handle(fi)->rel.c_str() : path, ff::Op::Truncate)) return e;
  if (fi) return ftruncate(Handle(fi)->fd, size) == 0 ? 0 : -errno;
  int fd = openat(g_root, Rel(path), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return -errno;
  int r = ftruncate(fd, size) == 0 ? 0 : -errno;
  close(fd);
  return r;
}

int FsUtimens(const char* path, const struct timespec ts[2], struct fuse_file_info* fi) {
  if (int e = OpFault(fi ? Handle(fi)->rel.c_str() : path, ff::Op::Utimens)) return e;
  if (fi) return futimens(Handle(fi)->fd, ts) == 0 ? 0 : -errno;
  return utimensat(g_root, Rel(path), ts, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : -errno;
}

int OpenCommon(const char* path, struct fuse_file_info* fi, int fd) {
  if (fd < 0) return -errno;
  fi->fh = reinterpret_cast<uint64_t>(new OpenFile{fd, RulePath(path)});
  fi->direct_io = 1;
  fi->keep_cache = 0;
  return 0;
}

int FsOpen(const char* path, struct fuse_file_info* fi) {
  if (int e = OpFault(path, ff::Op::Open)) return e;
  if (int e = ApplyTrigger(RulePath(path), ff::Trigger::Open)) return e;
  return OpenCommon(path, fi, openat(g_root, Rel(path), fi->flags | O_CLOEXEC));
}

int FsCreate(const char* path, mode_t mode, struct fuse_file_info* fi) {
  if (int e = OpFault(path, ff::Op::Create)) return e;
  return OpenCommon(path, fi, openat(g_root, Rel(path), fi->flags | O_CREAT | O_CLOEXEC, mode));
}

int FsRead(const char*, char* buf, size_t size, off_t offset, struct fuse_file_info* fi) {
  OpenFile* f = Handle(fi);
  RefreshRules();
  ff::ReadFault fault = g_rules.OnRead(f->rel, static_cast<uint64_t>(offset), size);
  if (fault.sleepSeconds > 0) {
    Log("read of %s at %lld sleeps %g s", f->rel.c_str(), static_cast<long long>(offset), fault.sleepSeconds);
    FaultSleep(fault.sleepSeconds);
    Log("read of %s at %lld woke up", f->rel.c_str(), static_cast<long long>(offset));
  }
  if (fault.error) {
    Log("read of %s at %lld size %zu: injected EIO", f->rel.c_str(), static_cast<long long>(offset), size);
    return -fault.error;
  }
  if (fault.maxBytes && fault.maxBytes < size) size = fault.maxBytes;
  ssize_t n = pread(f->fd, buf, size, offset);
  return n < 0 ? -errno : static_cast<int>(n);
}

int FsWrite(const char*, const char* buf, size_t size, off_t offset, struct fuse_file_info* fi) {
  OpenFile* f = Handle(fi);
  RefreshRules();
  int error = 0;
  uint64_t allowed = g_rules.OnWrite(f->rel, size, &error);
  if (allowed == 0 && size > 0) {
    Log("write of %s at %lld: injected error %d", f->rel.c_str(), static_cast<long long>(offset), error);
    return -error;
  }
  ssize_t n = pwrite(f->fd, buf, static_cast<size_t>(allowed), offset);
  return n < 0 ? -errno : static_cast<int>(n);
}

int FsStatfs(const char*, struct statvfs* st) {
  if (fstatvfs(g_root, st) != 0) return -errno;
  RefreshRules();
  uint64_t free = g_rules.StatfsFree();
  if (free != ff::kNoEnd && st->f_frsize > 0) {
    fsblkcnt_t blocks = static_cast<fsblkcnt_t>(free / st->f_frsize);
    if (blocks < st->f_bfree) st->f_bfree = blocks;
    if (blocks < st->f_bavail) st->f_bavail = blocks;
  }
  return 0;
}

int FsFlush(const char*, struct fuse_file_info* fi) {
  OpenFile* f = Handle(fi);
  if (int e = OpFault(f->rel.c_str(), ff::Op::Flush)) return e;
  // close() of a duplicate, as a close of the application's descriptor
  // would do on the backing file system.
  int dup = ::dup(f->fd);
  if (dup < 0) return -errno;
  return close(dup) == 0 ? 0 : -errno;
}

int FsRelease(const char*, struct fuse_file_info* fi) {
  OpenFile* f = Handle(fi);
  close(f->fd);
  delete f;
  return 0;
}

int FsFsync(const char*, int datasync, struct fuse_file_info* fi) {
  OpenFile* f = Handle(fi);
  if (int e = OpFault(f->rel.c_str(), ff::Op::Fsync)) return e;
  int r = datasync ? fdatasync(f->fd) : fsync(f->fd);
  return r == 0 ? 0 : -errno;
}

int FsFallocate(const char*, int mode, off_t offset, off_t length, struct fuse_file_info* fi) {
  return fallocate(Handle(fi)->fd, mode, offset, length) == 0 ? 0 : -errno;
}

// Ends the file system when the process that started it is gone, so that a
// test that crashed leaves no server behind.
void WatchParent(pid_t parent) {
  while (!g_exiting) {
    if (getppid() != parent) {
      Log("the starting process %d is gone; detaching %s", static_cast<int>(parent), g_mountPoint.c_str());
      g_exiting = true;
      umount2(g_mountPoint.c_str(), MNT_DETACH);
      _exit(3);
    }
    usleep(20 * 1000);
  }
}

int Usage() {
  fprintf(stderr,
          "usage: faultfs --rules <rules-file> [--parent <pid>] [--debug] <backing-dir> <mount-point>\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::string backing;
  pid_t parent = 0;
  bool debug = false;
  std::vector<std::string> positional;
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--rules" && i + 1 < argc) {
      g_rulesPath = argv[++i];
    } else if (a == "--parent" && i + 1 < argc) {
      parent = static_cast<pid_t>(atoi(argv[++i]));
    } else if (a == "--debug") {
      debug = true;
    } else if (!a.empty() && a[0] == '-') {
      return Usage();
    } else {
      positional.push_back(a);
    }
  }
  if (g_rulesPath.empty() || positional.size() != 2) return Usage();
  backing = positional[0];
  g_mountPoint = positional[1];

  // The rules must parse at start.
  std::string text, error;
  std::vector<ff::Rule> rules;
  if (!ReadRulesFile(&text)) {
    Log("cannot read the rules file %s: %s", g_rulesPath.c_str(), strerror(errno));
    return 2;
  }
  if (!ff::ParseRules(text, &rules, &error)) {
    Log("rules file %s: %s", g_rulesPath.c_str(), error.c_str());
    return 2;
  }
  stat(g_rulesPath.c_str(), &g_rulesStat);
  g_rules.Replace(std::move(rules));

  g_root = open(backing.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (g_root < 0) {
    Log("cannot open the backing folder %s: %s", backing.c_str(), strerror(errno));
    return 2;
  }

  struct fuse_operations ops;
  memset(&ops, 0, sizeof ops);
  ops.init = FsInit;
  ops.getattr = FsGetattr;
  ops.readlink = FsReadlink;
  ops.opendir = FsOpendir;
  ops.readdir = FsReaddir;
  ops.releasedir = FsReleasedir;
  ops.mkdir = FsMkdir;
  ops.unlink = FsUnlink;
  ops.rmdir = FsRmdir;
  ops.symlink = FsSymlink;
  ops.rename = FsRename;
  ops.chmod = FsChmod;
  ops.chown = FsChown;
  ops.truncate = FsTruncate;
  ops.utimens = FsUtimens;
  ops.open = FsOpen;
  ops.create = FsCreate;
  ops.read = FsRead;
  ops.write = FsWrite;
  ops.statfs = FsStatfs;
  ops.flush = FsFlush;
  ops.release = FsRelease;
  ops.fsync = FsFsync;
  ops.fallocate = FsFallocate;

  std::string opts = "fsname=faultfs,subtype=faultfs";
  if (geteuid() == 0) opts += ",allow_other";
  std::vector<std::string> args = {"faultfs", "-o", opts};
  if (debug) args.push_back("-d");
  std::vector<char*> argvFuse;
  for (std::string& a : args) argvFuse.push_back(&a[0]);
  struct fuse_args fargs = FUSE_ARGS_INIT(static_cast<int>(argvFuse.size()), argvFuse.data());

  struct fuse* fuse = fuse_new(&fargs, &ops, sizeof ops, nullptr);
  if (!fuse) {
    Log("fuse_new failed");
    return 1;
  }
  if (fuse_mount(fuse, g_mountPoint.c_str()) != 0) {
    Log("cannot mount on %s", g_mountPoint.c_str());
    fuse_destroy(fuse);
    return 1;
  }
  struct fuse_session* se = fuse_get_session(fuse);
  if (fuse_set_signal_handlers(se) != 0) {
    fuse_unmount(fuse);
    fuse_destroy(fuse);
    return 1;
  }
  std::thread watcher;
  if (parent > 0) watcher = std::thread(WatchParent, parent);
  Log("serving %s on %s", backing.c_str(), g_mountPoint.c_str());
  int rc = fuse_loop_mt(fuse, 0);
  g_exiting = true;
  if (watcher.joinable()) watcher.join();
  fuse_remove_signal_handlers(se);
  fuse_unmount(fuse);
  fuse_destroy(fuse);
  fuse_opt_free_args(&fargs);
  Log("stopped");
  return rc == 0 ? 0 : 1;
}
