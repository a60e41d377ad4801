// Builders of disk images for the tests: sparse image files holding boot
// records, FAT and NTFS boot sectors, root-directory labels and NTFS volume
// records, written where the disk layer looks for them; and small file
// helpers (temporary directories, reading and writing at an offset).
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace vt {

struct MbrEntry {
  uint8_t boot = 0;
  uint8_t type = 0;
  uint32_t start = 0;
  uint32_t count = 0;
  uint8_t endHead = 254;
  uint8_t endSector = 63;
};

// Little-endian 16- and 32-bit values written into b at off.
void Put16(std::vector<uint8_t>& b, size_t off, uint32_t v);
void Put32(std::vector<uint8_t>& b, size_t off, uint32_t v);
// 0x55 0xAA at 510 of a buffer of at least 512 bytes.
void PutBootSignature(std::vector<uint8_t>& b);
// Creates (or extends) a sparse file of the given size.
void MakeSparseFile(const std::string& path, uint64_t bytes);
void WriteAt(const std::string& path, uint64_t offset, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> ReadAt(const std::string& path, uint64_t offset, size_t count);
// A boot record (MBR or EBR) of 512 bytes with four entries and 55 AA.
std::vector<uint8_t> BootRecord(const std::vector<MbrEntry>& entries);

struct FatParams {
  uint16_t bytesPerSector = 512;
  uint8_t sectorsPerCluster = 4;
  uint16_t reserved = 1;
  uint8_t fatCount = 2;
  uint16_t rootEntries = 512;
  uint32_t totalSectors = 16384;  // goes to the 16-bit field when it fits
  uint32_t fatSize = 16;          // 16-bit FAT size; 0 selects FAT32
  uint32_t fatSize32 = 0;         // FAT32: sectors per FAT
  uint32_t rootCluster = 2;       // FAT32
};
// A FAT boot sector (bytesPerSector long) as described by p.
std::vector<uint8_t> FatBootSector(const FatParams& p);
// A 32-byte directory entry.
std::vector<uint8_t> DirEntry(const std::string& name11, uint8_t attribute);

// One volume of MakeVolumesImage: kind 'F' FAT16, 'N' NTFS, '0' a partition
// holding no file system.
struct VolumeSpec {
  char kind;
  std::string label;
};
// Makes dir/name: one disk with a partition of partSectors per volume (up to
// four primaries; with more than four, three primaries and the rest logical
// partitions in an extended one). Only what recognition reads is written:
// boot sectors, root-directory labels, NTFS volume records. Returns the path.
std::string MakeVolumesImage(const std::string& dir, const std::string& name,
                             const std::vector<VolumeSpec>& volumes,
                             uint32_t partSectors = 16384);
// An NTFS boot sector (8 sectors per cluster, MFT at cluster 4) for a
// volume of totalSectors, and the volume file record that goes at sector 38
// of the volume.
std::vector<uint8_t> NtfsBootSector(uint32_t totalSectors);
struct NtfsParams {
  uint8_t sectorsPerCluster = 8;
  uint8_t clustersPerRecord = 0xF6;  // the word at 64: 2^10-byte records
  uint32_t totalSectors = 16383;     // the count at 40
  uint32_t mftCluster = 4;
  uint32_t mirrorCluster = 1024;
};
std::vector<uint8_t> NtfsBootSector(const NtfsParams& p);
std::vector<uint8_t> NtfsVolumeRecord(const std::string& label);

// Makes dir/fat-volumes.img: one disk with a FAT16 primary partition of
// 8 MiB per label, each with that label in its root directory. Returns the
// image path.
std::string MakeFatVolumesImage(const std::string& dir, const std::vector<std::string>& labels);

// A fresh directory under /tmp, and removing it with everything in it.
std::string MakeTempDir(const std::string& prefix);
void RemoveTree(const std::string& dir);

}  // namespace vt
