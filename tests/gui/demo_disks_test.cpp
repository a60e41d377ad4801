// The demo disks from tools/make-demo-disks.sh, opened as disk images with
// the real loop devices and ntfs-3g inside the test's private mount
// namespace: the main window shows their drives, and a file copied from the
// fixed disk arrives on the USB stick byte for byte. The device table of
// this test reaches the image files and the loop devices only; every other
// device node (the machine's disks) is refused.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <wx/frame.h>
#include <wx/treectrl.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "browser/my_DirTreeCtrl.h"
#include "common/stdout_capture.h"
#include "common/test_support.h"
#include "copy/CopyAnswer.h"
#include "copy/CopyOutcome.h"
#include "copy/my_dialog_gauge.h"
#include "copy_env.h"
#include "destination/Des_PathInfo.h"
#include "disk/DeviceSeam.h"
#include "disk/DiskImage.h"
#include "disk/View_Disk_Info.h"
#include "main_window_env.h"
#include "shell/my_frame.h"

namespace {

std::set<std::string>& AllowedFiles() {
  static std::set<std::string> files;
  return files;
}

bool IsLoopNode(const std::string& path) {
  if (path == "/dev/loop-control") return true;
  if (path.compare(0, 9, "/dev/loop") != 0 || path.size() == 9) return false;
  return path.find_first_not_of("0123456789", 9) == std::string::npos;
}

bool UnderMnt(const char* path) { return path != nullptr && strncmp(path, "/mnt/", 5) == 0; }

// The real calls, for the demo's files, loop devices and the private /mnt.
int Open64(const char* path, int flags) {
  std::string p = path != nullptr ? path : "";
  if (!AllowedFiles().count(p) && !IsLoopNode(p)) {
    errno = ENOENT;
    return -1;
  }
  return open64(path, flags | O_CLOEXEC);
}
int Close(int fd) { return close(fd); }
int Ioctl(int fd, unsigned long request, void* arg) { return ioctl(fd, request, arg); }
off64_t Lseek64(int fd, off64_t offset, int whence) { return lseek64(fd, offset, whence); }
ssize_t Read(int fd, void* buffer, size_t count) { return read(fd, buffer, count); }
ssize_t Write(int fd, const void* buffer, size_t count) { return write(fd, buffer, count); }
int Mount(const char* source, const char* target, const char* type, unsigned long flags,
          const void* data) {
  if (!UnderMnt(target) || !IsLoopNode(source != nullptr ? source : "")) {
    errno = EPERM;
    return -1;
  }
  return mount(source, target, type, flags, data);
}
int Umount(const char* target) {
  if (!UnderMnt(target)) {
    errno = EPERM;
    return -1;
  }
  return umount(target);
}
int Statfs64(const char* path, struct statfs64* out) { return statfs64(path, out); }
int Mkdir(const char* path, mode_t mode) {
  if (!UnderMnt(path)) {
    errno = EPERM;
    return -1;
  }
  return mkdir(path, mode);
}
int System(const char* command) {
  std::string c = command != nullptr ? command : "";
  if (c.compare(0, 18, "ntfsfix /dev/loop") != 0 && c.compare(0, 17, "ntfs-3g /dev/loop") != 0)
    return 127 << 8;
  return system(command);
}
uid_t Geteuid() { return geteuid(); }
int Umount2(const char* target, int flags) {
  if (!UnderMnt(target)) {
    errno = EPERM;
    return -1;
  }
  return umount2(target, flags);
}
void Sync() { sync(); }

const DeviceSeam kDemoTable = {Open64, Close,  Ioctl,    Lseek64, Read,   Write,   Mount,
                               Umount, Statfs64, Mkdir, System,  Geteuid, Umount2, Sync};

// Loop devices whose backing file is path.
int LoopsBackedBy(const std::string& path) {
  int n = 0;
  for (int i = 0; i < 256; ++i) {
    std::ifstream in("/sys/block/loop" + std::to_string(i) + "/loop/backing_file");
    std::string line;
    if (in && std::getline(in, line) && line == path) ++n;
  }
  return n;
}

class DemoDisks : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    demoDir = vt::ExeDir() + "demo";
    std::string command = std::string(VANTORI_SOURCE_DIR) + "/tools/make-demo-disks.sh '" +
                          demoDir + "' > '" + vt::ExeDir() + "demo.log' 2>&1";
    made = system(command.c_str()) == 0;
  }
  void SetUp() override {
    ASSERT_TRUE(vt::InPrivateMnt()) << "run inside tests/run-in-mntns.sh";
    ASSERT_EQ(geteuid(), 0u) << "loop devices and ntfs-3g need root";
    ASSERT_TRUE(made) << vt::ReadFile(vt::ExeDir() + "demo.log");
    fixed = demoDir + "/demo-fixed.img";
    usb = demoDir + "/demo-usb.img";
    AllowedFiles() = {fixed, usb};
    saved = g_DeviceSeam;
    g_DeviceSeam = kDemoTable;
    ClearDiskImages();
    ASSERT_EQ(AddDiskImage(fixed.c_str()), 0);
    ASSERT_EQ(AddDiskImage((usb + ",usb,rw").c_str()), 0);
    g_AllDiskPartitionInf.UI_FreeMemory();
    vt::StdoutCapture out;
    g_AllDiskPartitionInf.UI_InitDevice();
    g_AllDiskPartitionInf.GetDiskParttionInfo();
    printed = out.Stop();
    vt::InstallShippedSettings();
    frame = vt::ShowMainFrame(top);
  }
  void TearDown() override {
    if (top) top->Destroy();
    vt::Pump(50);
    g_AllDiskPartitionInf.UI_FreeMemory();
    ClearDiskImages();
    g_DeviceSeam = saved;
    for (int i = 0; i < 100 && (LoopsBackedBy(fixed) + LoopsBackedBy(usb)) > 0; ++i)
      usleep(50 * 1000);
    EXPECT_EQ(LoopsBackedBy(fixed) + LoopsBackedBy(usb), 0) << "a loop device stayed";
  }

  static std::string demoDir;
  static bool made;
  std::string fixed, usb, printed;
  DeviceSeam saved;
  wxFrame* top = nullptr;
  my_frame* frame = nullptr;
};
std::string DemoDisks::demoDir;
bool DemoDisks::made = false;

