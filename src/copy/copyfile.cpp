#include "copy/copyfile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>

#include <wx/app.h>
#include <wx/datetime.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/msgdlg.h>
#include <wx/timer.h>

#include <algorithm>
#include <atomic>

#include "copy/ReplaceQuestions.h"
#include "destination/Des_PathInfo.h"
#include "disk/View_Disk_Info.h"
#include "disk/VolumeSizeText.h"
#include "display/Conversion.h"
#include "display/PathBytes.h"
#include "fileops/FileOpsSeam.h"
#include "fileops/FileTransfer.h"
#include "fileops/FolderWalker.h"
#include "fileops/ShellEscape.h"
#include "fileops/WalkStatus.h"

namespace {

// The totals are shown again every this many collected items.
const int kTotalsEvery = 65;
// The time left is estimated every this many chunks of the job.
const int kEstimateEvery = 30;
// The done size is shown every this many chunks of one file.
const int kDoneSizeEvery = 15;
// The screen gets new texts at most this often (milliseconds): a copy of
// many small files must not spend its time drawing names nobody can read.
const long kScreenInterval = 40;
// Blocks in which a chunk that cannot be read is read again.
const size_t kSalvageBlock = 4096;
// How long the closing of a file may take before the job stops waiting for
// it (a destination that hangs).
const long kCloseWaitMs = 3000;

wxString SizeKB(int64_t bytes) {
  return Conversion_Str(wxString::Format("%lld", static_cast<long long>(bytes / 1024))) + " KB";
}

wxString Count(int count) { return Conversion_Str(wxString::Format("%d", count)); }

}  // namespace

int64_t CopyOnePercent(int64_t totalBytes) {
  const int64_t onePercent = totalBytes / 100;
  return onePercent == 0 ? 1 : onePercent;
}

int CopyGaugeValue(int64_t copiedBytes, int64_t onePercent) {
  if (onePercent <= 0) onePercent = 1;
  const int64_t value = copiedBytes / onePercent;
  return static_cast<int>(std::max<int64_t>(0, std::min<int64_t>(100, value)));
}

wxString CopyTimeLeft(int64_t totalBytes, int64_t copiedBytes, int64_t elapsedMs) {
  if (elapsedMs <= 0 || copiedBytes <= 0) return wxString();
  const double rate = static_cast<double>(copiedBytes) / static_cast<double>(elapsedMs);
  const double left = std::max(0.0, static_cast<double>(totalBytes - copiedBytes) / rate);
  return wxTimeSpan::Milliseconds(static_cast<wxLongLong_t>(left)).Format();
}

int VolumeIndexOf(const View_Disk_Info& table, const std::string& path) {
  int best = -1;
  size_t bestLength = 0;
  for (int i = 0; i < table.m_VolumeCount && i < MAX_VOLUME_COUNT; ++i) {
    const char* mount = table.m_Volume[i].MountPoint;
    const size_t length = strnlen(mount, sizeof(table.m_Volume[i].MountPoint));
    if (length == 0 || path.compare(0, length, mount, length) != 0) continue;
    if (path.size() > length && path[length] != '/') continue;
    if (length > bestLength) {
      best = i;
      bestLength = length;
    }
  }
  return best;
}

wxString FreeSpaceQuestion(int64_t needed, int64_t available, char driveLetter) {
  char neededText[32];
  char availableText[32];
  FormatVolumeSize(needed, neededText, sizeof(neededText));
  FormatVolumeSize(available, availableText, sizeof(availableText));
  return wxString::Format(
      wxGetTranslation("The files to copy need %s, but drive %c: has only %s free.\n\n"
                       "Copy anyway, or stop?"),
      neededText, driveLetter, availableText);
}

// One file being copied. The worker thread runs the transfer's steps and
// writes the results here; the job reads them once the step is done. Owned
// jointly, so a step that is still running after the job gave up on it
// (a read stuck on a failing disk) finds everything it touches alive.
struct copyfile::Transfer {
  Transfer(const std::string& source, const std::string& destination,
           const std::shared_ptr<unsigned char>& buffer)
      : file(source, destination, buffer, COPY_CHUNK_SIZE) {}

