// The source file list driven through real windows: drive mode, opening and
// leaving folders by double-click, Enter, the ".." row and Backspace, the
// tree and path field following, Ctrl+A, the context menu and the codes
// posted. What every file list shares is in folder_list_test.cpp.
#include "folder_list_env.h"

#include <wx/imaglist.h>
#include <wx/settings.h>

#include "browser/FileTypeIcons.h"
#include "browser/ListingLogic.h"
#include "common/stdout_capture.h"
#include "display/ListingText.h"

#include <unistd.h>

#include <sys/stat.h>

using vt::BrowserWindow;
using vt::TestVolumes;

namespace {

// True when the keyboard focus is in `w` (the list draws its rows in an
// inner window that takes the focus for it).
bool HasKeyboardFocus(wxWindow* w) {
  for (wxWindow* f = wxWindow::FindFocus(); f != nullptr; f = f->GetParent())
    if (f == w) return true;
  return false;
}

// The source list's own behaviour (drive mode, the tree and the path field
// following it, the frame's codes), in the fixture of the shared tests.
class BrowserListTest : public vt::FolderListTest<vt::SourceListKind> {
 protected:
  // With nothing but ".." selected a right press on row 4 is swallowed: no
  // copy mode posted, no menu, and the row is not selected by it. Gives the
  // count of menus shown, which the press left as it was.
  int ExpectRightPressSwallowed() {
    vt::Pump(30);
    this->win->codes.clear();
    const int before = this->win->list->menus.popups;
    this->win->Click(this->win->RowPoint(4), wxMOUSE_BTN_RIGHT);
    EXPECT_FALSE(this->win->Posted(MYCMD_LIST_DISABLE_COPY));
    EXPECT_FALSE(this->win->Posted(MYCMD_LIST_ENABLE_COPY));
    EXPECT_EQ(this->win->list->menus.popups, before) << "the press must not reach the list";
    EXPECT_TRUE(this->win->Selected().empty()) << "the press did not select row 4";
    return before;
  }
};

}  // namespace

TEST_F(BrowserListTest, DriveModeListsTheVolumes) {
  EXPECT_TRUE(win->list->GetCurrentListctrlPath().empty());
  EXPECT_FALSE(win->list->GetHasFolder());
  vt::ExpectColumns(win->L(), {"Name", "Type", "Size", "Free Size"}, {110, 90, 100, 120},
                   {wxLIST_FORMAT_LEFT, wxLIST_FORMAT_RIGHT, wxLIST_FORMAT_LEFT,
                    wxLIST_FORMAT_LEFT});
  ASSERT_EQ(win->Rows(), 3);
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"C:", "D:", "E:"}));
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(win->Cell(i, 1),
              wxString(g_AllDiskPartitionInf.m_Volume[i].VolumeLabel, wxConvISO8859_1));
  EXPECT_TRUE(win->Cell(0, 1).StartsWith("DATA"));
  EXPECT_TRUE(win->Cell(2, 1).StartsWith("STICK"));
  EXPECT_EQ(win->Cell(0, 2), wxString(g_AllDiskPartitionInf.m_Volume[0].SizeText, wxConvISO8859_1));
  EXPECT_EQ(win->Cell(0, 3), wxString(g_AllDiskPartitionInf.m_Volume[0].FreeText, wxConvISO8859_1));
  EXPECT_FALSE(win->Cell(0, 2).empty());
  EXPECT_FALSE(win->Cell(0, 3).empty());
  const ListingRows* rows = win->list->GetRows();
  EXPECT_EQ(rows->Image(0), 34);
  EXPECT_EQ(rows->Image(1), 34);
  EXPECT_EQ(rows->Image(2), 35);
  // Row of the partition index (0) is selected and focused; 424 was posted.
  EXPECT_EQ(win->Selected(), std::vector<long>{0});
  EXPECT_EQ(win->Focused(), 0);
  EXPECT_TRUE(win->Posted(MYCMD_LIST_DISABLE_COPY));
}

TEST_F(BrowserListTest, ImageListsHoldTheFixedImages) {
  ASSERT_NE(win->list->GetSmallImageList(), nullptr);
  EXPECT_EQ(win->list->GetSmallImageList()->GetImageCount(), 36);
  EXPECT_EQ(win->list->GetNormalImageList()->GetImageCount(), 0);
  EXPECT_EQ(win->L()->GetImageList(wxIMAGE_LIST_SMALL), win->list->GetSmallImageList());
  int w = 0, h = 0;
  win->list->GetSmallImageList()->GetSize(0, w, h);
  EXPECT_EQ(w, 16);
  EXPECT_EQ(h, 16);
}

