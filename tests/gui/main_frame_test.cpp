// The main frame as the host shows it: built from the shipped layout, under
// a top-level window of 660 x 540.
#include <gtest/gtest.h>

#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/stattext.h>
#include <wx/uiaction.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "ModuleVersion.h"
#include "common/gui_testing.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "main_window_env.h"
#include "dialogs/CInfoFrame.h"
#include "help/KelnoraAboutDialog.h"
#include "shell/my_frame.h"
#include "widgets/keln_BitmapButton.h"

namespace {

// A frame that records the pop-up menus it is asked to show instead of
// running GTK's menu loop.
class RecordingFrame : public my_frame {
 public:
  using my_frame::my_frame;
  int popups = 0;
  wxPoint popupAt;
  wxArrayString popupLabels;
  wxArrayInt popupIds;

 protected:
  bool DoPopupMenu(wxMenu* menu, int x, int y) override {
    ++popups;
    popupAt = wxPoint(x, y);
    for (wxMenuItem* item : menu->GetMenuItems()) {
      popupIds.Add(item->GetId());
      popupLabels.Add(item->GetItemLabel());
    }
    return true;
  }
};

// A screen point of the frame's own background: inside the frame and
// outside every child control, at least 4 pixels from their edges.
wxPoint BackgroundPoint(my_frame* frame) {
  const wxSize size = frame->GetClientSize();
  for (int y = size.y - 5; y >= 4; y -= 2) {
    for (int x = 4; x < size.x - 4; x += 2) {
      bool free = true;
      for (wxWindow* child : frame->GetChildren())
        if (child->IsShown() && child->GetRect().Inflate(4).Contains(x, y)) free = false;
      if (free) return frame->ClientToScreen(wxPoint(x, y));
    }
  }
  ADD_FAILURE() << "the frame shows no background of its own";
  return frame->GetScreenPosition();
}

class MainFrameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    vt::InstallShippedSettings();
    frame = vt::ShowMainFrame<RecordingFrame>(top);
  }
  void TearDown() override {
    if (top) top->Destroy();
    vt::Pump(50);
  }
  // Moves the real mouse onto the frame's own background and presses there;
  // true once the frame holds the mouse.
  bool PressOnBackground(wxUIActionSimulator& sim, wxPoint& start) {
    start = BackgroundPoint(frame);
    sim.MouseMove(start);
    vt::Pump(30);
    sim.MouseDown();
    return vt::PumpUntil([&] { return frame->HasCapture(); });
  }

  wxFrame* top = nullptr;
  RecordingFrame* frame = nullptr;
};

TEST_F(MainFrameTest, PathBoxReadsCDriveRootAndIsReadOnly) {
  ASSERT_NE(frame->GetPathBox(), nullptr);
  EXPECT_EQ(frame->GetPathBox()->GetValue(), wxString("c:\\"));
  EXPECT_FALSE(frame->GetPathBox()->IsEditable());
}

TEST_F(MainFrameTest, ControlsCarryTheirIdsAndLabels) {
  EXPECT_EQ(frame->GetHelpButton()->GetId(), 3002);
  EXPECT_EQ(frame->GetHelpButton()->GetLabel(), "&Help");
  EXPECT_EQ(frame->GetCopyButton()->GetId(), 3003);
  EXPECT_EQ(frame->GetCopyButton()->GetLabel(), "&Copy");
  EXPECT_EQ(frame->GetExitButton()->GetId(), 3006);
  EXPECT_EQ(frame->GetExitButton()->GetLabel(), "&Exit");
  EXPECT_EQ(frame->GetUpButton()->GetCommandId(), 3004);
  EXPECT_EQ(frame->GetRefreshButton()->GetCommandId(), 3005);
  EXPECT_EQ(frame->GetUpButton()->GetToolTipText(), "Up One Level");
  EXPECT_EQ(frame->GetRefreshButton()->GetToolTipText(), "Refresh");
  EXPECT_EQ(frame->GetSplitter()->GetName(), "splitter");
  EXPECT_TRUE(frame->GetSplitter()->IsSplit());
  EXPECT_EQ(frame->GetSplitter()->GetSplitMode(), wxSPLIT_VERTICAL);
  EXPECT_EQ(frame->GetInnerPanel()->GetBackgroundColour(), wxColour(248, 248, 248));
  // The Up and Refresh buttons show the pictures of their layout records.
  EXPECT_TRUE(frame->GetUpButton()->GetBitmap_Normal().IsOk());
  EXPECT_TRUE(frame->GetUpButton()->GetBitmap_Disabled().IsOk());
  EXPECT_TRUE(frame->GetRefreshButton()->GetBitmap_Normal().IsOk());
}

