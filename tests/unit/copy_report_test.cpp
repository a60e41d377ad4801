// The end-of-copy report's texts: one line per problem (drive-letter path and
// what happened in words), the totals line, the bounded window text and the
// lines on standard output.
#include <errno.h>

#include <gtest/gtest.h>

#include <string>

#include "common/stdout_capture.h"
#include "copy/CopyOutcome.h"
#include "copy/CopyReport.h"

namespace {

CopyProblem Problem(const std::string& path, int kind, int error = 0) {
  CopyProblem p;
  p.path = path;
  p.kind = kind;
  p.error = error;
  return p;
}

std::string U8(const wxString& s) { return s.utf8_string(); }

TEST(CopyReportPath, MountedPathsShowTheirDriveLetter) {
  EXPECT_EQ(U8(CopyReportPath("/mnt/C/data/big.bin")), "C:\\data\\big.bin");
  EXPECT_EQ(U8(CopyReportPath("/mnt/E")), "E:\\");
  // Bytes that are not UTF-8, and letters outside ASCII, show as "_".
  EXPECT_EQ(U8(CopyReportPath("/mnt/C/a\xff\xfe.txt")), "C:\\a__.txt");
  EXPECT_EQ(U8(CopyReportPath("/mnt/C/\xc3\x9c" "ber.txt")), "C:\\_ber.txt");
  // Anything else is shown as it is.
  EXPECT_EQ(U8(CopyReportPath("/tmp/x/y")), "/tmp/x/y");
  EXPECT_EQ(U8(CopyReportPath("/mnt/CD/y")), "/mnt/CD/y");
}

TEST(CopyReportWords, TheFixedTextsOfTheKinds) {
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyReadFailed, EIO))),
            "not copied: the disk reported a read error");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyReadFailed, 0))),
            "not copied: the disk reported a read error");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyReadFailed, ENOMEM))),
            "not copied: the file could not be read (out of memory)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyTooLargeForFat))),
            "not copied: too large for a FAT volume (4 GB limit)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyNameRefused, EINVAL))),
            "not copied: the destination does not accept this name");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyVanished, ENOENT))),
            "not copied: the file vanished");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyNotOpened, EACCES))),
            "not copied: the file could not be opened (access denied)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyNotOpened, 0))),
            "not copied: the file could not be opened");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyLoopSkipped))),
            "not entered: a link back to a folder that contains it");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyLinkDangles))),
            "not copied: a link whose target is missing");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyNotAFile))),
            "not copied: not a regular file (a device, pipe or socket)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyNotRemoved, EROFS))),
            "not copied: its partial copy could not be removed from the destination "
            "(the volume is read-only)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", kCopyUnreadable, EACCES))),
            "not copied: the folder could not be read (access denied)");
  EXPECT_EQ(U8(CopyProblemWords(Problem("/mnt/C/a", 99, EIO))),
            "not copied (problem 99) (the disk reported an error)");
}

TEST(CopyReportWords, SystemErrorsInFixedWords) {
  EXPECT_EQ(U8(CopyErrorWords(EACCES)), "access denied");
  EXPECT_EQ(U8(CopyErrorWords(EPERM)), "access denied");
  EXPECT_EQ(U8(CopyErrorWords(ENOENT)), "no such file or folder");
  EXPECT_EQ(U8(CopyErrorWords(EIO)), "the disk reported an error");
  EXPECT_EQ(U8(CopyErrorWords(EROFS)), "the volume is read-only");
  EXPECT_EQ(U8(CopyErrorWords(ENOSPC)), "no space left on the volume");
  EXPECT_EQ(U8(CopyErrorWords(EDQUOT)), "the disk quota is used up");
  EXPECT_EQ(U8(CopyErrorWords(EMFILE)), "too many open files");
  EXPECT_EQ(U8(CopyErrorWords(ENFILE)), "too many open files");
  EXPECT_EQ(U8(CopyErrorWords(ENAMETOOLONG)), "the name is too long");
  EXPECT_EQ(U8(CopyErrorWords(EINVAL)), "the name or request is not valid here");
  EXPECT_EQ(U8(CopyErrorWords(EISDIR)), "a folder stands in its place");
  EXPECT_EQ(U8(CopyErrorWords(ENOTDIR)), "a part of the path is not a folder");
  EXPECT_EQ(U8(CopyErrorWords(EEXIST)), "something of that name exists already");
  EXPECT_EQ(U8(CopyErrorWords(EBUSY)), "the file is in use");
  EXPECT_EQ(U8(CopyErrorWords(ETXTBSY)), "the file is in use");
  EXPECT_EQ(U8(CopyErrorWords(ELOOP)), "too many links in the path");
  EXPECT_EQ(U8(CopyErrorWords(ENOMEM)), "out of memory");
  EXPECT_EQ(U8(CopyErrorWords(ENXIO)), "the device is not there");
  EXPECT_EQ(U8(CopyErrorWords(ENODEV)), "the device is not there");
  EXPECT_EQ(U8(CopyErrorWords(ETIMEDOUT)), "the device did not answer in time");
  EXPECT_EQ(U8(CopyErrorWords(EFBIG)), "the file is too large for the volume");
  EXPECT_EQ(U8(CopyErrorWords(EPIPE)), "error " + std::to_string(EPIPE));
}