TEST_F(BrowserListTest, DoubleClickOpensDriveAndListsFoldersFirst) {
  win->codes.clear();
  OpenC();
  EXPECT_TRUE(win->list->GetHasFolder());
  EXPECT_TRUE(win->Posted(MYCMD_LIST_ENABLE_COPY));
  // The rows and their cells are FolderListTest's.
  ASSERT_EQ(win->Rows(), 6);
  // Row 2 is selected and focused; the tree and the path field follow (the
  // field shows the volume's path without its "/", which reads "C").
  EXPECT_EQ(win->Selected(), std::vector<long>{2});
  EXPECT_EQ(win->Focused(), 2);
  EXPECT_TRUE(HasKeyboardFocus(win->L()));
  EXPECT_EQ(win->path->GetValue(), "C");
  ASSERT_TRUE(win->T()->GetSelection().IsOk());
  EXPECT_EQ(win->T()->GetItemText(win->T()->GetSelection()), "C:");
}

TEST_F(BrowserListTest, WalkDownAndUpWithDoubleClickEnterDotDotAndBackspace) {
  OpenC();
  // Down into docs by double-click.
  win->Activate(win->RowOf("docs"));
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/docs/"; }));
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  EXPECT_EQ(win->T()->GetItemText(win->T()->GetSelection()), "docs");
  // Down into inner with Enter on the selected row.
  const long inner = win->RowOf("inner");
  ASSERT_GT(inner, 0);
  win->L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  win->L()->SetItemState(inner, wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED,
                         wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED);
  win->L()->SetFocus();
  vt::Pump(50);
  win->Key(WXK_RETURN);
  ASSERT_TRUE(vt::PumpUntil(
      [&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/docs/inner/"; }));
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "deep.c"}));
  EXPECT_EQ(win->path->GetValue(), "C:\\docs\\inner");
  // Up with Backspace: row 1 selected.
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key(WXK_BACK);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/docs/"; }));
  EXPECT_EQ(win->Selected(), std::vector<long>{1});
  EXPECT_EQ(win->Focused(), 1);
  EXPECT_TRUE(HasKeyboardFocus(win->L()));
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  // Up with the ".." row: the volume's top reads C:\ in the path field.
  win->Activate(0);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/"; }));
  EXPECT_EQ(win->path->GetValue(), "C:\\");
  // ".." at the volume's top: back to the drives, C: selected, 424 posted.
  win->codes.clear();
  win->Activate(0);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath().empty(); }));
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"C:", "D:", "E:"}));
  EXPECT_EQ(win->Selected(), std::vector<long>{0});
  EXPECT_TRUE(win->Posted(MYCMD_LIST_DISABLE_COPY));
  EXPECT_FALSE(win->list->GetHasFolder());
}

TEST_F(BrowserListTest, GoingUpFromSecondVolumeSelectsItsRow) {
  mkdir("/mnt/D/sub", 0755);
  win->Activate(1);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/D/"; }));
  EXPECT_EQ(win->list->GetPartitionIndex(), 1);
  win->L()->SetFocus();
  win->Key(WXK_BACK);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath().empty(); }));
  EXPECT_EQ(win->Selected(), std::vector<long>{1});
}

TEST_F(BrowserListTest, HeaderClicksInDriveModeChangeNothing) {
  const std::vector<wxString> before = win->Column0();
  win->ClickHeader(win->HeaderPoint(0));
  win->ClickHeader(win->HeaderPoint(0));
  EXPECT_EQ(win->Column0(), before);
  EXPECT_EQ(win->list->GetCurrentColumnIndex(), -1);
}

TEST_F(BrowserListTest, CtrlASelectsAllButDotDot) {
  // Drive mode: nothing happens.
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key('a', wxMOD_CONTROL);
  EXPECT_EQ(win->Selected(), std::vector<long>{0});
  EXPECT_FALSE(win->list->ListctrlSelectAll());
  OpenC();
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key('a', wxMOD_CONTROL);
  EXPECT_EQ(win->Selected(), (std::vector<long>{1, 2, 3, 4, 5}));
  // Select-all of the frame's command leaves ".." out as well, unless it
  // was selected already.
  win->L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  EXPECT_TRUE(win->list->ListctrlSelectAll());
  EXPECT_EQ(win->Selected(), (std::vector<long>{1, 2, 3, 4, 5}));
}