// Every control of the frame lies inside the window and no two siblings
// overlap, with the shipped layout and the default font.
TEST_F(MainFrameTest, LayoutFitsWithoutOverlap) {
  const wxRect client(wxPoint(0, 0), frame->GetClientSize());
  std::function<void(wxWindow*)> check = [&](wxWindow* parent) {
    const wxRect area(wxPoint(0, 0), parent->GetClientSize());
    std::vector<wxWindow*> kids;
    for (wxWindow* w : parent->GetChildren())
      if (w->IsShown() && !w->IsTopLevel()) kids.push_back(w);
    for (size_t i = 0; i < kids.size(); ++i) {
      wxRect r = kids[i]->GetRect();
      EXPECT_TRUE(area.Contains(r)) << kids[i]->GetClassInfo()->GetClassName() << " "
                                    << kids[i]->GetLabel() << " at " << r.x << "," << r.y << " "
                                    << r.width << "x" << r.height;
      for (size_t j = i + 1; j < kids.size(); ++j) {
        // The group box frames the controls drawn on it. (dynamic_cast: the
        // toolkit's wxDynamicCast starts with a static downcast, which the
        // undefined-behaviour checker rightly reports.)
        if (dynamic_cast<wxStaticBox*>(kids[i]) || dynamic_cast<wxStaticBox*>(kids[j])) continue;
        EXPECT_FALSE(r.Intersects(kids[j]->GetRect()))
            << kids[i]->GetClassInfo()->GetClassName() << " '" << kids[i]->GetLabel()
            << "' overlaps " << kids[j]->GetClassInfo()->GetClassName() << " '"
            << kids[j]->GetLabel() << "'";
      }
    }
  };
  check(frame);
  check(frame->GetInnerPanel());
  // Buttons are at least as large as GTK wants them.
  for (wxButton* b : {frame->GetHelpButton(), frame->GetCopyButton(), frame->GetExitButton()}) {
    EXPECT_GE(b->GetSize().y, b->GetBestSize().y) << b->GetLabel();
    EXPECT_GE(b->GetSize().x, b->GetBestSize().x) << b->GetLabel();
  }
  EXPECT_TRUE(client.Contains(frame->GetInnerPanel()->GetRect()));
}

TEST_F(MainFrameTest, ClickAndDragNeverMovesTheFrame) {
  const wxPoint before = frame->GetPosition();
  // Synthetic events straight to the frame: inside and outside the corner
  // where the drag is switched off.
  for (wxPoint at : {wxPoint(10, 10), wxPoint(640, 200), wxPoint(300, 500)}) {
    wxMouseEvent down(wxEVT_LEFT_DOWN);
    down.SetPosition(at);
    down.SetLeftDown(true);
    down.SetEventObject(frame);
    frame->GetEventHandler()->ProcessEvent(down);
    for (int step = 1; step <= 5; ++step) {
      wxMouseEvent move(wxEVT_MOTION);
      move.SetPosition(at + wxPoint(step * 15, step * 10));
      move.SetLeftDown(true);
      move.SetEventObject(frame);
      frame->GetEventHandler()->ProcessEvent(move);
    }
    wxMouseEvent up(wxEVT_LEFT_UP);
    up.SetPosition(at + wxPoint(75, 50));
    up.SetEventObject(frame);
    frame->GetEventHandler()->ProcessEvent(up);
    vt::Pump(20);
    EXPECT_EQ(frame->GetPosition(), before);
    EXPECT_FALSE(frame->HasCapture());
  }
  // And with the real mouse: press on the frame's own background and drag.
  const wxPoint topBefore = top->GetPosition();
  const wxPoint screenBefore = frame->GetScreenPosition();
  int drags = 0;
  bool capturedWhileDragging = false;
  auto onMove = [&](wxMouseEvent& e) {
    if (e.Dragging() && e.LeftIsDown()) ++drags;
    if (frame->HasCapture()) capturedWhileDragging = true;
    e.Skip();
  };
  frame->Bind(wxEVT_MOTION, onMove);
  wxUIActionSimulator sim;
  wxPoint start;
  ASSERT_TRUE(PressOnBackground(sim, start)) << "the press did not reach the frame";
  for (int step = 1; step <= 6; ++step) {
    sim.MouseMove(start + wxPoint(step * 20, -step * 12));
    vt::Pump(15);
  }
  sim.MouseUp();
  vt::Pump(50);
  frame->Unbind(wxEVT_MOTION, onMove);
  EXPECT_GE(drags, 3) << "the drag did not reach the frame";
  EXPECT_TRUE(capturedWhileDragging);
  EXPECT_FALSE(frame->HasCapture());
  EXPECT_EQ(frame->GetPosition(), before);
  EXPECT_EQ(frame->GetScreenPosition(), screenBefore);
  EXPECT_EQ(top->GetPosition(), topBefore);
}

