// Starts the test fault file system (tests/faultfs/faultfs.cpp) over a
// backing folder, and stops it again. Typical use in a test that runs in a
// private mount namespace (tests/run-in-mntns.sh):
//   vt::FaultFs fs(backingDir, mountPoint, "data.bin read-eio 4096-8192\n");
//   ASSERT_TRUE(fs.IsMounted()) << fs.Error();
//   ... read mountPoint + "/data.bin" ...
//   fs.SetRules("data.bin read-short 100\n");   // in force for the next request
// The destructor unmounts (a lazy unmount: an open file does not keep it) and
// waits for the server process. The rules format is described in
// faultfs_rules.h.
#pragma once

#include <sys/types.h>

#include <string>

namespace vt {

class FaultFs {
 public:
  FaultFs(const std::string& backingDir, const std::string& mountPoint, const std::string& rulesText = "");
  ~FaultFs();
  FaultFs(const FaultFs&) = delete;
  FaultFs& operator=(const FaultFs&) = delete;

  bool IsMounted() const { return mounted_; }
  // Why the mount or the last SetRules failed, in words; empty when not.
  const std::string& Error() const { return error_; }
  const std::string& MountPoint() const { return mountPoint_; }

  // Replaces the rules (fresh counters); false, with Error(), when the text
  // does not parse (the rules in force then stay).
  bool SetRules(const std::string& rulesText);
  // What the server wrote to its standard error: loaded rules, injected
  // faults ("read of data.bin at 4096 size 4096: injected EIO"), sleeps.
  std::string Log() const;
  // Waits until Log() holds `text` (true) or `timeoutMs` passed (false).
  bool WaitForLog(const std::string& text, int timeoutMs) const;

  // Unmounts and waits for the server; the destructor does it too.
  void Unmount();

  // Whether a fault file system is mounted at `path` (an entry of type
  // fuse.faultfs in /proc/self/mountinfo).
  static bool IsFaultFsMountedAt(const std::string& path);

 private:
  bool WriteRules(const std::string& rulesText);

  std::string mountPoint_;
  std::string workDir_;  // the rules file and the server's log
  std::string error_;
  pid_t pid_ = -1;
  bool mounted_ = false;
};

}  // namespace vt
