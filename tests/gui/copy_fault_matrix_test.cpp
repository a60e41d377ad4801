// The copy job and its progress window against real kernel errors: the fault
// file system (tests/faultfs) is mounted in a temporary folder of this
// process's private mount namespace, as the source of a copy or as its
// destination, and each case is copied through the real my_dialog_gauge.
// Afterwards one judge looks at the disk and at the job's outcome: every
// source file is copied whole, or salvaged with exactly the unreadable
// stretches zero-filled and reported, or absent and reported, or, in a copy
// that stopped (destination full, Cancel), absent because it came at or
// after the stop. A truncated file, a difference nobody reported or a
// leftover partial file fails.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/frame.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "common/disk_images.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "destination/Des_PathInfo.h"
#include "faultfs/faultfs_mount.h"
#include "copy_env.h"
#include "timer_call.h"

extern char** environ;

namespace {

const int64_t kMiB = 1 << 20;
const int64_t kBlock = 4096;  // the engine salvages in blocks of this size
const int64_t kChunkFile = 3 * kMiB + kMiB / 2;  // 3.5 MiB: four chunks

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

int64_t SizeOf(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0 ? static_cast<int64_t>(st.st_size) : -1;
}

// One source file of a job, in job order: its path below the source folder
// (bytes) and the stretches of it that the fault file system keeps
// unreadable (byte ranges as injected; a fault that a retry overcomes is not
// one of them).
struct JobFile {
  std::string name;
  std::vector<CopyRange> unreadable;
};

// What became of one source file.
enum class Fate {
  kIdentical,  // the copy holds the source's bytes, nothing reported
  kSalvaged,   // the unreadable blocks are zeros, the rest whole, reported with them
  kReported,   // no copy; a problem names the file
  kAfterStop,  // no copy, nothing reported: the copy stopped at or before it
  kWrong,      // anything else (the judge has said why)
};

void PrintTo(Fate fate, std::ostream* out) {
  static const char* const kNames[] = {"identical", "salvaged", "reported", "after-stop", "WRONG"};
  *out << kNames[static_cast<int>(fate)];
}

// The injected stretches rounded out to whole blocks, cut at the file's
// size, sorted and joined where they touch: what a salvage leaves as zeros.
std::vector<CopyRange> ZeroedBlocks(std::vector<CopyRange> injected, int64_t size) {
  std::vector<CopyRange> blocks;
  std::sort(injected.begin(), injected.end(),
            [](const CopyRange& a, const CopyRange& b) { return a.offset < b.offset; });
  for (const CopyRange& r : injected) {
    const int64_t from = r.offset / kBlock * kBlock;
    const int64_t to = std::min(size, (r.offset + r.length + kBlock - 1) / kBlock * kBlock);
    if (to <= from) continue;
    if (!blocks.empty() && blocks.back().offset + blocks.back().length >= from) {
      blocks.back().length = std::max(blocks.back().offset + blocks.back().length, to) - blocks.back().offset;
    } else {
      blocks.push_back(CopyRange{from, to - from});
    }
  }
  return blocks;
}

std::string Describe(const std::vector<CopyRange>& ranges) {
  std::string out;
  for (const CopyRange& r : ranges)
    out += "[" + std::to_string(r.offset) + "+" + std::to_string(r.length) + "]";
  return out.empty() ? "none" : out;
}

// The judge. `shownRoot` is the source folder as the engine read it (its
// problems name sources below it), `nowRoot` a fault-free view of the same
// files as they are now (a file that shrank, grew or vanished is judged by
// what it is after the copy), `destRoot` the fault-free view of the
// destination folder. Returns each file's fate, in job order; every outcome
// that is not allowed is a test failure here, with the reason.
std::vector<Fate> Judge(const std::string& shownRoot, const std::string& nowRoot,
                        const std::string& destRoot, const std::vector<JobFile>& files,
                        const CopyOutcome& outcome) {
  std::vector<Fate> fates;
  std::vector<bool> problemUsed(outcome.problems.size(), false);
  bool stopped = false;
  for (const JobFile& file : files) {
    const std::string shown = shownRoot + file.name;
    const std::string source = nowRoot + file.name;
    const std::string copy = destRoot + file.name;
    const CopyProblem* problem = nullptr;
    for (size_t i = 0; i < outcome.problems.size(); ++i) {
      if (outcome.problems[i].path != shown) continue;
      if (problem != nullptr) ADD_FAILURE() << file.name << ": reported twice";
      problem = &outcome.problems[i];
      problemUsed[i] = true;
    }
    const int64_t sourceSize = SizeOf(source);
    const int64_t copySize = SizeOf(copy);
    Fate fate = Fate::kWrong;
    if (stopped) {
      if (copySize >= 0 || problem != nullptr)
        ADD_FAILURE() << file.name << ": copied or reported after the copy stopped";
      else
        fate = Fate::kAfterStop;
    } else if (copySize < 0) {
      if (problem != nullptr && problem->kind != kCopySalvaged) {
        fate = Fate::kReported;
      } else if (problem != nullptr) {
        ADD_FAILURE() << file.name << ": reported as salvaged, but there is no copy";
      } else if (outcome.result == -1 || outcome.result == 10) {
        stopped = true;
        fate = Fate::kAfterStop;
      } else {
        ADD_FAILURE() << file.name << ": no copy and no report, yet the copy ended with "
                      << outcome.result;
      }
    } else if (sourceSize < 0) {
      ADD_FAILURE() << file.name << ": a copy of a source that is gone";
    } else if (copySize != sourceSize) {
      ADD_FAILURE() << file.name << ": a copy of " << copySize << " bytes of a source of "
                    << sourceSize << " (truncated or padded)";
    } else {
      const std::string data = vt::ReadFile(source);
      const std::string copied = vt::ReadFile(copy);
      const std::vector<CopyRange> zeroed = ZeroedBlocks(file.unreadable, sourceSize);
      if (problem == nullptr) {
        if (copied == data)
          fate = Fate::kIdentical;
        else
          ADD_FAILURE() << file.name << ": the copy differs from the source and nothing says so";
      } else if (problem->kind != kCopySalvaged) {
        ADD_FAILURE() << file.name << ": reported as not copied (kind " << problem->kind
                      << "), yet a copy is there";
      } else {
        std::string expected = data;
        int64_t zeroBytes = 0;
        for (const CopyRange& r : zeroed) {
          expected.replace(static_cast<size_t>(r.offset), static_cast<size_t>(r.length),
                           static_cast<size_t>(r.length), '\0');
          zeroBytes += r.length;
        }
        const bool rangesRight = Describe(problem->unreadable) == Describe(zeroed);
        if (zeroed.empty())
          ADD_FAILURE() << file.name << ": reported as salvaged, but nothing of it stays unreadable";
        else if (!rangesRight)
          ADD_FAILURE() << file.name << ": reported unreadable " << Describe(problem->unreadable)
                        << ", expected " << Describe(zeroed);
        else if (problem->unreadableBytes != zeroBytes)
          ADD_FAILURE() << file.name << ": " << problem->unreadableBytes
                        << " unreadable bytes reported, expected " << zeroBytes;
        else if (copied != expected)
          ADD_FAILURE() << file.name << ": the salvaged copy is not the source with "
                        << Describe(zeroed) << " zero-filled";
        else
          fate = Fate::kSalvaged;
      }
    }
    fates.push_back(fate);
  }
  for (size_t i = 0; i < outcome.problems.size(); ++i)
    if (!problemUsed[i])
      ADD_FAILURE() << "a problem for a path outside the job: " << outcome.problems[i].path
                    << " (kind " << outcome.problems[i].kind << ")";
  // Nothing else lies in the destination: no partial file under another
  // name, no name with its bytes changed.
  std::set<std::string> known;
  for (const JobFile& file : files) known.insert(file.name);
  std::error_code error;
  for (auto it = std::filesystem::recursive_directory_iterator(destRoot, error);
       !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
    if (!it->is_regular_file()) continue;
    const std::string relative = it->path().string().substr(destRoot.size());
    if (known.count(relative) == 0) ADD_FAILURE() << "a file the job does not hold: " << relative;
  }
  return fates;
}

// The message boxes that came up: text and caption; each is answered OK.
struct Boxes {
  std::vector<std::string> texts;
  std::vector<std::string> captions;
};

class BoxSeen : public wxExpectModal<wxMessageDialog> {
 public:
  explicit BoxSeen(Boxes* boxes) : wxExpectModal<wxMessageDialog>(wxID_OK), m_boxes(boxes) {}

