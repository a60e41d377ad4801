// The folder pane without windows: reading, the drive rows, the focus of its
// views, the flags that keep a list and a tree in step, and how a request of
// one view reaches the others. Also the volume-top rule of going up and the
// display text of a volume's bytes.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>
#include <vector>

#include "browser/FolderPane.h"
#include "browser/ListingLogic.h"
#include "common/fake_devices.h"
#include "common/test_support.h"
#include "display/VolumeText.h"

namespace {

// A view that records every notification and can answer a volume index.
class RecordingView : public FolderPaneView {
 public:
  std::vector<std::string> seen;
  int volumeIndex = -1;

  void OnPaneShowFolder(const wxString& folder) override { Note("show " + folder); }
  void OnPaneVolumeOpened(int index) override { Note(wxString::Format("volume %d", index)); }
  void OnPaneFollowFolder(const wxString& folder) override { Note("follow " + folder); }
  void OnPanePathText(const wxString& text) override { Note("text " + text); }
  int OnPaneVolumeIndex(const wxString& path) override {
    Note("index? " + path);
    return volumeIndex;
  }

 private:
  void Note(const wxString& s) { seen.push_back(s.utf8_string()); }
};

}  // namespace

TEST(FolderPane, ReadFillsTheArraysAndAFailedReadKeepsTheFolder) {
  const std::string dir = vt::MakeTempDir("vantori-pane-");
  mkdir((dir + "/sub").c_str(), 0755);
  vt::WriteFile(dir + "/f.txt", "abc");
  FolderPane pane;
  EXPECT_TRUE(pane.Folder().empty());
  const wxString folder = wxString::FromUTF8(dir) + "/";
  ASSERT_EQ(pane.Read(folder), 0);
  EXPECT_EQ(pane.Folder(), folder);
  ASSERT_EQ(pane.Dirs().GetCount(), 1u);
  ASSERT_EQ(pane.Files().GetCount(), 1u);
  pane.ShowListing(true);
  EXPECT_EQ(pane.Rows().Count(), 3);
  EXPECT_EQ(pane.Rows().Text(1, 0), "sub");
  EXPECT_EQ(pane.Read(folder + "no-such/"), -1);
  EXPECT_EQ(pane.Folder(), folder);
  EXPECT_EQ(pane.Dirs().GetCount(), 0u);
  EXPECT_EQ(pane.Files().GetCount(), 0u);
  EXPECT_EQ(pane.Rows().Count(), 1) << "only the \"..\" row is left";
  vt::RemoveTree(dir);
}

TEST(FolderPane, DrivesEmptyTheFolderAndSortReordersTheListing) {
  FolderPane pane;
  File_List f;
  for (const char* n : {"b", "C", "a"}) {
    f.m_name = n;
    f.m_size = 1;
    pane.Files().Add(f);
  }
  pane.ShowListing(false);
  pane.SortListing(listing::COL_NAME, true);
  EXPECT_EQ(pane.Rows().Text(0, 0), "C");
  EXPECT_EQ(pane.Rows().Text(2, 0), "b");
  pane.SortListing(listing::COL_NAME, false);
  EXPECT_EQ(pane.Rows().Text(0, 0), "b");
  DriveRow row{"C:", "DATA", "1 GB", "2 MB", listing::IMG_DISK};
  pane.ShowDrives({row});
  EXPECT_TRUE(pane.Folder().empty());
  EXPECT_TRUE(pane.Rows().DriveMode());
  EXPECT_EQ(pane.Rows().Text(0, 1), "DATA");
  EXPECT_EQ(pane.Files().GetCount(), 3u) << "the listing stays until emptied";
  pane.EmptyListing();
  EXPECT_EQ(pane.Files().GetCount(), 0u);
}

TEST(FolderPane, OneViewHasTheFocusLast) {
  FolderPane pane;
  EXPECT_FALSE(pane.IsLastFocus(FolderPane::FOCUS_LIST));
  EXPECT_FALSE(pane.IsLastFocus(FolderPane::FOCUS_TREE));
  pane.SetLastFocus(FolderPane::FOCUS_TREE, true);
  EXPECT_TRUE(pane.IsLastFocus(FolderPane::FOCUS_TREE));
  pane.SetLastFocus(FolderPane::FOCUS_LIST, false);  // not the list's to take back
  EXPECT_TRUE(pane.IsLastFocus(FolderPane::FOCUS_TREE));
  pane.SetLastFocus(FolderPane::FOCUS_LIST, true);
  EXPECT_TRUE(pane.IsLastFocus(FolderPane::FOCUS_LIST));
  EXPECT_FALSE(pane.IsLastFocus(FolderPane::FOCUS_TREE));
  pane.SetLastFocus(FolderPane::FOCUS_LIST, false);
  EXPECT_FALSE(pane.IsLastFocus(FolderPane::FOCUS_LIST));
  EXPECT_FALSE(pane.IsLastFocus(FolderPane::FOCUS_NONE));
}

