// Copying with the progress dialog never leaves a destination file that
// looks complete and is not: a full destination, Cancel and the close box at
// seeded random points, a read that hangs while the window stays alive, a
// chunk that stays unreadable, links that loop or point nowhere, a
// destination named with shell characters, Cancel while the job is
// collected, and the host window closed in the middle of a copy. Source and destination are tmpfs
// file systems of the test's own inside the private /mnt.
#include "copy_safety_env.h"

#include <gtest/gtest.h>

#include <wx/dcclient.h>
#include <wx/weakref.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <random>

#include "destination_env.h"
#include "frame_on_volumes_env.h"

using vt::Entries;
using vt::IsFile;
using vt::ReadFile;

namespace {

const size_t kMiB = 1024 * 1024;

bool Present(const std::string& path) {
  struct stat64 st;
  return lstat64(path.c_str(), &st) == 0;
}

// Every entry below dest has its like below source: a folder as a folder, a
// file byte for byte (so never a truncated one). Returns the files found.
int ExpectWholeOrAbsent(const std::string& source, const std::string& dest) {
  int files = 0;
  const auto from = Entries(source);
  for (const auto& e : Entries(dest)) {
    auto s = from.find(e.first);
    if (s == from.end()) {
      ADD_FAILURE() << "not in the source: " << e.first;
      continue;
    }
    EXPECT_EQ(e.second, s->second) << e.first;
    if (e.second != 'f') continue;
    ++files;
    const std::string a = ReadFile(source + "/" + e.first), b = ReadFile(dest + "/" + e.first);
    EXPECT_TRUE(a == b) << e.first << ": " << b.size() << " of " << a.size() << " bytes, "
                        << (a.compare(0, b.size(), b) == 0 ? "a truncated copy" : "other bytes");
  }
  return files;
}

// Every entry below source is below dest too, files byte for byte and with
// their modification times.
void ExpectWholeCopy(const std::string& source, const std::string& dest) {
  const auto to = Entries(dest);
  for (const auto& e : Entries(source)) {
    auto d = to.find(e.first);
    if (d == to.end()) {
      ADD_FAILURE() << "not copied: " << e.first;
      continue;
    }
    EXPECT_EQ(d->second, e.second) << e.first;
    if (e.second != 'f') continue;
    EXPECT_TRUE(ReadFile(source + "/" + e.first) == ReadFile(dest + "/" + e.first)) << e.first;
    struct stat64 s, t;
    ASSERT_EQ(stat64((source + "/" + e.first).c_str(), &s), 0);
    ASSERT_EQ(stat64((dest + "/" + e.first).c_str(), &t), 0);
    EXPECT_EQ(t.st_mtim.tv_sec, s.st_mtim.tv_sec) << e.first << ": modification time";
    EXPECT_EQ(t.st_mtim.tv_nsec, s.st_mtim.tv_nsec) << e.first << ": modification time";
  }
  EXPECT_EQ(to.size(), Entries(source).size());
}

// A file of `bytes` varied bytes, dated in 2001 (so a copy that does not
// carry the time over shows).
void MakeFile(const std::string& path, size_t bytes, uint64_t seed) {
  vt::WriteFile(path, vt::PatternBytes(bytes, static_cast<unsigned>(seed)));
  const struct timespec times[2] = {{1000000000 + static_cast<time_t>(seed), 0},
                                    {1000000000 + static_cast<time_t>(seed), 123456789}};
  utimensat(AT_FDCWD, path.c_str(), times, 0);
}

// About 300 files in nested folders: empty ones, small ones, some of one
// chunk and around it, some of two and three chunks. Returns the top names.
std::vector<std::string> MakeJob(const std::string& root) {
  mkdir(root.c_str(), 0755);
  std::mt19937 rng(7);
  std::vector<std::string> folders = {""};
  for (int d = 0; d < 5; ++d) {
    const std::string top = "d" + std::to_string(d);
    folders.push_back(top);
    for (int s = 0; s < 3; ++s) {
      folders.push_back(top + "/s" + std::to_string(s));
      if (s == 0) folders.push_back(top + "/s0/deep");
    }
  }
  for (const std::string& f : folders)
    if (!f.empty()) mkdir((root + "/" + f).c_str(), 0755);
  mkdir((root + "/empty folder").c_str(), 0755);
  for (int i = 0; i < 300; ++i) {
    const int kind = static_cast<int>(rng() % 100);
    size_t bytes;
    if (kind < 5) bytes = 0;
    else if (kind < 62) bytes = rng() % 5000;
    else if (kind < 89) bytes = 4096 + rng() % 200000;
    else if (kind < 96) bytes = kMiB - 1 + rng() % 3;
    else bytes = 2 * kMiB + rng() % kMiB;
    const std::string& folder = folders[rng() % folders.size()];
    MakeFile(root + "/" + (folder.empty() ? "" : folder + "/") + "f" + std::to_string(i) + ".dat",
             bytes, static_cast<uint64_t>(i) + 1);
  }
  std::vector<std::string> top;
  for (const auto& e : Entries(root))
    if (e.first.find('/') == std::string::npos) top.push_back(e.first);
  return top;
}

// The selection `names` of `folder`, to be copied into `dest`; as the copy
// command does, the selected folders are created in the destination first
// (the job holds only what lies below them).
void ListSource(const std::string& folder, const std::vector<std::string>& names,
                const std::string& dest) {
  struct stat64 st;
  for (const std::string& name : names)
    if (stat64((folder + "/" + name).c_str(), &st) == 0 && S_ISDIR(st.st_mode))
      mkdir((dest + "/" + name).c_str(), 0755);
  g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(folder + "/");
  g_Des_PathInfo.m_sourceItems.Clear();
  for (const std::string& name : names) g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8(name));
  g_Des_PathInfo.m_destPath = wxString::FromUTF8(dest + "/");
  g_Des_PathInfo.m_result = DES_RESULT_OK;
}

