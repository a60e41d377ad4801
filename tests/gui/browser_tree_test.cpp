// The source directory tree driven through real windows: volume roots from
// the inventory, lazy expansion in directory order, collapse, path search,
// the item menu, the codes posted and the list following the tree.
#include "browser_env.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include <wx/settings.h>

#include "common/stdout_capture.h"

using vt::BrowserWindow;
using vt::TestVolumes;

namespace {

std::vector<wxString> DirectoryOrderOfFolders(const std::string& path) {
  std::vector<wxString> v;
  DIR* d = opendir(path.c_str());
  while (struct dirent* e = readdir(d)) {
    std::string n = e->d_name;
    if (n == "." || n == "..") continue;
    struct stat st;
    if (stat((path + "/" + n).c_str(), &st) == 0 && S_ISDIR(st.st_mode))
      v.push_back(wxString::FromUTF8(n.c_str()));
  }
  closedir(d);
  return v;
}

class BrowserTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    volumes.reset(new TestVolumes);
    ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
    for (const char* d : {"/mnt/C/zeta", "/mnt/C/alpha", "/mnt/C/.dotdir", "/mnt/C/mid",
                          "/mnt/C/alpha/inside", "/mnt/C/a", "/mnt/C/ab"})
      mkdir(d, 0755);
    vt::WriteFile("/mnt/C/file.txt", "f");
    vt::WriteFile("/mnt/C/alpha/one.bin", std::string(1000, '1'));
    vt::WriteFile("/mnt/C/alpha/inside/two.bin", std::string(24, '2'));
    win.reset(new BrowserWindow);
  }
  void TearDown() override {
    win.reset();
    volumes.reset();
  }
  wxTreeItemId Root() const { return win->T()->GetRootItem(); }
  wxTreeItemId C() const { return win->TreeChild(Root(), "C:"); }

  std::unique_ptr<TestVolumes> volumes;
  std::unique_ptr<BrowserWindow> win;
};

}  // namespace

TEST_F(BrowserTreeTest, VolumeRootsComeFromTheInventory) {
  EXPECT_EQ(win->TreeChildren(Root()), (std::vector<wxString>{"C:", "D:", "E:"}));
  EXPECT_EQ(win->T()->GetItemText(Root()), "Sections");
  const char* paths[] = {"/mnt/C", "/mnt/D", "/mnt/E"};
  const int images[] = {2, 2, 3};
  int i = 0;
  wxTreeItemIdValue cookie;
  for (wxTreeItemId c = win->T()->GetFirstChild(Root(), cookie); c.IsOk();
       c = win->T()->GetNextChild(Root(), cookie), ++i) {
    my_TreeItemData* d = win->TreeData(c);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->m_path, paths[i]);
    EXPECT_TRUE(d->m_isSection);
    EXPECT_TRUE(d->m_isDir);
    EXPECT_FALSE(d->m_isExpanded);
    EXPECT_EQ(d->m_partitionIndex, i);
    EXPECT_EQ(win->T()->GetItemImage(c), images[i]);
    EXPECT_TRUE(win->T()->ItemHasChildren(c));
  }
  EXPECT_EQ(win->tree->GetImageList()->GetImageCount(), 4);
  EXPECT_EQ(win->tree->GetPartition_index("/mnt/D/x/y"), 1);
  EXPECT_EQ(win->tree->GetPartition_index("/mnt/Q"), -1);
}

TEST_F(BrowserTreeTest, PrintsTheVolumeCount) {
  vt::StdoutCapture cap;
  win->tree->UpdateMyDirTreeCtrl();
  const std::string out = cap.Stop();
  EXPECT_NE(out.find("asldkf = 3 \n"), std::string::npos) << out;
  EXPECT_EQ(win->TreeChildren(Root()), (std::vector<wxString>{"C:", "D:", "E:"}));
}

