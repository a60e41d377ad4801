// The control factory: each function builds its control class from a layout
// record read from controls.txt, with the record's geometry and label.
#include <gtest/gtest.h>

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/panel.h>
#include <wx/radiobut.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/tooltip.h>

#include <cstdio>
#include <string>

#include "common/test_support.h"
#include "settings/CCtrlConfig.h"
#include "unit/settings_test_env.h"
#include "widgets/CCtrlGenerate.h"
#include "widgets/keln_BitmapButton.h"
#include "block_image.h"

using settings::CCtrlConfig;
using vt::IsBlock;

namespace {

class FactoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    png = vt::ExeDir() + "factory_test_blocks.png";
    ASSERT_TRUE(vt::WriteBlocksPng(png));

    env.SetLanguage(1);
    vt::WriteSettingFile("text.txt", vt::Table({"Open\tOuvrir", "Close\tFermer",
                                                "Up One Level\tNiveau sup\xC3\xA9rieur"}));
    vt::WriteSettingFile("resource.txt",
                         vt::Table({"n\t/factory_test_blocks.png\t0|0\t16|16",
                                    "h\t/factory_test_blocks.png\t16|0\t16|16",
                                    "s\t/factory_test_blocks.png\t32|0\t16|16",
                                    "d\t/factory_test_blocks.png\t48|0\t16|16"}));
    vt::WriteSettingFile("controls.txt",
                         vt::Table({"0\ttext\t10|20\t200|30",
                                    "1\tchoice\t10|60\t150|32",
                                    "2\tradio\t10|100\t300|300\t0",
                                    "3\tcheck\t10|130\t300|300\t1",
                                    "4\tbutton\t180|100\t110|36\t1|0",
                                    "5\tstatic\t180|150\t120|20\t0",
                                    "6\tbitmapbutton\t300|10\t24|24\t2\t0|1|2|3",
                                    "7\tbitmapbutton\t330|10\t24|24\t\t2|1|0"}));
    frame = new wxFrame(nullptr, wxID_ANY, "factory", wxPoint(20, 20), wxSize(420, 260));
    parent = new wxPanel(frame);
    cfg = CCtrlConfig::Instance();
    ASSERT_EQ(cfg->GetCount(), 8);
  }
  void TearDown() override {
    frame->Destroy();
    vt::Pump(20);
    std::remove(png.c_str());
  }

  vt::SettingsEnv env;
  std::string png;
  wxFrame* frame = nullptr;
  wxPanel* parent = nullptr;
  CCtrlConfig* cfg = nullptr;
};

}  // namespace

TEST_F(FactoryTest, TextCtrl) {
  wxTextCtrl* c = CCtrlGenerate::Crt_wxTextCtrl(parent, 501, cfg->GetCtrlInfo(0));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetParent(), parent);
  EXPECT_EQ(c->GetId(), 501);
  EXPECT_EQ(c->GetPosition(), wxPoint(10, 20));
  EXPECT_EQ(c->GetSize(), wxSize(200, 30));
  EXPECT_EQ(c->GetValue(), wxT(""));
  EXPECT_FALSE(c->IsMultiLine());
  EXPECT_EQ(c->GetName(), wxString(wxTextCtrlNameStr));
}

TEST_F(FactoryTest, Choice) {
  wxChoice* c = CCtrlGenerate::Crt_wxChoice(parent, 502, cfg->GetCtrlInfo(1));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetParent(), parent);
  EXPECT_EQ(c->GetId(), 502);
  EXPECT_EQ(c->GetPosition(), wxPoint(10, 60));
  EXPECT_EQ(c->GetSize(), wxSize(150, 32));
  EXPECT_EQ(c->GetCount(), 0u);
  EXPECT_EQ(c->GetName(), wxString(wxChoiceNameStr));
}

TEST_F(FactoryTest, RadioButtonTakesTextSlotZeroAndItsDefaultSize) {
  wxRadioButton* c = CCtrlGenerate::Crt_wxRadioButton(parent, 503, cfg->GetCtrlInfo(2));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetId(), 503);
  EXPECT_EQ(c->GetLabel(), wxT("Ouvrir"));
  EXPECT_EQ(c->GetPosition(), wxPoint(10, 100));
  // The record's 300 x 300 is not used: the control takes its best size.
  EXPECT_EQ(c->GetSize(), c->GetBestSize());
  EXPECT_LT(c->GetSize().y, 300);
  EXPECT_EQ(c->GetName(), wxString(wxRadioButtonNameStr));
}