  FileTransfer file;
  // Open's result; -2 while it has not returned (read by the window's thread
  // also while an open it gave up on may still be running).
  std::atomic<int> opened{-2};
  ssize_t read = 0;  // ReadChunk's result
  int written = 0;   // WriteChunk's result
  int finished = 0;  // Finish's result
  bool dropped = false;
  // Set when the job stops waiting: a salvage looks at it between blocks.
  std::atomic<bool> stop{false};
};

copyfile::copyfile(wxString source, wxString destination, CopyProgressWindow* dialog)
    : m_sourcePath(source),
      m_sourceLength(static_cast<uint32_t>(source.length())),
      m_destPath(destination),
      m_totalBytes(0),
      m_copiedBytes(0),
      m_onePercent(0),
      m_chunkCount(0),
      m_startTime(0),
      m_nowTime(0),
      m_displayBytes(0),
      m_buffer(new unsigned char[COPY_CHUNK_SIZE], std::default_delete<unsigned char[]>()),
      m_dialog(dialog),
      m_itemCount(0),
      m_itemsDone(0),
      m_status(0),
      m_windowed(dialog != nullptr),
      m_sourceBytes(PathBytes(source)),
      m_destBytes(PathBytes(destination)),
      m_lastShown(-kScreenInterval),
      m_openFailureShown(false),
      m_destinationIsFat(false) {
  const int volume = VolumeIndexOf(g_AllDiskPartitionInf, m_destBytes);
  if (volume >= 0) {
    const uint8_t type = g_AllDiskPartitionInf.m_Volume[volume].FsType;
    m_destinationIsFat = type == FS_TYPE_FAT12 || type == FS_TYPE_FAT16 || type == FS_TYPE_FAT32;
  }
}

copyfile::~copyfile() {
  // A file still being copied (the job was torn down in the middle) is
  // closed and its partial copy removed; a step that is stuck keeps its
  // own share of the transfer and the buffer.
  StopNow();
  m_items.Clear();
}

void copyfile::Set_SourcePath(wxString source) {
  m_sourcePath = source;
  m_sourceLength = static_cast<uint32_t>(source.length());
  m_sourceBytes = PathBytes(source);
}

bool copyfile::Cancelled() const { return m_windowed && (!m_dialog || m_dialog->m_cancel); }

bool copyfile::YieldAlive() {
  wxYieldIfNeeded();
  return !m_windowed || m_dialog;
}

bool copyfile::ScreenDue() {
  const long now = m_stopWatch.Time();
  if (now - m_lastShown < kScreenInterval) return false;
  m_lastShown = now;
  return true;
}

void copyfile::Problem(const std::string& path, int kind, int error, int64_t size) {
  CopyProblem problem;
  problem.path = path;
  problem.kind = kind;
  problem.error = error;
  problem.size = size;
  m_problems.push_back(problem);
}

CopyOutcome copyfile::Outcome(int64_t result) const {
  CopyOutcome outcome;
  outcome.result = result;
  outcome.itemCount = m_itemCount;
  outcome.itemsDone = m_itemsDone;
  outcome.totalBytes = m_totalBytes;
  outcome.bytesCopied = m_copiedBytes;
  outcome.problems = m_problems;
  return outcome;
}

// ---------------------------------------------------------------- collection

void copyfile::ShowTotals() {
  if (!m_dialog) return;
  m_dialog->m_totalFilesText->SetLabel(Count(m_itemCount));
  m_dialog->m_totalSizeText->SetLabel(SizeKB(m_totalBytes));
}

void copyfile::AddItem(const std::string& fullPath, bool isFolder, int64_t size) {
  const std::string relative =
      fullPath.size() >= m_sourceBytes.size() ? fullPath.substr(m_sourceBytes.size()) : fullPath;
  m_items.Add(DirFilePath(PathFromBytes(relative), isFolder, relative, size));
  if (!isFolder) {
    m_totalBytes += size;
    ++m_itemCount;
  }
}

int copyfile::GetAll_DirFileInfo() {
  const wxArrayString& names = g_Des_PathInfo.m_sourceItems;
  if (names.empty()) {
    if (count_DirFileInfo(m_sourcePath) == kStatusStopped) {
      m_status = 0;
      return kStatusStopped;
    }
  } else {
    for (size_t i = 0; i < names.size(); ++i) {
      if (Cancelled()) return kStatusStopped;
      if (count_DirFileInfo(m_sourcePath + names[i]) == kStatusStopped) {
        m_status = 0;
        return kStatusStopped;
      }
    }
  }
  if (!YieldAlive()) return kStatusStopped;
  ShowTotals();
  return 0;
}