void TreeSource(const std::string& folder, const std::string& dest) {
  g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(folder);
  g_Des_PathInfo.m_sourceItems.Clear();
  g_Des_PathInfo.m_destPath = wxString::FromUTF8(dest);
  g_Des_PathInfo.m_result = DES_RESULT_OK;
}

// A folder below /mnt/S holding a small file, a big one and another small
// one, the three selected in that order for a copy into /mnt/T/to.
void SmallBigSmall(const std::string& folder, const std::string& first, const std::string& big,
                   size_t bigBytes, const std::string& last) {
  const std::string from = "/mnt/S/" + folder;
  mkdir(from.c_str(), 0755);
  MakeFile(from + "/" + first, 4000, 1);
  MakeFile(from + "/" + big, bigBytes, 2);
  MakeFile(from + "/" + last, 4000, 3);
  mkdir("/mnt/T/to", 0755);
  ListSource(from, {first, big, last}, "/mnt/T/to");
}

bool HasProblem(const CopyOutcome& outcome, int kind, const std::string& path) {
  for (const CopyProblem& p : outcome.problems)
    if (p.kind == kind && p.path == path) return true;
  return false;
}

std::string Problems(const CopyOutcome& outcome) {
  std::string s;
  for (const CopyProblem& p : outcome.problems)
    s += std::to_string(p.kind) + " " + p.path + " (" + std::to_string(p.error) + "); ";
  return s;
}

// The run ended the way every ending must: dialog gone, parent enabled
// again (and disabled while the job ran), the answer reset, 1401 posted.
void ExpectClosedProperly(const vt::CopyRun& run) {
  EXPECT_TRUE(run.dialogGone);
  EXPECT_TRUE(run.parentDisabledDuring);
  EXPECT_TRUE(run.parentEnabled);
  EXPECT_EQ(run.answerAfter, COPY_ANSWER_NONE);
  EXPECT_EQ(run.posted1401, 1);
}

