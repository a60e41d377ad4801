// Captures what a piece of code writes to standard output (file descriptor
// 1), through a temporary file. Needs nothing but the C library, so every
// test program can use it.
#pragma once

#include <stdio.h>
#include <unistd.h>

#include <string>

namespace vt {

class StdoutCapture {
 public:
  // fd 2 captures standard error instead (the toolkit's warnings go there).
  explicit StdoutCapture(int fd = 1) : fd_(fd) {
    fflush(stdout);
    fflush(stderr);
    file_ = tmpfile();
    saved_ = dup(fd_);
    dup2(fileno(file_), fd_);
  }
  ~StdoutCapture() { Stop(); }
  StdoutCapture(const StdoutCapture&) = delete;
  StdoutCapture& operator=(const StdoutCapture&) = delete;

  // Restores standard output and returns what was written meanwhile.
  std::string Stop() {
    if (saved_ < 0) return text_;
    fflush(stdout);
    fflush(stderr);
    dup2(saved_, fd_);
    close(saved_);
    saved_ = -1;
    rewind(file_);
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), file_)) > 0) text_.append(buf, n);
    fclose(file_);
    return text_;
  }

 private:
  int fd_ = 1;
  FILE* file_ = nullptr;
  int saved_ = -1;
  std::string text_;
};

// What f writes to standard output.
template <typename F>
std::string CaptureStdout(F f) {
  StdoutCapture capture;
  f();
  return capture.Stop();
}

}  // namespace vt
