// The control layout table read from setting/vantori/controls.txt.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/test_support.h"
#include "settings/CCtrlConfig.h"
#include "settings/CResCenter.h"
#include "unit/settings_test_env.h"

using settings::CCtrlConfig;
using settings::CResCenter;

namespace {

std::vector<int> Vec(const wxArrayInt& a) { return std::vector<int>(a.begin(), a.end()); }

std::string TableAccessorRegex(int line, const std::string& function) {
  return vt::AssertionRegex("src/CCtrlConfig", line, function,
                            "nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount()");
}

class CtrlConfigTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // No images are needed here: an empty image table.
    vt::WriteSettingFile("resource.txt", "name\tfile\tx|y\tw|h\n");
    vt::WriteSettingFile("text.txt", vt::Table({"Open\tOuvrir", "Close\tFermer"}));
    env.SetLanguage(0);
  }
  vt::SettingsEnv env;
};

}  // namespace

TEST_F(CtrlConfigTest, ButtonLineWithImagesAndNoTexts) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tbtnUp\t10|20\t24|24\t\t3|4|5|6"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 1);
  CONTROLINFO& info = cfg->GetCtrlInfo(0);
  EXPECT_EQ(info.GetRect(), wxRect(10, 20, 24, 24));
  EXPECT_TRUE(info.texts.IsEmpty());
  EXPECT_EQ(Vec(info.resources), (std::vector<int>{3, 4, 5, 6}));
  EXPECT_EQ(cfg->GetRect(0), wxRect(10, 20, 24, 24));
  EXPECT_EQ(Vec(cfg->GetRes(0)), (std::vector<int>{3, 4, 5, 6}));
  EXPECT_TRUE(cfg->GetTexts(0).IsEmpty());
}

TEST_F(CtrlConfigTest, LabelLineWithTextAndNoImageColumn) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tlabel\t0|0\t80|20\t7"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 1);
  EXPECT_EQ(cfg->GetRect(0), wxRect(0, 0, 80, 20));
  EXPECT_EQ(Vec(cfg->GetTexts(0)), (std::vector<int>{7}));
  EXPECT_TRUE(cfg->GetRes(0).IsEmpty());
}

TEST_F(CtrlConfigTest, TrailingBarAndEmptyLists) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4\t5|\t",
                                                  "x\tb\t1|2\t3|4\t\t5|",
                                                  "x\tc\t1|2\t3|4\t12|13\t0"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 3);
  EXPECT_EQ(Vec(cfg->GetTexts(0)), (std::vector<int>{5}));
  EXPECT_EQ(Vec(cfg->GetRes(0)), (std::vector<int>{}));
  EXPECT_EQ(Vec(cfg->GetTexts(1)), (std::vector<int>{}));
  EXPECT_EQ(Vec(cfg->GetRes(1)), (std::vector<int>{5}));
  EXPECT_EQ(Vec(cfg->GetTexts(2)), (std::vector<int>{12, 13}));
  EXPECT_EQ(Vec(cfg->GetRes(2)), (std::vector<int>{0}));
}

TEST_F(CtrlConfigTest, MissingColumnsGiveZeroesAndKeepTheNumber) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tonly name", "", "x\tpos\t5|6",
                                                  "x\tsize\t5|6\t70", "x\tlast\t1|1\t2|2\t\t9"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 5);
  EXPECT_EQ(cfg->GetRect(0), wxRect(0, 0, 0, 0));
  EXPECT_EQ(cfg->GetRect(1), wxRect(0, 0, 0, 0));
  EXPECT_EQ(cfg->GetRect(2), wxRect(5, 6, 0, 0));
  EXPECT_EQ(cfg->GetRect(3), wxRect(5, 6, 70, 0));
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(cfg->GetTexts(i).IsEmpty()) << i;
    EXPECT_TRUE(cfg->GetRes(i).IsEmpty()) << i;
  }
  EXPECT_EQ(Vec(cfg->GetRes(4)), (std::vector<int>{9}));
}

TEST_F(CtrlConfigTest, NumbersTakeTheLeadingNumericPart) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tn\t10px|y\tabc|30\t2a|b|3\t-1|4"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 1);
  EXPECT_EQ(cfg->GetRect(0), wxRect(10, 0, 0, 30));
  EXPECT_EQ(Vec(cfg->GetTexts(0)), (std::vector<int>{2, 0, 3}));
  EXPECT_EQ(Vec(cfg->GetRes(0)), (std::vector<int>{-1, 4}));
}

TEST_F(CtrlConfigTest, HeaderOnlyFileGivesEmptyTable) {
  vt::WriteSettingFile("controls.txt", "no\tname\tx|y\tw|h\ttexts\timages\n");
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  EXPECT_EQ(cfg->GetCount(), 0);
}

