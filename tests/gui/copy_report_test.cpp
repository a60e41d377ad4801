// The report at the end of a copy, through the real windows: the main frame
// over the test volumes, the progress window running the job, the message
// box of a file that cannot be opened, then the frame's command 1401 opening
// the report with one line per problem and the totals, on the screen and on
// standard output. A copy without problems opens nothing, and the frame is
// usable afterwards.
#include <errno.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <wx/button.h>
#include <wx/image.h>
#include <wx/uiaction.h>
#include <wx/weakref.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "common/CustomEvents.h"
#include "common/fake_fileops.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "copy_env.h"
#include "destination/Des_PathInfo.h"
#include "destination_env.h"
#include "dialogs/my_log_dialog.h"
#include "faultfs/faultfs_mount.h"
#include "frame_on_volumes_env.h"
#include "widgets_pixels.h"

namespace {

const char kSource[] = "/mnt/C/data/src/";
const char kTarget[] = "/mnt/E/backup/";

// The report windows that are open and not being deleted.
std::vector<my_log_dialog*> OpenReports() {
  std::vector<my_log_dialog*> v;
  for (wxWindow* w : wxTopLevelWindows)
    if (my_log_dialog* d = dynamic_cast<my_log_dialog*>(w))
      if (!d->IsBeingDeleted()) v.push_back(d);
  return v;
}

class CopyReportTest : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    vt::WriteFile(std::string(kSource) + "ok.txt", "fine");
    vt::WriteFile(std::string(kSource) + "locked.bin", vt::PatternBytes(5000, 1));
    ASSERT_EQ(symlink("/mnt/C/data/nowhere", (std::string(kSource) + "gone.lnk").c_str()), 0);
    vt::WriteFile(std::string(kTarget) + ".keep", "");
  }
  void SetUp() override {
    vt::FrameOnTestVolumes::SetUp();
    if (HasFatalFailure()) return;
    g_copy_dialog_return = COPY_ANSWER_YES_TO_ALL;
    g_lastCopyOutcome = CopyOutcome();
    frame->SetTargetPath("/mnt/E/backup");
  }
  void TearDown() override {
    for (my_log_dialog* d : OpenReports()) d->Destroy();
    vt::Pump(30);
    vt::FrameOnTestVolumes::TearDown();
  }

  // Copies the named files of the source folder as the copy command does:
  // the progress window over the frame, which gets command 1401 when the
  // window has gone.
  void Copy(const std::vector<std::string>& names, const char* source = kSource) {
    g_Des_PathInfo.m_sourceItems.clear();
    for (const std::string& n : names) g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8(n));
    g_Des_PathInfo.m_sourcePath = source;
    g_Des_PathInfo.m_destPath = kTarget;
    new my_dialog_gauge(frame, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                        wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU);
  }
  // Lets the progress window go and the frame handle 1401.
  void Settle() {
    EXPECT_TRUE(vt::PumpUntil([] { return vt::OpenGauge() == nullptr; }, 5000));
    vt::Pump(150);
  }
  // A copy of ok.txt, locked.bin (cannot be opened) and gone.lnk (dangles).
  void CopyWithProblems(vt::SeenBox* box) {
    vt::FakeFileOps files;
    files.Fail(vt::FakeFileOps::kOpen, EACCES, "*/src/locked.bin");
    wxTEST_DIALOG(Copy({"ok.txt", "locked.bin", "gone.lnk"}), MessageSeen(box));
    Settle();
  }
  // Posts command 1401 to the frame as the progress window does.
  void Post1401() {
    wxCommandEvent open(wxEVT_MY_CUSTOM_COMMAND, MYCMD_OPEN_TARGET);
    wxPostEvent(frame, open);
    vt::Pump(150);
  }
};

const char kLinkLine[] = "C:\\data\\src\\gone.lnk: not copied: a link whose target is missing";
const char kLockedLine[] =
    "C:\\data\\src\\locked.bin: not copied: the file could not be opened (access denied)";
const char kTotals[] = "1 file copied, 2 not copied";

