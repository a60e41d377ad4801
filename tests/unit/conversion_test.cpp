// Drive-letter display of mounted paths and thousands separators.
#include <gtest/gtest.h>

#include "display/Conversion.h"

namespace {

TEST(ConversionPath, VolumeRootWithAndWithoutSlash) {
  EXPECT_EQ(Conversion_Path(wxT("/mnt/C"), -1), wxT("C:\\"));
  EXPECT_EQ(Conversion_Path(wxT("/mnt/C/"), -1), wxT("C:\\"));
  EXPECT_EQ(Conversion_Path(wxT("/mnt/D"), 2), wxT("D:\\...\\"));  // 3 > 2: shortened
}

TEST(ConversionPath, FullAndShortenedForms) {
  EXPECT_EQ(Conversion_Path(wxT("/mnt/D/a/b/c.txt"), -1), wxT("D:\\a\\b\\c.txt"));
  EXPECT_EQ(Conversion_Path(wxT("/mnt/D/a/b/c.txt"), 10), wxT("D:\\...\\c.txt"));
  // Exactly as long as allowed: kept.
  EXPECT_EQ(Conversion_Path(wxT("/mnt/D/a/b/c.txt"), 12), wxT("D:\\a\\b\\c.txt"));
  EXPECT_EQ(Conversion_Path(wxT("/mnt/D/a/b/c.txt"), 11), wxT("D:\\...\\c.txt"));
  // The shortened form is not checked against the width again.
  EXPECT_EQ(Conversion_Path(wxT("/mnt/E/dir/a-very-long-file-name.doc"), 8),
            wxT("E:\\...\\a-very-long-file-name.doc"));
  // A trailing separator leaves an empty last component.
  EXPECT_EQ(Conversion_Path(wxT("/mnt/F/folder/sub/"), 5), wxT("F:\\...\\"));
}

TEST(ConversionPath, LetterKeepsItsCase) {
  EXPECT_EQ(Conversion_Path(wxT("/mnt/c/x"), -1), wxT("c:\\x"));
}

TEST(ConversionPath, NonAsciiBecomesUnderscore) {
  wxString path = wxString::FromUTF8("/mnt/C/B\xC3\xBC" "cher/\xE6\x96\x87\xE4\xBB\xB6.txt");
  EXPECT_EQ(Conversion_Path(path, -1), wxT("C:\\B_cher\\__.txt"));
  EXPECT_EQ(Conversion_Path(path, 10), wxT("C:\\...\\__.txt"));
}

TEST(ConversionPath, TooShortToNameAVolumeGivesEmpty) {
  EXPECT_EQ(Conversion_Path(wxT("/mnt/"), -1), wxString());
  EXPECT_EQ(Conversion_Path(wxT(""), -1), wxString());
}

TEST(ConversionStr, ThousandsSeparators) {
  EXPECT_EQ(Conversion_Str(wxT("1234567")), wxT("1,234,567"));
  EXPECT_EQ(Conversion_Str(wxT("123")), wxT("123"));
  EXPECT_EQ(Conversion_Str(wxT("1000")), wxT("1,000"));
  EXPECT_EQ(Conversion_Str(wxT("12")), wxT("12"));
  EXPECT_EQ(Conversion_Str(wxT("1")), wxT("1"));
  EXPECT_EQ(Conversion_Str(wxT("123456")), wxT("123,456"));
  EXPECT_EQ(Conversion_Str(wxT("12345")), wxT("12,345"));
  EXPECT_EQ(Conversion_Str(wxT("18446744073709551615")), wxT("18,446,744,073,709,551,615"));
}

TEST(ConversionStr, EmptyTextStaysEmpty) { EXPECT_EQ(Conversion_Str(wxString()), wxString()); }

}  // namespace
