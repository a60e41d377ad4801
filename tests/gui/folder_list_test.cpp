// What every file list does alike, run once for each list class: the folder
// rows and their cells, sorting by header clicks, activating a file, empty
// and unreadable folders, going up into a folder that cannot be read, and
// the icon view. Each list class comes in as a "kind" (below) that builds a
// window holding it and opens C:'s top folder in it; a further list class
// joins by its kind and one more entry in FolderListKinds.
#include "folder_list_env.h"

#include <sys/stat.h>

#include "browser/ListingLogic.h"
#include "common/gui_testing.h"
#include "display/ListingText.h"

namespace {

using vt::FolderListTest;
using FolderListKinds = ::testing::Types<vt::SourceListKind, vt::DestListKind>;
TYPED_TEST_SUITE(FolderListTest, FolderListKinds);

}  // namespace

TYPED_TEST(FolderListTest, FolderRowsComeFirstAndShowTheirCells) {
  this->OpenC();
  auto& win = *this->win;
  vt::ExpectColumns(win.L(), {"Name", "Size", "Type", "Modified"}, {130, 80, 60, 130},
                    {wxLIST_FORMAT_LEFT, wxLIST_FORMAT_RIGHT, wxLIST_FORMAT_LEFT,
                     wxLIST_FORMAT_LEFT});
  ASSERT_EQ(win.Rows(), this->TopRow(5));
  if (TypeParam::kDotRowAtVolumeTop) EXPECT_EQ(win.Cell(0, 0), "..");
  // Folders (the first two rows) above files (the three after them).
  for (long r : {this->TopRow(0), this->TopRow(1)}) {
    EXPECT_EQ(win.Cell(r, 2), "Folder");
    EXPECT_EQ(win.Cell(r, 1), "");
  }
  const long b = win.RowOf("b.txt"), a = win.RowOf("a.exe"), m = win.RowOf("Makefile");
  ASSERT_GE(b, this->TopRow(2));
  ASSERT_GE(a, this->TopRow(2));
  ASSERT_GE(m, this->TopRow(2));
  EXPECT_EQ(win.Cell(b, 1), "2  KB");
  EXPECT_EQ(win.Cell(a, 1), "0  KB");
  EXPECT_EQ(win.Cell(m, 1), "1  KB");
  EXPECT_EQ(win.Cell(b, 2), "txt");
  EXPECT_EQ(win.Cell(m, 2), "");
  EXPECT_EQ(win.Cell(b, 3), listing::FormatListTime(wxDateTime(time_t(1000000000))));
  const ListingRows* rows = this->List()->GetRows();
  EXPECT_EQ(rows->Image(b), 28);
  EXPECT_EQ(rows->Image(a), 12);
  EXPECT_EQ(rows->Image(m), 31);
  EXPECT_EQ(rows->Image(this->TopRow(0)), 0);
}

TYPED_TEST(FolderListTest, ActivatingAFileDoesNothing) {
  this->OpenC();
  auto& win = *this->win;
  const std::vector<wxString> before = win.Column0();
  win.Activate(win.RowOf("b.txt"));
  EXPECT_EQ(this->Path(), "/mnt/C/");
  EXPECT_EQ(win.Column0(), before);
}

