// The start-up window of the stand-alone program: nothing happens before it
// is painted but a trace line per tick; the first tick after the paint takes
// the inventory and creates exactly one main frame, and the ticks stop.
#include <gtest/gtest.h>

#include <wx/frame.h>

#include <string>
#include <vector>

#include "common/stdout_capture.h"
#include "shell/fore_message.h"
#include "shell/my_frame.h"
#include "common/test_support.h"

namespace {

// The counter values of the trace lines in text, in order.
std::vector<int> TraceValues(const std::string& text) {
  std::vector<int> values;
  const std::string prefix = "nIsInistialized = ";
  size_t at = 0;
  while ((at = text.find(prefix, at)) != std::string::npos) {
    at += prefix.size();
    values.push_back(std::stoi(text.substr(at)));
  }
  return values;
}

int TopLevelMainFrames() {
  int n = 0;
  for (wxWindow* top : wxTopLevelWindows)
    for (wxWindow* child : top->GetChildren())
      if (dynamic_cast<my_frame*>(child) != nullptr && !top->IsBeingDeleted()) ++n;
  return n;
}

TEST(StartWindow, NeverShownItOnlyTracesEveryTickAndCreatesNoFrame) {
  int framesBefore = TopLevelMainFrames();
  fore_message* start = new fore_message(nullptr, wxID_ANY, "Vantori", wxDefaultPosition,
                                         wxSize(320, 90), wxCAPTION, "fore_message");
  vt::StdoutCapture out;
  vt::PumpUntil([] { return false; }, 300);
  std::string text = out.Stop();
  std::vector<int> ticks = TraceValues(text);
  // A tick every 10 ms: many lines in 300 ms, the counter going up by one.
  ASSERT_GE(ticks.size(), 5u) << text;
  for (size_t i = 1; i < ticks.size(); ++i) EXPECT_EQ(ticks[i], ticks[i - 1] + 1) << text;
  EXPECT_EQ(text.find("nIsInistialized = "), 0u) << "only trace lines: " << text;
  EXPECT_EQ(start->MainFrame(), nullptr);
  EXPECT_TRUE(start->TimerRunning());
  EXPECT_EQ(TopLevelMainFrames(), framesBefore);
  start->Destroy();
  vt::Pump(30);
}

TEST(StartWindow, FirstTickAfterThePaintCreatesOneMainFrameAndStopsTheTicks) {
  int framesBefore = TopLevelMainFrames();
  fore_message* start = new fore_message(nullptr, wxID_ANY, "Vantori", wxDefaultPosition,
                                         wxSize(320, 90), wxCAPTION, "fore_message");
  start->Show(true);
  ASSERT_TRUE(vt::PumpUntil([start] { return start->MainFrame() != nullptr; }, 5000));
  my_frame* frame = start->MainFrame();
  EXPECT_EQ(frame->GetId(), 10003);
  EXPECT_EQ(frame->GetWindowStyleFlag(), 0x20c0010);
  EXPECT_EQ(frame->GetSize(), wxSize(660, 540));
  wxWindow* top = frame->GetParent();
  ASSERT_NE(top, nullptr);
  EXPECT_TRUE(top->IsTopLevel());
  EXPECT_EQ(top->GetParent(), nullptr);
  EXPECT_EQ(top->GetPosition(), wxPoint(132, 104));
  EXPECT_EQ(top->GetClientSize(), wxSize(660, 540));
  EXPECT_TRUE(top->IsShown());
  EXPECT_FALSE(start->IsShown());
  EXPECT_FALSE(start->TimerRunning());
  EXPECT_EQ(TopLevelMainFrames(), framesBefore + 1);
  // No more ticks: no trace line and no second frame.
  vt::StdoutCapture out;
  vt::Pump(200);
  std::string text = out.Stop();
  EXPECT_TRUE(TraceValues(text).empty()) << text;
  EXPECT_EQ(TopLevelMainFrames(), framesBefore + 1);
  // The dialog stays, hidden; the Exit path (the frame destroyed) takes its
  // window along.
  frame->Destroy();
  ASSERT_TRUE(vt::PumpUntil([start] { return start->MainFrame() == nullptr; }, 3000));
  vt::Pump(50);
  EXPECT_EQ(TopLevelMainFrames(), framesBefore);
  start->Destroy();
  vt::Pump(30);
}

}  // namespace
