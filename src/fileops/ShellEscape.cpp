#include "fileops/ShellEscape.h"

#include <string.h>

#include <vector>

bool IsShellEscaped(unsigned char c) {
  switch (c) {
    case ' ': case '`': case '?': case '&': case '*': case '(': case ')':
    case '|': case '\\': case '"': case '\'': case '<': case '>':
      return true;
    default:
      return false;
  }
}

size_t EscapeShellCharacters(const char* in, char* out, size_t capacity) {
  if (capacity == 0) return 0;
  size_t used = 0;  // bytes written to out, NUL not counted
  size_t taken = 0;
  for (; in[taken] != '\0'; ++taken) {
    const unsigned char c = static_cast<unsigned char>(in[taken]);
    const size_t need = IsShellEscaped(c) ? 2 : 1;
    if (used + need + 1 > capacity) break;
    if (need == 2) out[used++] = '\\';
    out[used++] = static_cast<char>(c);
  }
  out[used] = '\0';
  return taken;
}

bool ChangeEscapeCharacter(char* s) {
  char work[kEscapeBufferSize];
  const size_t taken = EscapeShellCharacters(s, work, sizeof(work));
  const bool whole = s[taken] == '\0';
  memcpy(s, work, strlen(work) + 1);
  return whole;
}

bool ChangeEscapeCharacter(char* s, size_t capacity) {
  if (capacity == 0) return false;
  std::vector<char> work(capacity);
  const size_t taken = EscapeShellCharacters(s, work.data(), capacity);
  const bool whole = s[taken] == '\0';
  memcpy(s, work.data(), strlen(work.data()) + 1);
  return whole;
}

std::string ShellEscaped(const std::string& text) {
  // Twice the length always fits: no character gets more than one backslash.
  std::vector<char> out(text.size() * 2 + 1);
  EscapeShellCharacters(text.c_str(), out.data(), out.size());
  return std::string(out.data());
}