TEST(CopyReportWords, ASalvagedFileSaysHowMuchIsZerosAndWhere) {
  CopyProblem p = Problem("/mnt/C/mail.pst", kCopySalvaged);
  p.unreadableBytes = 12288;
  EXPECT_EQ(U8(CopyProblemWords(p)), "copied with 12 KB unreadable, filled with zeros");
  // Rounded up to whole KB, grouped.
  p.unreadableBytes = 12289;
  EXPECT_EQ(U8(CopyProblemWords(p)), "copied with 13 KB unreadable, filled with zeros");
  p.unreadableBytes = 1;
  EXPECT_EQ(U8(CopyProblemWords(p)), "copied with 1 KB unreadable, filled with zeros");
  p.unreadableBytes = 4096LL * 1000000;
  EXPECT_EQ(U8(CopyProblemWords(p)), "copied with 4,000,000 KB unreadable, filled with zeros");
  // The stretches, first and last byte of each.
  p.unreadableBytes = 8192;
  p.unreadable = {{4096, 4096}, {1048576, 4096}};
  EXPECT_EQ(U8(CopyProblemWords(p)),
            "copied with 8 KB unreadable, filled with zeros (bytes 4,096-8,191, "
            "1,048,576-1,052,671)");
  // Three are named, the rest counted.
  p.unreadableBytes = 5 * 4096;
  p.unreadable = {{0, 4096}, {8192, 4096}, {16384, 4096}, {24576, 4096}, {32768, 4096}};
  EXPECT_EQ(U8(CopyProblemWords(p)),
            "copied with 20 KB unreadable, filled with zeros (bytes 0-4,095, 8,192-12,287, "
            "16,384-20,479 and 2 more)");
}

TEST(CopyReportLine, PathThenWords) {
  EXPECT_EQ(U8(CopyProblemLine(Problem("/mnt/D/photos/a.jpg", kCopyReadFailed, EIO))),
            "D:\\photos\\a.jpg: not copied: the disk reported a read error");
  EXPECT_EQ(U8(CopyProblemLine(Problem("/mnt/D/x\x80y", kCopyVanished))),
            "D:\\x_y: not copied: the file vanished");
}

CopyOutcome Finished(int items) {
  CopyOutcome o;
  o.result = 1;
  o.itemCount = items;
  return o;
}

TEST(CopyReportTotals, ACopyThatRanToItsEnd) {
  CopyOutcome o = Finished(16);
  CopyProblem salvaged = Problem("/mnt/C/s", kCopySalvaged);
  salvaged.unreadableBytes = 4096;
  o.problems = {Problem("/mnt/C/a", kCopyReadFailed, EIO), salvaged,
                Problem("/mnt/C/b", kCopyVanished), Problem("/mnt/C/c", kCopyTooLargeForFat)};
  EXPECT_EQ(U8(CopyTotalsLine(o)), "12 files copied, 1 copied with unreadable parts, 3 not copied");
  // Items found while collecting are not files of the job: the count of
  // copied files stays, the count of items not copied grows.
  o.problems.push_back(Problem("/mnt/C/link", kCopyLinkDangles));
  o.problems.push_back(Problem("/mnt/C/fifo", kCopyNotAFile));
  o.problems.push_back(Problem("/mnt/C/loop", kCopyLoopSkipped));
  o.problems.push_back(Problem("/mnt/C/locked", kCopyUnreadable, EACCES));
  EXPECT_EQ(U8(CopyTotalsLine(o)), "12 files copied, 1 copied with unreadable parts, 7 not copied");
}

