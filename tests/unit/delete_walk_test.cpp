// Deleting on the real file system under /tmp: hostile names removed exactly
// and never run, links removed as links and never entered, mount points left
// alone, failed removals reported, Cancel while counting and while deleting,
// the order of the removals and the diagnostic lines.
#include <gtest/gtest.h>

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "common/fake_fileops.h"
#include "common/stdout_capture.h"
#include "fileops/DeleteWalk.h"
#include "fileops/ShellEscape.h"
#include "fileops/WalkStatus.h"
#include "fileops_test_tree.h"

namespace {

using vt::FakeFileOps;
using vt::DirectoryOrder;

// Records what the deleting shows; cancels at the Nth question when asked to.
class RecordingView {
 public:
  // The walk's callbacks, recording into this view.
  DeleteWalkView Hooks() {
    return DeleteWalkView{
        [this] {
          ++questions;
          return cancelAt != 0 && questions >= cancelAt;
        },
        [this](int files, int folders) { lastCount = {files, folders}; },
        [this](int percent) { gauge.push_back(percent); },
        [this](const std::string& path) { removed.push_back(path); }};
  }

  int cancelAt = 0;
  int questions = 0;
  std::pair<int, int> lastCount{0, 0};
  std::vector<int> gauge;
  std::vector<std::string> removed;
};

using vt::Exists;

// Every path below root (links not followed), relative to root, sorted.
void ListInto(const std::string& root, const std::string& rel, std::set<std::string>* out) {
  DIR* d = opendir((root + "/" + rel).c_str());
  if (d == nullptr) return;
  std::vector<std::string> names;
  while (struct dirent* e = readdir(d)) {
    const std::string n = e->d_name;
    if (n != "." && n != "..") names.push_back(n);
  }
  closedir(d);
  for (const std::string& n : names) {
    const std::string r = rel.empty() ? n : rel + "/" + n;
    out->insert(r);
    struct stat64 st;
    if (lstat64((root + "/" + r).c_str(), &st) == 0 && S_ISDIR(st.st_mode)) ListInto(root, r, out);
  }
}
std::set<std::string> Listing(const std::string& root) {
  std::set<std::string> out;
  ListInto(root, "", &out);
  return out;
}

// The whole operation as the panel runs it: count, delete the contents,
// remove the selected item unless cancelled. Returns the status.
int DeleteAll(DeleteWalk& walk, const std::string& target) {
  if (walk.Count(target) == kStatusStopped) return kStatusStopped;
  const int r = walk.DeleteContents(target);
  if (r != kStatusStopped) walk.RemoveTarget(target);
  return r;
}

// Runs f with standard output captured, returns the output.
std::string Quiet(const std::function<void()>& f) { return vt::CaptureStdout(f); }

// The working folder is the scratch root while a test runs: a name that a
// shell ran as a command would leave its file there.
class InFolder {
 public:
  explicit InFolder(const std::string& folder) {
    EXPECT_NE(getcwd(saved_, sizeof(saved_)), nullptr);
    EXPECT_EQ(chdir(folder.c_str()), 0);
  }
  ~InFolder() { EXPECT_EQ(chdir(saved_), 0); }

