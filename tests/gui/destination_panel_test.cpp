// The destination panel: its controls from the layout records, the volume
// rows (the source volume left out unless it is the only one), choosing a
// volume, Up, New folder, OK, Cancel and the close box, and a panel without
// any volume.
#include "destination_panel_env.h"

#include <wx/statbox.h>

#include "destination/Des_PathInfo.h"
#include "display/VolumeText.h"
#include "widgets/keln_BitmapButton.h"
#include "settings/CCtrlConfig.h"
#include "settings/CONTROLINFO.h"

namespace {

CONTROLINFO& Info(int index) { return settings::CCtrlConfig::Instance()->GetCtrlInfo(index); }

bool SameImage(const wxBitmap& a, const wxBitmap& b) {
  if (!a.IsOk() || !b.IsOk() || a.GetSize() != b.GetSize()) return false;
  const wxImage ia = a.ConvertToImage(), ib = b.ConvertToImage();
  return std::equal(ia.GetData(), ia.GetData() + 3 * ia.GetWidth() * ia.GetHeight(),
                    ib.GetData());
}

}  // namespace

TEST_F(DesPanelTest, ControlsStandWhereTheLayoutPutsThem) {
  Volumes();
  Open();
  EXPECT_EQ(panel->GetPosition(), wxPoint(252, 151));
  const struct {
    int id;
    int record;
  } placed[] = {{ID_DES_DRIVE_CHOICE, 17}, {ID_DES_LIST, 22}, {ID_DES_UP, 18},
                {ID_DES_NEW, 19},          {ID_DES_DELETE, 20}, {ID_DES_OK, 23},
                {ID_DES_CANCEL, 24}};
  for (const auto& p : placed) {
    wxWindow* w = Control(p.id);
    ASSERT_NE(w, nullptr) << p.id;
    EXPECT_EQ(w->GetPosition(), Info(p.record).GetRect().GetPosition()) << p.id;
    if (p.id != ID_DES_DRIVE_CHOICE)  // the combo box keeps its own height
      EXPECT_EQ(w->GetSize(), Info(p.record).GetRect().GetSize()) << p.id;
  }
  EXPECT_EQ(static_cast<wxWindow*>(panel->m_bitmapButton), Control(ID_DES_DELETE));
  EXPECT_EQ(panel->m_okButton->GetLabel(), "&OK");
  EXPECT_EQ(panel->m_cancelButton->GetLabel(), "&Cancel");
  // The path field: fixed place and size, read-only.
  wxTextCtrl* path = panel->GetPathText();
  EXPECT_EQ(path->GetId(), ID_DES_PATH_TEXT);
  EXPECT_EQ(path->GetPosition(), wxPoint(60, 53));
  EXPECT_EQ(path->GetSize(), wxSize(420, 25));
  EXPECT_FALSE(path->IsEditable());
  EXPECT_EQ(panel->GetDesList()->GetPpathname(), path);
  // The box and the two labels.
  bool box = false, drive = false, pathLabel = false;
  for (wxWindow* w : panel->GetChildren()) {
    if (dynamic_cast<wxStaticBox*>(w) && w->GetPosition() == Info(15).GetRect().GetPosition())
      box = w->GetLabel() == Info(15).GetText(0);
    else if (dynamic_cast<wxStaticText*>(w) && w->GetLabel() == Info(16).GetText(0))
      drive = w->GetPosition() == Info(16).GetRect().GetPosition();
    else if (dynamic_cast<wxStaticText*>(w) && w->GetLabel() == "Path")
      pathLabel = w->GetRect() == Info(21).GetRect() && w->HasFlag(wxALIGN_RIGHT);
  }
  EXPECT_TRUE(box);
  EXPECT_TRUE(drive);
  EXPECT_TRUE(pathLabel);
}