TYPED_TEST(FolderListTest, SortByEachColumnBothWays) {
  this->OpenC();
  auto& win = *this->win;
  FolderListCtrl* list = this->List();
  // Name: ascending with the up arrow, then descending with the down arrow.
  win.ClickHeader(win.HeaderPoint(0));
  EXPECT_EQ(list->GetCurrentColumnIndex(), 0);
  EXPECT_EQ(win.Column0(), this->AtTop({"alpha", "docs", "Makefile", "a.exe", "b.txt"}));
  wxListItem col;
  col.SetMask(wxLIST_MASK_IMAGE);
  win.L()->GetColumn(0, col);
  EXPECT_EQ(col.GetImage(), 32);
  win.ClickHeader(win.HeaderPoint(0));
  EXPECT_EQ(win.Column0(), this->AtTop({"docs", "alpha", "b.txt", "a.exe", "Makefile"}));
  win.L()->GetColumn(0, col);
  EXPECT_EQ(col.GetImage(), 33);
  // Size: Name's arrow goes, files by size ascending, folders keep their order.
  const std::vector<wxString> foldersBefore = {win.Cell(this->TopRow(0), 0),
                                               win.Cell(this->TopRow(1), 0)};
  win.ClickHeader(win.HeaderPoint(1));
  EXPECT_EQ(list->GetCurrentColumnIndex(), 1);
  win.L()->GetColumn(0, col);
  EXPECT_EQ(col.GetImage(), -1);
  win.L()->GetColumn(1, col);
  EXPECT_EQ(col.GetImage(), 32);
  EXPECT_EQ(win.Cell(this->TopRow(0), 0), foldersBefore[0]);
  EXPECT_EQ(win.Cell(this->TopRow(1), 0), foldersBefore[1]);
  EXPECT_EQ(win.Cell(this->TopRow(2), 0), "a.exe");
  EXPECT_EQ(win.Cell(this->TopRow(3), 0), "Makefile");
  EXPECT_EQ(win.Cell(this->TopRow(4), 0), "b.txt");
  win.ClickHeader(win.HeaderPoint(1));
  EXPECT_EQ(win.Cell(this->TopRow(2), 0), "b.txt");
  EXPECT_EQ(win.Cell(this->TopRow(4), 0), "a.exe");
  // Type: nothing is reordered.
  const std::vector<wxString> beforeType = win.Column0();
  win.ClickHeader(win.HeaderPoint(2));
  EXPECT_EQ(win.Column0(), beforeType);
  EXPECT_EQ(list->GetCurrentColumnIndex(), TypeParam::kTypeHeaderMovesArrow ? 2 : 1);
  // Modified: folders and files each by time.
  win.ClickHeader(win.HeaderPoint(3));
  EXPECT_EQ(win.Column0(), this->AtTop({"alpha", "docs", "b.txt", "Makefile", "a.exe"}));
  win.ClickHeader(win.HeaderPoint(3));
  EXPECT_EQ(win.Column0(), this->AtTop({"docs", "alpha", "a.exe", "Makefile", "b.txt"}));
  // Navigation drops the sort and its arrow.
  win.Activate(win.RowOf("docs"));
  ASSERT_TRUE(vt::PumpUntil([&] { return this->Path() == "/mnt/C/docs/"; }));
  EXPECT_EQ(list->GetCurrentColumnIndex(), -1);
  win.L()->GetColumn(3, col);
  EXPECT_EQ(col.GetImage(), -1);
}

TYPED_TEST(FolderListTest, EmptyOrUnreadableFolderListsOnlyDotDot) {
  mkdir("/mnt/C/empty", 0755);
  this->OpenC();
  auto& win = *this->win;
  FolderListCtrl* list = this->List();
  win.Activate(win.RowOf("empty"));
  ASSERT_TRUE(vt::PumpUntil([&] { return this->Path() == "/mnt/C/empty/"; }));
  EXPECT_EQ(win.Column0(), std::vector<wxString>{".."});
  // From a listing with folders and files, a folder that cannot be read
  // empties both arrays and keeps the path.
  ASSERT_EQ(list->Read_FileDir_Array("/mnt/C/docs/"), 0);
  ASSERT_EQ(list->List_FileTable(), 0);
  ASSERT_EQ(list->GetDirArray().GetCount(), 1u);
  ASSERT_EQ(list->GetFileArray().GetCount(), 1u);
  ASSERT_EQ(win.Rows(), 3);
  // One message says so, with the system's reason.
  wxString message, caption;
  int result = 0;
  wxTEST_DIALOG(result = list->Read_FileDir_Array("/mnt/C/no-such/"),
                vt::MessageBoxSeen(&message, &caption));
  EXPECT_EQ(result, -1);
  // (The test's volumes are plain folders, not mounts: the message also
  // takes the drive for gone.)
  EXPECT_EQ(message.Find("The folder C:\\no-such cannot be read: No such file or directory."), 0)
      << message;
  EXPECT_EQ(caption, "Folder");
  EXPECT_EQ(this->Path(), "/mnt/C/docs/");
  EXPECT_EQ(list->GetDirArray().GetCount(), 0u);
  EXPECT_EQ(list->GetFileArray().GetCount(), 0u);
  EXPECT_EQ(list->List_FileTable(), 0);
  EXPECT_EQ(win.Column0(), std::vector<wxString>{".."});
}

