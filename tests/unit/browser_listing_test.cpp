// Listing records, directory reading, sorting, cell texts and path helpers of
// the file lists.
#include <gtest/gtest.h>

#include <wx/filename.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include "browser/ArrayDir.h"
#include "browser/ArrayFile.h"
#include "browser/ColumnSortState.h"
#include "browser/ListingLogic.h"
#include "browser/ListingRows.h"
#include "dialogs/Properties_dialog.h"
#include "display/ListingText.h"

namespace {

class TempDir {
 public:
  TempDir() {
    char tmpl[] = "/tmp/vantori-listing-XXXXXX";
    path_ = mkdtemp(tmpl);
  }
  ~TempDir() { std::system(("rm -rf '" + path_ + "'").c_str()); }
  std::string Path() const { return path_ + "/"; }
  void File(const std::string& name, size_t bytes, time_t mtime = 0) const {
    std::ofstream out(path_ + "/" + name, std::ios::binary);
    out << std::string(bytes, 'x');
    out.close();
    if (mtime) SetTime(name, mtime);
  }
  void Dir(const std::string& name, time_t mtime = 0) const {
    mkdir((path_ + "/" + name).c_str(), 0755);
    if (mtime) SetTime(name, mtime);
  }
  void SetTime(const std::string& name, time_t mtime) const {
    struct timeval tv[2] = {{mtime, 0}, {mtime, 0}};
    utimes((path_ + "/" + name).c_str(), tv);
  }

 private:
  std::string path_;
};

wxString W(const char* utf8) { return wxString::FromUTF8(utf8); }

std::vector<wxString> DirNames(const ArrayDir& a) {
  std::vector<wxString> v;
  for (size_t i = 0; i < a.GetCount(); ++i) v.push_back(a[i].m_name);
  return v;
}
std::vector<wxString> FileNames(const ArrayFile& a) {
  std::vector<wxString> v;
  for (size_t i = 0; i < a.GetCount(); ++i) v.push_back(a[i].m_name);
  return v;
}

void AddFile(ArrayFile& a, const char* name, double size, time_t t = 0) {
  File_List f;
  f.m_name = name;
  f.m_size = size;
  if (t) f.m_time = wxDateTime(t);
  f.m_imageIndex = listing::GetFileImageIndex(f.m_name);
  a.Add(f);
}
void AddDir(ArrayDir& a, const char* name, time_t t = 0) {
  Dir_List d;
  d.m_name = name;
  if (t) d.m_time = wxDateTime(t);
  a.Add(d);
}

}  // namespace

// ---- records and arrays ----------------------------------------------------

TEST(ListingRecords, DefaultRecordsHaveEmptyNameAndInvalidTime) {
  Dir_List d;
  File_List f;
  EXPECT_TRUE(d.m_name.empty());
  EXPECT_FALSE(d.m_time.IsValid());
  EXPECT_TRUE(f.m_name.empty());
  EXPECT_FALSE(f.m_time.IsValid());
}

TEST(ListingRecords, CopyAndAssignmentCopyEveryField) {
  File_List f;
  f.m_name = "a.txt";
  f.m_size = 42;
  f.m_time = wxDateTime(time_t(1000000));
  f.m_imageIndex = 28;
  File_List g(f);
  File_List h;
  h = f;
  for (const File_List* r : {&g, &h}) {
    EXPECT_EQ(r->m_name, "a.txt");
    EXPECT_EQ(r->m_size, 42);
    EXPECT_EQ(r->m_time, f.m_time);
    EXPECT_EQ(r->m_imageIndex, 28);
  }
}

TEST(ListingRecords, ArraysStoreCopiesAndFindByIdentity) {
  ArrayDir a;
  Dir_List d;
  d.m_name = "x";
  a.Add(d);
  a.Insert(d, 0);
  ASSERT_EQ(a.GetCount(), 2u);
  EXPECT_NE(&a[0], &d);
  EXPECT_EQ(a.Index(a[1]), 1);
  EXPECT_EQ(a.Index(d), wxNOT_FOUND);  // same contents, other object
  ArrayDir b;
  b = a;
  ASSERT_EQ(b.GetCount(), 2u);
  EXPECT_NE(&b[0], &a[0]);
  EXPECT_EQ(b[1].m_name, "x");
  a.RemoveAt(0);
  EXPECT_EQ(a.GetCount(), 1u);
  a.Clear();
  EXPECT_EQ(a.GetCount(), 0u);
}

