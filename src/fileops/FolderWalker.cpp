#include "fileops/FolderWalker.h"

#include <errno.h>
#include <string.h>

#include <string>
#include <utility>
#include <vector>

#include "fileops/FileOpsSeam.h"

namespace {

int KindOf(mode_t mode) {
  if (S_ISREG(mode)) return kWalkFile;
  if (S_ISDIR(mode)) return kWalkFolder;
  if (S_ISLNK(mode)) return kWalkLink;
  return kWalkOther;
}

std::string Join(const std::string& folder, const char* name) {
  std::string path = folder;
  if (path.empty() || path.back() != '/') path += '/';
  path += name;
  return path;
}

// Fills kind, size, viaLink and info of one path; 0 or the errno.
int Examine(const char* path, bool followLinks, FolderWalkEntry* entry, struct stat64* info) {
  if (g_FileOpsSeam.Lstat(path, info) != 0) return errno != 0 ? errno : EIO;
  entry->viaLink = false;
  if (S_ISLNK(info->st_mode) && followLinks) {
    struct stat64 target;
    if (g_FileOpsSeam.Stat(path, &target) == 0) {
      *info = target;
      entry->viaLink = true;
    }
    // A dangling link stays a link.
  }
  entry->kind = KindOf(info->st_mode);
  entry->size = info->st_size > 0 ? static_cast<uint64_t>(info->st_size) : 0;
  entry->info = info;
  return 0;
}

class Walker {
 public:
  Walker(const FolderWalkOptions& options, const FolderWalkVisit& visit, dev_t rootDevice)
      : options_(options), visit_(visit), rootDevice_(rootDevice) {}

  void PushAncestor(const struct stat64& info) { ancestors_.emplace_back(info.st_dev, info.st_ino); }
  void PopAncestor() { ancestors_.pop_back(); }

  // kWalkDone, kWalkStopped, or kWalkFailed when the folder itself could not
  // be opened.
  int Walk(const std::string& folder, const char* folderName, int depth) {
    std::vector<std::string> names;
    int readError = 0;
    DIR* dir = g_FileOpsSeam.Opendir(folder.c_str());
    if (dir == nullptr) {
      const int error = errno != 0 ? errno : EIO;
      if (ReportError(folder.c_str(), folderName, kWalkFolder, depth - 1, error) == kWalkStop)
        return kWalkStopped;
      return kWalkFailed;
    }
    for (;;) {
      errno = 0;
      struct dirent64* item = g_FileOpsSeam.Readdir(dir);
      if (item == nullptr) {
        readError = errno;
        break;
      }
      const char* n = item->d_name;
      if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0'))) continue;
      names.emplace_back(n);
    }
    // Closed before any entry is reported: nothing stays open while the
    // callback runs.
    g_FileOpsSeam.Closedir(dir);
    if (readError != 0 &&
        ReportError(folder.c_str(), folderName, kWalkFolder, depth - 1, readError) == kWalkStop)
      return kWalkStopped;

    for (const std::string& name : names) {
      const std::string path = Join(folder, name.c_str());
      FolderWalkEntry entry;
      struct stat64 info;
      entry.path = path.c_str();
      entry.name = name.c_str();
      entry.depth = depth;
      const int error = Examine(entry.path, options_.followLinks, &entry, &info);
      if (error != 0) {
        if (ReportError(entry.path, entry.name, kWalkOther, depth, error) == kWalkStop)
          return kWalkStopped;
        continue;
      }
      if (entry.kind == kWalkFolder) {
        entry.otherDevice = info.st_dev != rootDevice_;
        for (const auto& a : ancestors_)
          if (a.first == info.st_dev && a.second == info.st_ino) entry.loop = true;
      }
      entry.event = kWalkEnter;
      const int answer = visit_(entry);
      if (answer == kWalkStop) return kWalkStopped;
      if (entry.kind != kWalkFolder) continue;
      const bool enter = answer != kWalkSkip && !entry.loop &&
                         !(options_.oneDevice && entry.otherDevice);
      if (enter) {
        PushAncestor(info);
        const int result = Walk(path, name.c_str(), depth + 1);
        PopAncestor();
        if (result == kWalkStopped) return kWalkStopped;
      }
      entry.event = kWalkLeave;
      if (visit_(entry) == kWalkStop) return kWalkStopped;
    }
    return kWalkDone;
  }

  int ReportError(const char* path, const char* name, int kind, int depth, int error) {
    FolderWalkEntry entry;
    entry.event = kWalkError;
    entry.path = path;
    entry.name = name;
    entry.kind = kind;
    entry.depth = depth;
    entry.error = error;
    return visit_(entry);
  }

 private:
  const FolderWalkOptions& options_;
  const FolderWalkVisit& visit_;
  dev_t rootDevice_;
  std::vector<std::pair<dev_t, ino_t>> ancestors_;
};

const char* LastComponent(const char* path) {
  const char* slash = strrchr(path, '/');
  if (slash == nullptr) return path;
  if (slash[1] != '\0') return slash + 1;
  return path;  // "/" or a path ending in "/"
}

}  // namespace

int DescribePath(const char* path, const FolderWalkOptions& options, FolderWalkEntry* out,
                 struct stat64* info) {
  out->event = kWalkEnter;
  out->path = path;
  out->name = LastComponent(path);
  out->depth = 0;
  const int error = Examine(path, options.followLinks, out, info);
  if (error != 0) {
    out->info = nullptr;
    errno = error;
    return -1;
  }
  return 0;
}

int WalkFolder(const char* root, const FolderWalkOptions& options, const FolderWalkVisit& visit) {
  FolderWalkEntry top;
  struct stat64 info;
  if (DescribePath(root, options, &top, &info) != 0) {
    Walker reporter(options, visit, 0);
    reporter.ReportError(root, top.name, kWalkOther, 0, errno);
    return kWalkFailed;
  }
  if (top.kind != kWalkFolder) return kWalkDone;
  Walker walker(options, visit, info.st_dev);
  walker.PushAncestor(info);
  return walker.Walk(root, top.name, 1);
}