 protected:
  int OnInvoked(wxMessageDialog* dlg) const override {
    m_boxes->texts.push_back(dlg->GetMessage().utf8_string());
    m_boxes->captions.push_back(dlg->GetCaption().utf8_string());
    return wxExpectModal<wxMessageDialog>::OnInvoked(dlg);
  }

 private:
  Boxes* m_boxes;
};

// A real mouse click at a point of the screen, by xdotool (the X server
// delivers it to whatever window lies there, as a user's click). Started
// without waiting, so that the caller's thread keeps running its event loop;
// -1 when xdotool cannot be started.
pid_t ClickOnScreen(const wxPoint& at) {
  std::vector<std::string> args = {"xdotool", "mousemove", std::to_string(at.x),
                                   std::to_string(at.y), "click", "1"};
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(&a[0]);
  argv.push_back(nullptr);
  pid_t pid = -1;
  if (posix_spawnp(&pid, "xdotool", nullptr, nullptr, argv.data(), environ) != 0) return -1;
  return pid;
}

class CopyFaultMatrixTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = vt::MakeTempDir("vantori-matrix-");
    ASSERT_FALSE(root.empty());
    backing = root + "/backing/";
    mnt = root + "/mnt/";
    local = root + "/local/";
    dst = root + "/dst/";
    for (const std::string& d : {backing, mnt, local, dst}) ASSERT_EQ(mkdir(d.c_str(), 0755), 0) << d;
    host = new wxFrame(nullptr, wxID_ANY, "host", wxPoint(0, 0), wxSize(700, 500));
    host->Show();
    vt::Pump(30);
    g_copy_dialog_return = COPY_ANSWER_YES_TO_ALL;
    g_lastCopyOutcome = CopyOutcome();
  }
  void TearDown() override {
    fs.reset();
    host->Destroy();
    vt::Pump(30);
    if (!vt::FaultFs::IsFaultFsMountedAt(root + "/mnt")) std::filesystem::remove_all(root);
  }

  // The fault file system over backing/, mounted at mnt/.
  void Mount(const std::string& rules) {
    fs = std::make_unique<vt::FaultFs>(backing, root + "/mnt", rules);
    ASSERT_TRUE(fs->IsMounted()) << fs->Error();
  }
  // The copy of `names` (in this order: the job's order) from `from` to `to`.
  void Select(const std::string& from, const std::string& to, const std::vector<std::string>& names) {
    g_Des_PathInfo.m_sourceItems.clear();
    for (const std::string& n : names) g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8(n));
    g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(from);
    g_Des_PathInfo.m_destPath = wxString::FromUTF8(to);
  }
  // Runs the copy as the copy command does and waits until its window is gone.
  void RunCopy() {
    vt::StdoutCapture quiet;
    new my_dialog_gauge(host, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                        wxDEFAULT_DIALOG_STYLE);
    quiet.Stop();
  }
  void Settle() {
    EXPECT_TRUE(vt::PumpUntil([] { return vt::OpenGauge() == nullptr; }, 5000));
    vt::Pump(20);
    EXPECT_TRUE(host->IsEnabled());
  }
  std::string Log() const { return fs ? fs->Log() : std::string(); }

  // The destination is the fault file system, full (or failing) after a
  // seeded number of bytes (`action`: write-enospc-after, write-eio-after);
  // a job of a few files of known sizes from a local folder is copied onto
  // it again for every seed. The file in which the limit falls is removed,
  // those before it are whole, those after it are not begun; the copy ends
  // with -1 and the one message.
  void CopyOntoAFailingDestination(const std::string& action) {
    const std::vector<std::string> names = {"one.bin", "two.bin", "three.txt", "four.bin", "five.txt"};
    const std::vector<int64_t> sizes = {70001, kMiB + 300000, 4096, 250000, 33};
    int64_t total = 0;
    for (size_t i = 0; i < names.size(); ++i) {
      vt::WriteFile(local + names[i],
                    vt::PatternBytes(static_cast<size_t>(sizes[i]), 40 + static_cast<unsigned>(i)));
      total += sizes[i];
    }
    ASSERT_NO_FATAL_FAILURE(Mount(""));
    std::vector<JobFile> job;
    for (const std::string& n : names) job.push_back({n, {}});
    std::set<size_t> failed;      // which files met the limit
    int pastFirstChunk = 0;       // limits beyond the first chunk of their file
    for (unsigned seed = 1; seed <= 20; ++seed) {
      std::mt19937 random(seed);
      const int64_t limit = std::uniform_int_distribution<int64_t>(0, total - 1)(random);
      SCOPED_TRACE(action + " " + std::to_string(limit) + " (seed " + std::to_string(seed) + ")");
      for (const std::string& n : names) unlink((backing + n).c_str());
      ASSERT_TRUE(fs->SetRules("* " + action + " " + std::to_string(limit) + "\n")) << fs->Error();
      size_t failing = 0;
      int64_t fitting = sizes[0];
      while (fitting <= limit) fitting += sizes[++failing];
      failed.insert(failing);
      if (limit - (fitting - sizes[failing]) >= kMiB) ++pastFirstChunk;
      Select(local, mnt, names);
      Boxes boxes;
      wxTEST_DIALOG(RunCopy(), BoxSeen(&boxes));
      Settle();
      std::vector<Fate> expected(names.size(), Fate::kAfterStop);
      std::fill(expected.begin(), expected.begin() + static_cast<long>(failing), Fate::kIdentical);
      EXPECT_EQ(Judge(local, local, backing, job, g_lastCopyOutcome), expected) << Log();
      EXPECT_EQ(g_lastCopyOutcome.result, -1);
      EXPECT_EQ(boxes.texts, std::vector<std::string>{"Copy file error! The disk is full!"});
      EXPECT_EQ(boxes.captions, std::vector<std::string>{"copying error"});
      if (HasFailure()) return;  // one seed's failures are enough to read
    }
    // The seeds reach the start, the middle and the end of the job, and a
    // file's second chunk.
    EXPECT_GE(failed.size(), 3u);
    EXPECT_GE(pastFirstChunk, 1);
    printf("%s: the limit fell in %zu of the %zu files, %d times past a file's first chunk\n",
           action.c_str(), failed.size(), names.size(), pastFirstChunk);
  }

  std::string root, backing, mnt, local, dst;
  wxFrame* host = nullptr;
  std::unique_ptr<vt::FaultFs> fs;
};

