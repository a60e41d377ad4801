// The destination panel's rules without a window: the volume rows and which
// volumes are offered, the path field texts, the row chosen after a new
// folder and the destination folder handed to the copy.
#include <gtest/gtest.h>

#include <cstring>

#include "common/disk_images.h"
#include "common/test_support.h"
#include "destination/DesLogic.h"
#include "disk/View_Disk_Info.h"

namespace {

VolumeInformation Volume(char letter, const char* label, const char* freeText, bool usb) {
  VolumeInformation v;
  std::memset(&v, 0, sizeof v);
  std::snprintf(v.MountPoint, sizeof v.MountPoint, "/mnt/%c", letter);
  v.DriveLetter = letter;
  v.Removable = usb ? 1 : 0;
  std::snprintf(v.VolumeLabel, sizeof v.VolumeLabel, "%s", label);
  std::snprintf(v.FreeText, sizeof v.FreeText, "%s", freeText);
  return v;
}

}  // namespace

TEST(DestinationVolumes, RowTextHasThreeBlanksBeforeTheFreeSpace) {
  EXPECT_EQ(DesVolumeRowText('E', "STICK", "1.2 GB"), "(E:\\) STICK   (1.2 GB Free)");
  EXPECT_EQ(DesVolumeRowText('C', "", "900 MB"), "(C:\\)    (900 MB Free)");
}

TEST(DestinationVolumes, SourceIndexIsTheSixthCharacterMinusC) {
  EXPECT_EQ(DesSourceVolumeIndex("/mnt/D/dir"), 1);
  EXPECT_EQ(DesSourceVolumeIndex("/mnt/C"), 0);
  EXPECT_EQ(DesSourceVolumeIndex("/mnt/"), -1);
  EXPECT_EQ(DesSourceVolumeIndex(""), -1);
}

TEST(DestinationVolumes, SourceVolumeIsLeftOutUnlessItIsTheOnlyOne) {
  const VolumeInformation v[] = {Volume('C', "DATA", "10 GB", false),
                                 Volume('D', "Donn\xe9" "es", "2 GB", false),
                                 Volume('E', "STICK", "1 GB", true)};
  std::vector<DesVolumeRow> rows = DesVolumeRows(v, 3, 1);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].text, "(C:\\) DATA   (10 GB Free)");
  EXPECT_EQ(rows[0].rootText, "C:\\");
  EXPECT_EQ(rows[0].rootPath, "/mnt/C/");
  EXPECT_EQ(rows[0].icon, 0);
  EXPECT_EQ(rows[0].volumeIndex, 0);
  EXPECT_EQ(rows[1].text, "(E:\\) STICK   (1 GB Free)");
  EXPECT_EQ(rows[1].icon, 1);
  EXPECT_EQ(rows[1].volumeIndex, 2);
  // A label's bytes read as Latin-1.
  rows = DesVolumeRows(v, 3, 0);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].text, wxString::FromUTF8("(D:\\) Donn\xc3\xa9" "es   (2 GB Free)"));
  // No source volume known: every volume is offered.
  EXPECT_EQ(DesVolumeRows(v, 3, -1).size(), 3u);
  // The only volume is offered although it is the source.
  rows = DesVolumeRows(v, 1, 0);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].rootPath, "/mnt/C/");
  // No volume: no row.
  EXPECT_TRUE(DesVolumeRows(v, 0, -1).empty());
}

TEST(DestinationPathField, FolderAndUpTexts) {
  EXPECT_EQ(DesFolderFieldText("/mnt/C/"), "C:\\");
  EXPECT_EQ(DesFolderFieldText("/mnt/C/dir/"), "C:\\dir");
  EXPECT_EQ(DesFolderFieldText("/mnt/C/dir/sub/"), "C:\\dir\\sub");
  EXPECT_EQ(DesFolderFieldText(""), "");
  EXPECT_EQ(DesUpFieldText("/mnt/C/"), "C:\\");
  EXPECT_EQ(DesUpFieldText("/mnt/C/dir/"), "C:\\dir");
  EXPECT_EQ(DesUpFieldText(""), "");
}

TEST(DestinationNewFolder, RowBelowTheNewFolderExceptAtTheTop) {
  EXPECT_EQ(DesCreatedFolderRow(0, false), 2);
  EXPECT_EQ(DesCreatedFolderRow(3, false), 5);
  EXPECT_EQ(DesCreatedFolderRow(0, true), 0);
  EXPECT_EQ(DesCreatedFolderRow(3, true), 3);
}

TEST(DestinationPath, SelectedFolderOrTheCurrentFolder) {
  const std::string dir = vt::MakeTempDir("vantori-dest-path");
  vt::WriteFile(dir + "/file.txt", "x");
  const wxString cur = wxString::FromUTF8(dir) + "/";
  const wxString plain = wxString::FromUTF8(dir);
  EXPECT_EQ(DesDestinationPath(cur, "sub"), plain + "/sub");
  EXPECT_EQ(DesDestinationPath(cur, ""), plain);
  EXPECT_EQ(DesDestinationPath(cur, "file.txt"), plain);
  EXPECT_EQ(DesDestinationPath("", ""), "");
  EXPECT_EQ(DesDestinationPath("", "x"), "");
  vt::RemoveTree(dir);
}
