// The resource centre: the one process-wide owner of the text table and the
// image table, and the source of the executable's directory on which every
// settings file path is built.
#pragma once

#include <wx/bitmap.h>
#include <wx/string.h>

namespace settings {

class CTextRes;
class CImageRes;

class CResCenter {
 public:
  // The instance, created on first call (loads text.txt, then resource.txt).
  static CResCenter* Instance();
  // Deletes the instance (both tables) and forgets it.
  static void UnInstance();
  // path = directory of the running executable + path separator; true.
  static bool GetExeFilePath(wxString& path);

  const wxString& GetText(int nIdx);
  const wxBitmap& GetBitmap(int nIdx);

  CTextRes* GetTextRes() const { return m_pTextRes; }
  CImageRes* GetImageRes() const { return m_pImageRes; }

  virtual ~CResCenter();

 protected:
  CResCenter();

 private:
  CResCenter(const CResCenter&) = delete;
  CResCenter& operator=(const CResCenter&) = delete;

  CTextRes* m_pTextRes;
  CImageRes* m_pImageRes;
  static CResCenter* m_ResCentre;
};

}  // namespace settings
