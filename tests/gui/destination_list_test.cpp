// What the destination list does differently from the source list: no drive
// list, no ".." row at a volume's top, single selection, the delete and copy
// names, the path field, going back to a volume's top, making a folder, no
// context menu and no command codes.
#include "folder_list_env.h"

#include <sys/stat.h>

namespace {

class DestListTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    volumes.reset(new vt::TestVolumes);
    ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
    vt::FillListTestVolume();
    win.reset(new vt::DestListWindow);
    list = win->list;
    list->Return_Root(0);
  }
  void TearDown() override {
    win.reset();
    volumes.reset();
  }
  wxString Path() const { return list->GetDesCurrentPath(); }
  void Select(long row) {
    win->L()->SetItemState(row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  }
  void OpenDocs() {
    win->Activate(win->RowOf("docs"));
    ASSERT_TRUE(vt::PumpUntil([&] { return Path() == "/mnt/C/docs/"; }));
  }

  std::unique_ptr<vt::TestVolumes> volumes;
  std::unique_ptr<vt::DestListWindow> win;
  Des_listctrl* list = nullptr;
};

}  // namespace

TEST_F(DestListTest, CreatedOnTheFirstRootWithTheFolderColumnsAndSingleSelection) {
  EXPECT_EQ(list->GetId(), 1051);
  EXPECT_EQ(win->L()->GetId(), 1001);
  EXPECT_NE(dynamic_cast<LDes_listctrl*>(win->L()), nullptr);
  EXPECT_TRUE(win->L()->HasFlag(wxLC_SINGLE_SEL));
  EXPECT_EQ(wxLC_SINGLE_SEL, 0x2000);
  EXPECT_EQ(list->GetRootPaths().GetCount(), 3u);
  EXPECT_EQ(Path(), "/mnt/C/");
  EXPECT_TRUE(list->IsRoot());
  EXPECT_EQ(list->GetRootIndex(), 0);
  vt::ExpectColumns(win->L(), {"Name", "Size", "Type", "Modified"}, {130, 80, 60, 130},
                    {wxLIST_FORMAT_LEFT, wxLIST_FORMAT_RIGHT, wxLIST_FORMAT_LEFT,
                     wxLIST_FORMAT_LEFT});
  // 34 images: no disk or USB picture.
  EXPECT_EQ(list->GetSmallImageList()->GetImageCount(), 34);
}

TEST_F(DestListTest, AtAVolumesTopNoDotDotRowAndBackspaceDoesNothing) {
  EXPECT_EQ(win->Rows(), 5);
  EXPECT_EQ(win->RowOf(".."), -1);
  win->path->SetValue("C:\\");
  const std::vector<wxString> before = win->Column0();
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key(WXK_BACK);
  EXPECT_EQ(Path(), "/mnt/C/");
  EXPECT_TRUE(list->IsRoot());
  EXPECT_EQ(win->Column0(), before);
  EXPECT_EQ(win->path->GetValue(), "C:\\");
  // The Up command of the panel alike.
  wxCommandEvent up;
  list->OnUpList(up);
  EXPECT_EQ(Path(), "/mnt/C/");
  EXPECT_EQ(win->Column0(), before);
}

TEST_F(DestListTest, WalkingDownShowsDotDotAndGoingUpToTheTopRemovesIt) {
  OpenDocs();
  EXPECT_FALSE(list->IsRoot());
  EXPECT_EQ(win->Cell(0, 0), "..");
  // The row under ".." is selected and the field shows it.
  EXPECT_EQ(win->Selected(), std::vector<long>{1});
  EXPECT_EQ(win->Cell(1, 0), "inner");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs\\inner");
  win->Activate(win->RowOf("inner"));
  ASSERT_TRUE(vt::PumpUntil([&] { return Path() == "/mnt/C/docs/inner/"; }));
  // Backspace: one level up, nothing selected, the field without the "/".
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key(WXK_BACK);
  EXPECT_EQ(Path(), "/mnt/C/docs/");
  EXPECT_FALSE(list->IsRoot());
  EXPECT_TRUE(win->Selected().empty());
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  // Up into the volume's top: the root flag is set, the ".." row goes.
  win->Key(WXK_BACK);
  EXPECT_EQ(Path(), "/mnt/C/");
  EXPECT_TRUE(list->IsRoot());
  EXPECT_EQ(win->RowOf(".."), -1);
  EXPECT_EQ(win->Rows(), 5);
  EXPECT_EQ(win->path->GetValue(), "C:\\");
  // The ".." row leads up as well.
  OpenDocs();
  win->Activate(0);
  ASSERT_TRUE(vt::PumpUntil([&] { return Path() == "/mnt/C/"; }));
  EXPECT_TRUE(list->IsRoot());
  EXPECT_EQ(win->RowOf(".."), -1);
}