TEST_F(CopyReportTest, ACopyWithProblemsOpensTheReportWithItsLinesAfterTheProgressWindow) {
  vt::SeenBox box;
  std::string out;
  {
    vt::StdoutCapture capture;
    CopyWithProblems(&box);
    out = capture.Stop();
  }
  EXPECT_EQ(box.count, 1);
  EXPECT_EQ(box.message, "Open file is error !");
  EXPECT_EQ(vt::ReadFile(std::string(kTarget) + "ok.txt"), "fine");

  const std::vector<my_log_dialog*> reports = OpenReports();
  ASSERT_EQ(reports.size(), 1u) << "one report, after the progress window";
  my_log_dialog* report = reports[0];
  EXPECT_EQ(frame->GetReportDialog(), report);
  EXPECT_EQ(report->GetTitle(), "Copy report");
  EXPECT_TRUE(report->IsShown());
  EXPECT_FALSE(report->IsModal());
  EXPECT_EQ(report->GetParent(), frame);
  // The collection found the link first, the copy the locked file.
  const std::string lines = std::string(kLinkLine) + "\n" + kLockedLine + "\n" + kTotals + "\n";
  EXPECT_EQ(report->m_logText->GetValue().utf8_string(), lines);
  EXPECT_NE(out.find(lines), std::string::npos) << out;
  EXPECT_TRUE(g_lastCopyOutcome.reported);

  // The report stands where it was put and fits a 1280 x 1024 screen.
  EXPECT_TRUE(vt::PumpUntil([report] { return report->IsShownOnScreen(); }));
  EXPECT_EQ(report->GetPosition(), wxPoint(200, 160));
  EXPECT_TRUE(wxRect(0, 0, 1280, 1024).Contains(report->GetScreenRect()));
  EXPECT_TRUE(report->m_logText->IsShown());

  // The main frame and its window take input again.
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_TRUE(top->IsEnabled());
}

TEST_F(CopyReportTest, ASalvagedAndAVanishedFileAreReportedInTheirWords) {
  const std::string src = kSource;
  vt::WriteFile(src + "bad.bin", vt::PatternBytes(3 * 1024 * 1024, 4));
  vt::WriteFile(src + "gone.txt", "soon gone");
  vt::SeenBox box;
  {
    vt::FakeFileOps files;
    files.Fail(vt::FakeFileOps::kCopyFileRange, EXDEV);
    // The second chunk of bad.bin fails; of its blocks, the third and the
    // fourth fail both times they are read.
    files.Fail(vt::FakeFileOps::kRead, EIO, "*/src/bad.bin", 2);
    for (int nth = 3; nth <= 6; ++nth) files.Fail(vt::FakeFileOps::kPread, EIO, "*/src/bad.bin", nth);
    // gone.txt is gone when its turn comes.
    files.Fail(vt::FakeFileOps::kOpen, ENOENT, "*/src/gone.txt");
    wxTEST_DIALOG(Copy({"ok.txt", "bad.bin", "gone.txt"}), MessageSeen(&box));
    Settle();
  }
  EXPECT_EQ(box.count, 1) << "the first file that did not open";
  ASSERT_EQ(OpenReports().size(), 1u);
  EXPECT_EQ(OpenReports()[0]->m_logText->GetValue().utf8_string(),
            "C:\\data\\src\\bad.bin: copied with 8 KB unreadable, filled with zeros "
            "(bytes 1,056,768-1,064,959)\n"
            "C:\\data\\src\\gone.txt: not copied: the file vanished\n"
            "1 file copied, 1 copied with unreadable parts, 1 not copied\n");
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_TRUE(top->IsEnabled());
}

TEST_F(CopyReportTest, CleanEmptiesTheReportAndClosingItLeavesTheFrameUsable) {
  vt::SeenBox box;
  CopyWithProblems(&box);
  ASSERT_EQ(OpenReports().size(), 1u);
  wxWeakRef<my_log_dialog> report(OpenReports()[0]);
  report->Raise();
  ASSERT_TRUE(vt::PumpUntil([&report] { return report->IsShownOnScreen(); }));
  vt::Pump(100);
  ASSERT_FALSE(report->m_logText->IsEmpty());
  wxButton* clean = wxDynamicCast(report->FindWindow(ID_LOG_CLEAN), wxButton);
  ASSERT_NE(clean, nullptr);
  EXPECT_EQ(clean->GetLabel(), "&Clean");
  const wxRect r = clean->GetScreenRect();
  wxUIActionSimulator sim;
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(30);
  sim.MouseClick();
  EXPECT_TRUE(vt::PumpUntil([&report] { return report->m_logText->IsEmpty(); }));
  EXPECT_TRUE(report->IsShown());

  report->Close();
  EXPECT_TRUE(vt::PumpUntil([&report] { return !report; }));
  EXPECT_EQ(frame->GetReportDialog(), nullptr);
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_TRUE(top->IsEnabled());
}