TEST(CopyReportTotals, ZeroPartsAreLeftOutAndOneFileIsSingular) {
  CopyOutcome o = Finished(2);
  o.problems = {Problem("/mnt/C/a", kCopyNotOpened, EACCES)};
  EXPECT_EQ(U8(CopyTotalsLine(o)), "1 file copied, 1 not copied");
  CopyProblem salvaged = Problem("/mnt/C/s", kCopySalvaged);
  o.problems = {salvaged};
  EXPECT_EQ(U8(CopyTotalsLine(o)), "1 file copied, 1 copied with unreadable parts");
  o = Finished(1234);
  EXPECT_EQ(U8(CopyTotalsLine(o)), "1,234 files copied");
  o = Finished(0);
  o.problems = {Problem("/mnt/C/link", kCopyLinkDangles)};
  EXPECT_EQ(U8(CopyTotalsLine(o)), "0 files copied, 1 not copied");
}

TEST(CopyReportTotals, AnItemWithTwoLinesCountsOnce) {
  CopyOutcome o = Finished(3);
  o.problems = {Problem("/mnt/C/a", kCopyReadFailed, EIO), Problem("/mnt/C/a", kCopyNotRemoved, EROFS)};
  EXPECT_EQ(U8(CopyTotalsLine(o)), "2 files copied, 1 not copied");
  // Never below zero, whatever the figures say.
  o.itemCount = 0;
  EXPECT_EQ(U8(CopyTotalsLine(o)), "0 files copied, 1 not copied");
}

TEST(CopyReportTotals, ACopyThatEndedEarlySaysHowAndTheBytes) {
  CopyOutcome o;
  o.result = 10;
  o.itemCount = 40;
  o.totalBytes = 5 * 1024 * 1024;
  o.bytesCopied = 2 * 1024 * 1024 + 1000;
  o.problems = {Problem("/mnt/C/a", kCopyReadFailed, EIO)};
  EXPECT_EQ(U8(CopyTotalsLine(o)),
            "Copy stopped before its end: 2,048 KB of 5,120 KB copied, 1 not copied");
  o.result = -1;
  EXPECT_EQ(U8(CopyTotalsLine(o)),
            "Copy ended early, the destination is full: 2,048 KB of 5,120 KB copied, 1 not copied");
  o.result = 0;
  EXPECT_EQ(U8(CopyTotalsLine(o)), "Copy ended early: 2,048 KB of 5,120 KB copied, 1 not copied");
}

TEST(CopyReportLines, OneLinePerProblemInOrderThenTheTotals) {
  CopyOutcome o = Finished(3);
  o.problems = {Problem("/mnt/C/z", kCopyVanished), Problem("/mnt/C/a", kCopyNameRefused)};
  const wxArrayString lines = CopyReportLines(o);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(U8(lines[0]), "C:\\z: not copied: the file vanished");
  EXPECT_EQ(U8(lines[1]), "C:\\a: not copied: the destination does not accept this name");
  EXPECT_EQ(U8(lines[2]), "1 file copied, 2 not copied");
}

TEST(CopyReportText, AllLinesWhenTheyFit) {
  wxArrayString lines;
  lines.Add("one");
  lines.Add("two");
  lines.Add("totals");
  EXPECT_EQ(U8(CopyReportText(lines, 3)), "one\ntwo\ntotals\n");
  EXPECT_EQ(U8(CopyReportText(lines, 100)), "one\ntwo\ntotals\n");
}

TEST(CopyReportText, TooManyLinesKeepTheFirstAndTheTotals) {
  wxArrayString lines;
  for (int i = 0; i < 2000; ++i) lines.Add(wxString::Format("line %d", i));
  lines.Add("totals");
  const std::string text = U8(CopyReportText(lines, 5));
  EXPECT_EQ(text, "line 0\nline 1\nline 2\n... 1,997 more lines, all on standard output\ntotals\n");
  // At least one line of problems and the totals, whatever is asked.
  EXPECT_EQ(U8(CopyReportText(lines, 0)), "... 2,000 more lines, all on standard output\ntotals\n");
}

TEST(CopyReportPrint, EveryLineOnItsOwnLineOfStandardOutput) {
  wxArrayString lines;
  lines.Add(wxString::FromUTF8("C:\\a: not copied: the file vanished"));
  lines.Add("0 files copied, 1 not copied");
  vt::StdoutCapture capture;
  PrintCopyReport(lines);
  EXPECT_EQ(capture.Stop(), "C:\\a: not copied: the file vanished\n0 files copied, 1 not copied\n");
}

TEST(CopyReportDue, OnlyAnUnreportedOutcomeWithProblems) {
  CopyOutcome o = Finished(3);
  EXPECT_FALSE(CopyReportDue(o)) << "a copy without problems opens nothing";
  o.problems = {Problem("/mnt/C/a", kCopyVanished)};
  EXPECT_TRUE(CopyReportDue(o));
  o.reported = true;
  EXPECT_FALSE(CopyReportDue(o));
  EXPECT_FALSE(CopyOutcome().reported) << "a new outcome starts unreported";
}

}  // namespace