TYPED_TEST(FolderListTest, GoingUpIntoAFolderThatCannotBeReadListsOnlyDotDot) {
  vt::WriteFile("/mnt/C/docs/inner/more.c", "int y;");
  this->OpenC();
  auto& win = *this->win;
  win.Activate(win.RowOf("docs"));
  ASSERT_TRUE(vt::PumpUntil([&] { return this->Path() == "/mnt/C/docs/"; }));
  win.Activate(win.RowOf("inner"));
  ASSERT_TRUE(vt::PumpUntil([&] { return this->Path() == "/mnt/C/docs/inner/"; }));
  ASSERT_EQ(win.Rows(), 3);
  // The folder above goes away while it is shown: going up cannot read it.
  vt::RemoveTree("/mnt/C/docs");
  win.L()->SetFocus();
  vt::Pump(30);
  wxString message, caption;
  wxTEST_DIALOG(win.Key(WXK_BACK), vt::MessageBoxSeen(&message, &caption));
  EXPECT_EQ(message.Find("The folder C:\\docs cannot be read: No such file or directory."), 0)
      << message;
  vt::Pump(100);  // once: nothing asks again
  EXPECT_EQ(win.Column0(), std::vector<wxString>{".."}) << "no blank rows are left behind";
  EXPECT_TRUE(win.Selected().empty());
  EXPECT_EQ(this->List()->GetDirArray().GetCount(), 0u);
  EXPECT_EQ(this->List()->GetFileArray().GetCount(), 0u);
}

TYPED_TEST(FolderListTest, IconViewAndBack) {
  this->OpenC();
  auto& win = *this->win;
  FolderListCtrl* list = this->List();
  ASSERT_TRUE(list->ReCreate(wxLC_ICON));
  EXPECT_TRUE(list->IsIconView());
  EXPECT_EQ(win.L()->GetImageList(wxIMAGE_LIST_NORMAL), list->GetNormalImageList());
  // No ".." row; folders first in listing order.
  EXPECT_EQ(win.Rows(), 5);
  EXPECT_EQ(win.Cell(0, 0), list->GetDirArray()[0].m_name);
  list->ViewIconText();
  // Each insert at row 0: folders above files, each group reversed.
  EXPECT_EQ(win.Cell(0, 0), list->GetDirArray()[1].m_name);
  EXPECT_EQ(win.Cell(1, 0), list->GetDirArray()[0].m_name);
  EXPECT_EQ(win.Cell(2, 0), list->GetFileArray()[2].m_name);
  for (long r = 0; r < win.Rows(); ++r) {
    wxListItem item;
    item.SetId(r);
    item.SetMask(wxLIST_MASK_IMAGE);
    ASSERT_TRUE(win.L()->GetItem(item));
    EXPECT_EQ(item.GetImage(), r < 2 ? 0 : 1) << r;
  }
  // A view other than icon or report builds nothing new.
  wxListCtrl* iconChild = win.L();
  EXPECT_TRUE(list->ReCreate(wxLC_LIST));
  EXPECT_EQ(win.L(), iconChild);
  EXPECT_TRUE(list->IsIconView());
  ASSERT_TRUE(list->ReCreate(wxLC_REPORT));
  EXPECT_FALSE(list->IsIconView());
  EXPECT_EQ(win.Rows(), this->TopRow(5));
  EXPECT_EQ(win.Cell(0, 0),
            TypeParam::kDotRowAtVolumeTop ? wxString("..") : list->GetDirArray()[0].m_name);
  EXPECT_EQ(win.L()->GetColumnCount(), 4);
}

TYPED_TEST(FolderListTest, SelectedNamesAreTheSelectedRowsInOrder) {
  this->OpenC();
  auto& win = *this->win;
  win.L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  win.Click(win.RowPoint(win.RowOf("docs")));
  wxArrayString want;
  want.Add("docs");
  EXPECT_EQ(this->List()->GetSelectedNames(), want);
  EXPECT_EQ(this->List()->GetPane()->SelectedNames(), want);
  win.L()->SetItemState(-1, 0, wxLIST_STATE_SELECTED);
  EXPECT_TRUE(this->List()->GetSelectedNames().empty());
}
