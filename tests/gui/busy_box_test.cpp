// The scoped busy window: shown while the object lives, gone afterwards.
#include <gtest/gtest.h>

#include <wx/app.h>
#include <wx/display.h>
#include <wx/frame.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/weakref.h>

#include "common/test_support.h"
#include "dialogs/CBusyMsgBox.h"
#include "dialogs/CInfoFrame.h"
#include "gui/widgets_pixels.h"

namespace {

wxPoint Centre(const wxRect& r) { return wxPoint(r.x + r.width / 2, r.y + r.height / 2); }

}  // namespace

TEST(BusyMsgBox, ShortMessageGivesAtLeast400By80) {
  CBusyMsgBox box(L"Wait", nullptr, *wxWHITE);
  CInfoFrame* frame = box.GetFrame();
  ASSERT_NE(frame, nullptr);
  const wxSize client = frame->GetClientSize();
  EXPECT_GE(client.x, 400);
  EXPECT_GE(client.y, 80);
  // A short text: exactly the minimum.
  EXPECT_EQ(client, wxSize(400, 80));
  EXPECT_EQ(frame->GetPanel()->GetSize(), client);
}

TEST(BusyMsgBox, LongMessageWidensTheWindow) {
  const wxString text(wxT('W'), 40);
  CBusyMsgBox box(text, nullptr, *wxWHITE);
  const wxSize best = box.GetFrame()->GetText()->GetBestSize();
  ASSERT_GT(best.x, 340);
  EXPECT_EQ(box.GetFrame()->GetClientSize(), wxSize(best.x + 60, std::max(best.y, 40) + 40));
}

TEST(BusyMsgBox, FrameLooksAsDescribed) {
  const wxColour colour(250, 240, 200);
  CBusyMsgBox box(L"Please wait, working...", nullptr, colour);
  CInfoFrame* frame = box.GetFrame();
  EXPECT_EQ(frame->GetTitle(), wxT("Busy"));
  EXPECT_TRUE(frame->HasFlag(wxBORDER_SIMPLE));
  EXPECT_TRUE(frame->HasFlag(wxFRAME_TOOL_WINDOW));
  EXPECT_FALSE(frame->HasFlag(wxCAPTION));
  EXPECT_EQ(frame->GetBackgroundColour(), colour);
  EXPECT_EQ(frame->GetText()->GetLabel(), wxT("Please wait, working..."));
  EXPECT_EQ(frame->GetText()->GetParent(), frame->GetPanel());
  EXPECT_TRUE(frame->GetPanel()->HasFlag(wxTAB_TRAVERSAL));
  EXPECT_TRUE(frame->GetPanel()->GetCursor().IsOk());
  EXPECT_TRUE(frame->GetText()->GetCursor().IsOk());
  // The text is centred in the panel.
  const wxRect panel(wxPoint(0, 0), frame->GetPanel()->GetSize());
  const wxRect text = frame->GetText()->GetRect();
  EXPECT_NEAR(Centre(text).x, Centre(panel).x, 1);
  EXPECT_NEAR(Centre(text).y, Centre(panel).y, 1);
}

TEST(BusyMsgBox, NullParentIsNotStayOnTopAndCentredOnTheScreen) {
  CBusyMsgBox box(L"Reading the disks", nullptr, *wxWHITE);
  CInfoFrame* frame = box.GetFrame();
  EXPECT_EQ(frame->GetParent(), nullptr);
  EXPECT_FALSE(frame->HasFlag(wxSTAY_ON_TOP));
  const wxRect screen = wxDisplay(0u).GetClientArea();
  const wxRect rect = frame->GetScreenRect();
  EXPECT_NEAR(Centre(rect).x, Centre(screen).x, 2);
  EXPECT_NEAR(Centre(rect).y, Centre(screen).y, 2);
}

TEST(BusyMsgBox, StayOnTopParentMakesItStayOnTop) {
  wxFrame* parent = new wxFrame(nullptr, wxID_ANY, "top", wxPoint(100, 100), wxSize(500, 300),
                                wxDEFAULT_FRAME_STYLE | wxSTAY_ON_TOP);
  parent->Show();
  vt::Pump(50);
  {
    CBusyMsgBox box(L"Wait", parent, *wxWHITE);
    EXPECT_TRUE(box.GetFrame()->HasFlag(wxSTAY_ON_TOP));
    EXPECT_EQ(box.GetFrame()->GetParent(), parent);
  }
  parent->Destroy();
  vt::Pump(30);
}

