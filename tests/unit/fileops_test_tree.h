// A scratch folder under /tmp for the file-operations tests, removed with
// everything in it when the test ends.
#pragma once

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "common/test_support.h"

namespace vt {

class ScratchTree {
 public:
  ScratchTree() {
    char name[] = "/tmp/vantori-fileops.XXXXXX";
    const char* made = mkdtemp(name);
    EXPECT_NE(made, nullptr);
    root_ = made != nullptr ? made : "/nonexistent";
  }
  ~ScratchTree() {
    // Read-only folders left by a test must not keep their contents.
    nftw(root_.c_str(), [](const char* p, const struct stat* s, int type, struct FTW*) {
      if (type == FTW_D || type == FTW_DNR) chmod(p, 0755);
      (void)s;
      return 0;
    }, 16, FTW_PHYS);
    nftw(root_.c_str(), [](const char* p, const struct stat*, int, struct FTW*) {
      return remove(p);
    }, 16, FTW_DEPTH | FTW_PHYS);
  }
  const std::string& Root() const { return root_; }
  std::string Path(const std::string& rel) const { return root_ + "/" + rel; }
  void Folder(const std::string& rel) const { mkdir(Path(rel).c_str(), 0755); }
  void File(const std::string& rel, size_t bytes) const {
    WriteFile(Path(rel), std::string(bytes, 'x'));
  }
  void Link(const std::string& target, const std::string& rel) const {
    EXPECT_EQ(symlink(target.c_str(), Path(rel).c_str()), 0) << rel;
  }

 private:
  std::string root_;
};

// The names of a folder in the order the system gives them.
inline std::vector<std::string> DirectoryOrder(const std::string& folder) {
  std::vector<std::string> names;
  DIR* d = opendir(folder.c_str());
  while (struct dirent* e = readdir(d)) {
    std::string n = e->d_name;
    if (n != "." && n != "..") names.push_back(n);
  }
  closedir(d);
  return names;
}

// True when something (a link included, not followed) is at path.
inline bool Exists(const std::string& path) {
  struct stat64 st;
  return lstat64(path.c_str(), &st) == 0;
}

// How many entries lie below root (links not followed, root not counted).
inline int CountBelow(const std::string& root) {
  static int counted;
  counted = 0;
  nftw(root.c_str(), [](const char*, const struct stat*, int, struct FTW*) {
    ++counted;
    return 0;
  }, 8, FTW_PHYS);
  return counted - 1;
}

}  // namespace vt
