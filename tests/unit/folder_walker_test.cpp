// The one folder walk: what it reports, in which order, how the callback
// steers it, links, devices and errors; every call through the
// file-operations table (the test double counts and breaks them).
#include <gtest/gtest.h>

#include <dirent.h>
#include <errno.h>

#include <string>
#include <vector>

#include "common/fake_fileops.h"
#include "fileops/FolderWalker.h"
#include "fileops_test_tree.h"

namespace {

using vt::FakeFileOps;
using vt::DirectoryOrder;

struct Seen {
  int event;
  std::string rel;  // path below the root
  int kind;
  int depth;
  uint64_t size;
  bool viaLink, loop, otherDevice;
  int error;
};

// Walks root and records every report (paths relative to root).
std::vector<Seen> Walk(const std::string& root, FolderWalkOptions options, int* result = nullptr,
                       const std::function<int(const FolderWalkEntry&)>& answer = nullptr) {
  std::vector<Seen> seen;
  const int r = WalkFolder(root.c_str(), options, [&](const FolderWalkEntry& e) {
    std::string p = e.path;
    std::string rel = p.compare(0, root.size(), root) == 0 ? p.substr(root.size()) : p;
    if (!rel.empty() && rel[0] == '/') rel.erase(0, 1);
    seen.push_back({e.event, rel, e.kind, e.depth, e.size, e.viaLink, e.loop, e.otherDevice,
                    e.error});
    return answer ? answer(e) : kWalkContinue;
  });
  if (result != nullptr) *result = r;
  return seen;
}

std::vector<std::string> Entered(const std::vector<Seen>& seen) {
  std::vector<std::string> out;
  for (const Seen& s : seen)
    if (s.event == kWalkEnter) out.push_back(s.rel);
  return out;
}

const Seen* Find(const std::vector<Seen>& seen, const std::string& rel, int event = kWalkEnter) {
  for (const Seen& s : seen)
    if (s.rel == rel && s.event == event) return &s;
  return nullptr;
}

TEST(FolderWalker, EntriesInDirectoryOrderHiddenIncludedFoldersBeforeAndAfterTheirContents) {
  vt::ScratchTree t;
  for (const char* n : {"zeta", "alpha", ".hidden", "mid", "b.txt", ".dot.txt"}) {
    if (std::string(n).find(".txt") != std::string::npos)
      t.File(n, 3);
    else
      t.Folder(n);
  }
  t.File("alpha/inner.bin", 1234);
  t.File("alpha/.secret", 1);
  int result = -5;
  const auto seen = Walk(t.Root(), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkDone);

  std::vector<std::string> expected;
  for (const std::string& n : DirectoryOrder(t.Root())) {
    expected.push_back(n);
    if (n == "alpha")
      for (const std::string& m : DirectoryOrder(t.Path("alpha"))) expected.push_back("alpha/" + m);
  }
  EXPECT_EQ(Entered(seen), expected);
  ASSERT_NE(Find(seen, ".hidden"), nullptr);
  ASSERT_NE(Find(seen, ".dot.txt"), nullptr);
  EXPECT_EQ(Find(seen, "."), nullptr);
  EXPECT_EQ(Find(seen, ".."), nullptr);

  const Seen* inner = Find(seen, "alpha/inner.bin");
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->kind, kWalkFile);
  EXPECT_EQ(inner->size, 1234u);
  EXPECT_EQ(inner->depth, 2);
  EXPECT_EQ(Find(seen, "alpha")->kind, kWalkFolder);
  EXPECT_EQ(Find(seen, "alpha")->depth, 1);

  // Every folder is left once, after everything below it.
  int leaveAlpha = -1, lastBelowAlpha = -1;
  int leaves = 0;
  for (size_t i = 0; i < seen.size(); ++i) {
    if (seen[i].event == kWalkLeave) ++leaves;
    if (seen[i].event == kWalkLeave && seen[i].rel == "alpha") leaveAlpha = static_cast<int>(i);
    if (seen[i].rel.rfind("alpha/", 0) == 0) lastBelowAlpha = static_cast<int>(i);
  }
  EXPECT_EQ(leaves, 4);  // zeta, alpha, .hidden, mid
  EXPECT_GT(leaveAlpha, lastBelowAlpha);
}

