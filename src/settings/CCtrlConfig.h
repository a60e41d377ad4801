// The control layout table: placement, text numbers and image numbers of the
// controls of the main frame and the destination panel, read from
// <exe dir>/setting/vantori/controls.txt.
#pragma once

#include <wx/dynarray.h>
#include <wx/gdicmn.h>

#include "settings/CONTROLINFO.h"

// Owning array of layout records; Add(info, count) appends count copies.
WX_DECLARE_OBJARRAY(CONTROLINFO, ArrayOfCtrl);

namespace settings {

class CResCenter;

class CCtrlConfig {
 public:
  // The instance; the first call makes sure the resource centre exists (texts
  // and images), then loads controls.txt.
  static CCtrlConfig* Instance();
  // Deletes the instance if any, then always releases the resource centre.
  static void UnInstance();

  // The record of control nIdx and its parts. The checks admit nIdx == count
  // (the table's own lax bound); that index gives an empty record.
  CONTROLINFO& GetCtrlInfo(int nIdx) const;
  wxRect& GetRect(int nIdx) const;
  wxArrayInt& GetRes(int nIdx) const;
  wxArrayInt& GetTexts(int nIdx) const;

  // Always null: the resource centre is reached through CResCenter::Instance().
  CResCenter* GetResCenter() const { return m_pResCenter; }

  int GetCount() const { return static_cast<int>(m_CtrlInfos->GetCount()); }

  virtual ~CCtrlConfig();

 protected:
  CCtrlConfig();

 private:
  CCtrlConfig(const CCtrlConfig&) = delete;
  CCtrlConfig& operator=(const CCtrlConfig&) = delete;

  // Record nIdx, or a fresh empty record for nIdx == count.
  CONTROLINFO& Record(int nIdx) const;

  ArrayOfCtrl* m_CtrlInfos;
  CResCenter* m_pResCenter;
  static CCtrlConfig* s_pCtrlConfig;
};

}  // namespace settings