// Links are followed; a folder that is its own ancestor is not entered
// again, and links whose targets are missing, devices, pipes and sockets
// are left out. Each is recorded as a problem of the job.
int copyfile::count_DirFileInfo(wxString fullPath) {
  const std::string root = PathBytes(fullPath);
  FolderWalkOptions options;
  options.followLinks = true;
  FolderWalkEntry described;
  struct stat64 info;
  if (DescribePath(root.c_str(), options, &described, &info) != 0) {
    Problem(root, kCopyUnreadable, errno);
    return kStatusWalked;
  }
  if (described.kind == kWalkFile) {
    AddItem(root, false, static_cast<int64_t>(described.size));
    return kStatusWalked;
  }
  if (described.kind == kWalkLink) {
    Problem(root, kCopyLinkDangles, 0);
    return kStatusWalked;
  }
  if (described.kind != kWalkFolder) {
    Problem(root, kCopyNotAFile, 0);
    return kStatusWalked;
  }

  m_status = kStatusWalked;
  WalkFolder(root.c_str(), options, [this](const FolderWalkEntry& entry) {
    if (entry.event == kWalkLeave) return static_cast<int>(kWalkContinue);
    if (entry.event == kWalkError) {
      Problem(entry.path, kCopyUnreadable, entry.error);
      return static_cast<int>(kWalkContinue);
    }
    if (Cancelled()) {
      m_status = kStatusStopped;
      return static_cast<int>(kWalkStop);
    }
    int answer = kWalkContinue;
    switch (entry.kind) {
      case kWalkFile:
        AddItem(entry.path, false, static_cast<int64_t>(entry.size));
        break;
      case kWalkFolder:
        if (entry.loop) {
          Problem(entry.path, kCopyLoopSkipped, 0);
          return static_cast<int>(kWalkSkip);
        }
        AddItem(entry.path, true, 0);
        break;
      case kWalkLink:
        Problem(entry.path, kCopyLinkDangles, 0);
        return static_cast<int>(kWalkContinue);
      default:
        Problem(entry.path, kCopyNotAFile, 0);
        return static_cast<int>(kWalkContinue);
    }
    if (m_itemCount % kTotalsEvery == 0) {
      ShowTotals();
      if (!YieldAlive()) {
        m_status = kStatusStopped;
        return static_cast<int>(kWalkStop);
      }
    }
    return answer;
  });
  return m_status == kStatusStopped ? kStatusStopped : kStatusWalked;
}

// ---------------------------------------------------------------- copying

void copyfile::ShowDone() {
  if (!m_dialog) return;
  m_dialog->m_currentText->SetLabel(Conversion_Path(m_currentItem, 70));
  m_dialog->m_doneFilesText->SetLabel(Count(m_itemsDone));
  m_dialog->m_doneSizeText->SetLabel(SizeKB(m_copiedBytes));
}

bool copyfile::RefreshScreen() {
  if (!ScreenDue()) return true;
  if (!YieldAlive()) return false;
  ShowDone();
  return true;
}

void copyfile::ShowTimeLeft(const wxString& text) {
  if (m_dialog) m_dialog->m_timeLeftText->SetLabel(text);
}

bool copyfile::RunIo(std::function<void()> call) {
  return m_worker.Run(std::move(call), [this] {
    wxYieldIfNeeded();
    return !Cancelled();
  });
}

bool copyfile::RunIoToEnd(std::function<void()> call) {
  wxStopWatch waited;
  return m_worker.Run(std::move(call), [&waited] { return waited.Time() < kCloseWaitMs; });
}

void copyfile::PostIo(std::function<void()> call) {
  m_worker.Run(std::move(call), [] { return false; }, 0);
}