TEST(FolderPane, RequestsReachEveryAttachedView) {
  FolderPane pane;
  RecordingView list, tree;
  pane.Attach(&list);
  pane.Attach(&tree);
  pane.Attach(&tree);  // twice changes nothing
  EXPECT_EQ(pane.ViewCount(), 2u);
  EXPECT_EQ(tree.Pane(), &pane);
  pane.ShowFolder("/mnt/C/a/");
  pane.OpenVolume(2);
  pane.ShowPathText("C:\\a");
  const std::vector<std::string> want = {"show /mnt/C/a/", "volume 2", "text C:\\a"};
  EXPECT_EQ(list.seen, want);
  EXPECT_EQ(tree.seen, want);
  // Following clears the update-tree flag after the views followed.
  pane.SetUpdateTree(true);
  pane.FollowFolder();
  EXPECT_EQ(tree.seen.back(), "follow ");
  EXPECT_FALSE(pane.UpdateTree());
  // The first view that knows a volume index answers.
  EXPECT_EQ(pane.VolumeIndexOf("/mnt/D/"), -1);
  tree.volumeIndex = 1;
  EXPECT_EQ(pane.VolumeIndexOf("/mnt/D/"), 1);
}

TEST(FolderPane, ViewsMoveBetweenPanesAndOutliveThem) {
  RecordingView view;
  {
    FolderPane own, shared;
    own.Attach(&view);
    shared.Attach(&view);
    EXPECT_EQ(view.Pane(), &shared);
    EXPECT_EQ(own.ViewCount(), 0u);
    own.ShowFolder("/mnt/C/");
    EXPECT_TRUE(view.seen.empty()) << "a view hears only its own pane";
  }
  EXPECT_EQ(view.Pane(), nullptr) << "the pane went away";
  FolderPane pane;
  {
    RecordingView shortLived;
    pane.Attach(&shortLived);
    EXPECT_EQ(pane.ViewCount(), 1u);
  }
  EXPECT_EQ(pane.ViewCount(), 0u) << "a view leaves its pane when it goes away";
}

TEST(FolderPane, FlagsAndSelectedNames) {
  FolderPane pane;
  EXPECT_FALSE(pane.LoadedFromTree());
  pane.SetLoadedFromTree(true);
  EXPECT_TRUE(pane.LoadedFromTree());
  wxArrayString names;
  names.Add("a.txt");
  names.Add("docs");
  pane.SetSelectedNames(names);
  EXPECT_EQ(pane.SelectedNames(), names);
}

TEST(ListingPath, VolumeTopIsReadFromTheFolderItself) {
  EXPECT_TRUE(listing::IsVolumeTop("/mnt/C/"));
  EXPECT_TRUE(listing::IsVolumeTop("/mnt/Z/"));
  EXPECT_TRUE(listing::IsVolumeTop("/mnt/"));
  EXPECT_TRUE(listing::IsVolumeTop("/"));
  EXPECT_TRUE(listing::IsVolumeTop(""));
  EXPECT_FALSE(listing::IsVolumeTop("/mnt/C/docs/"));
  EXPECT_FALSE(listing::IsVolumeTop("/mnt/C/a/b/"));
}

TEST(VolumeText, BytesKeepTheirCodePoints) {
  EXPECT_EQ(VolumeText("DATA       "), "DATA       ");
  EXPECT_EQ(VolumeText("Donn\xe9" "es"), wxString(L"Donn\u00e9es"));
  EXPECT_EQ(VolumeText("\x82\xff"), wxString(L"\u0082\u00ff"));
  EXPECT_EQ(VolumeText("/mnt/C"), "/mnt/C");
  EXPECT_EQ(VolumeText(""), "");
  EXPECT_EQ(VolumeText(nullptr), "");
}
