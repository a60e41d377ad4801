// Test main for GUI tests: starts wxWidgets (GTK, under Xvfb) without its own
// main loop, routes wx assertions and unexpected modal dialogs to test
// failures, then runs GoogleTest.
#include <gtest/gtest.h>

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/image.h>
#include <wx/log.h>

#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

#include "gui_testing.h"
#include "test_support.h"

class TestApp : public wxApp {
 public:
  bool OnInit() override { return true; }
};
wxIMPLEMENT_APP_NO_MAIN(TestApp);

namespace vt {
std::vector<SeenMessage>& UnexpectedDialogs() {
  static std::vector<SeenMessage> seen;
  return seen;
}
}  // namespace vt

namespace {

void AssertToGTest(const wxString& file, int line, const wxString& func, const wxString& cond,
                   const wxString& msg) {
  ADD_FAILURE_AT(file.utf8_string().c_str(), line)
      << "wx assertion in " << func.utf8_string() << ": " << cond.utf8_string() << " "
      << msg.utf8_string();
}

// Registered for the whole run: a modal dialog that no wxTEST_DIALOG expects
// fails the running test and is cancelled, so the run never blocks.
class UnexpectedModalHook : public wxModalDialogHook {
 protected:
  int Enter(wxDialog* dlg) override {
    vt::SeenMessage seen;
    if (auto* md = dynamic_cast<wxMessageDialog*>(dlg)) {
      seen.message = md->GetMessage().utf8_string();
      seen.caption = md->GetTitle().utf8_string();
    } else {
      seen.caption = dlg->GetTitle().utf8_string();
    }
    vt::UnexpectedDialogs().push_back(seen);
    ADD_FAILURE() << "unexpected modal dialog \"" << seen.caption << "\": " << seen.message;
    return wxID_CANCEL;
  }
  void Exit(wxDialog*) override {}
};

// Every test starts with an empty list of unexpected dialogs, so a test that
// checks the list sees only its own.
class ClearUnexpectedDialogs : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo&) override { vt::UnexpectedDialogs().clear(); }
};

// A short double-click time lets the tests wait less between clicks that
// must not pair up (vt::kDoubleClickMs). GTK is already loaded by the
// toolkit; its settings object is reached by name, so the tests need no GTK
// headers.
void SetShortDoubleClickTime() {
  using SettingsFn = void* (*)();
  using SetFn = void (*)(void*, const char*, ...);
  auto settings = reinterpret_cast<SettingsFn>(dlsym(RTLD_DEFAULT, "gtk_settings_get_default"));
  auto set = reinterpret_cast<SetFn>(dlsym(RTLD_DEFAULT, "g_object_set"));
  void* object = settings != nullptr ? settings() : nullptr;
  if (object == nullptr || set == nullptr) {
    fprintf(stderr, "gui tests: cannot set GTK's double-click time\n");
    exit(2);
  }
  set(object, "gtk-double-click-time", static_cast<int>(vt::kDoubleClickMs), nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  // Listing the tests needs no display.
  if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();

  // The module takes its images relative to the working directory.
  if (chdir(vt::ExeDir().c_str()) != 0) return 2;
  setlocale(LC_ALL, "C.UTF-8");

  if (!wxEntryStart(argc, argv)) {
    fprintf(stderr, "cannot start wxWidgets (no display?)\n");
    return 2;
  }
  wxTheApp->CallOnInit();
  SetShortDoubleClickTime();
  wxSetAssertHandler(AssertToGTest);
  wxLog::SetActiveTarget(new wxLogStderr);
  wxInitAllImageHandlers();
  UnexpectedModalHook hook;
  hook.Register();
  ::testing::UnitTest::GetInstance()->listeners().Append(new ClearUnexpectedDialogs);

  int rc;
  {
    wxEventLoop loop;
    wxEventLoopBase::SetActive(&loop);
    rc = RUN_ALL_TESTS();
    wxEventLoopBase::SetActive(nullptr);
  }
  hook.Unregister();
  wxEntryCleanup();
  return rc;
}