TEST_F(DesPanelTest, SourceVolumeIsNotOfferedAndCIsShownFirst) {
  Volumes();
  Open();
  wxBitmapComboBox* choice = panel->GetDriveChoice();
  ASSERT_EQ(choice->GetCount(), 2u);
  EXPECT_EQ(choice->GetString(0), RowText(0));
  EXPECT_EQ(choice->GetString(1), RowText(2));
  EXPECT_TRUE(choice->GetString(0).StartsWith("(C:\\) DATA"));
  EXPECT_TRUE(choice->GetString(0).EndsWith(" Free)"));
  EXPECT_EQ(choice->GetSelection(), 0);
  // Fixed disk and USB pictures of record 17.
  EXPECT_TRUE(SameImage(choice->GetItemBitmap(0), Info(17).GetRes(0)));
  EXPECT_TRUE(SameImage(choice->GetItemBitmap(1), Info(17).GetRes(1)));
  EXPECT_EQ(panel->GetPathText()->GetValue(), "C:\\");
  EXPECT_EQ(panel->GetDesList()->GetDesCurrentPath(), "/mnt/C/");
  // With the source on C:, D: with its Latin-1 label comes first.
  panel->Destroy();
  panel = nullptr;
  g_Des_PathInfo.m_sourcePath = "/mnt/C/docs";
  Open();
  ASSERT_EQ(panel->GetDriveChoice()->GetCount(), 2u);
  EXPECT_TRUE(panel->GetDriveChoice()->GetString(0).StartsWith(
      wxString::FromUTF8("(D:\\) Donn\xc3\xa9" "es   (")));
  EXPECT_EQ(panel->GetPathText()->GetValue(), "D:\\");
}

TEST_F(DesPanelTest, ASingleVolumeIsOfferedAlthoughItIsTheSource) {
  volumes.reset(new vt::TestVolumes(false));
  const std::string dir = vt::MakeTempDir("vantori-dest-one");
  volumes->Fake().AddIdeDisk("/dev/hda", vt::MakeFatVolumesImage(dir, {"ONLY"}), "ONE", false);
  g_AllDiskPartitionInf.UI_FreeMemory();
  g_AllDiskPartitionInf.UI_InitDevice();
  g_AllDiskPartitionInf.GetDiskParttionInfo();
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 1);
  g_Des_PathInfo.m_sourcePath = "/mnt/C/";
  Open();
  ASSERT_EQ(panel->GetDriveChoice()->GetCount(), 1u);
  EXPECT_EQ(panel->GetDriveChoice()->GetString(0), RowText(0));
  EXPECT_EQ(panel->GetPathText()->GetValue(), "C:\\");
  panel->Destroy();
  panel = nullptr;
  vt::Pump(30);
  volumes.reset();
  vt::RemoveTree(dir);
}

TEST_F(DesPanelTest, WithoutAnyVolumeEverythingIsEmptyAndOkGivesNoDestination) {
  Volumes(false);
  ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 0);
  Open();
  EXPECT_EQ(panel->GetDriveChoice()->GetCount(), 0u);
  EXPECT_EQ(Rows()->GetItemCount(), 0);
  EXPECT_EQ(panel->GetPathText()->GetValue(), "");
  EXPECT_EQ(panel->GetDestinationPath(), "");
  // Up does nothing; OK closes with 1057 and no destination.
  Press(ID_DES_UP);
  EXPECT_EQ(panel->GetDesList()->GetDesCurrentPath(), "");
  EXPECT_EQ(panel->GetDestinationPath(), "");
  Press(ID_DES_OK);
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_OK);
  EXPECT_TRUE(Closed());
}

TEST_F(DesPanelTest, ChoosingEachVolumeListsItsTop) {
  Volumes();
  vt::WriteFile("/mnt/E/stick.txt", "s");
  g_Des_PathInfo.m_sourcePath = "/mnt/Z/";  // no volume left out
  Open();
  ASSERT_EQ(panel->GetDriveChoice()->GetCount(), 3u);
  const char* tops[] = {"/mnt/C/", "/mnt/D/", "/mnt/E/"};
  const char* fields[] = {"C:\\", "D:\\", "E:\\"};
  for (int i : {2, 1, 0}) {
    Choose(i);
    EXPECT_EQ(panel->GetDesList()->GetDesCurrentPath(), tops[i]);
    EXPECT_EQ(panel->GetDesList()->GetRootIndex(), i);
    EXPECT_TRUE(panel->GetDesList()->IsRoot());
    EXPECT_EQ(panel->GetPathText()->GetValue(), fields[i]);
    EXPECT_EQ(RowOf(".."), -1);
  }
  Choose(2);
  EXPECT_NE(RowOf("stick.txt"), -1);
}