TEST(FolderWalker, NoFolderHandleIsOpenWhileTheCallbackRuns) {
  vt::ScratchTree t;
  t.Folder("a");
  t.Folder("a/b");
  t.File("a/b/c", 1);
  t.File("a/d", 1);
  FakeFileOps fake;
  int visits = 0, openDuringVisit = 0;
  WalkFolder(t.Root().c_str(), FolderWalkOptions(), [&](const FolderWalkEntry&) {
    ++visits;
    openDuringVisit += fake.OpenFolders() + fake.OpenDescriptors();
    return kWalkContinue;
  });
  EXPECT_EQ(visits, 4 + 2);  // four entries, two folders left
  EXPECT_EQ(openDuringVisit, 0);
  EXPECT_EQ(fake.Count(FakeFileOps::kOpendir), 3);
  EXPECT_EQ(fake.Count(FakeFileOps::kClosedir), 3);
  EXPECT_EQ(fake.OpenFolders(), 0);
}

TEST(FolderWalker, StopEndsTheWholeWalkAtOnce) {
  vt::ScratchTree t;
  t.Folder("a");
  for (int i = 0; i < 5; ++i) t.File("a/f" + std::to_string(i), 1);
  t.Folder("b");
  t.File("b/g", 1);
  FakeFileOps fake;
  int result = -5;
  int files = 0;
  size_t callsAtStop = 0;
  const auto seen = Walk(t.Root(), FolderWalkOptions(), &result, [&](const FolderWalkEntry& e) {
    if (e.kind == kWalkFile && e.event == kWalkEnter && ++files == 2) {
      callsAtStop = fake.Calls().size();
      return kWalkStop;
    }
    return kWalkContinue;
  });
  EXPECT_EQ(result, kWalkStopped);
  EXPECT_EQ(files, 2);
  EXPECT_EQ(seen.back().kind, kWalkFile) << "nothing reported after the stop";
  EXPECT_EQ(seen.back().event, kWalkEnter);
  EXPECT_EQ(fake.OpenFolders(), 0);
  // No file or folder was touched after the stop.
  EXPECT_EQ(fake.Calls().size(), callsAtStop);
}

TEST(FolderWalker, SkipDoesNotEnterTheFolderButTheWalkGoesOn) {
  vt::ScratchTree t;
  t.Folder("skipme");
  t.File("skipme/inside", 1);
  t.Folder("enter");
  t.File("enter/inside", 1);
  FakeFileOps fake;
  const auto seen = Walk(t.Root(), FolderWalkOptions(), nullptr, [](const FolderWalkEntry& e) {
    return std::string(e.name) == "skipme" ? kWalkSkip : kWalkContinue;
  });
  EXPECT_EQ(Find(seen, "skipme/inside"), nullptr);
  EXPECT_NE(Find(seen, "enter/inside"), nullptr);
  EXPECT_NE(Find(seen, "skipme", kWalkLeave), nullptr) << "a skipped folder is still left";
  for (const std::string& c : fake.Calls()) EXPECT_EQ(c.find("opendir " + t.Path("skipme")), std::string::npos);
}

