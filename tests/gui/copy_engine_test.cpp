// The copy job and its progress window on real files in a temporary folder:
// what is collected, what is copied, what the window shows and what it
// leaves behind.
#include <errno.h>
#include <stdlib.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/frame.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "common/CustomEvents.h"
#include "common/fake_devices.h"
#include "common/fake_fileops.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/copyfile.h"
#include "copy/my_dialog_gauge.h"
#include "destination/Des_PathInfo.h"
#include "display/Conversion.h"
#include "disk/View_Disk_Info.h"
#include "copy_env.h"
#include "timer_call.h"

namespace {

std::string Bytes(size_t size, unsigned seed) { return vt::PatternBytes(size, seed); }

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

using vt::DestinationVolume;
using vt::OpenGauge;

class CopyEngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/vantori-copy-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    root = pattern;
    src = root + "/src/";
    dst = root + "/dst/";
    ASSERT_EQ(mkdir(src.c_str(), 0755), 0);
    ASSERT_EQ(mkdir(dst.c_str(), 0755), 0);
    host = new wxFrame(nullptr, wxID_ANY, "host", wxPoint(0, 0), wxSize(700, 500));
    host->Bind(wxEventTypeTag<wxCommandEvent>(wxEVT_MY_CUSTOM_COMMAND),
              [this](wxCommandEvent& e) { codes.push_back(e.GetId()); });
    host->Show();
    vt::Pump(30);
    g_copy_dialog_return = COPY_ANSWER_YES_TO_ALL;
  }
  void TearDown() override {
    host->Destroy();
    vt::Pump(30);
    std::filesystem::remove_all(root);
  }

  void Select(const std::vector<std::string>& names) {
    g_Des_PathInfo.m_sourceItems.clear();
    for (const std::string& n : names) g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8(n));
    g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(src);
    g_Des_PathInfo.m_destPath = wxString::FromUTF8(dst);
  }

  // Runs a copy as the copy command does; returns the window right after its
  // constructor (it is destroyed at the next idle time, so its controls can
  // still be read).
  my_dialog_gauge* RunCopy() {
    my_dialog_gauge* gauge = new my_dialog_gauge(host, -1, "Copying Data", wxPoint(250, 200),
                                                 wxSize(500, 255), wxDEFAULT_DIALOG_STYLE);
    return gauge;
  }
  void Settle() {
    EXPECT_TRUE(vt::PumpUntil([] { return OpenGauge() == nullptr; }, 5000));
    vt::Pump(20);
  }

  std::string root, src, dst;
  wxFrame* host = nullptr;
  std::vector<int> codes;
};

}  // namespace

TEST(CopyFigures, OnePercentIsAtLeastOne) {
  EXPECT_EQ(CopyOnePercent(0), 1);
  EXPECT_EQ(CopyOnePercent(99), 1);
  EXPECT_EQ(CopyOnePercent(250), 2);
  EXPECT_EQ(CopyOnePercent(1LL << 40), (1LL << 40) / 100);
}

TEST(CopyFigures, GaugeIsClampedTo100) {
  EXPECT_EQ(CopyGaugeValue(40, CopyOnePercent(40)), 40);  // a job under 100 bytes
  EXPECT_EQ(CopyGaugeValue(250, CopyOnePercent(40)), 100);
  EXPECT_EQ(CopyGaugeValue(5000, 10), 100);
  EXPECT_EQ(CopyGaugeValue(0, 0), 0);
}

TEST(CopyFigures, TimeLeftNeedsElapsedTimeAndARate) {
  EXPECT_EQ(CopyTimeLeft(100, 10, 0), "");
  EXPECT_EQ(CopyTimeLeft(100, 0, 500), "");
  // 1 MB per second so far, 3600 MB to go: one hour.
  EXPECT_EQ(CopyTimeLeft(3601LL * 1000000, 1000000, 1000), "01:00:00");
  EXPECT_EQ(CopyTimeLeft(100, 100, 7), "00:00:00");
  EXPECT_EQ(CopyTimeLeft(100, 250, 7), "00:00:00");  // more copied than counted
}