void copyfile::DropPartial(const std::shared_ptr<Transfer>& transfer) {
  if (!transfer || transfer->dropped) return;
  transfer->dropped = true;
  transfer->stop = true;
  if (transfer->opened == 0) {
    // Removed here and now, even when a step of it hangs on the worker: the
    // name goes at once, the descriptors close when that step returns.
    if (m_worker.Busy())
      g_FileOpsSeam.Unlinkat(AT_FDCWD, transfer->file.Destination().c_str(), 0);
    else
      RunIoToEnd([transfer] { transfer->file.RemoveDestination(); });
  } else if (transfer->opened == -2) {
    // Still opening: once the open returns, what it created goes again.
    PostIo([transfer] {
      if (transfer->opened == 0) transfer->file.RemoveDestination();
    });
  }
}

void copyfile::StopNow() {
  std::shared_ptr<Transfer> transfer = m_current;
  m_current.reset();
  DropPartial(transfer);
}

char* copyfile::ChangeEscapeCharacter(char* path) {
  ::ChangeEscapeCharacter(path);
  return path;
}

void copyfile::copying_Data(wxString /*source*/, wxString /*destination*/) {}

void copyfile::copying_All_Data() {}

int copyfile::CreateFile(wxString source, wxString destination) {
  return CopyOneFile(PathBytes(source), PathBytes(destination), destination, 0);
}

int copyfile::OpenFailureKind(const FileTransfer& file) const {
  const int error = file.Error();
  if (file.FailedEnd() == kTransferSource) {
    if (error == ENOENT) return kCopyVanished;
    return error == EIO ? kCopyReadFailed : kCopyNotOpened;
  }
  if (error != EINVAL && error != EILSEQ && error != ENAMETOOLONG) return kCopyNotOpened;
  // EINVAL also stands for a file refused as its own destination.
  struct stat64 source;
  struct stat64 destination;
  if (g_FileOpsSeam.Stat(file.Source().c_str(), &source) == 0 &&
      g_FileOpsSeam.Stat(file.Destination().c_str(), &destination) == 0 &&
      source.st_dev == destination.st_dev && source.st_ino == destination.st_ino)
    return kCopyNotOpened;
  return kCopyNameRefused;
}