// Source on /mnt/S, destination on /mnt/T: two tmpfs file systems of the
// test's own, a shown window as the progress dialog's parent.
class CopySafetyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    source.reset(new vt::OwnTmpfs("/mnt/S", "size=96m"));
    ASSERT_TRUE(source->Ok()) << "mount /mnt/S: " << source->Error();
    owner = new wxFrame(nullptr, wxID_ANY, "owner", wxPoint(0, 0), wxSize(800, 600));
    owner->Show();
    ASSERT_TRUE(vt::PumpUntil([&] { return owner->IsShownOnScreen(); }));
  }
  void TearDown() override {
    vt::PumpUntil([] { return vt::AnyCopyDialog() == nullptr; });
    if (owner != nullptr) owner->Destroy();
    vt::Pump(30);
    dest.reset();
    source.reset();
  }
  void MountDest(const std::string& options) {
    dest.reset(new vt::OwnTmpfs("/mnt/T", options));
    ASSERT_TRUE(dest->Ok()) << "mount /mnt/T: " << dest->Error();
  }
  // About 300 files (MakeJob) copied whole once, every file and its time
  // checked; then from scratch again for each seed, with `stop` run at a
  // random read of the sources (seeded): each run must end with 10, leave
  // every destination file whole or absent and every descriptor closed.
  // Returns the files found after each stopped run.
  std::vector<int> StopAtRandomReads(unsigned firstSeed, unsigned lastSeed,
                                     const std::function<void(bool* stayed)>& stop) {
    std::vector<int> copied;
    MountDest("size=96m");
    const std::vector<std::string> names = MakeJob("/mnt/S/job");
    EXPECT_GE(names.size(), 6u);
    vt::FakeFileOps files;
    vt::SourceReadTap tap;
    mkdir("/mnt/T/out", 0755);
    ListSource("/mnt/S/job", names, "/mnt/T/out");
    tap.ActAt(0, nullptr);
    vt::CopyRun whole = vt::CopyWithDialog(owner);
    EXPECT_EQ(whole.outcome.result, 1);
    EXPECT_TRUE(whole.outcome.problems.empty()) << Problems(whole.outcome);
    ExpectClosedProperly(whole);
    ExpectWholeCopy("/mnt/S/job", "/mnt/T/out");
    const int reads = tap.reads;
    EXPECT_GT(reads, 300);
    EXPECT_EQ(files.OpenDescriptors(), 0);
    if (reads < 2) return copied;
    for (unsigned seed = firstSeed; seed <= lastSeed; ++seed) {
      std::mt19937 rng(seed);
      // Any read but the very last (the end of the last file, after which
      // no chunk is left to take the cancel).
      const int at = std::uniform_int_distribution<int>(1, reads - 1)(rng);
      SCOPED_TRACE("seed " + std::to_string(seed) + ", stopped at read " + std::to_string(at));
      vt::RemoveTree("/mnt/T/out");
      mkdir("/mnt/T/out", 0755);
      ListSource("/mnt/S/job", names, "/mnt/T/out");
      bool stayed = false;
      tap.ActAt(at, [&] { stop(&stayed); });
      vt::CopyRun run = vt::CopyWithDialog(owner);
      EXPECT_TRUE(tap.acted);
      EXPECT_TRUE(stayed) << "the dialog stays until the job has stopped";
      EXPECT_EQ(run.outcome.result, 10);
      ExpectClosedProperly(run);
      copied.push_back(ExpectWholeOrAbsent("/mnt/S/job", "/mnt/T/out"));
      EXPECT_TRUE(vt::PumpUntil([&] { return files.OpenDescriptors() == 0; }));
      EXPECT_EQ(files.OpenFolders(), 0);
    }
    tap.ActAt(0, nullptr);
    return copied;
  }

  // a.txt, bad.bin (2 MiB and 500 bytes) and z.txt copied while the second
  // chunk of bad.bin cannot be read and every `failing` call on it fails
  // with EIO; the copy must go on to z.txt and end with 1.
  vt::CopyRun CopyWithUnreadableChunk(vt::FakeFileOps::Call failing) {
    MountDest("size=32m");
    SmallBigSmall("rd", "a.txt", "bad.bin", 2 * kMiB + 500, "z.txt");
    vt::FakeFileOps files;
    files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV, "*/bad.bin");
    files.Fail(vt::FakeFileOps::kRead, EIO, "*/bad.bin", 2);
    files.Fail(failing, EIO, "*/bad.bin");
    vt::CopyRun run = vt::CopyWithDialog(owner);
    EXPECT_EQ(run.outcome.result, 1);
    ExpectClosedProperly(run);
    EXPECT_TRUE(ReadFile("/mnt/S/rd/a.txt") == ReadFile("/mnt/T/to/a.txt"));
    EXPECT_TRUE(ReadFile("/mnt/S/rd/z.txt") == ReadFile("/mnt/T/to/z.txt"));
    EXPECT_EQ(files.OpenDescriptors(), 0);
    return run;
  }

  std::unique_ptr<vt::OwnTmpfs> source, dest;
  wxFrame* owner = nullptr;
};

// The disk-full message box: records it, and whether the partial file was
// still there when the user saw the message.
class DiskFullSeen : public MessageSeen {
 public:
  DiskFullSeen(vt::SeenBox* seen, std::string partial, int* partialThere)
      : MessageSeen(seen), m_partial(std::move(partial)), m_partialThere(partialThere) {}

 protected:
  int OnInvoked(wxMessageDialog* dlg) const override {
    *m_partialThere = Present(m_partial) ? 1 : 0;
    return MessageSeen::OnInvoked(dlg);
  }

