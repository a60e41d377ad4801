// The order in which Tab and Shift+Tab visit a window's controls.
#include <gtest/gtest.h>

#include <vector>

#include "common/TabCycle.h"

using common::NextTabStop;

TEST(TabCycle, ForwardVisitsEveryStopAndWraps) {
  const std::vector<bool> all(4, true);
  EXPECT_EQ(NextTabStop(all, 0, true), 1);
  EXPECT_EQ(NextTabStop(all, 2, true), 3);
  EXPECT_EQ(NextTabStop(all, 3, true), 0);
}

TEST(TabCycle, BackwardVisitsEveryStopAndWraps) {
  const std::vector<bool> all(4, true);
  EXPECT_EQ(NextTabStop(all, 3, false), 2);
  EXPECT_EQ(NextTabStop(all, 1, false), 0);
  EXPECT_EQ(NextTabStop(all, 0, false), 3);
}

TEST(TabCycle, UnusableStopsArePassedOver) {
  const std::vector<bool> some{true, false, false, true, false};
  EXPECT_EQ(NextTabStop(some, 0, true), 3);
  EXPECT_EQ(NextTabStop(some, 3, true), 0);
  EXPECT_EQ(NextTabStop(some, 0, false), 3);
  EXPECT_EQ(NextTabStop(some, 3, false), 0);
  // From a stop that is itself unusable (it was disabled while focused).
  EXPECT_EQ(NextTabStop(some, 1, true), 3);
  EXPECT_EQ(NextTabStop(some, 1, false), 0);
}

TEST(TabCycle, OneUsableStopKeepsTheFocus) {
  const std::vector<bool> one{false, true, false};
  EXPECT_EQ(NextTabStop(one, 1, true), 1);
  EXPECT_EQ(NextTabStop(one, 1, false), 1);
}

TEST(TabCycle, FocusOutsideTheCycleStartsAtAnEnd) {
  const std::vector<bool> some{false, true, true, false};
  EXPECT_EQ(NextTabStop(some, -1, true), 1);
  EXPECT_EQ(NextTabStop(some, -1, false), 2);
  EXPECT_EQ(NextTabStop(some, 7, true), 1);
}

TEST(TabCycle, NothingUsableGivesNoStop) {
  EXPECT_EQ(NextTabStop({}, -1, true), -1);
  EXPECT_EQ(NextTabStop({false, false}, 0, true), -1);
  EXPECT_EQ(NextTabStop({false, false}, -1, false), -1);
}
