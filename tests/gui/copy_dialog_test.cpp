// The replacement question on its own: layout, texts, the answer each button
// and the close box leave in g_copy_dialog_return, Escape, and the dialog
// destroying itself after every answer.
#include <gtest/gtest.h>

#include <wx/button.h>
#include <wx/frame.h>
#include <wx/stattext.h>
#include <wx/uiaction.h>
#include <wx/weakref.h>

#include "copy/CopyAnswer.h"
#include "copy/copy_dialog.h"
#include "common/test_support.h"
#include "copy_questions_env.h"

namespace {

class CopyDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    top = new wxFrame(nullptr, wxID_ANY, "owner", wxPoint(0, 0), wxSize(700, 500));
    top->Show();
    vt::PumpUntil([this] { return top->IsShownOnScreen(); });
  }
  void TearDown() override {
    if (dialog) dialog->Destroy();
    top->Destroy();
    vt::Pump(30);
  }
  copy_dialog* Make(long buttons = 1) {
    copy_dialog* d = new copy_dialog(top, -1, "Confirmation of File Replacement",
                                     wxPoint(250, 230), wxSize(500, 170),
                                     wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU, buttons);
    dialog = d;
    return d;
  }
  // Shows the dialog on screen and waits until it is there.
  void ShowOnScreen(copy_dialog* d) {
    d->Show();
    d->Raise();
    EXPECT_TRUE(vt::PumpUntil([&] { return d->IsShownOnScreen(); }));
    vt::Pump(100);
  }
  // True once the dialog has been deleted (its Destroy completes at idle).
  bool Gone() {
    vt::PumpUntil([this] { return !dialog; }, 2000);
    return !dialog;
  }

  wxFrame* top = nullptr;
  wxWeakRef<copy_dialog> dialog;
};

TEST_F(CopyDialogTest, LayoutOfTheFourButtonsAndTheLabel) {
  copy_dialog* d = Make();
  EXPECT_EQ(d->GetTitle(), "Confirmation of File Replacement");
  EXPECT_EQ(d->GetBackgroundColour(), wxColour(248, 248, 248));
  EXPECT_EQ(d->GetSize(), wxSize(500, 170));
  EXPECT_EQ(d->GetWindowStyleFlag() & (wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU),
            wxCAPTION | wxCLOSE_BOX | wxSYSTEM_MENU);
  ASSERT_NE(d->m_messageLabel, nullptr);
  EXPECT_EQ(d->m_messageLabel->GetPosition(), wxPoint(30, 10));
  EXPECT_EQ(d->m_messageLabel->GetLabel(), "");
  struct Want {
    wxButton* button;
    int id;
    const char* label;
    wxPoint pos;
  };
  const Want wants[] = {{d->m_yesButton, 200, "&Yes", wxPoint(60, 120)},
                        {d->m_yesToAllButton, 201, "Yes To &All", wxPoint(160, 120)},
                        {d->m_noButton, 202, "&No", wxPoint(260, 120)},
                        {d->m_cancelButton, 203, "&Cancel", wxPoint(360, 120)}};
  for (const Want& w : wants) {
    ASSERT_NE(w.button, nullptr) << w.label;
    EXPECT_EQ(w.button->GetId(), w.id) << w.label;
    EXPECT_EQ(w.button->GetLabel(), w.label);
    EXPECT_EQ(w.button->GetPosition(), w.pos) << w.label;
    EXPECT_EQ(w.button->GetSize(), wxSize(80, 28)) << w.label;
    EXPECT_EQ(w.button->GetParent(), d);
  }
  // No button carries a standard id that the toolkit would act on by itself.
  EXPECT_EQ(d->FindWindow(wxID_CANCEL), nullptr);
  EXPECT_EQ(d->FindWindow(wxID_OK), nullptr);
  EXPECT_EQ(d->GetChildren().GetCount(), 5u);
}

TEST_F(CopyDialogTest, TheMessageLabelGrowsWithItsText) {
  copy_dialog* d = Make();
  const wxString text =
      "This folder already contains a file named 'b.txt' \n\nWould you like to replace the "
      "existing file with this one? ";
  d->SetcopyLableMessage(text);
  EXPECT_EQ(d->m_messageLabel->GetLabel(), text);
  EXPECT_GT(d->m_messageLabel->GetSize().GetWidth(), 30);
  EXPECT_GT(d->m_messageLabel->GetSize().GetHeight(), 40) << "several lines";
}