TEST(BrowserTreeEmpty, NoVolumesGivesAnEmptyTreeAndStillPrints) {
  ASSERT_TRUE(vt::InPrivateMnt());
  TestVolumes none(false);
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);
  vt::StdoutCapture cap;
  std::unique_ptr<BrowserWindow> win(new BrowserWindow);
  const std::string out = cap.Stop();
  EXPECT_NE(out.find("asldkf = 0 \n"), std::string::npos) << out;
  EXPECT_TRUE(win->T()->GetRootItem().IsOk());
  EXPECT_EQ(win->T()->GetChildrenCount(win->T()->GetRootItem(), false), 0u);
  EXPECT_EQ(win->Rows(), 0);
}

TEST_F(BrowserTreeTest, ExpandingListsFoldersInDirectoryOrderAndFillsTheList) {
  win->T()->SelectItem(C());
  win->T()->Expand(C());
  vt::Pump(100);
  const std::vector<wxString> want = DirectoryOrderOfFolders("/mnt/C");
  EXPECT_EQ(win->TreeChildren(C()), want);
  EXPECT_NE(std::find(want.begin(), want.end(), ".dotdir"), want.end());
  EXPECT_EQ(win->TreeChild(C(), "file.txt").IsOk(), false) << "files are not shown";
  wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  ASSERT_TRUE(alpha.IsOk());
  EXPECT_EQ(win->TreeData(alpha)->m_path, "/mnt/C/alpha");
  EXPECT_EQ(win->T()->GetItemImage(alpha), 0);
  EXPECT_EQ(win->T()->GetItemImage(alpha, wxTreeItemIcon_Expanded), 1);
  EXPECT_TRUE(win->T()->ItemHasChildren(alpha));
  EXPECT_FALSE(win->T()->ItemHasChildren(win->TreeChild(C(), "zeta")));
  // The list shows the volume's folder, the path field its display form.
  EXPECT_EQ(win->list->GetCurrentListctrlPath(), "/mnt/C/");
  EXPECT_TRUE(win->list->GetLoadedFromTree());
  EXPECT_NE(win->RowOf("file.txt"), -1);
  EXPECT_EQ(win->path->GetValue(), "C");
}

TEST_F(BrowserTreeTest, CollapseAndExpandAgainRereadsTheFolder) {
  win->T()->SelectItem(C());
  win->T()->Expand(C());
  vt::Pump(50);
  ASSERT_FALSE(win->TreeChild(C(), "added").IsOk());
  mkdir("/mnt/C/added", 0755);
  win->T()->Collapse(C());
  vt::Pump(50);
  EXPECT_FALSE(win->TreeData(C())->m_isExpanded);
  EXPECT_EQ(win->T()->GetChildrenCount(C(), false), 0u);
  EXPECT_TRUE(win->T()->ItemHasChildren(C()));
  win->T()->Expand(C());
  vt::Pump(50);
  EXPECT_TRUE(win->TreeChild(C(), "added").IsOk());
  EXPECT_NE(win->RowOf("added"), -1);
}

TEST_F(BrowserTreeTest, ActivatingAFolderByDoubleClickShowsItInTheList) {
  win->T()->Expand(C());
  vt::Pump(50);
  wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  ASSERT_TRUE(alpha.IsOk());
  win->DoubleClick(win->TreeItemPoint(alpha));
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/alpha/"; }));
  EXPECT_EQ(win->T()->GetSelection(), alpha);
  EXPECT_TRUE(win->TreeData(alpha)->m_isExpanded);
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "inside", "one.bin"}));
  EXPECT_EQ(win->path->GetValue(), "C:\\alpha");
  // A folder without subfolders is listed by the activation itself.
  wxTreeItemId zeta = win->TreeChild(C(), "zeta");
  win->DoubleClick(win->TreeItemPoint(zeta));
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/zeta/"; }));
  EXPECT_EQ(win->Column0(), std::vector<wxString>{".."});
}

