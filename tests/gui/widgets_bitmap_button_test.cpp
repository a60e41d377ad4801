// The skinned bitmap button driven by real mouse and keyboard input (Xvfb),
// with what it paints read back from the screen.
#include <gtest/gtest.h>

#include <wx/dcclient.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/panel.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include <vector>

#include "common/test_support.h"
#include "gui/widgets_pixels.h"
#include "widgets/keln_BitmapButton.h"
#include "widgets/keln_ButMsg_Text.h"

namespace {

const wxColour kNormal(200, 0, 0);
const wxColour kSelect(0, 160, 0);
const wxColour kHover(0, 0, 220);
const wxColour kDisabled(120, 120, 120);

wxBitmap Solid(const wxColour& c, int w = 64, int h = 32) {
  wxImage img(w, h);
  img.SetRGB(wxRect(0, 0, w, h), c.Red(), c.Green(), c.Blue());
  return wxBitmap(img);
}

class BitmapButtonTest : public ::testing::Test {
 protected:
  void SetUp() override {
    frame = new wxFrame(nullptr, wxID_ANY, "buttons", wxPoint(40, 40), wxSize(320, 200));
    parent = new wxPanel(frame, wxID_ANY);
    parent->Bind(wxEVT_BUTTON, [this](wxCommandEvent& e) {
      clicks.push_back(e.GetId());
      sources.push_back(e.GetEventObject());
    });
    // Takes the initial focus, so the button starts unfocused (state 0).
    sink = new wxTextCtrl(parent, wxID_ANY, wxEmptyString, wxPoint(200, 100), wxSize(80, 28));
    button = new keln_BitmapButton(parent, 3004, wxEmptyString, wxPoint(40, 40), wxSize(64, 32));
    button->SetBitmap_Normal(Solid(kNormal));
    button->SetBitmap_Select(Solid(kSelect));
    button->SetBitmap_Hover(Solid(kHover));
    button->SetBitmap_Disabled(Solid(kDisabled));
    frame->Show();
    frame->Raise();
    ASSERT_TRUE(vt::PumpUntil([&] { return button->IsShownOnScreen(); }));
    sink->SetFocus();
    vt::Pump(150);
    // Start with the pointer well away from the button.
    sim.MouseMove(Outside());
    vt::Pump(100);
  }
  void TearDown() override {
    frame->Destroy();
    vt::Pump(30);
  }

  wxPoint Inside(int dx = 0, int dy = 0) const {
    return button->ClientToScreen(wxPoint(32 + dx, 16 + dy));
  }
  wxPoint Outside() const { return parent->ClientToScreen(wxPoint(220, 150)); }

  wxColour CentreColour() const {
    return vt::PixelAt(vt::GrabClient(button), 32, 16);
  }
  bool ShowsColour(const wxColour& c) const {
    return vt::PumpUntil([&] { return vt::Near(CentreColour(), c); }, 2000);
  }

  wxFrame* frame = nullptr;
  wxPanel* parent = nullptr;
  wxTextCtrl* sink = nullptr;
  keln_BitmapButton* button = nullptr;
  wxUIActionSimulator sim;
  std::vector<int> clicks;
  std::vector<wxObject*> sources;
};

}  // namespace

TEST_F(BitmapButtonTest, CreatedEnabledInStateZeroWithEmptyPictures) {
  keln_BitmapButton* fresh =
      new keln_BitmapButton(parent, 77, wxT("Caption"), wxPoint(150, 10), wxSize(50, 20), true);
  EXPECT_EQ(fresh->GetState(), 0);
  EXPECT_TRUE(fresh->IsKelnEnabled());
  EXPECT_FALSE(fresh->IsHovering());
  EXPECT_TRUE(fresh->GetFlag());
  EXPECT_EQ(fresh->GetCommandId(), 77);
  EXPECT_EQ(fresh->GetId() == 77, false);  // the panel has no id of its own
  EXPECT_EQ(fresh->GetCaption(), wxT("Caption"));
  EXPECT_FALSE(fresh->GetBitmap_Normal().IsOk());
  EXPECT_FALSE(fresh->GetBitmap_Select().IsOk());
  EXPECT_FALSE(fresh->GetBitmap_Hover().IsOk());
  EXPECT_FALSE(fresh->GetBitmap_Disabled().IsOk());
  EXPECT_EQ(fresh->GetWindowStyleFlag() & (wxTAB_TRAVERSAL | wxBORDER_MASK),
            static_cast<long>(0x280000));
  EXPECT_EQ(fresh->GetPosition(), wxPoint(150, 10));
  EXPECT_EQ(fresh->GetSize(), wxSize(50, 20));
  EXPECT_EQ(fresh->GetParent(), parent);
}