// ---- reading a directory ---------------------------------------------------

TEST(ListingRead, EmptyDirectoryGivesEmptyArrays) {
  TempDir t;
  ArrayDir dirs;
  ArrayFile files;
  AddDir(dirs, "stale");
  AddFile(files, "stale.txt", 1);
  EXPECT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  EXPECT_EQ(dirs.GetCount(), 0u);
  EXPECT_EQ(files.GetCount(), 0u);
}

TEST(ListingRead, UnopenablePathEmptiesArraysAndFails) {
  ArrayDir dirs;
  ArrayFile files;
  AddDir(dirs, "stale");
  AddFile(files, "stale.txt", 1);
  EXPECT_FALSE(listing::ReadListing("/tmp/vantori-no-such-dir-xyz/", dirs, files));
  EXPECT_EQ(dirs.GetCount(), 0u);
  EXPECT_EQ(files.GetCount(), 0u);
  EXPECT_FALSE(listing::ReadListing("", dirs, files));
}

TEST(ListingRead, DotFilesListedDotEntriesNever) {
  TempDir t;
  t.File(".hidden", 3);
  t.Dir(".config");
  ArrayDir dirs;
  ArrayFile files;
  ASSERT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  EXPECT_EQ(DirNames(dirs), std::vector<wxString>{".config"});
  EXPECT_EQ(FileNames(files), std::vector<wxString>{".hidden"});
}

TEST(ListingRead, FieldsOfFoldersAndFiles) {
  TempDir t;
  t.Dir("sub", 1500000000);
  t.File("report.DOC", 1536, 1600000000);
  ArrayDir dirs;
  ArrayFile files;
  ASSERT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  ASSERT_EQ(dirs.GetCount(), 1u);
  ASSERT_EQ(files.GetCount(), 1u);
  EXPECT_EQ(dirs[0].m_name, "sub");
  EXPECT_EQ(dirs[0].m_time.GetTicks(), 1500000000);
  EXPECT_EQ(files[0].m_name, "report.DOC");
  EXPECT_EQ(files[0].m_size, 1536.0);
  EXPECT_EQ(files[0].m_time.GetTicks(), 1600000000);
  EXPECT_EQ(files[0].m_imageIndex, 9);
}

TEST(ListingRead, LinksDevicesAndDanglingEntries) {
  TempDir t;
  t.Dir("real");
  t.File("f.txt", 1);
  ASSERT_EQ(symlink((t.Path() + "real").c_str(), (t.Path() + "link-dir").c_str()), 0);
  ASSERT_EQ(symlink((t.Path() + "f.txt").c_str(), (t.Path() + "link-file").c_str()), 0);
  ASSERT_EQ(symlink("/tmp/vantori-nowhere-xyz", (t.Path() + "dangling").c_str()), 0);
  ASSERT_EQ(mkfifo((t.Path() + "pipe").c_str(), 0644), 0);
  ArrayDir dirs;
  ArrayFile files;
  ASSERT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  std::vector<wxString> d = DirNames(dirs), f = FileNames(files);
  std::sort(d.begin(), d.end());
  std::sort(f.begin(), f.end());
  EXPECT_EQ(d, (std::vector<wxString>{"link-dir", "real"}));
  EXPECT_EQ(f, (std::vector<wxString>{"f.txt", "link-file"}));
}