TEST_F(DestListTest, SelectingSetsTheDeleteAndCopyNamesAndThePathField) {
  OpenDocs();
  vt::WriteFile("/mnt/C/docs/inner/x.txt", "x");
  // A folder: both names.
  win->Click(win->RowPoint(win->RowOf("inner")));
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "inner");
  EXPECT_EQ(list->GetDesCopyDirName(), "inner");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs\\inner");
  // A file: only the delete name; the field shows the folder.
  win->Click(win->RowPoint(win->RowOf("readme.txt")));
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "readme.txt");
  EXPECT_EQ(list->GetDesCopyDirName(), "");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  // The ".." row clears both; it can stay selected.
  win->Click(win->RowPoint(win->RowOf("inner")));
  win->Click(win->RowPoint(0));
  EXPECT_EQ(win->Selected(), std::vector<long>{0});
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "");
  EXPECT_EQ(list->GetDesCopyDirName(), "");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  // Deselecting clears both as well.
  win->Click(win->RowPoint(win->RowOf("inner")));
  ASSERT_EQ(list->GetDesCopyDirName(), "inner");
  win->L()->SetItemState(win->RowOf("inner"), 0, wxLIST_STATE_SELECTED);
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "");
  EXPECT_EQ(list->GetDesCopyDirName(), "");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  // At the top the field keeps the "\" of C:\.
  list->Return_Root(0);
  win->Click(win->RowPoint(win->RowOf("b.txt")));
  EXPECT_EQ(win->path->GetValue(), "C:\\");
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "b.txt");
}

TEST_F(DestListTest, OnlyOneRowCanBeSelected) {
  Select(win->RowOf("docs"));
  Select(win->RowOf("b.txt"));
  EXPECT_EQ(win->Selected(), std::vector<long>{win->RowOf("b.txt")});
  // Ctrl and Shift clicks do not add rows either.
  wxUIActionSimulator sim;
  sim.KeyDown(WXK_CONTROL);
  win->Click(win->RowPoint(win->RowOf("alpha")));
  sim.KeyUp(WXK_CONTROL);
  sim.KeyDown(WXK_SHIFT);
  win->Click(win->RowPoint(win->RowOf("Makefile")));
  sim.KeyUp(WXK_SHIFT);
  vt::Pump(30);
  EXPECT_EQ(win->Selected().size(), 1u);
  // Ctrl+A selects nothing more.
  win->L()->SetFocus();
  win->Key('A', wxMOD_CONTROL);
  EXPECT_EQ(win->Selected().size(), 1u);
}

TEST_F(DestListTest, NoContextMenuAndNoCommandCodes) {
  OpenDocs();
  win->Click(win->RowPoint(win->RowOf("inner")), wxMOUSE_BTN_RIGHT);
  win->Click(win->RowPoint(1));
  win->L()->SetFocus();
  win->Key('A', wxMOD_CONTROL);
  list->SetFocus();
  win->Key(WXK_BACK);
  vt::Pump(50);
  EXPECT_EQ(win->list->menus.popups, 0);
  EXPECT_TRUE(win->codes.empty());
}

TEST_F(DestListTest, ReturnRootListsTheChosenVolumesTop) {
  OpenDocs();
  vt::WriteFile("/mnt/E/on-stick.txt", "s");
  list->Return_Root(2);
  EXPECT_EQ(Path(), "/mnt/E/");
  EXPECT_TRUE(list->IsRoot());
  EXPECT_EQ(list->GetRootIndex(), 2);
  EXPECT_EQ(win->path->GetValue(), "E:\\");
  EXPECT_NE(win->RowOf("on-stick.txt"), -1);
  EXPECT_EQ(win->RowOf(".."), -1);
  list->Return_Root(1);
  EXPECT_EQ(Path(), "/mnt/D/");
  EXPECT_EQ(win->path->GetValue(), "D:\\");
  // An index out of the roots changes nothing.
  list->Return_Root(3);
  list->Return_Root(-1);
  EXPECT_EQ(Path(), "/mnt/D/");
  EXPECT_EQ(list->GetRootIndex(), 1);
}

