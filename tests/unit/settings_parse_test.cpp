// Field parsing of the settings tables.
#include <gtest/gtest.h>

#include <climits>

#include "settings/SettingsParse.h"

using settings::AppendNumberList;
using settings::LeadingNumber;
using settings::NumberPair;
using settings::TabColumn;

TEST(SettingsParse, LeadingNumberTakesTheLeadingDecimalNumber) {
  EXPECT_EQ(LeadingNumber(wxT("16")), 16);
  EXPECT_EQ(LeadingNumber(wxT("24px")), 24);
  EXPECT_EQ(LeadingNumber(wxT(" 7")), 7);
  EXPECT_EQ(LeadingNumber(wxT("-12")), -12);
  EXPECT_EQ(LeadingNumber(wxT("+5")), 5);
  EXPECT_EQ(LeadingNumber(wxT("010")), 10);
  EXPECT_EQ(LeadingNumber(wxT("0x1F")), 0);
}

TEST(SettingsParse, TextWithoutNumberReadsAsZero) {
  EXPECT_EQ(LeadingNumber(wxT("")), 0);
  EXPECT_EQ(LeadingNumber(wxT("abc")), 0);
  EXPECT_EQ(LeadingNumber(wxT("-")), 0);
  EXPECT_EQ(LeadingNumber(wxT("x12")), 0);
}

TEST(SettingsParse, HugeNumbersSaturate) {
  EXPECT_EQ(LeadingNumber(wxT("99999999999999999999999")), INT_MAX);
  EXPECT_EQ(LeadingNumber(wxT("-99999999999999999999999")), INT_MIN);
  EXPECT_EQ(LeadingNumber(wxT("2147483647")), INT_MAX);
  EXPECT_EQ(LeadingNumber(wxT("-2147483648")), INT_MIN);
}

TEST(SettingsParse, TabColumnPicksTheColumn) {
  const wxString line = wxT("Open\tOuvrir\tX");
  EXPECT_EQ(TabColumn(line, 0), wxT("Open"));
  EXPECT_EQ(TabColumn(line, 1), wxT("Ouvrir"));
  EXPECT_EQ(TabColumn(line, 2), wxT("X"));
  EXPECT_EQ(TabColumn(line, 3), wxT(""));
  EXPECT_EQ(TabColumn(line, 5), wxT(""));
  EXPECT_EQ(TabColumn(wxT("alone"), 0), wxT("alone"));
  EXPECT_EQ(TabColumn(wxT("alone"), 1), wxT(""));
  EXPECT_EQ(TabColumn(wxT("a\t\tc"), 1), wxT(""));
  EXPECT_EQ(TabColumn(wxT("a\t\tc"), 2), wxT("c"));
  // A negative column reads column 0.
  EXPECT_EQ(TabColumn(line, -1), wxT("Open"));
}

TEST(SettingsParse, NumberPairSplitsAtTheBar) {
  struct Case {
    const wchar_t* text;
    int a, b;
  };
  const Case cases[] = {
      {L"16|0", 16, 0}, {L"24|32", 24, 32}, {L"16", 16, 0},
      {L"", 0, 0},      {L"|9", 0, 9},      {L"1|2|3", 1, 2},
  };
  for (const Case& c : cases) {
    int a = -1, b = -1;  // both are written, whatever the text
    NumberPair(c.text, a, b);
    EXPECT_EQ(a, c.a) << c.text;
    EXPECT_EQ(b, c.b) << c.text;
  }
}

static wxArrayInt List(const wchar_t* text) {
  wxArrayInt out;
  AppendNumberList(text, out);
  return out;
}

static std::vector<int> Vec(const wxArrayInt& a) {
  return std::vector<int>(a.begin(), a.end());
}

TEST(SettingsParse, NumberLists) {
  EXPECT_EQ(Vec(List(L"3|4|5|6")), (std::vector<int>{3, 4, 5, 6}));
  EXPECT_EQ(Vec(List(L"12|13")), (std::vector<int>{12, 13}));
  EXPECT_EQ(Vec(List(L"7")), (std::vector<int>{7}));
  EXPECT_EQ(Vec(List(L"5|")), (std::vector<int>{5}));
  EXPECT_EQ(Vec(List(L"")), (std::vector<int>{}));
  EXPECT_EQ(Vec(List(L"|5")), (std::vector<int>{0, 5}));
  EXPECT_EQ(Vec(List(L"5||6")), (std::vector<int>{5, 0, 6}));
  EXPECT_EQ(Vec(List(L"a|2b")), (std::vector<int>{0, 2}));
}

TEST(SettingsParse, NumberListsAppend) {
  wxArrayInt out;
  out.Add(1);
  AppendNumberList(wxT("2|3"), out);
  EXPECT_EQ(Vec(out), (std::vector<int>{1, 2, 3}));
}
