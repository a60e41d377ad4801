// The text table read from setting/vantori/text.txt beside the executable.
#include <gtest/gtest.h>

#include <wx/filename.h>
#include <wx/stdpaths.h>

#include <string>

#include "common/test_support.h"
#include "settings/CResCenter.h"
#include "settings/CTextRes.h"
#include "unit/settings_test_env.h"

using settings::CResCenter;
using settings::CTextRes;
using vt::Utf16LeWithBom;

namespace {

const char kOpenLine[] = "Open\tOuvrir\t\xC3\x96" "ffnen";  // Öffnen in UTF-8
const wchar_t kOeffnen[] = L"\u00D6ffnen";

std::string TextGetTextRegex() {
  return vt::AssertionRegex("src/CTextRes", 73, "const wxString& settings::CTextRes::GetText(int)",
                            "nIdx >= 0 && nIdx <= (int)m_TextArr.GetCount()");
}

class TextResTest : public ::testing::Test {
 protected:
  vt::SettingsEnv env;
};

}  // namespace

TEST_F(TextResTest, ExeFilePathIsTheExecutableDirectoryWithSeparator) {
  wxString path;
  EXPECT_TRUE(CResCenter::GetExeFilePath(path));
  EXPECT_EQ(path.utf8_string(), vt::ExeDir());
  EXPECT_TRUE(path.EndsWith(wxT("/")));
}

TEST_F(TextResTest, HeaderOnlyFileGivesEmptyTable) {
  vt::WriteSettingFile("text.txt", "English\tFrench\n");
  CTextRes res;
  EXPECT_EQ(res.GetCount(), 0);
  // Index 0 equals the count: the check lets it pass; the text is empty.
  EXPECT_EQ(res.GetText(0), wxT(""));
}

TEST_F(TextResTest, HeaderOnlyFileWithoutLineEnd) {
  vt::WriteSettingFile("text.txt", "English\tFrench");
  CTextRes res;
  EXPECT_EQ(res.GetCount(), 0);
}

TEST_F(TextResTest, LanguageOneReadsSecondColumn) {
  env.SetLanguage(1);
  vt::WriteSettingFile("text.txt", vt::Table({kOpenLine}));
  CTextRes res;
  EXPECT_EQ(res.GetLang(), 1);
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxT("Ouvrir"));
}