TEST_F(CtrlConfigTest, Utf8BomUtf16AndCrLf) {
  vt::WriteSettingFile("controls.txt",
                       "\xEF\xBB\xBFh\r\nx\ta\t1|2\t3|4\t1\t2\r\nx\tb\t5|6\t7|8\t\t\r\n");
  {
    CCtrlConfig* cfg = CCtrlConfig::Instance();
    ASSERT_EQ(cfg->GetCount(), 2);
    EXPECT_EQ(cfg->GetRect(0), wxRect(1, 2, 3, 4));
    EXPECT_EQ(Vec(cfg->GetRes(0)), (std::vector<int>{2}));
    EXPECT_EQ(cfg->GetRect(1), wxRect(5, 6, 7, 8));
    EXPECT_TRUE(cfg->GetRes(1).IsEmpty());
  }
  CCtrlConfig::UnInstance();
  vt::WriteSettingFile("controls.txt", vt::Utf16LeWithBom(u"h\nx\ta\t1|2\t3|4\t1\t2|3\n"));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 1);
  EXPECT_EQ(cfg->GetRect(0), wxRect(1, 2, 3, 4));
  EXPECT_EQ(Vec(cfg->GetTexts(0)), (std::vector<int>{1}));
  EXPECT_EQ(Vec(cfg->GetRes(0)), (std::vector<int>{2, 3}));
}

TEST_F(CtrlConfigTest, OpenTraceLine) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4"}));
  ::testing::internal::CaptureStdout();
  CCtrlConfig::Instance();
  const std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "epen " + vt::ExeDir() + "setting/vantori/controls.txt success!\n");
}

TEST_F(CtrlConfigTest, MissingFileGivesEmptyTableAndNoTrace) {
  vt::RemoveSettingFile("controls.txt");
  ::testing::internal::CaptureStdout();
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  const std::string out = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "");
  EXPECT_EQ(cfg->GetCount(), 0);
  // Index 0 equals the count and passes; index 1 ends the process.
  EXPECT_EQ(cfg->GetCtrlInfo(0).GetRect(), wxRect());
  EXPECT_DEATH(cfg->GetCtrlInfo(1),
               TableAccessorRegex(150, "CONTROLINFO& settings::CCtrlConfig::GetCtrlInfo(int) const"));
}

TEST_F(CtrlConfigTest, InstanceIsASingletonAndLoadsTheResourceCentre) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4\t1\t"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  EXPECT_EQ(CCtrlConfig::Instance(), cfg);
  EXPECT_EQ(cfg->GetResCenter(), nullptr);
  // The texts came with it: slot 0 holds text number 1.
  EXPECT_EQ(cfg->GetCtrlInfo(0).GetText(0), wxT("Close"));
}

TEST_F(CtrlConfigTest, CountPassesTheChecksAndGivesAnEmptyRecord) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4\t1|0\t2"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  ASSERT_EQ(cfg->GetCount(), 1);
  CONTROLINFO& past = cfg->GetCtrlInfo(1);
  EXPECT_EQ(past.GetRect(), wxRect());
  EXPECT_TRUE(past.texts.IsEmpty());
  EXPECT_TRUE(past.resources.IsEmpty());
  // A caller that scribbles on it does not affect the next caller.
  past.rect = wxRect(9, 9, 9, 9);
  past.texts.Add(4);
  EXPECT_EQ(cfg->GetRect(1), wxRect());
  EXPECT_TRUE(cfg->GetTexts(1).IsEmpty());
  EXPECT_TRUE(cfg->GetRes(1).IsEmpty());
  // The real record is untouched.
  EXPECT_EQ(cfg->GetRect(0), wxRect(1, 2, 3, 4));
}

TEST_F(CtrlConfigTest, NegativeIndexFailsEachTableAccessor) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  EXPECT_DEATH(cfg->GetCtrlInfo(-1),
               TableAccessorRegex(150, "CONTROLINFO& settings::CCtrlConfig::GetCtrlInfo(int) const"));
  EXPECT_DEATH(cfg->GetRes(-1),
               TableAccessorRegex(144, "wxArrayInt& settings::CCtrlConfig::GetRes(int) const"));
  EXPECT_DEATH(cfg->GetTexts(-1),
               TableAccessorRegex(138, "wxArrayInt& settings::CCtrlConfig::GetTexts(int) const"));
  EXPECT_DEATH(cfg->GetRect(-1),
               TableAccessorRegex(132, "wxRect& settings::CCtrlConfig::GetRect(int) const"));
}

