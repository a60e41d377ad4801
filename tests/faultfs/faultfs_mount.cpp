// Starts and stops the test fault file system; see faultfs_mount.h.
#include "faultfs_mount.h"

#include <ctype.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "faultfs_rules.h"

#ifndef VANTORI_FAULTFS_PATH
#define VANTORI_FAULTFS_PATH ""
#endif

extern char** environ;

namespace vt {

namespace {

const int kMountTimeoutMs = 10000;
// After the unmount the server ends by itself at once; an application that
// still holds a file open keeps the connection, so the server is told to
// stop after a short wait.
const int kEndTimeoutMs = 1000;
const int kStopTimeoutMs = 5000;

void SleepMs(int ms) {
  struct timespec ts = {ms / 1000, (ms % 1000) * 1000000L};
  nanosleep(&ts, nullptr);
}

std::string ReadWhole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// /proc/self/mountinfo writes space, tab, newline and backslash as \ooo.
std::string Unescape(const std::string& s) {
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '\\' && i + 3 < s.size() && isdigit(static_cast<unsigned char>(s[i + 1]))) {
      out += static_cast<char>(strtol(s.substr(i + 1, 3).c_str(), nullptr, 8));
      i += 3;
    } else {
      out += s[i];
    }
  }
  return out;
}

// Waits up to timeoutMs for the child; true when it was reaped.
bool Reap(pid_t pid, int timeoutMs, int* status) {
  for (int waited = 0;; waited += 20) {
    pid_t r = waitpid(pid, status, WNOHANG);
    if (r == pid || (r < 0 && errno == ECHILD)) return true;
    if (waited >= timeoutMs) return false;
    SleepMs(20);
  }
}

}  // namespace

bool FaultFs::IsFaultFsMountedAt(const std::string& path) {
  char real[PATH_MAX];
  // A mount whose server is gone cannot be resolved: its path as given then.
  if (!realpath(path.c_str(), real)) snprintf(real, sizeof real, "%s", path.c_str());
  std::ifstream in("/proc/self/mountinfo");
  std::string line;
  while (std::getline(in, line)) {
    // id parent major:minor root mount-point options [optional...] - type source super
    std::istringstream words(line);
    std::vector<std::string> w;
    std::string word;
    while (words >> word) w.push_back(word);
    if (w.size() < 7) continue;
    size_t dash = 6;
    while (dash < w.size() && w[dash] != "-") ++dash;
    if (dash + 1 >= w.size()) continue;
    if (Unescape(w[4]) == std::string(real) && w[dash + 1] == "fuse.faultfs") return true;
  }
  return false;
}

FaultFs::FaultFs(const std::string& backingDir, const std::string& mountPoint, const std::string& rulesText)
    : mountPoint_(mountPoint) {
  const std::string binary = VANTORI_FAULTFS_PATH;
  if (binary.empty()) {
    error_ = "the fault file system was not built: libfuse3 (pkg-config fuse3) was not found when the "
             "build was configured; install libfuse3-dev and fuse3 (./dev.sh does) and configure again";
    return;
  }
  if (access(binary.c_str(), X_OK) != 0) {
    error_ = "the fault file system program " + binary + " is missing: " + strerror(errno);
    return;
  }
  struct stat st;
  if (stat(mountPoint.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    error_ = "the mount point " + mountPoint + " is not a folder";
    return;
  }
  const char* tmp = getenv("TMPDIR");
  std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/vantori-faultfs-XXXXXX";
  std::vector<char> buf(templ.begin(), templ.end());
  buf.push_back('\0');
  if (!mkdtemp(buf.data())) {
    error_ = "cannot create a folder for the rules: " + std::string(strerror(errno));
    return;
  }
  workDir_ = buf.data();
  if (!WriteRules(rulesText)) return;

  const std::string rules = workDir_ + "/rules";
  const std::string log = workDir_ + "/log";
  const std::string parent = std::to_string(getpid());
  std::vector<std::string> args = {binary, "--rules", rules, "--parent", parent, backingDir, mountPoint};
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  int rc = posix_spawn(&pid_, binary.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) {
    pid_ = -1;
    error_ = "cannot start " + binary + ": " + strerror(rc);
    return;
  }
  for (int waited = 0; waited < kMountTimeoutMs; waited += 20) {
    if (IsFaultFsMountedAt(mountPoint)) {
      mounted_ = true;
      return;
    }
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      error_ = "the fault file system ended before it was mounted (exit status " +
               std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)) +
               "); its output: " + Log();
      return;
    }
    SleepMs(20);
  }
  error_ = "the fault file system was not mounted on " + mountPoint + " within " +
           std::to_string(kMountTimeoutMs / 1000) + " s; its output: " + Log();
  Unmount();
}

FaultFs::~FaultFs() {
  Unmount();
  if (!workDir_.empty()) {
    unlink((workDir_ + "/rules").c_str());
    unlink((workDir_ + "/rules.new").c_str());
    unlink((workDir_ + "/log").c_str());
    rmdir(workDir_.c_str());
  }
}

void FaultFs::Unmount() {
  // Also when the server died (the mount then answers ENOTCONN and is no
  // longer recognised by its path).
  if (mounted_ && umount2(mountPoint_.c_str(), MNT_DETACH) != 0 && errno == EPERM) {
    // Not root: the setuid helper unmounts.
    pid_t helper = -1;
    std::vector<std::string> args = {"fusermount3", "-u", "-z", mountPoint_};
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(&a[0]);
    argv.push_back(nullptr);
    int status = 0;
    if (posix_spawnp(&helper, "fusermount3", nullptr, nullptr, argv.data(), environ) == 0) {
      Reap(helper, kStopTimeoutMs, &status);
    }
  }
  mounted_ = false;
  if (pid_ <= 0) return;
  int status = 0;
  if (!Reap(pid_, kEndTimeoutMs, &status)) {
    kill(pid_, SIGTERM);
    if (!Reap(pid_, kStopTimeoutMs, &status)) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
    }
  }
  pid_ = -1;
}

bool FaultFs::WriteRules(const std::string& rulesText) {
  std::vector<faultfs::Rule> rules;
  std::string why;
  if (!faultfs::ParseRules(rulesText, &rules, &why)) {
    error_ = "fault rules: " + why;
    return false;
  }
  // A new file renamed over the old one: the server sees another inode and
  // never reads a half-written file.
  const std::string tmp = workDir_ + "/rules.new";
  FILE* f = fopen(tmp.c_str(), "wb");
  if (!f || fwrite(rulesText.data(), 1, rulesText.size(), f) != rulesText.size() || fclose(f) != 0) {
    error_ = "cannot write the rules file " + tmp;
    return false;
  }
  if (rename(tmp.c_str(), (workDir_ + "/rules").c_str()) != 0) {
    error_ = "cannot replace the rules file: " + std::string(strerror(errno));
    return false;
  }
  return true;
}

bool FaultFs::SetRules(const std::string& rulesText) {
  if (workDir_.empty()) {
    if (error_.empty()) error_ = "the fault file system is not running";
    return false;
  }
  error_.clear();
  return WriteRules(rulesText);
}

std::string FaultFs::Log() const {
  return workDir_.empty() ? std::string() : ReadWhole(workDir_ + "/log");
}

bool FaultFs::WaitForLog(const std::string& text, int timeoutMs) const {
  for (int waited = 0;; waited += 10) {
    if (Log().find(text) != std::string::npos) return true;
    if (waited >= timeoutMs) return false;
    SleepMs(10);
  }
}

}  // namespace vt
