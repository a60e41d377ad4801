#include "disk/PrintableText.h"

#include <stdio.h>

size_t EscapeControlChars(const char* text, char* out, size_t size) {
  if (out == NULL || size == 0) return 0;
  size_t n = 0;
  for (size_t i = 0; text != NULL && text[i] != 0; ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 || c == 0x7f) {
      if (n + 4 >= size) break;
      snprintf(out + n, size - n, "\\x%02x", c);
      n += 4;
    } else {
      if (n + 1 >= size) break;
      out[n++] = static_cast<char>(c);
    }
  }
  out[n] = 0;
  return n;
}