 private:
  std::string m_partial;
  int* m_partialThere;
};

}  // namespace

TEST_F(CopySafetyTest, FullDestinationStopsWithTheMessageAndLeavesNoPartialFile) {
  MountDest("size=4m");
  mkdir("/mnt/S/full", 0755);
  for (int i = 1; i <= 3; ++i) MakeFile("/mnt/S/full/f" + std::to_string(i), kMiB, i);
  MakeFile("/mnt/S/full/big", 3 * kMiB, 4);  // the fourth MiB fills the 4 MiB file system
  MakeFile("/mnt/S/full/after", 1000, 5);
  mkdir("/mnt/T/to", 0755);
  ListSource("/mnt/S/full", {"f1", "f2", "f3", "big", "after"}, "/mnt/T/to");
  vt::FakeFileOps files;
  vt::SeenBox seen;
  int partialThere = -1;
  vt::CopyRun run;
  wxTEST_DIALOG(run = vt::CopyWithDialog(owner),
                DiskFullSeen(&seen, "/mnt/T/to/big", &partialThere));
  EXPECT_EQ(seen.count, 1);
  EXPECT_EQ(seen.message, "Copy file error! The disk is full!");
  EXPECT_EQ(seen.caption, "copying error");
  EXPECT_EQ(partialThere, 0) << "the partial file is removed before the message";
  EXPECT_EQ(run.outcome.result, -1);
  ExpectClosedProperly(run);
  EXPECT_FALSE(Present("/mnt/T/to/big"));
  EXPECT_FALSE(Present("/mnt/T/to/after")) << "nothing after the full disk is started";
  for (int i = 1; i <= 3; ++i) {
    const std::string name = "f" + std::to_string(i);
    EXPECT_TRUE(ReadFile("/mnt/S/full/" + name) == ReadFile("/mnt/T/to/" + name)) << name;
  }
  EXPECT_EQ(Entries("/mnt/T/to").size(), 3u);
  EXPECT_EQ(files.OpenDescriptors(), 0);
  // Collecting looked at it; copying never opened it.
  for (const std::string& call : files.Calls())
    if (call.rfind("open ", 0) == 0 || call.rfind("openat ", 0) == 0)
      EXPECT_EQ(call.find("/after"), std::string::npos) << call;
}

TEST_F(CopySafetyTest, CancelAtRandomPointsLeavesEveryFileWholeOrAbsent) {
  const std::vector<int> copied = StopAtRandomReads(1, 24, [](bool* stayed) {
    vt::PressCopyCancel();
    *stayed = true;
  });
  ASSERT_EQ(copied.size(), 24u);
  // The points spread over the job: some early, some late.
  EXPECT_LT(*std::min_element(copied.begin(), copied.end()), 100);
  EXPECT_GT(*std::max_element(copied.begin(), copied.end()), 200);
}

TEST_F(CopySafetyTest, CloseBoxAtRandomPointsActsLikeCancel) {
  // What the window manager's close box sends; the dialog stays until the
  // job has stopped.
  const std::vector<int> copied = StopAtRandomReads(101, 104, [](bool* stayed) {
    my_dialog_gauge* d = vt::OpenGauge();
    if (d == nullptr) return;
    d->Close();
    *stayed = !d->IsBeingDeleted() && d->IsShown() && d->m_cancel;
  });
  EXPECT_EQ(copied.size(), 4u);
}