TEST_F(BrowserTreeTest, EnterOnAFolderOpensItInTheList) {
  win->T()->Expand(C());
  vt::Pump(50);
  const wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  ASSERT_TRUE(alpha.IsOk());
  win->Click(win->TreeItemPoint(alpha));
  ASSERT_EQ(win->T()->GetSelection(), alpha);
  win->T()->SetFocus();
  vt::Pump(30);
  win->Key(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/alpha/"; }));
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "inside", "one.bin"}));
  EXPECT_EQ(win->path->GetValue(), "C:\\alpha");
  EXPECT_TRUE(win->TreeData(alpha)->m_isExpanded);
}

TEST_F(BrowserTreeTest, BusyBoxOnExpandingAndOnEveryOtherCollapse) {
  {
    vt::BusyBoxWatcher busy;
    win->T()->SelectItem(C());
    win->T()->Expand(C());
    vt::Pump(50);
    ASSERT_EQ(busy.seen.size(), 1u);
    EXPECT_EQ(busy.seen[0].text, "Please wait, working...");
    EXPECT_EQ(busy.seen[0].parent, win->splitter) << "the tree's parent";
    EXPECT_EQ(busy.seen[0].colour, *wxWHITE);
    EXPECT_TRUE(vt::BusyBoxWatcher::NoneShown());
  }
  // Four collapses: the box flashes on every other one.
  std::vector<size_t> flashes;
  for (int i = 0; i < 4; ++i) {
    vt::BusyBoxWatcher busy;
    win->T()->Collapse(C());
    vt::Pump(30);
    flashes.push_back(busy.seen.size());
    EXPECT_TRUE(vt::BusyBoxWatcher::NoneShown());
    win->T()->Expand(C());
    vt::Pump(30);
  }
  EXPECT_TRUE(flashes == (std::vector<size_t>{1, 0, 1, 0}) ||
              flashes == (std::vector<size_t>{0, 1, 0, 1}))
      << flashes[0] << flashes[1] << flashes[2] << flashes[3];
}

TEST_F(BrowserTreeTest, TreeFollowsTheListAndTheListFollowsTheTree) {
  win->Activate(0);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/"; }));
  win->Activate(win->RowOf("alpha"));
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/alpha/"; }));
  wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  ASSERT_TRUE(alpha.IsOk());
  EXPECT_EQ(win->T()->GetSelection(), alpha);
  EXPECT_TRUE(win->T()->IsExpanded(alpha));
  EXPECT_FALSE(win->tree->GetIsUpdata());
  // The expansion the list caused did not reload the list from the tree,
  // and the list cleared the flag the tree set for it.
  EXPECT_FALSE(win->list->GetLoadedFromTree());
  EXPECT_FALSE(win->list->GetIsUpdataTreeCtrl());
  EXPECT_EQ(win->path->GetValue(), "C:\\alpha");
  // Now the tree drives: expanding "inside" via its item lists it.
  wxTreeItemId inside = win->TreeChild(alpha, "inside");
  ASSERT_TRUE(inside.IsOk());
  win->DoubleClick(win->TreeItemPoint(inside));
  ASSERT_TRUE(vt::PumpUntil(
      [&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/alpha/inside/"; }));
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "two.bin"}));
}