TEST_F(CtrlConfigTest, IndexPastCountFailsEachTableAccessor) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  EXPECT_DEATH(cfg->GetCtrlInfo(2),
               TableAccessorRegex(150, "CONTROLINFO& settings::CCtrlConfig::GetCtrlInfo(int) const"));
  EXPECT_DEATH(cfg->GetRes(2),
               TableAccessorRegex(144, "wxArrayInt& settings::CCtrlConfig::GetRes(int) const"));
  EXPECT_DEATH(cfg->GetTexts(2),
               TableAccessorRegex(138, "wxArrayInt& settings::CCtrlConfig::GetTexts(int) const"));
  EXPECT_DEATH(cfg->GetRect(2),
               TableAccessorRegex(132, "wxRect& settings::CCtrlConfig::GetRect(int) const"));
}

TEST_F(CtrlConfigTest, SlotAccessorsUseTheStrictBound) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4", "x\tb\t1|2\t3|4\t0|1\t"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  const CONTROLINFO& none = cfg->GetCtrlInfo(0);
  EXPECT_DEATH(none.GetText(0),
               vt::AssertionRegex("src/CCtrlConfig", 19,
                                  "const wxString& CONTROLINFO::GetText(int) const",
                                  "nIdx >= 0 && nIdx < (int)texts.GetCount()"));
  EXPECT_DEATH(none.GetRes(0),
               vt::AssertionRegex("src/CCtrlConfig", 26,
                                  "const wxBitmap& CONTROLINFO::GetRes(int) const",
                                  "nIdx >= 0 && nIdx < (int)resources.GetCount()"));
  const CONTROLINFO& two = cfg->GetCtrlInfo(1);
  EXPECT_EQ(two.GetText(0), wxT("Open"));
  EXPECT_EQ(two.GetText(1), wxT("Close"));
  EXPECT_DEATH(two.GetText(2),
               vt::AssertionRegex("src/CCtrlConfig", 19,
                                  "const wxString& CONTROLINFO::GetText(int) const",
                                  "nIdx >= 0 && nIdx < (int)texts.GetCount()"));
  EXPECT_DEATH(two.GetText(-1),
               vt::AssertionRegex("src/CCtrlConfig", 19,
                                  "const wxString& CONTROLINFO::GetText(int) const",
                                  "nIdx >= 0 && nIdx < (int)texts.GetCount()"));
}

TEST_F(CtrlConfigTest, SlotNumberIsCheckedAgainByTheTextTable) {
  // Text number 5 does not exist in a table of two texts.
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4\t2|5"}));
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  const CONTROLINFO& info = cfg->GetCtrlInfo(0);
  EXPECT_EQ(info.GetText(0), wxT(""));  // number 2 == count: passes, empty
  EXPECT_DEATH(info.GetText(1),
               vt::AssertionRegex("src/CTextRes", 73,
                                  "const wxString& settings::CTextRes::GetText(int)",
                                  "nIdx >= 0 && nIdx <= (int)m_TextArr.GetCount()"));
}

TEST_F(CtrlConfigTest, UnInstanceWithoutInstanceReleasesTheResourceCentre) {
  vt::WriteSettingFile("text.txt", vt::Table({"before"}));
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("before"));
  vt::WriteSettingFile("text.txt", vt::Table({"after"}));
  CCtrlConfig::UnInstance();  // there is no configuration instance
  // The resource centre was released: the next one reads the file again.
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("after"));
}

TEST_F(CtrlConfigTest, UnInstanceReleasesBothAndReloads) {
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t1|2\t3|4"}));
  EXPECT_EQ(CCtrlConfig::Instance()->GetRect(0), wxRect(1, 2, 3, 4));
  vt::WriteSettingFile("controls.txt", vt::Table({"x\ta\t5|6\t7|8"}));
  vt::WriteSettingFile("text.txt", vt::Table({"new"}));
  EXPECT_EQ(CCtrlConfig::Instance()->GetRect(0), wxRect(1, 2, 3, 4));
  CCtrlConfig::UnInstance();
  CCtrlConfig::UnInstance();  // twice is harmless
  EXPECT_EQ(CCtrlConfig::Instance()->GetRect(0), wxRect(5, 6, 7, 8));
  EXPECT_EQ(CResCenter::Instance()->GetText(0), wxT("new"));
}

TEST(ArrayOfCtrl, OwningArrayOfValues) {
  CONTROLINFO a;
  a.rect = wxRect(1, 2, 3, 4);
  a.texts.Add(7);
  ArrayOfCtrl arr;
  arr.Add(a, 3);
  ASSERT_EQ(arr.GetCount(), 3u);
  a.rect = wxRect();  // the array holds copies
  EXPECT_EQ(arr[2].rect, wxRect(1, 2, 3, 4));
  EXPECT_EQ(arr[1].texts[0], 7);
  ArrayOfCtrl copy(arr);
  arr.RemoveAt(0);
  EXPECT_EQ(arr.GetCount(), 2u);
  EXPECT_EQ(copy.GetCount(), 3u);
  copy.Insert(a, 0);
  EXPECT_EQ(copy[0].rect, wxRect());
  copy.Empty();
  EXPECT_EQ(copy.GetCount(), 0u);
}