// The system can take the mouse away between a press and its release: here
// the frame is hidden while the button is held (the host hides the module's
// window), so GTK breaks the grab. The frame lets go without a toolkit
// complaint (an unhandled wxEVT_MOUSE_CAPTURE_LOST is a toolkit assertion,
// which fails this test), and once shown again a press and a release capture
// and free the mouse as before.
TEST_F(MainFrameTest, LosingTheMouseCaptureEndsThePressCleanly) {
  int lost = 0;
  auto onLost = [&](wxMouseCaptureLostEvent& e) {
    ++lost;
    e.Skip();
  };
  frame->Bind(wxEVT_MOUSE_CAPTURE_LOST, onLost);
  wxUIActionSimulator sim;
  wxPoint start;
  ASSERT_TRUE(PressOnBackground(sim, start));
  frame->Hide();
  EXPECT_TRUE(vt::PumpUntil([&] { return lost == 1; })) << "the grab was not broken";
  EXPECT_FALSE(frame->HasCapture());
  EXPECT_EQ(wxWindow::GetCapture(), nullptr);
  frame->Show();
  ASSERT_TRUE(vt::PumpUntil([&] { return frame->IsShownOnScreen(); }));
  vt::Pump(50);
  // The release after the loss finds nothing to release.
  int ups = 0;
  auto onUp = [&](wxMouseEvent& e) {
    ++ups;
    e.Skip();
  };
  frame->Bind(wxEVT_LEFT_UP, onUp);
  sim.MouseUp();
  vt::Pump(50);
  EXPECT_EQ(wxWindow::GetCapture(), nullptr);
  // Later presses and releases capture and free the mouse as before (GTK
  // swallows the first press after a broken grab, so up to three tries).
  sim.MouseMove(start + wxPoint(1, 0));
  vt::Pump(20);
  bool captured = false;
  for (int attempt = 0; attempt < 3 && !captured; ++attempt) {
    sim.MouseDown();
    captured = vt::PumpUntil([&] { return frame->HasCapture(); }, 500);
    sim.MouseUp();
    vt::Pump(50);
  }
  EXPECT_TRUE(captured) << "no later press reached the frame";
  EXPECT_TRUE(vt::PumpUntil([&] { return !frame->HasCapture(); }));
  EXPECT_GE(ups, 1);
  EXPECT_EQ(wxWindow::GetCapture(), nullptr);
  EXPECT_EQ(lost, 1);
  frame->Unbind(wxEVT_LEFT_UP, onUp);
  frame->Unbind(wxEVT_MOUSE_CAPTURE_LOST, onLost);
}

// Destroyed while it holds the mouse (the window goes away between press and
// release): the capture goes with it.
TEST_F(MainFrameTest, DestroyedWhilePressedLetsTheMouseGo) {
  wxUIActionSimulator sim;
  wxPoint start;
  ASSERT_TRUE(PressOnBackground(sim, start));
  delete frame;
  frame = nullptr;
  EXPECT_EQ(wxWindow::GetCapture(), nullptr);
  sim.MouseUp();
  vt::Pump(30);
}

TEST_F(MainFrameTest, MenuCommandPopsTwoItemsBelowTheAnchor) {
  EXPECT_EQ(frame->GetMenuAnchor(), nullptr);
  wxCommandEvent ev(wxEVT_BUTTON, 3009);
  frame->GetEventHandler()->ProcessEvent(ev);
  ASSERT_EQ(frame->popups, 1);
  EXPECT_EQ(frame->popupAt, wxPoint(0, 25)) << "no anchor: 25 pixels below (0, 0)";
  ASSERT_EQ(frame->popupIds.size(), 3u);
  EXPECT_EQ(frame->popupIds[0], 3010);
  EXPECT_EQ(frame->popupIds[1], wxID_SEPARATOR);
  EXPECT_EQ(frame->popupIds[2], 3011);
  EXPECT_EQ(frame->popupLabels[0], "&Help          ");
  EXPECT_EQ(frame->popupLabels[2], "&About...         ");
}

