// The default device table: thin wrappers over the real system calls.
// Nothing else lives in this file, so a program that defines its own
// g_DeviceSeam (linked as an object before this library) never pulls it in.
#include "disk/DeviceSeam.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace {

int RealOpen64(const char* path, int flags) { return open64(path, flags); }
int RealClose(int fd) { return close(fd); }
int RealIoctl(int fd, unsigned long request, void* arg) { return ioctl(fd, request, arg); }
off64_t RealLseek64(int fd, off64_t offset, int whence) { return lseek64(fd, offset, whence); }
ssize_t RealRead(int fd, void* buffer, size_t count) { return read(fd, buffer, count); }
ssize_t RealWrite(int fd, const void* buffer, size_t count) { return write(fd, buffer, count); }
int RealMount(const char* source, const char* target, const char* fsType, unsigned long flags,
              const void* data) {
  return mount(source, target, fsType, flags, data);
}
int RealUmount(const char* target) { return umount(target); }
int RealStatfs64(const char* path, struct statfs64* out) { return statfs64(path, out); }
int RealMkdir(const char* path, mode_t mode) { return mkdir(path, mode); }
int RealSystem(const char* command) { return system(command); }
uid_t RealGeteuid(void) { return geteuid(); }
int RealUmount2(const char* target, int flags) { return umount2(target, flags); }
void RealSync(void) { sync(); }

}  // namespace

// Only addresses of functions: constant initialisation, no constructor runs.
DEVICE_SEAM_CONSTINIT DeviceSeam g_DeviceSeam = {
    RealOpen64, RealClose, RealIoctl, RealLseek64, RealRead, RealWrite,
    RealMount,  RealUmount, RealStatfs64, RealMkdir, RealSystem, RealGeteuid,
    RealUmount2, RealSync,
};
