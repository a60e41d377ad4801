// The main frame as the host shows it: a top-level window whose 660 x 540
// client area the frame fills.
#pragma once

#include <gtest/gtest.h>

#include <wx/frame.h>

#include "common/test_support.h"
#include "shell/my_frame.h"

namespace vt {

// The host's top-level window, not yet shown.
inline wxFrame* NewHostWindow() {
  wxFrame* top = new wxFrame(nullptr, wxID_ANY, "Vantori");
  top->SetClientSize(660, 540);
  return top;
}

// Builds the frame (or a test's subclass of it) in a new host window, shows
// both and waits until the frame is on screen. top receives the window.
template <typename Frame = my_frame>
Frame* ShowMainFrame(wxFrame*& top) {
  top = NewHostWindow();
  Frame* frame = new Frame(top, wxID_ANY, "Vantori", wxPoint(0, 0), top->GetClientSize(),
                           wxBORDER_NONE | wxTAB_TRAVERSAL | wxWANTS_CHARS);
  top->Show();
  frame->Show();
  EXPECT_TRUE(PumpUntil([&] { return frame->IsShownOnScreen(); }));
  Pump(100);
  return frame;
}

}  // namespace vt