// The frame's image loader loads a picture, and a missing file gives an
// empty bitmap without a toolkit complaint.
TEST_F(MainFrameTest, ImageLoadGivesThePictureOrAnEmptyBitmap) {
  wxBitmap logo;
  frame->imageLoad(logo, "./res/vantori/logo.png", wxBITMAP_TYPE_PNG);
  EXPECT_TRUE(logo.IsOk());
  EXPECT_EQ(logo.GetSize(), wxSize(64, 64));
  wxBitmap txt;
  frame->imageLoad(txt, "./res/vantori/bmp/txt.bmp", wxBITMAP_TYPE_BMP);
  EXPECT_EQ(txt.GetSize(), wxSize(16, 16));
  wxBitmap none(8, 8);
  frame->imageLoad(none, "./res/vantori/no-such.png", wxBITMAP_TYPE_PNG);
  EXPECT_FALSE(none.IsOk());
}

TEST(MenuPopupPoint, TwentyFivePixelsBelowTheAnchor) {
  EXPECT_EQ(MenuPopupPoint(nullptr), wxPoint(0, 25));
  wxFrame* f = new wxFrame(nullptr, wxID_ANY, "anchor");
  wxWindow* w = new wxWindow(f, wxID_ANY, wxPoint(40, 70), wxSize(10, 10));
  EXPECT_EQ(MenuPopupPoint(w), wxPoint(40, 95));
  f->Destroy();
  vt::Pump(20);
}

TEST_F(MainFrameTest, RefreshShowsBusyBoxAndDisablesCopyAndUp) {
  frame->GetCopyButton()->Enable();
  frame->GetUpButton()->keln_Enable();
  bool sawBusy = false;
  wxString busyText;
  // The busy box yields once while it is up; look for it then.
  frame->CallAfter([&] {
    for (wxWindow* w : wxTopLevelWindows) {
      if (dynamic_cast<CInfoFrame*>(w) && w->IsShown()) {
        sawBusy = true;
        for (wxWindow* c : w->GetChildren())
          for (wxWindow* t : c->GetChildren()) busyText = t->GetLabel();
      }
    }
  });
  wxCommandEvent ev(wxEVT_BUTTON, 3005);
  frame->GetEventHandler()->ProcessEvent(ev);
  EXPECT_TRUE(sawBusy);
  EXPECT_EQ(busyText, "Please wait, working...");
  EXPECT_FALSE(frame->GetCopyButton()->IsEnabled());
  EXPECT_EQ(frame->GetUpButton()->GetState(), keln_BitmapButton::STATE_DISABLED);
  vt::Pump(50);
  for (wxWindow* w : wxTopLevelWindows)
    EXPECT_FALSE(dynamic_cast<CInfoFrame*>(w) && w->IsShown()) << "busy box still up";
}

TEST_F(MainFrameTest, ClickingTheRefreshPictureButtonRefreshes) {
  frame->GetCopyButton()->Enable();
  wxUIActionSimulator sim;
  wxRect r = frame->GetRefreshButton()->GetScreenRect();
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(30);
  sim.MouseClick();
  EXPECT_TRUE(vt::PumpUntil([&] { return !frame->GetCopyButton()->IsEnabled(); }));
}

TEST_F(MainFrameTest, ExitButtonDestroysTheFrame) {
  bool destroyed = false;
  frame->Bind(wxEVT_DESTROY, [&](wxWindowDestroyEvent& e) {
    if (e.GetEventObject() == frame) destroyed = true;
    e.Skip();
  });
  wxUIActionSimulator sim;
  wxRect r = frame->GetExitButton()->GetScreenRect();
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(30);
  sim.MouseClick();
  EXPECT_TRUE(vt::PumpUntil([&] { return destroyed; }));
  EXPECT_EQ(top->GetChildren().GetCount(), 0u);
}

// Help runs the configured program with the page as one quoted argument.
TEST_F(MainFrameTest, HelpRunsTheConfiguredCommand) {
  const std::string marker = "/tmp/vantori-help-test-" + std::to_string(getpid());
  std::remove(marker.c_str());
  vt::WriteSettingFile(
      "config.ini", "[help]\npath=/usr/bin/touch\ncate=" + marker.substr(0, marker.rfind('/') + 1) +
                        "\nhtml=" + marker.substr(marker.rfind('/') + 1) +
                        "\n[Interface]\nversion=" + std::to_string(VANTORI_MODULE_VERSION) + "\n");
  wxCommandEvent ev(wxEVT_BUTTON, 3002);
  std::string out = vt::CaptureStdout([&] { frame->GetEventHandler()->ProcessEvent(ev); });
  EXPECT_EQ(out, "help_cmd = /usr/bin/touch \"" + marker + "\"\n");
  EXPECT_TRUE(vt::PumpUntil([&] { return access(marker.c_str(), F_OK) == 0; }, 5000))
      << "the help program did not run";
  std::remove(marker.c_str());
  vt::InstallShippedSettings();
}

