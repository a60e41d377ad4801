// Shared by the copy tests: file contents that differ at every offset, and
// the progress window of a running copy.
#pragma once

#include <wx/toplevel.h>

#include <cstddef>
#include <string>

#include "copy/my_dialog_gauge.h"

namespace vt {

// `size` bytes of a pseudo-random sequence chosen by `seed`.
inline std::string PatternBytes(size_t size, unsigned seed) {
  std::string data(size, '\0');
  unsigned x = seed * 2654435761u + 1;
  for (size_t i = 0; i < size; ++i) {
    x = x * 1103515245u + 12345u;
    data[i] = static_cast<char>(x >> 16);
  }
  return data;
}

// The progress window that is open and not being deleted, or null.
inline my_dialog_gauge* OpenGauge() {
  for (wxWindow* w : wxTopLevelWindows)
    if (my_dialog_gauge* g = dynamic_cast<my_dialog_gauge*>(w))
      if (!g->IsBeingDeleted()) return g;
  return nullptr;
}

}  // namespace vt
