// The file-operations test double on its own: calls go through to the real
// ones, and each kind of rule (failure, short read and write, delay, other
// device) applies to the calls, paths and turns it names and to no others.
#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <time.h>

#include <atomic>
#include <thread>
#include <vector>

#include "common/fake_fileops.h"
#include "fileops/FileOpsSeam.h"
#include "fileops_test_tree.h"

namespace {

using vt::FakeFileOps;

double NowMs() {
  struct timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return t.tv_sec * 1000.0 + t.tv_nsec / 1e6;
}

TEST(FakeFileOps, InstallsItselfAndPutsTheRealTableBack) {
  const FileOpsSeam before = g_FileOpsSeam;
  {
    FakeFileOps fake;
    EXPECT_EQ(FakeFileOps::Current(), &fake);
    EXPECT_NE(g_FileOpsSeam.Open, before.Open);
    EXPECT_NE(g_FileOpsSeam.Readdir, before.Readdir);
  }
  EXPECT_EQ(FakeFileOps::Current(), nullptr);
  EXPECT_EQ(g_FileOpsSeam.Open, before.Open);
  EXPECT_EQ(g_FileOpsSeam.CopyFileRange, before.CopyFileRange);
}

TEST(FakeFileOps, PassesCallsThroughAndRecordsThem) {
  vt::ScratchTree t;
  t.File("a.txt", 5);
  FakeFileOps fake;
  struct stat64 st;
  ASSERT_EQ(g_FileOpsSeam.Stat(t.Path("a.txt").c_str(), &st), 0);
  EXPECT_EQ(st.st_size, 5);
  const int fd = g_FileOpsSeam.Open(t.Path("a.txt").c_str(), O_RDONLY, 0);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(fake.OpenDescriptors(), 1);
  EXPECT_EQ(fake.PathOf(fd), t.Path("a.txt"));
  char buf[16];
  EXPECT_EQ(g_FileOpsSeam.Read(fd, buf, sizeof buf), 5);
  EXPECT_EQ(g_FileOpsSeam.Close(fd), 0);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
  DIR* d = g_FileOpsSeam.Opendir(t.Root().c_str());
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(fake.OpenFolders(), 1);
  int names = 0;
  while (g_FileOpsSeam.Readdir(d) != nullptr) ++names;
  EXPECT_EQ(names, 3);  // ".", ".." and a.txt
  EXPECT_EQ(g_FileOpsSeam.Closedir(d), 0);
  EXPECT_EQ(fake.OpenFolders(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kReaddir), 4);
  ASSERT_GE(fake.Calls().size(), 4u);
  EXPECT_EQ(fake.Calls()[0], "stat " + t.Path("a.txt"));
  EXPECT_EQ(fake.Calls()[1], "open " + t.Path("a.txt"));
  EXPECT_EQ(fake.Calls()[2], "read " + t.Path("a.txt"));
}

TEST(FakeFileOps, FailsAnyCallWithTheGivenErrnoOnlyForMatchingPaths) {
  vt::ScratchTree t;
  t.Folder("locked");
  t.Folder("open");
  t.File("open/f", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kOpendir, EACCES, "*/locked");
  fake.Fail(FakeFileOps::kUnlinkat, EROFS);
  fake.Fail(FakeFileOps::kMkdir, ENOSPC, "*/new*");
  fake.Fail(FakeFileOps::kSyncfs, EIO);
  errno = 0;
  EXPECT_EQ(g_FileOpsSeam.Opendir(t.Path("locked").c_str()), nullptr);
  EXPECT_EQ(errno, EACCES);
  DIR* d = g_FileOpsSeam.Opendir(t.Path("open").c_str());
  ASSERT_NE(d, nullptr) << "another path is not touched";
  g_FileOpsSeam.Closedir(d);
  EXPECT_EQ(g_FileOpsSeam.Unlinkat(AT_FDCWD, t.Path("open/f").c_str(), 0), -1);
  EXPECT_EQ(errno, EROFS);
  EXPECT_EQ(access(t.Path("open/f").c_str(), F_OK), 0) << "a failed call does nothing";
  EXPECT_EQ(g_FileOpsSeam.Mkdir(t.Path("newdir").c_str(), 0755), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(g_FileOpsSeam.Mkdir(t.Path("other").c_str(), 0755), 0);
  const int fd = g_FileOpsSeam.Open(t.Root().c_str(), O_RDONLY | O_DIRECTORY, 0);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(g_FileOpsSeam.Syncfs(fd), -1);
  EXPECT_EQ(errno, EIO);
  g_FileOpsSeam.Close(fd);
}

TEST(FakeFileOps, FailsOnlyTheNthMatchingCall) {
  vt::ScratchTree t;
  t.File("a", 1);
  t.File("b", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kLstat, ENOENT, "*/b", 2);
  struct stat64 st;
  EXPECT_EQ(g_FileOpsSeam.Lstat(t.Path("a").c_str(), &st), 0) << "not counted: other path";
  EXPECT_EQ(g_FileOpsSeam.Lstat(t.Path("b").c_str(), &st), 0) << "1st";
  EXPECT_EQ(g_FileOpsSeam.Lstat(t.Path("b").c_str(), &st), -1) << "2nd";
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(g_FileOpsSeam.Lstat(t.Path("b").c_str(), &st), 0) << "3rd";
}

TEST(FakeFileOps, ReaddirCanFailPartWayThroughAFolder) {
  vt::ScratchTree t;
  t.File("a", 1);
  t.File("b", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kReaddir, EIO, "", 2);
  DIR* d = g_FileOpsSeam.Opendir(t.Root().c_str());
  ASSERT_NE(d, nullptr);
  EXPECT_NE(g_FileOpsSeam.Readdir(d), nullptr);
  errno = 0;
  EXPECT_EQ(g_FileOpsSeam.Readdir(d), nullptr);
  EXPECT_EQ(errno, EIO);
  g_FileOpsSeam.Closedir(d);
}

TEST(FakeFileOps, ShortReadsAndShortWrites) {
  vt::ScratchTree t;
  t.File("src", 1000);
  FakeFileOps fake;
  fake.ShortRead(100, "*/src");
  fake.ShortWrite(7, "*/dst", 1);
  const int in = g_FileOpsSeam.Open(t.Path("src").c_str(), O_RDONLY, 0);
  const int out = g_FileOpsSeam.Open(t.Path("dst").c_str(), O_WRONLY | O_CREAT, 0644);
  ASSERT_GE(in, 0);
  ASSERT_GE(out, 0);
  char buf[4096];
  EXPECT_EQ(g_FileOpsSeam.Read(in, buf, sizeof buf), 100);
  EXPECT_EQ(g_FileOpsSeam.Write(out, buf, 50), 7) << "first write short";
  EXPECT_EQ(g_FileOpsSeam.Write(out, buf, 50), 50) << "only the 1st";
  // copy_file_range: the source side is limited as a read.
  off64_t inOff = 0;
  EXPECT_EQ(g_FileOpsSeam.CopyFileRange(in, &inOff, out, nullptr, 1000, 0), 100);
  g_FileOpsSeam.Close(in);
  g_FileOpsSeam.Close(out);
  struct stat64 st;
  ASSERT_EQ(g_FileOpsSeam.Stat(t.Path("dst").c_str(), &st), 0);
  EXPECT_EQ(st.st_size, 7 + 50 + 100);
}

TEST(FakeFileOps, PositionedReadsHaveRulesOfTheirOwn) {
  vt::ScratchTree t;
  vt::WriteFile(t.Path("src"), "0123456789abcdef");
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kRead, EIO, "*/src");        // plain reads only
  fake.Fail(FakeFileOps::kPread, ENXIO, "*/src", 2);   // the 2nd pread only
  fake.Delay(FakeFileOps::kPread, 120, "*/src", 3);
  fake.Fail(FakeFileOps::kLseek, ESPIPE, "*/src", 2);
  const int in = g_FileOpsSeam.Open(t.Path("src").c_str(), O_RDONLY, 0);
  ASSERT_GE(in, 0);
  char buf[16] = {};
  errno = 0;
  EXPECT_EQ(g_FileOpsSeam.Read(in, buf, 4), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(g_FileOpsSeam.Pread(in, buf, 4, 10), 4) << "a read rule leaves pread alone";
  EXPECT_EQ(std::string(buf, 4), "abcd");
  errno = 0;
  EXPECT_EQ(g_FileOpsSeam.Pread(in, buf, 4, 10), -1);
  EXPECT_EQ(errno, ENXIO);
  const double t0 = NowMs();
  EXPECT_EQ(g_FileOpsSeam.Pread(in, buf, 8, 8), 8);
  EXPECT_GE(NowMs() - t0, 115) << "delayed";
  EXPECT_EQ(std::string(buf, 8), "89abcdef");
  EXPECT_EQ(g_FileOpsSeam.Lseek(in, 5, SEEK_SET), 5);
  errno = 0;
  EXPECT_EQ(g_FileOpsSeam.Lseek(in, 6, SEEK_SET), -1);
  EXPECT_EQ(errno, ESPIPE);

  // A short-read rule covers pread as it covers read.
  fake.ClearRules();
  fake.ShortRead(3, "*/src");
  EXPECT_EQ(g_FileOpsSeam.Pread(in, buf, 8, 2), 3);
  EXPECT_EQ(std::string(buf, 3), "234");
  EXPECT_EQ(g_FileOpsSeam.Read(in, buf, 8), 3) << "from the position the first lseek set";
  EXPECT_EQ(std::string(buf, 3), "567");
  g_FileOpsSeam.Close(in);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 4);
  EXPECT_EQ(fake.Count(FakeFileOps::kLseek), 2);
  EXPECT_EQ(fake.Calls()[3], "pread " + t.Path("src"));
  EXPECT_STREQ(FakeFileOps::CallName(FakeFileOps::kPread), "pread");
  EXPECT_STREQ(FakeFileOps::CallName(FakeFileOps::kLseek), "lseek");
}

TEST(FakeFileOps, EveryRuleCountsEveryMatchingCall) {
  vt::ScratchTree t;
  t.File("f", 10);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kPread, EIO, "*/f", 2);
  fake.Fail(FakeFileOps::kPread, ENXIO, "*/f", 3);
  fake.Fail(FakeFileOps::kPread, EBADF, "*/f", 3);  // the first of two wins
  const int fd = g_FileOpsSeam.Open(t.Path("f").c_str(), O_RDONLY, 0);
  ASSERT_GE(fd, 0);
  char buf[4];
  std::vector<int> results;
  for (int i = 0; i < 4; ++i) {
    errno = 0;
    results.push_back(g_FileOpsSeam.Pread(fd, buf, 4, 0) < 0 ? errno : 0);
  }
  g_FileOpsSeam.Close(fd);
  EXPECT_EQ(results, (std::vector<int>{0, EIO, ENXIO, 0}));
}

