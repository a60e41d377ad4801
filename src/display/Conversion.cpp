#include "display/Conversion.h"

wxString Conversion_Path(const wxString& mountedPath, int maxLength) {
  // What follows "/mnt/" starts with the drive letter.
  if (mountedPath.length() <= 5) return wxString();
  wxString rest = mountedPath.Mid(5);
  wxString result;
  wxUniChar letter = '_';
  for (size_t i = 0; i < rest.length(); ++i) {
    wxUniChar c = rest[i];
    if (!c.IsAscii()) c = '_';
    if (i == 0) {
      letter = c;
      result += c;
      result += ':';
    } else if (c == '/') {
      result += '\\';
    } else {
      result += c;
    }
  }
  if (result.length() < 3) result += '\\';
  if (maxLength != -1 && static_cast<long>(result.length()) > maxLength) {
    wxString last = result.AfterLast('\\');
    wxString shortened;
    shortened << letter << wxT(":\\...\\") << last;
    return shortened;
  }
  return result;
}

wxString Conversion_Str(wxString digits) {
  size_t n = digits.length();
  if (n == 0) return wxString();
  wxString result;
  for (size_t i = 0; i < n; ++i) {
    // A separator goes before every group of three counted from the right.
    if (i > 0 && (n - i) % 3 == 0) result += ',';
    wxUniChar c = digits[i];
    result += c.IsAscii() ? c : wxUniChar('_');
  }
  return result;
}