TEST_F(CopySafetyTest, HangingReadKeepsTheDialogAliveAndCancelEndsTheCopyBeforeTheReadReturns) {
  MountDest("size=32m");
  SmallBigSmall("blk", "first.txt", "slow.bin", 3 * kMiB, "last.txt");
  using Clock = std::chrono::steady_clock;
  vt::CopyRun run;
  bool slowAtReturn = false, partialAtReturn = true;
  int ticksDuringRead = 0, paints = 0, paintsAtRefresh = -1;
  bool repaintedDuringRead = false, pressed = false;
  Clock::time_point pressedAt;
  {
    vt::FakeFileOps files;
    // Where the kernel would move the chunks itself, it is told it cannot:
    // the chunk goes through read, which hangs as on a failing disk.
    files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV, "*/slow.bin");
    files.Delay(vt::FakeFileOps::kRead, 5000, "*/slow.bin", 1);
    vt::SourceReadTap tap;
    tap.TimeReadsOf("/slow.bin");
    wxWeakRef<my_dialog_gauge> watched;
    vt::TimerCall during(10, [&] {
      if (!tap.slowBegan || tap.slowReturned || pressed) return;
      ++ticksDuringRead;
      my_dialog_gauge* d = vt::OpenGauge();
      if (d == nullptr) return;
      if (!watched) {
        watched = d;
        d->Bind(wxEVT_PAINT, [&paints](wxPaintEvent& e) {
          ++paints;
          e.Skip();
        });
      }
      const auto inRead = Clock::now() - tap.slowBeganAt;
      if (paintsAtRefresh < 0 && inRead > std::chrono::milliseconds(200)) {
        paintsAtRefresh = paints;
        d->Refresh();
      } else if (paintsAtRefresh >= 0 &&
                 (paints > paintsAtRefresh || inRead > std::chrono::milliseconds(2500))) {
        repaintedDuringRead = paints > paintsAtRefresh && !tap.slowReturned;
        pressed = true;
        pressedAt = Clock::now();
        vt::PressCopyCancel();
      }
    });
    run = vt::CopyWithDialog(owner);
    slowAtReturn = tap.slowReturned;
    partialAtReturn = Present("/mnt/T/to/slow.bin");
    // The hanging read comes back after its 5 s; what the worker still does
    // with it then must not touch the destination.
    EXPECT_TRUE(vt::PumpUntil([&] { return tap.slowReturned.load(); }, 10000));
    EXPECT_TRUE(vt::PumpUntil([&] { return files.OpenDescriptors() == 0; }, 5000));
    vt::Pump(100);
    EXPECT_TRUE(tap.slowBegan);
    EXPECT_TRUE(pressed);
    if (tap.slowReturned && pressed) {
      EXPECT_LT(run.returned, tap.slowReturnedAt) << "the copy ended before the read returned";
      printf("Cancel taken %lld ms after the click; the read returned %lld ms after the copy\n",
             static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                        run.returned - pressedAt).count()),
             static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                        tap.slowReturnedAt - run.returned).count()));
    }
    for (const std::string& call : files.Calls())
      if (call.rfind("open ", 0) == 0 || call.rfind("openat ", 0) == 0)
        EXPECT_EQ(call.find("last.txt"), std::string::npos) << call;
  }
  EXPECT_FALSE(slowAtReturn) << "the read had not returned when the copy ended";
  EXPECT_GT(ticksDuringRead, 3) << "the event loop ran while the read hung";
  EXPECT_TRUE(repaintedDuringRead) << "the dialog repainted while the read hung";
  EXPECT_EQ(run.outcome.result, 10);
  ExpectClosedProperly(run);
  EXPECT_FALSE(partialAtReturn) << "the partial file was removed when the copy ended";
  EXPECT_FALSE(Present("/mnt/T/to/slow.bin"));
  EXPECT_FALSE(Present("/mnt/T/to/last.txt"));
  EXPECT_TRUE(ReadFile("/mnt/S/blk/first.txt") == ReadFile("/mnt/T/to/first.txt"));
  EXPECT_EQ(Entries("/mnt/T/to").size(), 1u);
}

TEST_F(CopySafetyTest, ChunkThatStaysUnreadableBecomesZerosIsRecordedAndTheCopyGoesOn) {
  // No block of the chunk can be read again either.
  const vt::CopyRun run = CopyWithUnreadableChunk(vt::FakeFileOps::kPread);
  // Whole size, the readable chunks as they are, the unreadable one zeros:
  // never a short file that looks complete.
  const std::string source = ReadFile("/mnt/S/rd/bad.bin");
  const std::string copied = ReadFile("/mnt/T/to/bad.bin");
  ASSERT_EQ(copied.size(), source.size());
  EXPECT_TRUE(copied.compare(0, kMiB, source, 0, kMiB) == 0);
  EXPECT_TRUE(copied.compare(kMiB, kMiB, std::string(kMiB, '\0')) == 0);
  EXPECT_TRUE(copied.compare(2 * kMiB, 500, source, 2 * kMiB, 500) == 0);
  ASSERT_EQ(run.outcome.problems.size(), 1u) << Problems(run.outcome);
  const CopyProblem& damage = run.outcome.problems[0];
  EXPECT_EQ(damage.kind, kCopySalvaged);
  EXPECT_EQ(damage.path, "/mnt/S/rd/bad.bin");
  EXPECT_EQ(damage.unreadableBytes, static_cast<int64_t>(kMiB));
  ASSERT_EQ(damage.unreadable.size(), 1u);
  EXPECT_EQ(damage.unreadable[0].offset, static_cast<int64_t>(kMiB));
  EXPECT_EQ(damage.unreadable[0].length, static_cast<int64_t>(kMiB));
}

