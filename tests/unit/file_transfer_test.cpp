// One file copied chunk by chunk: byte for byte, with its times, through
// copy_file_range or read/write, and with each kind of failure (a source that
// cannot be opened or read, a full destination, a cancel between the steps)
// leaving nothing open and no partial file that looks complete.
#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "common/fake_fileops.h"
#include "fileops/FileOpsSeam.h"
#include "fileops/FileTransfer.h"
#include "fileops/IoWorker.h"
#include "fileops_test_tree.h"

namespace {

using vt::FakeFileOps;

std::shared_ptr<unsigned char> Buffer(size_t size) {
  return std::shared_ptr<unsigned char>(new unsigned char[size], std::default_delete<unsigned char[]>());
}

// Bytes that differ from one position to the next, so a chunk written twice,
// left out or taken from the wrong place shows.
std::string Bytes(size_t size, unsigned seed = 1) {
  std::mt19937 gen(seed);
  std::string s(size, '\0');
  for (char& c : s) c = static_cast<char>(gen() & 0xff);
  return s;
}

int64_t SizeOf(const std::string& path) {
  struct stat64 st;
  return stat64(path.c_str(), &st) == 0 ? static_cast<int64_t>(st.st_size) : -1;
}

// The engine's loop for one file; the result of the first step that failed.
int CopyAll(FileTransfer& t) {
  if (t.Open() != 0) return -1;
  for (;;) {
    const ssize_t n = t.ReadChunk();
    if (n < 0) return -2;
    if (n == 0) break;
    if (t.WriteChunk() != 0) return -3;
  }
  return t.Finish() == 0 ? 0 : -4;
}

class FileTransferTest : public ::testing::Test {
 protected:
  std::string Src() const { return tree.Path("src.bin"); }
  std::string Dst() const { return tree.Path("dst.bin"); }
  vt::ScratchTree tree;
};

TEST_F(FileTransferTest, AnEmptyFileGivesAnEmptyDestination) {
  vt::WriteFile(Src(), "");
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  EXPECT_EQ(t.SourceSize(), 0);
  EXPECT_EQ(t.ReadChunk(), 0);
  EXPECT_EQ(t.Finish(), 0);
  EXPECT_EQ(SizeOf(Dst()), 0);
  EXPECT_EQ(t.BytesWritten(), 0);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, CopiesManySmallChunksByteForByte) {
  const std::string data = Bytes(4096 * 7 + 123);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  EXPECT_EQ(t.SourceSize(), static_cast<int64_t>(data.size()));
  int chunks = 0;
  ssize_t n;
  while ((n = t.ReadChunk()) > 0) {
    EXPECT_LE(n, 4096);
    ASSERT_EQ(t.WriteChunk(), 0);
    ++chunks;
  }
  ASSERT_EQ(n, 0);
  ASSERT_EQ(t.Finish(), 0);
  EXPECT_EQ(chunks, 8);
  EXPECT_EQ(t.BytesWritten(), static_cast<int64_t>(data.size()));
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, CopiesMegabyteChunksByteForByte) {
  const std::string data = Bytes((3 << 20) + 7, 2);
  vt::WriteFile(Src(), data);
  FileTransfer t(Src(), Dst(), Buffer(1 << 20), 1 << 20);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(t.BytesWritten(), static_cast<int64_t>(data.size()));
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileTransferTest, ReplacesALongerDestination) {
  const std::string data = Bytes(5000, 3);
  vt::WriteFile(Src(), data);
  vt::WriteFile(Dst(), Bytes(20000, 4));
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileTransferTest, CarriesTheTimesOver) {
  vt::WriteFile(Src(), Bytes(10000, 5));
  const struct timespec times[2] = {{1000000000, 250000000}, {1234567890, 123456789}};
  ASSERT_EQ(utimensat(AT_FDCWD, Src().c_str(), times, 0), 0);
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kUtimensat), 1);
  struct stat64 st;
  ASSERT_EQ(stat64(Dst().c_str(), &st), 0);
  EXPECT_EQ(st.st_mtim.tv_sec, times[1].tv_sec);
  EXPECT_EQ(st.st_mtim.tv_nsec, times[1].tv_nsec);
  EXPECT_EQ(st.st_atim.tv_sec, times[0].tv_sec);
}