std::vector<Fate> Fates(std::initializer_list<Fate> fates) { return fates; }

}  // namespace

TEST(CopyFaultJudge, InjectedStretchesAreRoundedOutToBlocksAndJoined) {
  EXPECT_EQ(Describe(ZeroedBlocks({{8192, 4096}}, kChunkFile)), "[8192+4096]");
  EXPECT_EQ(Describe(ZeroedBlocks({{1600000, 10000}}, kChunkFile)), "[1597440+16384]");
  EXPECT_EQ(Describe(ZeroedBlocks({{100, 1}, {4096, 10}}, kChunkFile)), "[0+8192]");
  EXPECT_EQ(Describe(ZeroedBlocks({{5000, 100000}}, 6000)), "[4096+1904]") << "cut at the size";
  EXPECT_EQ(Describe(ZeroedBlocks({}, 10)), "none");
}

// The judge itself, on plain folders: what it allows and what it refuses.
TEST(CopyFaultJudge, EveryOutcomeThatIsNotAllowedFails) {
  const std::string root = vt::MakeTempDir("vantori-judge-");
  ASSERT_FALSE(root.empty());
  const std::string src = root + "/src/", dst = root + "/dst/";
  const std::string data = vt::PatternBytes(10000, 50);
  vt::WriteFile(src + "a.bin", data);
  vt::WriteFile(src + "b.bin", "bee");
  const std::vector<JobFile> job = {{"a.bin", {{5000, 10}}}, {"b.bin", {}}};
  CopyOutcome done;
  done.result = 1;

  vt::WriteFile(dst + "a.bin", data);
  vt::WriteFile(dst + "b.bin", "bee");
  EXPECT_EQ(Judge(src, src, dst, job, done), Fates({Fate::kIdentical, Fate::kIdentical}));

  vt::WriteFile(dst + "a.bin", data.substr(0, 4096));
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, done), "truncated");
  std::string changed = data;
  changed[7000] ^= 1;
  vt::WriteFile(dst + "a.bin", changed);
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, done), "nothing says so");

  // A salvage: blocks 4096-8192 zeroed and reported as such; then a report
  // that names other blocks.
  std::string salvaged = data;
  std::fill(salvaged.begin() + 4096, salvaged.begin() + 8192, '\0');
  vt::WriteFile(dst + "a.bin", salvaged);
  CopyOutcome damaged = done;
  CopyProblem damage;
  damage.path = src + "a.bin";
  damage.kind = kCopySalvaged;
  damage.unreadableBytes = 4096;
  damage.unreadable = {{4096, 4096}};
  damaged.problems = {damage};
  EXPECT_EQ(Judge(src, src, dst, job, damaged), Fates({Fate::kSalvaged, Fate::kIdentical}));
  damaged.problems[0].unreadable = {{8192, 4096}};
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, damaged), "expected [4096+4096]");

  // Absent without a report: lost, unless the copy stopped there; then
  // nothing after it may be there.
  unlink((dst + "a.bin").c_str());
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, done), "no copy and no report");
  CopyOutcome full = done;
  full.result = -1;
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, full), "after the copy stopped");
  unlink((dst + "b.bin").c_str());
  EXPECT_EQ(Judge(src, src, dst, job, full), Fates({Fate::kAfterStop, Fate::kAfterStop}));

  // A partial file under a name of its own.
  vt::WriteFile(dst + ".a.bin.part", "a");
  EXPECT_NONFATAL_FAILURE(Judge(src, src, dst, job, full), "a file the job does not hold");
  std::filesystem::remove_all(root);
}

