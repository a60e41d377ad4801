// The module as a host uses it: dlopen the built libvantori.so, resolve the
// five entry points by name and call them. Runs in a namespace with an empty
// /dev, so the module's real device calls find no disk.
#include <gtest/gtest.h>

#include <wx/app.h>
#include <wx/button.h>
#include <wx/evtloop.h>
#include <wx/frame.h>

#include "common/stdout_capture.h"
#include "ModuleVersion.h"
#include "VantoriModule.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <vector>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace {

std::string g_binDir;  // where libvantori.so lies
std::string g_exeDir;  // where the module looks for its settings (beside us)

// The module, loaded the way the host program loads it.
VantoriModule& TheApi() {
  static VantoriModule api;
  static wxString error;
  if (api.handle == nullptr && !LoadVantoriModule(g_binDir + "/libvantori.so", api, error))
    fprintf(stderr, "%s\n", static_cast<const char*>(error.utf8_str()));
  return api;
}

void Pump(int rounds = 20) {
  for (int i = 0; i < rounds; ++i) {
    wxTheApp->ProcessPendingEvents();
    wxYield();
    wxTheApp->ProcessIdle();
    usleep(5000);
  }
}

std::string RunCapture(const std::string& cmd) {
  std::string out;
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return out;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
  pclose(p);
  return out;
}

class Exports : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(TheApi().get_version, nullptr) << "libvantori.so did not load";
    frame = new wxFrame(nullptr, wxID_ANY, "host");
    frame->SetClientSize(660, 540);
    frame->Show();
  }
  void TearDown() override {
    frame->Destroy();
    Pump();
  }
  wxFrame* frame = nullptr;
};

TEST_F(Exports, AllFiveEntryPointsResolve) {
  VantoriModule& api = TheApi();
  EXPECT_NE(api.create, nullptr);
  EXPECT_NE(api.show, nullptr);
  EXPECT_NE(api.invoke, nullptr);
  EXPECT_NE(api.destroy, nullptr);
  EXPECT_NE(api.get_version, nullptr);
}

TEST_F(Exports, NullFrameAndInvoke) {
  VantoriModule& api = TheApi();
  EXPECT_EQ(api.show(nullptr, true), 0);
  EXPECT_EQ(api.show(nullptr, false), 0);
  EXPECT_EQ(api.destroy(nullptr), 0);
  EXPECT_EQ(api.invoke(), 0);
}

TEST_F(Exports, VersionBeforeAndAfterCreateShowHideDestroy) {
  VantoriModule& api = TheApi();
  EXPECT_EQ(api.get_version(), VANTORI_MODULE_VERSION);
  wxWindow* w = api.create(frame, wxID_ANY, wxPoint(0, 0), frame->GetClientSize());
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(w->GetParent(), frame);
  EXPECT_TRUE(w->IsShown());
  EXPECT_EQ(api.get_version(), VANTORI_MODULE_VERSION);
  EXPECT_EQ(api.invoke(), 0);
  EXPECT_EQ(api.show(w, false), 1);
  EXPECT_FALSE(w->IsShown());
  EXPECT_EQ(api.show(w, true), 1);
  EXPECT_TRUE(w->IsShown());
  EXPECT_EQ(api.destroy(w), 1);
  Pump();
  EXPECT_EQ(frame->GetChildren().GetCount(), 0u) << "the frame is deleted after destroy";
  EXPECT_EQ(api.get_version(), VANTORI_MODULE_VERSION);
  EXPECT_EQ(api.invoke(), 0);
}

