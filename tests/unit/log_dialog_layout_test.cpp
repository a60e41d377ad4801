// The log dialog's layout from its client size, with the guard for a client
// area too small for the text area.
#include <gtest/gtest.h>

#include "dialogs/my_log_dialog.h"

namespace {

TEST(LogDialogLayout, TextAreaAndButtonFromTheClientSize) {
  EXPECT_EQ(LogTextArea(wxSize(400, 300)), wxRect(10, 10, 380, 220));
  EXPECT_TRUE(LogTextAreaFits(wxSize(400, 300)));
  EXPECT_EQ(LogCleanButtonPlace(wxSize(400, 300)), wxPoint(10, 260));
}

TEST(LogDialogLayout, TheSmallestClientThatShowsTheTextArea) {
  EXPECT_EQ(kLogTextMinSide, 32);
  EXPECT_TRUE(LogTextAreaFits(wxSize(52, 112)));
  EXPECT_EQ(LogTextArea(wxSize(52, 112)), wxRect(10, 10, 32, 32));
  EXPECT_FALSE(LogTextAreaFits(wxSize(51, 112)));
  EXPECT_FALSE(LogTextAreaFits(wxSize(52, 111)));
  EXPECT_EQ(LogTextArea(wxSize(51, 111)), wxRect(10, 10, 31, 31)) << "the size stays as computed";
}

TEST(LogDialogLayout, TooSmallAClientKeepsOnePixelAndHidesTheArea) {
  // Exactly 20 x 80 would give 0 x 0; 19 x 79 would give -1 x -1, which the
  // toolkit reads as "choose a default size".
  for (const wxSize& client : {wxSize(21, 81), wxSize(20, 80), wxSize(19, 79), wxSize(20, 300),
                               wxSize(300, 80), wxSize(0, 0), wxSize(-5, -5)}) {
    const wxRect area = LogTextArea(client);
    EXPECT_EQ(area.GetPosition(), wxPoint(10, 10));
    EXPECT_GE(area.GetWidth(), 1);
    EXPECT_GE(area.GetHeight(), 1);
    EXPECT_FALSE(LogTextAreaFits(client)) << client.x << "x" << client.y;
  }
  EXPECT_EQ(LogTextArea(wxSize(21, 81)), wxRect(10, 10, 1, 1));
  EXPECT_EQ(LogTextArea(wxSize(20, 300)), wxRect(10, 10, 1, 220));
  EXPECT_EQ(LogTextArea(wxSize(300, 80)), wxRect(10, 10, 280, 1));
}

TEST(LogDialogLayout, TheButtonNeverGoesAboveTheTop) {
  EXPECT_EQ(LogCleanButtonPlace(wxSize(100, 40)), wxPoint(10, 0));
  EXPECT_EQ(LogCleanButtonPlace(wxSize(100, 39)), wxPoint(10, 0)) << "-1 would mean a default place";
  EXPECT_EQ(LogCleanButtonPlace(wxSize(0, 0)), wxPoint(10, 0));
  EXPECT_EQ(LogCleanButtonPlace(wxSize(100, 41)), wxPoint(10, 1));
}

}  // namespace
