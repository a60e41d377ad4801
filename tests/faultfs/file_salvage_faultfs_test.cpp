// Files copied from the fault file system with salvage: the kernel's own
// EIO, served through a real FUSE mount, meets the file transfer's chunk
// reads and its block-by-block salvage. Each copy is checked on disk: the
// unreadable stretches are exactly the injected ones rounded out to 4 KiB
// blocks, zero-filled, every other byte is the source's, and the copy has
// the source's size. Runs in a private mount namespace
// (tests/run-in-mntns.sh).
#include <errno.h>
#include <fcntl.h>
#include <ftw.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "faultfs_test_files.h"
#include "common/fake_fileops.h"
#include "common/salvage_support.h"
#include "faultfs_mount.h"
#include "fileops/FileTransfer.h"

namespace {

using vt::CopyWithSalvage;
using vt::FakeFileOps;
using vt::Zeroed;

const size_t kChunk = 1 << 20;
const int64_t kBlock = 4096;
const size_t kFileSize = 3 * kChunk + kChunk / 2;  // 3.5 MiB

using faultfs_test::Pattern;
using faultfs_test::WriteFile;

// The whole file as the backing side holds it (no faults on that side).
std::string ReadFile(const std::string& path) {
  std::string out;
  int fd = open(path.c_str(), O_RDONLY);
  if (fd < 0) return out;
  char buf[65536];
  ssize_t n;
  while ((n = read(fd, buf, sizeof buf)) > 0) out.append(buf, static_cast<size_t>(n));
  close(fd);
  return out;
}

int64_t SizeOf(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<int64_t>(st.st_size) : -1;
}

std::shared_ptr<unsigned char> Buffer(size_t size) {
  return std::shared_ptr<unsigned char>(new unsigned char[size], std::default_delete<unsigned char[]>());
}

// [from, to) rounded out to whole blocks, cut at the file's size.
UnreadableRange Blocks(int64_t from, int64_t to, int64_t size = kFileSize) {
  const int64_t start = from / kBlock * kBlock;
  const int64_t end = std::min(size, (to + kBlock - 1) / kBlock * kBlock);
  return UnreadableRange{start, end - start};
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) { return remove(path); }

class FaultFsSalvageTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char templ[] = "/tmp/vantori-faultfs-salvage-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(templ));
    top_ = templ;
    backing_ = top_ + "/backing";
    mnt_ = top_ + "/mnt";
    out_ = top_ + "/out";
    ASSERT_EQ(0, mkdir(backing_.c_str(), 0755));
    ASSERT_EQ(0, mkdir(mnt_.c_str(), 0755));
    ASSERT_EQ(0, mkdir(out_.c_str(), 0755));
    data_ = Pattern(kFileSize, 7);
    WriteFile(backing_ + "/big.bin", data_);
  }
  void TearDown() override {
    fs_.reset();
    if (!top_.empty() && !vt::FaultFs::IsFaultFsMountedAt(mnt_))
      nftw(top_.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
  }
  void Mount(const std::string& rules) {
    fs_ = std::make_unique<vt::FaultFs>(backing_, mnt_, rules);
    ASSERT_TRUE(fs_->IsMounted()) << fs_->Error();
  }
  std::string Source() const { return mnt_ + "/big.bin"; }
  std::string Copy() const { return out_ + "/big.bin"; }

  // Copies big.bin from the mount with salvage; checks the copy on disk
  // against the expected stretches. The number of salvaged chunks.
  int CopyAndCheck(const std::vector<UnreadableRange>& expected) {
    FileTransfer t(Source(), Copy(), Buffer(kChunk), kChunk);
    const int salvaged = CopyWithSalvage(t);
    EXPECT_GE(salvaged, 0) << "error " << t.Error() << "; log:\n" << fs_->Log();
    EXPECT_EQ(t.Unreadable(), expected);
    int64_t bytes = 0;
    for (const UnreadableRange& r : expected) bytes += r.length;
    EXPECT_EQ(t.UnreadableBytes(), bytes);
    EXPECT_EQ(SizeOf(Copy()), static_cast<int64_t>(kFileSize));
    EXPECT_EQ(t.BytesWritten(), static_cast<int64_t>(kFileSize));
    // Compared without printing 3.5 MiB on a mismatch.
    const std::string copied = ReadFile(Copy());
    EXPECT_TRUE(copied == Zeroed(data_, expected)) << "the copy's bytes differ";
    return salvaged;
  }

  std::string top_, backing_, mnt_, out_, data_;
  std::unique_ptr<vt::FaultFs> fs_;
};

TEST_F(FaultFsSalvageTest, ACleanFileCopiesWholeAcrossFileSystems) {
  // No fault: the chunk reads alone copy it. copy_file_range from a FUSE
  // file to another file system is refused once; read/write takes over.
  ASSERT_NO_FATAL_FAILURE(Mount(""));
  FakeFileOps fake;
  EXPECT_EQ(CopyAndCheck({}), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kCopyFileRange), 1);
  EXPECT_GT(fake.Count(FakeFileOps::kRead), 3);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 0);
}