TEST_F(CopyEngineTest, ASingleSelectedFileIsOneItemWithItsSize) {
  vt::WriteFile(src + "one.bin", Bytes(12345, 1));
  Select({"one.bin"});
  copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
  EXPECT_EQ(job.GetAll_DirFileInfo(), 0);
  ASSERT_EQ(job.Items().size(), 1u);
  EXPECT_EQ(job.Items()[0].m_path, "one.bin");
  EXPECT_FALSE(job.Items()[0].m_isFolder);
  EXPECT_EQ(job.ItemCount(), 1);
  EXPECT_EQ(job.TotalBytes(), 12345);
}

TEST_F(CopyEngineTest, ASelectedEmptyFolderAddsNothingAndAnEmptyFolderBelowIsOneItem) {
  ASSERT_EQ(mkdir((src + "empty").c_str(), 0755), 0);
  ASSERT_EQ(mkdir((src + "outer").c_str(), 0755), 0);
  ASSERT_EQ(mkdir((src + "outer/inner").c_str(), 0755), 0);
  Select({"empty"});
  {
    copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
    EXPECT_EQ(job.GetAll_DirFileInfo(), 0);
    EXPECT_EQ(job.Items().size(), 0u);
    EXPECT_EQ(job.ItemCount(), 0);
    EXPECT_EQ(job.TotalBytes(), 0);
  }
  Select({"outer"});
  copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
  EXPECT_EQ(job.GetAll_DirFileInfo(), 0);
  ASSERT_EQ(job.Items().size(), 1u);
  EXPECT_EQ(job.Items()[0].m_path, "outer/inner");
  EXPECT_TRUE(job.Items()[0].m_isFolder);
  EXPECT_EQ(job.ItemCount(), 0) << "folders do not count as items";
}

TEST_F(CopyEngineTest, HiddenEntriesAreCollectedAndFoldersPrecedeTheirContents) {
  vt::WriteFile(src + "d/.hidden", "h");
  vt::WriteFile(src + "d/.secret/x", "xx");
  vt::WriteFile(src + "d/sub/deeper/y", "yyy");
  Select({"d"});
  copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
  EXPECT_EQ(job.GetAll_DirFileInfo(), 0);
  std::vector<std::string> seen;
  for (size_t i = 0; i < job.Items().size(); ++i) {
    const DirFilePath& item = job.Items()[i];
    const std::string path = item.m_path.utf8_string();
    // Every item's folder was listed before it.
    const size_t slash = path.rfind('/');
    const std::string parent = path.substr(0, slash);
    if (parent != "d")
      EXPECT_NE(std::find(seen.begin(), seen.end(), parent), seen.end()) << path;
    seen.push_back(path);
  }
  EXPECT_NE(std::find(seen.begin(), seen.end(), "d/.hidden"), seen.end());
  EXPECT_NE(std::find(seen.begin(), seen.end(), "d/.secret/x"), seen.end());
  EXPECT_EQ(job.ItemCount(), 3);
  EXPECT_EQ(job.TotalBytes(), 6);
}

TEST_F(CopyEngineTest, AnEmptyFileBecomesAnEmptyFile) {
  vt::WriteFile(src + "empty.txt", "");
  copyfile job(wxString::FromUTF8(src), wxString::FromUTF8(dst), nullptr);
  EXPECT_EQ(job.CreateFile(wxString::FromUTF8(src + "empty.txt"), wxString::FromUTF8(dst + "empty.txt")),
            COPY_FILE_DONE);
  struct stat st;
  ASSERT_EQ(stat((dst + "empty.txt").c_str(), &st), 0);
  EXPECT_EQ(st.st_size, 0);
}