TEST_F(TextResTest, LanguageZeroReadsFirstColumn) {
  env.SetLanguage(0);
  vt::WriteSettingFile("text.txt", vt::Table({kOpenLine}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxT("Open"));
}

TEST_F(TextResTest, LanguageTwoReadsThirdColumnInUtf8) {
  env.SetLanguage(2);
  vt::WriteSettingFile("text.txt", vt::Table({kOpenLine}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
}

TEST_F(TextResTest, LanguageBeyondTheColumnsGivesEmptyText) {
  env.SetLanguage(5);
  vt::WriteSettingFile("text.txt", vt::Table({kOpenLine, "Close\tFermer"}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 2);
  EXPECT_EQ(res.GetText(0), wxT(""));
  EXPECT_EQ(res.GetText(1), wxT(""));
}

TEST_F(TextResTest, MissingLanguageKeyMeansLanguageOne) {
  vt::WriteSettingFile("text.txt", vt::Table({kOpenLine}));
  CTextRes res;
  EXPECT_EQ(res.GetLang(), 1);
  EXPECT_EQ(res.GetText(0), wxT("Ouvrir"));
}

TEST_F(TextResTest, LineWithoutTab) {
  vt::WriteSettingFile("text.txt", vt::Table({"Copy files"}));
  env.SetLanguage(0);
  {
    CTextRes res;
    EXPECT_EQ(res.GetText(0), wxT("Copy files"));
  }
  env.SetLanguage(1);
  {
    CTextRes res;
    ASSERT_EQ(res.GetCount(), 1);
    EXPECT_EQ(res.GetText(0), wxT(""));
  }
  env.SetLanguage(3);
  {
    CTextRes res;
    ASSERT_EQ(res.GetCount(), 1);
    EXPECT_EQ(res.GetText(0), wxT(""));
  }
}

TEST_F(TextResTest, ShortLinesKeepTheirNumbers) {
  env.SetLanguage(1);
  vt::WriteSettingFile("text.txt",
                       vt::Table({"Open\tOuvrir", "Help", "", "Exit\tQuitter\tBeenden"}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 4);
  EXPECT_EQ(res.GetText(0), wxT("Ouvrir"));
  EXPECT_EQ(res.GetText(1), wxT(""));
  EXPECT_EQ(res.GetText(2), wxT(""));
  EXPECT_EQ(res.GetText(3), wxT("Quitter"));
}

TEST_F(TextResTest, Utf8WithByteOrderMark) {
  env.SetLanguage(2);
  vt::WriteSettingFile("text.txt", "\xEF\xBB\xBF" + vt::Table({kOpenLine}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
}

TEST_F(TextResTest, Utf16WithByteOrderMark) {
  env.SetLanguage(2);
  vt::WriteSettingFile("text.txt", Utf16LeWithBom(u"lang0\tlang1\tlang2\nOpen\tOuvrir\t\u00D6ffnen\n"
                                                  u"Close\tFermer\tSchlie\u00DFen\n"));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 2);
  EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
  EXPECT_EQ(res.GetText(1), wxString(L"Schlie\u00DFen"));
}

TEST_F(TextResTest, Utf16BigEndianAndUtf32WithByteOrderMark) {
  env.SetLanguage(1);
  const std::u32string text = U"h0\th1\nOpen\t\u00D6ffnen\n";
  std::string be16("\xFE\xFF", 2), le32("\xFF\xFE\0\0", 4);
  for (char32_t c : text) {
    be16 += static_cast<char>((c >> 8) & 0xFF);
    be16 += static_cast<char>(c & 0xFF);
    for (int shift = 0; shift < 32; shift += 8) le32 += static_cast<char>((c >> shift) & 0xFF);
  }
  vt::WriteSettingFile("text.txt", be16);
  {
    CTextRes res;
    ASSERT_EQ(res.GetCount(), 1);
    EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
  }
  vt::WriteSettingFile("text.txt", le32);
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
}

TEST_F(TextResTest, CrLfLineEnds) {
  env.SetLanguage(1);
  vt::WriteSettingFile("text.txt", "h0\th1\r\nOpen\tOuvrir\r\nClose\tFermer\r\n");
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 2);
  EXPECT_EQ(res.GetText(0), wxT("Ouvrir"));
  EXPECT_EQ(res.GetText(1), wxT("Fermer"));
}

TEST_F(TextResTest, CrLfLineEndsLastColumn) {
  // The line end is not part of the last column.
  env.SetLanguage(0);
  vt::WriteSettingFile("text.txt", "h0\r\nOpen\r\nClose\r\n");
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 2);
  EXPECT_EQ(res.GetText(1), wxT("Close"));
}

TEST_F(TextResTest, EightBitTextFallsBackToLatin1) {
  env.SetLanguage(2);
  vt::WriteSettingFile("text.txt", vt::Table({"Open\tOuvrir\t\xD6" "ffnen"}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_EQ(res.GetText(0), wxString(kOeffnen));
}

TEST_F(TextResTest, MissingFileGivesEmptyTable) {
  vt::RemoveSettingFile("text.txt");
  CTextRes res;
  EXPECT_EQ(res.GetCount(), 0);
  EXPECT_EQ(res.GetText(0), wxT(""));
}

TEST_F(TextResTest, SetLangDoesNotReread) {
  env.SetLanguage(0);
  vt::WriteSettingFile("text.txt", vt::Table({"Open\tOuvrir"}));
  CTextRes res;
  res.SetLang(1);
  EXPECT_EQ(res.GetLang(), 1);
  EXPECT_EQ(res.GetText(0), wxT("Open"));
}

TEST_F(TextResTest, CountPassesTheCheckAndGivesEmptyText) {
  vt::WriteSettingFile("text.txt", vt::Table({"a\tb", "c\td"}));
  CTextRes res;
  ASSERT_EQ(res.GetCount(), 2);
  const wxString& past = res.GetText(2);
  EXPECT_TRUE(past.empty());
}

TEST_F(TextResTest, NegativeIndexFailsTheAssertion) {
  vt::WriteSettingFile("text.txt", vt::Table({"a\tb"}));
  CTextRes res;
  EXPECT_DEATH(res.GetText(-1), TextGetTextRegex());
}

TEST_F(TextResTest, IndexPastCountFailsTheAssertion) {
  vt::WriteSettingFile("text.txt", vt::Table({"a\tb"}));
  CTextRes res;
  EXPECT_DEATH(res.GetText(2), TextGetTextRegex());
}

TEST_F(TextResTest, MissingFileIndexOneFailsTheAssertion) {
  vt::RemoveSettingFile("text.txt");
  CTextRes res;
  EXPECT_DEATH(res.GetText(1), TextGetTextRegex());
}

TEST_F(TextResTest, AssertionMessageHasTheStandardForm) {
  vt::WriteSettingFile("text.txt", vt::Table({"a\tb"}));
  CTextRes res;
  // The whole line as the C library writes it, program name first.
  EXPECT_DEATH(res.GetText(-1),
               "(^|\n)unit_tests: src/CTextRes:73: const wxString& settings::CTextRes::GetText\\(int\\): "
               "Assertion `nIdx >= 0 && nIdx <= \\(int\\)m_TextArr\\.GetCount\\(\\)' failed\\.");
}

TEST_F(TextResTest, ResCenterForwardsTexts) {
  env.SetLanguage(1);
  vt::WriteSettingFile("text.txt", vt::Table({"Open\tOuvrir", "Close\tFermer"}));
  vt::WriteSettingFile("resource.txt", "header\n");
  CResCenter* centre = CResCenter::Instance();
  ASSERT_NE(centre, nullptr);
  EXPECT_EQ(CResCenter::Instance(), centre);
  EXPECT_EQ(centre->GetText(0), wxT("Ouvrir"));
  EXPECT_EQ(centre->GetText(1), wxT("Fermer"));
  EXPECT_EQ(centre->GetText(2), wxT(""));
}

TEST_F(TextResTest, ResCenterReloadsAfterUnInstance) {
  env.SetLanguage(0);
  vt::WriteSettingFile("resource.txt", "header\n");
  vt::WriteSettingFile("text.txt", vt::Table({"first"}));
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("first"));
  vt::WriteSettingFile("text.txt", vt::Table({"second"}));
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("first"));
  CResCenter::UnInstance();
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("second"));
}