TEST(FolderWalker, LinksAreNotFollowedUnlessAskedAndNeverLoop) {
  vt::ScratchTree t;
  t.Folder("real");
  t.File("real/file", 10);
  t.Folder("outside");
  t.File("outside/target.bin", 77);
  t.Folder("tree");
  t.Link(t.Path("outside"), "tree/to_outside");
  t.Link(t.Path("outside/target.bin"), "tree/to_file");
  t.Link("..", "tree/up");          // a loop back to the root
  t.Link(".", "tree/self");         // a loop to its own folder
  t.Link(t.Path("nowhere"), "tree/dangling");

  // Not followed: every link is a link, nothing below it is visited.
  int result = -5;
  auto seen = Walk(t.Path("tree"), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkDone);
  EXPECT_EQ(Entered(seen).size(), 5u);
  for (const Seen& s : seen) {
    EXPECT_EQ(s.kind, kWalkLink) << s.rel;
    EXPECT_EQ(s.depth, 1) << s.rel;
  }

  // Followed: targets count as what they are; loops are reported, not entered.
  FolderWalkOptions follow;
  follow.followLinks = true;
  seen = Walk(t.Path("tree"), follow, &result);
  EXPECT_EQ(result, kWalkDone);
  const Seen* out = Find(seen, "to_outside");
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(out->kind, kWalkFolder);
  EXPECT_TRUE(out->viaLink);
  EXPECT_FALSE(out->loop);
  ASSERT_NE(Find(seen, "to_outside/target.bin"), nullptr);
  EXPECT_EQ(Find(seen, "to_outside/target.bin")->size, 77u);
  EXPECT_EQ(Find(seen, "to_file")->kind, kWalkFile);
  EXPECT_EQ(Find(seen, "to_file")->size, 77u);
  EXPECT_TRUE(Find(seen, "self")->loop);
  EXPECT_EQ(Find(seen, "self")->kind, kWalkFolder);
  const Seen* dangling = Find(seen, "dangling");
  ASSERT_NE(dangling, nullptr);
  EXPECT_EQ(dangling->kind, kWalkLink);
  EXPECT_FALSE(dangling->viaLink);
  // "up" leads to the folder above the root, which is entered; inside it the
  // root itself is met again and is not entered a second time.
  const Seen* upTree = Find(seen, "up/tree");
  ASSERT_NE(upTree, nullptr);
  EXPECT_TRUE(upTree->loop);
  EXPECT_EQ(Find(seen, "up/tree/up"), nullptr);
  for (const Seen& s : seen) EXPECT_LE(s.depth, 3) << s.rel;
}

TEST(FolderWalker, OneDeviceNeverEntersAFolderOfAnotherDevice) {
  vt::ScratchTree t;
  t.Folder("vol");
  t.File("vol/a", 1);
  t.Folder("vol/mountpoint");
  t.File("vol/mountpoint/foreign", 1);
  FakeFileOps fake;
  fake.SetDevice("*/vol/mountpoint*", 0xbeef);

  FolderWalkOptions stay;
  stay.oneDevice = true;
  auto seen = Walk(t.Path("vol"), stay);
  const Seen* mp = Find(seen, "mountpoint");
  ASSERT_NE(mp, nullptr);
  EXPECT_TRUE(mp->otherDevice);
  EXPECT_EQ(Find(seen, "mountpoint/foreign"), nullptr);
  EXPECT_NE(Find(seen, "a"), nullptr);

  // Without the rule the walk goes in (and still says where it went).
  seen = Walk(t.Path("vol"), FolderWalkOptions());
  EXPECT_NE(Find(seen, "mountpoint/foreign"), nullptr);
  EXPECT_TRUE(Find(seen, "mountpoint")->otherDevice);
}

TEST(FolderWalker, AnUnreadableSubfolderIsReportedAndTheWalkGoesOn) {
  vt::ScratchTree t;
  t.Folder("a");
  t.File("a/1", 1);
  t.Folder("locked");
  t.File("locked/hidden", 1);
  t.Folder("z");
  t.File("z/2", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kOpendir, EACCES, "*/locked");
  int result = -5;
  const auto seen = Walk(t.Root(), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkDone);
  const Seen* err = Find(seen, "locked", kWalkError);
  ASSERT_NE(err, nullptr);
  EXPECT_EQ(err->error, EACCES);
  EXPECT_EQ(err->kind, kWalkFolder);
  EXPECT_EQ(err->depth, 1);
  EXPECT_NE(Find(seen, "locked"), nullptr) << "the folder itself is reported";
  EXPECT_EQ(Find(seen, "locked/hidden"), nullptr);
  EXPECT_NE(Find(seen, "a/1"), nullptr);
  EXPECT_NE(Find(seen, "z/2"), nullptr);
}