TEST_F(CopyEngineTest, ACopyIsByteIdenticalKeepsModificationTimesAndShowsItsFigures) {
  vt::WriteFile(src + "a.bin", Bytes(3 * 1024 * 1024 + 17, 2));
  vt::WriteFile(src + "f/b.txt", "bee");
  vt::WriteFile(src + "f/g/c.bin", Bytes(70000, 3));
  struct timespec times[2] = {{1000000000, 0}, {1200000000, 500000000}};
  ASSERT_EQ(utimensat(AT_FDCWD, (src + "f/g/c.bin").c_str(), times, 0), 0);
  ASSERT_EQ(mkdir((dst + "f").c_str(), 0755), 0);  // made by the copy command
  Select({"a.bin", "f"});
  std::string out;
  {
    vt::StdoutCapture capture;
    my_dialog_gauge* gauge = RunCopy();
    out = capture.Stop();
    EXPECT_EQ(gauge->m_totalFilesText->GetLabel(), "3");
    EXPECT_EQ(gauge->m_doneFilesText->GetLabel(), "4") << "one folder and three files";
    EXPECT_EQ(gauge->m_currentText->GetLabel(), Conversion_Path(wxString::FromUTF8(src + "f/g/c.bin"), 70));
    const wxString kb = Conversion_Str(wxString::Format("%d", (3 * 1024 * 1024 + 17 + 3 + 70000) / 1024)) + " KB";
    EXPECT_EQ(gauge->m_totalSizeText->GetLabel(), kb);
    EXPECT_EQ(gauge->m_doneSizeText->GetLabel(), kb);
    EXPECT_EQ(gauge->m_gauge->GetValue(), 100);
    EXPECT_EQ(gauge->m_timeLeftText->GetLabel(), "00:00:00");
    EXPECT_FALSE(host->IsEnabled()) << "the parent stays disabled while the window lives";
  }
  Settle();
  EXPECT_TRUE(host->IsEnabled());
  EXPECT_EQ(g_copy_dialog_return, COPY_ANSWER_NONE);
  EXPECT_EQ(codes, std::vector<int>{MYCMD_OPEN_TARGET});
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
  EXPECT_TRUE(g_lastCopyOutcome.problems.empty());
  for (const char* name : {"a.bin", "f/b.txt", "f/g/c.bin"})
    EXPECT_EQ(vt::ReadFile(dst + name), vt::ReadFile(src + name)) << name;
  struct stat st;
  ASSERT_EQ(stat((dst + "f/g/c.bin").c_str(), &st), 0);
  EXPECT_EQ(st.st_mtim.tv_sec, 1200000000);
  EXPECT_EQ(st.st_mtim.tv_nsec, 500000000);
  EXPECT_EQ(out, "SourcePath = " + src + "\nDesPath = " + dst +
                     "\nSelect_path = a.bin\nSelect_path = f\n");
}

TEST_F(CopyEngineTest, FoldersAreMadeWithTheHexadecimalMode777) {
  vt::WriteFile(src + "f/g/c.txt", "c");
  ASSERT_EQ(mkdir((dst + "f").c_str(), 0755), 0);  // made by the copy command
  Select({"f"});
  const mode_t mask = umask(022);
  RunCopy();
  Settle();
  umask(mask);
  struct stat st;
  ASSERT_EQ(stat((dst + "f/g").c_str(), &st), 0);
  // 0x777 is 03567 in octal: the permission bits keep 0567 less the umask.
  EXPECT_EQ(st.st_mode & 0777, 0x777 & 0777 & ~022);
  EXPECT_EQ(vt::ReadFile(dst + "f/g/c.txt"), "c");
}

TEST_F(CopyEngineTest, AJobUnder100BytesMovesTheGaugeByBytes) {
  vt::WriteFile(src + "small.txt", std::string(40, 's'));
  Select({"small.txt"});
  my_dialog_gauge* gauge = RunCopy();
  EXPECT_EQ(gauge->m_gauge->GetValue(), 40);
  Settle();
}

