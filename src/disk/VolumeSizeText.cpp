#include "disk/VolumeSizeText.h"

#include <stdio.h>

void FormatVolumeSize(long long bytes, char* out, size_t size) {
  if (out == NULL || size == 0) return;
  double g = static_cast<double>(bytes) / 1024 / 1024 / 1024;
  int written;
  // Disks beyond a tebibyte read in TB, like the figures on their labels.
  if (g > 1024.0)
    written = snprintf(out, size, "%.1f TB", g / 1024);
  else if (g > 1.0)
    written = snprintf(out, size, "%.1f GB", g);
  else
    written = snprintf(out, size, "%lld MB", bytes / (1024LL * 1024LL));  // toward zero: -1 gives 0
  // A text longer than the field is cut to fit (snprintf already did).
  if (written < 0) out[0] = 0;
}