TEST(BusyMsgBox, OrdinaryParentCentresOverIt) {
  wxFrame* parent = new wxFrame(nullptr, wxID_ANY, "main", wxPoint(300, 200), wxSize(640, 480));
  parent->Show();
  ASSERT_TRUE(vt::PumpUntil([&] { return parent->IsShownOnScreen(); }));
  {
    CBusyMsgBox box(L"Wait", parent, *wxWHITE);
    EXPECT_FALSE(box.GetFrame()->HasFlag(wxSTAY_ON_TOP));
    EXPECT_NEAR(Centre(box.GetFrame()->GetScreenRect()).x, Centre(parent->GetScreenRect()).x, 2);
    EXPECT_NEAR(Centre(box.GetFrame()->GetScreenRect()).y, Centre(parent->GetScreenRect()).y, 2);
    // The safe yield re-enabled the other windows before returning.
    EXPECT_TRUE(parent->IsEnabled());
  }
  parent->Destroy();
  vt::Pump(30);
}

TEST(BusyMsgBox, ShownDuringItsLifetimeAndGoneAfter) {
  wxWeakRef<CInfoFrame> ref;
  {
    CBusyMsgBox box(L"Opening the folder", nullptr, *wxWHITE);
    ref = box.GetFrame();
    ASSERT_TRUE(ref);
    EXPECT_TRUE(ref->IsShown());
    // Painted before the caller's work begins: no event processing here.
    const wxImage shot = vt::GrabClient(ref);
    ASSERT_TRUE(shot.IsOk());
    EXPECT_TRUE(vt::Near(vt::PixelAt(shot, 2, 2), *wxWHITE)) << vt::PixelAt(shot, 2, 2).GetAsString();
    int ink = 0;
    for (int y = 0; y < shot.GetHeight(); ++y)
      for (int x = 0; x < shot.GetWidth(); ++x)
        if (vt::PixelAt(shot, x, y).Red() < 100) ++ink;
    EXPECT_GT(ink, 20) << "the message is not on the screen";
    // Simulated long work, with events processed: still there.
    vt::Pump(100);
    ASSERT_TRUE(ref);
    EXPECT_TRUE(ref->IsShownOnScreen());
  }
  // Hidden at once, destroyed when idle.
  EXPECT_TRUE(!ref || !ref->IsShown());
  EXPECT_TRUE(vt::PumpUntil([&] { return !ref; }));
}

TEST(BusyMsgBox, NestedBoxesCloseInTurn) {
  wxWeakRef<CInfoFrame> outer, inner;
  {
    CBusyMsgBox a(L"one", nullptr, *wxWHITE);
    outer = a.GetFrame();
    {
      CBusyMsgBox b(L"two", nullptr, *wxWHITE);
      inner = b.GetFrame();
      EXPECT_TRUE(outer->IsShown());
      EXPECT_TRUE(inner->IsShown());
    }
    EXPECT_TRUE(vt::PumpUntil([&] { return !inner; }));
    ASSERT_TRUE(outer);
    EXPECT_TRUE(outer->IsShown());
  }
  EXPECT_TRUE(vt::PumpUntil([&] { return !outer; }));
}

TEST(BusyMsgBox, BoxOpenedWhileAnotherYields) {
  // A handler that runs inside the outer box's safe yield opens its own box.
  bool innerShown = false;
  wxWeakRef<CInfoFrame> innerRef;
  wxTheApp->CallAfter([&] {
    CBusyMsgBox inner(L"inner", nullptr, *wxWHITE);
    innerRef = inner.GetFrame();
    innerShown = inner.GetFrame()->IsShown();
  });
  {
    CBusyMsgBox outer(L"outer", nullptr, *wxWHITE);
    EXPECT_TRUE(innerShown);
    EXPECT_TRUE(outer.GetFrame()->IsShown());
  }
  EXPECT_TRUE(vt::PumpUntil([&] { return !innerRef; }));
}