int copyfile::CopyOneFile(const std::string& source, const std::string& destination,
                          const wxString& shown, int64_t size) {
  wxLogNull noLogging;
  std::shared_ptr<Transfer> transfer = std::make_shared<Transfer>(source, destination, m_buffer);
  m_current = transfer;
  struct Finally {
    copyfile* job;
    ~Finally() { job->m_current.reset(); }
  } finally{this};

  if (!RunIo([transfer] { transfer->opened = transfer->file.Open(); })) {
    DropPartial(transfer);
    return COPY_FILE_CANCELLED;
  }
  if (transfer->opened != 0) {
    const int error = transfer->file.Error();
    const int kind = OpenFailureKind(transfer->file);
    Problem(source, kind, error, size);
    // The message comes for the first file of a copy that does not open; a
    // failing disk must not ask for hundreds of clicks (the report at the
    // end names them all). A name the destination refuses is only reported.
    if (kind != kCopyNameRefused && !m_openFailureShown) {
      m_openFailureShown = true;
      const wxString message =
          error == EINVAL
              ? wxString::Format(wxGetTranslation("Can't open file '%s' !"), shown)
              : wxString(wxGetTranslation("Open file is error !"));
      wxMessageBox(message, FolderErrorCaption(), wxOK);
    }
    return COPY_FILE_NOT_OPENED;
  }

  int fileChunks = 0;
  for (;;) {
    if (!RunIo([transfer] { transfer->read = transfer->file.ReadChunk(); })) {
      DropPartial(transfer);
      return COPY_FILE_CANCELLED;
    }
    if (transfer->read < 0) {
      // A failing source: the chunk is read again block by block, each
      // failing block once more, and what stays unreadable becomes zeros
      // (listed as the file's damage). One step on the worker; a Cancel
      // stops it between blocks.
      const bool salvaged = RunIo([transfer] {
        transfer->read = transfer->file.SalvageChunk(kSalvageBlock, &transfer->stop);
      });
      if (!salvaged) {
        DropPartial(transfer);
        return COPY_FILE_CANCELLED;
      }
      if (transfer->read < 0) {
        // Not even the salvage could go on: nothing of this file stays.
        Problem(source, kCopyReadFailed, transfer->file.Error(), size);
        DropPartial(transfer);
        return COPY_FILE_READ_FAILED;
      }
    }
    const ssize_t count = transfer->read;
    if (count == 0) break;
    if (Cancelled()) {
      DropPartial(transfer);
      return COPY_FILE_CANCELLED;
    }
    if (!RunIo([transfer] { transfer->written = transfer->file.WriteChunk(); })) {
      DropPartial(transfer);
      return COPY_FILE_CANCELLED;
    }
    if (transfer->written != 0) {
      // The destination is full: the partial file goes before the message,
      // so no truncated file is ever left that looks complete.
      DropPartial(transfer);
      return COPY_FILE_DISK_FULL;
    }

    m_copiedBytes += count;
    m_displayBytes += count;
    ++m_chunkCount;
    ++fileChunks;
    if (m_dialog) {
      const int percent = CopyGaugeValue(m_copiedBytes, m_onePercent);
      if (m_dialog->m_gauge->GetValue() != percent) m_dialog->m_gauge->SetValue(percent);
    }
    if (m_chunkCount > kEstimateEvery - 1) {
      m_chunkCount = 0;
      m_nowTime = static_cast<int32_t>(m_stopWatch.Time());
      const wxString left = CopyTimeLeft(m_totalBytes, m_copiedBytes,
                                         static_cast<int64_t>(m_nowTime) - m_startTime);
      if (!left.empty()) ShowTimeLeft(left);
    }
    if (fileChunks > kDoneSizeEvery - 1) {
      fileChunks = 0;
      if (m_dialog) m_dialog->m_doneSizeText->SetLabel(SizeKB(m_displayBytes));
    }
    // A large file lets the window paint and take a Cancel as it goes.
    if (!RefreshScreen()) {
      DropPartial(transfer);
      return COPY_FILE_CANCELLED;
    }
  }

  // Closing is not interrupted by a Cancel (the file is complete by now);
  // only a window that went away stops the wait.
  const bool closed = m_worker.Run([transfer] { transfer->finished = transfer->file.Finish(); },
                                   [this] { return YieldAlive(); });
  if (!closed) {
    DropPartial(transfer);
    return COPY_FILE_CANCELLED;
  }
  if (transfer->finished != 0) {
    // The destination did not take the last of the data when it was closed:
    // what it holds is not known to be complete.
    DropPartial(transfer);
    return COPY_FILE_DISK_FULL;
  }
  if (transfer->file.UnreadableBytes() > 0) {
    CopyProblem damage;
    damage.path = source;
    damage.kind = kCopySalvaged;
    damage.error = transfer->file.Error();
    damage.size = size;
    damage.unreadableBytes = transfer->file.UnreadableBytes();
    for (const UnreadableRange& range : transfer->file.Unreadable()) {
      CopyRange stretch;
      stretch.offset = range.offset;
      stretch.length = range.length;
      damage.unreadable.push_back(stretch);
    }
    m_problems.push_back(damage);
  }
  return COPY_FILE_DONE;
}

// Creates a folder and the folders above it that are missing, with the
// folder mode 0x777 that the copy has always used.
int copyfile::MakeFolder(const std::string& destination, const wxString& shown) {
  wxLogNull noLogging;
  // The job lists a folder after the one that holds it, so the folder
  // itself is made first; the folders above it only when they are missing.
  int error = g_FileOpsSeam.Mkdir(destination.c_str(), 0x777) == 0 ? 0 : errno;
  if (error == ENOENT) {
    error = 0;
    for (size_t slash = destination.find('/', 1);; slash = destination.find('/', slash + 1)) {
      const std::string part = destination.substr(0, slash);
      if (!part.empty() && g_FileOpsSeam.Mkdir(part.c_str(), 0x777) != 0 && errno != EEXIST) {
        error = errno;
        break;
      }
      if (slash == std::string::npos) break;
    }
  }
  struct stat64 info;
  if ((error == 0 || error == EEXIST) && g_FileOpsSeam.Stat(destination.c_str(), &info) == 0 &&
      S_ISDIR(info.st_mode))
    return 0;
  if (error == 0 || error == EEXIST) error = ENOTDIR;
  const wxString message =
      error == EINVAL
          ? wxString::Format(wxGetTranslation("Directory '%s' couldn't be created!"), shown)
          : wxString(wxGetTranslation("Create folder is error !"));
  wxMessageBox(message, FolderErrorCaption(), wxOK);
  return -1;
}

