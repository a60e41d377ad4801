// The fault rules of the test file system (tests/faultfs/faultfs.cpp): their
// text format, the parser, and the decisions each file operation asks for.
// The launcher (faultfs_mount.h) uses the same parser to check rules before
// it hands them over.
//
// Rules text: one rule per line; blank lines and lines starting with '#' are
// ignored. A rule is
//   <glob> <action> [arguments...] [times N]
// <glob> is matched with fnmatch(3), without FNM_PATHNAME (so '*' also
// matches '/'), against the path relative to the mount root, without a
// leading '/': "dir/file.bin". It holds no white space (write '?' for a
// space); its bytes are taken as they are, so a name that is not valid UTF-8
// is matched by writing its bytes. Sizes and offsets are decimal byte counts
// with an optional binary suffix K, M or G (1K = 1024). Every rule whose glob
// matches applies; rules are independent of each other.
//
// Read side (every read request that reaches the file system; the mount
// disables the kernel page cache, so an application's read always arrives):
//   <glob> read-eio <from>-<to> [times N]
//       a read whose byte range overlaps [from, to) fails with EIO; <to> may
//       be left out ("0-") for "to the end of the file". With "times N" only
//       the first N such reads fail (counted over all matching files), later
//       ones succeed: a retry overcomes the fault.
//   <glob> read-sleep <seconds> [at <offset>] [times N]
//       a read sleeps <seconds> (fractions allowed: 0.5) before it is served;
//       with "at", only a read whose range contains <offset>. The sleep holds
//       no lock: other requests are served meanwhile. An interrupted request
//       (the reader got a signal) or an unmount ends the sleep early.
//   <glob> read-short <bytes> [times N]
//       a read of more than <bytes> bytes returns only <bytes> (a short
//       read; the rest of the file is still there for the next read).
//
// Size and existence changes, applied once, at a trigger:
//   <glob> shrink-after-count <newsize> [at open N | at getattr N]
//       the backing file is truncated to <newsize> bytes.
//   <glob> grow-after-count <bytes> [at open N | at getattr N]
//       <bytes> bytes are appended to the backing file; the byte at file
//       offset o is GrowByte(o) ('A' + o % 26).
//   <glob> vanish-after-count [at open N | at getattr N]
//       the backing file is removed; the triggering request fails with ENOENT.
//   The trigger "at open N" (the default is "at open 1") applies the change
//   at the Nth open of a matching path, before that open is served: a folder
//   walk that only stats the file sees the old state, the copy that opens it
//   sees the new one. "at getattr N" applies it at the Nth getattr call of
//   that path (the kernel asks once per lookup and once per stat, so one
//   stat(2) may count twice).
//
// Write side (bytes counted over all files that match the rule, as a volume
// that fills up):
//   <glob> write-enospc-after <bytes>
//   <glob> write-eio-after <bytes>
//       once <bytes> bytes have been written, writes fail with ENOSPC (EIO).
//       A write that crosses the limit writes the part below it and returns
//       that short count; the next write gets the error.
//
// Other operations:
//   <glob> <op>-error <ERRNO> [times N]
//       the operation fails with that error (a name such as EACCES, EIO,
//       EINVAL, EROFS, ENOENT, or a number); <op> is one of open, create,
//       mkdir, unlink, rmdir, rename (matched on the source path), truncate,
//       utimens, fsync, flush (the close(2) of a file).
//   <glob> statfs-free <bytes>
//       statfs reports at most <bytes> free (the glob is not used; write '*').
#pragma once

#include <stdint.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vt {
namespace faultfs {

enum class Action {
  ReadEio,
  ReadSleep,
  ReadShort,
  Shrink,
  Grow,
  Vanish,
  WriteEnospcAfter,
  WriteEioAfter,
  OpError,
  StatfsFree,
};

enum class Trigger { Open, Getattr };

// File operations named by "<op>-error" rules and asked about by OpFault.
enum class Op { Open, Create, Mkdir, Unlink, Rmdir, Rename, Truncate, Utimens, Fsync, Flush };

const uint64_t kNoEnd = UINT64_MAX;

struct Rule {
  int line = 0;
  std::string glob;
  Action action = Action::ReadEio;
  uint64_t from = 0, to = kNoEnd;  // read-eio range; read-sleep "at" (from, with hasAt)
  bool hasAt = false;
  double seconds = 0;              // read-sleep
  uint64_t bytes = 0;              // read-short, shrink/grow size, write limits, statfs-free
  Trigger trigger = Trigger::Open;
  uint64_t triggerCount = 1;
  Op op = Op::Open;
  int error = 0;                   // op-error
  uint64_t times = 0;              // 0: always

  // State, under the Rules mutex.
  uint64_t hits = 0;               // faults injected (for "times")
  uint64_t events = 0;             // triggers seen
  bool spent = false;              // a size change or vanish was applied
  uint64_t written = 0;            // bytes counted by a write limit
};

// Parses rules text; on error returns false and sets *error to
// "line N: what is wrong".
bool ParseRules(const std::string& text, std::vector<Rule>* rules, std::string* error);

// The byte that grow-after-count appends at file offset o.
inline char GrowByte(uint64_t o) { return static_cast<char>('A' + o % 26); }

// What a read request [offset, offset + size) of a path meets.
struct ReadFault {
  double sleepSeconds = 0;
  int error = 0;          // EIO, or 0
  uint64_t maxBytes = 0;  // 0: no limit
};

// A pending change of a file (shrink, grow, vanish) that a trigger released.
struct Change {
  Action action;
  uint64_t bytes;
};

// The rule set of a running file system, safe to use from several threads.
// Every call takes the mutex only for the bookkeeping, never while a request
// sleeps or does I/O.
class Rules {
 public:
  void Replace(std::vector<Rule> rules);
  ReadFault OnRead(const std::string& path, uint64_t offset, uint64_t size);
  // How many bytes of `size` may be written, and the error once none may
  // (*error set only when the result is 0).
  uint64_t OnWrite(const std::string& path, uint64_t size, int* error);
  // The changes a trigger of this path releases now.
  std::vector<Change> OnTrigger(const std::string& path, Trigger trigger);
  int OpFault(const std::string& path, Op op);
  // The free bytes statfs may report at most; kNoEnd without a rule.
  uint64_t StatfsFree();

 private:
  std::mutex mutex_;
  std::vector<Rule> rules_;
};

}  // namespace faultfs
}  // namespace vt
