#include "settings/CCtrlConfig.h"

#include <wx/convauto.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/textfile.h>

#include <cstdio>

#include "settings/CResCenter.h"
#include "settings/SettingsAssert.h"
#include "settings/SettingsParse.h"

#include <wx/arrimpl.cpp>
WX_DEFINE_OBJARRAY(ArrayOfCtrl);

namespace settings {

CCtrlConfig* CCtrlConfig::s_pCtrlConfig = nullptr;

CCtrlConfig* CCtrlConfig::Instance() {
  if (!s_pCtrlConfig) {
    CResCenter::Instance();
    s_pCtrlConfig = new CCtrlConfig;
  }
  return s_pCtrlConfig;
}

void CCtrlConfig::UnInstance() {
  if (s_pCtrlConfig) {
    delete s_pCtrlConfig;
    s_pCtrlConfig = nullptr;
  }
  CResCenter::UnInstance();
}

CCtrlConfig::CCtrlConfig() : m_CtrlInfos(nullptr), m_pResCenter(nullptr) {
  m_CtrlInfos = new ArrayOfCtrl;

  wxTextFile file;
  wxString path;
  if (!OpenSettingsFile(wxT("controls.txt"), file, path)) return;
  std::printf("epen %s success!\n", static_cast<const char*>(path.utf8_str()));
  std::fflush(stdout);

  const size_t count = file.GetLineCount();
  for (size_t i = 1; i < count; ++i) {
    // Columns: free text, control name, x|y, w|h, text numbers, image numbers.
    wxString s = file.GetLine(i).AfterFirst('\t').AfterFirst('\t');

    int x = 0, y = 0, w = 0, h = 0;
    NumberPair(s.BeforeFirst('\t'), x, y);
    s = s.AfterFirst('\t');
    NumberPair(s.BeforeFirst('\t'), w, h);

    CONTROLINFO info;
    info.rect = wxRect(x, y, w, h);

    s = s.AfterFirst('\t');
    AppendNumberList(s.BeforeFirst('\t'), info.texts);
    s = s.AfterFirst('\t');
    AppendNumberList(s.BeforeFirst('\t'), info.resources);

    m_CtrlInfos->Add(info, 1);
  }
  file.Close();
}

CCtrlConfig::~CCtrlConfig() {
  delete m_CtrlInfos;
  m_CtrlInfos = nullptr;
  if (m_pResCenter) {
    delete m_pResCenter;
    m_pResCenter = nullptr;
  }
}

CONTROLINFO& CCtrlConfig::Record(int nIdx) const {
  if (nIdx >= (int)m_CtrlInfos->GetCount()) {
    // Handed out by reference: start every caller from an empty record.
    static CONTROLINFO s_empty;
    s_empty = CONTROLINFO();
    return s_empty;
  }
  return m_CtrlInfos->Item(nIdx);
}

wxRect& CCtrlConfig::GetRect(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount(), "src/CCtrlConfig", 132,
                  "wxRect& settings::CCtrlConfig::GetRect(int) const",
                  "nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount()");
  return Record(nIdx).rect;
}

wxArrayInt& CCtrlConfig::GetTexts(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount(), "src/CCtrlConfig", 138,
                  "wxArrayInt& settings::CCtrlConfig::GetTexts(int) const",
                  "nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount()");
  return Record(nIdx).texts;
}

wxArrayInt& CCtrlConfig::GetRes(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount(), "src/CCtrlConfig", 144,
                  "wxArrayInt& settings::CCtrlConfig::GetRes(int) const",
                  "nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount()");
  return Record(nIdx).resources;
}

CONTROLINFO& CCtrlConfig::GetCtrlInfo(int nIdx) const {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount(), "src/CCtrlConfig", 150,
                  "CONTROLINFO& settings::CCtrlConfig::GetCtrlInfo(int) const",
                  "nIdx >= 0 && nIdx <= (int)m_CtrlInfos->GetCount()");
  return Record(nIdx);
}

}  // namespace settings
