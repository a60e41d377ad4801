// The progress dialog of deleting in the destination (its fixed layout;
// Cancel and the close box only set the flag) and deleting with it shown:
// counts, gauge, current item, Cancel while counting and while deleting,
// checked on the disk afterwards.
#include <gtest/gtest.h>

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/uiaction.h>

#include <sys/stat.h>

#include <string>

#include "common/fake_fileops.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "destination/DeleteFileProgress.h"
#include "destination/DeleteFile_dialog.h"
#include "display/Conversion.h"
#include "fileops/WalkStatus.h"
#include "timer_call.h"
#include "unit/fileops_test_tree.h"
#include "window_children.h"

using vt::ChildWithLabel;

namespace {

using vt::CountBelow;
using vt::Exists;

class DeleteDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    owner = new wxFrame(nullptr, wxID_ANY, "owner", wxPoint(0, 0), wxSize(640, 480));
    owner->Show();
    ASSERT_TRUE(vt::PumpUntil([&] { return owner->IsShownOnScreen(); }));
    dialog = new DeleteFile_dialog(owner, wxID_ANY, "Deleting Data", wxPoint(320, 230),
                                   wxSize(400, 225),
                                   wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX);
  }
  void TearDown() override {
    if (dialog != nullptr) dialog->Destroy();
    owner->Destroy();
    vt::Pump(30);
  }
  void ShowDialog() {
    dialog->Show();
    ASSERT_TRUE(vt::PumpUntil([&] { return dialog->IsShownOnScreen(); }));
  }
  wxFrame* owner = nullptr;
  DeleteFile_dialog* dialog = nullptr;
};

TEST_F(DeleteDialogTest, FixedLayoutTextsAndStartValues) {
  EXPECT_EQ(dialog->GetBackgroundColour(), wxColour(248, 248, 248));
  ShowDialog();
  vt::Pump(50);
  EXPECT_EQ(dialog->GetTitle(), "Deleting Data");
  EXPECT_EQ(dialog->GetPosition(), wxPoint(320, 230));
  EXPECT_EQ(dialog->GetSize(), wxSize(400, 225));
  EXPECT_EQ(dialog->m_parent, owner);
  EXPECT_EQ(dialog->m_fileCount, 0);
  EXPECT_EQ(dialog->m_folderCount, 0);
  EXPECT_EQ(dialog->m_doneSinceStep, 0);
  EXPECT_EQ(dialog->m_percent, 0);
  EXPECT_EQ(dialog->m_step, 0);
  EXPECT_EQ(dialog->m_lastIndex, -1);
  EXPECT_FALSE(dialog->m_cancel);
  EXPECT_EQ(dialog->m_status, 0);

  wxStaticBox* box = ChildWithLabel<wxStaticBox>(dialog, "Delete");
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->GetPosition(), wxPoint(10, 10));
  EXPECT_EQ(box->GetSize(), wxSize(375, 150));
  wxStaticText* files = ChildWithLabel<wxStaticText>(dialog, "Files: ");
  wxStaticText* folders = ChildWithLabel<wxStaticText>(dialog, "Folder: ");
  ASSERT_NE(files, nullptr);
  ASSERT_NE(folders, nullptr);
  EXPECT_EQ(files->GetPosition(), wxPoint(30, 30));
  EXPECT_EQ(files->GetSize(), wxSize(50, 25));
  EXPECT_EQ(folders->GetPosition(), wxPoint(30, 55));
  EXPECT_EQ(folders->GetSize(), wxSize(50, 25));
  EXPECT_EQ(dialog->m_filesCountText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_filesCountText->GetPosition(), wxPoint(90, 30));
  EXPECT_EQ(dialog->m_filesCountText->GetSize(), wxSize(130, 25));
  EXPECT_EQ(dialog->m_folderCountText->GetLabel(), "0");
  EXPECT_EQ(dialog->m_folderCountText->GetPosition(), wxPoint(90, 55));
  EXPECT_EQ(dialog->m_folderCountText->GetSize(), wxSize(130, 25));
  EXPECT_EQ(dialog->m_gauge->GetRange(), 100);
  EXPECT_EQ(dialog->m_gauge->GetValue(), 0);
  EXPECT_FALSE(dialog->m_gauge->IsVertical());
  EXPECT_EQ(dialog->m_gauge->GetPosition(), wxPoint(30, 90));
  EXPECT_EQ(dialog->m_gauge->GetSize(), wxSize(330, 25));
  EXPECT_EQ(dialog->m_currentText->GetLabel(), "");
  EXPECT_EQ(dialog->m_currentText->GetPosition(), wxPoint(30, 125));
  EXPECT_EQ(dialog->m_currentText->GetSize(), wxSize(330, 25));
  ASSERT_NE(dialog->m_cancelButton, nullptr);
  EXPECT_EQ(dialog->m_cancelButton->GetId(), 205);
  EXPECT_EQ(dialog->m_cancelButton->GetLabel(), "&Cancel");
  EXPECT_EQ(dialog->m_cancelButton->GetPosition(), wxPoint(305, 180));
  EXPECT_EQ(dialog->m_cancelButton->GetSize(), wxSize(80, 28));
}