TEST_F(CopyReportTest, TheReportOpensOncePerCopy) {
  vt::SeenBox box;
  CopyWithProblems(&box);
  ASSERT_EQ(OpenReports().size(), 1u);
  OpenReports()[0]->Destroy();
  vt::Pump(50);
  ASSERT_TRUE(OpenReports().empty());
  {
    vt::StdoutCapture capture;
    Post1401();
    EXPECT_EQ(capture.Stop().find(kTotals), std::string::npos) << "nothing reported again";
  }
  EXPECT_TRUE(OpenReports().empty()) << "a second 1401 of the same copy opens nothing";

  // The next copy with problems has a report of its own, in place of an
  // earlier one still open.
  CopyWithProblems(&box);
  ASSERT_EQ(OpenReports().size(), 1u);
  CopyWithProblems(&box);
  vt::Pump(50);
  ASSERT_EQ(OpenReports().size(), 1u) << "the earlier report made way";
  EXPECT_EQ(box.count, 3);
  EXPECT_TRUE(frame->IsEnabled());
}

TEST_F(CopyReportTest, ClosingTheHostWindowTakesAnOpenReportWithIt) {
  vt::SeenBox box;
  CopyWithProblems(&box);
  ASSERT_EQ(OpenReports().size(), 1u);
  wxWeakRef<my_log_dialog> report(OpenReports()[0]);
  top->Destroy();
  top = nullptr;
  frame = nullptr;
  EXPECT_TRUE(vt::PumpUntil([&report] { return !report; }));
  EXPECT_TRUE(OpenReports().empty());
}

TEST_F(CopyReportTest, ACopyWithoutProblemsOpensNoReport) {
  std::string out;
  {
    vt::StdoutCapture capture;
    Copy({"ok.txt"});
    Settle();
    out = capture.Stop();
  }
  EXPECT_EQ(g_lastCopyOutcome.result, 1);
  EXPECT_TRUE(g_lastCopyOutcome.problems.empty());
  EXPECT_EQ(vt::ReadFile(std::string(kTarget) + "ok.txt"), "fine");
  EXPECT_TRUE(OpenReports().empty());
  EXPECT_EQ(frame->GetReportDialog(), nullptr);
  EXPECT_EQ(out.find("copied"), std::string::npos) << out;
  for (const vt::SeenMessage& m : vt::UnexpectedDialogs())
    ADD_FAILURE() << "shown: " << m.caption << ": " << m.message;
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_TRUE(top->IsEnabled());
  // The source browser shows the destination folder (the navigation of 1401
  // happened; the report only follows it).
  EXPECT_EQ(frame->GetTreeCtrl()->GetPath(), "/mnt/E/backup");
}

// A report of every kind of problem, as a copy from a failing disk to a FAT
// stick would leave it (the outcome is set here; the copies above show that
// a real copy's outcome gets there). When VANTORI_SCREENSHOT names a file,
// the report window is saved there as a PNG (tools/screenshot-docs.sh).
TEST_F(CopyReportTest, Screenshot) {
  CopyOutcome outcome;
  outcome.result = 1;
  outcome.itemCount = 412;
  const std::string c = "/mnt/C/Users/Anna/";
  CopyProblem salvaged{c + "Mail/archive.pst", kCopySalvaged};
  salvaged.unreadableBytes = 12288;
  salvaged.unreadable = {{8192, 4096}, {1052672, 8192}};
  outcome.problems = {
      CopyProblem{c + "AppData/Local/Temp/lock", kCopyNotAFile},
      CopyProblem{c + "Links/Old drive", kCopyLinkDangles},
      CopyProblem{c + "Documents/tax 2019.pdf", kCopyReadFailed, EIO},
      salvaged,
      CopyProblem{c + "Videos/wedding.mkv", kCopyTooLargeForFat},
      CopyProblem{c + "Documents/report:final.docx", kCopyNameRefused, EINVAL},
      CopyProblem{c + "Downloads/setup.tmp", kCopyVanished, ENOENT},
      CopyProblem{c + "NTUSER.DAT", kCopyNotOpened, EACCES},
  };
  g_lastCopyOutcome = outcome;
  Post1401();
  ASSERT_EQ(OpenReports().size(), 1u);
  my_log_dialog* report = OpenReports()[0];
  const wxString text = report->m_logText->GetValue();
  for (const char* line : {
           "C:\\Users\\Anna\\Documents\\tax 2019.pdf: not copied: the disk reported a read error\n",
           "C:\\Users\\Anna\\Mail\\archive.pst: copied with 12 KB unreadable, filled with zeros "
           "(bytes 8,192-12,287, 1,052,672-1,060,863)\n",
           "C:\\Users\\Anna\\Videos\\wedding.mkv: not copied: too large for a FAT volume (4 GB limit)\n",
           "C:\\Users\\Anna\\Documents\\report:final.docx: not copied: the destination does not "
           "accept this name\n",
           "C:\\Users\\Anna\\Downloads\\setup.tmp: not copied: the file vanished\n",
           "406 files copied, 1 copied with unreadable parts, 7 not copied\n"})
    EXPECT_NE(text.Find(line), wxNOT_FOUND) << line << "\nin\n" << text.utf8_string();
  EXPECT_EQ(text.Freq('\n'), 9) << "eight lines and the totals";
  report->Raise();
  ASSERT_TRUE(vt::PumpUntil([report] { return report->IsShownOnScreen(); }));
  vt::Pump(200);
  if (const char* out = std::getenv("VANTORI_SCREENSHOT")) {
    report->Refresh();
    report->Update();
    const wxImage shot = vt::GrabClient(report);
    EXPECT_TRUE(shot.IsOk() && shot.SaveFile(wxString::FromUTF8(out), wxBITMAP_TYPE_PNG));
  }
}

}  // namespace