// Runs a shell command and returns its standard output.
std::string ShellOutput(const std::string& command) {
  std::string text;
  if (FILE* p = popen(command.c_str(), "r")) {
    char buffer[512];
    size_t n;
    while ((n = fread(buffer, 1, sizeof(buffer), p)) > 0) text.append(buffer, n);
    pclose(p);
  }
  return text;
}

// With the shipped settings, Help starts Vantori's own help program, which
// shows the help book's first page in a window of its own.
TEST_F(MainFrameTest, HelpWithTheShippedSettingsShowsTheBooksFirstPage) {
  vt::InstallShippedSettings();
  // The help program lies beside the module, as it does beside the host.
  const std::string program = vt::ExeDir() + "vantori-help";
  std::remove(program.c_str());
  ASSERT_EQ(link(VANTORI_BIN_DIR "/vantori-help", program.c_str()), 0) << "vantori-help not built";
  ASSERT_TRUE(ShellOutput("pgrep -x vantori-help").empty()) << "a help program is running already";
  vt::StdoutCapture out;
  wxCommandEvent ev(wxEVT_BUTTON, 3002);
  frame->GetEventHandler()->ProcessEvent(ev);
  bool shown = vt::PumpUntil(
      [] { return !ShellOutput("xdotool search --onlyvisible --name '^Vantori Help$'").empty(); },
      15000);
  ShellOutput("pkill -TERM -x vantori-help");
  vt::PumpUntil([] { return ShellOutput("pgrep -x vantori-help").empty(); }, 5000);
  std::string text = out.Stop();
  std::remove(program.c_str());
  EXPECT_TRUE(shown) << "no window of the help program: " << text;
  EXPECT_NE(text.find("help_cmd = ./vantori-help \"index.html\"\n"), std::string::npos) << text;
  EXPECT_NE(text.find("help page shown: index.html \"Vantori\"\n"), std::string::npos) << text;
  EXPECT_TRUE(ShellOutput("pgrep -x vantori-help").empty());
}

}  // namespace

// The about box is the module's own dialog: answer it with OK.
template <>
class wxExpectModal<KelnoraAboutDialog> : public wxExpectModalBase<KelnoraAboutDialog> {
 public:
  wxExpectModal(wxString* titleOut, wxArrayString* textsOut)
      : m_titleOut(titleOut), m_textsOut(textsOut) {}

 protected:
  int OnInvoked(KelnoraAboutDialog* dlg) const override {
    *m_titleOut = dlg->GetTitle();
    for (wxWindow* w : dlg->GetChildren())
      if (dynamic_cast<wxStaticText*>(w)) m_textsOut->Add(w->GetLabel());
    return wxID_OK;
  }

 private:
  wxString* m_titleOut;
  wxArrayString* m_textsOut;
};

namespace {
TEST_F(MainFrameTest, AboutShowsNameAndVersion) {
  for (const char* version : std::vector<const char*>{"77", nullptr}) {
    if (version)
      vt::WriteSettingFile("config.ini", std::string("[Interface]\nversion=") + version + "\n");
    else
      vt::RemoveSettingFile("config.ini");
    wxString title;
    wxArrayString texts;
    wxTEST_DIALOG(
        {
          wxCommandEvent ev(wxEVT_MENU, 3011);
          frame->GetEventHandler()->ProcessEvent(ev);
        },
        wxExpectModal<KelnoraAboutDialog>(&title, &texts));
    EXPECT_EQ(title, "About Vantori");
    const wxString heading = version ? "Vantori 2.0.77" : "Vantori 2.0.5678";
    EXPECT_NE(texts.Index(heading), wxNOT_FOUND) << heading << " among " << wxJoin(texts, '|');
  }
  vt::InstallShippedSettings();
}

TEST(KelnoraAboutDialog, AllAsStringJoinsWithCommas) {
  wxArrayString a;
  a.Add("Ann");
  a.Add("Bo");
  a.Add("Cy");
  EXPECT_EQ(KelnoraAboutDialog::AllAsString(a), "Ann, Bo, Cy\n");
  EXPECT_EQ(KelnoraAboutDialog::AllAsString(wxArrayString()), "");
}
}  // namespace