TEST_F(DeleteDialogTest, CancelButtonAndCloseBoxOnlySetTheFlag) {
  ShowDialog();
  const wxRect r = dialog->m_cancelButton->GetScreenRect();
  wxUIActionSimulator sim;
  sim.MouseMove(r.GetPosition() + wxPoint(r.width / 2, r.height / 2));
  vt::Pump(30);
  sim.MouseClick();
  ASSERT_TRUE(vt::PumpUntil([&] { return dialog->m_cancel; }));
  vt::Pump(50);
  EXPECT_TRUE(dialog->IsShown()) << "the dialog does not close itself";
  EXPECT_FALSE(dialog->IsBeingDeleted());

  dialog->m_cancel = false;
  dialog->Close();  // what the close box sends
  vt::Pump(50);
  EXPECT_TRUE(dialog->m_cancel);
  EXPECT_TRUE(dialog->IsShown());
  EXPECT_FALSE(dialog->IsBeingDeleted());
  EXPECT_EQ(dialog->m_status, 0);
  EXPECT_EQ(dialog->m_gauge->GetValue(), 0);
}

TEST_F(DeleteDialogTest, DeletingATreeFillsTheCountsTheGaugeAndTheMembers) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int d = 0; d < 4; ++d) {
    const std::string sub = "t/d" + std::to_string(d);
    t.Folder(sub);
    for (int i = 0; i < 300; ++i) t.File(sub + "/f" + std::to_string(i), 0);
  }
  t.File("t/top file", 1);
  t.File("keep", 1);
  ShowDialog();
  DeleteFileProgress run(dialog);
  const wxString target = wxString::FromUTF8(t.Path("t"));
  vt::StdoutCapture quiet;
  EXPECT_EQ(run.Count(target), kStatusWalked);
  EXPECT_EQ(dialog->m_fileCount, 1201);
  EXPECT_EQ(dialog->m_folderCount, 4);
  EXPECT_EQ(dialog->m_filesCountText->GetLabel(), "1,201");
  EXPECT_EQ(dialog->m_folderCountText->GetLabel(), "4");
  EXPECT_EQ(run.DeleteContents(target), kStatusWalked);
  EXPECT_EQ(dialog->m_step, 12);
  EXPECT_GT(dialog->m_percent, 90);
  EXPECT_LE(dialog->m_gauge->GetValue(), 100);
  run.RemoveTarget(target);
  quiet.Stop();
  EXPECT_EQ(dialog->m_percent, 100);
  EXPECT_EQ(dialog->m_gauge->GetValue(), 100);
  EXPECT_EQ(dialog->m_currentText->GetLabel(), Conversion_Path(target, 40));
  EXPECT_EQ(run.FailedCount(), 0);
  EXPECT_EQ(run.FailureMessage(), "");
  EXPECT_FALSE(Exists(t.Path("t")));
  EXPECT_TRUE(Exists(t.Path("keep")));
}

TEST_F(DeleteDialogTest, CancelWhileCountingLeavesEverything) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int i = 0; i < 400; ++i) t.File("t/f" + std::to_string(i), 0);
  ShowDialog();
  vt::FakeFileOps fake;
  fake.Delay(vt::FakeFileOps::kLstat, 2, "*/t/f*");  // counting takes about 0.8 s
  int ticks = 0;
  vt::TimerCall click(100, [&] {
    if (++ticks == 1) {
      wxCommandEvent press(wxEVT_BUTTON, ID_DELETE_CANCEL);
      press.SetEventObject(dialog->m_cancelButton);
      dialog->m_cancelButton->GetEventHandler()->ProcessEvent(press);
    }
  });
  DeleteFileProgress run(dialog);
  EXPECT_EQ(run.Count(wxString::FromUTF8(t.Path("t"))), kStatusStopped);
  EXPECT_TRUE(dialog->m_cancel);
  EXPECT_EQ(dialog->m_status, kStatusStopped);
  EXPECT_GT(dialog->m_fileCount, 0);
  EXPECT_LT(dialog->m_fileCount, 400);
  EXPECT_EQ(fake.Count(vt::FakeFileOps::kUnlinkat), 0);
  EXPECT_EQ(CountBelow(t.Path("t")), 400);
}

TEST_F(DeleteDialogTest, CloseBoxWhileDeletingKeepsWhatWasRemovedAndLeavesTheRest) {
  vt::ScratchTree t;
  t.Folder("t");
  for (int i = 0; i < 400; ++i) t.File("t/f" + std::to_string(i), 0);
  ShowDialog();
  DeleteFileProgress run(dialog);
  const wxString target = wxString::FromUTF8(t.Path("t"));
  ASSERT_EQ(run.Count(target), kStatusWalked);
  vt::FakeFileOps fake;
  fake.Delay(vt::FakeFileOps::kUnlinkat, 2, "*/t/f*");  // deleting takes about 0.8 s
  int ticks = 0;
  vt::TimerCall close(100, [&] {
    if (++ticks == 1) dialog->Close();
  });
  vt::StdoutCapture quiet;
  EXPECT_EQ(run.DeleteContents(target), kStatusStopped);
  quiet.Stop();
  EXPECT_TRUE(dialog->m_cancel);
  EXPECT_EQ(dialog->m_status, kStatusStopped);
  const int removed = fake.Count(vt::FakeFileOps::kUnlinkat);
  EXPECT_GT(removed, 0);
  EXPECT_LT(removed, 400);
  EXPECT_EQ(CountBelow(t.Path("t")), 400 - removed);
  EXPECT_TRUE(Exists(t.Path("t")));
}

}  // namespace