TEST(FakeFileOps, DelaysACall) {
  vt::ScratchTree t;
  FakeFileOps fake;
  fake.Delay(FakeFileOps::kOpendir, 120, "*/slow");
  t.Folder("slow");
  t.Folder("fast");
  double t0 = NowMs();
  DIR* d = g_FileOpsSeam.Opendir(t.Path("fast").c_str());
  ASSERT_NE(d, nullptr);
  g_FileOpsSeam.Closedir(d);
  EXPECT_LT(NowMs() - t0, 100);
  t0 = NowMs();
  d = g_FileOpsSeam.Opendir(t.Path("slow").c_str());
  ASSERT_NE(d, nullptr) << "a delayed call still runs";
  g_FileOpsSeam.Closedir(d);
  EXPECT_GE(NowMs() - t0, 115);
}

TEST(FakeFileOps, ReportsAnotherDeviceForMatchingPaths) {
  vt::ScratchTree t;
  t.Folder("mnt");
  t.File("mnt/x", 1);
  FakeFileOps fake;
  fake.SetDevice("*/mnt*", 4242);
  struct stat64 a, b, c;
  ASSERT_EQ(g_FileOpsSeam.Stat(t.Root().c_str(), &a), 0);
  ASSERT_EQ(g_FileOpsSeam.Lstat(t.Path("mnt").c_str(), &b), 0);
  ASSERT_EQ(g_FileOpsSeam.Fstatat(AT_FDCWD, t.Path("mnt/x").c_str(), &c, 0), 0);
  EXPECT_NE(a.st_dev, 4242u);
  EXPECT_EQ(b.st_dev, 4242u);
  EXPECT_EQ(c.st_dev, 4242u);
  fake.ClearRules();
  ASSERT_EQ(g_FileOpsSeam.Lstat(t.Path("mnt").c_str(), &b), 0);
  EXPECT_EQ(b.st_dev, a.st_dev);
}