TEST_F(CopyEngineTest, AChunkThatCannotBeReadIsSalvagedAndTheCopyGoesOn) {
  const std::string data = Bytes(3 * 1024 * 1024, 4);
  vt::WriteFile(src + "bad.bin", data);
  vt::WriteFile(src + "good.bin", Bytes(5000, 5));
  vt::FakeFileOps files;
  // copy_file_range would move the chunks past the read call.
  files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV);
  // The second chunk fails, and so do the blocks of 8 KiB of it.
  files.Fail(vt::FakeFileOps::kRead, EIO, "*/src/bad.bin", 2);
  for (int nth = 3; nth <= 4; ++nth)
    for (int attempt = 0; attempt < 2; ++attempt)
      files.Fail(vt::FakeFileOps::kPread, EIO, "*/src/bad.bin", (nth - 3) * 2 + attempt + 3);
  Select({"bad.bin", "good.bin"});
  RunCopy();
  Settle();
  std::string expected = data;
  // Blocks 3 and 4 of the chunk at 1 MiB stayed unreadable (each read twice).
  std::fill(expected.begin() + 1048576 + 2 * 4096, expected.begin() + 1048576 + 4 * 4096, '\0');
  EXPECT_TRUE(vt::ReadFile(dst + "bad.bin") == expected) << "the rest of the file is whole";
  EXPECT_EQ(vt::ReadFile(dst + "good.bin"), vt::ReadFile(src + "good.bin"));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
  ASSERT_EQ(g_lastCopyOutcome.problems.size(), 1u);
  const CopyProblem& damage = g_lastCopyOutcome.problems[0];
  EXPECT_EQ(damage.kind, kCopySalvaged);
  EXPECT_EQ(damage.path, src + "bad.bin");
  EXPECT_EQ(damage.size, 3 * 1024 * 1024);
  EXPECT_EQ(damage.unreadableBytes, 8192);
  ASSERT_EQ(damage.unreadable.size(), 1u);
  EXPECT_EQ(damage.unreadable[0].offset, 1048576 + 2 * 4096);
  EXPECT_EQ(damage.unreadable[0].length, 8192);
  EXPECT_EQ(files.OpenDescriptors(), 0);
}

TEST_F(CopyEngineTest, ASourceThatFailsToOpenWithAnIoErrorIsAReadFailure) {
  vt::WriteFile(src + "dead.bin", "d");
  vt::FakeFileOps files;
  files.Fail(vt::FakeFileOps::kOpen, EIO, "*/src/dead.bin");
  Select({"dead.bin"});
  wxTEST_DIALOG(RunCopy(), wxExpectModal<wxMessageDialog>(wxOK).Describe("the open failure"));
  Settle();
  ASSERT_EQ(g_lastCopyOutcome.problems.size(), 1u);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].kind, kCopyReadFailed);
  EXPECT_FALSE(Exists(dst + "dead.bin"));
}

