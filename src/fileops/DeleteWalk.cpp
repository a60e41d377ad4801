#include "fileops/DeleteWalk.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include "fileops/FileOpsSeam.h"
#include "fileops/FolderWalker.h"
#include "fileops/ShellEscape.h"
#include "fileops/WalkStatus.h"

namespace {

// Links are never followed; mount points met inside are not entered.
FolderWalkOptions DeleteOptions() {
  FolderWalkOptions options;
  options.followLinks = false;
  options.oneDevice = true;
  return options;
}

std::string ParentOf(const std::string& path) {
  std::string p = path;
  while (p.size() > 1 && p.back() == '/') p.pop_back();
  const size_t slash = p.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return p.substr(0, slash);
}

// What the target is: 0 gone, 1 a folder on the volume it lies on, 2 a
// folder that is a mount point (another device than its parent), 3 anything
// else (file, link, device). A target that cannot be examined for another
// reason than being gone is treated as "anything else": removing it reports
// the reason.
int TargetKind(const std::string& target) {
  struct stat64 info;
  if (g_FileOpsSeam.Lstat(target.c_str(), &info) != 0) return errno == ENOENT ? 0 : 3;
  if (!S_ISDIR(info.st_mode)) return 3;
  struct stat64 parent;
  if (g_FileOpsSeam.Lstat(ParentOf(target).c_str(), &parent) == 0 && parent.st_dev != info.st_dev)
    return 2;
  return 1;
}

}  // namespace

int DeleteWalk::Count(const std::string& target) {
  if (status == kStatusStopped) return kStatusStopped;
  if (TargetKind(target) != 1) return status = kStatusWalked;
  const int result = WalkFolder(target.c_str(), DeleteOptions(), [this](const FolderWalkEntry& e) {
    if (e.event != kWalkEnter) return kWalkContinue;
    if ((view_.cancelled && view_.cancelled())) return kWalkStop;
    if (e.kind == kWalkFolder)
      ++folderCount;
    else
      ++fileCount;
    if (view_.counted) view_.counted(fileCount, folderCount);
    return kWalkContinue;
  });
  status = result == kWalkStopped ? kStatusStopped : kStatusWalked;
  return status;
}

void DeleteWalk::GaugeStep() {
  if (doneSinceStep < step) return;
  doneSinceStep = 0;
  ++percent;
  if (view_.gaugeMoved) view_.gaugeMoved(percent);
}

void DeleteWalk::Fail(const std::string& path, int error) {
  ++failedCount_;
  if (static_cast<int>(failures_.size()) < kFailuresKept) failures_.push_back({path, error});
}

void DeleteWalk::Remove(const std::string& path, int flags) {
  if (g_FileOpsSeam.Unlinkat(AT_FDCWD, path.c_str(), flags) == 0) return;
  const int error = errno != 0 ? errno : EIO;
  if (error != ENOENT) Fail(path, error);
}

void DeleteWalk::Done(const std::string& path) {
  ++doneSinceStep;
  if (view_.removed) view_.removed(path);
}

int DeleteWalk::DeleteContents(const std::string& target) {
  step = (fileCount + folderCount) / 100;
  printf("Delete Path = %s\n", target.c_str());
  if (status == kStatusStopped) return kStatusStopped;
  GaugeStep();
  const int kind = TargetKind(target);
  if (kind == 2) {
    Fail(target, EXDEV);
  } else if (kind == 3) {
    Remove(target, 0);
    const std::string escaped = ShellEscaped(target);
    printf("delete file = %s;\n delete file order is rm -f %s\n", escaped.c_str(), escaped.c_str());
    Done(target);
  } else if (kind == 1) {
    const int result = WalkFolder(target.c_str(), DeleteOptions(), [this](const FolderWalkEntry& e) {
      const std::string path = e.path;
      if (e.event == kWalkError) {
        // A folder that could not be read shows up when its own removal
        // fails; an entry that could not be examined is reported here.
        if (e.kind != kWalkFolder && e.error != ENOENT) Fail(path, e.error);
        return kWalkContinue;
      }
      const bool leftAlone = e.kind == kWalkFolder && (e.otherDevice || e.loop);
      if (e.event == kWalkLeave) {
        if (!leftAlone) {
          Remove(path, AT_REMOVEDIR);
          Done(path);
        }
        return kWalkContinue;
      }
      GaugeStep();
      if ((view_.cancelled && view_.cancelled())) return kWalkStop;
      printf("delete dir = %s\n ", path.c_str());
      if (e.kind == kWalkFolder) {
        if (leftAlone) {
          Fail(path, EXDEV);
          return kWalkSkip;
        }
        printf("Delete Path = %s\n", path.c_str());
        GaugeStep();
        return kWalkContinue;
      }
      printf("delete file of dir order is :rm -f %s", ShellEscaped(path).c_str());
      Remove(path, 0);
      Done(path);
      return kWalkContinue;
    });
    if (result == kWalkStopped) status = kStatusStopped;
  }
  fflush(stdout);
  return status == kStatusStopped ? kStatusStopped : kStatusWalked;
}

void DeleteWalk::RemoveTarget(const std::string& target) {
  const int kind = TargetKind(target);
  if (kind == 1) Remove(target, AT_REMOVEDIR);
  if (kind == 3) Remove(target, 0);
  // 0: gone already (a file removed by DeleteContents). 2: a mount point,
  // recorded by DeleteContents and left alone.
  percent = 100;
  if (view_.gaugeMoved) view_.gaugeMoved(percent);
}
