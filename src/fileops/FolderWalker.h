// The one recursive folder walk behind counting, copy collection and
// deleting. It reads one folder's names completely and closes the folder
// before it reports any of its entries, so no folder handle is open while
// the visit callback runs (the callback may yield to the event loop, during
// which a volume can be unmounted or the window that started the walk can go
// away). Every system call goes through the file-operations table
// (FileOpsSeam.h).
//
// Entries come in directory order, hidden ones included, "." and ".."
// never. The root itself is not reported; a folder is reported (kEnter)
// before its contents and again (kLeave) after them, so a walk can work
// top-down (counting, copying) or bottom-up (deleting).
#pragma once

#include <stdint.h>
#include <sys/stat.h>

#include <functional>

enum FolderWalkKind {
  kWalkFile = 0,    // regular file
  kWalkFolder = 1,  // folder (or a link to one, when links are followed)
  kWalkLink = 2,    // symbolic link that is not followed, or that dangles
  kWalkOther = 3,   // device, pipe, socket
};

enum FolderWalkEvent {
  kWalkEnter = 0,  // an entry, before a folder's contents
  kWalkLeave = 1,  // a folder, after its contents (also after a skipped one)
  kWalkError = 2,  // a folder that could not be read, or an entry that could not be examined
};

// What the visit callback answers.
enum FolderWalkAnswer {
  kWalkContinue = 0,  // go on (a folder's contents follow)
  kWalkSkip = 1,      // go on, but do not enter this folder
  kWalkStop = 2,      // end the whole walk now
};

// What WalkFolder returns.
enum FolderWalkResult {
  kWalkFailed = -1,  // the root could not be read (reported as kWalkError too)
  kWalkDone = 0,     // every entry was visited
  kWalkStopped = 1,  // the callback said kWalkStop
};

struct FolderWalkOptions {
  // Follow symbolic links to folders and files (a link whose target is an
  // ancestor folder, same device and inode, is reported but never entered).
  // When false a link is reported as kWalkLink and never entered.
  bool followLinks = false;
  // Never enter a folder on another device than the root (a mount point met
  // inside the walk is reported with otherDevice set but not entered).
  bool oneDevice = false;
};

// Valid only during the visit call that receives it.
struct FolderWalkEntry {
  int event = kWalkEnter;
  const char* path = nullptr;  // root + "/" + ... + name
  const char* name = nullptr;  // the last component
  int kind = kWalkOther;
  int depth = 0;               // 1 for the root's own entries
  uint64_t size = 0;           // st_size of what the entry stands for
  bool viaLink = false;        // a followed symbolic link
  bool loop = false;           // a folder that is one of its own ancestors
  bool otherDevice = false;    // a folder on another device than the root
  int error = 0;               // errno of a kWalkError
  const struct stat64* info = nullptr;  // the stat data (null for kWalkError)
};

using FolderWalkVisit = std::function<int(const FolderWalkEntry& entry)>;

// Describes one path as the walk would report it (kind, size, links
// followed or not); depth 0; out->path and out->name point into path.
// Returns 0, or -1 with errno.
int DescribePath(const char* path, const FolderWalkOptions& options, FolderWalkEntry* out,
                 struct stat64* info);

// Walks the folder tree below root. A root that is not a folder (or a link
// to one that is not followed) has no entries: kWalkDone without a visit.
int WalkFolder(const char* root, const FolderWalkOptions& options, const FolderWalkVisit& visit);
