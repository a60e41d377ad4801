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

#include <memory>
#include <string>
#include <vector>

#include "fileops/IoWorker.h"

#include "copy/ArrayDirFilePath.h"
#include "copy/CopyOutcome.h"

class my_dialog_gauge;
class FileTransfer;

// What CreateFile returns.
enum {
  COPY_FILE_DONE = 0,
  COPY_FILE_NOT_OPENED = 1,
  COPY_FILE_READ_FAILED = 2,   // recorded, the partial file removed; the copy goes on
  COPY_FILE_CANCELLED = 10,
  COPY_FILE_DISK_FULL = -1,
};

// The size of the copy buffer and of one chunk.
enum { COPY_CHUNK_SIZE = 0x100000 };

class copyfile {
 public:
  copyfile(wxString source, wxString destination, my_dialog_gauge* dialog);
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
  // The figures and problems as one record.
  CopyOutcome Outcome(int64_t result) const;

 private:
  friend class CopyJobRun;

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
  wxWeakRef<my_dialog_gauge> m_dialog;
  int32_t m_itemCount;
  wxStopWatch m_stopWatch;
  int32_t m_itemsDone;
  int32_t m_status;

  IoWorker m_worker;
  std::vector<CopyProblem> m_problems;
  long m_lastShown;  // stopwatch time of the last refresh of the texts
};
