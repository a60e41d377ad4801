// What became of a copy job, kept after its progress dialog has gone: the
// engine's result, the counts, and every item that was not copied as it
// should have been, with the reason.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

enum CopyProblemKind {
  kCopyNotOpened = 1,     // source or destination could not be opened
  kCopyReadFailed = 2,    // the source could not be read; the partial file was removed
  kCopyLoopSkipped = 3,   // a link back to a folder that contains it: not entered
  kCopyLinkDangles = 4,   // a symbolic link whose target is missing
  kCopyNotAFile = 5,      // a device, pipe or socket: not copied
  kCopyNotRemoved = 6,    // a partial file that could not be removed
  kCopyUnreadable = 7,    // a folder that could not be read while collecting
  kCopySalvaged = 8,      // copied; blocks that stayed unreadable were filled with zeros
  kCopyVanished = 9,      // the file was gone when its turn came
  kCopyTooLargeForFat = 10,  // 4 GiB or more, bound for a FAT volume: not attempted
  kCopyNameRefused = 11,  // the destination's file system refused the name
};

// A stretch of a source file that could not be read.
struct CopyRange {
  int64_t offset = 0;
  int64_t length = 0;
};

struct CopyProblem {
  std::string path;  // the source's full path, as bytes
  int kind = 0;
  int error = 0;     // errno, 0 when there is none
  int64_t size = 0;  // the file's size as collected
  // A salvaged file: the bytes that stayed unreadable and where they lie
  // (adjacent stretches joined), in file order.
  int64_t unreadableBytes = 0;
  std::vector<CopyRange> unreadable;
};

struct CopyOutcome {
  int64_t result = 0;        // what the copy ended with: 1 done, 10 stopped, -1 full, 0 not run
  int itemCount = 0;         // files of the job
  int itemsDone = 0;         // folders and files handled
  int64_t totalBytes = 0;
  int64_t bytesCopied = 0;
  std::vector<CopyProblem> problems;
  // Set once the end-of-copy report has been shown for this outcome (every
  // copy writes a new outcome, so a new copy starts unreported).
  bool reported = false;
};

// The last copy job's outcome, written when its progress dialog closes.
extern CopyOutcome g_lastCopyOutcome;
