// The settings files shipped beside the program load completely: every text
// and image number that a control record names exists, and every image is
// a valid cut-out of its PNG file.
#include <gtest/gtest.h>

#include "common/test_support.h"
#include "settings/CCtrlConfig.h"
#include "settings/CImageRes.h"
#include "settings/CResCenter.h"
#include "settings/CTextRes.h"
#include "unit/settings_test_env.h"

using settings::CCtrlConfig;
using settings::CResCenter;

TEST(ShippedSettings, ControlRecordsNameExistingTextsAndImages) {
  vt::SettingsEnv env;
  vt::InstallShippedSettings();
  CCtrlConfig* cfg = CCtrlConfig::Instance();
  CResCenter* centre = CResCenter::Instance();
  const int texts = centre->GetTextRes()->GetCount();
  const int images = centre->GetImageRes()->GetCount();
  ASSERT_GT(cfg->GetCount(), 14) << "the main frame places controls 2 to 14";
  ASSERT_GT(texts, 0);
  ASSERT_GT(images, 0);

  for (int i = 0; i < images; ++i) EXPECT_TRUE(centre->GetBitmap(i).IsOk()) << "image " << i;
  for (int i = 0; i < texts; ++i) EXPECT_FALSE(centre->GetText(i).empty()) << "text " << i;

  for (int c = 0; c < cfg->GetCount(); ++c) {
    const CONTROLINFO& info = cfg->GetCtrlInfo(c);
    for (size_t s = 0; s < info.texts.GetCount(); ++s) {
      EXPECT_GE(info.texts[s], 0) << "control " << c;
      EXPECT_LT(info.texts[s], texts) << "control " << c;
    }
    for (size_t s = 0; s < info.resources.GetCount(); ++s) {
      EXPECT_GE(info.resources[s], 0) << "control " << c;
      EXPECT_LT(info.resources[s], images) << "control " << c;
      if (info.resources[s] >= 0 && info.resources[s] < images) {
        EXPECT_TRUE(info.GetRes(static_cast<int>(s)).IsOk()) << "control " << c << " slot " << s;
      }
    }
  }
  // The up and refresh buttons of the main frame take four pictures each.
  EXPECT_GE(cfg->GetRes(7).GetCount(), 4u);
  EXPECT_GE(cfg->GetRes(8).GetCount(), 4u);
}