TEST_F(FactoryTest, CheckBoxTakesTextSlotZeroAndItsDefaultSize) {
  wxCheckBox* c = CCtrlGenerate::Crt_wxCheckBox(parent, 504, cfg->GetCtrlInfo(3));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetId(), 504);
  EXPECT_EQ(c->GetLabel(), wxT("Fermer"));
  EXPECT_EQ(c->GetPosition(), wxPoint(10, 130));
  EXPECT_EQ(c->GetSize(), c->GetBestSize());
  EXPECT_LT(c->GetSize().y, 300);
  EXPECT_FALSE(c->GetValue());
  EXPECT_EQ(c->GetName(), wxString(wxCheckBoxNameStr));
}

TEST_F(FactoryTest, Button) {
  wxButton* c = CCtrlGenerate::Crt_wxButton(parent, 505, cfg->GetCtrlInfo(4));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetId(), 505);
  EXPECT_EQ(c->GetLabel(), wxT("Fermer"));
  EXPECT_EQ(c->GetPosition(), wxPoint(180, 100));
  EXPECT_EQ(c->GetSize(), wxSize(110, 36));
  EXPECT_EQ(c->GetName(), wxString(wxButtonNameStr));
}

TEST_F(FactoryTest, StaticText) {
  wxStaticText* c = CCtrlGenerate::Crt_wxStaticText(parent, -1, cfg->GetCtrlInfo(5));
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(c->GetLabel(), wxT("Ouvrir"));
  EXPECT_EQ(c->GetPosition(), wxPoint(180, 150));
  EXPECT_EQ(c->GetSize(), wxSize(120, 20));
  EXPECT_EQ(c->GetWindowStyleFlag() & 0x20, 0x20);
  EXPECT_EQ(c->GetName(), wxString(wxStaticTextNameStr));
}

TEST_F(FactoryTest, BitmapButtonWithPicturesAndToolTip) {
  keln_BitmapButton* b = CCtrlGenerate::Crt_MyBitmapButton(parent, 1054, cfg->GetCtrlInfo(6));
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->GetParent(), parent);
  EXPECT_EQ(b->GetCommandId(), 1054);
  EXPECT_EQ(b->GetCaption(), wxT(""));
  EXPECT_EQ(b->GetPosition(), wxPoint(300, 10));
  EXPECT_EQ(b->GetSize(), wxSize(24, 24));
  // Slots 0, 1, 2: normal, hover, pressed ("select"); no disabled picture.
  EXPECT_TRUE(IsBlock(b->GetBitmap_Normal(), 0));
  EXPECT_TRUE(IsBlock(b->GetBitmap_Hover(), 1));
  EXPECT_TRUE(IsBlock(b->GetBitmap_Select(), 2));
  EXPECT_FALSE(b->GetBitmap_Disabled().IsOk());
  ASSERT_NE(b->GetToolTip(), nullptr);
  EXPECT_EQ(b->GetToolTipText(), wxString::FromUTF8("Niveau sup\xC3\xA9rieur"));
}

TEST_F(FactoryTest, BitmapButtonWithoutTextsHasNoToolTip) {
  keln_BitmapButton* b = CCtrlGenerate::Crt_MyBitmapButton(parent, 1055, cfg->GetCtrlInfo(7));
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->GetToolTip(), nullptr);
  EXPECT_TRUE(IsBlock(b->GetBitmap_Normal(), 2));
  EXPECT_TRUE(IsBlock(b->GetBitmap_Hover(), 1));
  EXPECT_TRUE(IsBlock(b->GetBitmap_Select(), 0));
  EXPECT_EQ(b->GetState(), 0);
}

TEST_F(FactoryTest, LabelledControlWithoutTextsFailsTheSlotCheck) {
  // Record 0 has no texts: a button built from it ends the process.
  EXPECT_DEATH(CCtrlGenerate::Crt_wxButton(parent, 506, cfg->GetCtrlInfo(0)),
               vt::AssertionRegex("src/CCtrlConfig", 19,
                                  "const wxString& CONTROLINFO::GetText(int) const",
                                  "nIdx >= 0 && nIdx < (int)texts.GetCount()"));
}

TEST_F(FactoryTest, BitmapButtonNeedsThreeImageSlots) {
  // Record 4 has no images.
  EXPECT_DEATH(CCtrlGenerate::Crt_MyBitmapButton(parent, 507, cfg->GetCtrlInfo(4)),
               vt::AssertionRegex("src/CCtrlConfig", 26,
                                  "const wxBitmap& CONTROLINFO::GetRes(int) const",
                                  "nIdx >= 0 && nIdx < (int)resources.GetCount()"));
}
