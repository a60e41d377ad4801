#include "settings/SettingsAssert.h"

// The C library's own reporter: "<prog>: <file>:<line>: <function>: Assertion
// `<expr>' failed." on standard error, then abort(). Declared here because
// <assert.h> hides its declaration when NDEBUG is set.
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));

namespace settings {

void AssertionFailed(const char* expr, const char* file, unsigned int line,
                     const char* function) {
  __assert_fail(expr, file, line, function);
}

}  // namespace settings