TEST_F(FileTransferTest, TimesThatCannotBeSetDoNotFailTheCopy) {
  const std::string data = Bytes(100, 6);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kUtimensat, EPERM);
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  EXPECT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileTransferTest, MovesTheChunksWithCopyFileRangeWhereTheKernelCan) {
  // Source and destination lie in one folder of one file system.
  const std::string data = Bytes(3 * 4096, 7);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_GE(fake.Count(FakeFileOps::kCopyFileRange), 3);
  EXPECT_EQ(fake.Count(FakeFileOps::kRead), 0);
}

TEST_F(FileTransferTest, FallsBackToReadAndWriteAcrossFileSystems) {
  const std::string data = Bytes(5 * 4096 + 1, 8);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_EQ(fake.Count(FakeFileOps::kCopyFileRange), 1);  // not tried again for this file
  EXPECT_GT(fake.Count(FakeFileOps::kRead), 0);
  EXPECT_EQ(t.BytesWritten(), static_cast<int64_t>(data.size()));
}

TEST_F(FileTransferTest, FallsBackInTheMiddleOfAFileWithoutLosingItsPlace) {
  // Two chunks by copy_file_range, then the kernel refuses: read/write goes
  // on from where the copy stopped.
  const std::string data = Bytes(6 * 4096 + 99, 9);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EOPNOTSUPP, "", 3);
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_EQ(fake.Count(FakeFileOps::kCopyFileRange), 3);
  EXPECT_GT(fake.Count(FakeFileOps::kRead), 0);
}

TEST_F(FileTransferTest, EveryOtherCopyRangeErrorFallsBack) {
  const int errors[] = {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EBADF, ETXTBSY, EIO, EPERM};
  for (int err : errors) {
    const std::string data = Bytes(4096 + 10, static_cast<unsigned>(err));
    vt::WriteFile(Src(), data);
    FakeFileOps fake;
    fake.Fail(FakeFileOps::kCopyFileRange, err);
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    EXPECT_EQ(CopyAll(t), 0) << err;
    EXPECT_EQ(vt::ReadFile(Dst()), data) << err;
  }
}

TEST_F(FileTransferTest, AReadErrorWritesNothingOfThatChunk) {
  vt::WriteFile(Src(), Bytes(3 * 4096, 10));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 2);
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), 4096);
  ASSERT_EQ(t.WriteChunk(), 0);
  const int writes = fake.Count(FakeFileOps::kWrite);
  EXPECT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.Error(), EIO);
  // Even a WriteChunk after the failed read writes nothing.
  EXPECT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kWrite), writes);
  EXPECT_EQ(t.BytesWritten(), 4096);
  EXPECT_EQ(SizeOf(Dst()), 4096);
  EXPECT_EQ(t.RemoveDestination(), 0);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, AShortReadIsJustAChunk) {
  const std::string data = Bytes(4096 * 2 + 5, 11);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.ShortRead(1000, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  EXPECT_EQ(t.ReadChunk(), 1000);
  ASSERT_EQ(t.WriteChunk(), 0);
  ssize_t n;
  while ((n = t.ReadChunk()) > 0) ASSERT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(n, 0);
  ASSERT_EQ(t.Finish(), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileTransferTest, AShortWriteIsWrittenOnUntilTheDestinationRefuses) {
  const std::string data = Bytes(4096 * 2, 12);
  vt::WriteFile(Src(), data);
  {
    // Writes that take 100 bytes at a time still write the whole chunk.
    FakeFileOps fake;
    fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
    fake.ShortWrite(100, "*/dst.bin");
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(CopyAll(t), 0);
    EXPECT_EQ(vt::ReadFile(Dst()), data);
  }
  {
    // The first write is short, the next one finds the disk full.
    FakeFileOps fake;
    fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
    fake.ShortWrite(100, "*/dst.bin", 1);
    fake.Fail(FakeFileOps::kWrite, ENOSPC, "*/dst.bin", 2);
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(t.Open(), 0);
    ASSERT_EQ(t.ReadChunk(), 4096);
    EXPECT_EQ(t.WriteChunk(), -1);
    EXPECT_EQ(t.Error(), ENOSPC);
    EXPECT_EQ(t.BytesWritten(), 100);
    EXPECT_EQ(t.RemoveDestination(), 0);
    EXPECT_FALSE(vt::Exists(Dst()));
    EXPECT_EQ(fake.OpenDescriptors(), 0);
  }
}

TEST_F(FileTransferTest, AWriteThatTakesNothingIsADestinationFull) {
  vt::WriteFile(Src(), Bytes(50, 13));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.ShortWrite(0, "*/dst.bin");
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), 50);
  EXPECT_EQ(t.WriteChunk(), -1);
  EXPECT_EQ(t.Error(), ENOSPC);
  EXPECT_EQ(t.BytesWritten(), 0);
}