TEST_F(CopyEngineTest, ACancelBetweenTwoFilesTakesEffectAtTheNextFilesFirstChunk) {
  vt::WriteFile(src + "a.txt", "first");
  vt::WriteFile(src + "b.txt", "second");
  vt::WriteFile(src + "c.txt", "third");
  vt::FakeFileOps files;
  // Closing a.txt's copy takes a while: the Cancel comes then, after its
  // last chunk and before b.txt.
  files.Delay(vt::FakeFileOps::kClose, 300, "*/dst/a.txt");
  const std::string copyOfA = dst + "a.txt";
  vt::TimerCall canceller(5, [&copyOfA] {
    my_dialog_gauge* g = OpenGauge();
    if (g && Exists(copyOfA) && vt::ReadFile(copyOfA) == "first") g->m_cancel = true;
  });
  Select({"a.txt", "b.txt", "c.txt"});
  RunCopy();
  Settle();
  EXPECT_EQ(vt::ReadFile(dst + "a.txt"), "first") << "a file closing at the Cancel is complete";
  EXPECT_FALSE(Exists(dst + "b.txt")) << "the next file's partial copy is removed";
  EXPECT_FALSE(Exists(dst + "c.txt"));
  EXPECT_EQ(g_lastCopyOutcome.result, 10);
  int readsOfB = 0, opensOfC = 0;
  for (const std::string& call : files.Calls()) {
    const bool moves = call.find("read") == 0 || call.find("copy_file_range") == 0;
    if (moves && call.find("/src/b.txt") != std::string::npos) ++readsOfB;
    if (call.find("open") == 0 && call.find("/src/c.txt") != std::string::npos) ++opensOfC;
  }
  EXPECT_EQ(readsOfB, 1) << "b.txt was opened and its first chunk read";
  EXPECT_EQ(opensOfC, 0);
  EXPECT_TRUE(host->IsEnabled());
  EXPECT_EQ(files.OpenDescriptors(), 0);
}

namespace {

int CountKind(int kind) {
  int n = 0;
  for (const CopyProblem& p : g_lastCopyOutcome.problems) n += p.kind == kind;
  return n;
}

}  // namespace

TEST(CopyDestinationVolume, TheLongestMountPointAboveThePathHoldsIt) {
  View_Disk_Info table;
  table.m_VolumeCount = 3;
  snprintf(table.m_Volume[0].MountPoint, 32, "/mnt/E");
  snprintf(table.m_Volume[1].MountPoint, 32, "/mnt/E/inner");
  snprintf(table.m_Volume[2].MountPoint, 32, "/mnt/EF");
  EXPECT_EQ(VolumeIndexOf(table, "/mnt/E/x/"), 0);
  EXPECT_EQ(VolumeIndexOf(table, "/mnt/E"), 0);
  EXPECT_EQ(VolumeIndexOf(table, "/mnt/E/inner/a"), 1);
  EXPECT_EQ(VolumeIndexOf(table, "/mnt/EF/a"), 2);
  EXPECT_EQ(VolumeIndexOf(table, "/mnt/Ex/a"), -1);
  EXPECT_EQ(VolumeIndexOf(table, "/tmp/a"), -1);
}

TEST(CopyDestinationVolume, TheFreeSpaceQuestionSaysWhatIsNeededAndWhatIsFree) {
  EXPECT_EQ(FreeSpaceQuestion(3LL << 30, 900LL << 20, 'E'),
            "The files to copy need 3.0 GB, but drive E: has only 900 MB free.\n\n"
            "Copy anyway, or stop?");
}

