// The fixture of the file-list tests: volumes C:, D:, E: with C: filled
// (FillListTestVolume) and a window holding the list of a "kind". A kind
// names its window type (a ListDriver with `folderList` set), builds the
// window, opens C:'s top folder in its list, and says where its behaviour
// differs from the others': whether a volume's top folder lists a ".." row
// and whether a click on the Type header moves the arrow.
#pragma once

#include "browser_env.h"
#include "destination_env.h"

namespace vt {

// The source list, beside the tree as the main frame has them. Its volume
// tops list a ".." row (back to the drives); the Type header sorts nothing
// and leaves the arrows alone.
struct SourceListKind {
  using Window = vt::BrowserWindow;
  static const bool kDotRowAtVolumeTop = true;
  static const bool kTypeHeaderMovesArrow = false;
  static std::unique_ptr<Window> MakeWindow() { return std::unique_ptr<Window>(new Window); }
  // Opens C: from the drive list by double-click.
  static void OpenVolumeC(Window& win) { win.Activate(0); }
};

// The destination list: no ".." row at a volume's top; a click on the Type
// header moves the arrow (nothing is reordered).
struct DestListKind {
  using Window = DestListWindow;
  static const bool kDotRowAtVolumeTop = false;
  static const bool kTypeHeaderMovesArrow = true;
  static std::unique_ptr<Window> MakeWindow() { return std::unique_ptr<Window>(new Window); }
  // C: is the first root: shown from the start; chosen again as the panel's
  // drive choice does.
  static void OpenVolumeC(Window& win) { win.list->Return_Root(0); }
};

template <class Kind>
class FolderListTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    volumes.reset(new TestVolumes);
    ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
    vt::FillListTestVolume();
    win = Kind::MakeWindow();
  }
  void TearDown() override {
    win.reset();
    volumes.reset();
  }

  FolderListCtrl* List() const { return win->folderList; }
  wxString Path() const { return List()->GetCurrentListctrlPath(); }

  void OpenC() {
    Kind::OpenVolumeC(*win);
    ASSERT_TRUE(vt::PumpUntil([&] { return Path() == "/mnt/C/"; }));
  }
  // Rows of C:'s top folder: a ".." row first where the list shows one.
  std::vector<wxString> AtTop(const std::vector<wxString>& names) const {
    std::vector<wxString> rows;
    if (Kind::kDotRowAtVolumeTop) rows.push_back("..");
    rows.insert(rows.end(), names.begin(), names.end());
    return rows;
  }
  long TopRow(long i) const { return (Kind::kDotRowAtVolumeTop ? 1 : 0) + i; }

  std::unique_ptr<TestVolumes> volumes;
  std::unique_ptr<typename Kind::Window> win;
};

}  // namespace vt