// EIO in the first, a middle and the last chunk of three files of 3.5 MiB,
// beside a clean one: each damaged file is finished with exactly its bad
// blocks as zeros and reported; the copy goes on to the end.
TEST_F(CopyFaultMatrixTest, ReadErrorsInTheFirstAMiddleAndTheLastChunkAreSalvaged) {
  const std::vector<std::string> names = {"first.bin", "middle.bin", "clean.bin", "last.bin"};
  for (size_t i = 0; i < names.size(); ++i)
    vt::WriteFile(backing + names[i], vt::PatternBytes(kChunkFile, 20 + static_cast<unsigned>(i)));
  ASSERT_NO_FATAL_FAILURE(Mount("first.bin read-eio 8K-12K\n"
                                "middle.bin read-eio 1600000-1610000\n"
                                "last.bin read-eio 3500000-3500100\n"));
  Select(mnt, dst, names);
  RunCopy();
  Settle();
  const std::vector<JobFile> job = {{"first.bin", {{8192, 4096}}},
                                    {"middle.bin", {{1600000, 10000}}},
                                    {"clean.bin", {}},
                                    {"last.bin", {{3500000, 100}}}};
  EXPECT_EQ(Judge(mnt, backing, dst, job, g_lastCopyOutcome),
            Fates({Fate::kSalvaged, Fate::kSalvaged, Fate::kIdentical, Fate::kSalvaged}));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
  EXPECT_TRUE(fs->WaitForLog("read of last.bin at", 0)) << Log();
}