TEST_F(DestListTest, CreateFolderMakesItWithTheKeptModeAndSelectsByTheRowRule) {
  const mode_t old = umask(022);
  // At the top (no ".." row): the new folder's own row k.
  list->CreateFolder("new one");
  struct stat st;
  ASSERT_EQ(stat("/mnt/C/new one", &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
  // 0x777 is octal 3567; the kernel keeps no set-group-id bit asked of
  // mkdir, the umask takes 022.
  EXPECT_EQ(st.st_mode & 07777, static_cast<mode_t>(0x777 & ~022 & ~S_ISGID)) << "mode value 0x777";
  long k = -1;
  for (size_t i = 0; i < list->GetDirArray().GetCount(); ++i)
    if (list->GetDirArray()[i].m_name == "new one") k = static_cast<long>(i);
  ASSERT_GE(k, 0);
  EXPECT_EQ(win->Selected(), std::vector<long>{k});
  EXPECT_EQ(win->Cell(k, 0), "new one");
  // Below the top: row k + 2, the row under the new folder.
  OpenDocs();
  const wxString name = wxString::FromUTF8("Neuer Ordner \xc3\xa4\xc3\xb6\xc3\xbc");
  list->CreateFolder(name);
  EXPECT_TRUE(wxDirExists("/mnt/C/docs/" + name));
  k = -1;
  for (size_t i = 0; i < list->GetDirArray().GetCount(); ++i)
    if (list->GetDirArray()[i].m_name == name) k = static_cast<long>(i);
  ASSERT_GE(k, 0);
  EXPECT_EQ(win->Cell(k + 1, 0), name);
  EXPECT_EQ(win->Selected(), std::vector<long>{k + 2});
  EXPECT_EQ(Path(), "/mnt/C/docs/");
  umask(old);
}

TEST_F(DestListTest, CreatingAnExistingFolderSaysSoAndListsTheFolderAgain) {
  vt::WriteFile("/mnt/C/appeared.txt", "new");
  ASSERT_EQ(win->RowOf("appeared.txt"), -1);
  vt::SeenBox seen;
  wxTEST_DIALOG(list->CreateFolder("docs"), MessageSeen(&seen));
  EXPECT_EQ(seen.message, "The folder already exists.");
  EXPECT_EQ(seen.caption, "Create Folder error");
  EXPECT_EQ(seen.style & (wxOK | wxICON_EXCLAMATION), wxOK | wxICON_EXCLAMATION);
  EXPECT_EQ(wxOK | wxICON_EXCLAMATION, 260);
  EXPECT_NE(win->RowOf("appeared.txt"), -1) << "listed again";
  EXPECT_EQ(win->Selected(), std::vector<long>{win->RowOf("docs")});
}

TEST_F(DestListTest, AFolderThatCannotBeMadeSaysSo) {
  // A file stands where the folder's parent would be.
  vt::SeenBox seen;
  wxTEST_DIALOG(list->CreateFolder("b.txt/inside"), MessageSeen(&seen));
  EXPECT_EQ(seen.message, "Create folder is failed!");
  EXPECT_EQ(seen.caption, "Create Folder error");
  EXPECT_EQ(seen.style & (wxOK | wxICON_EXCLAMATION), wxOK | wxICON_EXCLAMATION);
  EXPECT_EQ(Path(), "/mnt/C/");
  EXPECT_EQ(win->Rows(), 5);
}

TEST_F(DestListTest, ActivatingAFolderClearsTheDeleteNameAndTheSort) {
  win->ClickHeader(win->HeaderPoint(0));
  ASSERT_EQ(list->GetCurrentColumnIndex(), 0);
  win->Click(win->RowPoint(win->RowOf("b.txt")));
  ASSERT_EQ(list->GetDesDeleteDirFileName(), "b.txt");
  OpenDocs();
  EXPECT_EQ(list->GetCurrentColumnIndex(), -1);
  // The row under ".." was selected after the walk: its name is the one kept.
  EXPECT_EQ(list->GetDesDeleteDirFileName(), "inner");
}
