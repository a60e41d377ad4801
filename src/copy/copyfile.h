// A copy job: collects every folder and file below the selection held in
// g_Des_PathInfo (GetAll_DirFileInfo), then copies them to the destination
// folder (cp_DirFile) in chunks of 1 MiB through one buffer, keeping the
// progress dialog's gauge and texts current and stopping on its cancel flag.
//
// The reads and writes run on a worker thread (IoWorker); this object's own
// loop, texts and cancel checks stay on the window's thread, which waits in
// short slices and keeps its event loop running, so a read that hangs on a
// failing disk never freezes the window and a Cancel is taken at once.
//
// The progress dialog may go away during any yield (its owner was closed):
// the job then stops as if cancelled and touches the dialog no more.
#pragma once

#include <stdint.h>

#include <wx/stopwatch.h>
#include <wx/string.h>
#include <wx/weakref.h>

#include "copy/CopyProgressWindow.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fileops/IoWorker.h"

#include "copy/ArrayDirFilePath.h"
#include "copy/CopyOutcome.h"

class CopyProgressWindow;
class View_Disk_Info;
class wxWindow;
class FileTransfer;

// What CreateFile returns.
enum {
  COPY_FILE_DONE = 0,
  COPY_FILE_NOT_OPENED = 1,
  COPY_FILE_READ_FAILED = 2,   // not even a salvage could read on: recorded, the partial
                               // file removed; the copy goes on
  COPY_FILE_CANCELLED = 10,
  COPY_FILE_DISK_FULL = -1,
};

// The size of the copy buffer and of one chunk.
enum { COPY_CHUNK_SIZE = 0x100000 };

// One per cent of a job's bytes, at least 1.
int64_t CopyOnePercent(int64_t totalBytes);
// The largest file a FAT volume holds: 4 GiB less one byte.
const int64_t kFatLargestFile = 0xFFFFFFFFLL;
// The volume of the table that holds path (the longest mount point that is
// path or a folder above it); -1 when none does.
int VolumeIndexOf(const View_Disk_Info& table, const std::string& path);
// The question asked when a job needs more than the destination has free.
wxString FreeSpaceQuestion(int64_t needed, int64_t available, char driveLetter);
// The gauge's value for the bytes copied, never above 100 (the total may
// have been counted short: a file grew after it was collected).
int CopyGaugeValue(int64_t copiedBytes, int64_t onePercent);
// The time left as "HH:MM:SS" from the rate so far; empty when no time has
// passed yet or nothing was copied (no rate to go by).
wxString CopyTimeLeft(int64_t totalBytes, int64_t copiedBytes, int64_t elapsedMs);

class copyfile {
 public:
  // dialog: the progress window (my_dialog_gauge) the job fills; null for a
  // job without a window, which is never cancelled.
  copyfile(wxString source, wxString destination, CopyProgressWindow* dialog);
  ~copyfile();
  copyfile(const copyfile&) = delete;
  copyfile& operator=(const copyfile&) = delete;

  void Set_SourcePath(wxString source);

  // Collects the selection; 0, or 10 when cancelled.
  int GetAll_DirFileInfo();
  // Collects one file, or the tree below one folder; 10 when cancelled.
  int count_DirFileInfo(wxString fullPath);

  // Copies the job: 1 when every item was handled, 10 when cancelled or a
  // folder could not be created, -1 when the destination became full.
  int64_t cp_DirFile();
  // Copies one file: COPY_FILE_DONE, COPY_FILE_NOT_OPENED, COPY_FILE_READ_FAILED,
  // COPY_FILE_CANCELLED or COPY_FILE_DISK_FULL.
  int CreateFile(wxString source, wxString destination);

  // The shell escape of a path, in place (the buffer holds 1024 bytes).
  char* ChangeEscapeCharacter(char* path);

  // Placeholders: they do nothing.
  void copying_Data(wxString source, wxString destination);
  void copying_All_Data();

