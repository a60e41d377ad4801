// The text table: user-visible texts by number, read from
// <exe dir>/setting/vantori/text.txt in the configured language column.
#pragma once

#include <wx/arrstr.h>
#include <wx/string.h>

namespace settings {

class CTextRes {
 public:
  CTextRes();
  virtual ~CTextRes();

  // Text number nIdx. The check admits nIdx == count (the table's own lax
  // bound); that index then gives an empty string.
  const wxString& GetText(int nIdx);

  // Stores the language number; the table already loaded is not re-read.
  void SetLang(int lang);
  int GetLang() const { return m_nLang; }
  int GetCount() const { return static_cast<int>(m_TextArr.GetCount()); }

 private:
  wxArrayString m_TextArr;
  int m_nLang;
};

}  // namespace settings
