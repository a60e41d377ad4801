#include "display/ListingText.h"

#include <cstdint>

namespace listing {

wxString FormatListTime(const wxDateTime& t) {
  if (!t.IsValid()) return wxString();
  wxDateTime::Tm tm = t.GetTm(wxDateTime::Local);
  return wxString::Format("%d-%02d-%02d %02d:%02d", tm.year, static_cast<int>(tm.mon) + 1,
                          static_cast<int>(tm.mday), static_cast<int>(tm.hour),
                          static_cast<int>(tm.min));
}

wxString FormatSizeKB(double bytes) {
  const uint64_t kb = static_cast<uint64_t>(bytes / 1024 + 0.5);
  return wxString::Format("%u  KB", static_cast<unsigned>(kb & 0xffffffffu));
}

wxString CovertPath(const wxString& path) {
  if (path.empty()) return wxString();
  if (path.length() <= 4) return path;
  wxString out = path.Mid(5);
  out.Replace("/", "\\");
  out.Replace("\\", ":\\", false);
  return out;
}

}  // namespace listing
