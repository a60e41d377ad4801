// The shipped help book: it opens in the help dialog, every page its
// contents and index name is in the zip, every link between pages leads to a
// page that is there, and the dialog keeps its cache in a private directory
// of its own, never in a file of a fixed name in /tmp.
#include <gtest/gtest.h>

#include <wx/filesys.h>
#include <wx/html/htmlwin.h>
#include <wx/regex.h>
#include <wx/sstream.h>
#include <wx/stream.h>

#include <fstream>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "common/test_support.h"
#include "help/HelpDia.h"

namespace {

const wxString kBook = wxT("res/vantori/doc/doc.zip");

// The text of a file inside the book, or empty when it is not there.
wxString BookFile(const wxString& name) {
  wxFileSystem fs;
  std::unique_ptr<wxFSFile> file(fs.OpenFile(wxT("file:") + wxString::FromUTF8(vt::ExeDir()) +
                                             kBook + wxT("#zip:") + name));
  if (!file) return wxString();
  wxStringOutputStream out;
  file->GetStream()->Read(out);
  return out.GetString();
}

// Every value of the pattern's first group in text.
std::set<wxString> Matches(const wxString& text, const wxString& pattern) {
  std::set<wxString> found;
  wxRegEx re(pattern, wxRE_ADVANCED | wxRE_ICASE);
  wxString rest = text;
  size_t start = 0, len = 0;
  while (re.Matches(rest) && re.GetMatch(&start, &len, 1)) {
    found.insert(rest.Mid(start, len));
    rest = rest.Mid(start + len);
  }
  return found;
}

TEST(HelpBook, EveryPageOfTheContentsAndIndexAndEveryLinkIsInTheBook) {
  HelpDia* help = new HelpDia(nullptr, wxID_ANY, "Kelnora Help", wxDefaultPosition,
                              wxDefaultSize, 0, "dialogBox");
  ASSERT_TRUE(help->AddBook(wxFileName(kBook)));
  std::set<wxString> pages;
  for (const wxString& sitemap : {wxString(wxT("vantori.hhc")), wxString(wxT("vantori.hhk"))}) {
    wxString text = BookFile(sitemap);
    ASSERT_FALSE(text.empty()) << sitemap;
    for (const wxString& local : Matches(text, wxT("name=\"Local\" value=\"([^\"#]+)")))
      pages.insert(local);
  }
  EXPECT_GE(pages.size(), 6u);
  for (const char* required : {"index.html", "copying.html", "drives.html", "readerrors.html",
                               "images.html", "root.html"})
    EXPECT_TRUE(pages.count(required)) << required << " missing from the contents";
  std::set<wxString> checked;
  while (!pages.empty()) {
    wxString page = *pages.begin();
    pages.erase(pages.begin());
    if (!checked.insert(page).second) continue;
    wxString text = BookFile(page);
    ASSERT_FALSE(text.empty()) << page << " is not in the book";
    EXPECT_FALSE(Matches(text, wxT("<title>([^<]+)</title>")).empty()) << page << " has no title";
    for (const wxString& link : Matches(text, wxT("href=\"([^\"#:]+)")))
      if (!checked.count(link)) pages.insert(link);
    // The controller finds it by name.
    EXPECT_TRUE(help->Display(page)) << page;
    EXPECT_TRUE(help->GetHelpWindow()->GetHtmlWindow()->GetOpenedPage().EndsWith(page)) << page;
  }
  help->Destroy();
  vt::Pump(30);
}

TEST(HelpBook, CacheGoesToAPrivateDirectoryAndAPlantedLinkIsLeftAlone) {
  // A link planted at the name a help cache in /tmp would have.
  const std::string planted = "/tmp/doc.zip_zip_vantori.hhp.cached";
  const std::string victim = "/tmp/vantori-help-victim-" + std::to_string(getpid());
  std::ofstream(victim) << "keep me";
  std::remove(planted.c_str());
  ASSERT_EQ(symlink(victim.c_str(), planted.c_str()), 0);
  HelpDia* help = new HelpDia(nullptr, wxID_ANY, "Kelnora Help", wxDefaultPosition,
                              wxDefaultSize, 0, "dialogBox");
  ASSERT_TRUE(help->AddBook(wxFileName(kBook)));
  help->Display(wxT("index.html"));
  std::string dir = help->CacheDir().utf8_string();
  ASSERT_FALSE(dir.empty());
  struct stat st;
  ASSERT_EQ(lstat(dir.c_str(), &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
  EXPECT_EQ(st.st_mode & 07777, 0700u);
  EXPECT_EQ(st.st_uid, geteuid());
  EXPECT_EQ(dir.rfind("/tmp/vantori-help-", 0), 0u) << dir;
  // The controller did write its cache, there.
  EXPECT_EQ(lstat((dir + "/doc.zip_zip_vantori.hhp.cached").c_str(), &st), 0);
  help->Destroy();
  vt::Pump(30);
  EXPECT_NE(lstat(dir.c_str(), &st), 0) << "the cache directory stays after the dialog";
  std::ifstream in(victim);
  std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(content, "keep me");
  ASSERT_EQ(lstat(planted.c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
  std::remove(planted.c_str());
  std::remove(victim.c_str());
}

}  // namespace