TEST_F(CopySafetyTest, SourceThatCannotBeReadAtAllLeavesNoPartialFileAndTheCopyGoesOn) {
  // The salvage cannot even find its place in the file.
  const vt::CopyRun run = CopyWithUnreadableChunk(vt::FakeFileOps::kLseek);
  EXPECT_FALSE(Present("/mnt/T/to/bad.bin")) << "one chunk had been written";
  EXPECT_TRUE(HasProblem(run.outcome, kCopyReadFailed, "/mnt/S/rd/bad.bin"))
      << Problems(run.outcome);
  EXPECT_EQ(run.outcome.problems.size(), 1u) << Problems(run.outcome);
}

TEST_F(CopySafetyTest, LinkLoopIsNotEnteredAndADanglingLinkIsSkipped) {
  MountDest("size=32m");
  mkdir("/mnt/S/tree", 0755);
  mkdir("/mnt/S/tree/a", 0755);
  mkdir("/mnt/S/tree/a/b", 0755);
  mkdir("/mnt/S/tree/c", 0755);
  mkdir("/mnt/S/tree/.hidden", 0755);
  MakeFile("/mnt/S/tree/top.txt", 100, 1);
  MakeFile("/mnt/S/tree/a/one.txt", 2000, 2);
  MakeFile("/mnt/S/tree/a/b/two.bin", kMiB + kMiB / 2, 3);
  MakeFile("/mnt/S/tree/c/three.txt", 300, 4);
  MakeFile("/mnt/S/tree/.hidden/h.txt", 10, 5);
  ASSERT_EQ(symlink("../..", "/mnt/S/tree/a/b/loop"), 0);       // the source folder itself
  ASSERT_EQ(symlink("..", "/mnt/S/tree/a/b/up"), 0);            // a/, its parent
  ASSERT_EQ(symlink("no such file", "/mnt/S/tree/a/gone"), 0);  // points nowhere
  ASSERT_EQ(symlink("../c", "/mnt/S/tree/a/peer"), 0);          // a folder beside: followed
  ASSERT_EQ(symlink("../top.txt", "/mnt/S/tree/a/alias.txt"), 0);  // a file: followed
  mkdir("/mnt/T/tree", 0755);
  TreeSource("/mnt/S/tree", "/mnt/T/tree");
  vt::FakeFileOps files;
  vt::CopyRun run = vt::CopyWithDialog(owner);
  EXPECT_EQ(run.outcome.result, 1) << Problems(run.outcome);
  ExpectClosedProperly(run);
  const auto copied = Entries("/mnt/T/tree");
  const std::map<std::string, std::string> expected = {
      {"top.txt", "top.txt"},           {"a/one.txt", "a/one.txt"},
      {"a/b/two.bin", "a/b/two.bin"},   {"c/three.txt", "c/three.txt"},
      {".hidden/h.txt", ".hidden/h.txt"}, {"a/peer/three.txt", "c/three.txt"},
      {"a/alias.txt", "top.txt"}};
  for (const auto& e : expected) {
    ASSERT_TRUE(IsFile("/mnt/T/tree/" + e.first)) << e.first;
    EXPECT_TRUE(ReadFile("/mnt/S/tree/" + e.second) == ReadFile("/mnt/T/tree/" + e.first))
        << e.first;
  }
  for (const auto& e : copied) {
    EXPECT_NE(e.first.rfind("a/b/loop/", 0), 0u) << "entered the loop: " << e.first;
    EXPECT_NE(e.first.rfind("a/b/up/", 0), 0u) << "entered the loop: " << e.first;
    EXPECT_NE(e.second, 'l') << "a link in the destination: " << e.first;
    if (e.second == 'f') EXPECT_EQ(expected.count(e.first), 1u) << "unexpected: " << e.first;
  }
  EXPECT_FALSE(IsFile("/mnt/T/tree/a/b/loop"));
  EXPECT_FALSE(Present("/mnt/T/tree/a/gone"));
  EXPECT_LT(copied.size(), 20u) << "no ever-deepening folders";
  EXPECT_TRUE(HasProblem(run.outcome, kCopyLoopSkipped, "/mnt/S/tree/a/b/loop"))
      << Problems(run.outcome);
  EXPECT_TRUE(HasProblem(run.outcome, kCopyLoopSkipped, "/mnt/S/tree/a/b/up"))
      << Problems(run.outcome);
  EXPECT_TRUE(HasProblem(run.outcome, kCopyLinkDangles, "/mnt/S/tree/a/gone"))
      << Problems(run.outcome);
  EXPECT_EQ(run.outcome.problems.size(), 3u) << Problems(run.outcome);
  EXPECT_EQ(run.outcome.itemCount, 7);
  EXPECT_EQ(files.OpenFolders(), 0);
  EXPECT_EQ(files.OpenDescriptors(), 0);
}