TEST_F(BrowserTreeTest, FindChildMatchesWholeComponents) {
  // Folders holding only "a" and only "ab": whatever order the directory
  // returns, a search for one never lands on the other.
  for (const char* d : {"/mnt/C/onlya", "/mnt/C/onlya/a", "/mnt/C/onlyab", "/mnt/C/onlyab/ab"})
    mkdir(d, 0755);
  win->T()->Expand(C());
  vt::Pump(50);
  const wxTreeItemId onlyA = win->TreeChild(C(), "onlya");
  const wxTreeItemId onlyAb = win->TreeChild(C(), "onlyab");
  ASSERT_TRUE(onlyA.IsOk());
  ASSERT_TRUE(onlyAb.IsOk());
  win->T()->Expand(onlyA);
  win->T()->Expand(onlyAb);
  vt::Pump(50);
  ASSERT_EQ(win->TreeChildren(onlyA), std::vector<wxString>{"a"});
  ASSERT_EQ(win->TreeChildren(onlyAb), std::vector<wxString>{"ab"});
  bool untouched = true;
  EXPECT_FALSE(win->tree->FindChild(onlyA, "/mnt/C/onlya/ab", untouched).IsOk());
  EXPECT_FALSE(win->tree->FindChild(onlyAb, "/mnt/C/onlyab/a", untouched).IsOk());
  EXPECT_TRUE(untouched);
  bool whole = false;
  EXPECT_EQ(win->T()->GetItemText(win->tree->FindChild(onlyAb, "/mnt/C/onlyab/ab", whole)), "ab");
  EXPECT_TRUE(whole);
  // Beside each other, in either order.
  bool done = false;
  wxTreeItemId id = win->tree->FindChild(C(), "/mnt/C/ab", done);
  ASSERT_TRUE(id.IsOk());
  EXPECT_EQ(win->T()->GetItemText(id), "ab");
  EXPECT_TRUE(done);
  done = true;
  id = win->tree->FindChild(Root(), "/mnt/C/ab", done);
  EXPECT_EQ(win->T()->GetItemText(id), "C:");
  EXPECT_FALSE(done);
  done = true;
  EXPECT_FALSE(win->tree->FindChild(C(), "/mnt/C/abc", done).IsOk());
  EXPECT_TRUE(done) << "untouched without a match";
  id = win->tree->FindChild(C(), "\\mnt\\C\\a", done);
  EXPECT_EQ(win->T()->GetItemText(id), "a");
}

TEST_F(BrowserTreeTest, ExpandPathAndGetPath) {
  win->tree->SetIsUpdata(true);
  EXPECT_TRUE(win->tree->ExpandPath("/mnt/C/alpha/inside"));
  win->tree->SetIsUpdata(false);
  EXPECT_EQ(win->tree->GetPath(), "/mnt/C/alpha/inside");
  const wxTreeItemId sel = win->T()->GetSelection();
  EXPECT_FALSE(win->tree->ExpandPath("/mnt/Q/none"));
  EXPECT_EQ(win->T()->GetSelection(), sel);
}

TEST_F(BrowserTreeTest, DisplayFormOfPaths) {
  EXPECT_EQ(win->tree->CovertPath("/mnt/D/a/b"), "D:\\a\\b");
  EXPECT_EQ(win->tree->CovertPath("/mnt"), "/mnt");
  EXPECT_EQ(win->tree->CovertPath("/mnt/D"), "D");
}

TEST_F(BrowserTreeTest, ItemMenuOnFoldersOnly) {
  win->T()->Expand(C());
  vt::Pump(50);
  win->Click(win->TreeItemPoint(C()), wxMOUSE_BTN_RIGHT);
  EXPECT_EQ(win->tree->menus.popups, 0) << "no menu on a volume root";
  wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  win->Click(win->TreeItemPoint(alpha), wxMOUSE_BTN_RIGHT);
  ASSERT_EQ(win->tree->menus.popups, 1);
  EXPECT_EQ(win->tree->menus.ids, (std::vector<int>{MYCMD_TREE_COPY, MYCMD_TREE_SELECT_ALL,
                                                    wxID_SEPARATOR, MYCMD_TREE_PROPERTIES}));
  EXPECT_EQ(win->tree->menus.labels[0], "&Copy...");
  EXPECT_EQ(win->tree->menus.labels[1], "&Select All...");
  EXPECT_EQ(win->tree->menus.labels[3], "&Properties");
  EXPECT_EQ(win->tree->menus.enabled, (std::vector<bool>{true, false, true, true}));
  EXPECT_EQ(win->T()->GetSelection(), alpha);
  for (int id : {MYCMD_TREE_COPY, MYCMD_TREE_ABOUT, MYCMD_TREE_SELECT_ALL, MYCMD_TREE_PROPERTIES}) {
    win->codes.clear();
    wxCommandEvent ev(wxEVT_MENU, id);
    win->tree->GetEventHandler()->ProcessEvent(ev);
    EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(id); })) << id;
  }
}

