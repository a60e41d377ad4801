// Files for the tests of the fault file system: seeded contents that differ
// from file to file, written with plain system calls.
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace faultfs_test {

// Seeded bytes that differ from file to file.
inline std::string Pattern(size_t size, unsigned seed) {
  std::mt19937 gen(seed);
  std::string s(size, '\0');
  for (char& c : s) c = static_cast<char>(gen() >> 24);
  return s;
}

inline void WriteFile(const std::string& path, const std::string& data) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  ASSERT_GE(fd, 0) << path << ": " << strerror(errno);
  ASSERT_EQ(static_cast<ssize_t>(data.size()), write(fd, data.data(), data.size())) << path;
  close(fd);
}

}  // namespace faultfs_test
