// The copy command's first two steps: no selection with the list focused is
// an error; a lone "." or ".." row stops silently; anything else goes on.
#include <gtest/gtest.h>

#include "copy/CopyStart.h"

namespace {

TEST(CopyStart, NoSelectionIsAnErrorOnlyWhenTheListHadTheFocus) {
  EXPECT_EQ(CheckCopyStart(0, true, -1, wxString()), COPY_START_NO_SELECTION);
  // The tree had the focus: its folder is the source, the list's selection
  // does not matter.
  EXPECT_EQ(CheckCopyStart(0, false, -1, wxString()), COPY_START_GO);
}

TEST(CopyStart, ALoneDotRowStopsSilently) {
  EXPECT_EQ(CheckCopyStart(1, true, 0, ".."), COPY_START_DOT_ROW);
  EXPECT_EQ(CheckCopyStart(1, true, 0, "."), COPY_START_DOT_ROW);
  EXPECT_EQ(CheckCopyStart(1, true, 1, ".."), COPY_START_DOT_ROW);
  EXPECT_EQ(CheckCopyStart(1, false, 0, ".."), COPY_START_DOT_ROW);
}

TEST(CopyStart, RealRowsGoOn) {
  EXPECT_EQ(CheckCopyStart(1, true, 1, "docs"), COPY_START_GO);
  EXPECT_EQ(CheckCopyStart(1, true, 0, "C:"), COPY_START_GO);
  // Names that only look like dot rows.
  EXPECT_EQ(CheckCopyStart(1, true, 1, "..."), COPY_START_GO);
  EXPECT_EQ(CheckCopyStart(1, true, 1, ".a"), COPY_START_GO);
  // A dot-row text further down is a real entry of the folder.
  EXPECT_EQ(CheckCopyStart(1, true, 5, ".."), COPY_START_GO);
  // Several rows: the ".." row among them is skipped later, the rest copied.
  EXPECT_EQ(CheckCopyStart(2, true, 0, ".."), COPY_START_GO);
}

}  // namespace