TEST_F(DesPanelTest, UpButtonGoesUpAsBackspaceDoes) {
  Volumes();
  Open();
  panel->GetDesList()->Read_FileDir_Array("/mnt/C/docs/inner/");
  Choose(0);
  Rows()->SetItemState(RowOf("docs"), wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
  wxListEvent act(wxEVT_LIST_ITEM_ACTIVATED, FolderListCtrl::kListId);
  act.m_itemIndex = RowOf("docs");
  act.SetEventObject(Rows());
  Rows()->GetEventHandler()->ProcessEvent(act);
  ASSERT_EQ(panel->GetDesList()->GetDesCurrentPath(), "/mnt/C/docs/");
  Press(ID_DES_UP);
  EXPECT_EQ(panel->GetDesList()->GetDesCurrentPath(), "/mnt/C/");
  EXPECT_TRUE(panel->GetDesList()->IsRoot());
  EXPECT_EQ(panel->GetPathText()->GetValue(), "C:\\");
  Press(ID_DES_UP);
  EXPECT_EQ(panel->GetDesList()->GetDesCurrentPath(), "/mnt/C/");
}

TEST_F(DesPanelTest, OkGivesTheSelectedFolderOrTheCurrentFolder) {
  Volumes();
  Open();
  Select("docs");
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C/docs");
  Select("b.txt");
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C");
  Rows()->SetItemState(RowOf("b.txt"), 0, wxLIST_STATE_SELECTED);
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C");
  Select("alpha");
  Press(ID_DES_OK);
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_OK);
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "untouched") << "the copy command writes it";
  // Still there until the next idle time: the frame asks it now.
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C/alpha");
  EXPECT_TRUE(Closed());
}

TEST_F(DesPanelTest, CancelAndTheCloseBoxGive1058) {
  Volumes();
  Open();
  Select("docs");
  Press(ID_DES_CANCEL);
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
  EXPECT_EQ(g_Des_PathInfo.m_destPath, "untouched");
  EXPECT_TRUE(Closed());
  g_Des_PathInfo.m_result = DES_RESULT_OK;
  Open();
  panel->Close();
  EXPECT_EQ(g_Des_PathInfo.m_result, DES_RESULT_CANCEL);
  EXPECT_TRUE(Closed());
}

TEST_F(DesPanelTest, NewFolderAsksForTheNameAndMakesIt) {
  Volumes();
  Open();
  // A name with blanks and non-ASCII letters.
  const wxString name = wxString::FromUTF8("Mes photos \xc3\xa9t\xc3\xa9 \xe6\x96\x87");
  vt::SeenBox asked;
  wxTEST_DIALOG(Press(ID_DES_NEW), wxExpectModal<wxTextEntryDialog>(name, wxID_OK, &asked));
  EXPECT_EQ(asked.caption, "Create a new folder");
  EXPECT_TRUE(asked.message.StartsWith("Folder Name:")) << asked.message;
  EXPECT_TRUE(wxDirExists("/mnt/C/" + name));
  const long row = RowOf(name);
  ASSERT_GE(row, 0);
  EXPECT_EQ(Rows()->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED), row);
  EXPECT_EQ(panel->GetDestinationPath(), "/mnt/C/" + name);
  // An existing name.
  vt::SeenBox box;
  wxTEST_DIALOG(Press(ID_DES_NEW), wxExpectModal<wxTextEntryDialog>("docs"), MessageSeen(&box));
  EXPECT_EQ(box.message, "The folder already exists.");
  EXPECT_EQ(box.caption, "Create Folder error");
  // An empty name: the error box and nothing made.
  const int before = Rows()->GetItemCount();
  box = vt::SeenBox();
  wxTEST_DIALOG(Press(ID_DES_NEW), wxExpectModal<wxTextEntryDialog>(""), MessageSeen(&box));
  EXPECT_EQ(box.message, "The folder is error!");
  EXPECT_EQ(box.caption, "Create Folder error");
  EXPECT_EQ(box.style & (wxOK | wxICON_EXCLAMATION), wxOK | wxICON_EXCLAMATION);
  EXPECT_EQ(Rows()->GetItemCount(), before);
  // Cancel: nothing made, the list has the focus.
  wxTEST_DIALOG(Press(ID_DES_NEW), wxExpectModal<wxTextEntryDialog>("never", wxID_CANCEL));
  EXPECT_FALSE(wxDirExists("/mnt/C/never"));
  vt::Pump(50);
  EXPECT_EQ(wxWindow::FindFocus(), Rows());
}

