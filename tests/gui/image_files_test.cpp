// The module's one image loader and its image-list filler, with the shipped
// pictures (the test's working directory holds res/vantori/).
#include <gtest/gtest.h>

#include <wx/image.h>
#include <wx/imaglist.h>

#include <cstdio>
#include <fstream>
#include <unistd.h>

#include "common/ImageFiles.h"
#include "common/ResourcePaths.h"

namespace {

// The pixels of a bitmap as RGB bytes, for comparing two pictures.
std::string Pixels(const wxBitmap& bmp) {
  wxImage img = bmp.ConvertToImage();
  return std::string(reinterpret_cast<const char*>(img.GetData()),
                     static_cast<size_t>(img.GetWidth()) * img.GetHeight() * 3);
}

TEST(ImageFiles, LoadsPngAndBmpFiles) {
  wxBitmap png;
  ASSERT_TRUE(common::LoadImageFile(png, common::ResourcePath("bmp/Folder_16x16.png"),
                                    wxBITMAP_TYPE_PNG));
  EXPECT_TRUE(png.IsOk());
  EXPECT_EQ(png.GetSize(), wxSize(16, 16));
  wxBitmap bmp;
  ASSERT_TRUE(
      common::LoadImageFile(bmp, common::ResourcePath("bmp/txt.bmp"), wxBITMAP_TYPE_BMP));
  EXPECT_EQ(bmp.GetSize(), wxSize(16, 16));
  wxBitmap logo;
  ASSERT_TRUE(common::LoadImageFile(logo, common::ResourcePath("logo.png"), wxBITMAP_TYPE_PNG));
  EXPECT_EQ(logo.GetSize(), wxSize(64, 64));
}

TEST(ImageFiles, AFileThatDoesNotLoadLeavesTheBitmapAsItWas) {
  wxBitmap kept(24, 8);
  EXPECT_FALSE(common::LoadImageFile(kept, common::ResourcePath("bmp/no-such.png"),
                                     wxBITMAP_TYPE_PNG));
  EXPECT_TRUE(kept.IsOk());
  EXPECT_EQ(kept.GetSize(), wxSize(24, 8));
  const std::string junk = "/tmp/vantori-junk-" + std::to_string(getpid()) + ".png";
  std::ofstream(junk) << "not a picture";
  wxBitmap fresh;
  EXPECT_FALSE(common::LoadImageFile(fresh, wxString::FromUTF8(junk), wxBITMAP_TYPE_PNG));
  EXPECT_FALSE(fresh.IsOk());
  std::remove(junk.c_str());
}

TEST(ImageFiles, SlotsAreRescaledOrEmptyButAlwaysOfTheListSize) {
  wxBitmap logo;
  ASSERT_TRUE(common::LoadImageFile(logo, common::ResourcePath("logo.png"), wxBITMAP_TYPE_PNG));
  const wxBitmap small = common::FitImageSlot(logo, 16, 16);
  EXPECT_EQ(small.GetSize(), wxSize(16, 16));
  wxImage expected = logo.ConvertToImage();
  expected.Rescale(16, 16);
  EXPECT_EQ(Pixels(small), Pixels(wxBitmap(expected, -1)));
  const wxBitmap empty = common::FitImageSlot(wxNullBitmap, 16, 16);
  EXPECT_TRUE(empty.IsOk());
  EXPECT_EQ(empty.GetSize(), wxSize(16, 16));
  wxBitmap folder;
  ASSERT_TRUE(common::LoadImageFile(folder, common::ResourcePath("bmp/Folder_16x16.png"),
                                    wxBITMAP_TYPE_PNG));
  EXPECT_EQ(Pixels(common::FitImageSlot(folder, 16, 16)), Pixels(folder));
}

TEST(ImageFiles, FillerKeepsTheSlotOfAMissingFileAndRescalesTheOthers) {
  const common::ImageFile files[] = {
      {"bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG},
      {"bmp/no-such.png", wxBITMAP_TYPE_PNG},
      {"logo.png", wxBITMAP_TYPE_PNG},  // 64 x 64
      {"bmp/txt.bmp", wxBITMAP_TYPE_BMP},
  };
  wxImageList list(16, 16, true, 1);
  common::FillImageList(list, files, WXSIZEOF(files));
  ASSERT_EQ(list.GetImageCount(), 4);
  for (int i = 0; i < 4; ++i) {
    int w = 0, h = 0;
    ASSERT_TRUE(list.GetSize(i, w, h)) << i;
    EXPECT_EQ(wxSize(w, h), wxSize(16, 16)) << i;
  }
  wxBitmap logo, txt;
  ASSERT_TRUE(common::LoadImageFile(logo, common::ResourcePath("logo.png"), wxBITMAP_TYPE_PNG));
  ASSERT_TRUE(common::LoadImageFile(txt, common::ResourcePath("bmp/txt.bmp"), wxBITMAP_TYPE_BMP));
  // The pictures after the missing one sit at their own index.
  EXPECT_EQ(Pixels(list.GetBitmap(2)), Pixels(common::FitImageSlot(logo, 16, 16)));
  EXPECT_EQ(Pixels(list.GetBitmap(3)), Pixels(txt));

  // A list of another size gets slots of its size.
  wxImageList big(32, 32, true, 1);
  common::FillImageList(big, files, 2);
  ASSERT_EQ(big.GetImageCount(), 2);
  int w = 0, h = 0;
  ASSERT_TRUE(big.GetSize(0, w, h));
  EXPECT_EQ(wxSize(w, h), wxSize(32, 32));
}

TEST(ImageFiles, PicturesAreFoundRelativeToTheCurrentDirectory) {
  const common::ImageFile files[] = {{"bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG}};
  wxImageList here(16, 16, true, 1);
  common::FillImageList(here, files, 1);
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir("/tmp"), 0);
  wxImageList elsewhere(16, 16, true, 1);
  common::FillImageList(elsewhere, files, 1);
  wxBitmap none;
  const bool loadedElsewhere = common::LoadImageFile(
      none, common::ResourcePath("bmp/Folder_16x16.png"), wxBITMAP_TYPE_PNG);
  ASSERT_EQ(chdir(cwd), 0);
  EXPECT_FALSE(loadedElsewhere);
  ASSERT_EQ(elsewhere.GetImageCount(), 1);  // the slot is kept, empty
  EXPECT_NE(Pixels(elsewhere.GetBitmap(0)), Pixels(here.GetBitmap(0)));
}

}  // namespace