TEST_F(BrowserListTest, DotDotRowCannotStaySelectedByClicking) {
  OpenC();
  win->Click(win->RowPoint(0));
  EXPECT_TRUE(win->Selected().empty());
  win->Click(win->RowPoint(3));
  EXPECT_EQ(win->Selected(), std::vector<long>{3});
}

TEST_F(BrowserListTest, ClicksTellTheFrameTheMode) {
  win->codes.clear();
  win->Click(win->RowPoint(1));
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_LIST_DISABLE_COPY); }));
  EXPECT_TRUE(win->list->GetIsLastFocus_listctrl());
  EXPECT_FALSE(win->tree->GetIsLastFocus_treectrl());
  OpenC();
  win->codes.clear();
  win->Click(win->RowPoint(3));
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_LIST_ENABLE_COPY); }));
  EXPECT_FALSE(win->Posted(MYCMD_LIST_DISABLE_COPY));
}

TEST_F(BrowserListTest, ContextMenuOnFolderModeAndItsCommands) {
  // Drive mode: no menu.
  win->Click(win->RowPoint(0), wxMOUSE_BTN_RIGHT);
  EXPECT_EQ(win->list->menus.popups, 0);
  OpenC();
  win->Click(win->RowPoint(3));
  win->codes.clear();
  win->Click(win->RowPoint(3), wxMOUSE_BTN_RIGHT);
  ASSERT_EQ(win->list->menus.popups, 1);
  EXPECT_EQ(win->list->menus.ids, (std::vector<int>{MYCMD_LIST_COPY, MYCMD_LIST_SELECT_ALL,
                                                    wxID_SEPARATOR, MYCMD_LIST_PROPERTIES}));
  EXPECT_EQ(win->list->menus.labels[0], "&Copy...");
  EXPECT_EQ(win->list->menus.labels[1], "&Select All...");
  EXPECT_EQ(win->list->menus.labels[3], "&Properties");
  EXPECT_TRUE(win->Posted(MYCMD_LIST_ENABLE_COPY));
  // Each entry posts its own code.
  for (int id : {MYCMD_LIST_COPY, MYCMD_LIST_SELECT_ALL, MYCMD_LIST_PROPERTIES, MYCMD_LIST_ABOUT}) {
    win->codes.clear();
    wxCommandEvent ev(wxEVT_MENU, id);
    win->list->GetEventHandler()->ProcessEvent(ev);
    EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(id); })) << id;
  }
  // Keyboard context menu: opens at the centre.
  wxContextMenuEvent kbd(wxEVT_CONTEXT_MENU, win->list->GetId(), wxDefaultPosition);
  win->list->GetEventHandler()->ProcessEvent(kbd);
  EXPECT_EQ(win->list->menus.popups, 2);
}

TEST_F(BrowserListTest, RightPressWithOnlyDotDotSelectedIsSwallowed) {
  OpenC();
  win->L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  ExpectRightPressSwallowed();
}

TEST_F(BrowserListTest, DotDotRowSelectedFromCodeIsTakenBackAndRightPressSwallowed) {
  OpenC();
  // Selecting the ".." row alone, even from code, does not hold: the list
  // takes it back at once, so "only .. selected" is "nothing selected".
  win->L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  win->L()->SetItemState(0, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->Selected().empty(); }));
  const int before = ExpectRightPressSwallowed();
  // With a real row selected the same press goes on and posts the mode.
  win->Click(win->RowPoint(4));
  win->codes.clear();
  win->Click(win->RowPoint(4), wxMOUSE_BTN_RIGHT);
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_LIST_ENABLE_COPY); }));
  EXPECT_EQ(win->list->menus.popups, before + 1);
}

TEST_F(BrowserListTest, ActivationAndHeaderClicksPrintTheirDiagnostics) {
  vt::StdoutCapture cap;
  win->Activate(0);
  const bool opened =
      vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/"; });
  win->ClickHeader(win->HeaderPoint(0));
  const std::string out = cap.Stop();
  ASSERT_TRUE(opened);
  EXPECT_NE(out.find("dClick list item\n"), std::string::npos) << out;
  EXPECT_NE(out.find("OnColClick\n"), std::string::npos) << out;
  EXPECT_EQ(win->list->GetCurrentColumnIndex(), 0);
}