  // The job as collected, and its figures.
  const ArrayDirFilePath& Items() const { return m_items; }
  int ItemCount() const { return m_itemCount; }
  int64_t TotalBytes() const { return m_totalBytes; }
  int64_t CopiedBytes() const { return m_copiedBytes; }
  int ItemsDone() const { return m_itemsDone; }
  const std::vector<CopyProblem>& Problems() const { return m_problems; }
  // When the job needs more room than the destination has free, asks once
  // whether to copy anyway; false to stop. The free space is unknown (and
  // nothing is asked) when the destination cannot be examined.
  bool ConfirmFreeSpace(wxWindow* parent);
  // Makes the destination's file system write out what it holds (a USB
  // stick pulled right after the copy keeps every byte), on the worker
  // thread while the window shows that data is being written.
  void FlushDestination();

  // The figures and problems as one record.
  CopyOutcome Outcome(int64_t result) const;

  // The progress window went away in the middle of the job (its owner was
  // closed): the file being copied is closed and its partial copy removed
  // at once, so that its volume can be unmounted. The run itself ends at its
  // next check.
  void StopNow();

  struct Transfer;  // one file being copied, shared with the worker thread

 private:
  bool Cancelled() const;
  // Lets pending events run; false when the window has gone meanwhile.
  bool YieldAlive();
  // True when the screen is due for new texts (at most every few ms).
  bool ScreenDue();
  void ShowTotals();
  // The current item, done files and done size as they stand.
  void ShowDone();
  // When the screen is due: lets pending events run and shows the done
  // texts. False when the window has gone meanwhile.
  bool RefreshScreen();
  void ShowTimeLeft(const wxString& text);
  void AddItem(const std::string& fullPath, bool isFolder, int64_t size);
  void Problem(const std::string& path, int kind, int error, int64_t size = 0);
  // Why an open failed, as a problem kind (a vanished source, a name the
  // destination refuses, or another failure).
  int OpenFailureKind(const FileTransfer& file) const;
  int MakeFolder(const std::string& destination, const wxString& shown);
  int CopyOneFile(const std::string& source, const std::string& destination, const wxString& shown,
                  int64_t size);
  // Runs one file call on the worker thread, yielding while it takes long;
  // false when the job was cancelled (or the window went) meanwhile.
  bool RunIo(std::function<void()> call);
  // Runs a call whose end the job needs (closing, removing) even when the
  // job was cancelled; gives up only after a few seconds.
  bool RunIoToEnd(std::function<void()> call);
  // Hands a call to the worker thread without waiting for it (it runs after
  // a step that hangs there, whenever that returns).
  void PostIo(std::function<void()> call);
  // Removes the partial copy of the file being copied.
  void DropPartial(const std::shared_ptr<Transfer>& transfer);

  wxString m_sourcePath;
  uint32_t m_sourceLength;
  wxString m_destPath;
  int64_t m_totalBytes;
  int64_t m_copiedBytes;
  int64_t m_onePercent;
  int32_t m_chunkCount;
  int32_t m_startTime;
  int32_t m_nowTime;
  int64_t m_displayBytes;
  ArrayDirFilePath m_items;
  std::shared_ptr<unsigned char> m_buffer;
  wxWeakRef<CopyProgressWindow> m_dialog;
  int32_t m_itemCount;
  wxStopWatch m_stopWatch;
  int32_t m_itemsDone;
  int32_t m_status;

  bool m_windowed;  // the job has a progress window (a job without one is never cancelled)
  std::string m_sourceBytes;
  std::string m_destBytes;
  IoWorker m_worker;
  std::shared_ptr<Transfer> m_current;  // the file being copied, if any
  std::vector<CopyProblem> m_problems;
  wxString m_currentItem;  // the last item handled (mounted path)
  long m_lastShown;  // m_stopWatch time of the last refresh of the screen
  bool m_openFailureShown;  // the message for a file that did not open was shown
  bool m_destinationIsFat;  // the destination volume holds files below 4 GiB only
};
