// The default file-operations table: thin wrappers over the real system
// calls. Nothing else lives in this file, so a program that defines its own
// g_FileOpsSeam (linked as an object before this library) never pulls it in.
#include "fileops/FileOpsSeam.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

int RealOpen(const char* path, int flags, mode_t mode) { return open64(path, flags, mode); }
int RealOpenat(int dirFd, const char* path, int flags, mode_t mode) {
  return openat64(dirFd, path, flags, mode);
}
ssize_t RealRead(int fd, void* buffer, size_t count) { return read(fd, buffer, count); }
ssize_t RealWrite(int fd, const void* buffer, size_t count) { return write(fd, buffer, count); }
int RealClose(int fd) { return close(fd); }
int RealStat(const char* path, struct stat64* out) { return stat64(path, out); }
int RealLstat(const char* path, struct stat64* out) { return lstat64(path, out); }
int RealFstat(int fd, struct stat64* out) { return fstat64(fd, out); }
int RealFstatat(int dirFd, const char* path, struct stat64* out, int flags) {
  return fstatat64(dirFd, path, out, flags);
}
DIR* RealOpendir(const char* path) { return opendir(path); }
DIR* RealFdopendir(int fd) { return fdopendir(fd); }
struct dirent64* RealReaddir(DIR* dir) { return readdir64(dir); }
int RealClosedir(DIR* dir) { return closedir(dir); }
int RealMkdir(const char* path, mode_t mode) { return mkdir(path, mode); }
int RealMkdirat(int dirFd, const char* path, mode_t mode) { return mkdirat(dirFd, path, mode); }
int RealUnlinkat(int dirFd, const char* path, int flags) { return unlinkat(dirFd, path, flags); }
int RealUtimensat(int dirFd, const char* path, const struct timespec times[2], int flags) {
  return utimensat(dirFd, path, times, flags);
}
int RealSyncfs(int fd) { return syncfs(fd); }
ssize_t RealCopyFileRange(int fdIn, off64_t* offsetIn, int fdOut, off64_t* offsetOut,
                          size_t length, unsigned int flags) {
  return copy_file_range(fdIn, offsetIn, fdOut, offsetOut, length, flags);
}
ssize_t RealPread(int fd, void* buffer, size_t count, off64_t offset) {
  return pread64(fd, buffer, count, offset);
}
off64_t RealLseek(int fd, off64_t offset, int whence) { return lseek64(fd, offset, whence); }

}  // namespace

// Only addresses of functions: constant initialisation, no constructor runs.
FILEOPS_SEAM_CONSTINIT FileOpsSeam g_FileOpsSeam = {
    RealOpen,     RealOpenat,    RealRead,     RealWrite,    RealClose,
    RealStat,     RealLstat,     RealFstat,    RealFstatat,  RealOpendir,
    RealFdopendir, RealReaddir,  RealClosedir, RealMkdir,    RealMkdirat,
    RealUnlinkat, RealUtimensat, RealSyncfs,   RealCopyFileRange, RealPread,
    RealLseek,
};
