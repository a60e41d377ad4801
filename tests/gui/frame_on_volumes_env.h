// The main frame shown over the three test volumes inside the private /mnt,
// for tests of what the frame does with real folders and its properties
// dialog. A test puts its files on the volumes in MakeFiles, before the
// frame first lists them.
#pragma once

#include <gtest/gtest.h>

#include <wx/toplevel.h>

#include <memory>

#include "browser_env.h"
#include "main_window_env.h"
#include "dialogs/Properties_dialog.h"
#include "shell/my_frame.h"

namespace vt {

// The Properties dialog that is open (not being deleted), or null.
inline Properties_dialog* OpenPropertiesDialog() {
  for (wxWindow* w : wxTopLevelWindows)
    if (auto* d = dynamic_cast<Properties_dialog*>(w))
      if (!d->IsBeingDeleted()) return d;
  return nullptr;
}

class FrameOnTestVolumes : public ::testing::Test {
 protected:
  virtual void MakeFiles() {}
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    vt::InstallShippedSettings();
    volumes.reset(new TestVolumes);
    ASSERT_EQ(g_AllDiskPartitionInf.GetCurrentParttionNum(), 3);
    MakeFiles();
    frame = vt::ShowMainFrame(top);
  }
  void TearDown() override {
    for (wxWindow* w : wxTopLevelWindows)
      if (dynamic_cast<Properties_dialog*>(w)) w->Destroy();
    vt::Pump(30);
    if (top) top->Destroy();
    vt::Pump(50);
    volumes.reset();
  }

  std::unique_ptr<TestVolumes> volumes;
  wxFrame* top = nullptr;
  my_frame* frame = nullptr;
};

}  // namespace vt