TEST_F(DemoDisks, TheWindowShowsTheDemoDrivesAndACopyReachesTheStick) {
  // C: the fixed disk's NTFS volume (its FAT volumes follow when the kernel
  // has vfat), and the stick as the last, removable drive.
  int count = g_AllDiskPartitionInf.GetCurrentParttionNum();
  ASSERT_GE(count, 2) << printed;
  const VolumeInformation& c = g_AllDiskPartitionInf.m_Volume[0];
  const VolumeInformation& stick = g_AllDiskPartitionInf.m_Volume[count - 1];
  EXPECT_EQ(c.DriveLetter, 'C');
  EXPECT_STREQ(c.VolumeLabel, "Windows");
  EXPECT_EQ(c.Removable, 0);
  EXPECT_EQ(stick.Removable, 1);
  EXPECT_EQ(std::string(stick.VolumeLabel).rfind("USB STICK", 0), 0u) << stick.VolumeLabel;
  if (count == 2) {
    EXPECT_NE(printed.find("left out: this kernel has no vfat file system"), std::string::npos)
        << printed;
  }
  // The tree shows one item per drive, with its letter.
  wxTreeCtrl* tree = frame->GetTreeCtrl()->GetTreeCtrl();
  std::set<std::string> drives;
  wxTreeItemIdValue cookie;
  wxTreeItemId root = tree->GetRootItem();
  for (wxTreeItemId item = tree->GetFirstChild(root, cookie); item.IsOk();
       item = tree->GetNextChild(root, cookie))
    drives.insert(tree->GetItemText(item).utf8_string());
  EXPECT_EQ(drives.size(), static_cast<size_t>(count));
  EXPECT_TRUE(drives.count("C:")) << "drives: " << drives.size();
  EXPECT_TRUE(drives.count(std::string(1, stick.DriveLetter) + ":"));
  // The sample tree is on C:.
  std::string source = std::string(c.MountPoint) + "/Documents";
  std::ifstream original(source + "/Übersicht.txt", std::ios::binary);
  ASSERT_TRUE(original.good());
  std::stringstream bytes;
  bytes << original.rdbuf();
  // A copy to the stick, as the copy command runs it.
  g_copy_dialog_return = 0;
  g_Des_PathInfo.m_sourceItems.clear();
  g_Des_PathInfo.m_sourceItems.Add(wxString::FromUTF8("Übersicht.txt"));
  g_Des_PathInfo.m_sourcePath = wxString::FromUTF8(source + "/");
  g_Des_PathInfo.m_destPath = wxString::FromUTF8(std::string(stick.MountPoint) + "/");
  new my_dialog_gauge(top, -1, "Copying Data", wxPoint(250, 200), wxSize(500, 255),
                      wxDEFAULT_DIALOG_STYLE);
  EXPECT_TRUE(vt::PumpUntil([] { return vt::OpenGauge() == nullptr; }, 20000));
  vt::Pump(30);
  std::ifstream copy(std::string(stick.MountPoint) + "/Übersicht.txt", std::ios::binary);
  const CopyOutcome& outcome = g_lastCopyOutcome;
  ASSERT_TRUE(copy.good()) << "the copy is not on the stick: result " << outcome.result
                           << ", problems " << outcome.problems.size() << " "
                           << (outcome.problems.empty() ? "" : outcome.problems[0].path);
  std::stringstream copied;
  copied << copy.rdbuf();
  EXPECT_EQ(copied.str(), bytes.str());
  // The fixed disk is evidence: its volume is mounted read-only.
  std::ofstream attempt(std::string(c.MountPoint) + "/written.txt");
  EXPECT_FALSE(attempt.good());
}

}  // namespace