TEST(FakeFileOps, AtCallsMatchTheFullPathBelowTheFolderDescriptor) {
  vt::ScratchTree t;
  t.Folder("d");
  t.File("d/keep", 1);
  t.File("d/gone", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kUnlinkat, EPERM, "*/d/keep");
  const int dir = g_FileOpsSeam.Open(t.Path("d").c_str(), O_RDONLY | O_DIRECTORY, 0);
  ASSERT_GE(dir, 0);
  EXPECT_EQ(g_FileOpsSeam.Unlinkat(dir, "keep", 0), -1);
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(g_FileOpsSeam.Unlinkat(dir, "gone", 0), 0);
  EXPECT_EQ(fake.Calls().back(), "unlinkat " + t.Path("d/gone"));
  g_FileOpsSeam.Close(dir);
}

TEST(FakeFileOps, TakesCallsFromSeveralThreadsAtOnce) {
  // Four threads open, read, stat and close at the same time while a fifth
  // sleeps in a delayed call: no call is lost from the counts or the
  // record, and the sleeper holds nobody up.
  vt::ScratchTree t;
  t.File("a", 10);
  t.File("slow", 10);
  FakeFileOps fake;
  fake.Delay(FakeFileOps::kStat, 1000, "*/slow");
  std::atomic<bool> slowDone{false};
  std::thread slow([&] {
    struct stat64 st;
    g_FileOpsSeam.Stat(t.Path("slow").c_str(), &st);
    slowDone = true;
  });
  while (fake.Count(FakeFileOps::kStat) == 0) std::this_thread::yield();  // asleep now
  std::vector<std::thread> threads;
  const std::string a = t.Path("a");
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&a] {
      for (int k = 0; k < 250; ++k) {
        const int fd = g_FileOpsSeam.Open(a.c_str(), O_RDONLY, 0);
        char buf[16];
        if (fd >= 0) {
          g_FileOpsSeam.Read(fd, buf, sizeof buf);
          g_FileOpsSeam.Close(fd);
        }
        struct stat64 st;
        g_FileOpsSeam.Stat(a.c_str(), &st);
      }
    });
  for (std::thread& th : threads) th.join();
  // The busy threads were done long before the delayed stat.
  EXPECT_FALSE(slowDone.load());
  slow.join();
  EXPECT_EQ(fake.Count(FakeFileOps::kOpen), 1000);
  EXPECT_EQ(fake.Count(FakeFileOps::kRead), 1000);
  EXPECT_EQ(fake.Count(FakeFileOps::kClose), 1000);
  EXPECT_EQ(fake.Count(FakeFileOps::kStat), 1001);
  EXPECT_EQ(fake.Calls().size(), 4001u);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

}  // namespace