TEST(ListingRead, NamesWithBlanksQuotesAndNonAscii) {
  TempDir t;
  const char* names[] = {"two words.txt", "it's \"quoted\".c", "\xc3\xa4pfel \xe6\x96\x87.doc",
                         ".leading dot"};
  for (const char* n : names) t.File(n, 10);
  t.Dir("\xc3\x9c" "ber Ordner");
  ArrayDir dirs;
  ArrayFile files;
  ASSERT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  std::vector<wxString> f = FileNames(files);
  for (const char* n : names)
    EXPECT_NE(std::find(f.begin(), f.end(), W(n)), f.end()) << n;
  ASSERT_EQ(dirs.GetCount(), 1u);
  EXPECT_EQ(dirs[0].m_name, W("\xc3\x9c" "ber Ordner"));
  // The names open again as files.
  for (size_t i = 0; i < files.GetCount(); ++i)
    EXPECT_TRUE(wxFileName::FileExists(wxString::FromUTF8(t.Path()) + files[i].m_name));
}

TEST(ListingRead, NameNotValidInFileNameEncodingIsStillListed) {
  TempDir t;
  t.File("bad\xff\xfe.txt", 1);
  ArrayDir dirs;
  ArrayFile files;
  ASSERT_TRUE(listing::ReadListing(t.Path(), dirs, files));
  ASSERT_EQ(files.GetCount(), 1u);
  EXPECT_FALSE(files[0].m_name.empty());
  EXPECT_TRUE(files[0].m_name.StartsWith("bad"));
  EXPECT_EQ(files[0].m_imageIndex, 28);
}

// ---- sorting ---------------------------------------------------------------

TEST(ListingSort, NameAscendingIsByCodeValue) {
  ArrayDir dirs;
  ArrayFile files;
  AddFile(files, "B", 1);
  AddFile(files, "a", 1);
  AddFile(files, "C", 1);
  AddDir(dirs, "b");
  AddDir(dirs, "A");
  listing::SortListing(dirs, files, 0, true);
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"B", "C", "a"}));
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"A", "b"}));
  listing::SortListing(dirs, files, 0, false);
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"a", "C", "B"}));
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"b", "A"}));
}

TEST(ListingSort, SizeOrdersOnlyFiles) {
  ArrayDir dirs;
  ArrayFile files;
  AddDir(dirs, "z");
  AddDir(dirs, "a");
  AddDir(dirs, "m");
  AddFile(files, "big", 300);
  AddFile(files, "small", 1);
  AddFile(files, "mid", 20);
  listing::SortListing(dirs, files, 1, true);
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"z", "a", "m"}));
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"small", "mid", "big"}));
  listing::SortListing(dirs, files, 1, false);
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"z", "a", "m"}));
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"big", "mid", "small"}));
}

TEST(ListingSort, TypeColumnAndOtherColumnsChangeNothing) {
  for (int column : {2, 4, -1, 99}) {
    ArrayDir dirs;
    ArrayFile files;
    AddDir(dirs, "z");
    AddDir(dirs, "a");
    AddFile(files, "b.zip", 5);
    AddFile(files, "a.txt", 1);
    listing::SortListing(dirs, files, column, true);
    listing::SortListing(dirs, files, column, false);
    EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"z", "a"})) << column;
    EXPECT_EQ(FileNames(files), (std::vector<wxString>{"b.zip", "a.txt"})) << column;
  }
}

TEST(ListingSort, EqualSizesKeepTheirOrderBothWays) {
  ArrayDir dirs;
  ArrayFile files;
  AddFile(files, "first", 10);
  AddFile(files, "other", 5);
  AddFile(files, "second", 10);
  listing::SortListing(dirs, files, 1, true);
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"other", "first", "second"}));
  listing::SortListing(dirs, files, 1, false);
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"first", "second", "other"}));
}

TEST(ListingSort, ModifiedSortsFoldersAndFilesSeparately) {
  ArrayDir dirs;
  ArrayFile files;
  AddDir(dirs, "new", 300);
  AddDir(dirs, "never");  // no time read: before every valid time
  AddDir(dirs, "old", 100);
  AddFile(files, "f2", 1, 200);
  AddFile(files, "f1", 1, 100);
  listing::SortListing(dirs, files, 3, true);
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"never", "old", "new"}));
  EXPECT_EQ(FileNames(files), (std::vector<wxString>{"f1", "f2"}));
  listing::SortListing(dirs, files, 3, false);
  EXPECT_EQ(DirNames(dirs), (std::vector<wxString>{"new", "old", "never"}));
}