TEST_F(BitmapButtonTest, NormalPictureAtRest) {
  EXPECT_EQ(button->GetState(), 0);
  EXPECT_TRUE(ShowsColour(kNormal)) << CentreColour().GetAsString();
}

TEST_F(BitmapButtonTest, ClickWithoutPicturesStillPosts) {
  keln_BitmapButton* plain =
      new keln_BitmapButton(parent, 3010, wxT("Go"), wxPoint(150, 40), wxSize(60, 30));
  vt::Pump(100);
  sim.MouseMove(plain->ClientToScreen(wxPoint(30, 15)));
  ASSERT_TRUE(vt::PumpUntil([&] { return plain->GetState() == 2; }));
  sim.MouseClick();
  ASSERT_TRUE(vt::PumpUntil([&] { return !clicks.empty(); }));
  EXPECT_EQ(clicks, std::vector<int>{3010});
  EXPECT_EQ(sources[0], plain);
}

TEST_F(BitmapButtonTest, ClickPostsToParentWithCrossedPictures) {
  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
  EXPECT_TRUE(button->IsHovering());
  // Hovering shows the picture given to SetBitmap_Select.
  EXPECT_TRUE(ShowsColour(kSelect)) << CentreColour().GetAsString();

  sim.MouseDown();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 4; }));
  // Pressed shows the picture given to SetBitmap_Hover.
  EXPECT_TRUE(ShowsColour(kHover)) << CentreColour().GetAsString();
  EXPECT_TRUE(clicks.empty());

  sim.MouseUp();
  ASSERT_TRUE(vt::PumpUntil([&] { return !clicks.empty(); }));
  EXPECT_EQ(clicks, std::vector<int>{3004});
  EXPECT_EQ(sources[0], button);
  EXPECT_EQ(button->GetState(), 0);
  EXPECT_TRUE(ShowsColour(kNormal)) << CentreColour().GetAsString();

  // Still hovering: further motion does not go back to state 2.
  sim.MouseMove(Inside(5, 3));
  vt::Pump(150);
  EXPECT_EQ(button->GetState(), 0);
}

TEST_F(BitmapButtonTest, ClickIsPostedNotSent) {
  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
  sim.MouseDown();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 4; }));
  sim.MouseUp();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 0; }));
  // The release moved the button to state 0; the click reaches the parent
  // through the event queue.
  EXPECT_TRUE(vt::PumpUntil([&] { return clicks.size() == 1; }));
}

TEST_F(BitmapButtonTest, PressMoveOutMoveBackReleaseGivesNoClick) {
  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
  sim.MouseDown();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 4; }));

  sim.MouseMove(Outside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 0; }));
  EXPECT_FALSE(button->IsHovering());
  EXPECT_TRUE(ShowsColour(kNormal));

  sim.MouseMove(Inside(4, 2));
  vt::Pump(150);
  // Motion with the button held is not hovering.
  EXPECT_EQ(button->GetState(), 0);

  sim.MouseUp();
  vt::Pump(250);
  EXPECT_TRUE(clicks.empty());
  EXPECT_EQ(button->GetState(), 0);
}

TEST_F(BitmapButtonTest, LeavingResetsToNormal) {
  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
  sim.MouseMove(Outside());
  ASSERT_TRUE(vt::PumpUntil([&] { return !button->IsHovering(); }));
  EXPECT_EQ(button->GetState(), 0);
  // Coming back hovers again.
  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
}

TEST_F(BitmapButtonTest, MovingOverRepaintsOnce) {
  vt::Pump(100);
  const int before = button->GetPaintCount();
  sim.MouseMove(Inside(-20, -8));
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 2; }));
  for (int i = 0; i < 8; ++i) {
    sim.MouseMove(Inside(-18 + 5 * i, -6 + 2 * i));
    vt::Pump(20);
  }
  vt::Pump(200);
  EXPECT_EQ(button->GetPaintCount() - before, 1);
  EXPECT_EQ(button->GetState(), 2);
}

TEST_F(BitmapButtonTest, ReleaseWithoutPressDoesNothing) {
  // Press outside, move onto the button, release there.
  sim.MouseDown();
  vt::Pump(80);
  sim.MouseMove(Inside());
  vt::Pump(150);
  sim.MouseUp();
  vt::Pump(250);
  EXPECT_TRUE(clicks.empty());
  EXPECT_NE(button->GetState(), 4);
}