TEST_F(BrowserListTest, BusyBoxOnlyWhileAFolderIsRead) {
  OpenC();
  // Opening a folder: one box (the tree's expansion that follows is the
  // list's doing and shows none), closed before the handler returns.
  {
    vt::BusyBoxWatcher busy;
    win->Activate(win->RowOf("docs"));
    ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/docs/"; }));
    ASSERT_EQ(busy.seen.size(), 1u);
    EXPECT_EQ(busy.seen[0].text, "Please wait, working...");
    EXPECT_EQ(busy.seen[0].parent, win->splitter) << "the list's parent";
    EXPECT_EQ(busy.seen[0].colour, *wxWHITE);
    EXPECT_TRUE(vt::BusyBoxWatcher::NoneShown());
  }
  // The ".." row: one box around going up.
  {
    vt::BusyBoxWatcher busy;
    win->Activate(0);
    ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/"; }));
    ASSERT_EQ(busy.seen.size(), 1u);
    EXPECT_EQ(busy.seen[0].text, "Please wait, working...");
    EXPECT_TRUE(vt::BusyBoxWatcher::NoneShown());
  }
  // A file is not opened: no box.
  {
    vt::BusyBoxWatcher busy;
    win->Activate(win->RowOf("b.txt"));
    EXPECT_TRUE(busy.seen.empty());
  }
}

TEST_F(BrowserListTest, SetFocusTellsTheModeAndTakesTheFlagFromTheTree) {
  EXPECT_EQ(win->list->GetBackgroundColour(), wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE));
  EXPECT_EQ(win->list->GetForegroundColour(),
            wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  EXPECT_EQ(win->L()->GetId(), 1001);
  EXPECT_TRUE(win->L()->HasFlag(wxLC_REPORT));
  // Drive mode: 424.
  win->tree->SetIsLastFocus_treectrl(true);
  win->list->SetIsLastFocus_listctrl(false);
  win->codes.clear();
  win->list->SetFocus();
  EXPECT_TRUE(win->list->GetIsLastFocus_listctrl());
  EXPECT_FALSE(win->tree->GetIsLastFocus_treectrl());
  EXPECT_FALSE(win->list->GetHasFolder());
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_LIST_DISABLE_COPY); }));
  EXPECT_FALSE(win->Posted(MYCMD_LIST_ENABLE_COPY));
  EXPECT_TRUE(HasKeyboardFocus(win->L()));
  // Folder mode: 425.
  OpenC();
  win->tree->SetFocus();
  vt::Pump(30);
  win->codes.clear();
  win->list->SetFocus();
  EXPECT_TRUE(win->list->GetHasFolder());
  EXPECT_TRUE(vt::PumpUntil([&] { return win->Posted(MYCMD_LIST_ENABLE_COPY); }));
  EXPECT_FALSE(win->Posted(MYCMD_LIST_DISABLE_COPY));
  EXPECT_TRUE(win->list->GetIsLastFocus_listctrl());
  EXPECT_FALSE(win->tree->GetIsLastFocus_treectrl());
  EXPECT_TRUE(HasKeyboardFocus(win->L()));
}

TEST_F(BrowserListTest, OddNamesListAndOpen) {
  const std::vector<wxString> odd = vt::OddNames();
  for (const wxString& n : odd) {
    const std::string dir = "/mnt/C/" + n.utf8_string();
    mkdir(dir.c_str(), 0755);
    vt::WriteFile(dir + "/in " + n.utf8_string() + ".txt", "x");
  }
  vt::WriteFile("/mnt/C/.profile", "p");
  OpenC();
  EXPECT_GE(win->RowOf(".profile"), 1);
  for (const wxString& n : odd) {
    const long row = win->RowOf(n);
    ASSERT_GT(row, 0) << n.utf8_string();
    win->Activate(row);
    const wxString want = "/mnt/C/" + n + "/";
    ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == want; }))
        << n.utf8_string();
    EXPECT_EQ(win->Column0(), (std::vector<wxString>{"..", "in " + n + ".txt"}));
    EXPECT_EQ(win->path->GetValue(), "C:\\" + n);
    EXPECT_EQ(win->T()->GetItemText(win->T()->GetSelection()), n);
    win->Activate(0);
    ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/C/"; }));
  }
}