TEST_F(Exports, SecondCreateReadsTheLayoutAgain) {
  VantoriModule& api = TheApi();
  const std::string controls = g_exeDir + "setting/vantori/controls.txt";
  std::string original;
  {
    std::ifstream in(controls);
    std::stringstream ss;
    ss << in.rdbuf();
    original = ss.str();
  }
  ASSERT_FALSE(original.empty()) << controls;

  wxWindow* w = nullptr;
  std::string out = vt::CaptureStdout([&] { w = api.create(frame, wxID_ANY, wxPoint(0, 0), frame->GetClientSize()); });
  ASSERT_NE(w, nullptr);
  EXPECT_NE(out.find("epen " + controls + " success!\n"), std::string::npos) << out;
  wxWindow* exit1 = wxWindow::FindWindowById(3006, w);
  ASSERT_NE(exit1, nullptr);
  wxPoint before = exit1->GetPosition();
  api.destroy(w);
  Pump();

  // Move the Exit button (control 14) by 7 pixels in x: the next frame must
  // read the file again.
  std::istringstream lines(original);
  std::string line, changed;
  int n = 0;
  while (std::getline(lines, line)) {
    if (n == 15) {  // header + controls 0..13 come first
      std::vector<std::string> cols;
      std::stringstream cs(line);
      std::string c;
      while (std::getline(cs, c, '\t')) cols.push_back(c);
      ASSERT_GE(cols.size(), 4u);
      int x = std::stoi(cols[2].substr(0, cols[2].find('|')));
      cols[2] = std::to_string(x + 7) + cols[2].substr(cols[2].find('|'));
      line.clear();
      for (size_t i = 0; i < cols.size(); ++i) line += (i ? "\t" : "") + cols[i];
    }
    changed += line + "\n";
    ++n;
  }
  {
    std::ofstream o(controls, std::ios::trunc);
    o << changed;
  }
  out = vt::CaptureStdout([&] { w = api.create(frame, wxID_ANY, wxPoint(0, 0), frame->GetClientSize()); });
  {
    std::ofstream o(controls, std::ios::trunc);
    o << original;
  }
  ASSERT_NE(w, nullptr);
  EXPECT_NE(out.find("epen " + controls + " success!\n"), std::string::npos) << out;
  wxWindow* exit2 = wxWindow::FindWindowById(3006, w);
  ASSERT_NE(exit2, nullptr);
  EXPECT_EQ(exit2->GetPosition().x, before.x + 7);
  api.destroy(w);
  Pump();
}

TEST(ExportTable, OnlyTheEntryPointsAndByteReaders) {
  std::string out = RunCapture("nm -D --defined-only '" + g_binDir + "/libvantori.so'");
  ASSERT_FALSE(out.empty());
  std::istringstream in(out);
  std::string line;
  std::vector<std::string> names;
  while (std::getline(in, line)) {
    std::istringstream ls(line);
    std::string addr, type, name;
    ls >> addr >> type >> name;
    if (name.empty()) continue;
    names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  std::vector<std::string> want = {"ByteToDWord", "ByteToQWord", "ByteToWord", "create",
                                   "destroy",     "get_version", "invoke",     "show"};
  EXPECT_EQ(names, want);
}

}  // namespace

class ExportTestApp : public wxApp {
 public:
  bool OnInit() override { return true; }
};
wxIMPLEMENT_APP_NO_MAIN(ExportTestApp);

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  char buf[4096];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n <= 0) return 2;
  buf[n] = 0;
  g_exeDir = std::string(buf).substr(0, std::string(buf).rfind('/') + 1);
  g_binDir = VANTORI_BIN_DIR;
  if (chdir(g_exeDir.c_str()) != 0) return 2;
  if (!wxEntryStart(argc, argv)) return 2;
  wxTheApp->CallOnInit();
  wxSetAssertHandler([](const wxString& file, int line, const wxString& func, const wxString& cond,
                        const wxString& msg) {
    ADD_FAILURE_AT(file.utf8_string().c_str(), line)
        << "wx assertion in " << func.utf8_string() << ": " << cond.utf8_string() << " "
        << msg.utf8_string();
  });
  int rc;
  {
    wxEventLoop loop;
    wxEventLoopBase::SetActive(&loop);
    rc = RUN_ALL_TESTS();
    wxEventLoopBase::SetActive(nullptr);
  }
  // The module's windows are gone; the library stays loaded until exit.
  wxEntryCleanup();
  return rc;
}
