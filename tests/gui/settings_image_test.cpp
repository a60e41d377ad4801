// The image table read from setting/vantori/resource.txt, with PNG files the
// tests draw themselves beside the test binary.
#include <gtest/gtest.h>

#include <wx/bitmap.h>
#include <wx/image.h>

#include <cstdio>
#include <string>

#include "common/test_support.h"
#include "settings/CCtrlConfig.h"
#include "settings/CImageRes.h"
#include "settings/CResCenter.h"
#include "unit/settings_test_env.h"
#include "block_image.h"

using settings::CImageRes;
using settings::CResCenter;
using vt::IsBlock;
using vt::WriteBlocksPng;

namespace {

std::string ResDir() { return vt::ExeDir() + "settings_test_res/"; }

std::string GetBitmapRegex() {
  return vt::AssertionRegex("src/CImageRes", 71,
                            "const wxBitmap& settings::CImageRes::GetBitmap(int)",
                            "nIdx >= 0 && nIdx <= (int)m_BitmapRes->GetCount()");
}

class ImageResTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(WriteBlocksPng(ResDir() + "nav.png")); }
  void TearDown() override {
    std::remove((ResDir() + "nav.png").c_str());
    std::remove((ResDir() + "garbage.png").c_str());
    std::remove(ResDir().c_str());
  }
  vt::SettingsEnv env;
};

}  // namespace

TEST_F(ImageResTest, HeaderOnlyFileGivesEmptyTable) {
  vt::WriteSettingFile("resource.txt", "name\tfile\tx|y\tw|h\n");
  CImageRes res;
  EXPECT_EQ(res.GetCount(), 0);
  // Index 0 equals the count: the check lets it pass; the bitmap is invalid.
  EXPECT_FALSE(res.GetBitmap(0).IsOk());
}

TEST_F(ImageResTest, MissingFileGivesEmptyTable) {
  vt::RemoveSettingFile("resource.txt");
  CImageRes res;
  EXPECT_EQ(res.GetCount(), 0);
}

TEST_F(ImageResTest, CutOutOfTheNamedPng) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"up\t/settings_test_res/nav.png\t16|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 1);
  const wxBitmap& bmp = res.GetBitmap(0);
  ASSERT_TRUE(bmp.IsOk());
  EXPECT_EQ(bmp.GetWidth(), 16);
  EXPECT_EQ(bmp.GetHeight(), 16);
  EXPECT_TRUE(IsBlock(bmp, 1));
}

TEST_F(ImageResTest, EachLineIsOneNumberedImage) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"a\t/settings_test_res/nav.png\t0|0\t16|16",
                                  "b\t/settings_test_res/nav.png\t48|0\t16|16",
                                  "whole\t/settings_test_res/nav.png\t0|0\t64|16",
                                  "c\t/settings_test_res/nav.png\t32|4\t8|12"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 4);
  EXPECT_TRUE(IsBlock(res.GetBitmap(0), 0));
  EXPECT_TRUE(IsBlock(res.GetBitmap(1), 3));
  EXPECT_EQ(res.GetBitmap(2).GetSize(), wxSize(64, 16));
  EXPECT_EQ(res.GetBitmap(3).GetSize(), wxSize(8, 12));
  EXPECT_TRUE(IsBlock(res.GetBitmap(3), 2));
}

TEST_F(ImageResTest, NameWithoutLeadingSlashFailsButKeepsItsNumber) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"bad\tsettings_test_res/nav.png\t0|0\t16|16",
                                  "good\t/settings_test_res/nav.png\t16|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 2);
  EXPECT_FALSE(res.GetBitmap(0).IsOk());
  EXPECT_TRUE(IsBlock(res.GetBitmap(1), 1));
}

TEST_F(ImageResTest, MissingOrUndecodablePngKeepsItsNumber) {
  vt::WriteFile(ResDir() + "garbage.png", "this is not a png file");
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"gone\t/settings_test_res/none.png\t0|0\t16|16",
                                  "junk\t/settings_test_res/garbage.png\t0|0\t16|16",
                                  "good\t/settings_test_res/nav.png\t32|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 3);
  EXPECT_FALSE(res.GetBitmap(0).IsOk());
  EXPECT_FALSE(res.GetBitmap(1).IsOk());
  EXPECT_TRUE(IsBlock(res.GetBitmap(2), 2));
}