TEST_F(CopyEngineTest, OnlyTheFirstFileThatDoesNotOpenAsksForAClick) {
  for (const char* name : {"locked1.bin", "locked2.bin", "fine.txt", "locked3.bin"})
    vt::WriteFile(src + name, name);
  vt::FakeFileOps files;
  files.Fail(vt::FakeFileOps::kOpen, EACCES, "*/src/locked*");
  Select({"locked1.bin", "locked2.bin", "fine.txt", "locked3.bin"});
  wxTEST_DIALOG(RunCopy(), wxExpectModal<wxMessageDialog>(wxOK).Describe("the first open failure"));
  Settle();
  EXPECT_TRUE(vt::UnexpectedDialogs().empty()) << "one message for three failures";
  EXPECT_EQ(CountKind(kCopyNotOpened), 3);
  EXPECT_EQ(vt::ReadFile(dst + "fine.txt"), "fine.txt");
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

TEST_F(CopyEngineTest, AVanishedFileAndARefusedNameAreRecordedWithoutAMessage) {
  vt::WriteFile(src + "gone.txt", "g");
  vt::WriteFile(src + "bad name.txt", "b");
  vt::WriteFile(src + "ok.txt", "o");
  Select({"gone.txt", "bad name.txt", "ok.txt"});
  copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
  ASSERT_EQ(job.GetAll_DirFileInfo(), 0);
  ASSERT_EQ(unlink((src + "gone.txt").c_str()), 0);  // gone between collection and copy
  vt::FakeFileOps files;
  files.Fail(vt::FakeFileOps::kOpen, EINVAL, "*/dst/bad name.txt");  // what vfat says
  // Only the vanished file's failure brings the one message.
  wxTEST_DIALOG(EXPECT_EQ(job.cp_DirFile(), 1),
                wxExpectModal<wxMessageDialog>(wxOK).Describe("the vanished file"));
  ASSERT_EQ(job.Problems().size(), 2u);
  EXPECT_EQ(job.Problems()[0].kind, kCopyVanished);
  EXPECT_EQ(job.Problems()[0].size, 1);
  EXPECT_EQ(job.Problems()[1].kind, kCopyNameRefused);
  EXPECT_EQ(job.Problems()[1].error, EINVAL);
  EXPECT_EQ(vt::ReadFile(dst + "ok.txt"), "o");
  EXPECT_FALSE(Exists(dst + "bad name.txt"));
}

TEST_F(CopyEngineTest, AFileOfFourGigabytesIsNotAttemptedOnAFatVolume) {
  // Sparse: 4 GiB and one byte without the data.
  vt::WriteFile(src + "mail.pst", "");
  ASSERT_EQ(truncate((src + "mail.pst").c_str(), (4LL << 30) + 1), 0);
  vt::WriteFile(src + "small.txt", "s");
  DestinationVolume fat(root + "/dst", 3, 'F');
  Select({"mail.pst", "small.txt"});
  RunCopy();
  Settle();
  EXPECT_FALSE(Exists(dst + "mail.pst"));
  EXPECT_EQ(vt::ReadFile(dst + "small.txt"), "s");
  ASSERT_EQ(CountKind(kCopyTooLargeForFat), 1);
  EXPECT_EQ(g_lastCopyOutcome.problems[0].size, (4LL << 30) + 1);
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

TEST_F(CopyEngineTest, AJobLargerThanTheFreeSpaceAsksOnceAndStopsOnStop) {
  vt::WriteFile(src + "a.bin", Bytes(300000, 7));
  vt::WriteFile(src + "b.bin", Bytes(300000, 8));
  vt::FakeDevices devices;
  DestinationVolume volume(root + "/dst", 4, 'E');
  devices.SetStatfs(root + "/dst", 4096, 1000, 100, 100);  // 400 KB free
  Select({"a.bin", "b.bin"});
  wxTEST_DIALOG(RunCopy(), wxExpectModal<wxMessageDialog>(wxNO).Describe("the free-space question"));
  Settle();
  EXPECT_FALSE(Exists(dst + "a.bin"));
  EXPECT_EQ(g_lastCopyOutcome.result, 10);
  EXPECT_TRUE(host->IsEnabled());
  EXPECT_EQ(codes, std::vector<int>{MYCMD_OPEN_TARGET});

  wxTEST_DIALOG(RunCopy(), wxExpectModal<wxMessageDialog>(wxYES).Describe("copy anyway"));
  Settle();
  EXPECT_EQ(vt::ReadFile(dst + "a.bin"), vt::ReadFile(src + "a.bin"));
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
}

TEST_F(CopyEngineTest, TheDestinationIsFlushedBeforeTheWindowCloses) {
  vt::WriteFile(src + "a.txt", "a");
  vt::FakeFileOps files;
  Select({"a.txt"});
  RunCopy();
  Settle();
  const std::vector<std::string> calls = files.Calls();
  EXPECT_NE(std::find(calls.begin(), calls.end(), "syncfs " + dst), calls.end())
      << "syncfs of the destination folder";
}
