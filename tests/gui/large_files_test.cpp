// Files of 4 GiB - 1, 4 GiB and 5 GiB (sparse, so they take no room): every
// size Vantori shows or counts is the file's real size, never a size query's
// "invalid size" value and never cut to 32 bits.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "browser/my_DirTreeCtrl.h"
#include "browser/my_listctrl.h"
#include "common/CustomEvents.h"
#include "common/test_support.h"
#include "copy/copyfile.h"
#include "destination/Des_PathInfo.h"
#include "dialogs/Properties_dialog.h"
#include "frame_on_volumes_env.h"

namespace {

const uint64_t kSizes[] = {4294967295ull, 4294967296ull, 5368709120ull};
const char* const kNames[] = {"fat32-largest.bin", "four-gib.bin", "five-gib.bin"};

void MakeSparse(const std::string& path, uint64_t size) {
  int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
  ASSERT_GE(fd, 0) << path;
  ASSERT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0) << path;
  close(fd);
}

Properties_dialog* OpenProperties() {
  for (wxWindow* w : wxTopLevelWindows)
    if (auto* d = dynamic_cast<Properties_dialog*>(w))
      if (!d->IsBeingDeleted()) return d;
  return nullptr;
}

class LargeFiles : public vt::FrameOnTestVolumes {
 protected:
  void MakeFiles() override {
    ASSERT_EQ(mkdir("/mnt/C/big", 0755), 0);
    for (int i = 0; i < 3; ++i) MakeSparse(std::string("/mnt/C/big/") + kNames[i], kSizes[i]);
  }
};

TEST_F(LargeFiles, PropertiesListCellsAndTheCopyTotalTakeTheRealSizes) {
  // Properties of the folder: the exact byte total.
  my_DirTreeCtrl* tree = frame->GetTreeCtrl();
  tree->SetPath("/mnt/C/big");
  wxCommandEvent ev(wxEVT_MENU, MYCMD_TREE_PROPERTIES);
  ev.SetEventObject(tree);
  tree->GetEventHandler()->ProcessEvent(ev);
  ASSERT_TRUE(vt::PumpUntil([] {
    Properties_dialog* d = OpenProperties();
    return d != nullptr && d->m_status == 11;
  }));
  Properties_dialog* d = OpenProperties();
  EXPECT_EQ(d->m_totalBytes, kSizes[0] + kSizes[1] + kSizes[2]);
  EXPECT_EQ(d->m_filesText->GetLabel(), "3");
  EXPECT_TRUE(d->m_sizeText->GetLabel().EndsWith("(13,958,643,711)")) << d->m_sizeText->GetLabel();
  d->Close();
  ASSERT_TRUE(vt::PumpUntil([] { return OpenProperties() == nullptr; }));

  // The list's size cells (kilobytes, rounded).
  my_listctrl* list = frame->GetListCtrl();
  list->Copy_Refresh_Filelisttabel("/mnt/C/big");
  wxListCtrl* rows = list->GetListCtrl();
  const char* const cells[] = {"4194304  KB", "4194304  KB", "5242880  KB"};
  int seen = 0;
  for (long r = 0; r < rows->GetItemCount(); ++r) {
    for (int i = 0; i < 3; ++i) {
      if (rows->GetItemText(r) != kNames[i]) continue;
      EXPECT_EQ(rows->GetItemText(r, 1), cells[i]) << kNames[i];
      ++seen;
    }
  }
  EXPECT_EQ(seen, 3);

  // The copy job's count of the folder.
  g_Des_PathInfo.m_sourceItems.clear();
  g_Des_PathInfo.m_sourceItems.Add("big");
  g_Des_PathInfo.m_sourcePath = "/mnt/C/";
  g_Des_PathInfo.m_destPath = "/mnt/D/";
  copyfile job(g_Des_PathInfo.m_sourcePath, g_Des_PathInfo.m_destPath, nullptr);
  EXPECT_EQ(job.GetAll_DirFileInfo(), 0);
  EXPECT_EQ(job.ItemCount(), 3);
  EXPECT_EQ(static_cast<uint64_t>(job.TotalBytes()), kSizes[0] + kSizes[1] + kSizes[2]);
}

}  // namespace
