#include "settings/CTextRes.h"

#include <wx/config.h>
#include <wx/convauto.h>
#include <wx/filename.h>
#include <wx/log.h>
#include <wx/textfile.h>

#include "settings/CResCenter.h"
#include "settings/SettingsAssert.h"
#include "settings/SettingsParse.h"

namespace settings {

CTextRes::CTextRes() : m_nLang(1) {
  m_TextArr.Clear();

  wxConfigBase* config = wxConfigBase::Get(true);
  long lang = 1;
  if (config) config->Read(wxT("/Interface/language_Type"), &lang, 1L);
  m_nLang = static_cast<int>(lang);
  // Two further look-ups that do not create a configuration object.
  (void)wxConfigBase::Get(false);
  (void)wxConfigBase::Get(false);

  m_TextArr.Clear();
  wxTextFile file;
  wxString path;
  // A missing file leaves the table empty without any message.
  if (!OpenSettingsFile(wxT("text.txt"), file, path)) return;
  const size_t count = file.GetLineCount();
  for (size_t i = 1; i < count; ++i) m_TextArr.Add(TabColumn(file.GetLine(i), m_nLang));
  file.Close();
}

CTextRes::~CTextRes() {}

const wxString& CTextRes::GetText(int nIdx) {
  // Fixed output: tests check this assertion text as it stands.
  SETTINGS_ASSERT(nIdx >= 0 && nIdx <= (int)m_TextArr.GetCount(), "src/CTextRes", 73,
                  "const wxString& settings::CTextRes::GetText(int)",
                  "nIdx >= 0 && nIdx <= (int)m_TextArr.GetCount()");
  static const wxString s_empty;
  if (nIdx >= (int)m_TextArr.GetCount()) return s_empty;
  return m_TextArr[nIdx];
}

void CTextRes::SetLang(int lang) { m_nLang = lang; }

}  // namespace settings
