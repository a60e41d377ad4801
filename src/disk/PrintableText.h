// Text from disks made safe for a terminal line.
#pragma once

#include <stddef.h>

// Copies text (a null text counts as empty) into out, writing every control
// byte (below 0x20, and 0x7f) as \xNN with two lower-case hex digits, so
// that a label cannot move the cursor, clear the screen or break the line.
// Every other byte, also 0x80..0xff, is copied as it is. The result is cut
// to fit size bytes without splitting an escape, and always terminated.
// Returns the length written.
size_t EscapeControlChars(const char* text, char* out, size_t size);