TEST_F(ImageResTest, RectangleOutsideTheImageGivesInvalidEntry) {
  // Any wx assertion here would fail the test through the test main's handler.
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"wide\t/settings_test_res/nav.png\t60|0\t16|16",
                                  "tall\t/settings_test_res/nav.png\t0|8\t16|16",
                                  "neg\t/settings_test_res/nav.png\t-1|0\t16|16",
                                  "empty\t/settings_test_res/nav.png\t0|0\t0|0",
                                  "nosize\t/settings_test_res/nav.png\t0|0",
                                  "good\t/settings_test_res/nav.png\t48|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 6);
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(res.GetBitmap(i).IsOk()) << i;
  EXPECT_TRUE(IsBlock(res.GetBitmap(5), 3));
}

TEST_F(ImageResTest, ShortAndEmptyLinesKeepTheirNumbers) {
  vt::WriteSettingFile("resource.txt", vt::Table({"", "only a label",
                                                  "x\t/settings_test_res/nav.png\t0|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 3);
  EXPECT_FALSE(res.GetBitmap(0).IsOk());
  EXPECT_FALSE(res.GetBitmap(1).IsOk());
  EXPECT_TRUE(IsBlock(res.GetBitmap(2), 0));
}

TEST_F(ImageResTest, EncodingsAndLineEnds) {
  vt::WriteSettingFile("resource.txt",
                       "\xEF\xBB\xBFh\r\nx\t/settings_test_res/nav.png\t16|0\t16|16\r\n");
  {
    CImageRes res;
    ASSERT_EQ(res.GetCount(), 1);
    EXPECT_TRUE(IsBlock(res.GetBitmap(0), 1));
  }
  vt::WriteSettingFile("resource.txt",
                       vt::Utf16LeWithBom(u"h\nx\t/settings_test_res/nav.png\t32|0\t16|16\n"));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_TRUE(IsBlock(res.GetBitmap(0), 2));
}

TEST_F(ImageResTest, ImageLoadGluesTheNameToTheDirectory) {
  // The executable's directory without its trailing separator, then the name
  // as it stands: ".../tests" + "glued_nav.png" is ".../testsglued_nav.png".
  std::string dir = vt::ExeDir();
  dir.pop_back();
  const std::string glued = dir + "glued_nav.png";
  ASSERT_TRUE(WriteBlocksPng(glued));
  vt::WriteSettingFile("resource.txt", "h\n");
  CImageRes res;
  wxBitmap bmp;
  wxString name = wxT("glued_nav.png");
  wxBitmap& out = res.imageLoad(bmp, name, wxBITMAP_TYPE_PNG);
  EXPECT_EQ(&out, &bmp);
  EXPECT_EQ(name, wxT("glued_nav.png"));
  ASSERT_TRUE(bmp.IsOk());
  EXPECT_EQ(bmp.GetSize(), wxSize(64, 16));
  std::remove(glued.c_str());

  // With a separator it finds the file under the directory.
  wxBitmap other;
  res.imageLoad(other, wxT("/settings_test_res/nav.png"), wxBITMAP_TYPE_PNG);
  EXPECT_EQ(other.GetSize(), wxSize(64, 16));
}

TEST_F(ImageResTest, ImageLoadFailureLeavesTheBitmapAsItWas) {
  vt::WriteSettingFile("resource.txt", "h\n");
  CImageRes res;
  wxBitmap bmp(5, 7);
  res.imageLoad(bmp, wxT("/settings_test_res/absent.png"), wxBITMAP_TYPE_PNG);
  ASSERT_TRUE(bmp.IsOk());
  EXPECT_EQ(bmp.GetSize(), wxSize(5, 7));
  wxBitmap fresh;
  res.imageLoad(fresh, wxT("/settings_test_res/absent.png"), wxBITMAP_TYPE_PNG);
  EXPECT_FALSE(fresh.IsOk());
}

TEST_F(ImageResTest, CountPassesTheCheckAndGivesAnInvalidBitmap) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"x\t/settings_test_res/nav.png\t0|0\t16|16"}));
  CImageRes res;
  ASSERT_EQ(res.GetCount(), 1);
  EXPECT_FALSE(res.GetBitmap(1).IsOk());
}

