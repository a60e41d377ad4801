// A chunk that cannot be read is salvaged: read again block by block at
// its positions, each failing block tried once more, the blocks that stay
// unreadable zero-filled and recorded, the rest of the file byte-identical,
// the copy going on after the chunk, and a stop taken between blocks.
#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "common/fake_fileops.h"
#include "fileops/FileOpsSeam.h"
#include "fileops/FileTransfer.h"
#include "fileops/IoWorker.h"
#include "common/salvage_support.h"
#include "fileops_test_tree.h"

namespace {

using vt::CopyWithSalvage;
using vt::FakeFileOps;
using vt::Zeroed;

const size_t kChunk = 16384;
const size_t kBlock = 4096;

std::shared_ptr<unsigned char> Buffer(size_t size) {
  return std::shared_ptr<unsigned char>(new unsigned char[size], std::default_delete<unsigned char[]>());
}

std::string Bytes(size_t size, unsigned seed) {
  std::mt19937 gen(seed);
  std::string s(size, '\0');
  for (char& c : s) c = static_cast<char>(gen() & 0xff);
  return s;
}

// The listed calls of that kind on the source (counted from 1) fail with
// EIO.
void FailSource(FakeFileOps& fake, FakeFileOps::Call call, std::initializer_list<int> turns) {
  for (int turn : turns) fake.Fail(call, EIO, "*/src.bin", turn);
}

class FileSalvageTest : public ::testing::Test {
 protected:
  std::string Src() const { return tree.Path("src.bin"); }
  std::string Dst() const { return tree.Path("dst.bin"); }
  vt::ScratchTree tree;
};

TEST_F(FileSalvageTest, ABlockThatStaysUnreadableIsZeroFilledAndRecorded) {
  const std::string data = Bytes(3 * kChunk + 100, 1);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 2);   // the second chunk
  FailSource(fake, FakeFileOps::kPread, {2, 3});  // its second block, and the retry
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 1);
  const std::vector<UnreadableRange> expected = {{static_cast<int64_t>(kChunk + kBlock), kBlock}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(t.UnreadableBytes(), static_cast<int64_t>(kBlock));
  EXPECT_EQ(vt::ReadFile(Dst()), Zeroed(data, expected));
  EXPECT_EQ(t.BytesWritten(), static_cast<int64_t>(data.size()));
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 5);  // four blocks, one retried
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileSalvageTest, ABlockThatReadsOnTheRetryIsNotRecorded) {
  const std::string data = Bytes(2 * kChunk, 2);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 1);
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin", 1);
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 1);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(t.UnreadableBytes(), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 5);
}

TEST_F(FileSalvageTest, AFileWhoseEveryBlockFailsIsAllZerosInOneRange) {
  const std::string data = Bytes(3 * kChunk + 1234, 3);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EIO);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin");
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  // Four chunks salvaged; the read at the end fails too, and the salvage
  // then finds the end of the file.
  ASSERT_EQ(CopyWithSalvage(t), 5);
  const std::vector<UnreadableRange> expected = {{0, static_cast<int64_t>(data.size())}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(t.UnreadableBytes(), static_cast<int64_t>(data.size()));
  EXPECT_EQ(vt::ReadFile(Dst()), std::string(data.size(), '\0'));
  // Every block tried twice: 4 blocks in each of 3 chunks, 1 in the last.
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 2 * (3 * 4 + 1));
}

TEST_F(FileSalvageTest, TheLastChunkIsCutAtTheSourcesSize) {
  const std::string data = Bytes(2 * kChunk + 1000, 4);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 3);
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), static_cast<ssize_t>(kChunk));
  ASSERT_EQ(t.WriteChunk(), 0);
  ASSERT_EQ(t.ReadChunk(), static_cast<ssize_t>(kChunk));
  ASSERT_EQ(t.WriteChunk(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.SalvageChunk(), 1000);
  ASSERT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(t.ReadChunk(), 0);
  ASSERT_EQ(t.Finish(), 0);
  const std::vector<UnreadableRange> expected = {{static_cast<int64_t>(2 * kChunk), 1000}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(vt::ReadFile(Dst()), Zeroed(data, expected));
}

TEST_F(FileSalvageTest, ShortBlockReadsAreReadOnUntilTheBlockIsComplete) {
  const std::string data = Bytes(kChunk + 10, 5);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 1);
  fake.ShortRead(1000, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.SalvageChunk(), static_cast<ssize_t>(kChunk)) << "a whole chunk, not 1000 bytes";
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 4 * 5);  // 4096 bytes in pieces of 1000
  ASSERT_EQ(t.WriteChunk(), 0);
  ssize_t n;
  while ((n = t.ReadChunk()) > 0) ASSERT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(n, 0);
  ASSERT_EQ(t.Finish(), 0);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileSalvageTest, BlocksLieOnMultiplesOfTheBlockSizeInTheFile) {
  // A buffer of 10000 bytes: the second chunk starts at 10000, so its first
  // block ends at 12288 and its last one starts at 16384.
  const size_t buffer = 10000;
  const std::string data = Bytes(3 * buffer, 6);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 2);
  // [10000, 12288): preads 1 and 2; [12288, 16384): 3; [16384, 20000): 4, 5.
  FailSource(fake, FakeFileOps::kPread, {1, 2, 4, 5});
  FileTransfer t(Src(), Dst(), Buffer(buffer), buffer);
  ASSERT_EQ(CopyWithSalvage(t), 1);
  const std::vector<UnreadableRange> expected = {{10000, 12288 - 10000}, {16384, 20000 - 16384}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(t.UnreadableBytes(), 12288 - 10000 + 20000 - 16384);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 5);
  EXPECT_EQ(vt::ReadFile(Dst()), Zeroed(data, expected));
}

