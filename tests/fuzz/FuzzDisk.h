// A disk made of fuzz input bytes, served to the disk layer through its
// device table (g_DeviceSeam).
//
// Input encoding (all integers little-endian):
//
//   byte 0        bits 0-1: sector size, 512 << value (512, 1024, 2048, 4096)
//                 bits 2-7: free for the target (FuzzDisk::Options())
//   bytes 1..4    device size in sectors; 0 means the device has no end
//                 before sector 2^32 (every sector not given reads as zeros)
//   then chunks   4 bytes sector number, then one sector of data
//
// A chunk puts its data at the given sector, so boot records, extended boot
// record chains and FAT or MFT regions anywhere on the device are reachable
// with a few hundred bytes. A later chunk for the same sector replaces an
// earlier one. The last chunk may be short; its missing bytes read as zeros.
// Sectors no chunk gives read as zeros. Reads at or beyond the device size
// return end of file; reads that cross it are short.
//
// tests/fuzz/make_fuzz_seed.cpp writes this encoding from image files.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <map>

class FuzzDisk {
 public:
  // The file descriptor the device table hands out for every open.
  static const int kFd = 1000;

  // Takes the input (not copied: it must outlive the disk's use).
  void Load(const uint8_t* data, size_t size);

  unsigned SectorSize() const { return sectorSize_; }
  unsigned Options() const { return options_; }
  uint64_t SizeBytes() const { return sizeBytes_; }

  // Copies count bytes at byte offset into buffer as a read of the device
  // would; returns the bytes delivered (0 at the end of the device).
  size_t ReadAt(uint64_t offset, uint8_t* buffer, size_t count) const;

  // Points g_DeviceSeam at this disk: open, close, lseek, read and the size
  // ioctls are served from it; writing, mounting and running commands abort
  // (nothing on these paths may do them). target names the fuzz target in
  // the reports of Broken.
  void Install(const char* target);

  // Reports a broken invariant of the disk layer ("<target>: what (value)")
  // and aborts, so libFuzzer keeps the input.
  [[noreturn]] static void Broken(const char* what, long long value);
  // Broken unless every descriptor the layer opened was closed again.
  void ExpectAllClosed() const;

  // The disk the device table serves.
  static FuzzDisk* Current();

  // Set by lseek and advanced by read; one position for all descriptors.
  int64_t position = 0;
  int openCount = 0;
  // When set, HDIO_GETGEO answers 255 heads, 63 sectors; otherwise it fails.
  bool answerGeometry = false;

 private:
  struct Chunk {
    const uint8_t* data;
    size_t size;
  };
  unsigned sectorSize_ = 512;
  unsigned options_ = 0;
  uint64_t sizeBytes_ = 0;
  std::map<uint64_t, Chunk> chunks_;
};
