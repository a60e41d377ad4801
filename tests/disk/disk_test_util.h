// Small helpers of the disk layer tests.
#pragma once

#include "common/stdout_capture.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "fake_devices.h"

namespace dt {

// A temporary directory removed with everything in it.
class TempDir {
 public:
  TempDir() : path_(vt::MakeTempDir("vantori-disk-test-")) {}
  ~TempDir() { vt::RemoveTree(path_); }
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

using vt::StdoutCapture;

// Runs a shell command; returns its exit status and puts its standard output
// into out.
inline int Run(const std::string& command, std::string* out = nullptr) {
  FILE* p = popen(command.c_str(), "r");
  if (p == nullptr) return -1;
  std::string text;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof(buf), p)) > 0) text.append(buf, n);
  int status = pclose(p);
  if (out != nullptr) *out = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

inline std::vector<std::string> Split(const std::string& line, char sep) {
  std::vector<std::string> out;
  size_t start = 0;
  while (true) {
    size_t end = line.find(sep, start);
    out.push_back(line.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return out;
}

}  // namespace dt
