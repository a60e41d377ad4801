// Test main for logic that needs no display: wxWidgets' base library only.
#include <gtest/gtest.h>

#include <wx/init.h>
#include <wx/log.h>

#include <clocale>
#include <unistd.h>

#include "test_support.h"

static void AssertToGTest(const wxString& file, int line, const wxString& func,
                          const wxString& cond, const wxString& msg) {
  ADD_FAILURE_AT(file.utf8_string().c_str(), line)
      << "wx assertion in " << func.utf8_string() << ": " << cond.utf8_string() << " "
      << msg.utf8_string();
}

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (chdir(vt::ExeDir().c_str()) != 0) return 2;
  setlocale(LC_ALL, "C.UTF-8");
  wxInitializer init(argc, argv);
  if (!init.IsOk()) return 2;
  wxSetAssertHandler(AssertToGTest);
  return RUN_ALL_TESTS();
}