// The sort gives exactly what the plain strict-swap bubble sort gives.
TEST(ListingSort, SameResultAsStrictBubbleSort) {
  std::mt19937 rng(7);
  for (int round = 0; round < 20; ++round) {
    ArrayDir dirs;
    ArrayFile files;
    std::vector<std::pair<double, wxString>> ref;
    for (int i = 0; i < 200; ++i) {
      double size = static_cast<double>(rng() % 8);
      wxString name = wxString::Format("n%d", static_cast<int>(rng() % 5));
      File_List f;
      f.m_name = name + wxString::Format("#%d", i);
      f.m_size = size;
      files.Add(f);
      ref.push_back({size, f.m_name});
    }
    const bool asc = round % 2 == 0;
    for (size_t n = ref.size(); n != 0; --n)
      for (size_t i = 0; i + 1 < n; ++i)
        if (asc ? ref[i].first > ref[i + 1].first : ref[i].first < ref[i + 1].first)
          std::swap(ref[i], ref[i + 1]);
    listing::SortListing(dirs, files, 1, asc);
    for (size_t i = 0; i < ref.size(); ++i) ASSERT_EQ(files[i].m_name, ref[i].second);
  }
}

// A folder of 100,000 files sorted by three columns in turn: each sort leaves
// the files in key order, and equal keys keep the order of the sort before.
// (How long it takes is measured by tools/bench-listing, not here.)
TEST(ListingSort, HundredThousandFilesSortedByThreeColumns) {
  ArrayDir dirs;
  ArrayFile files;
  std::mt19937 rng(3);
  for (int i = 0; i < 100000; ++i) {
    File_List f;
    f.m_name = wxString::Format("file%06u.txt", static_cast<unsigned>(rng() % 1000000));
    f.m_size = rng() % 100000;
    f.m_time = wxDateTime(static_cast<time_t>(1000000 + rng() % 100000));
    files.Add(f);
  }
  listing::SortListing(dirs, files, 0, true);
  for (size_t i = 1; i < files.GetCount(); ++i)
    ASSERT_LE(files[i - 1].m_name.Cmp(files[i].m_name), 0);
  listing::SortListing(dirs, files, 1, false);
  for (size_t i = 1; i < files.GetCount(); ++i) {
    ASSERT_GE(files[i - 1].m_size, files[i].m_size);
    if (files[i - 1].m_size == files[i].m_size)
      ASSERT_LE(files[i - 1].m_name.Cmp(files[i].m_name), 0);  // name order kept
  }
  listing::SortListing(dirs, files, 3, true);
  for (size_t i = 1; i < files.GetCount(); ++i) {
    ASSERT_LE(listing::TimeKey(files[i - 1].m_time), listing::TimeKey(files[i].m_time));
    if (listing::TimeKey(files[i - 1].m_time) == listing::TimeKey(files[i].m_time))
      ASSERT_GE(files[i - 1].m_size, files[i].m_size);  // size order kept
  }
}

// ---- column header state ---------------------------------------------------

TEST(ColumnSort, NameTwiceThenSize) {
  ColumnSortState s;
  EXPECT_EQ(s.SortedColumn(), -1);
  for (int c = 0; c < 4; ++c) EXPECT_EQ(s.HeaderImage(c), -1);
  ASSERT_TRUE(s.Click(0));
  EXPECT_TRUE(s.Ascending());
  EXPECT_EQ(s.HeaderImage(0), 32);
  ASSERT_TRUE(s.Click(0));
  EXPECT_FALSE(s.Ascending());
  EXPECT_EQ(s.HeaderImage(0), 33);
  ASSERT_TRUE(s.Click(1));
  EXPECT_EQ(s.SortedColumn(), 1);
  EXPECT_TRUE(s.Ascending());
  EXPECT_EQ(s.HeaderImage(0), -1);
  EXPECT_EQ(s.HeaderImage(1), 32);
  EXPECT_TRUE(s.AscendingFlag(0));
  s.Reset();
  EXPECT_EQ(s.SortedColumn(), -1);
  EXPECT_FALSE(s.Click(7));
}

