// The shell escape of a path: a backslash before each of the 13 characters
// blank ` ? & * ( ) | \ " ' < > and nothing else ("$", ";", "!", "#", a
// newline and a leading "-" pass unchanged, which is why no file operation
// hands an escaped path to a shell: the escape only names paths in the
// diagnostic lines of deleting and copying).
#pragma once

#include <stddef.h>

#include <string>

// Size of the working buffer of the in-place escape, terminating NUL
// included: an escaped path holds at most kEscapeBufferSize - 1 characters.
enum { kEscapeBufferSize = 1024 };

// True for the 13 characters that get a backslash.
bool IsShellEscaped(unsigned char c);

// Escapes `in` into `out`, which holds `capacity` bytes (at least 1); always
// terminates `out`. Stops before a character whose escaped form would not fit
// (a backslash is never left without its character). Returns the number of
// characters of `in` that were escaped into `out` (strlen(in) when it all
// fit).
size_t EscapeShellCharacters(const char* in, char* out, size_t capacity);

// Escapes the text in `s` in place. `s` must hold kEscapeBufferSize bytes:
// the result is bounded by them (a longer result is cut before the first
// character that does not fit). Returns false when the text was cut.
bool ChangeEscapeCharacter(char* s);
// The same for a buffer of `capacity` bytes.
bool ChangeEscapeCharacter(char* s, size_t capacity);

// The escaped form of a whole text, never cut.
std::string ShellEscaped(const std::string& text);
