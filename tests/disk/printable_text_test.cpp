// Escaping control bytes of labels for the diagnostic lines.
#include <gtest/gtest.h>

#include <string>

#include "disk/PrintableText.h"

namespace {

std::string Escape(const char* text, size_t size = 256) {
  char out[256];
  size_t n = EscapeControlChars(text, out, size);
  EXPECT_EQ(n, std::string(out).size());
  return out;
}

TEST(EscapeControlChars, NormalLabelsUnchanged) {
  EXPECT_EQ(Escape("DATA       "), "DATA       ");
  EXPECT_EQ(Escape("System"), "System");
  EXPECT_EQ(Escape("Donn\xc3\xa9" "es"), "Donn\xc3\xa9" "es");  // UTF-8
  EXPECT_EQ(Escape("Donn\xe9" "es"), "Donn\xe9" "es");          // Latin-1 / OEM
  EXPECT_EQ(Escape("\x80\xff ~!"), "\x80\xff ~!");
  EXPECT_EQ(Escape(""), "");
  EXPECT_EQ(Escape(nullptr), "");
}

TEST(EscapeControlChars, ControlBytesAsLowerCaseHex) {
  EXPECT_EQ(Escape("\x1b[2J"), "\\x1b[2J");
  EXPECT_EQ(Escape("a\tb\nc\rd"), "a\\x09b\\x0ac\\x0dd");
  EXPECT_EQ(Escape("\x01\x1f\x7f"), "\\x01\\x1f\\x7f");
  EXPECT_EQ(Escape(" "), " ");  // 0x20 is printable
}

TEST(EscapeControlChars, CutToFitWithoutSplittingAnEscape) {
  EXPECT_EQ(Escape("ABCDEF", 4), "ABC");
  EXPECT_EQ(Escape("A\x1b", 5), "A");      // \x1b needs 4 more bytes and the NUL
  EXPECT_EQ(Escape("A\x1b", 6), "A\\x1b");
  EXPECT_EQ(Escape("ABC", 1), "");
  char untouched[1] = {'Z'};
  EXPECT_EQ(EscapeControlChars("ABC", untouched, 0), 0u);
  EXPECT_EQ(untouched[0], 'Z');
  EXPECT_EQ(EscapeControlChars("ABC", nullptr, 8), 0u);
}

}  // namespace