TEST_F(BrowserListTest, CopyRefreshShowsAFolder) {
  win->list->Copy_Refresh_Filelisttabel("/mnt/C/docs");
  EXPECT_EQ(win->list->GetCurrentListctrlPath(), "/mnt/C/docs/");
  EXPECT_EQ(win->path->GetValue(), "C:\\docs");
  EXPECT_NE(win->RowOf("readme.txt"), -1);
}

TEST(BrowserListImages, DestinationCountAndMissingFilesKeepTheirSlots) {
  wxImageList dest(16, 16, true, 1);
  listing::FillListImages(dest, listing::kDestListImages);
  EXPECT_EQ(dest.GetImageCount(), 34);
  // Without the image files every slot is still taken, so indices hold.
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(chdir("/tmp"), 0);
  wxImageList missing(16, 16, true, 1);
  listing::FillListImages(missing, listing::kSourceListImages);
  ASSERT_EQ(chdir(cwd), 0);
  EXPECT_EQ(missing.GetImageCount(), 36);
  int w = 0, h = 0;
  missing.GetSize(35, w, h);
  EXPECT_EQ(w, 16);
}

// The list's own loader: the shipped folder image is a real picture, a
// missing file gives an empty bitmap.
TEST_F(BrowserListTest, ImageLoadGivesThePictureOrAnEmptyBitmap) {
  wxBitmap folder;
  win->list->imageLoad(folder, "./res/vantori/bmp/Folder_16x16.png", wxBITMAP_TYPE_PNG);
  EXPECT_TRUE(folder.IsOk());
  EXPECT_EQ(folder.GetSize(), wxSize(16, 16));
  wxBitmap none(16, 16);
  win->list->imageLoad(none, "./res/vantori/bmp/no-such.png", wxBITMAP_TYPE_PNG);
  EXPECT_FALSE(none.IsOk());
}

TEST_F(BrowserListTest, GoingUpAfterARefreshWithFewerVolumesStopsAtTheVolumeTop) {
  // E: is opened, then a refresh finds only C: and D:; the list's remembered
  // volume is gone from the inventory.
  win->Activate(2);
  ASSERT_TRUE(vt::PumpUntil([&] { return win->list->GetCurrentListctrlPath() == "/mnt/E/"; }));
  volumes->Fake().FailOpen("/dev/hdb");
  g_AllDiskPartitionInf.UI_FreeMemory();
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 2);
  win->tree->UpdateMyDirTreeCtrl();
  win->list->InitParttionList();
  // The copy's end shows a folder of C: in the list.
  mkdir("/mnt/C/docs/inner/leaf", 0755);
  win->list->Copy_Refresh_Filelisttabel("/mnt/C/docs");
  ASSERT_EQ(win->list->GetCurrentListctrlPath(), "/mnt/C/docs/");
  win->L()->SetFocus();
  vt::Pump(30);
  win->Key(WXK_BACK);
  EXPECT_EQ(win->list->GetCurrentListctrlPath(), "/mnt/C/");
  win->Key(WXK_BACK);
  EXPECT_EQ(win->list->GetCurrentListctrlPath(), "") << "never above the volume's top";
  EXPECT_EQ(win->Column0(), (std::vector<wxString>{"C:", "D:"}));
  EXPECT_EQ(win->Selected(), std::vector<long>{0});
  win->Key(WXK_BACK);
  EXPECT_EQ(win->list->GetCurrentListctrlPath(), "");
}

TEST_F(BrowserListTest, LabelWithBytesAbove0x7FShowsItsLetters) {
  // D: is an NTFS volume labelled "Données": the disk layer keeps the low
  // byte of each character, and the row shows the letters again (an
  // assertion of the conversion would fail the test).
  ASSERT_STREQ(g_AllDiskPartitionInf.m_Volume[1].VolumeLabel, TestVolumes::kLatin1Label);
  EXPECT_EQ(win->Cell(1, 1), wxString(L"Donn\u00e9es"));
  // Every rebuild of the drive list converts the labels again.
  win->list->InitParttionList();
  EXPECT_EQ(win->Cell(1, 1), wxString(L"Donn\u00e9es"));
  win->tree->UpdateMyDirTreeCtrl();
  EXPECT_EQ(win->TreeChildren(win->T()->GetRootItem()),
            (std::vector<wxString>{"C:", "D:", "E:"}));
}