TEST_F(BrowserTreeTest, SelectionPostsRootOrFolderOnlyAfterTheTreeHadFocus) {
  win->T()->Expand(C());
  vt::Pump(50);
  wxTreeItemId alpha = win->TreeChild(C(), "alpha");
  win->codes.clear();
  win->T()->SelectItem(alpha);
  vt::Pump(50);
  EXPECT_FALSE(win->Posted(MYCMD_TREE_ENABLE_COPY)) << "the tree has not had the focus";
  // A press on the tree: it becomes the last focused pane.
  win->Click(win->TreeItemPoint(C()));
  EXPECT_TRUE(win->tree->GetIsLastFocus_treectrl());
  EXPECT_FALSE(win->list->GetIsLastFocus_listctrl());
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_TREE_DISABLE_COPY); }));
  win->codes.clear();
  win->T()->SelectItem(alpha);
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_TREE_ENABLE_COPY); }));
  EXPECT_TRUE(win->tree->GetSelIsFolder());
  win->codes.clear();
  win->T()->SelectItem(C());
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_TREE_DISABLE_COPY); }));
  EXPECT_FALSE(win->tree->GetSelIsFolder());
  // SetFocus: the tree takes the focus flag from the list and posts again.
  win->list->SetIsLastFocus_listctrl(true);
  win->tree->SetIsLastFocus_treectrl(false);
  win->codes.clear();
  win->tree->SetFocus();
  EXPECT_TRUE(win->tree->GetIsLastFocus_treectrl());
  EXPECT_FALSE(win->list->GetIsLastFocus_listctrl());
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_TREE_DISABLE_COPY); }));
}

TEST_F(BrowserTreeTest, RebuildAfterRemountTakesTheNewVolumes) {
  win->T()->Expand(C());
  vt::Pump(50);
  g_AllDiskPartitionInf.UI_FreeMemory();
  EXPECT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);
  win->tree->UpdateMyDirTreeCtrl();
  EXPECT_EQ(win->T()->GetChildrenCount(Root(), false), 0u);
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  win->tree->UpdateMyDirTreeCtrl();
  EXPECT_EQ(win->TreeChildren(Root()), (std::vector<wxString>{"C:", "D:", "E:"}));
  EXPECT_EQ(win->tree->GetSectionPaths().GetCount(), 3u);
}

TEST_F(BrowserTreeTest, TotalSizeOfAFolderTree) {
  EXPECT_EQ(win->tree->Account_Dir_File_Size("/mnt/C/alpha"), 1024u);
  EXPECT_EQ(win->tree->Account_Dir_File_Size("/mnt/C/alpha/one.bin"), 1000u);
}

TEST_F(BrowserTreeTest, ItemDataOperations) {
  my_TreeItemData d("/mnt/C/alpha", "alpha", true, false, -1);
  EXPECT_TRUE(d.HasSubDirs());
  EXPECT_TRUE(d.HasFiles());
  my_TreeItemData z("/mnt/C/zeta", "zeta", true, false, -1);
  EXPECT_FALSE(z.HasSubDirs());
  EXPECT_FALSE(z.HasFiles());
  my_TreeItemData none("", "", true, false, -1);
  EXPECT_FALSE(none.HasSubDirs());
  my_TreeItemData gone("/mnt/C/not-there", "x", true, false, -1);
  EXPECT_FALSE(gone.HasSubDirs());
  EXPECT_FALSE(gone.m_isHidden);
  d.SetNewDirName("/mnt/C/other/name");
  EXPECT_EQ(d.m_path, "/mnt/C/other/name");
  EXPECT_EQ(d.m_name, "name");
}

