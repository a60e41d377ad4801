#include "display/PathBytes.h"

std::string PathBytes(const wxString& path) {
  const wxScopedCharBuffer bytes = path.fn_str();
  return std::string(bytes.data(), bytes.length());
}

wxString PathFromBytes(const std::string& bytes) {
  wxString text = wxString::FromUTF8(bytes.data(), bytes.size());
  if (text.empty() && !bytes.empty()) {
    for (unsigned char c : bytes) text += c < 0x80 ? wxUniChar(c) : wxUniChar('_');
  }
  return text;
}