int64_t copyfile::cp_DirFile() {
  m_onePercent = CopyOnePercent(m_totalBytes);
  m_stopWatch.Start();
  m_startTime = static_cast<int32_t>(m_stopWatch.Time());

  printf("SourcePath = %s\n", static_cast<const char*>(m_sourcePath.utf8_str()));
  printf("DesPath = %s\n", static_cast<const char*>(m_destPath.utf8_str()));
  const wxArrayString& names = g_Des_PathInfo.m_sourceItems;
  for (size_t i = 0; i < names.size(); ++i)
    printf("Select_path = %s\n", static_cast<const char*>(names[i].utf8_str()));
  fflush(stdout);

  for (size_t i = 0; i < m_items.size(); ++i) {
    const DirFilePath& item = m_items[i];
    const wxString source = m_sourcePath + item.m_path;
    const wxString destination = m_destPath + item.m_path;
    const std::string destinationBytes = m_destBytes + item.m_bytes;
    if (item.m_isFolder) {
      if (MakeFolder(destinationBytes, destination) != 0) return kStatusStopped;
      m_currentItem = source;
    } else {
      const std::string sourceBytes = m_sourceBytes + item.m_bytes;
      int result = COPY_FILE_NOT_OPENED;
      if (m_destinationIsFat && item.m_size > kFatLargestFile)
        Problem(sourceBytes, kCopyTooLargeForFat, EFBIG, item.m_size);  // not attempted
      else
        result = CopyOneFile(sourceBytes, destinationBytes, destination, item.m_size);
      if (result == COPY_FILE_DISK_FULL) {
        wxMessageBox(wxGetTranslation("Copy file error! The disk is full!"),
                     wxGetTranslation("copying error"), wxOK | wxCENTRE);
        return -1;
      }
      if (result == COPY_FILE_CANCELLED) return kStatusStopped;
    }
    ++m_itemsDone;
    m_currentItem = source;
    if (!RefreshScreen()) return kStatusStopped;
  }
  if (!YieldAlive()) return kStatusStopped;
  ShowDone();
  ShowTimeLeft("00:00:00");
  return kStatusWalked;
}

bool copyfile::ConfirmFreeSpace(wxWindow* parent) {
  const int volume = VolumeIndexOf(g_AllDiskPartitionInf, m_destBytes);
  std::string where = volume >= 0 ? std::string(g_AllDiskPartitionInf.m_Volume[volume].MountPoint)
                                  : m_destBytes;
  const long long available = g_AllDiskPartitionInf.Ui_GetVolumeFreeSpace(&where[0]);
  if (available < 0 || m_totalBytes <= available) return true;
  const char letter = volume >= 0 ? g_AllDiskPartitionInf.m_Volume[volume].DriveLetter : '?';
  wxMessageDialog question(parent, FreeSpaceQuestion(m_totalBytes, available, letter),
                           wxGetTranslation("Not enough free space"),
                           wxYES_NO | wxNO_DEFAULT | wxICON_EXCLAMATION);
  question.SetYesNoLabels(wxGetTranslation("Copy &anyway"), wxGetTranslation("&Stop"));
  return question.ShowModal() == wxID_YES;
}

void copyfile::FlushDestination() {
  if (m_windowed && !m_dialog) return;
  if (m_dialog) {
    m_dialog->m_currentText->SetLabel(wxGetTranslation("Writing the data to the disk..."));
    m_dialog->Refresh();
  }
  const std::string folder = m_destBytes;
  // On a thread of its own: the job's worker may still hang in a read of a
  // failing source that was given up on, and the flush must not wait for
  // it. Waits with the event loop running; Cancel does not cut it short (the
  // data is copied; it only has to reach the disk), a window that went does.
  IoWorker flusher;
  flusher.Run([folder] {
    const int fd = g_FileOpsSeam.Open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (fd < 0) return;
    g_FileOpsSeam.Syncfs(fd);
    g_FileOpsSeam.Close(fd);
  }, [this] { return YieldAlive(); });
  if (m_dialog) m_dialog->m_currentText->SetLabel(Conversion_Path(m_currentItem, 70));
}