TEST_F(BrowserTreeTest, InnerTreeStyleColoursFilterAndDefaultPath) {
  // The frame's style 0x90: directories only, sunken border.
  EXPECT_TRUE(win->T()->HasFlag(wxTR_HAS_BUTTONS));
  EXPECT_TRUE(win->T()->HasFlag(wxTR_HIDE_ROOT));
  EXPECT_TRUE(win->T()->HasFlag(wxTR_NO_LINES));
  EXPECT_FALSE(win->T()->HasFlag(wxTR_EDIT_LABELS));
  EXPECT_EQ(win->T()->GetWindowStyleFlag() & wxBORDER_MASK, long(wxBORDER_SUNKEN));
  EXPECT_EQ(win->T()->GetParent(), win->tree);
  EXPECT_EQ(win->tree->GetBackgroundColour(), wxSystemSettings::GetColour(wxSYS_COLOUR_3DFACE));
  EXPECT_EQ(win->tree->GetForegroundColour(),
            wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  // An empty filter becomes "*", and so does an index that selects nothing.
  EXPECT_EQ(win->tree->GetCurrentFilter(), "*");
  wxString spec, description;
  EXPECT_TRUE(win->tree->ExtractWildcard("Text|*.txt;*.text|All|*", 0, spec, description));
  EXPECT_EQ(spec, "*.txt;*.text");
  EXPECT_EQ(description, "Text");
  EXPECT_TRUE(win->tree->ExtractWildcard("Text|*.txt;*.text|All|*", 1, spec, description));
  EXPECT_EQ(spec, "*");
  EXPECT_EQ(description, "All");
  EXPECT_FALSE(win->tree->ExtractWildcard("Text|*.txt;*.text|All|*", 2, spec, description));
  win->tree->SetFilterIndex(7);
  EXPECT_EQ(win->tree->GetCurrentFilter(), "*");
  // The directory given at creation, replaced by SetPath.
  EXPECT_EQ(win->tree->GetDefaultPath(), "D:\\");
  win->tree->SetPath("/mnt/C/alpha");
  EXPECT_EQ(win->tree->GetDefaultPath(), "/mnt/C/alpha");
  EXPECT_EQ(win->tree->GetPath(), "/mnt/C/alpha");

  // Without 0x80 no border; 0x100 allows editing labels.
  my_DirTreeCtrl* other = new my_DirTreeCtrl(win->panel, wxID_ANY, wxString(), wxPoint(0, 0),
                                             wxSize(100, 100), 0x110, wxString(), 0, wxString());
  wxTreeCtrl* inner = other->GetTreeCtrl();
  EXPECT_TRUE(inner->HasFlag(wxTR_EDIT_LABELS));
  EXPECT_EQ(inner->GetWindowStyleFlag() & wxBORDER_MASK, long(wxBORDER_NONE));
  EXPECT_EQ(inner->GetId(), 1004);
  other->Destroy();
  vt::Pump(20);
}

TEST_F(BrowserTreeTest, OddFolderNamesExpandAndOpenFromTheTree) {
  const std::vector<wxString> odd = vt::OddNames();
  for (const wxString& n : odd) {
    const std::string dir = "/mnt/C/" + n.utf8_string();
    mkdir(dir.c_str(), 0755);
    mkdir((dir + "/sub " + n.utf8_string()).c_str(), 0755);
    vt::WriteFile(dir + "/in " + n.utf8_string() + ".txt", "x");
  }
  win->T()->Expand(C());
  vt::Pump(50);
  for (const wxString& n : odd) {
    const wxTreeItemId item = win->TreeChild(C(), n);
    ASSERT_TRUE(item.IsOk()) << n.utf8_string();
    EXPECT_EQ(win->TreeData(item)->m_path, "/mnt/C/" + n);
    EXPECT_TRUE(win->T()->ItemHasChildren(item));
    win->T()->EnsureVisible(item);
    vt::Pump(30);
    win->DoubleClick(win->TreeItemPoint(item));
    const wxString want = "/mnt/C/" + n + "/";
    ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == want; }))
        << n.utf8_string();
    EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "sub " + n, "in " + n + ".txt"}));
    EXPECT_EQ(win->path->GetValue(), "C:\\" + n);
    EXPECT_EQ(win->TreeChildren(item), std::vector<wxString>{"sub " + n});
  }
}
