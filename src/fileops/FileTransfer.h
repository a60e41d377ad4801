// Copies one file in chunks through a caller's buffer, one blocking step at
// a time, so that each step can run on another thread (IoWorker) while the
// window keeps its own loop, texts and cancel check between the steps.
// Every system call goes through the file-operations table (FileOpsSeam.h).
//
// A chunk is moved with copy_file_range while the kernel accepts it for the
// two files (same file system), otherwise read into the buffer and written
// from it; the steps and their results are the same either way.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <memory>
#include <string>

// Which end of a transfer failed to open.
enum TransferEnd {
  kTransferNoEnd = 0,
  kTransferSource = 1,
  kTransferDestination = 2,
};

class FileTransfer {
 public:
  // source and destination are the paths' bytes. The buffer (bufferSize
  // bytes) is shared: one buffer serves every file of a job.
  FileTransfer(std::string source, std::string destination, std::shared_ptr<unsigned char> buffer,
               size_t bufferSize);
  // Closes whatever is still open; never removes anything.
  ~FileTransfer();
  FileTransfer(const FileTransfer&) = delete;
  FileTransfer& operator=(const FileTransfer&) = delete;

  // Opens the source for reading (links followed) and creates or truncates
  // the destination (mode 0666 before the umask). 0, or -1 with Error() and
  // FailedEnd() telling which end failed; nothing stays open on failure.
  int Open();

  // Reads the next chunk (up to the buffer's size). Returns the bytes read,
  // 0 at the end of the source, -1 when the source could not be read
  // (Error()). When the chunk was moved by copy_file_range it is already in
  // the destination, and WriteChunk has nothing left to do.
  ssize_t ReadChunk();
  // Writes the chunk that ReadChunk read. 0 when all of it was written; -1
  // when fewer bytes were written (the destination is full, or refused the
  // write: Error()).
  int WriteChunk();

  // Closes both files and gives the destination the source's modification
  // and access times. 0, or -1 when the destination's close failed (data
  // that did not reach the disk: Error()); the times are best effort.
  int Finish();
  // Closes both files and removes the destination file (a partial copy).
  // 0, or -1 with Error() when it could not be removed.
  int RemoveDestination();

  int Error() const { return m_error; }
  TransferEnd FailedEnd() const { return m_failedEnd; }
  // The source's size as fstat reported it at Open (64-bit).
  int64_t SourceSize() const { return m_sourceSize; }
  // Bytes that reached the destination so far.
  int64_t BytesWritten() const { return m_written; }
  const std::string& Source() const { return m_source; }
  const std::string& Destination() const { return m_destination; }

 private:
  void CloseBoth();

  std::string m_source;
  std::string m_destination;
  std::shared_ptr<unsigned char> m_buffer;
  size_t m_bufferSize;
  int m_in;
  int m_out;
  bool m_useCopyRange;
  ssize_t m_pending;       // bytes read into the buffer and not yet written
  bool m_pendingWritten;   // the last chunk went by copy_file_range
  int m_deferredError = 0;  // the destination is full: WriteChunk reports it
  bool m_createdDestination = false;  // Open created or truncated the destination
  int64_t m_sourceSize;
  int64_t m_read = 0;      // bytes taken from the source so far
  int64_t m_written;
  struct timespec m_times[2];
  int m_error;
  TransferEnd m_failedEnd;
};
