// The test fault file system: its rules parser and decisions, and each fault
// as an application meets it through plain system calls on a real FUSE
// mount. Runs in a private mount namespace (tests/run-in-mntns.sh); the
// mounts are made in temporary folders.
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <ftw.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "faultfs_test_files.h"
#include "faultfs_mount.h"
#include "faultfs_rules.h"

namespace ff = vt::faultfs;

namespace {

// ------------------------------------------------------------ rules alone

std::vector<ff::Rule> Parse(const std::string& text) {
  std::vector<ff::Rule> rules;
  std::string error;
  EXPECT_TRUE(ff::ParseRules(text, &rules, &error)) << error;
  return rules;
}

std::string ParseError(const std::string& text) {
  std::vector<ff::Rule> rules;
  std::string error;
  EXPECT_FALSE(ff::ParseRules(text, &rules, &error)) << text;
  EXPECT_TRUE(rules.empty());
  return error;
}

TEST(FaultFsRules, ParsesEveryAction) {
  std::vector<ff::Rule> r = Parse(
      "# a comment\n"
      "\n"
      "a/*.bin read-eio 4K-8K times 2\n"
      "b read-eio 1M-\n"
      "c read-sleep 0.5 at 4096 times 1\n"
      "d read-short 100\n"
      "e shrink-after-count 10 at getattr 3\n"
      "f grow-after-count 1G\n"
      "g vanish-after-count at open 2\n"
      "h write-enospc-after 10000\n"
      "i write-eio-after 5\n"
      "j open-error EACCES times 1\n"
      "k rename-error 22\n"
      "* statfs-free 1M\n");
  ASSERT_EQ(12u, r.size());
  EXPECT_EQ(3, r[0].line);
  EXPECT_EQ("a/*.bin", r[0].glob);
  EXPECT_EQ(ff::Action::ReadEio, r[0].action);
  EXPECT_EQ(4096u, r[0].from);
  EXPECT_EQ(8192u, r[0].to);
  EXPECT_EQ(2u, r[0].times);
  EXPECT_EQ(1024u * 1024, r[1].from);
  EXPECT_EQ(ff::kNoEnd, r[1].to);
  EXPECT_EQ(0u, r[1].times);
  EXPECT_EQ(ff::Action::ReadSleep, r[2].action);
  EXPECT_DOUBLE_EQ(0.5, r[2].seconds);
  EXPECT_TRUE(r[2].hasAt);
  EXPECT_EQ(4096u, r[2].from);
  EXPECT_EQ(ff::Action::ReadShort, r[3].action);
  EXPECT_EQ(100u, r[3].bytes);
  EXPECT_EQ(ff::Action::Shrink, r[4].action);
  EXPECT_EQ(ff::Trigger::Getattr, r[4].trigger);
  EXPECT_EQ(3u, r[4].triggerCount);
  EXPECT_EQ(ff::Action::Grow, r[5].action);
  EXPECT_EQ(1024ull * 1024 * 1024, r[5].bytes);
  EXPECT_EQ(ff::Trigger::Open, r[5].trigger);
  EXPECT_EQ(1u, r[5].triggerCount);
  EXPECT_EQ(ff::Action::Vanish, r[6].action);
  EXPECT_EQ(2u, r[6].triggerCount);
  EXPECT_EQ(ff::Action::WriteEnospcAfter, r[7].action);
  EXPECT_EQ(ff::Action::WriteEioAfter, r[8].action);
  EXPECT_EQ(ff::Action::OpError, r[9].action);
  EXPECT_EQ(ff::Op::Open, r[9].op);
  EXPECT_EQ(EACCES, r[9].error);
  EXPECT_EQ(ff::Op::Rename, r[10].op);
  EXPECT_EQ(22, r[10].error);
  EXPECT_EQ(ff::Action::StatfsFree, r[11].action);
}

TEST(FaultFsRules, NamesTheLineOfAMistake) {
  EXPECT_EQ("line 2: unknown action \"read-slow\"", ParseError("a read-short 1\nb read-slow 1\n"));
  EXPECT_EQ("line 1: empty range \"8-8\"", ParseError("a read-eio 8-8"));
  EXPECT_EQ("line 1: bad range start in \"x-8\"", ParseError("a read-eio x-8"));
  EXPECT_EQ("line 1: missing action after the glob", ParseError("lonely"));
  EXPECT_EQ("line 1: unexpected \"extra\"", ParseError("a read-short 1 extra"));
  EXPECT_EQ("line 1: \"times\" needs a count of 1 or more", ParseError("a read-eio 0- times 0"));
  EXPECT_EQ("line 1: unknown error \"EWHAT\"", ParseError("a open-error EWHAT"));
  EXPECT_EQ("line 1: unknown operation \"chew\" in \"chew-error\"", ParseError("a chew-error EIO"));
  EXPECT_EQ("line 1: unknown trigger \"close\" (open or getattr)", ParseError("a vanish-after-count at close 1"));
  EXPECT_EQ("line 1: bad byte count \"10X\"", ParseError("a write-eio-after 10X"));
}

TEST(FaultFsRules, ReadFaultsMeetOverlappingRangesOnly) {
  ff::Rules rules;
  rules.Replace(Parse("d/*.bin read-eio 4096-8192\n"));
  EXPECT_EQ(0, rules.OnRead("d/a.bin", 0, 4096).error);
  EXPECT_EQ(EIO, rules.OnRead("d/a.bin", 4095, 2).error);
  EXPECT_EQ(EIO, rules.OnRead("d/a.bin", 8191, 1).error);
  EXPECT_EQ(0, rules.OnRead("d/a.bin", 8192, 4096).error);
  EXPECT_EQ(EIO, rules.OnRead("d/a.bin", 0, 1 << 20).error);
  EXPECT_EQ(0, rules.OnRead("other.bin", 4096, 4096).error);

  rules.Replace(Parse("a read-eio 0- times 2\na read-short 10 times 1\nb read-sleep 2 at 100\n"));
  EXPECT_EQ(EIO, rules.OnRead("a", 1 << 30, 1).error);
  EXPECT_EQ(EIO, rules.OnRead("a", 0, 1).error);
  EXPECT_EQ(0, rules.OnRead("a", 0, 1).error);
  // read-short counts only the reads it shortens.
  EXPECT_EQ(0u, rules.OnRead("a", 0, 10).maxBytes);
  EXPECT_EQ(10u, rules.OnRead("a", 0, 100).maxBytes);
  EXPECT_EQ(0u, rules.OnRead("a", 0, 100).maxBytes);
  EXPECT_DOUBLE_EQ(0, rules.OnRead("b", 0, 100).sleepSeconds);
  EXPECT_DOUBLE_EQ(2, rules.OnRead("b", 0, 101).sleepSeconds);
}

TEST(FaultFsRules, WriteLimitsCountOverEveryMatchingFile) {
  ff::Rules rules;
  rules.Replace(Parse("out/* write-enospc-after 10000\n"));
  int error = 0;
  EXPECT_EQ(6000u, rules.OnWrite("out/a", 6000, &error));
  EXPECT_EQ(4000u, rules.OnWrite("out/b", 6000, &error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(0u, rules.OnWrite("out/a", 1, &error));
  EXPECT_EQ(ENOSPC, error);
  error = 0;
  EXPECT_EQ(6000u, rules.OnWrite("elsewhere", 6000, &error));
  EXPECT_EQ(0, error);
}

TEST(FaultFsRules, SizeChangesFireOnceAtTheNthEvent) {
  ff::Rules rules;
  rules.Replace(Parse("a shrink-after-count 5 at getattr 3\nb vanish-after-count\n"));
  EXPECT_TRUE(rules.OnTrigger("a", ff::Trigger::Getattr).empty());
  EXPECT_TRUE(rules.OnTrigger("a", ff::Trigger::Open).empty());
  EXPECT_TRUE(rules.OnTrigger("a", ff::Trigger::Getattr).empty());
  std::vector<ff::Change> c = rules.OnTrigger("a", ff::Trigger::Getattr);
  ASSERT_EQ(1u, c.size());
  EXPECT_EQ(ff::Action::Shrink, c[0].action);
  EXPECT_EQ(5u, c[0].bytes);
  EXPECT_TRUE(rules.OnTrigger("a", ff::Trigger::Getattr).empty());
  ASSERT_EQ(1u, rules.OnTrigger("b", ff::Trigger::Open).size());
  EXPECT_TRUE(rules.OnTrigger("b", ff::Trigger::Open).empty());
}

// ------------------------------------------------------------ mounted

using faultfs_test::Pattern;
using faultfs_test::WriteFile;

// The whole file, read in `chunk` steps; *error gets the errno of a failing read.
std::string ReadFile(const std::string& path, int* error = nullptr, size_t chunk = 65536) {
  std::string out;
  int fd = open(path.c_str(), O_RDONLY);
  if (fd < 0) {
    if (error) *error = errno;
    return out;
  }
  std::vector<char> buf(chunk);
  for (;;) {
    ssize_t n = read(fd, buf.data(), buf.size());
    if (n < 0) {
      if (error) *error = errno;
      break;
    }
    if (n == 0) break;
    out.append(buf.data(), static_cast<size_t>(n));
  }
  close(fd);
  return out;
}

std::set<std::string> List(const std::string& dir) {
  std::set<std::string> names;
  DIR* d = opendir(dir.c_str());
  if (!d) return names;
  while (struct dirent* e = readdir(d)) {
    std::string n = e->d_name;
    if (n != "." && n != "..") names.insert(n);
  }
  closedir(d);
  return names;
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) { return remove(path); }

class FaultFsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char templ[] = "/tmp/vantori-faultfs-test-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(templ));
    top_ = templ;
    backing_ = top_ + "/backing";
    mnt_ = top_ + "/mnt";
    ASSERT_EQ(0, mkdir(backing_.c_str(), 0755));
    ASSERT_EQ(0, mkdir(mnt_.c_str(), 0755));
  }
  void TearDown() override {
    fs_.reset();
    if (!top_.empty() && !vt::FaultFs::IsFaultFsMountedAt(mnt_)) {
      nftw(top_.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
  }
  // Mounts the backing folder with these rules; a fatal failure when that
  // fails (callers wrap it in ASSERT_NO_FATAL_FAILURE).
  void Mount(const std::string& rules) {
    fs_ = std::make_unique<vt::FaultFs>(backing_, mnt_, rules);
    ASSERT_TRUE(fs_->IsMounted()) << fs_->Error();
  }
  std::string B(const std::string& rel) const { return backing_ + "/" + rel; }
  std::string M(const std::string& rel) const { return mnt_ + "/" + rel; }

  std::string top_, backing_, mnt_;
  std::unique_ptr<vt::FaultFs> fs_;
};

TEST_F(FaultFsTest, PassesFilesAndFoldersThrough) {
  const std::string given = Pattern(300000, 1);
  WriteFile(B("given.bin"), given);
  ASSERT_EQ(0, mkdir(B("sub").c_str(), 0755));
  ASSERT_NO_FATAL_FAILURE(Mount(""));

  EXPECT_EQ(given, ReadFile(M("given.bin")));
  EXPECT_EQ(given, ReadFile(M("given.bin"), nullptr, 4096));
  EXPECT_EQ((std::set<std::string>{"given.bin", "sub"}), List(mnt_));

  // Written through the mount, in uneven steps: byte-identical on the backing side.
  const std::string data = Pattern(3 * 1024 * 1024 + 17, 2);
  int fd = open(M("sub/written.bin").c_str(), O_WRONLY | O_CREAT | O_EXCL, 0640);
  ASSERT_GE(fd, 0) << strerror(errno);
  size_t done = 0;
  for (size_t step = 1; done < data.size(); step = step * 3 + 1) {
    size_t n = std::min(step, data.size() - done);
    ASSERT_EQ(static_cast<ssize_t>(n), write(fd, data.data() + done, n));
    done += n;
  }
  EXPECT_EQ(0, fsync(fd));
  EXPECT_EQ(0, close(fd));
  EXPECT_EQ(data, ReadFile(B("sub/written.bin")));
  struct stat st;
  ASSERT_EQ(0, stat(M("sub/written.bin").c_str(), &st));
  EXPECT_EQ(static_cast<off_t>(data.size()), st.st_size);

  EXPECT_EQ(0, truncate(M("sub/written.bin").c_str(), 1000));
  EXPECT_EQ(data.substr(0, 1000), ReadFile(B("sub/written.bin")));
  struct timespec times[2] = {{1000000000, 0}, {1234567890, 0}};
  EXPECT_EQ(0, utimensat(AT_FDCWD, M("sub/written.bin").c_str(), times, 0));
  ASSERT_EQ(0, stat(B("sub/written.bin").c_str(), &st));
  EXPECT_EQ(1234567890, st.st_mtim.tv_sec);
  EXPECT_EQ(0, rename(M("sub/written.bin").c_str(), M("moved.bin").c_str()));
  EXPECT_EQ(data.substr(0, 1000), ReadFile(B("moved.bin")));
  EXPECT_EQ(0, mkdir(M("new").c_str(), 0755));
  ASSERT_EQ(0, stat(B("new").c_str(), &st));
  EXPECT_TRUE(S_ISDIR(st.st_mode));
  EXPECT_EQ(0, rmdir(M("new").c_str()));
  EXPECT_EQ(0, unlink(M("moved.bin").c_str()));
  EXPECT_EQ((std::set<std::string>{"given.bin", "sub"}), List(backing_));
  EXPECT_TRUE(List(B("sub")).empty());

  struct statvfs vfs;
  ASSERT_EQ(0, statvfs(mnt_.c_str(), &vfs));
  EXPECT_GT(vfs.f_blocks, 0u);

  // A sparse file past 4 GiB keeps its size and offsets.
  const off_t big = (off_t(4) << 30) + 1;
  ASSERT_EQ(0, truncate(B("given.bin").c_str(), big));
  ASSERT_EQ(0, stat(M("given.bin").c_str(), &st));
  EXPECT_EQ(big, st.st_size);
  fd = open(M("given.bin").c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(1, pwrite(fd, "z", 1, big - 1));
  char last = 0;
  EXPECT_EQ(1, pread(fd, &last, 1, big - 1));
  EXPECT_EQ('z', last);
  EXPECT_EQ(0, pread(fd, &last, 1, big));
  close(fd);
}

TEST_F(FaultFsTest, ReadEioInsideTheRangeOnly) {
  const std::string data = Pattern(64 * 1024, 3);
  WriteFile(B("bad.bin"), data);
  WriteFile(B("good.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount("bad.bin read-eio 8K-12K\n"));

  int fd = open(M("bad.bin").c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  char buf[4096];
  ASSERT_EQ(4096, pread(fd, buf, 4096, 4096));
  EXPECT_EQ(0, memcmp(buf, data.data() + 4096, 4096));
  errno = 0;
  EXPECT_EQ(-1, pread(fd, buf, 4096, 8192));
  EXPECT_EQ(EIO, errno);
  errno = 0;
  EXPECT_EQ(-1, pread(fd, buf, 1, 12287));
  EXPECT_EQ(EIO, errno);
  EXPECT_EQ(-1, pread(fd, buf, 4096, 8192));  // always, not only once
  ASSERT_EQ(4096, pread(fd, buf, 4096, 12288));
  EXPECT_EQ(0, memcmp(buf, data.data() + 12288, 4096));
  close(fd);

  int error = 0;
  ReadFile(M("bad.bin"), &error);
  EXPECT_EQ(EIO, error);
  EXPECT_EQ(data, ReadFile(M("good.bin")));
  EXPECT_TRUE(fs_->WaitForLog("read of bad.bin at 8192 size 4096: injected EIO", 0)) << fs_->Log();
}

TEST_F(FaultFsTest, TransientReadEioIsOvercomeByTheThirdTry) {
  const std::string data = Pattern(20000, 4);
  WriteFile(B("flaky.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount("flaky.bin read-eio 4096-4097 times 2\n"));
  int fd = open(M("flaky.bin").c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  char buf[4096];
  ASSERT_EQ(4096, pread(fd, buf, 4096, 0));  // outside: not counted
  EXPECT_EQ(-1, pread(fd, buf, 4096, 4096));
  EXPECT_EQ(EIO, errno);
  EXPECT_EQ(-1, pread(fd, buf, 4096, 4096));
  EXPECT_EQ(EIO, errno);
  ASSERT_EQ(4096, pread(fd, buf, 4096, 4096));
  EXPECT_EQ(0, memcmp(buf, data.data() + 4096, 4096));
  close(fd);
  EXPECT_EQ(data, ReadFile(M("flaky.bin")));
}

TEST_F(FaultFsTest, ASleepingReadDoesNotHoldUpAnotherFile) {
  const std::string slowData = Pattern(8192, 5), fastData = Pattern(100000, 6);
  WriteFile(B("slow.bin"), slowData);
  WriteFile(B("fast.bin"), fastData);
  ASSERT_NO_FATAL_FAILURE(Mount("slow.bin read-sleep 3 at 0\n"));

  std::atomic<bool> slowDone{false};
  std::string slowRead;
  std::thread slow([&] {
    slowRead = ReadFile(M("slow.bin"));
    slowDone = true;
  });
  // The slow read is in the file system, asleep...
  bool asleep = fs_->WaitForLog("read of slow.bin at 0 sleeps 3 s", 5000);
  // ...while another file is read to its end.
  std::string fastRead = ReadFile(M("fast.bin"));
  bool slowDoneWhenFastEnded = slowDone;
  slow.join();
  EXPECT_TRUE(asleep) << fs_->Log();
  EXPECT_FALSE(slowDoneWhenFastEnded);
  EXPECT_EQ(fastData, fastRead);
  EXPECT_EQ(slowData, slowRead);
  EXPECT_TRUE(fs_->WaitForLog("read of slow.bin at 0 woke up", 0)) << fs_->Log();
}

TEST_F(FaultFsTest, ShortReadsReturnFewerBytesAndKeepTheRest) {
  const std::string data = Pattern(5000, 7);
  WriteFile(B("short.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount("short.bin read-short 100\n"));
  int fd = open(M("short.bin").c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  char buf[4096];
  ASSERT_EQ(100, read(fd, buf, sizeof buf));
  EXPECT_EQ(0, memcmp(buf, data.data(), 100));
  ASSERT_EQ(100, read(fd, buf, sizeof buf));
  EXPECT_EQ(0, memcmp(buf, data.data() + 100, 100));
  close(fd);
  EXPECT_EQ(data, ReadFile(M("short.bin")));
}

TEST_F(FaultFsTest, AFileShrinksWhenItIsOpenedAfterItWasCounted) {
  const std::string data = Pattern(50000, 8);
  WriteFile(B("shrinks.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount("shrinks.bin shrink-after-count 1000\n"));
  struct stat st;
  ASSERT_EQ(0, stat(M("shrinks.bin").c_str(), &st));  // the folder walk counts it
  EXPECT_EQ(50000, st.st_size);
  ASSERT_EQ(0, stat(M("shrinks.bin").c_str(), &st));
  EXPECT_EQ(50000, st.st_size);
  int fd = open(M("shrinks.bin").c_str(), O_RDONLY);  // the copy opens it
  ASSERT_GE(fd, 0);
  ASSERT_EQ(0, fstat(fd, &st));
  EXPECT_EQ(1000, st.st_size);
  close(fd);
  EXPECT_EQ(data.substr(0, 1000), ReadFile(M("shrinks.bin")));
  EXPECT_EQ(data.substr(0, 1000), ReadFile(B("shrinks.bin")));
}

TEST_F(FaultFsTest, AFileGrowsWhenItIsOpenedAfterItWasCounted) {
  const std::string data = Pattern(3000, 9);
  WriteFile(B("grows.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount("grows.bin grow-after-count 5000\n"));
  struct stat st;
  ASSERT_EQ(0, stat(M("grows.bin").c_str(), &st));
  EXPECT_EQ(3000, st.st_size);
  std::string expected = data;
  for (uint64_t o = 3000; o < 8000; ++o) expected += ff::GrowByte(o);
  EXPECT_EQ(expected, ReadFile(M("grows.bin")));
  ASSERT_EQ(0, stat(M("grows.bin").c_str(), &st));
  EXPECT_EQ(8000, st.st_size);
  EXPECT_EQ(expected, ReadFile(M("grows.bin")));  // once only
}

TEST_F(FaultFsTest, AFileShrinksAtTheThirdGetattr) {
  WriteFile(B("g.bin"), Pattern(4096, 10));
  ASSERT_NO_FATAL_FAILURE(Mount("g.bin shrink-after-count 10 at getattr 3\n"));
  struct stat st;
  // One stat(2) asks the file system once or twice (lookup, then getattr).
  ASSERT_EQ(0, stat(M("g.bin").c_str(), &st));
  EXPECT_EQ(4096, st.st_size);
  int stats = 1;
  while (st.st_size == 4096 && stats < 4) {
    ASSERT_EQ(0, stat(M("g.bin").c_str(), &st));
    ++stats;
  }
  EXPECT_EQ(10, st.st_size);
  EXPECT_LE(stats, 3);
  ASSERT_EQ(0, stat(M("g.bin").c_str(), &st));
  EXPECT_EQ(10, st.st_size);
}

TEST_F(FaultFsTest, AFileVanishesBetweenCollectionAndCopy) {
  WriteFile(B("keeps.bin"), "stays");
  WriteFile(B("goes.bin"), "goes away");
  ASSERT_NO_FATAL_FAILURE(Mount("goes.bin vanish-after-count\n"));
  EXPECT_EQ((std::set<std::string>{"keeps.bin", "goes.bin"}), List(mnt_));
  struct stat st;
  ASSERT_EQ(0, stat(M("goes.bin").c_str(), &st));
  EXPECT_EQ(9, st.st_size);
  errno = 0;
  EXPECT_EQ(-1, open(M("goes.bin").c_str(), O_RDONLY));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_NE(0, stat(M("goes.bin").c_str(), &st));
  EXPECT_EQ((std::set<std::string>{"keeps.bin"}), List(mnt_));
  EXPECT_EQ((std::set<std::string>{"keeps.bin"}), List(backing_));
  EXPECT_EQ("stays", ReadFile(M("keeps.bin")));
}

// Writes 4 KiB steps until one fails; returns the bytes written and the error.
size_t WriteUntilError(const std::string& path, const std::string& data, int* error) {
  int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) {
    *error = errno;
    return 0;
  }
  size_t done = 0;
  *error = 0;
  while (done < data.size()) {
    ssize_t n = write(fd, data.data() + done, std::min<size_t>(4096, data.size() - done));
    if (n < 0) {
      *error = errno;
      break;
    }
    done += static_cast<size_t>(n);
  }
  close(fd);
  return done;
}

TEST_F(FaultFsTest, WritesFailWithEnospcAfterTheLimit) {
  ASSERT_EQ(0, mkdir(B("out").c_str(), 0755));
  ASSERT_NO_FATAL_FAILURE(Mount("out/* write-enospc-after 10000\n"));
  const std::string data = Pattern(20000, 11);
  int fd = open(M("out/a.bin").c_str(), O_WRONLY | O_CREAT, 0644);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(4096, write(fd, data.data(), 4096));
  EXPECT_EQ(4096, write(fd, data.data() + 4096, 4096));
  EXPECT_EQ(10000 - 8192, write(fd, data.data() + 8192, 4096));  // the short write at the limit
  errno = 0;
  EXPECT_EQ(-1, write(fd, data.data() + 10000, 4096));
  EXPECT_EQ(ENOSPC, errno);
  close(fd);
  EXPECT_EQ(data.substr(0, 10000), ReadFile(B("out/a.bin")));
  // The volume is full for the next file too.
  int error = 0;
  EXPECT_EQ(0u, WriteUntilError(M("out/b.bin"), data, &error));
  EXPECT_EQ(ENOSPC, error);
}

TEST_F(FaultFsTest, WritesFailWithEioAfterTheLimit) {
  ASSERT_NO_FATAL_FAILURE(Mount("*.bin write-eio-after 6000\n"));
  const std::string data = Pattern(20000, 12);
  int error = 0;
  EXPECT_EQ(6000u, WriteUntilError(M("e.bin"), data, &error));
  EXPECT_EQ(EIO, error);
  EXPECT_EQ(data.substr(0, 6000), ReadFile(B("e.bin")));
  EXPECT_EQ(20000u, WriteUntilError(M("e.txt"), data, &error));
  EXPECT_EQ(0, error);
  EXPECT_EQ(data, ReadFile(B("e.txt")));
}

TEST_F(FaultFsTest, NamesThatAreNotValidUtf8KeepTheirBytes) {
  const std::string latin1 = "caf\xe9.txt", dir = "\xff\xfe dir", created = "new\x80\xc3name";
  WriteFile(B(latin1), "latin-1 name");
  ASSERT_EQ(0, mkdir(B(dir).c_str(), 0755));
  WriteFile(B(dir + "/inner\xc0"), "inner");
  // The rules match such names by their bytes too.
  ASSERT_NO_FATAL_FAILURE(Mount("caf\xe9.txt read-short 3\n"));
  EXPECT_EQ((std::set<std::string>{latin1, dir}), List(mnt_));
  EXPECT_EQ((std::set<std::string>{"inner\xc0"}), List(M(dir)));
  EXPECT_EQ("latin-1 name", ReadFile(M(latin1)));
  int fd = open(M(latin1).c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  char buf[64];
  EXPECT_EQ(3, read(fd, buf, sizeof buf));
  close(fd);
  EXPECT_EQ("inner", ReadFile(M(dir + "/inner\xc0")));
  WriteFile(M(dir + "/" + created), "made through the mount");
  EXPECT_EQ("made through the mount", ReadFile(B(dir + "/" + created)));
  EXPECT_EQ((std::set<std::string>{"inner\xc0", created}), List(B(dir)));
}

TEST_F(FaultFsTest, OperationsFailOnRequest) {
  WriteFile(B("locked.bin"), "locked");
  WriteFile(B("stuck.bin"), "stuck");
  ASSERT_NO_FATAL_FAILURE(Mount("locked.bin open-error EACCES times 1\n"
        "refused* create-error EINVAL\n"
        "stuck.bin unlink-error EIO\n"
        "* statfs-free 1M\n"));
  errno = 0;
  EXPECT_EQ(-1, open(M("locked.bin").c_str(), O_RDONLY));
  EXPECT_EQ(EACCES, errno);
  EXPECT_EQ("locked", ReadFile(M("locked.bin")));  // the second open succeeds
  errno = 0;
  EXPECT_EQ(-1, open(M("refused:name").c_str(), O_WRONLY | O_CREAT, 0644));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ((std::set<std::string>{"locked.bin", "stuck.bin"}), List(backing_));
  errno = 0;
  EXPECT_EQ(-1, unlink(M("stuck.bin").c_str()));
  EXPECT_EQ(EIO, errno);
  EXPECT_EQ("stuck", ReadFile(B("stuck.bin")));
  struct statvfs vfs;
  ASSERT_EQ(0, statvfs(mnt_.c_str(), &vfs));
  EXPECT_LE(static_cast<uint64_t>(vfs.f_bavail) * vfs.f_frsize, 1024u * 1024);
  EXPECT_LE(static_cast<uint64_t>(vfs.f_bfree) * vfs.f_frsize, 1024u * 1024);
}

TEST_F(FaultFsTest, RulesAreReplacedWhileMounted) {
  const std::string data = Pattern(10000, 13);
  WriteFile(B("data.bin"), data);
  ASSERT_NO_FATAL_FAILURE(Mount(""));
  EXPECT_EQ(data, ReadFile(M("data.bin")));
  ASSERT_TRUE(fs_->SetRules("data.bin read-eio 0-\n")) << fs_->Error();
  int error = 0;
  ReadFile(M("data.bin"), &error);
  EXPECT_EQ(EIO, error);
  EXPECT_FALSE(fs_->SetRules("data.bin read-eio\n"));
  EXPECT_EQ("fault rules: line 1: missing range <from>-<to>", fs_->Error());
  error = 0;
  ReadFile(M("data.bin"), &error);  // the rules in force stay
  EXPECT_EQ(EIO, error);
  ASSERT_TRUE(fs_->SetRules("")) << fs_->Error();
  EXPECT_EQ(data, ReadFile(M("data.bin")));
}

TEST_F(FaultFsTest, StopsEvenWithAFileStillOpen) {
  WriteFile(B("open.bin"), "open");
  ASSERT_NO_FATAL_FAILURE(Mount(""));
  int fd = open(M("open.bin").c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  fs_.reset();
  EXPECT_FALSE(vt::FaultFs::IsFaultFsMountedAt(mnt_));
  struct stat st;
  ASSERT_EQ(0, stat(mnt_.c_str(), &st));
  EXPECT_TRUE(List(mnt_).empty());  // the bare mount point again
  close(fd);
  EXPECT_EQ("open", ReadFile(B("open.bin")));
}

TEST_F(FaultFsTest, StopsDuringASleepingRead) {
  WriteFile(B("asleep.bin"), "asleep");
  ASSERT_NO_FATAL_FAILURE(Mount("asleep.bin read-sleep 600\n"));
  int result = 0;
  std::thread reader([&] {
    int fd = open(M("asleep.bin").c_str(), O_RDONLY);
    char buf[16];
    result = fd < 0 ? -2 : static_cast<int>(read(fd, buf, sizeof buf));
    if (fd >= 0) close(fd);
  });
  ASSERT_TRUE(fs_->WaitForLog("read of asleep.bin at 0 sleeps 600 s", 5000)) << fs_->Log();
  fs_.reset();  // within seconds, not after the ten minutes of the sleep
  reader.join();
  EXPECT_NE(-2, result);
  EXPECT_FALSE(vt::FaultFs::IsFaultFsMountedAt(mnt_));
}

TEST(FaultFsLauncher, ABadMountPointIsReported) {
  vt::FaultFs fs("/tmp", "/nonexistent/vantori-faultfs", "");
  EXPECT_FALSE(fs.IsMounted());
  EXPECT_NE(std::string::npos, fs.Error().find("/nonexistent/vantori-faultfs")) << fs.Error();
}

TEST(FaultFsLauncher, RulesThatDoNotParseAreReportedBeforeMounting) {
  char templ[] = "/tmp/vantori-faultfs-test-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(templ));
  vt::FaultFs fs("/tmp", templ, "x read-eio 5-1\n");
  EXPECT_FALSE(fs.IsMounted());
  EXPECT_NE(std::string::npos, fs.Error().find("line 1: empty range")) << fs.Error();
  EXPECT_FALSE(vt::FaultFs::IsFaultFsMountedAt(templ));
  rmdir(templ);
}

}  // namespace
