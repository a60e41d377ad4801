#include "ProgramStart.h"

#include <wx/debug.h>
#include <wx/string.h>
#include <wx/uilocale.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <langinfo.h>

namespace {

const char* g_program = "vantori";

void AssertToStderr(const wxString& file, int line, const wxString& func, const wxString& cond,
                    const wxString& msg) {
  std::fprintf(stderr, "%s: toolkit check failed at %s:%d in %s(): %s %s\n", g_program,
               static_cast<const char*>(file.utf8_str()), line,
               static_cast<const char*>(func.utf8_str()), static_cast<const char*>(cond.utf8_str()),
               static_cast<const char*>(msg.utf8_str()));
}

}  // namespace

void ReportToolkitChecksOnStderr(const char* program) {
  g_program = program;
  wxSetAssertHandler(AssertToStderr);
}

void UseUtf8Locale() {
  const char* got = setlocale(LC_ALL, "");
  const char* codeset = got ? nl_langinfo(CODESET) : "";
  if (got == nullptr || std::strcmp(codeset, "UTF-8") != 0) {
    if (setlocale(LC_ALL, "C.UTF-8") == nullptr) setlocale(LC_ALL, "en_US.UTF-8");
  }
  wxUILocale::UseDefault();
}