TEST_F(FileSalvageTest, TouchingStretchesOfSeveralChunksAreJoined) {
  // The end of chunk 2 and the start of chunk 3 fail: one stretch. A block
  // of chunk 4 fails on its own: a second one.
  const std::string data = Bytes(4 * kChunk, 7);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  FailSource(fake, FakeFileOps::kRead, {2, 3, 4});
  // Chunk 2: preads 1-4, the 4th (its last block) fails twice: 4, 5.
  FailSource(fake, FakeFileOps::kPread, {4, 5});
  // Chunk 3: preads 6-..., its first block fails twice: 6, 7.
  FailSource(fake, FakeFileOps::kPread, {6, 7});
  // Chunk 3 ends with pread 10; chunk 4: preads 11-14, its 3rd block: 13, 14.
  FailSource(fake, FakeFileOps::kPread, {13, 14});
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 3);
  const std::vector<UnreadableRange> expected = {
      {static_cast<int64_t>(2 * kChunk - kBlock), 2 * kBlock},
      {static_cast<int64_t>(3 * kChunk + 2 * kBlock), kBlock}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(t.UnreadableBytes(), static_cast<int64_t>(3 * kBlock));
  EXPECT_EQ(vt::ReadFile(Dst()), Zeroed(data, expected));
}

TEST_F(FileSalvageTest, SequentialReadsGoOnAfterTheSalvagedChunk) {
  // Read rules keep their meaning: the 2nd and the 4th plain read fail, and
  // those are the 2nd and the 4th chunk, each salvaged whole.
  const std::string data = Bytes(5 * kChunk + 3, 8);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  FailSource(fake, FakeFileOps::kRead, {2, 4});
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 2);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(vt::ReadFile(Dst()), data);
  EXPECT_EQ(fake.Count(FakeFileOps::kLseek), 2);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 8);
  // Six chunks: four read, two failed reads; and the read that meets the end.
  EXPECT_EQ(fake.Count(FakeFileOps::kRead), 7);
}

TEST_F(FileSalvageTest, AfterCopyFileRangeFailsTheSalvageTakesOverAtTheRightPlace) {
  // Two chunks moved by copy_file_range, then it fails with EIO (a read
  // error on that path), and so does the read: the salvage reads the third
  // chunk, and read/write goes on after it.
  const std::string data = Bytes(4 * kChunk + 77, 9);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EIO, "*/src.bin", 3);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 1);
  FailSource(fake, FakeFileOps::kPread, {3, 4});
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 1);
  const std::vector<UnreadableRange> expected = {{static_cast<int64_t>(2 * kChunk + 2 * kBlock), kBlock}};
  EXPECT_EQ(t.Unreadable(), expected);
  EXPECT_EQ(vt::ReadFile(Dst()), Zeroed(data, expected));
  EXPECT_EQ(fake.Count(FakeFileOps::kCopyFileRange), 3);
}

TEST_F(FileSalvageTest, AFileThatEndsEarlyEndsTheSalvagedChunkThere) {
  // The source loses its tail after Open: the salvage meets the new end,
  // and the copy ends with what the file still holds.
  const std::string data = Bytes(2 * kChunk, 10);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 2);
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), static_cast<ssize_t>(kChunk));
  ASSERT_EQ(t.WriteChunk(), 0);
  ASSERT_EQ(truncate(Src().c_str(), static_cast<off_t>(kChunk + 5000)), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.SalvageChunk(), 5000);
  ASSERT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(t.ReadChunk(), 0);
  ASSERT_EQ(t.Finish(), 0);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(vt::ReadFile(Dst()), data.substr(0, kChunk + 5000));
}

