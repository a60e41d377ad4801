#include "fileops/FileTransfer.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "fileops/FileOpsSeam.h"

namespace {

// The errors of copy_file_range that mean the destination cannot take the
// data; any other error only means the kernel cannot move this pair of files
// that way, and read/write takes over.
bool DestinationFull(int err) { return err == ENOSPC || err == EDQUOT || err == EFBIG; }

// Adds a stretch after the last one, joined to it when they touch.
void RecordUnreadable(std::vector<UnreadableRange>* ranges, int64_t offset, int64_t length) {
  if (length <= 0) return;
  if (!ranges->empty() && ranges->back().offset + ranges->back().length == offset) {
    ranges->back().length += length;
    return;
  }
  ranges->push_back(UnreadableRange{offset, length});
}

// How one block of a salvage ended.
enum BlockResult {
  kBlockComplete,  // every byte read
  kBlockEnd,       // the file ended inside the block
  kBlockFailed,    // a read failed twice
  kBlockStopped,   // the caller stopped the salvage before the retry
};

// An interrupted read (a signal) is not a failure of the disk; only a run of
// them this long gives up on the block.
const int kMaxInterruptedReads = 16;

// Reads the block [offset, offset + length) of fd into `into`, each read at
// its position, until it is complete: a short read is followed by a read of
// the rest. A failing read is tried once more, from where the block stands.
// *got: the bytes read from the block's start, also when it failed or
// ended.
BlockResult ReadBlock(int fd, unsigned char* into, size_t length, int64_t offset,
                      const std::atomic<bool>* stop, size_t* got) {
  *got = 0;
  int failures = 0;
  int interrupted = 0;
  while (*got < length) {
    const ssize_t n = g_FileOpsSeam.Pread(fd, into + *got, length - *got,
                                          static_cast<off64_t>(offset + static_cast<int64_t>(*got)));
    if (n > 0) {
      *got += static_cast<size_t>(n);
      continue;
    }
    if (n == 0) return kBlockEnd;
    if (errno == EINTR && ++interrupted < kMaxInterruptedReads) continue;
    if (++failures > 1) return kBlockFailed;
    if (stop != nullptr && stop->load()) return kBlockStopped;
  }
  return kBlockComplete;
}

}  // namespace

FileTransfer::FileTransfer(std::string source, std::string destination,
                           std::shared_ptr<unsigned char> buffer, size_t bufferSize)
    : m_source(std::move(source)),
      m_destination(std::move(destination)),
      m_buffer(std::move(buffer)),
      m_bufferSize(bufferSize),
      m_in(-1),
      m_out(-1),
      m_useCopyRange(true),
      m_pending(0),
      m_pendingWritten(false),
      m_sourceSize(0),
      m_written(0),
      m_times{},
      m_error(0),
      m_failedEnd(kTransferNoEnd) {}

FileTransfer::~FileTransfer() { CloseBoth(); }

void FileTransfer::CloseBoth() {
  if (m_in >= 0) g_FileOpsSeam.Close(m_in);
  if (m_out >= 0) g_FileOpsSeam.Close(m_out);
  m_in = -1;
  m_out = -1;
}

