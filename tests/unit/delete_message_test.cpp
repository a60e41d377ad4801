// The one message at the end of a deleting that left items behind, and how
// the paths in it (bytes, maybe not UTF-8) read in drive-letter form.
#include <gtest/gtest.h>

#include <errno.h>

#include <vector>

#include "destination/DeleteFileProgress.h"

TEST(DeleteMessage, ListsHowManyFailedAndTheFirstPathsWithTheirReasons) {
  const std::vector<DeleteFailure> first = {
      {"/mnt/D/a/b", EACCES}, {"/mnt/D/a", ENOTEMPTY}, {"/mnt/D/ro.txt", EROFS}};
  EXPECT_EQ(DeleteFailureMessage(3, first),
            "3 items could not be deleted:\n"
            "D:\\a\\b (permission denied)\n"
            "D:\\a (not empty)\n"
            "D:\\ro.txt (read-only volume)");
  EXPECT_EQ(DeleteFailureMessage(1, {{"/mnt/E/disk", EIO}}),
            "1 item could not be deleted:\nE:\\disk (input/output error)");
  EXPECT_EQ(DeleteFailureCaption(), "Error Deleting File or Folder");
}

TEST(DeleteMessage, SaysHowManyMoreWhenNotAllAreListed) {
  std::vector<DeleteFailure> first;
  for (int i = 0; i < 5; ++i) first.push_back({"/mnt/C/f" + std::to_string(i), EBUSY});
  const wxString text = DeleteFailureMessage(40, first);
  EXPECT_TRUE(text.StartsWith("40 items could not be deleted:\nC:\\f0 (in use)\n"));
  EXPECT_TRUE(text.EndsWith("\nC:\\f4 (in use)\n... and 35 more.")) << text;
  EXPECT_EQ(DeleteFailureMessage(2, {{"/mnt/F/mp", EXDEV}, {"/mnt/F", EPERM}}),
            "2 items could not be deleted:\nF:\\mp (another volume is mounted here)\n"
            "F:\\ (permission denied)");
}

TEST(DeleteMessage, PathsThatAreNotUtf8ShowWithUnderscores) {
  EXPECT_EQ(DeleteDisplayPath("/mnt/D/caf\xe9/x", -1), "D:\\caf_\\x");
  EXPECT_EQ(DeleteDisplayPath("/mnt/D/caf\xc3\xa9/x", -1), "D:\\caf_\\x");
  EXPECT_EQ(DeleteDisplayPath("/mnt/D/a/very/long/path/to/some/deep/folder/file.txt", 20),
            "D:\\...\\file.txt");
  EXPECT_EQ(DeletePathBytes("/mnt/D/a b$c"), "/mnt/D/a b$c");
}
