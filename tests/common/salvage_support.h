// What the tests of salvaged copies share: the engine's loop for one file
// with salvage, the bytes a salvaged copy must hold, and the comparison and
// printing of unreadable stretches.
#pragma once

#include <sys/types.h>

#include <ostream>
#include <string>
#include <vector>

#include "fileops/FileTransfer.h"

inline bool operator==(const UnreadableRange& a, const UnreadableRange& b) {
  return a.offset == b.offset && a.length == b.length;
}

inline std::ostream& operator<<(std::ostream& out, const UnreadableRange& r) {
  return out << "[" << r.offset << "+" << r.length << "]";
}

namespace vt {

// The source's bytes with the given stretches zeroed: what a salvaged copy
// holds.
inline std::string Zeroed(std::string data, const std::vector<UnreadableRange>& ranges) {
  for (const UnreadableRange& r : ranges)
    data.replace(static_cast<size_t>(r.offset), static_cast<size_t>(r.length),
                 static_cast<size_t>(r.length), '\0');
  return data;
}

// The engine's loop for one file: a chunk that cannot be read is salvaged,
// then written as any other. The number of salvages, or a negative number
// for the step that failed (-1 open, -2 salvage, -3 write, -4 finish).
inline int CopyWithSalvage(FileTransfer& t, size_t blockSize = 4096) {
  if (t.Open() != 0) return -1;
  int salvaged = 0;
  for (;;) {
    ssize_t n = t.ReadChunk();
    if (n < 0) {
      n = t.SalvageChunk(blockSize);
      if (n < 0) return -2;
      ++salvaged;
    }
    if (n == 0) break;
    if (t.WriteChunk() != 0) return -3;
  }
  return t.Finish() == 0 ? salvaged : -4;
}

}  // namespace vt
