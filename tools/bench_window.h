// What the benchmarks that drive real windows share: the toolkit started
// without its main loop, a shown owner window, a clock, the median of the
// rounds, and standard output sent to a file while a timed run prints its
// diagnostic lines. Included by exactly one source file of each benchmark.
#pragma once

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/init.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

class BenchApp : public wxApp {
 public:
  bool OnInit() override { return true; }
};
wxIMPLEMENT_APP_NO_MAIN(BenchApp);

namespace bench {

inline double Now() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

inline double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

// Starts the toolkit and shows an owner window titled `name`; null (after a
// message) when there is no display.
inline wxFrame* StartWindow(int& argc, char** argv, const char* name) {
  if (!wxEntryStart(argc, argv)) {
    fprintf(stderr, "%s: no display\n", name);
    return nullptr;
  }
  wxTheApp->CallOnInit();
  auto* owner = new wxFrame(nullptr, wxID_ANY, name, wxPoint(0, 0), wxSize(800, 600));
  owner->Show();
  wxYieldIfNeeded();
  return owner;
}

inline void EndWindow(wxFrame* owner) {
  owner->Destroy();
  wxTheApp->ProcessIdle();
  wxEntryCleanup();
}

// Standard output goes to `path` (created or truncated) while it lives.
class StdoutToFile {
 public:
  explicit StdoutToFile(const std::string& path) {
    fflush(stdout);
    saved_ = dup(1);
    const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    dup2(fd, 1);
    close(fd);
  }
  ~StdoutToFile() {
    fflush(stdout);
    dup2(saved_, 1);
    close(saved_);
  }
  StdoutToFile(const StdoutToFile&) = delete;
  StdoutToFile& operator=(const StdoutToFile&) = delete;

 private:
  int saved_;
};

}  // namespace bench