TEST_F(ImageResTest, NegativeIndexFailsTheAssertion) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"x\t/settings_test_res/nav.png\t0|0\t16|16"}));
  CImageRes res;
  EXPECT_DEATH(res.GetBitmap(-1), GetBitmapRegex());
}

TEST_F(ImageResTest, IndexPastCountFailsTheAssertion) {
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"x\t/settings_test_res/nav.png\t0|0\t16|16"}));
  CImageRes res;
  EXPECT_DEATH(res.GetBitmap(2), GetBitmapRegex());
}

TEST_F(ImageResTest, ResCenterAndControlRecordsHandOutTheBitmaps) {
  vt::WriteSettingFile("text.txt", "h\n");
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"a\t/settings_test_res/nav.png\t0|0\t16|16",
                                  "b\t/settings_test_res/nav.png\t16|0\t16|16",
                                  "c\t/settings_test_res/nav.png\t32|0\t16|16"}));
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tbtn\t0|0\t16|16\t\t2|0"}));
  EXPECT_TRUE(IsBlock(CResCenter::Instance()->GetBitmap(1), 1));
  const CONTROLINFO& info = settings::CCtrlConfig::Instance()->GetCtrlInfo(0);
  EXPECT_TRUE(IsBlock(info.GetRes(0), 2));
  EXPECT_TRUE(IsBlock(info.GetRes(1), 0));
  EXPECT_DEATH(info.GetRes(2), vt::AssertionRegex("src/CCtrlConfig", 26,
                                                  "const wxBitmap& CONTROLINFO::GetRes(int) const",
                                                  "nIdx >= 0 && nIdx < (int)resources.GetCount()"));
  EXPECT_DEATH(CResCenter::Instance()->GetBitmap(-1), GetBitmapRegex());
}

TEST_F(ImageResTest, ImageNumberInASlotIsCheckedAgainByTheImageTable) {
  vt::WriteSettingFile("text.txt", "h\n");
  vt::WriteSettingFile("resource.txt",
                       vt::Table({"a\t/settings_test_res/nav.png\t0|0\t16|16"}));
  vt::WriteSettingFile("controls.txt", vt::Table({"x\tbtn\t0|0\t16|16\t\t1|7"}));
  const CONTROLINFO& info = settings::CCtrlConfig::Instance()->GetCtrlInfo(0);
  EXPECT_FALSE(info.GetRes(0).IsOk());  // number 1 == count: passes, invalid
  EXPECT_DEATH(info.GetRes(1), GetBitmapRegex());
}

TEST(ArrayOfBitmap, OwningArrayOfValues) {
  wxBitmap a(4, 3);
  ArrayOfBitmap arr;
  arr.Add(a, 3);
  ASSERT_EQ(arr.GetCount(), 3u);
  EXPECT_EQ(arr[2].GetSize(), wxSize(4, 3));
  EXPECT_NE(&arr[0], &arr[1]);  // each element is its own object
  ArrayOfBitmap copy(arr);
  arr.RemoveAt(0, 2);
  EXPECT_EQ(arr.GetCount(), 1u);
  EXPECT_EQ(copy.GetCount(), 3u);
  copy.Insert(wxBitmap(9, 9), 1);
  EXPECT_EQ(copy[1].GetSize(), wxSize(9, 9));
  EXPECT_EQ(copy.Index(copy[1]), 1);
  ArrayOfBitmap assigned;
  assigned = copy;
  EXPECT_EQ(assigned.GetCount(), 4u);
  copy.Empty();
  EXPECT_EQ(copy.GetCount(), 0u);
  EXPECT_EQ(assigned[1].GetSize(), wxSize(9, 9));
}