TEST_F(FileTransferTest, AFullDestinationUnderCopyFileRangeFailsTheWrite) {
  vt::WriteFile(Src(), Bytes(3 * 4096, 14));
  const int full[] = {ENOSPC, EDQUOT, EFBIG};
  for (int err : full) {
    FakeFileOps fake;
    fake.Fail(FakeFileOps::kCopyFileRange, err, "", 2);
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(t.Open(), 0);
    ASSERT_EQ(t.ReadChunk(), 4096);
    ASSERT_EQ(t.WriteChunk(), 0);
    const int writes = fake.Count(FakeFileOps::kWrite);
    // The chunk is read as any other; its write then reports the full disk
    // and writes nothing.
    EXPECT_GT(t.ReadChunk(), 0) << err;
    EXPECT_EQ(t.WriteChunk(), -1) << err;
    EXPECT_EQ(t.Error(), err);
    EXPECT_EQ(fake.Count(FakeFileOps::kWrite), writes) << err;
    EXPECT_EQ(t.BytesWritten(), 4096);
    EXPECT_EQ(SizeOf(Dst()), 4096);
    EXPECT_EQ(t.RemoveDestination(), 0);
    EXPECT_FALSE(vt::Exists(Dst()));
    EXPECT_EQ(fake.OpenDescriptors(), 0);
  }
}

TEST_F(FileTransferTest, AFullDestinationIsReportedOnBothPaths) {
  // The fake refuses the destination side of copy_file_range and of write
  // alike, as a full disk does.
  vt::WriteFile(Src(), Bytes(4096, 15));
  for (bool copyRange : {true, false}) {
    FakeFileOps fake;
    if (!copyRange) fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
    fake.Fail(FakeFileOps::kWrite, ENOSPC, "*/dst.bin");
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(t.Open(), 0);
    EXPECT_GT(t.ReadChunk(), 0) << copyRange;
    EXPECT_EQ(t.WriteChunk(), -1) << copyRange;
    EXPECT_EQ(t.Error(), ENOSPC) << copyRange;
    EXPECT_EQ(SizeOf(Dst()), 0) << copyRange;
    EXPECT_EQ(t.RemoveDestination(), 0);
    EXPECT_EQ(fake.OpenDescriptors(), 0);
  }
}

TEST_F(FileTransferTest, CancelAfterAReadRemovesThePartialFileOnBothPaths) {
  vt::WriteFile(Src(), Bytes(3 * 4096, 16));
  for (bool copyRange : {true, false}) {
    FakeFileOps fake;
    if (!copyRange) fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(t.Open(), 0);
    ASSERT_EQ(t.ReadChunk(), 4096);
    ASSERT_EQ(t.WriteChunk(), 0);
    ASSERT_EQ(t.ReadChunk(), 4096);
    // Cancel: the chunk just read is never written.
    EXPECT_EQ(t.RemoveDestination(), 0) << copyRange;
    EXPECT_FALSE(vt::Exists(Dst())) << copyRange;
    EXPECT_EQ(fake.OpenDescriptors(), 0) << copyRange;
    EXPECT_EQ(fake.Calls().back(), "unlinkat " + Dst());
  }
}