// A folder of C: served by the fault file system: a read error the salvage
// cannot overcome in the middle of one file, and a file that vanishes
// between the collection and its turn. The real kernel errors go through the
// real engine and windows; the report names both, Clean empties it, and the
// main window is usable afterwards.
TEST_F(CopyReportTest, ACopyFromAFaultySourceVolumeReportsItsDamageThroughTheWindows) {
  char backing[] = "/tmp/vantori-faulty-src-XXXXXX";
  ASSERT_NE(mkdtemp(backing), nullptr);
  const std::string data = vt::PatternBytes(3 * 1024 * 1024 + 512 * 1024, 9);
  vt::WriteFile(std::string(backing) + "/fine.txt", "fine");
  vt::WriteFile(std::string(backing) + "/disk.img", data);
  vt::WriteFile(std::string(backing) + "/gone.txt", "soon gone");
  mkdir("/mnt/C/faulty", 0755);
  vt::SeenBox box;
  {
    // 8 KiB in the middle of the second chunk stay unreadable.
    vt::FaultFs faulty(backing, "/mnt/C/faulty",
                       "disk.img read-eio 1056768-1064960\ngone.txt vanish-after-count\n");
    ASSERT_TRUE(faulty.IsMounted()) << faulty.Error();
    wxTEST_DIALOG(Copy({"fine.txt", "disk.img", "gone.txt"}, "/mnt/C/faulty/"), MessageSeen(&box));
    Settle();
  }
  EXPECT_EQ(box.count, 1) << "the vanished file's one message";
  std::string expected = data;
  std::fill(expected.begin() + 1056768, expected.begin() + 1064960, '\0');
  EXPECT_TRUE(vt::ReadFile(std::string(kTarget) + "disk.img") == expected)
      << "salvaged: the unreadable blocks are zeros, everything else is the source's";
  EXPECT_EQ(vt::ReadFile(std::string(kTarget) + "fine.txt"), "fine");
  ASSERT_EQ(OpenReports().size(), 1u);
  my_log_dialog* report = OpenReports()[0];
  EXPECT_EQ(report->m_logText->GetValue().utf8_string(),
            "C:\\faulty\\disk.img: copied with 8 KB unreadable, filled with zeros "
            "(bytes 1,056,768-1,064,959)\n"
            "C:\\faulty\\gone.txt: not copied: the file vanished\n"
            "1 file copied, 1 copied with unreadable parts, 1 not copied\n");
  wxCommandEvent clean(wxEVT_BUTTON, ID_LOG_CLEAN);
  clean.SetEventObject(report->FindWindow(ID_LOG_CLEAN));
  report->GetEventHandler()->ProcessEvent(clean);
  EXPECT_TRUE(report->m_logText->IsEmpty());
  EXPECT_TRUE(frame->IsEnabled());
  EXPECT_TRUE(top->IsEnabled());
  std::filesystem::remove_all(backing);
}
