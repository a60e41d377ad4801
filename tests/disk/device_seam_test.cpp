// Every system call of the disk layer goes through the device table: apart
// from the object that holds the default table, no object of the disk
// library refers to a system call itself.
#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <map>
#include <set>
#include <string>

#include "disk_test_util.h"

namespace {

// The disk library the test program was linked with: it lies in the build
// directory, one level above the test programs.
std::string DiskLibrary() {
  char exe[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", exe, sizeof(exe) - 1);
  if (n <= 0) return std::string();
  exe[n] = 0;
  std::string dir(exe);
  dir = dir.substr(0, dir.rfind('/'));
  return dir.substr(0, dir.rfind('/')) + "/libvantori_disk.a";
}

// Object file name -> the symbols it uses but does not define.
std::map<std::string, std::set<std::string>> UndefinedSymbols(const std::string& archive) {
  std::string out;
  dt::Run("nm -A -u '" + archive + "' 2>/dev/null", &out);
  std::map<std::string, std::set<std::string>> result;
  for (const std::string& line : dt::Lines(out)) {
    // archive:object:   U symbol
    size_t first = line.find(':');
    size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    std::string object = line.substr(first + 1, second - first - 1);
    size_t u = line.find(" U ", second);
    if (u == std::string::npos) continue;
    std::string symbol = line.substr(u + 3);
    size_t at = symbol.find('@');
    if (at != std::string::npos) symbol = symbol.substr(0, at);
    result[object].insert(symbol);
  }
  return result;
}

const char* const kSystemCalls[] = {
    "open",     "open64",  "__open_2", "__open64_2", "openat",   "openat64", "close",
    "ioctl",    "lseek",   "lseek64",  "read",       "__read_chk", "pread",  "pread64",
    "write",    "pwrite",  "pwrite64", "mount",      "umount",   "umount2",  "statfs",
    "statfs64", "mkdir",   "system",   "popen",      "fork",     "vfork",    "execl",
    "execv",    "execve",  "execvp",   "posix_spawn", "fopen",   "fopen64",  "opendir"};

TEST(DeviceSeam, OnlyTheDefaultTableCallsTheSystem) {
  std::string archive = DiskLibrary();
  ASSERT_EQ(access(archive.c_str(), R_OK), 0) << "disk library not found at " << archive;
  ASSERT_EQ(dt::Run("command -v nm >/dev/null 2>&1"), 0) << "nm (binutils) is not installed";
  std::map<std::string, std::set<std::string>> objects = UndefinedSymbols(archive);
  auto table = objects.find("DeviceSeamDefault.cpp.o");
  ASSERT_NE(table, objects.end()) << "no default device table in " << archive;
  // The listing works: the default table does refer to the real calls.
  for (const char* call : {"open64", "close", "ioctl", "lseek64", "read", "write", "mount",
                           "umount", "statfs64", "mkdir", "system"})
    EXPECT_EQ(table->second.count(call), 1u) << call;
  int others = 0;
  for (const auto& object : objects) {
    if (object.first == "DeviceSeamDefault.cpp.o") continue;
    ++others;
    for (const char* call : kSystemCalls)
      EXPECT_EQ(object.second.count(call), 0u) << object.first << " calls " << call;
  }
  EXPECT_GE(others, 4);
  // The layer's own system calls go through the table.
  for (const char* object : {"DiskDiscovery.cpp.o", "FileSystemDetect.cpp.o",
                             "View_Disk_Info.cpp.o"}) {
    auto it = objects.find(object);
    ASSERT_NE(it, objects.end()) << object;
    EXPECT_EQ(it->second.count("g_DeviceSeam"), 1u) << object;
  }
}

}  // namespace