TEST_F(FileTransferTest, RemoveDestinationReportsAFailedRemoval) {
  vt::WriteFile(Src(), Bytes(10, 17));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kUnlinkat, EROFS);
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  EXPECT_EQ(t.RemoveDestination(), -1);
  EXPECT_EQ(t.Error(), EROFS);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, AFailingCloseOfTheDestinationFailsFinish) {
  vt::WriteFile(Src(), Bytes(10, 18));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kClose, EIO, "*/dst.bin");
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), 10);
  ASSERT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(t.Finish(), -1);
  EXPECT_EQ(t.Error(), EIO);
  EXPECT_EQ(fake.Count(FakeFileOps::kUtimensat), 0);
  // The fake's failing close left the real descriptor open: close it here.
  fake.ClearRules();
  for (int fd = 3; fd < 1024; ++fd)
    if (fake.PathOf(fd) == Dst()) g_FileOpsSeam.Close(fd);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, ASourceThatCannotBeOpenedLeavesTheDestinationAlone) {
  vt::WriteFile(Dst(), "older copy");
  FakeFileOps fake;
  FileTransfer t(tree.Path("missing.bin"), Dst(), Buffer(4096), 4096);
  EXPECT_EQ(t.Open(), -1);
  EXPECT_EQ(t.FailedEnd(), kTransferSource);
  EXPECT_EQ(t.Error(), ENOENT);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
  // Nothing was created or truncated, so nothing is removed.
  EXPECT_EQ(t.RemoveDestination(), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), "older copy");
  EXPECT_EQ(fake.Count(FakeFileOps::kUnlinkat), 0);
}

TEST_F(FileTransferTest, AnUnreadableSourceFailsAtTheSourceEnd) {
  vt::WriteFile(Src(), "x");
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kOpen, EACCES, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  EXPECT_EQ(t.Open(), -1);
  EXPECT_EQ(t.FailedEnd(), kTransferSource);
  EXPECT_EQ(t.Error(), EACCES);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, AMissingDestinationFolderFailsAtTheDestinationEnd) {
  vt::WriteFile(Src(), "x");
  FakeFileOps fake;
  FileTransfer t(Src(), tree.Path("no/such/folder/dst.bin"), Buffer(4096), 4096);
  EXPECT_EQ(t.Open(), -1);
  EXPECT_EQ(t.FailedEnd(), kTransferDestination);
  EXPECT_EQ(t.Error(), ENOENT);
  EXPECT_EQ(fake.OpenDescriptors(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kClose), 1);  // the source, closed again
}