TEST_F(CopyDialogTest, StandsAtItsFixedPositionWhenShown) {
  copy_dialog* d = Make();
  ShowOnScreen(d);
  EXPECT_EQ(d->GetPosition(), wxPoint(250, 230));
  EXPECT_EQ(d->GetScreenPosition(), wxPoint(250, 230));
}

TEST_F(CopyDialogTest, EachButtonStoresItsAnswerAndDestroysTheDialog) {
  for (int id : {200, 201, 202, 203}) {
    copy_dialog* d = Make();
    ShowOnScreen(d);
    EXPECT_EQ(g_copy_dialog_return, 0);
    vt::PressQuestionButton(d, id);
    EXPECT_EQ(g_copy_dialog_return, id);
    EXPECT_FALSE(d->IsShown()) << "hidden at once";
    EXPECT_TRUE(Gone()) << "button " << id;
    EXPECT_EQ(g_copy_dialog_return, id) << "the answer outlives the dialog";
  }
}

TEST_F(CopyDialogTest, AMouseClickOnYesToAllAnswers201) {
  copy_dialog* d = Make();
  ShowOnScreen(d);
  wxUIActionSimulator sim;
  sim.MouseMove(d->m_yesToAllButton->GetScreenRect().GetPosition() + wxPoint(40, 14));
  vt::Pump(30);
  sim.MouseClick();
  EXPECT_TRUE(vt::PumpUntil([] { return g_copy_dialog_return != 0; }));
  EXPECT_EQ(g_copy_dialog_return, 201);
  EXPECT_TRUE(Gone());
}

TEST_F(CopyDialogTest, TheCloseBoxAnswersCancel) {
  copy_dialog* d = Make();
  ShowOnScreen(d);
  // The close box sends the close event, as Close() does.
  d->Close();
  EXPECT_EQ(g_copy_dialog_return, 203);
  EXPECT_TRUE(Gone());
}

TEST_F(CopyDialogTest, ConstructingADialogResetsAnEarlierYesToAll) {
  g_copy_dialog_return = 201;
  Make();
  EXPECT_EQ(g_copy_dialog_return, 0);
}

TEST_F(CopyDialogTest, EscapeAnswersCancel) {
  copy_dialog* d = Make();
  ShowOnScreen(d);
  d->m_yesButton->SetFocus();
  vt::Pump(100);
  wxUIActionSimulator sim;
  sim.Char(WXK_ESCAPE);
  EXPECT_TRUE(vt::PumpUntil([] { return g_copy_dialog_return != 0; }));
  EXPECT_EQ(g_copy_dialog_return, 203);
  EXPECT_TRUE(Gone());
}

TEST_F(CopyDialogTest, WithoutButtonsOnlyTheLabelAndTheCloseBoxAnswersCancel) {
  copy_dialog* d = Make(0);
  EXPECT_EQ(d->m_yesButton, nullptr);
  EXPECT_EQ(d->m_yesToAllButton, nullptr);
  EXPECT_EQ(d->m_noButton, nullptr);
  EXPECT_EQ(d->m_cancelButton, nullptr);
  ASSERT_EQ(d->GetChildren().GetCount(), 1u);
  EXPECT_EQ(d->GetChildren().GetFirst()->GetData(), d->m_messageLabel);
  d->SetcopyLableMessage("Copying is not possible");
  ShowOnScreen(d);
  // Escape finds no button to press: the dialog stays until its close box.
  d->SetFocus();
  vt::Pump(50);
  wxUIActionSimulator sim;
  sim.Char(WXK_ESCAPE);
  vt::Pump(300);
  EXPECT_EQ(g_copy_dialog_return, 0);
  EXPECT_TRUE(d->IsShown());
  d->Close();
  EXPECT_EQ(g_copy_dialog_return, 203);
  EXPECT_TRUE(Gone());
}

TEST_F(CopyDialogTest, AnsweredThroughShowModalTheGlobalCarriesTheAnswer) {
  copy_dialog* d = Make();
  std::vector<vt::SeenQuestion> seen;
  d->SetcopyLableMessage("question");
  wxTEST_DIALOG(d->ShowModal(), wxExpectModal<copy_dialog>(COPY_ANSWER_NO, &seen));
  EXPECT_EQ(g_copy_dialog_return, 202);
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].text, "question");
  EXPECT_EQ(seen[0].parent, top);
  EXPECT_TRUE(Gone());
}

}  // namespace