 private:
  char saved_[PATH_MAX];
};

const std::vector<std::string>& HostileNames() {
  static const std::vector<std::string> names = {
      "two blanks  here", "double\"quote", "single'quote", "dollar$HOME", "$(touch made1)",
      "`touch made2`", "semi;touch made3", "pipe|touch made4", "amp&touch made5", "bang!1",
      "#hash", "~tilde", "star*", "question?", "[bracket", "{brace}", "new\nline", "tab\tbed",
      "back\\slash", "-rf", "--no-preserve-root", "Ümlaut naïve 東京", "\xff\xfe not utf8",
      "caf\xe9", "<in>out", "(paren)"};
  return names;
}

TEST(DeleteWalk, HostileNamesInsideAFolderAreAllRemovedAndNoneIsRun) {
  vt::ScratchTree t;
  t.Folder("keep");
  t.File("keep/a b", 1);
  t.Folder("t");
  for (const std::string& n : HostileNames()) {
    t.File("t/" + n, 3);
    t.Folder("t/" + n + ".d");
    t.File("t/" + n + ".d/" + n, 2);
  }
  const size_t n = HostileNames().size();
  ASSERT_EQ(Listing(t.Path("t")).size(), 3 * n);
  InFolder here(t.Root());
  FakeFileOps fake;
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount, static_cast<int>(2 * n));
  EXPECT_EQ(walk.folderCount, static_cast<int>(n));
  EXPECT_EQ(walk.FailedCount(), 0);
  EXPECT_FALSE(Exists(t.Path("t")));
  EXPECT_EQ(Listing(t.Root()), (std::set<std::string>{"keep", "keep/a b"}));
  // One removal per item, every one through the file-operations table.
  EXPECT_EQ(fake.Count(FakeFileOps::kUnlinkat), static_cast<int>(3 * n + 1));
  EXPECT_EQ(view.removed.size(), 3 * n);
}

TEST(DeleteWalk, EachHostileNameSelectedAloneRemovesExactlyThatName) {
  vt::ScratchTree t;
  for (const std::string& n : HostileNames()) t.File(n, 1);
  t.Folder("dir with $(touch made6)");
  t.File("dir with $(touch made6)/x", 1);
  InFolder here(t.Root());
  std::set<std::string> left = Listing(t.Root());
  std::vector<std::string> targets = HostileNames();
  targets.push_back("dir with $(touch made6)");
  for (const std::string& n : targets) {
    RecordingView view;
    DeleteWalk walk(view.Hooks());
    Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path(n)), kStatusWalked) << n; });
    EXPECT_EQ(walk.FailedCount(), 0) << n;
    left.erase(n);
    left.erase(n + "/x");
    EXPECT_EQ(Listing(t.Root()), left) << n;
  }
  EXPECT_TRUE(Listing(t.Root()).empty());
}

TEST(DeleteWalk, ALinkToAFolderOutsideIsRemovedAsALinkAndItsTargetSurvives) {
  vt::ScratchTree t;
  t.Folder("outside");
  t.File("outside/precious", 5);
  t.Folder("outside/sub");
  t.File("outside/sub/more", 5);
  t.Folder("t");
  t.File("t/f", 1);
  t.Link(t.Path("outside"), "t/to-outside");
  t.Link("../outside/precious", "t/to-file");
  t.Link(t.Path("nowhere"), "t/dangling");
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount, 4);  // links count as files
  EXPECT_EQ(walk.folderCount, 0);
  EXPECT_EQ(walk.FailedCount(), 0);
  EXPECT_FALSE(Exists(t.Path("t")));
  EXPECT_EQ(Listing(t.Root()), (std::set<std::string>{"outside", "outside/precious", "outside/sub",
                                                       "outside/sub/more"}));

  // The selected item itself a link to a folder: only the link goes.
  t.Link(t.Path("outside"), "selected-link");
  RecordingView view2;
  DeleteWalk walk2(view2.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk2, t.Path("selected-link")), kStatusWalked); });
  EXPECT_EQ(walk2.fileCount + walk2.folderCount, 0);
  EXPECT_FALSE(Exists(t.Path("selected-link")));
  EXPECT_EQ(Listing(t.Root()).size(), 4u);
}

TEST(DeleteWalk, LinkLoopsAreRemovedWithoutBeingEntered) {
  vt::ScratchTree t;
  t.Folder("t");
  t.Folder("t/sub");
  t.Link(t.Path("t"), "t/sub/up");  // points at an ancestor
  t.Link("b", "t/a");               // a -> b -> a
  t.Link("a", "t/b");
  t.Link("self", "t/self");
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount, 4);
  EXPECT_EQ(walk.folderCount, 1);
  EXPECT_EQ(walk.FailedCount(), 0);
  EXPECT_TRUE(Listing(t.Root()).empty());
}