TEST(FolderWalker, AnEntryThatCannotBeExaminedAndAReadErrorAreReported) {
  vt::ScratchTree t;
  t.File("ok", 1);
  t.File("bad", 1);
  t.Folder("sub");
  t.File("sub/x", 1);
  FakeFileOps fake;
  fake.Fail(FakeFileOps::kLstat, EIO, "*/bad");
  fake.Fail(FakeFileOps::kReaddir, ENOMEM, "*/sub", 1);
  const auto seen = Walk(t.Root(), FolderWalkOptions());
  const Seen* bad = Find(seen, "bad", kWalkError);
  ASSERT_NE(bad, nullptr);
  EXPECT_EQ(bad->error, EIO);
  EXPECT_EQ(Find(seen, "bad"), nullptr);
  EXPECT_NE(Find(seen, "ok"), nullptr);
  const Seen* sub = Find(seen, "sub", kWalkError);
  ASSERT_NE(sub, nullptr);
  EXPECT_EQ(sub->error, ENOMEM);
  EXPECT_EQ(fake.OpenFolders(), 0) << "a read error still closes the folder";
}

TEST(FolderWalker, RootThatIsAFileMissingOrUnreadable) {
  vt::ScratchTree t;
  t.File("file", 9);
  int result = -5;
  auto seen = Walk(t.Path("file"), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkDone);
  EXPECT_TRUE(seen.empty());

  seen = Walk(t.Path("missing"), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkFailed);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].event, kWalkError);
  EXPECT_EQ(seen[0].error, ENOENT);
  EXPECT_EQ(seen[0].depth, 0);

  FakeFileOps fake;
  fake.Fail(FakeFileOps::kOpendir, EACCES);
  seen = Walk(t.Root(), FolderWalkOptions(), &result);
  EXPECT_EQ(result, kWalkFailed);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].error, EACCES);

  FolderWalkEntry e;
  struct stat64 info;
  const std::string file = t.Path("file");  // e.path and e.name point into it
  ASSERT_EQ(DescribePath(file.c_str(), FolderWalkOptions(), &e, &info), 0);
  EXPECT_EQ(e.kind, kWalkFile);
  EXPECT_EQ(e.size, 9u);
  EXPECT_STREQ(e.name, "file");
  EXPECT_EQ(DescribePath(t.Path("missing").c_str(), FolderWalkOptions(), &e, &info), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST(FolderWalker, RootGivenWithATrailingSlash) {
  vt::ScratchTree t;
  t.File("a", 1);
  std::vector<std::string> paths;
  WalkFolder((t.Root() + "/").c_str(), FolderWalkOptions(), [&](const FolderWalkEntry& e) {
    paths.push_back(e.path);
    return kWalkContinue;
  });
  ASSERT_EQ(paths.size(), 1u);
  EXPECT_EQ(paths[0], t.Path("a"));
}

TEST(FolderWalker, TenLevelsDeep) {
  vt::ScratchTree t;
  std::string rel;
  for (int i = 0; i < 10; ++i) {
    rel += (rel.empty() ? "" : "/") + std::string("level") + std::to_string(i);
    t.Folder(rel);
    t.File(rel + "/f", static_cast<size_t>(i + 1));
  }
  int deepest = 0, files = 0;
  uint64_t bytes = 0;
  const auto seen = Walk(t.Root(), FolderWalkOptions());
  for (const Seen& s : seen) {
    if (s.event != kWalkEnter) continue;
    if (s.depth > deepest) deepest = s.depth;
    if (s.kind == kWalkFile) {
      ++files;
      bytes += s.size;
    }
  }
  EXPECT_EQ(deepest, 11);  // the file in the tenth folder
  EXPECT_EQ(files, 10);
  EXPECT_EQ(bytes, 55u);
  EXPECT_NE(Find(seen, rel + "/f"), nullptr);
}

}  // namespace