TEST_F(CopySafetyTest, CancelRemovesOnlyThePartialFileOfADestinationNamedWithShellCharacters) {
  MountDest("size=32m");
  mkdir("/mnt/S/sh", 0755);
  MakeFile("/mnt/S/sh/big.bin", 3 * kMiB, 1);
  const std::string folder = "/mnt/T/a $HOME (x)";
  mkdir(folder.c_str(), 0755);
  vt::WriteFile(folder + "/keep.txt", "kept");
  vt::WriteFile("/mnt/T/a", "a sibling whose name starts the folder's");
  mkdir("/mnt/T/a (x)", 0755);
  vt::WriteFile("/mnt/T/a (x)/big.bin", "not the partial file");
  ListSource("/mnt/S/sh", {"big.bin"}, folder);
  vt::FakeFileOps files;
  files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV, "*/big.bin");
  vt::SourceReadTap tap;
  // The third read: at least one chunk is in the destination file.
  tap.ActAt(3, vt::PressCopyCancel, "/big.bin");
  vt::CopyRun run = vt::CopyWithDialog(owner);
  EXPECT_TRUE(tap.acted);
  EXPECT_EQ(run.outcome.result, 10);
  ExpectClosedProperly(run);
  EXPECT_FALSE(Present(folder + "/big.bin"));
  EXPECT_EQ(ReadFile(folder + "/keep.txt"), "kept");
  EXPECT_EQ(ReadFile("/mnt/T/a"), "a sibling whose name starts the folder's");
  EXPECT_EQ(ReadFile("/mnt/T/a (x)/big.bin"), "not the partial file");
  EXPECT_EQ(Entries("/mnt/T").size(), 5u);
  std::vector<std::string> removals;
  for (const std::string& call : files.Calls())
    if (call.rfind("unlinkat ", 0) == 0) removals.push_back(call);
  // Removed by name in-process (maybe tried again when its descriptors
  // close); nothing else is named.
  ASSERT_FALSE(removals.empty());
  for (const std::string& removal : removals)
    EXPECT_EQ(removal, "unlinkat /mnt/T/a $HOME (x)/big.bin");
  EXPECT_EQ(run.output.find("rm -f"), std::string::npos);
  EXPECT_TRUE(vt::PumpUntil([&] { return files.OpenDescriptors() == 0; }));
}

namespace {

// The progress dialog over the main frame with the test volumes (the
// inventory's free-space texts are refreshed when the dialog goes).
class CopyOverMainFrameTest : public vt::FrameOnTestVolumes {
 protected:
  void SetUp() override {
    vt::FrameOnTestVolumes::SetUp();
    if (HasFatalFailure()) return;
    source.reset(new vt::OwnTmpfs("/mnt/S", "size=64m"));
    ASSERT_TRUE(source->Ok()) << "mount /mnt/S: " << source->Error();
    dest.reset(new vt::OwnTmpfs("/mnt/T", "size=64m"));
    ASSERT_TRUE(dest->Ok()) << "mount /mnt/T: " << dest->Error();
  }
  void TearDown() override {
    vt::PumpUntil([] { return vt::AnyCopyDialog() == nullptr; });
    vt::FrameOnTestVolumes::TearDown();
    dest.reset();
    source.reset();
  }
  std::unique_ptr<vt::OwnTmpfs> source, dest;
};

}  // namespace

