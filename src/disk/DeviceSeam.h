// Every system call of the disk layer goes through this one table of function
// pointers. The table defaults to the real calls (DeviceSeamDefault.cpp);
// a program may define its own g_DeviceSeam with other entries, or replace
// entries at run time, to serve disks from image files.
#pragma once

#include <stddef.h>
#include <sys/types.h>

struct statfs64;

struct DeviceSeam {
  int (*Open64)(const char* path, int flags);
  int (*Close)(int fd);
  // The third argument is either a pointer or an integer passed as a pointer
  // (CDROM_DRIVE_STATUS takes the slot number itself).
  int (*Ioctl)(int fd, unsigned long request, void* arg);
  off64_t (*Lseek64)(int fd, off64_t offset, int whence);
  ssize_t (*Read)(int fd, void* buffer, size_t count);
  ssize_t (*Write)(int fd, const void* buffer, size_t count);
  int (*Mount)(const char* source, const char* target, const char* fsType,
               unsigned long flags, const void* data);
  int (*Umount)(const char* target);
  int (*Statfs64)(const char* path, struct statfs64* out);
  int (*Mkdir)(const char* path, mode_t mode);
  // Runs a command through the system shell; returns what system() returns.
  int (*System)(const char* command);
  // The effective user id: the disk layer opens no device without root.
  uid_t (*Geteuid)(void);
  // umount2 (MNT_DETACH: a volume still in use leaves the mount table now
  // and is released when its last user lets go).
  int (*Umount2)(const char* target, int flags);
  // Writes every file system's cached data to its disk.
  void (*Sync)(void);
};

// Makes the compiler refuse a definition of the table that would need a
// constructor at start-up.
#if defined(__clang__)
#define DEVICE_SEAM_CONSTINIT [[clang::require_constant_initialization]]
#elif defined(__GNUC__) && __GNUC__ >= 10
#define DEVICE_SEAM_CONSTINIT __constinit
#else
#define DEVICE_SEAM_CONSTINIT
#endif

// The table the disk layer calls through. Its definition is constant
// initialised, so it is usable from other objects' static constructors.
extern DeviceSeam g_DeviceSeam;
