// The display-independent rules of a file list: reading one directory into
// the folder and file arrays, the column sorts, the file-type icon choice,
// the cell texts and the path helpers. Both file lists (source and
// destination) build on these; the templates take any pair of record arrays
// whose records have the fields of Dir_List and File_List.
#pragma once

#include <wx/datetime.h>
#include <wx/string.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"

namespace listing {

// Column numbers of folder mode.
enum { COL_NAME = 0, COL_SIZE = 1, COL_TYPE = 2, COL_MODIFIED = 3 };

// Image indices of the file lists' small image list.
enum {
  IMG_FOLDER = 0,
  IMG_FILE = 1,
  IMG_FIRST_TYPE = 2,  // the file types (BAT, BMP, ... XLS) follow in table order
  IMG_DEFAULT = 31,
  IMG_SORT_UP = 32,
  IMG_SORT_DOWN = 33,
  IMG_DISK = 34,
  IMG_USB = 35,
};

// One directory entry as the reader sees it; the records are built from it.
struct RawEntry {
  wxString name;
  bool isDir = false;
  bool isFile = false;
  bool timeOk = false;
  time_t mtime = 0;
  uint64_t size = 0;
};

// Enumerates `path` (which ends in "/"): every entry but "." and "..", hidden
// ones included, in the order the file system returns them. One stat per
// entry, following symbolic links, classifies it as folder, regular file or
// neither. Returns false when the directory cannot be opened, with the
// system's reason in *error (when given). Every call goes through the
// file-operations table.
bool ScanDirectory(const wxString& path, const std::function<void(const RawEntry&)>& sink,
                   int* error = nullptr);

// Converts a file name's bytes to a wxString: as the file-name conversion
// does, and when the bytes are not valid in it, byte by byte so that the
// entry is still shown (never dropped).
wxString NameFromBytes(const char* bytes);

// Icon index for a file name: the upper-cased extension of one to three
// characters looked up in the fixed type table, IMG_DEFAULT otherwise.
int GetFileImageIndex(const wxString& name);

// Reads `path` into the two arrays (emptied first, also on failure). The
// working records are reused from entry to entry, so an entry whose time
// cannot be read keeps the previous record's time.
template <class DirArray, class FileArray, class DirRec, class FileRec>
bool ReadListing(const wxString& path, DirArray& dirs, FileArray& files,
                 int (*imageIndex)(const wxString&), int* error = nullptr) {
  dirs.Empty();
  files.Empty();
  DirRec dir;
  FileRec file;
  return ScanDirectory(path, [&](const RawEntry& e) {
    if (e.isDir) {
      dir.m_name = e.name;
      if (e.timeOk) dir.m_time = wxDateTime(e.mtime);
      dirs.Add(dir);
    }
    if (e.isFile) {
      file.m_imageIndex = imageIndex(e.name);
      file.m_name = e.name;
      file.m_size = static_cast<double>(e.size);
      if (e.timeOk) file.m_time = wxDateTime(e.mtime);
      files.Add(file);
    }
  }, error);
}

inline bool ReadListing(const wxString& path, ArrayDir& dirs, ArrayFile& files,
                        int* error = nullptr) {
  return ReadListing<ArrayDir, ArrayFile, Dir_List, File_List>(path, dirs, files,
                                                               &GetFileImageIndex, error);
}

// Sort key of a time: invalid times sort before every valid one.
inline long long TimeKey(const wxDateTime& t) {
  return t.IsValid() ? t.GetValue().GetValue() : static_cast<long long>(INT64_MIN);
}

// Stable reordering of an owning object array by a key: the records are
// detached, sorted as (key, record) pairs held side by side in memory (so the
// comparisons touch no record), and handed back in the new order. Records
// whose keys compare equal keep their order.
template <class Rec, class Key, class Array, class KeyOf>
void StableSortByKey(Array& arr, KeyOf keyOf, bool ascending) {
  const size_t n = arr.GetCount();
  if (n < 2) return;
  std::vector<std::pair<Key, Rec*>> items(n);
  for (size_t i = n; i-- > 0;) {
    Rec* r = arr.Detach(i);
    items[i] = std::pair<Key, Rec*>(keyOf(*r), r);
  }
  if (ascending)
    std::stable_sort(items.begin(), items.end(),
                     [](const std::pair<Key, Rec*>& a, const std::pair<Key, Rec*>& b) {
                       return a.first < b.first;
                     });
  else
    std::stable_sort(items.begin(), items.end(),
                     [](const std::pair<Key, Rec*>& a, const std::pair<Key, Rec*>& b) {
                       return b.first < a.first;
                     });
  arr.Alloc(n);
  for (auto& item : items) arr.Add(item.second);
}

// A name as the name sort compares it: the wide characters' code values, as
// wxString::Cmp does (case-sensitive, no locale).
inline std::wstring_view NameKey(const wxString& name) {
  return std::wstring_view(name.wc_str(), name.length());
}

// Sorts the folders by column: 0 name, 3 time; 1 (size), 2 (type) and any
// other column leave the folders in their order. Equal keys keep their order.
template <class Rec, class Array>
void SortFolders(Array& arr, int column, bool ascending) {
  if (column == COL_NAME) {
    StableSortByKey<Rec, std::wstring_view>(
        arr, [](const Rec& r) { return NameKey(r.m_name); }, ascending);
  } else if (column == COL_MODIFIED) {
    StableSortByKey<Rec, long long>(
        arr, [](const Rec& r) { return TimeKey(r.m_time); }, ascending);
  }
}

// Sorts the files by column: 0 name, 1 size, 3 time; 2 (type) and any other
// column leave them in their order. Equal keys keep their order.
template <class Rec, class Array>
void SortFiles(Array& arr, int column, bool ascending) {
  if (column == COL_SIZE) {
    StableSortByKey<Rec, double>(arr, [](const Rec& r) { return r.m_size; }, ascending);
  } else {
    SortFolders<Rec>(arr, column, ascending);
  }
}

inline void SortListing(ArrayDir& dirs, ArrayFile& files, int column, bool ascending) {
  SortFolders<Dir_List>(dirs, column, ascending);
  SortFiles<File_List>(files, column, ascending);
}

// Type cell of folder mode (the time and size cells: display/ListingText.h).
wxString FileTypeText(const wxString& name);  // text after the last ".", or empty

// Parent of a folder path ending in "/": /mnt/C/a/b/ gives /mnt/C/a/.
wxString ParentFolder(const wxString& path);

// True when a mounted folder path ending in "/" is a volume's top folder
// (/mnt/C/) or lies above one (/mnt/, /): it has no more than three "/".
bool IsVolumeTop(const wxString& folder);

// True for the texts of the "." and ".." rows.
bool IsDotRowText(const wxString& text);

// First row that select-all selects: 0 when row 0 is already selected,
// otherwise 1 (the ".." row is left out).
inline int SelectAllStartRow(bool row0Selected) { return row0Selected ? 0 : 1; }

// Tree path matching: the searched path with "\" turned into "/" and a "/"
// appended, and whether a child item's path is a whole-component prefix of it.
wxString NormaliseSearchPath(const wxString& path);
bool ChildPathMatches(const wxString& childPath, const wxString& searched, bool* whole);

// Drive-list row texts.
wxString DriveName(char letter);  // "%c:"

}  // namespace listing