TEST_F(CopyOverMainFrameTest, CancelWhileCollectingCopiesNothingYetClosesRefreshesAndPosts) {
  mkdir("/mnt/S/many", 0755);
  for (int d = 0; d < 4; ++d) {
    const std::string folder = "/mnt/S/many/d" + std::to_string(d);
    mkdir(folder.c_str(), 0755);
    for (int i = 0; i < 100; ++i) MakeFile(folder + "/f" + std::to_string(i), 10, i + 1);
  }
  mkdir("/mnt/T/to", 0755);
  ListSource("/mnt/S/many", {"d0", "d1", "d2", "d3"}, "/mnt/T/to");
  // The volumes' free space changes behind the inventory's back; the
  // dialog's going reads it again.
  const std::string freeBefore = g_AllDiskPartitionInf.m_Volume[0].FreeText;
  volumes->Fake().SetStatfs(g_AllDiskPartitionInf.m_Volume[0].MountPoint, 4096, 1000000, 123);
  const size_t statfsBefore = volumes->Fake().CallsOf("statfs").size();
  vt::FakeFileOps files;
  // Every entry is examined slowly: collecting takes a few seconds.
  for (auto call : {vt::FakeFileOps::kStat, vt::FakeFileOps::kLstat, vt::FakeFileOps::kFstatat})
    files.Delay(call, 3, "*/many/d*/f*");
  bool pressed = false;
  wxString totalAtPress;
  vt::TimerCall press(100, [&] {
    my_dialog_gauge* d = vt::OpenGauge();
    if (pressed || d == nullptr) return;
    pressed = true;
    totalAtPress = d->m_totalFilesText->GetLabel();
    vt::PressCopyCancel();
  });
  // The main frame is the parent, as when the copy command opens the dialog.
  vt::CopyRun run = vt::CopyWithDialog(frame);
  EXPECT_TRUE(pressed);
  ExpectClosedProperly(run);
  EXPECT_EQ(run.outcome.result, 10);
  // Nothing is copied: only the selected folders, which the copy command
  // created before, are there.
  EXPECT_EQ(Entries("/mnt/T/to").size(), 4u) << "nothing is copied";
  EXPECT_EQ(files.Count(vt::FakeFileOps::kMkdir) + files.Count(vt::FakeFileOps::kMkdirat), 0);
  EXPECT_EQ(files.Count(vt::FakeFileOps::kRead) + files.Count(vt::FakeFileOps::kCopyFileRange), 0);
  EXPECT_LT(run.outcome.itemCount, 400) << "collecting stopped early (total " << totalAtPress << ")";
  EXPECT_EQ(run.outcome.itemsDone, 0);
  EXPECT_EQ(run.outcome.bytesCopied, 0);
  EXPECT_GT(volumes->Fake().CallsOf("statfs").size(), statfsBefore) << "free space read again";
  EXPECT_NE(std::string(g_AllDiskPartitionInf.m_Volume[0].FreeText), freeBefore);
  EXPECT_EQ(files.OpenFolders(), 0);
}

TEST_F(CopyOverMainFrameTest, ClosingTheHostWindowDuringACopyStopsItAndLeavesNoPartialFile) {
  SmallBigSmall("host", "a.txt", "big.bin", 4 * kMiB, "z.txt");
  vt::FakeFileOps files;
  files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV, "*/big.bin");
  vt::SourceReadTap tap;
  wxWeakRef<wxFrame> host(top);
  wxWeakRef<my_frame> module(frame);
  wxWeakRef<my_dialog_gauge> dialog;
  bool partialWhenClosed = false;
  // At a read in the middle of big.bin: what the host does when its window
  // is closed (the module's destroy, then its own).
  int readsBefore = 0;
  {
    // The third read of big.bin: at least one chunk is in the destination.
    tap.ActAt(3, [&] {
      dialog = vt::OpenGauge();
      partialWhenClosed = Present("/mnt/T/to/big.bin");
      readsBefore = tap.reads;
      module->Destroy();
      host->Destroy();
    }, "/big.bin");
    g_lastCopyOutcome = CopyOutcome();
    vt::StdoutCapture quiet;
    new my_dialog_gauge(frame, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                        wxDEFAULT_DIALOG_STYLE);
    EXPECT_TRUE(vt::PumpUntil([&] { return !host && !module && vt::AnyCopyDialog() == nullptr; },
                              10000));
  }
  top = nullptr;
  frame = nullptr;
  EXPECT_TRUE(tap.acted);
  EXPECT_TRUE(partialWhenClosed) << "closed while big.bin was being copied";
  EXPECT_FALSE(dialog) << "the dialog went with the frame";
  EXPECT_LE(tap.reads - readsBefore, 1) << "the copy stopped at the read where the window went";
  EXPECT_TRUE(vt::PumpUntil([&] { return files.OpenDescriptors() == 0; }));
  EXPECT_EQ(files.OpenFolders(), 0);
  EXPECT_FALSE(Present("/mnt/T/to/big.bin"));
  EXPECT_FALSE(Present("/mnt/T/to/z.txt"));
  EXPECT_TRUE(ReadFile("/mnt/S/host/a.txt") == ReadFile("/mnt/T/to/a.txt"));
  EXPECT_EQ(g_lastCopyOutcome.result, 10);
}
