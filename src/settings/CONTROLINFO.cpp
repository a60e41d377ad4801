#include "settings/CONTROLINFO.h"

#include "settings/CResCenter.h"
#include "settings/SettingsAssert.h"

const wxString& CONTROLINFO::GetText(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx < (int)texts.GetCount(), "src/CCtrlConfig", 19,
                  "const wxString& CONTROLINFO::GetText(int) const",
                  "nIdx >= 0 && nIdx < (int)texts.GetCount()");
  return settings::CResCenter::Instance()->GetText(texts[nIdx]);
}

const wxBitmap& CONTROLINFO::GetRes(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx < (int)resources.GetCount(), "src/CCtrlConfig", 26,
                  "const wxBitmap& CONTROLINFO::GetRes(int) const",
                  "nIdx >= 0 && nIdx < (int)resources.GetCount()");
  return settings::CResCenter::Instance()->GetBitmap(resources[nIdx]);
}
