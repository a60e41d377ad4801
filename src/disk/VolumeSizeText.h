// The size texts of the volume table.
#pragma once

#include <stddef.h>

// "%.1f TB" above 1024 GiB, "%.1f GB" above 1 GiB, else whole MiB as
// "%lld MB" (rounded toward zero,
// so -1 gives "0 MB"); cut to fit size.
void FormatVolumeSize(long long bytes, char* out, size_t size);