TEST_F(BitmapButtonTest, DisabledIgnoresClicksButEnterClicks) {
  button->keln_Disable();
  EXPECT_EQ(button->GetState(), 1);
  EXPECT_FALSE(button->IsKelnEnabled());
  EXPECT_TRUE(ShowsColour(kDisabled)) << CentreColour().GetAsString();
  const int paints = button->GetPaintCount();

  sim.MouseMove(Inside());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->IsHovering(); }));
  sim.MouseDown();
  vt::Pump(100);
  sim.MouseUp();
  vt::Pump(250);
  EXPECT_TRUE(clicks.empty());
  EXPECT_EQ(button->GetState(), 1);
  EXPECT_EQ(button->GetPaintCount(), paints);  // nothing repainted
  EXPECT_TRUE(vt::Near(CentreColour(), kDisabled));

  // Enter still clicks.
  button->SetFocus();
  vt::Pump(100);
  EXPECT_EQ(button->GetState(), 1);  // focus changes are swallowed while disabled
  sim.Char(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return !clicks.empty(); }));
  EXPECT_EQ(clicks, std::vector<int>{3004});
  EXPECT_EQ(button->GetState(), 4);

  sim.MouseMove(Outside());
  ASSERT_TRUE(vt::PumpUntil([&] { return !button->IsHovering(); }));
}

TEST_F(BitmapButtonTest, EnterClicksAndFocusShowsPressedPicture) {
  sim.MouseMove(Outside());
  button->SetFocus();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 4; }));
  EXPECT_TRUE(ShowsColour(kHover)) << CentreColour().GetAsString();
  sim.Char(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return !clicks.empty(); }));
  EXPECT_EQ(clicks, std::vector<int>{3004});
  EXPECT_EQ(button->GetState(), 4);
  // Other keys post nothing.
  sim.Char('a');
  sim.Char(WXK_SPACE);
  vt::Pump(200);
  EXPECT_EQ(clicks.size(), 1u);
}

TEST_F(BitmapButtonTest, LosingFocusGoesBackToNormal) {
  wxPanel* other = new wxPanel(parent, wxID_ANY, wxPoint(200, 10), wxSize(40, 40));
  button->SetFocus();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 4; }));
  other->SetFocus();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetState() == 0; }));
  EXPECT_TRUE(ShowsColour(kNormal));
}

TEST_F(BitmapButtonTest, EnableAndDisableRepaint) {
  vt::Pump(50);
  int paints = button->GetPaintCount();
  button->keln_Disable();
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetPaintCount() > paints; }));
  EXPECT_TRUE(ShowsColour(kDisabled));
  paints = button->GetPaintCount();
  button->keln_Enable();
  EXPECT_EQ(button->GetState(), 0);
  EXPECT_TRUE(button->IsKelnEnabled());
  ASSERT_TRUE(vt::PumpUntil([&] { return button->GetPaintCount() > paints; }));
  EXPECT_TRUE(ShowsColour(kNormal));
}

TEST_F(BitmapButtonTest, SettingPicturesDoesNotRepaint) {
  vt::Pump(100);
  const int paints = button->GetPaintCount();
  button->SetBitmap_Normal(Solid(kSelect));
  vt::Pump(200);
  EXPECT_EQ(button->GetPaintCount(), paints);
  EXPECT_TRUE(vt::Near(CentreColour(), kNormal));
  button->Refresh();
  EXPECT_TRUE(ShowsColour(kSelect));
}

TEST_F(BitmapButtonTest, WithoutPicturesOnlyTheCentredCaptionShows) {
  keln_BitmapButton* plain =
      new keln_BitmapButton(parent, 3005, wxT("OK"), wxPoint(150, 40), wxSize(80, 40));
  plain->Refresh();
  ASSERT_TRUE(vt::PumpUntil([&] { return plain->GetPaintCount() > 0; }));
  vt::Pump(100);
  const wxImage img = vt::GrabClient(plain);
  const wxColour bg = vt::PixelAt(img, 1, 1);
  int minX = 1000, minY = 1000, maxX = -1, maxY = -1;
  for (int y = 0; y < img.GetHeight(); ++y)
    for (int x = 0; x < img.GetWidth(); ++x)
      if (!vt::Near(vt::PixelAt(img, x, y), bg, 40)) {
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
      }
  ASSERT_GE(maxX, 0) << "no caption painted";
  wxClientDC dc(plain);
  wxCoord tw = 0, th = 0;
  dc.GetTextExtent(wxT("OK"), &tw, &th);
  const int left = (80 - tw) / 2, top = (40 - th) / 2;
  // The ink lies inside the caption's centred extent.
  EXPECT_GE(minX, left - 1);
  EXPECT_LE(maxX, left + tw + 1);
  EXPECT_GE(minY, top - 1);
  EXPECT_LE(maxY, top + th + 1);
  // and is roughly centred horizontally.
  EXPECT_NEAR((minX + maxX) / 2.0, 40.0, 4.0);
}

