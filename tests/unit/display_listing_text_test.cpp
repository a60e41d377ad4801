// Display texts of the file lists: size and time cells, the path field's
// drive-letter form.
#include <gtest/gtest.h>

#include "display/ListingText.h"

namespace {

TEST(ListingText, SizeInKilobytesRoundedToNearest) {
  EXPECT_EQ(listing::FormatSizeKB(1536), "2  KB");
  EXPECT_EQ(listing::FormatSizeKB(511), "0  KB");
  EXPECT_EQ(listing::FormatSizeKB(512), "1  KB");
  EXPECT_EQ(listing::FormatSizeKB(0), "0  KB");
  // Only the low 32 bits of the kilobyte count are printed.
  EXPECT_EQ(listing::FormatSizeKB(4294967296.0 * 1024 + 5 * 1024), "5  KB");
}

TEST(ListingText, TimeFormat) {
  wxDateTime t(5, wxDateTime::Mar, 2021, 7, 9, 0);
  EXPECT_EQ(listing::FormatListTime(t), "2021-03-05 07:09");
  EXPECT_EQ(listing::FormatListTime(wxDateTime()), "");
}

TEST(ListingPath, DisplayForm) {
  EXPECT_EQ(listing::CovertPath("/mnt/D/a/b"), "D:\\a\\b");
  EXPECT_EQ(listing::CovertPath("/mnt"), "/mnt");
  EXPECT_EQ(listing::CovertPath("/mnt/D"), "D");
  EXPECT_EQ(listing::CovertPath("/mnt/C/"), "C:\\");
  EXPECT_EQ(listing::CovertPath("/mnt/C/dir/sub"), "C:\\dir\\sub");
  EXPECT_EQ(listing::CovertPath(""), "");
}

}  // namespace
