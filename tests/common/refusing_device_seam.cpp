// The device table of the test programs: every call fails, so a test never
// reaches the machine's own disks, mounts or shell, not even from the volume
// table's constructor that runs at start-up. Linked as an object into each
// test program, it takes the place of the library's default table. Tests
// that need disks install vt::FakeDevices over it.
#include <errno.h>

#include "disk/DeviceSeam.h"

namespace {

int RefuseOpen64(const char*, int) {
  errno = ENOENT;
  return -1;
}
int RefuseClose(int) {
  errno = EBADF;
  return -1;
}
int RefuseIoctl(int, unsigned long, void*) {
  errno = EBADF;
  return -1;
}
off64_t RefuseLseek64(int, off64_t, int) {
  errno = EBADF;
  return -1;
}
ssize_t RefuseRead(int, void*, size_t) {
  errno = EBADF;
  return -1;
}
ssize_t RefuseWrite(int, const void*, size_t) {
  errno = EBADF;
  return -1;
}
int RefuseMount(const char*, const char*, const char*, unsigned long, const void*) {
  errno = EPERM;
  return -1;
}
int RefuseUmount(const char*) {
  errno = EPERM;
  return -1;
}
int RefuseStatfs64(const char*, struct statfs64*) {
  errno = ENOENT;
  return -1;
}
int RefuseMkdir(const char*, mode_t) {
  errno = EACCES;
  return -1;
}
int RefuseSystem(const char*) { return -1; }
// Root, so that what a test program reaches is decided by the refusals above
// (or by the fake installed over them), not by who runs the tests.
uid_t RootEuid(void) { return 0; }
int RefuseUmount2(const char*, int) {
  errno = EPERM;
  return -1;
}
void NoSync(void) {}

}  // namespace

DEVICE_SEAM_CONSTINIT DeviceSeam g_DeviceSeam = {
    RefuseOpen64, RefuseClose,  RefuseIoctl,    RefuseLseek64, RefuseRead,   RefuseWrite,
    RefuseMount,  RefuseUmount, RefuseStatfs64, RefuseMkdir,   RefuseSystem, RootEuid,
    RefuseUmount2, NoSync,
};
