// The help dialog's placement and the about box's collapsible panes.
#include <gtest/gtest.h>

#include <wx/collpane.h>
#include <wx/display.h>
#include <wx/frame.h>

#include "common/test_support.h"
#include "help/HelpDia.h"
#include "help/KelnoraAboutDialog.h"

namespace {

// Shown, the help dialog stands in the middle of the screen, not of the
// window that owns it (here a small window in the top-left corner).
TEST(HelpDiaTest, ShowCentresOnTheScreen) {
  wxFrame* owner = new wxFrame(nullptr, wxID_ANY, "owner", wxPoint(0, 0), wxSize(200, 150));
  owner->Show();
  vt::PumpUntil([&] { return owner->IsShownOnScreen(); });
  HelpDia* help = new HelpDia(owner, wxID_ANY, "Kelnora Help", wxDefaultPosition, wxDefaultSize,
                              wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU, "dialogBox");
  help->Show(true);
  vt::PumpUntil([&] { return help->IsShownOnScreen(); });
  const wxRect area = wxDisplay(0u).GetClientArea();
  const wxRect r = help->GetRect();
  EXPECT_EQ(r.GetSize(), wxSize(680, 480));
  EXPECT_NEAR(r.x, area.x + (area.width - r.width) / 2, 1);
  EXPECT_NEAR(r.y, area.y + (area.height - r.height) / 2, 1);
  help->Destroy();
  owner->Destroy();
  vt::Pump(50);
}

std::vector<wxCollapsiblePane*> Panes(wxWindow* dlg) {
  std::vector<wxCollapsiblePane*> panes;
  for (wxWindow* w : dlg->GetChildren())
    // dynamic_cast, not wxDynamicCast: the latter starts with a static
    // downcast that the undefined-behaviour checker reports.
    if (auto* p = dynamic_cast<wxCollapsiblePane*>(w)) panes.push_back(p);
  return panes;
}

// Each pane has no border and takes part in tab traversal; opening one
// lets the about box grow to show the names.
TEST(KelnoraAboutDialogTest, PanesAreBorderlessTabStopsThatGrowTheBox) {
  wxAboutDialogInfo info = KelnoraAboutDialog::GetDefaultInfo();
  info.SetName("Vantori");
  wxArrayString developers;
  developers.Add("Ann");
  developers.Add("Bo");
  info.SetDevelopers(developers);
  wxArrayString artists;
  artists.Add("Cy");
  info.SetArtists(artists);
  KelnoraAboutDialog* dlg = new KelnoraAboutDialog(info);
  const std::vector<wxCollapsiblePane*> panes = Panes(dlg);
  ASSERT_EQ(panes.size(), 2u);
  for (wxCollapsiblePane* p : panes) {
    const long style = p->GetWindowStyleFlag();
    EXPECT_EQ(style & wxBORDER_MASK, static_cast<long>(wxBORDER_NONE));
    EXPECT_TRUE(style & wxTAB_TRAVERSAL);
    EXPECT_FALSE(style & wxCP_NO_TLW_RESIZE);
  }
  dlg->wxDialog::Show(true);
  vt::PumpUntil([&] { return dlg->IsShownOnScreen(); });
  const int before = dlg->GetSize().y;
  panes[0]->Expand();
  vt::Pump(50);
  EXPECT_GT(dlg->GetSize().y, before) << "the box did not grow for the open pane";
  dlg->Destroy();
  vt::Pump(50);
}

}  // namespace