TEST(DeleteWalk, FailedRemovalsAreCountedAndTheFirstPathsKept) {
  vt::ScratchTree t;
  t.Folder("t");
  t.Folder("t/ro");
  t.File("t/ro/locked", 1);
  t.File("t/ro/ioerr", 1);
  t.File("t/free", 1);
  t.File("t/busy", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kUnlinkat, EACCES, "*/t/ro/locked");
  fake.Fail(FakeFileOps::kUnlinkat, EIO, "*/t/ro/ioerr");
  fake.Fail(FakeFileOps::kUnlinkat, EBUSY, "*/t/busy");
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  // locked, ioerr, busy, then ro and t (not empty).
  EXPECT_EQ(walk.FailedCount(), 5);
  std::set<std::string> failed;
  std::map<std::string, int> errors;
  for (const DeleteFailure& f : walk.Failures()) errors[f.path.substr(t.Root().size() + 1)] = f.error;
  EXPECT_EQ(errors["t/ro/locked"], EACCES);
  EXPECT_EQ(errors["t/ro/ioerr"], EIO);
  EXPECT_EQ(errors["t/busy"], EBUSY);
  EXPECT_EQ(errors["t/ro"], ENOTEMPTY);
  EXPECT_EQ(errors["t"], ENOTEMPTY);
  EXPECT_EQ(Listing(t.Root()), (std::set<std::string>{"t", "t/ro", "t/ro/locked", "t/ro/ioerr",
                                                       "t/busy"}));
}

TEST(DeleteWalk, AReadOnlyVolumeFailsEveryRemovalAndOnlyTheFirstFewPathsAreKept) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int i = 0; i < 12; ++i) t.File("t/f" + std::to_string(i), 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kUnlinkat, EROFS);
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { DeleteAll(walk, t.Path("t")); });
  EXPECT_EQ(walk.FailedCount(), 13);
  ASSERT_EQ(walk.Failures().size(), static_cast<size_t>(DeleteWalk::kFailuresKept));
  for (const DeleteFailure& f : walk.Failures()) EXPECT_EQ(f.error, EROFS);
  EXPECT_EQ(Listing(t.Path("t")).size(), 12u);
}

TEST(DeleteWalk, ATenLevelTreeGoesContentsFirstAndTheSelectedFolderLast) {
  vt::ScratchTree t;
  std::string rel = "t";
  t.Folder(rel);
  for (int level = 1; level <= 10; ++level) {
    t.File(rel + "/file" + std::to_string(level), 1);
    rel += "/d" + std::to_string(level);
    t.Folder(rel);
  }
  FakeFileOps fake;
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount, 10);
  EXPECT_EQ(walk.folderCount, 10);
  EXPECT_FALSE(Exists(t.Path("t")));
  std::vector<std::string> removals;
  for (const std::string& c : fake.Calls())
    if (c.rfind("unlinkat ", 0) == 0) removals.push_back(c.substr(9 + t.Root().size() + 1));
  ASSERT_EQ(removals.size(), 21u);
  // Every item goes after everything inside it, and exactly once.
  for (size_t i = 0; i < removals.size(); ++i)
    for (size_t j = i + 1; j < removals.size(); ++j) {
      EXPECT_NE(removals[i], removals[j]);
      EXPECT_NE(removals[j].rfind(removals[i] + "/", 0), 0u)
          << removals[i] << " removed before " << removals[j] << " inside it";
    }
  EXPECT_EQ(removals.back(), "t");
}

