// Where the module finds its files: pictures and the help book relative to
// the current directory, settings beside the executable.
#include <gtest/gtest.h>

#include "common/ResourcePaths.h"
#include "common/test_support.h"
#include "settings/CResCenter.h"

namespace {

TEST(ResourcePaths, PicturesAndHelpBookAreRelativeToTheCurrentDirectory) {
  EXPECT_EQ(common::ResourcePath("bmp/Folder_16x16.png"), "./res/vantori/bmp/Folder_16x16.png");
  EXPECT_EQ(common::ResourcePath("doc/doc.zip"), "./res/vantori/doc/doc.zip");
  EXPECT_EQ(common::ResourcePath("logo.png"), "./res/vantori/logo.png");
}

TEST(ResourcePaths, SettingsLieBesideTheExecutable) {
  const wxString exeDir = wxString::FromUTF8(vt::ExeDir());  // ends in "/"
  ASSERT_TRUE(exeDir.EndsWith("/"));
  EXPECT_EQ(common::ExeDirectory(), exeDir);
  EXPECT_EQ(common::SettingsPath("config.ini"), exeDir + "setting/vantori/config.ini");
  EXPECT_EQ(common::SettingsPath("text.txt"), exeDir + "setting/vantori/text.txt");
  // The resource centre hands out the same directory.
  wxString fromCentre;
  EXPECT_TRUE(settings::CResCenter::GetExeFilePath(fromCentre));
  EXPECT_EQ(fromCentre, exeDir);
}

TEST(ResourcePaths, TheAboutBoxReadsConfigRelativeToTheCurrentDirectory) {
  EXPECT_EQ(common::WorkingDirSettingsPath("config.ini"), "setting/vantori/config.ini");
}

TEST(ResourcePaths, ImageTableNamesAreGluedOntoTheExecutableDirectory) {
  const wxString exeDir = wxString::FromUTF8(vt::ExeDir());
  const wxString bare = exeDir.Left(exeDir.length() - 1);  // no trailing "/"
  EXPECT_EQ(common::ExeDirJoined("/res/vantori/bmp/Up.png"), bare + "/res/vantori/bmp/Up.png");
  // No separator is inserted: a name without "/" sticks to the directory.
  EXPECT_EQ(common::ExeDirJoined("x.png"), bare + "x.png");
}

}  // namespace
