#include "browser/ListingLogic.h"

#include <wx/strconv.h>

#include <cstring>
#include <string>

#include <dirent.h>
#include <errno.h>
#include <sys/stat.h>

#include "fileops/FileOpsSeam.h"

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

bool ScanDirectory(const wxString& path, const std::function<void(const RawEntry&)>& sink,
                   int* error) {
  if (error != nullptr) *error = 0;
  const wxScopedCharBuffer dirBytes = path.fn_str();
  if (!dirBytes.data() || dirBytes.data()[0] == '\0') {
    if (error != nullptr) *error = ENOENT;
    return false;
  }
  DIR* dir = g_FileOpsSeam.Opendir(dirBytes.data());
  if (dir == nullptr) {
    if (error != nullptr) *error = errno;
    return false;
  }

  std::string full(dirBytes.data());
  const size_t base = full.size();
  RawEntry entry;
  while (struct dirent64* de = g_FileOpsSeam.Readdir(dir)) {
    const char* n = de->d_name;
    if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0'))) continue;
    full.resize(base);
    full += n;  // the caller's path ends in "/": no separator is added
    // 64-bit sizes: a file of 4 GiB - 1 or more keeps its size.
    struct stat64 st;
    if (g_FileOpsSeam.Stat(full.c_str(), &st) != 0) continue;  // dangling link and the like
    entry.isDir = S_ISDIR(st.st_mode);
    entry.isFile = S_ISREG(st.st_mode);
    if (!entry.isDir && !entry.isFile) continue;  // devices, pipes, sockets
    entry.name = NameFromBytes(n);
    entry.timeOk = true;
    entry.mtime = st.st_mtime;
    entry.size = static_cast<uint64_t>(st.st_size);
    sink(entry);
  }
  g_FileOpsSeam.Closedir(dir);
  return true;
}

namespace {
// The file types with an icon of their own, in the order of their images:
// the first is IMG_FIRST_TYPE, each next one the following image.
const char* const kTypeExtensions[] = {
    "BAT", "BMP", "C",   "CFG", "CPP", "DB",  "DLL", "DOC", "DSP", "DSW",
    "EXE", "GIF", "H",   "IE",  "INI", "JPG", "MDB", "MP3", "MPG", "PCX",
    "PDF", "PPT", "PSD", "PUB", "RAR", "REG", "TXT", "WAV", "XLS",
};
static_assert(IMG_FIRST_TYPE + sizeof(kTypeExtensions) / sizeof(kTypeExtensions[0]) ==
                  IMG_DEFAULT,
              "the type images end where the default image starts");
}  // namespace

int GetFileImageIndex(const wxString& name) {
  const wxScopedCharBuffer ascii = name.Upper().ToAscii();
  const char* s = ascii.data();
  const size_t len = s ? std::strlen(s) : 0;

  // The extension: up to three characters after the last dot; a fourth
  // character before any dot means there is none.
  size_t got = 0;
  bool dot = false;
  for (size_t i = len; i-- > 0;) {
    if (s[i] == '.') {
      dot = true;
      break;
    }
    if (got == 3) return IMG_DEFAULT;
    ++got;
  }
  if (!dot || got == 0) return IMG_DEFAULT;
  const char* ext = s + len - got;
  for (size_t i = 0; i < sizeof(kTypeExtensions) / sizeof(kTypeExtensions[0]); ++i)
    if (std::strcmp(ext, kTypeExtensions[i]) == 0) return IMG_FIRST_TYPE + static_cast<int>(i);
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