TEST(DeleteWalk, AMountPointInsideIsNeitherEnteredNorRemoved) {
  vt::ScratchTree t;
  t.Folder("t");
  t.File("t/a", 1);
  t.Folder("t/mnt");
  t.File("t/mnt/other-volume-file", 1);
  t.Folder("t/mnt/deeper");
  FakeFileOps fake;
  fake.SetDevice("*/t/mnt*", 0xbeef);
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount, 1);
  EXPECT_EQ(walk.folderCount, 1);  // counted, not entered
  EXPECT_EQ(Listing(t.Root()), (std::set<std::string>{"t", "t/mnt", "t/mnt/other-volume-file",
                                                       "t/mnt/deeper"}));
  ASSERT_EQ(walk.FailedCount(), 2);  // the mount point, and t that still holds it
  EXPECT_EQ(walk.Failures()[0].path, t.Path("t/mnt"));
  EXPECT_EQ(walk.Failures()[0].error, EXDEV);
  EXPECT_EQ(walk.Failures()[1].path, t.Path("t"));
  for (const std::string& c : fake.Calls()) {
    EXPECT_EQ(c.find("other-volume-file"), std::string::npos) << c;
    EXPECT_NE(c, "opendir " + t.Path("t/mnt"));
  }
}

TEST(DeleteWalk, ASelectedMountPointIsLeftAlone) {
  vt::ScratchTree t;
  t.Folder("mounted");
  t.File("mounted/x", 1);
  FakeFileOps fake;
  fake.SetDevice("*/mounted*", 0xbeef);
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("mounted")), kStatusWalked); });
  EXPECT_EQ(walk.fileCount + walk.folderCount, 0);
  ASSERT_EQ(walk.FailedCount(), 1);
  EXPECT_EQ(walk.Failures()[0].error, EXDEV);
  EXPECT_EQ(Listing(t.Root()), (std::set<std::string>{"mounted", "mounted/x"}));
  EXPECT_EQ(fake.Count(FakeFileOps::kUnlinkat), 0);
}

TEST(DeleteWalk, CancelWhileCountingRemovesNothing) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int i = 0; i < 20; ++i) t.File("t/f" + std::to_string(i), 1);
  const std::set<std::string> before = Listing(t.Root());
  FakeFileOps fake;
  RecordingView view;
  view.cancelAt = 5;
  DeleteWalk walk(view.Hooks());
  std::string out = Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusStopped); });
  EXPECT_EQ(walk.status, kStatusStopped);
  EXPECT_EQ(walk.fileCount, 4);  // the fifth question stopped it
  // Once stopped, the deleting does not start, even when asked.
  out += Quiet([&] { EXPECT_EQ(walk.DeleteContents(t.Path("t")), kStatusStopped); });
  EXPECT_EQ(out, "Delete Path = " + t.Path("t") + "\n");
  EXPECT_EQ(fake.Count(FakeFileOps::kUnlinkat), 0);
  EXPECT_EQ(Listing(t.Root()), before);
}

TEST(DeleteWalk, CancelWhileDeletingKeepsWhatWasRemovedAndLeavesTheRest) {
  vt::ScratchTree t;
  t.Folder("t");
  t.Folder("t/sub");
  for (int i = 0; i < 10; ++i) {
    t.File("t/f" + std::to_string(i), 1);
    t.File("t/sub/g" + std::to_string(i), 1);
  }
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(walk.Count(t.Path("t")), kStatusWalked); });
  view.cancelAt = view.questions + 8;  // the 8th entry of the deleting
  Quiet([&] { EXPECT_EQ(walk.DeleteContents(t.Path("t")), kStatusStopped); });
  EXPECT_EQ(walk.status, kStatusStopped);
  const std::set<std::string> left = Listing(t.Path("t"));
  ASSERT_FALSE(view.removed.empty());
  for (const std::string& gone : view.removed) EXPECT_FALSE(Exists(gone)) << gone;
  EXPECT_EQ(left.size() + view.removed.size(), 21u);
  EXPECT_TRUE(Exists(t.Path("t")));
  EXPECT_EQ(walk.FailedCount(), 0);
}

