#include "settings/CResCenter.h"

#include "common/ResourcePaths.h"
#include "settings/CImageRes.h"
#include "settings/CTextRes.h"

namespace settings {

CResCenter* CResCenter::m_ResCentre = nullptr;

CResCenter* CResCenter::Instance() {
  if (!m_ResCentre) m_ResCentre = new CResCenter;
  return m_ResCentre;
}

void CResCenter::UnInstance() {
  delete m_ResCentre;
  m_ResCentre = nullptr;
}

bool CResCenter::GetExeFilePath(wxString& path) {
  path = common::ExeDirectory();
  return true;
}

CResCenter::CResCenter() : m_pTextRes(nullptr), m_pImageRes(nullptr) {
  m_pTextRes = new CTextRes;
  m_pImageRes = new CImageRes;
}

CResCenter::~CResCenter() {
  delete m_pTextRes;
  m_pTextRes = nullptr;
  delete m_pImageRes;
  m_pImageRes = nullptr;
}

const wxString& CResCenter::GetText(int nIdx) { return m_pTextRes->GetText(nIdx); }

const wxBitmap& CResCenter::GetBitmap(int nIdx) { return m_pImageRes->GetBitmap(nIdx); }

}  // namespace settings
