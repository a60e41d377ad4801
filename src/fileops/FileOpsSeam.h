// Every system call that the file operations (counting, copying, deleting)
// make on files and folders goes through this one table of function
// pointers. The table defaults to the real calls (FileOpsSeamDefault.cpp);
// a program may define its own g_FileOpsSeam with other entries, or replace
// entries at run time, to make calls fail, return short, or take their time.
//
// Plain POSIX conventions throughout: -1 (or a null pointer) and errno on
// failure. Sizes and offsets are 64-bit (stat64, off64_t).
#pragma once

#include <dirent.h>
#include <stddef.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <time.h>

struct FileOpsSeam {
  int (*Open)(const char* path, int flags, mode_t mode);
  int (*Openat)(int dirFd, const char* path, int flags, mode_t mode);
  ssize_t (*Read)(int fd, void* buffer, size_t count);
  ssize_t (*Write)(int fd, const void* buffer, size_t count);
  int (*Close)(int fd);
  // stat64 follows a symbolic link, lstat64 does not; fstatat64 takes
  // AT_SYMLINK_NOFOLLOW in flags.
  int (*Stat)(const char* path, struct stat64* out);
  int (*Lstat)(const char* path, struct stat64* out);
  int (*Fstat)(int fd, struct stat64* out);
  int (*Fstatat)(int dirFd, const char* path, struct stat64* out, int flags);
  // Folder enumeration: readdir64 returns null at the end (errno unchanged)
  // and on an error (errno set).
  DIR* (*Opendir)(const char* path);
  DIR* (*Fdopendir)(int fd);
  struct dirent64* (*Readdir)(DIR* dir);
  int (*Closedir)(DIR* dir);
  int (*Mkdir)(const char* path, mode_t mode);
  int (*Mkdirat)(int dirFd, const char* path, mode_t mode);
  // AT_REMOVEDIR in flags removes an empty folder.
  int (*Unlinkat)(int dirFd, const char* path, int flags);
  int (*Utimensat)(int dirFd, const char* path, const struct timespec times[2], int flags);
  int (*Syncfs)(int fd);
  ssize_t (*CopyFileRange)(int fdIn, off64_t* offsetIn, int fdOut, off64_t* offsetOut,
                           size_t length, unsigned int flags);
  // Positioned reads (pread64: the file position stays where it is) and
  // the file position itself (lseek64), for re-reading a damaged stretch of
  // a file block by block.
  ssize_t (*Pread)(int fd, void* buffer, size_t count, off64_t offset);
  off64_t (*Lseek)(int fd, off64_t offset, int whence);
};

// Makes the compiler refuse a definition of the table that would need a
// constructor at start-up.
#if defined(__clang__)
#define FILEOPS_SEAM_CONSTINIT [[clang::require_constant_initialization]]
#elif defined(__GNUC__) && __GNUC__ >= 10
#define FILEOPS_SEAM_CONSTINIT __constinit
#else
#define FILEOPS_SEAM_CONSTINIT
#endif

// The table the file operations call through. Its definition is constant
// initialised, so it is usable from other objects' static constructors.
extern FileOpsSeam g_FileOpsSeam;
