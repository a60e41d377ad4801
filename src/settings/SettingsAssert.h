// Index checks of the settings tables. They stay active in every build type
// (release builds define NDEBUG, which would silence <cassert>): a failed check
// writes the standard C library assertion message naming the source file,
// line, function and expression, then aborts the process.
#pragma once

namespace settings {

[[noreturn]] void AssertionFailed(const char* expr, const char* file, unsigned int line,
                                  const char* function);

}  // namespace settings

// cond is evaluated; on failure the fixed texts are reported as they stand.
#define SETTINGS_ASSERT(cond, file, line, function, exprText)               \
  do {                                                                      \
    if (!(cond)) ::settings::AssertionFailed(exprText, file, line, function); \
  } while (0)