TEST_F(CopyFaultMatrixTest, AFileUnreadableOnEveryBlockIsAllZerosAndReported) {
  const int64_t size = kMiB + kMiB / 2 + 100;  // two chunks, the last block short
  vt::WriteFile(backing + "dead.bin", vt::PatternBytes(size, 30));
  vt::WriteFile(backing + "after.txt", "after");
  ASSERT_NO_FATAL_FAILURE(Mount("dead.bin read-eio 0-\n"));
  Select(mnt, dst, {"dead.bin", "after.txt"});
  RunCopy();
  Settle();
  EXPECT_EQ(Judge(mnt, backing, dst, {{"dead.bin", {{0, size}}}, {"after.txt", {}}}, g_lastCopyOutcome),
            Fates({Fate::kSalvaged, Fate::kIdentical}));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

TEST_F(CopyFaultMatrixTest, ATransientReadErrorThatTheRetryOvercomesLeavesAWholeUnreportedCopy) {
  vt::WriteFile(backing + "flaky.bin", vt::PatternBytes(kChunkFile, 31));
  // Two failures at 2 MiB + 4 KiB: the chunk's read, then the block's first
  // read in the salvage; the retry of the block succeeds.
  ASSERT_NO_FATAL_FAILURE(Mount("flaky.bin read-eio 2101248-2105344 times 2\n"));
  Select(mnt, dst, {"flaky.bin"});
  RunCopy();
  Settle();
  EXPECT_EQ(Judge(mnt, backing, dst, {{"flaky.bin", {}}}, g_lastCopyOutcome), Fates({Fate::kIdentical}));
  EXPECT_TRUE(g_lastCopyOutcome.problems.empty());
  EXPECT_TRUE(fs->WaitForLog("read of flaky.bin at 2101248 size 4096: injected EIO", 0))
      << "the fault met the salvage's block read\n" << Log();
}

// A read that blocks for 5 s on the second chunk; a real click on Cancel
// while it sleeps ends the copy within a second, long before the read
// returns, and the partial file is gone.
TEST_F(CopyFaultMatrixTest, ACancelClickDuringAFiveSecondReadEndsTheCopyBeforeTheReadReturns) {
  vt::WriteFile(backing + "before.txt", "before");
  vt::WriteFile(backing + "slow.bin", vt::PatternBytes(3 * kMiB, 32));
  vt::WriteFile(backing + "later.txt", "later");
  ASSERT_NO_FATAL_FAILURE(Mount("slow.bin read-sleep 5 at 1572864\n"));
  using Clock = std::chrono::steady_clock;
  auto since = [](Clock::time_point from, Clock::time_point to) {
    return static_cast<long long>(std::chrono::duration_cast<std::chrono::milliseconds>(to - from).count());
  };
  Clock::time_point clickedAt, pressedAt, removedAt, flushingAt, endedAt;
  bool clicked = false, pressed = false, removed = false, flushing = false;
  bool partialWhileBlocked = false, byEvent = false;
  pid_t clicker = -1;
  const std::string partial = dst + "slow.bin";
  vt::TimerCall during(20, [&] {
    my_dialog_gauge* gauge = vt::OpenGauge();
    if (gauge == nullptr) return;
    if (clicked) {
      // After the click: when the partial file went, and whether the window
      // still waits for something (the flush at the end of the copy).
      if (!removed && !Exists(partial)) {
        removed = true;
        removedAt = Clock::now();
      }
      if (!flushing && gauge->m_currentText->GetLabel() == "Writing the data to the disk...") {
        flushing = true;
        flushingAt = Clock::now();
      }
      return;
    }
    const std::string log = Log();
    if (log.find("read of slow.bin at") == std::string::npos || log.find(" sleeps ") == std::string::npos)
      return;
    clicked = true;
    partialWhileBlocked = SizeOf(partial) == kMiB;
    clickedAt = Clock::now();
    gauge->Bind(wxEVT_BUTTON, [&](wxCommandEvent& e) {
      if (!pressed) pressedAt = Clock::now();
      pressed = true;
      e.Skip();
    });
    const wxRect button = gauge->m_cancelButton->GetScreenRect();
    clicker = ClickOnScreen(wxPoint(button.x + button.width / 2, button.y + button.height / 2));
    if (clicker < 0) {
      // No xdotool: the button's click event instead (said below).
      byEvent = true;
      wxCommandEvent press(wxEVT_BUTTON, ID_GAUGE_CANCEL);
      press.SetEventObject(gauge->m_cancelButton);
      wxPostEvent(gauge->m_cancelButton, press);
    }
  });
  Select(mnt, dst, {"before.txt", "slow.bin", "later.txt"});
  RunCopy();
  endedAt = Clock::now();
  // The window may have closed before the timer looked again.
  if (clicked && !removed && !Exists(partial)) {
    removed = true;
    removedAt = endedAt;
  }
  const std::string logAtEnd = Log();
  during.Stop();
  Settle();
  if (clicker > 0) {
    int status = 0;
    EXPECT_EQ(waitpid(clicker, &status, 0), clicker);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "xdotool failed";
  }
  ASSERT_TRUE(clicked) << "the read never blocked\n" << logAtEnd;
  EXPECT_TRUE(partialWhileBlocked) << "the first chunk was in the destination while the read slept";
  ASSERT_TRUE(pressed) << "the click did not reach the Cancel button";
  printf("Cancel %s: the button took it after %lld ms, the partial file went after %lld ms, "
         "the window closed after %lld ms%s\n",
         byEvent ? "by its button event (xdotool could not be started)" : "clicked",
         since(clickedAt, pressedAt), removed ? since(clickedAt, removedAt) : -1LL,
         since(clickedAt, endedAt),
         flushing ? (" (it showed the flush after " + std::to_string(since(clickedAt, flushingAt)) +
                     " ms)").c_str()
                  : "");
  EXPECT_TRUE(removed && since(clickedAt, removedAt) < 1000)
      << "the partial file is removed within a second of the click";
  // The copy has ended when its window has closed and given the main
  // window back: that happens before the blocked read returns, within a
  // second of the click.
  const std::string why =
      flushing ? "\nThe job stopped at the click, but the window then waited for the flush of the "
                 "destination, which runs on the worker thread behind the read that still hangs "
                 "(FlushDestination after a Cancel)."
               : "";
  EXPECT_EQ(logAtEnd.find("woke up"), std::string::npos)
      << "the copy ended before the blocked read returned" << why << "\n" << logAtEnd;
  EXPECT_LT(since(clickedAt, endedAt), 1000) << "Cancel taken within a second of the click" << why;
  EXPECT_EQ(g_lastCopyOutcome.result, 10);
  EXPECT_FALSE(Exists(partial)) << "the partial file is removed at once";
  // The read comes back after its 5 s; what the worker does then must not
  // bring anything back.
  EXPECT_TRUE(fs->WaitForLog("woke up", 8000)) << Log();
  vt::Pump(200);
  EXPECT_EQ(Judge(mnt, backing, dst, {{"before.txt", {}}, {"slow.bin", {}}, {"later.txt", {}}},
                  g_lastCopyOutcome),
            Fates({Fate::kIdentical, Fate::kAfterStop, Fate::kAfterStop}));
}

TEST_F(CopyFaultMatrixTest, AFileThatVanishedBeforeItsTurnIsReportedWithTheOneMessage) {
  vt::WriteFile(backing + "a.txt", "aaa");
  vt::WriteFile(backing + "gone.bin", vt::PatternBytes(70000, 33));
  vt::WriteFile(backing + "c.txt", "ccc");
  // Removed when the copy opens it, after the collection counted it.
  ASSERT_NO_FATAL_FAILURE(Mount("gone.bin vanish-after-count\n"));
  Select(mnt, dst, {"a.txt", "gone.bin", "c.txt"});
  Boxes boxes;
  wxTEST_DIALOG(RunCopy(), BoxSeen(&boxes));
  Settle();
  EXPECT_EQ(Judge(mnt, backing, dst, {{"a.txt", {}}, {"gone.bin", {}}, {"c.txt", {}}}, g_lastCopyOutcome),
            Fates({Fate::kIdentical, Fate::kReported, Fate::kIdentical}));
  ASSERT_EQ(g_lastCopyOutcome.problems.size(), 1u);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].kind, kCopyVanished);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].size, 70000) << "the size as collected";
  EXPECT_EQ(boxes.texts, std::vector<std::string>{"Open file is error !"});
  EXPECT_EQ(boxes.captions, std::vector<std::string>{"Confirm Folder"});
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
  EXPECT_TRUE(fs->WaitForLog("gone.bin vanished", 0)) << Log();
}

