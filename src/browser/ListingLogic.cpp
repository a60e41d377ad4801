#include "browser/ListingLogic.h"

#include <wx/strconv.h>

#include <cstring>
#include <string>

#include <dirent.h>
#include <sys/stat.h>

namespace listing {

wxString NameFromBytes(const char* bytes) {
  wxString name(bytes, *wxConvFileName);
  if (name.empty() && bytes[0] != '\0') {
    // Not valid in the file-name encoding: keep every byte visible (Latin-1)
    // rather than lose the entry.
    name = wxString(bytes, wxConvISO8859_1);
  }
  return name;
}

bool ScanDirectory(const wxString& path, const std::function<void(const RawEntry&)>& sink) {
  const wxScopedCharBuffer dirBytes = path.fn_str();
  if (!dirBytes.data() || dirBytes.data()[0] == '\0') return false;
  DIR* dir = opendir(dirBytes.data());
  if (dir == nullptr) return false;

  std::string full(dirBytes.data());
  const size_t base = full.size();
  RawEntry entry;
  while (struct dirent* de = readdir(dir)) {
    const char* n = de->d_name;
    if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0'))) continue;
    full.resize(base);
    full += n;  // the caller's path ends in "/": no separator is added
    struct stat st;
    if (stat(full.c_str(), &st) != 0) continue;  // dangling link and the like
    entry.isDir = S_ISDIR(st.st_mode);
    entry.isFile = S_ISREG(st.st_mode);
    if (!entry.isDir && !entry.isFile) continue;  // devices, pipes, sockets
    entry.name = NameFromBytes(n);
    entry.timeOk = true;
    entry.mtime = st.st_mtime;
    entry.size = static_cast<uint64_t>(st.st_size);
    sink(entry);
  }
  closedir(dir);
  return true;
}

int GetFileImageIndex(const wxString& name) {
  const wxScopedCharBuffer ascii = name.Upper().ToAscii();
  const char* s = ascii.data();
  const size_t len = s ? std::strlen(s) : 0;

  // Collect up to three characters backwards until a dot.
  char ext[4] = {0, 0, 0, 0};
  size_t got = 0;
  bool dot = false;
  for (size_t i = len; i-- > 0;) {
    if (s[i] == '.') {
      dot = true;
      break;
    }
    if (got == 3) return IMG_DEFAULT;  // a fourth character: no usable extension
    ++got;
  }
  if (!dot || got == 0) return IMG_DEFAULT;
  std::memcpy(ext, s + len - got, got);

  const char a = ext[0], b = ext[1], c = ext[2];
  switch (a) {
    case 'B':
      if (b == 'A' && c == 'T') return 2;
      if (b == 'M' && c == 'P') return 3;
      break;
    case 'C':
      if (b == 0) return 4;
      if (b == 'F' && c == 'G') return 5;
      if (b == 'P' && c == 'P') return 6;
      break;
    case 'D':
      if (b == 'B' && c == 0) return 7;
      if (b == 'L' && c == 'L') return 8;
      if (b == 'O' && c == 'C') return 9;
      if (b == 'S' && c == 'P') return 10;
      if (b == 'S' && c == 'W') return 11;
      break;
    case 'E':
      if (b == 'X' && c == 'E') return 12;
      break;
    case 'G':
      if (b == 'I' && c == 'F') return 13;
      break;
    case 'H':
      if (b == 0) return 14;
      break;
    case 'I':
      if (b == 'E' && c == 0) return 15;
      if (b == 'N' && c == 'I') return 16;
      break;
    case 'J':
      if (b == 'P' && c == 'G') return 17;
      break;
    case 'M':
      if (b == 'D' && c == 'B') return 18;
      if (b == 'P' && c == '3') return 19;
      if (b == 'P' && c == 'G') return 20;
      break;
    case 'P':
      if (b == 'C' && c == 'X') return 21;
      if (b == 'D' && c == 'F') return 22;
      if (b == 'P' && c == 'T') return 23;
      if (b == 'S' && c == 'D') return 24;
      if (b == 'U' && c == 'B') return 25;
      break;
    case 'R':
      if (b == 'A' && c == 'R') return 26;
      if (b == 'E' && c == 'G') return 27;
      break;
    case 'T':
      if (b == 'X' && c == 'T') return 28;
      break;
    case 'W':
      if (b == 'A' && c == 'V') return 29;
      break;
    case 'X':
      if (b == 'L' && c == 'S') return 30;
      break;
    default:
      break;
  }
  return IMG_DEFAULT;
}

wxString FileTypeText(const wxString& name) {
  if (name.Find('.') == wxNOT_FOUND) return wxString();
  return name.AfterLast('.');
}

wxString ParentFolder(const wxString& path) {
  wxString p = path.BeforeLast('/');
  int last = p.Find('/', true);
  if (last == wxNOT_FOUND) return wxString();
  return p.Left(static_cast<size_t>(last) + 1);
}

bool IsVolumeTop(const wxString& folder) { return folder.Freq('/') <= 3; }

bool IsDotRowText(const wxString& text) {
  return (text.length() == 1 && text.Contains(".")) ||
         (text.length() == 2 && text.Contains(".."));
}

wxString NormaliseSearchPath(const wxString& path) {
  wxString p = path;
  p.Replace("\\", "/");
  p += "/";
  return p;
}

bool ChildPathMatches(const wxString& childPath, const wxString& searched, bool* whole) {
  if (childPath.empty()) return false;
  wxString c = childPath;
  if (!c.EndsWith("/")) c += "/";
  if (c.length() > searched.length()) return false;
  if (!searched.StartsWith(c)) return false;
  if (whole) *whole = (c.length() == searched.length());
  return true;
}

wxString DriveName(char letter) { return wxString::Format("%c:", letter); }

}  // namespace listing