// ---- icons -----------------------------------------------------------------

TEST(FileIcons, ExamplesOfTheTypeTable) {
  EXPECT_EQ(listing::GetFileImageIndex("setup.exe"), 12);
  EXPECT_EQ(listing::GetFileImageIndex("SETUP.EXE"), 12);
  EXPECT_EQ(listing::GetFileImageIndex("main.c"), 4);
  EXPECT_EQ(listing::GetFileImageIndex("main.cc"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("data.db"), 7);
  EXPECT_EQ(listing::GetFileImageIndex("page.ie"), 15);
  EXPECT_EQ(listing::GetFileImageIndex("notes.text"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("Makefile"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("ends.with."), 31);
  EXPECT_EQ(listing::GetFileImageIndex("a.b.txt"), 28);
  EXPECT_EQ(listing::GetFileImageIndex("readme.TxT"), 28);
  EXPECT_EQ(listing::GetFileImageIndex("archive.tar.gz"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("x.htm"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("x.zip"), 31);
}

TEST(FileIcons, EveryExtensionOfTheTable) {
  const char* exts[] = {"bat", "bmp", "c",   "cfg", "cpp", "db",  "dll", "doc", "dsp", "dsw",
                        "exe", "gif", "h",   "ie",  "ini", "jpg", "mdb", "mp3", "mpg", "pcx",
                        "pdf", "ppt", "psd", "pub", "rar", "reg", "txt", "wav", "xls"};
  int expected = 2;
  for (const char* e : exts) {
    EXPECT_EQ(listing::GetFileImageIndex(wxString("name.") + e), expected) << e;
    ++expected;
  }
  EXPECT_EQ(expected, 31);
  // One- and two-letter types match only when nothing follows them.
  EXPECT_EQ(listing::GetFileImageIndex("x.ca"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("x.hh"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("x.dbx"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("x.iex"), 31);
}

TEST(FileIcons, ShortLongAndOddNames) {
  EXPECT_EQ(listing::GetFileImageIndex(""), 31);
  EXPECT_EQ(listing::GetFileImageIndex("c"), 31);
  EXPECT_EQ(listing::GetFileImageIndex("ab"), 31);
  EXPECT_EQ(listing::GetFileImageIndex(".c"), 4);
  EXPECT_EQ(listing::GetFileImageIndex("."), 31);
  EXPECT_EQ(listing::GetFileImageIndex(wxString(300, 'a') + ".txt"), 28);
  EXPECT_EQ(listing::GetFileImageIndex(wxString(1000, '.')), 31);
  EXPECT_EQ(listing::GetFileImageIndex(W("\xc3\xa4pfel.jpg")), 17);
  EXPECT_EQ(listing::GetFileImageIndex(W("x.\xc3\xa4xe")), 31);
}

// ---- cell texts --------------------------------------------------------------

TEST(ListingText, TypeIsTextAfterLastDot) {
  EXPECT_EQ(listing::FileTypeText("Makefile"), "");
  EXPECT_EQ(listing::FileTypeText("a.b.TxT"), "TxT");
  EXPECT_EQ(listing::FileTypeText(".bashrc"), "bashrc");
  EXPECT_EQ(listing::FileTypeText("end."), "");
}

TEST(ListingText, RowsOfFolderMode) {
  ArrayDir dirs;
  ArrayFile files;
  AddDir(dirs, "sub", 1000);
  AddFile(files, "a.txt", 1536, 1000);
  AddFile(files, "noext", 10, 1000);
  ListingRows rows(&dirs, &files);
  rows.ShowFolder(true);
  ASSERT_EQ(rows.Count(), 4);
  EXPECT_EQ(rows.Text(0, 0), "..");
  EXPECT_EQ(rows.Image(0), -1);
  EXPECT_EQ(rows.Text(0, 1), "");
  EXPECT_EQ(rows.Text(1, 0), "sub");
  EXPECT_EQ(rows.Text(1, 1), "");
  EXPECT_EQ(rows.Text(1, 2), "Folder");
  EXPECT_EQ(rows.Text(1, 3), listing::FormatListTime(wxDateTime(time_t(1000))));
  EXPECT_EQ(rows.Image(1), 0);
  EXPECT_EQ(rows.Text(2, 0), "a.txt");
  EXPECT_EQ(rows.Text(2, 1), "2  KB");
  EXPECT_EQ(rows.Text(2, 2), "txt");
  EXPECT_EQ(rows.Image(2), 28);
  EXPECT_EQ(rows.Text(3, 2), "");
  EXPECT_EQ(rows.Image(3), 31);
  EXPECT_EQ(rows.Text(4, 0), "");  // past the end
  rows.ShowFolder(false);
  EXPECT_EQ(rows.Count(), 3);
  EXPECT_EQ(rows.Text(0, 0), "sub");
}

TEST(ListingText, RowsOfDriveMode) {
  ArrayDir dirs;
  ArrayFile files;
  ListingRows rows(&dirs, &files);
  rows.ShowDrives({{"C:", "DATA", "2.0 GB", "1.5 GB", 34}, {"D:", "STICK", "900 MB", "12 MB", 35}});
  ASSERT_EQ(rows.Count(), 2);
  EXPECT_FALSE(rows.HasDotRow());
  EXPECT_EQ(rows.Text(0, 0), "C:");
  EXPECT_EQ(rows.Text(0, 1), "DATA");
  EXPECT_EQ(rows.Text(0, 2), "2.0 GB");
  EXPECT_EQ(rows.Text(0, 3), "1.5 GB");
  EXPECT_EQ(rows.Image(0), 34);
  EXPECT_EQ(rows.Image(1), 35);
  EXPECT_EQ(listing::DriveName('E'), "E:");
}

// ---- paths -----------------------------------------------------------------

TEST(ListingPath, ParentFolder) {
  EXPECT_EQ(listing::ParentFolder("/mnt/C/a/b/"), "/mnt/C/a/");
  EXPECT_EQ(listing::ParentFolder("/mnt/C/a/"), "/mnt/C/");
}

TEST(ListingPath, DotRows) {
  EXPECT_TRUE(listing::IsDotRowText("."));
  EXPECT_TRUE(listing::IsDotRowText(".."));
  EXPECT_FALSE(listing::IsDotRowText("..."));
  EXPECT_FALSE(listing::IsDotRowText(".a"));
  EXPECT_FALSE(listing::IsDotRowText("a"));
  EXPECT_EQ(listing::SelectAllStartRow(true), 0);
  EXPECT_EQ(listing::SelectAllStartRow(false), 1);
}

TEST(ListingPath, TreeChildMatchingIsByWholeComponents) {
  const wxString searched = listing::NormaliseSearchPath("/mnt/C/ab");
  EXPECT_EQ(searched, "/mnt/C/ab/");
  bool whole = true;
  EXPECT_FALSE(listing::ChildPathMatches("/mnt/C/a", searched, &whole));
  EXPECT_TRUE(listing::ChildPathMatches("/mnt/C", searched, &whole));
  EXPECT_FALSE(whole);
  EXPECT_TRUE(listing::ChildPathMatches("/mnt/C/ab", searched, &whole));
  EXPECT_TRUE(whole);
  EXPECT_FALSE(listing::ChildPathMatches("/mnt/C/abc", searched, &whole));
  EXPECT_FALSE(listing::ChildPathMatches("", searched, &whole));
  EXPECT_EQ(listing::NormaliseSearchPath("C:\\x\\y"), "C:/x/y/");
}

// ---- properties figures ----------------------------------------------------

TEST(PropertiesText, SizeAndCounts) {
  EXPECT_EQ(FormatPropertiesSize(1572864), "1 MB (1,572,864)");
  EXPECT_EQ(FormatPropertiesSize(1000), "0 MB (1,000)");
  EXPECT_EQ(FormatPropertiesSize(0), "0 MB (0)");
  EXPECT_EQ(FormatPropertiesSize(10737418240ULL), "10,240 MB (10,737,418,240)");
  EXPECT_EQ(FormatPropertiesCount(1234567), "1,234,567");
  EXPECT_EQ(FormatPropertiesCount(12), "12");
}
