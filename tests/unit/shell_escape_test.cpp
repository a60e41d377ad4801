// The 13-character shell escape: every byte value, in place, bounded by the
// working buffer.
#include <gtest/gtest.h>

#include <string.h>

#include <set>
#include <string>

#include "fileops/ShellEscape.h"

namespace {

const std::set<int> kEscaped = {' ', '`', '?', '&', '*', '(', ')', '|', '\\', '"', '\'', '<', '>'};

TEST(ShellEscape, EveryByteValueIsEscapedExactlyWhenItIsOneOfTheThirteen) {
  int escaped = 0;
  for (int c = 1; c <= 255; ++c) {
    char buf[kEscapeBufferSize] = {};
    buf[0] = 'a';
    buf[1] = static_cast<char>(c);
    buf[2] = 'z';
    ASSERT_TRUE(ChangeEscapeCharacter(buf)) << c;
    std::string expected = "a";
    if (kEscaped.count(c) != 0) {
      expected += '\\';
      ++escaped;
    }
    expected += static_cast<char>(c);
    expected += 'z';
    EXPECT_EQ(std::string(buf), expected) << "byte " << c;
    EXPECT_EQ(IsShellEscaped(static_cast<unsigned char>(c)), kEscaped.count(c) != 0) << c;
    EXPECT_EQ(ShellEscaped(std::string("a") + static_cast<char>(c) + "z"), expected) << c;
  }
  EXPECT_EQ(escaped, 13);
}

TEST(ShellEscape, DollarSemicolonBangHashNewlineAndLeadingDashPassUnchanged) {
  char buf[kEscapeBufferSize];
  strcpy(buf, "-rf $(touch x);!#\n~{[");
  EXPECT_TRUE(ChangeEscapeCharacter(buf));
  EXPECT_STREQ(buf, "-rf\\ $\\(touch\\ x\\);!#\n~{[");
}

TEST(ShellEscape, WorksInTheCallersBuffer) {
  char buf[kEscapeBufferSize];
  strcpy(buf, "/mnt/D/My Files/it's (old) & <new>");
  char* const before = buf;
  EXPECT_TRUE(ChangeEscapeCharacter(buf));
  EXPECT_EQ(before, buf);
  EXPECT_STREQ(buf, "/mnt/D/My\\ Files/it\\'s\\ \\(old\\)\\ \\&\\ \\<new\\>");
  buf[0] = '\0';
  EXPECT_TRUE(ChangeEscapeCharacter(buf));
  EXPECT_STREQ(buf, "");
}

// A result longer than the working buffer is cut before the first character
// that does not fit, never after a lone backslash, and nothing past the
// buffer is written.
TEST(ShellEscape, ALongerResultIsCutInsideTheWorkingBuffer) {
  struct {
    char buf[kEscapeBufferSize];
    char guard[64];
  } b;
  memset(b.guard, 0x5a, sizeof(b.guard));
  memset(b.buf, ' ', 1000);  // 1000 blanks would need 2000 bytes escaped
  b.buf[1000] = '\0';
  EXPECT_FALSE(ChangeEscapeCharacter(b.buf));
  const size_t n = strlen(b.buf);
  EXPECT_EQ(n, 1022u);  // 511 escaped blanks; the 512th pair would leave no room for the NUL
  for (size_t i = 0; i < n; i += 2) {
    ASSERT_EQ(b.buf[i], '\\') << i;
    ASSERT_EQ(b.buf[i + 1], ' ') << i;
  }
  for (char g : b.guard) EXPECT_EQ(g, 0x5a);

  // Plain characters fill it to the last byte before the NUL.
  memset(b.buf, 'x', 1020);
  b.buf[1020] = '\0';
  strcat(b.buf, "((");  // the first "(" fits escaped, the second does not
  EXPECT_FALSE(ChangeEscapeCharacter(b.buf));
  EXPECT_EQ(strlen(b.buf), 1022u);
  EXPECT_EQ(std::string(b.buf).substr(1020), "\\(");
  for (char g : b.guard) EXPECT_EQ(g, 0x5a);

  // A result of exactly 1023 characters fits.
  memset(b.buf, 'y', 1021);
  b.buf[1021] = '&';
  b.buf[1022] = '\0';
  EXPECT_TRUE(ChangeEscapeCharacter(b.buf));
  EXPECT_EQ(strlen(b.buf), 1023u);
}

TEST(ShellEscape, ACallerBufferOfAnotherSizeBoundsTheResult) {
  char small[8];
  strcpy(small, "ab c d");
  EXPECT_FALSE(ChangeEscapeCharacter(small, sizeof(small)));
  EXPECT_STREQ(small, "ab\\ c\\ ");  // 7 characters + NUL; "d" would not fit
  strcpy(small, "a b");
  EXPECT_TRUE(ChangeEscapeCharacter(small, sizeof(small)));
  EXPECT_STREQ(small, "a\\ b");
  char out[4];
  EXPECT_EQ(EscapeShellCharacters("((", out, sizeof(out)), 1u);
  EXPECT_STREQ(out, "\\(");
  EXPECT_EQ(EscapeShellCharacters("abc", out, 1), 0u);
  EXPECT_STREQ(out, "");
}

}  // namespace