TEST_F(FileTransferTest, AFifoSourceFailsAtOnceWithoutBlocking) {
  ASSERT_EQ(mkfifo(Src().c_str(), 0644), 0);
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
  // Open runs on a thread of its own: if it blocked, the test would unblock
  // it (a writer on the FIFO) and fail instead of hanging.
  std::atomic<bool> done{false};
  int result = 0;
  std::thread opener([&] {
    result = t.Open();
    done = true;
  });
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  const bool blocked = !done;
  int unblocker = -1;
  if (blocked) unblocker = open(Src().c_str(), O_RDWR | O_NONBLOCK);
  opener.join();
  if (unblocker >= 0) close(unblocker);
  EXPECT_FALSE(blocked) << "Open waited for a writer on the FIFO";
  EXPECT_EQ(result, -1);
  EXPECT_EQ(t.FailedEnd(), kTransferSource);
  EXPECT_EQ(t.Error(), EINVAL);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, AFolderSourceIsRefused) {
  tree.Folder("folder");
  FakeFileOps fake;
  FileTransfer t(tree.Path("folder"), Dst(), Buffer(4096), 4096);
  EXPECT_EQ(t.Open(), -1);
  EXPECT_EQ(t.FailedEnd(), kTransferSource);
  EXPECT_EQ(t.Error(), EISDIR);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileTransferTest, ALinkedSourceIsFollowed) {
  const std::string data = Bytes(777, 19);
  vt::WriteFile(Src(), data);
  tree.Link(Src(), "link.bin");
  FileTransfer t(tree.Path("link.bin"), Dst(), Buffer(4096), 4096);
  ASSERT_EQ(CopyAll(t), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileTransferTest, TheDestructorClosesWhatIsOpenAndRemovesNothing) {
  vt::WriteFile(Src(), Bytes(3 * 4096, 20));
  FakeFileOps fake;
  {
    FileTransfer t(Src(), Dst(), Buffer(4096), 4096);
    ASSERT_EQ(t.Open(), 0);
    ASSERT_EQ(t.ReadChunk(), 4096);
    ASSERT_EQ(t.WriteChunk(), 0);
    EXPECT_EQ(fake.OpenDescriptors(), 2);
  }
  EXPECT_EQ(fake.OpenDescriptors(), 0);
  EXPECT_EQ(SizeOf(Dst()), 4096);
}

TEST_F(FileTransferTest, AStuckReadOnTheWorkerIsAbandonedAndCleanedUpBehindIt) {
  // The engine's way: every step on the worker, the transfer shared with the
  // call. A read that hangs is abandoned; the removal queued behind it runs
  // once the read returns, and leaves nothing behind.
  vt::WriteFile(Src(), Bytes(3 * 4096, 21));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Delay(FakeFileOps::kRead, 300, "*/src.bin", 2);
  auto t = std::make_shared<FileTransfer>(Src(), Dst(), Buffer(4096), 4096);
  {
    IoWorker worker;
    int opened = -1;
    ASSERT_TRUE(worker.Run([t, &opened] { opened = t->Open(); }, [] { return true; }));
    ASSERT_EQ(opened, 0);
    auto n = std::make_shared<std::atomic<ssize_t>>(-5);
    ASSERT_TRUE(worker.Run([t, n] { *n = t->ReadChunk(); }, [] { return true; }));
    ASSERT_EQ(n->load(), 4096);
    ASSERT_TRUE(worker.Run([t] { t->WriteChunk(); }, [] { return true; }));
    // The second read sleeps: the caller gives up after one slice.
    EXPECT_FALSE(worker.Run([t, n] { *n = t->ReadChunk(); }, [] { return false; }, 20));
    EXPECT_TRUE(worker.Busy());
    EXPECT_EQ(n->load(), 4096);  // not yet the second read's result
    auto removed = std::make_shared<std::atomic<int>>(-5);
    int asked = 0;
    EXPECT_TRUE(worker.Run([t, removed] { *removed = t->RemoveDestination(); }, [&asked] {
      ++asked;
      return true;
    }, 20));
    EXPECT_GT(asked, 0);  // waited behind the stuck read
    EXPECT_EQ(removed->load(), 0);
  }
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
  EXPECT_EQ(t->BytesWritten(), 4096);
}

}  // namespace

TEST_F(FileTransferTest, ASourceIsNeverItsOwnDestination) {
  const std::string data = Bytes(10000);
  vt::WriteFile(Src(), data);
  ASSERT_EQ(link(Src().c_str(), tree.Path("hard.bin").c_str()), 0);
  FakeFileOps fake;
  for (const std::string& destination : {Src(), tree.Path("hard.bin")}) {
    FileTransfer t(Src(), destination, Buffer(4096), 4096);
    EXPECT_EQ(t.Open(), -1) << destination;
    EXPECT_EQ(t.FailedEnd(), kTransferDestination);
    EXPECT_EQ(t.Error(), EINVAL);
    EXPECT_EQ(t.RemoveDestination(), 0);
  }
  EXPECT_EQ(vt::ReadFile(Src()), data) << "not truncated, not removed";
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}