TEST_F(FaultFsSalvageTest, EioInTheFirstChunk) {
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 8K-12K\n"));
  EXPECT_EQ(CopyAndCheck({Blocks(8192, 12288)}), 1);
  EXPECT_TRUE(fs_->WaitForLog("injected EIO", 0)) << fs_->Log();
}

TEST_F(FaultFsSalvageTest, EioInAMiddleChunkRoundedOutToBlocks) {
  // 1600000-1610000 lies in the second chunk and touches blocks 390 to 393.
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 1600000-1610000\n"));
  const UnreadableRange expected = Blocks(1600000, 1610000);
  EXPECT_EQ(expected.offset, 390 * kBlock);
  EXPECT_EQ(expected.length, 4 * kBlock);
  EXPECT_EQ(CopyAndCheck({expected}), 1);
}

TEST_F(FaultFsSalvageTest, EioInTheLastChunkUpToTheEnd) {
  // From 3600000 to the end of the file: the read at the end fails as well,
  // and the salvage then finds the end.
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 3600000-\n"));
  EXPECT_GE(CopyAndCheck({Blocks(3600000, kFileSize)}), 1);
}

TEST_F(FaultFsSalvageTest, EioInSeveralChunks) {
  ASSERT_NO_FATAL_FAILURE(Mount(
      "big.bin read-eio 0-1\n"
      "big.bin read-eio 1048576-1048577\n"
      "big.bin read-eio 2199552-2209792\n"
      "big.bin read-eio 3670015-3670016\n"));
  EXPECT_EQ(CopyAndCheck({Blocks(0, 1), Blocks(1 << 20, (1 << 20) + 1),
                          Blocks((2 << 20) + 100 * 1024, (2 << 20) + 110 * 1024),
                          Blocks(kFileSize - 1, kFileSize)}),
            4);
}

TEST_F(FaultFsSalvageTest, EioOnEveryBlock) {
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 0-\n"));
  EXPECT_GE(CopyAndCheck({{0, static_cast<int64_t>(kFileSize)}}), 4);
}

TEST_F(FaultFsSalvageTest, ATransientEioIsOvercomeByTheRetry) {
  // Two faults at 2M+4K (2101248): the chunk read, then the block's first salvage
  // read. The retry reads it: the copy is complete and nothing is reported.
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 2101248-2105344 times 2\n"));
  FakeFileOps fake;
  EXPECT_EQ(CopyAndCheck({}), 1);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 256 + 1) << "one chunk of 4 KiB blocks, one retried";
  EXPECT_TRUE(fs_->WaitForLog("read of big.bin at 2101248 size 4096: injected EIO", 0)) << fs_->Log();
}

TEST_F(FaultFsSalvageTest, ADestinationOnTheSameFaultFileSystem) {
  // A fault at 1M+8K. Source and copy on the one FUSE mount: whatever copy_file_range does
  // there (refused, or copied in the kernel until it meets the EIO), the
  // result is the same.
  ASSERT_EQ(0, mkdir((backing_ + "/out").c_str(), 0755));
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 1056768-1057792\n"));
  const std::string copy = mnt_ + "/out/big.bin";
  FakeFileOps fake;
  FileTransfer t(Source(), copy, Buffer(kChunk), kChunk);
  EXPECT_EQ(CopyWithSalvage(t), 1) << t.Error() << "\n" << fs_->Log();
  // Which way the chunks went on this kernel, for the record.
  std::printf("copy_file_range calls %d, reads %d, positioned reads %d\n",
              fake.Count(FakeFileOps::kCopyFileRange), fake.Count(FakeFileOps::kRead),
              fake.Count(FakeFileOps::kPread));
  const std::vector<UnreadableRange> expected = {Blocks((1 << 20) + 8192, (1 << 20) + 9216)};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(SizeOf(backing_ + "/out/big.bin"), static_cast<int64_t>(kFileSize));
  EXPECT_TRUE(ReadFile(backing_ + "/out/big.bin") == Zeroed(data_, expected));
}

TEST_F(FaultFsSalvageTest, AStopIsTakenBetweenSlowFailingBlocks) {
  // Every read fails after 0.1 s: a whole chunk would take 51 s (256 blocks,
  // each tried twice). The stop comes after 0.3 s and is taken at the next
  // block.
  ASSERT_NO_FATAL_FAILURE(Mount("big.bin read-eio 0-\nbig.bin read-sleep 0.1\n"));
  FileTransfer t(Source(), Copy(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.Error(), EIO);
  std::atomic<bool> stop{false};
  std::thread stopper([&stop] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stop = true;
  });
  const ssize_t n = t.SalvageChunk(4096, &stop);
  stopper.join();
  // Without the stop the salvage would end after all 512 block reads with
  // the chunk (zeros); ECANCELED says it ended at a block.
  EXPECT_EQ(n, -1);
  EXPECT_EQ(t.Error(), ECANCELED);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(t.RemoveDestination(), 0);
  EXPECT_EQ(SizeOf(Copy()), -1) << "no partial copy stays";
}

}  // namespace