TEST_F(BitmapButtonTest, CaptionIsDrawnOverThePicture) {
  keln_BitmapButton* b =
      new keln_BitmapButton(parent, 3006, wxT("WWW"), wxPoint(150, 100), wxSize(64, 32));
  b->SetBitmap_Normal(Solid(wxColour(255, 255, 255)));
  b->Refresh();
  ASSERT_TRUE(vt::PumpUntil([&] { return b->GetPaintCount() > 0; }));
  vt::Pump(100);
  const wxImage img = vt::GrabClient(b);
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 1, 1), *wxWHITE));
  int dark = 0;
  for (int y = 0; y < img.GetHeight(); ++y)
    for (int x = 0; x < img.GetWidth(); ++x)
      if (vt::PixelAt(img, x, y).Red() < 128) ++dark;
  EXPECT_GT(dark, 10);
}

TEST_F(BitmapButtonTest, PictureMaskKeepsTransparentPartsTransparent) {
  // A picture whose right half is masked out shows the panel background there.
  wxImage img(64, 32);
  img.SetRGB(wxRect(0, 0, 64, 32), 200, 0, 0);
  img.SetRGB(wxRect(32, 0, 32, 32), 255, 0, 255);
  img.SetMaskColour(255, 0, 255);
  keln_BitmapButton* b =
      new keln_BitmapButton(parent, 3007, wxEmptyString, wxPoint(150, 100), wxSize(64, 32));
  b->SetBitmap_Normal(wxBitmap(img));
  b->Refresh();
  ASSERT_TRUE(vt::PumpUntil([&] { return b->GetPaintCount() > 0; }));
  vt::Pump(100);
  const wxImage shot = vt::GrabClient(b);
  EXPECT_TRUE(vt::Near(vt::PixelAt(shot, 10, 16), kNormal));
  const wxColour right = vt::PixelAt(shot, 50, 16);
  EXPECT_FALSE(vt::Near(right, wxColour(255, 0, 255), 30)) << right.GetAsString();
}

TEST(ButMsgText, PaintsTextOnPaleYellowInABlackFrame) {
  wxFrame* frame = new wxFrame(nullptr, wxID_ANY, "caption", wxPoint(60, 60), wxSize(300, 120));
  wxPanel* panel = new wxPanel(frame);
  keln_ButMsg_Text* box =
      new keln_ButMsg_Text(panel, 4321, wxT("Up One Level"), wxPoint(10, 10), wxSize(200, 40), 0);
  EXPECT_NE(box->GetId(), 4321);  // the given id is not used
  EXPECT_EQ(box->GetText(), wxT("Up One Level"));
  frame->Show();
  ASSERT_TRUE(vt::PumpUntil([&] { return box->IsShownOnScreen(); }));
  vt::Pump(200);
  const wxImage img = vt::GrabClient(box);
  const wxColour yellow(255, 255, 225);
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 0, 0), *wxBLACK, 40));
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 199, 39), *wxBLACK, 40));
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 100, 0), *wxBLACK, 40));
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 0, 20), *wxBLACK, 40));
  EXPECT_TRUE(vt::Near(vt::PixelAt(img, 190, 30), yellow, 4));
  // Text ink starts near (3, 2), not in the right part of the box.
  int inkLeft = 1000, inkTop = 1000;
  for (int y = 1; y < 39; ++y)
    for (int x = 1; x < 199; ++x)
      if (vt::PixelAt(img, x, y).Blue() < 150) {
        inkLeft = std::min(inkLeft, x);
        inkTop = std::min(inkTop, y);
      }
  EXPECT_GE(inkLeft, 3);
  EXPECT_LE(inkLeft, 8);
  EXPECT_GE(inkTop, 2);
  EXPECT_LE(inkTop, 12);
  frame->Destroy();
  vt::Pump(30);
}