TEST(DeleteWalk, ASingleFileWritesItsLineAndTheFinalRemovalFindsNothingHarmlessly) {
  vt::ScratchTree t;
  t.File("it's a (file).txt", 3);
  t.File("other", 1);
  FakeFileOps fake;
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  const std::string p = t.Path("it's a (file).txt");
  const std::string out = Quiet([&] { EXPECT_EQ(DeleteAll(walk, p), kStatusWalked); });
  const std::string e = ShellEscaped(p);
  EXPECT_EQ(e, t.Root() + "/it\\'s\\ a\\ \\(file\\).txt");
  EXPECT_EQ(out, "Delete Path = " + p + "\ndelete file = " + e + ";\n delete file order is rm -f " +
                     e + "\n");
  EXPECT_EQ(walk.fileCount + walk.folderCount, 0);
  EXPECT_EQ(walk.FailedCount(), 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kUnlinkat), 1);  // the final removal finds it gone
  EXPECT_EQ(view.removed, std::vector<std::string>{p});
  EXPECT_EQ(view.gauge, (std::vector<int>{1, 100}));  // m_step 0: a step at the call's start
  EXPECT_EQ(Listing(t.Root()), std::set<std::string>{"other"});
}

TEST(DeleteWalk, ASmallTreeWritesTheLinesInOrderAndStepsTheGaugeOnEveryCallAndEntry) {
  vt::ScratchTree t;
  t.Folder("t");
  t.File("t/a b", 1);
  t.File("t/c$d", 1);
  t.Folder("t/sub dir");
  t.File("t/sub dir/x", 1);
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  const std::string root = t.Path("t");
  std::string expected = "Delete Path = " + root + "\n";
  int steps = 1;
  std::function<void(const std::string&)> folder = [&](const std::string& path) {
    for (const std::string& n : DirectoryOrder(path)) {
      const std::string child = path + "/" + n;
      ++steps;
      expected += "delete dir = " + child + "\n ";
      struct stat64 st;
      lstat64(child.c_str(), &st);
      if (S_ISDIR(st.st_mode)) {
        expected += "Delete Path = " + child + "\n";
        ++steps;
        folder(child);
      } else {
        expected += "delete file of dir order is :rm -f " + ShellEscaped(child);
      }
    }
  };
  folder(root);
  const std::string out = Quiet([&] { EXPECT_EQ(DeleteAll(walk, root), kStatusWalked); });
  EXPECT_EQ(out, expected);
  EXPECT_NE(out.find("rm -f " + root + "/a\\ b"), std::string::npos);
  EXPECT_NE(out.find("rm -f " + root + "/c$d"), std::string::npos);  // "$" is not escaped
  EXPECT_EQ(walk.step, 0);
  EXPECT_EQ(steps, 6);
  ASSERT_EQ(view.gauge.size(), 7u);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(view.gauge[i], i + 1);
  EXPECT_EQ(view.gauge.back(), 100);
  EXPECT_FALSE(Exists(root));
}

TEST(DeleteWalk, TheGaugeMovesOnceEveryStepItemsWithAHundredOrMore) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int i = 0; i < 250; ++i) t.File("t/f" + std::to_string(i), 0);
  RecordingView view;
  DeleteWalk walk(view.Hooks());
  Quiet([&] { EXPECT_EQ(DeleteAll(walk, t.Path("t")), kStatusWalked); });
  EXPECT_EQ(walk.step, 2);  // 250 / 100
  // Before entry k (from 1) the count since the last step is (k - 1) minus
  // what earlier steps reset: a step before entries 3, 5, ..., 249.
  ASSERT_EQ(view.gauge.size(), 125u);
  EXPECT_EQ(view.gauge[123], 124);
  EXPECT_EQ(view.gauge.back(), 100);
}

}  // namespace