TEST_F(FileSalvageTest, AFailedReadAtTheEndOfTheFileIsTheEnd) {
  const std::string data = Bytes(kChunk, 11);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 2);
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), static_cast<ssize_t>(kChunk));
  ASSERT_EQ(t.WriteChunk(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.SalvageChunk(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 0);
  ASSERT_EQ(t.Finish(), 0);
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

TEST_F(FileSalvageTest, AStopBeforeTheSalvageKeepsNothing) {
  vt::WriteFile(Src(), Bytes(2 * kChunk, 12));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin");
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  std::atomic<bool> stop{true};
  EXPECT_EQ(t.SalvageChunk(kBlock, &stop), -1);
  EXPECT_EQ(t.Error(), ECANCELED);
  EXPECT_EQ(fake.Count(FakeFileOps::kPread), 0);
  EXPECT_TRUE(t.Unreadable().empty());
  const int writes = fake.Count(FakeFileOps::kWrite);
  EXPECT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kWrite), writes) << "nothing of the chunk is written";
  EXPECT_EQ(t.RemoveDestination(), 0);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileSalvageTest, AStopDuringTheSalvageIsTakenAtTheNextBlock) {
  // Every block read takes 60 ms and fails: 16 blocks, each tried twice,
  // would take about 2 s. The stop comes after 150 ms.
  vt::WriteFile(Src(), Bytes(4 * kChunk, 13));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin");
  fake.Delay(FakeFileOps::kPread, 60, "*/src.bin");
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin");
  auto t = std::make_shared<FileTransfer>(Src(), Dst(), Buffer(4 * kChunk), 4 * kChunk);
  ASSERT_EQ(t->Open(), 0);
  ASSERT_EQ(t->ReadChunk(), -1);
  auto stop = std::make_shared<std::atomic<bool>>(false);
  auto result = std::make_shared<std::atomic<ssize_t>>(-5);
  IoWorker worker;
  const auto start = std::chrono::steady_clock::now();
  int slices = 0;
  // One worker step for the whole salvage; the caller sets the stop as a
  // Cancel click would, and keeps waiting for the step to end.
  EXPECT_TRUE(worker.Run([t, stop, result] { *result = t->SalvageChunk(kBlock, stop.get()); },
                         [&] {
                           ++slices;
                           if (std::chrono::steady_clock::now() - start > std::chrono::milliseconds(150))
                             *stop = true;
                           return true;
                         },
                         10));
  EXPECT_GT(slices, 5) << "the caller's loop ran while the salvage worked";
  EXPECT_EQ(result->load(), -1);
  EXPECT_EQ(t->Error(), ECANCELED);
  // 32 block reads without the stop; it is taken at the next block.
  EXPECT_LT(fake.Count(FakeFileOps::kPread), 8);
  EXPECT_TRUE(t->Unreadable().empty()) << "a stopped chunk records nothing";
  EXPECT_EQ(t->RemoveDestination(), 0);
  EXPECT_FALSE(vt::Exists(Dst()));
  EXPECT_EQ(fake.OpenDescriptors(), 0);
}

TEST_F(FileSalvageTest, AFailingSeekAfterTheChunkFailsTheSalvage) {
  vt::WriteFile(Src(), Bytes(2 * kChunk, 14));
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 1);
  fake.Fail(FakeFileOps::kLseek, EIO, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(t.Open(), 0);
  ASSERT_EQ(t.ReadChunk(), -1);
  EXPECT_EQ(t.SalvageChunk(), -1);
  EXPECT_EQ(t.Error(), EIO);
  const int writes = fake.Count(FakeFileOps::kWrite);
  EXPECT_EQ(t.WriteChunk(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kWrite), writes);
  EXPECT_EQ(t.RemoveDestination(), 0);
}

TEST_F(FileSalvageTest, SalvageNeedsAnOpenTransferAndABlockSize) {
  vt::WriteFile(Src(), Bytes(100, 15));
  FakeFileOps fake;
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  EXPECT_EQ(t.SalvageChunk(), -1);
  EXPECT_EQ(t.Error(), EBADF);
  ASSERT_EQ(t.Open(), 0);
  EXPECT_EQ(t.SalvageChunk(0), -1);
  EXPECT_EQ(t.Error(), EINVAL);
  EXPECT_EQ(t.RemoveDestination(), 0);
}

TEST_F(FileSalvageTest, OpenForgetsTheStretchesOfTheLastCopy) {
  const std::string data = Bytes(kChunk, 16);
  vt::WriteFile(Src(), data);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kCopyFileRange, EXDEV);
  fake.Fail(FakeFileOps::kRead, EIO, "*/src.bin", 1);
  fake.Fail(FakeFileOps::kPread, EIO, "*/src.bin");
  FileTransfer t(Src(), Dst(), Buffer(kChunk), kChunk);
  ASSERT_EQ(CopyWithSalvage(t), 1);
  EXPECT_EQ(t.UnreadableBytes(), static_cast<int64_t>(kChunk));
  fake.ClearRules();
  ASSERT_EQ(CopyWithSalvage(t), 0);
  EXPECT_TRUE(t.Unreadable().empty());
  EXPECT_EQ(vt::ReadFile(Dst()), data);
}

}  // namespace