int FileTransfer::Open() {
  CloseBoth();
  m_error = 0;
  m_failedEnd = kTransferNoEnd;
  m_useCopyRange = true;
  m_pending = 0;
  m_pendingWritten = false;
  m_deferredError = 0;
  m_read = 0;
  m_written = 0;
  m_unreadable.clear();
  m_createdDestination = false;

  // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a
  // writer. It has no effect on the reads of a regular file (open(2)), so it
  // stays set; anything that is not a regular file is refused below.
  const int in = g_FileOpsSeam.Open(m_source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0);
  if (in < 0) {
    m_error = errno;
    m_failedEnd = kTransferSource;
    return -1;
  }
  struct stat64 st;
  if (g_FileOpsSeam.Fstat(in, &st) != 0) {
    m_error = errno;
    g_FileOpsSeam.Close(in);
    m_failedEnd = kTransferSource;
    return -1;
  }
  if (!S_ISREG(st.st_mode)) {
    g_FileOpsSeam.Close(in);
    m_error = S_ISDIR(st.st_mode) ? EISDIR : EINVAL;
    m_failedEnd = kTransferSource;
    return -1;
  }
  // A destination that is the source itself (the same folder chosen on
  // both sides, or a hard link) would be emptied by the truncation before a
  // byte of it was read: refused.
  struct stat64 existing;
  if (g_FileOpsSeam.Stat(m_destination.c_str(), &existing) == 0 && existing.st_dev == st.st_dev &&
      existing.st_ino == st.st_ino) {
    g_FileOpsSeam.Close(in);
    m_error = EINVAL;
    m_failedEnd = kTransferDestination;
    return -1;
  }
  const int out =
      g_FileOpsSeam.Open(m_destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (out < 0) {
    m_error = errno;
    g_FileOpsSeam.Close(in);
    m_failedEnd = kTransferDestination;
    return -1;
  }
  m_in = in;
  m_out = out;
  m_createdDestination = true;
  m_sourceSize = static_cast<int64_t>(st.st_size);
  m_times[0] = st.st_atim;
  m_times[1] = st.st_mtim;
  return 0;
}

bool FileTransfer::BeginChunk() {
  m_pending = 0;
  m_pendingWritten = false;
  m_deferredError = 0;
  if (m_in < 0 || m_out < 0) {
    m_error = EBADF;
    return false;
  }
  if (!m_buffer || m_bufferSize == 0) {
    m_error = EINVAL;
    return false;
  }
  return true;
}

ssize_t FileTransfer::ReadChunk() {
  if (!BeginChunk()) return -1;
  while (m_useCopyRange) {
    // Null offsets: both files' positions move on by what was copied, so
    // read/write can take over at any chunk.
    const ssize_t n =
        g_FileOpsSeam.CopyFileRange(m_in, nullptr, m_out, nullptr, m_bufferSize, 0);
    if (n > 0) {
      m_pending = n;
      m_pendingWritten = true;
      m_read += n;
      m_written += n;
      return n;
    }
    if (n == 0) {
      // The end of the source, unless it has not reached the size fstat
      // gave: some file systems answer 0 where they cannot copy; read() has
      // the last word.
      if (m_read >= m_sourceSize) return 0;
      m_useCopyRange = false;
      break;
    }
    const int err = errno;
    if (err == EINTR) continue;
    m_useCopyRange = false;
    // The destination is full: the chunk is read as any other and
    // WriteChunk reports the error without writing. (Nothing was copied: a
    // failing copy_file_range with null offsets moves nothing.)
    if (DestinationFull(err)) m_deferredError = err;
  }
  ssize_t n;
  do {
    n = g_FileOpsSeam.Read(m_in, m_buffer.get(), m_bufferSize);
  } while (n < 0 && errno == EINTR);
  if (n < 0) {
    m_error = errno;
    m_deferredError = 0;
    return -1;
  }
  m_pending = n;
  m_read += n;
  if (n == 0) m_deferredError = 0;  // nothing was left to copy
  return n;
}

ssize_t FileTransfer::SalvageChunk(size_t blockSize, const std::atomic<bool>* stop) {
  if (!BeginChunk()) return -1;
  if (blockSize == 0) {
    m_error = EINVAL;
    return -1;
  }
  // The chunk starts where the sequential reads stand (a read that failed
  // took nothing) and is the buffer's size, cut at the source's size: a
  // block that stays unreadable there is still part of the file. A copy
  // that has reached the size fstat gave at Open asks again (the file may
  // have grown); when the file still ends there, this is its end.
  const int64_t start = m_read;
  int64_t size = m_sourceSize;
  if (start >= size) {
    struct stat64 st;
    if (g_FileOpsSeam.Fstat(m_in, &st) == 0) size = static_cast<int64_t>(st.st_size);
    if (start >= size) return 0;
  }
  const int64_t end = std::min(start + static_cast<int64_t>(m_bufferSize), size);
  const int64_t block = static_cast<int64_t>(blockSize);

  unsigned char* const buffer = m_buffer.get();
  // The chunk's unreadable stretches join the file's only when the chunk
  // is complete: a stopped salvage leaves no trace.
  std::vector<UnreadableRange> lost;
  int64_t pos = start;
  while (pos < end) {
    if (stop != nullptr && stop->load()) {
      m_error = ECANCELED;
      return -1;
    }
    // Blocks lie on multiples of the block size in the file, as a disk's
    // sectors do; the first one may be shorter.
    const int64_t blockEnd = std::min(end, (pos / block + 1) * block);
    const size_t length = static_cast<size_t>(blockEnd - pos);
    unsigned char* const into = buffer + (pos - start);
    size_t got = 0;
    const BlockResult result = ReadBlock(m_in, into, length, pos, stop, &got);
    if (result == kBlockStopped) {
      m_error = ECANCELED;
      return -1;
    }
    if (result == kBlockFailed) {
      // The bytes the disk did give stay; the rest of the block is zeros.
      std::memset(into + got, 0, length - got);
      RecordUnreadable(&lost, pos + static_cast<int64_t>(got), static_cast<int64_t>(length - got));
      pos = blockEnd;
      continue;
    }
    pos += static_cast<int64_t>(got);
    if (result == kBlockEnd) break;
  }
  // The sequential reads go on after the chunk (the positioned reads did
  // not move the file position).
  if (g_FileOpsSeam.Lseek(m_in, static_cast<off64_t>(pos), SEEK_SET) < 0) {
    m_error = errno;
    return -1;
  }
  for (const UnreadableRange& r : lost) RecordUnreadable(&m_unreadable, r.offset, r.length);
  m_pending = static_cast<ssize_t>(pos - start);
  m_read = pos;
  return m_pending;
}

int64_t FileTransfer::UnreadableBytes() const {
  int64_t total = 0;
  for (const UnreadableRange& r : m_unreadable) total += r.length;
  return total;
}

int FileTransfer::WriteChunk() {
  const ssize_t pending = m_pending;
  const bool alreadyWritten = m_pendingWritten;
  const int deferred = m_deferredError;
  m_pending = 0;
  m_pendingWritten = false;
  m_deferredError = 0;
  if (deferred != 0) {
    m_error = deferred;
    return -1;
  }
  if (alreadyWritten) return 0;
  if (m_out < 0) {
    if (pending == 0) return 0;
    m_error = EBADF;
    return -1;
  }
  const unsigned char* data = m_buffer.get();
  size_t done = 0;
  const size_t total = static_cast<size_t>(pending);
  while (done < total) {
    const ssize_t w = g_FileOpsSeam.Write(m_out, data + done, total - done);
    if (w < 0 && errno == EINTR) continue;
    if (w <= 0) {
      // A write that takes nothing for a non-empty chunk: the destination
      // is full.
      m_error = w < 0 ? errno : ENOSPC;
      m_written += static_cast<int64_t>(done);
      return -1;
    }
    done += static_cast<size_t>(w);
  }
  m_written += static_cast<int64_t>(done);
  return 0;
}

int FileTransfer::Finish() {
  m_pending = 0;
  m_pendingWritten = false;
  m_deferredError = 0;
  if (m_in >= 0) g_FileOpsSeam.Close(m_in);
  m_in = -1;
  if (m_out < 0) return 0;
  const int out = m_out;
  m_out = -1;
  // The descriptor is gone whatever close answers (Linux); an error means
  // written data may not have reached the disk.
  if (g_FileOpsSeam.Close(out) != 0) {
    m_error = errno;
    return -1;
  }
  // Best effort: FAT keeps the modification time in 2-second steps and the
  // access time as a date; some destinations refuse times altogether.
  g_FileOpsSeam.Utimensat(AT_FDCWD, m_destination.c_str(), m_times, 0);
  return 0;
}

int FileTransfer::RemoveDestination() {
  m_pending = 0;
  m_pendingWritten = false;
  m_deferredError = 0;
  CloseBoth();
  // Only a file this transfer created or truncated is removed: a failed
  // Open of the source leaves an existing destination as it was.
  if (!m_createdDestination) return 0;
  if (g_FileOpsSeam.Unlinkat(AT_FDCWD, m_destination.c_str(), 0) != 0) {
    m_error = errno;
    return -1;
  }
  m_createdDestination = false;
  return 0;
}