// A file that shrinks and one that grows between the collection and their
// copy: the engine copies each to its end as it is when read, and reports
// neither (the copy is the file as it is now; only the figures counted at
// the collection differ).
TEST_F(CopyFaultMatrixTest, AShrunkAndAGrownFileAreCopiedAsTheyAreNowAndNotReported) {
  const int64_t shrinkFrom = 2 * kMiB + 5, growFrom = kMiB - 10;
  vt::WriteFile(backing + "shrink.bin", vt::PatternBytes(shrinkFrom, 34));
  vt::WriteFile(backing + "grow.bin", vt::PatternBytes(growFrom, 35));
  ASSERT_NO_FATAL_FAILURE(Mount("shrink.bin shrink-after-count 700000\n"
                                "grow.bin grow-after-count 300000\n"));
  Select(mnt, dst, {"shrink.bin", "grow.bin"});
  RunCopy();
  Settle();
  ASSERT_EQ(SizeOf(backing + "shrink.bin"), 700000) << Log();
  ASSERT_EQ(SizeOf(backing + "grow.bin"), growFrom + 300000) << Log();
  EXPECT_EQ(g_lastCopyOutcome.totalBytes, shrinkFrom + growFrom) << "counted before the change";
  EXPECT_EQ(Judge(mnt, backing, dst, {{"shrink.bin", {}}, {"grow.bin", {}}}, g_lastCopyOutcome),
            Fates({Fate::kIdentical, Fate::kIdentical}));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

TEST_F(CopyFaultMatrixTest, ADestinationThatFillsUpAtTwentySeededOffsets) {
  CopyOntoAFailingDestination("write-enospc-after");
}

TEST_F(CopyFaultMatrixTest, ADestinationThatFailsWritesAtTwentySeededOffsets) {
  CopyOntoAFailingDestination("write-eio-after");
}

// Names whose bytes are not UTF-8 (Latin-1, a folder of two stray bytes)
// inside a selected folder: each copy bears the source's bytes as its name.
TEST_F(CopyFaultMatrixTest, NamesThatAreNotUtf8KeepTheirBytes) {
  const std::vector<std::string> names = {"names/caf\xe9.txt", "names/\xff\xfe/inner.bin",
                                          "names/plain.txt"};
  vt::WriteFile(backing + names[0], "latin-1");
  vt::WriteFile(backing + names[1], vt::PatternBytes(90000, 36));
  vt::WriteFile(backing + names[2], "plain");
  ASSERT_NO_FATAL_FAILURE(Mount(""));
  ASSERT_EQ(mkdir((dst + "names").c_str(), 0755), 0);  // made by the copy command
  Select(mnt, dst, {"names"});
  RunCopy();
  Settle();
  EXPECT_EQ(Judge(mnt, backing, dst, {{names[0], {}}, {names[1], {}}, {names[2], {}}}, g_lastCopyOutcome),
            Fates({Fate::kIdentical, Fate::kIdentical, Fate::kIdentical}));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

// A sparse file of 4 GiB and one byte, bound for a FAT32 volume: not
// attempted (not one byte of it is read), reported; the small file beside
// it is copied.
TEST_F(CopyFaultMatrixTest, AFileOverFourGigabytesBoundForFat32IsNotAttemptedAndReported) {
  const int64_t size = (4LL << 30) + 1;
  vt::WriteFile(backing + "mail.pst", "");
  ASSERT_EQ(truncate((backing + "mail.pst").c_str(), size), 0);
  vt::WriteFile(backing + "small.txt", "small");
  // A read of it would fail and be logged.
  ASSERT_NO_FATAL_FAILURE(Mount("mail.pst read-eio 0-\n"));
  vt::DestinationVolume fat(root + "/dst", 3, 'F');
  Select(mnt, dst, {"mail.pst", "small.txt"});
  RunCopy();
  Settle();
  EXPECT_EQ(Judge(mnt, backing, dst, {{"mail.pst", {}}, {"small.txt", {}}}, g_lastCopyOutcome),
            Fates({Fate::kReported, Fate::kIdentical}));
  ASSERT_EQ(g_lastCopyOutcome.problems.size(), 1u);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].kind, kCopyTooLargeForFat);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].size, size);
  EXPECT_EQ(g_lastCopyOutcome.bytesCopied, 5) << "nothing of the large file was written";
  EXPECT_EQ(Log().find("read of mail.pst"), std::string::npos) << Log();
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}
