// Copies one file in chunks through a caller's buffer, one blocking step at
// a time, so that each step can run on another thread (IoWorker) while the
// window keeps its own loop, texts and cancel check between the steps.
// Every system call goes through the file-operations table (FileOpsSeam.h).
//
// A chunk is moved with copy_file_range while the kernel accepts it for the
// two files (same file system), otherwise read into the buffer and written
// from it; the steps and their results are the same either way.
//
// A chunk that cannot be read can be salvaged instead (SalvageChunk): read
// again in small blocks at their positions, the blocks that stay unreadable
// zero-filled and remembered, so that the file is finished with every byte
// the disk still gives and the caller knows exactly which stretches are
// zeros.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

// Which end of a transfer failed to open.
enum TransferEnd {
  kTransferNoEnd = 0,
  kTransferSource = 1,
  kTransferDestination = 2,
};

// A stretch of the source that could not be read and was written as zeros:
// byte offset in the file and length.
struct UnreadableRange {
  int64_t offset;
  int64_t length;
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

  // After ReadChunk returned -1: reads the chunk that failed (from where the
  // copy stands, the buffer's size, no further than the source's size when
  // fstat knew it) again in blocks of blockSize bytes, each at its own
  // position (pread; the blocks lie on multiples of blockSize in the file).
  // A block that fails is tried once more; one that fails again is filled
  // with zeros in the buffer from where its reads stopped, and that stretch
  // is recorded (Unreadable()). A
  // short block is read on until it is complete; a block that meets the end
  // of the file ends the chunk there. Returns the chunk's bytes, which wait
  // in the buffer for WriteChunk as a chunk that ReadChunk read does, or 0
  // at the end of the source; the sequential reads of ReadChunk then go on
  // after the chunk. -1 with Error(): ECANCELED when *stop was set (looked
  // at before each block and before each retry; nothing of the chunk is
  // kept, nothing is written), or the error of putting the file position
  // after the chunk. Every read goes through the file-operations table, so
  // the whole salvage of one chunk is one blocking step for a worker thread.
  // After a salvage that returned a count, Error() still tells the error of
  // the read that failed.
  ssize_t SalvageChunk(size_t blockSize = 4096, const std::atomic<bool>* stop = nullptr);
  // The stretches written as zeros so far, in file order, touching
  // stretches joined into one; their total in bytes.
  const std::vector<UnreadableRange>& Unreadable() const { return m_unreadable; }
  int64_t UnreadableBytes() const;

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
  // Forgets the last chunk and checks that a chunk can be read: false with
  // Error() when the files are not open or there is no buffer.
  bool BeginChunk();

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
  std::vector<UnreadableRange> m_unreadable;
  struct timespec m_times[2];
  int m_error;
  TransferEnd m_failedEnd;
};
