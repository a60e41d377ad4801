#include "disk_images.h"

#include <fcntl.h>
#include <ftw.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "disk/BootRecord.h"

namespace vt {

void Put16(std::vector<uint8_t>& b, size_t off, uint32_t v) {
  b[off] = v & 0xff;
  b[off + 1] = (v >> 8) & 0xff;
}
void Put32(std::vector<uint8_t>& b, size_t off, uint32_t v) {
  Put16(b, off, v & 0xffff);
  Put16(b, off + 2, v >> 16);
}

void PutBootSignature(std::vector<uint8_t>& b) {
  b[BOOT_SIGNATURE_OFFSET] = BOOT_SIGNATURE_0;
  b[BOOT_SIGNATURE_OFFSET + 1] = BOOT_SIGNATURE_1;
}

void MakeSparseFile(const std::string& path, uint64_t bytes) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  if (::ftruncate(fd, static_cast<off_t>(bytes)) != 0) perror("ftruncate");
  ::close(fd);
}

void WriteAt(const std::string& path, uint64_t offset, const std::vector<uint8_t>& bytes) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  if (::pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset)) !=
      static_cast<ssize_t>(bytes.size()))
    perror("pwrite");
  ::close(fd);
}

std::vector<uint8_t> ReadAt(const std::string& path, uint64_t offset, size_t count) {
  std::vector<uint8_t> out(count);
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {};
  ssize_t n = ::pread(fd, out.data(), count, static_cast<off_t>(offset));
  ::close(fd);
  out.resize(n > 0 ? static_cast<size_t>(n) : 0);
  return out;
}

std::vector<uint8_t> BootRecord(const std::vector<MbrEntry>& entries) {
  std::vector<uint8_t> b(512, 0);
  for (size_t i = 0; i < entries.size() && i < 4; ++i) {
    size_t off = PartitionEntryOffset(static_cast<int>(i));
    const MbrEntry& e = entries[i];
    b[off + PARTITION_ENTRY_BOOT] = e.boot;
    b[off + 1] = 0;  // start head, sector, cylinder: not read
    b[off + 2] = 1;
    b[off + 3] = 0;
    b[off + PARTITION_ENTRY_TYPE] = e.type;
    b[off + PARTITION_ENTRY_END_HEAD] = e.endHead;
    b[off + PARTITION_ENTRY_END_SECTOR] = e.endSector;
    b[off + 7] = 0xFF;
    Put32(b, off + PARTITION_ENTRY_START, e.start);
    Put32(b, off + PARTITION_ENTRY_COUNT_FIELD, e.count);
  }
  PutBootSignature(b);
  return b;
}

std::vector<uint8_t> FatBootSector(const FatParams& p) {
  std::vector<uint8_t> b(p.bytesPerSector < 512 ? 512 : p.bytesPerSector, 0);
  b[0] = 0xEB;
  b[1] = 0x3C;
  b[2] = 0x90;
  memcpy(&b[3], "MSWIN4.1", 8);
  Put16(b, 11, p.bytesPerSector);
  b[13] = p.sectorsPerCluster;
  Put16(b, 14, p.reserved);
  b[16] = p.fatCount;
  Put16(b, 17, p.rootEntries);
  bool fat32 = p.fatSize == 0;
  if (!fat32 && p.totalSectors <= 0xFFFF)
    Put16(b, 19, p.totalSectors);
  else
    Put32(b, 32, p.totalSectors);
  b[21] = 0xF8;
  Put16(b, 22, fat32 ? 0 : p.fatSize);
  Put16(b, 24, 63);
  Put16(b, 26, 255);
  if (fat32) {
    Put32(b, 36, p.fatSize32);
    Put32(b, 44, p.rootCluster);
    Put16(b, 48, 1);
    Put16(b, 50, 6);
    b[66] = 0x29;
    memcpy(&b[71], "NO NAME    ", 11);
    memcpy(&b[82], "FAT32   ", 8);
  } else {
    b[38] = 0x29;
    memcpy(&b[43], "NO NAME    ", 11);
    memcpy(&b[54], "FAT16   ", 8);
  }
  PutBootSignature(b);
  return b;
}

std::vector<uint8_t> DirEntry(const std::string& name11, uint8_t attribute) {
  std::vector<uint8_t> e(32, 0);
  memset(e.data(), ' ', 11);
  memcpy(e.data(), name11.data(), name11.size() < 11 ? name11.size() : 11);
  e[11] = attribute;
  return e;
}

std::vector<uint8_t> NtfsBootSector(uint32_t totalSectors) {
  NtfsParams p;
  p.totalSectors = totalSectors - 1;
  p.mirrorCluster = totalSectors / 16;
  return NtfsBootSector(p);
}

std::vector<uint8_t> NtfsBootSector(const NtfsParams& p) {
  std::vector<uint8_t> b(512, 0);
  b[0] = 0xEB;
  b[1] = 0x52;
  b[2] = 0x90;
  memcpy(&b[3], "NTFS    ", 8);
  Put16(b, 11, 512);
  b[13] = p.sectorsPerCluster;
  Put32(b, 40, p.totalSectors);
  Put32(b, 48, p.mftCluster);
  Put32(b, 56, p.mirrorCluster);
  b[64] = p.clustersPerRecord;
  b[68] = 1;
  PutBootSignature(b);
  return b;
}

std::vector<uint8_t> NtfsVolumeRecord(const std::string& label) {
  std::vector<uint8_t> rec(1024, 0);
  memcpy(&rec[0], "FILE", 4);
  rec[20] = 0x38;
  // $STANDARD_INFORMATION, then $VOLUME_NAME (when there is a label), then
  // the end marker.
  size_t at = 0x38;
  rec[at] = 0x10;
  rec[at + 4] = 0x60;
  at += 0x60;
  if (!label.empty()) {
    size_t chars = label.size() < 127 ? label.size() : 127;
    size_t length = (0x18 + chars * 2 + 7) & ~static_cast<size_t>(7);
    rec[at] = 0x60;
    Put32(rec, at + 4, static_cast<uint32_t>(length));
    Put32(rec, at + 16, static_cast<uint32_t>(chars * 2));
    rec[at + 20] = 0x18;
    for (size_t i = 0; i < chars; ++i) rec[at + 0x18 + 2 * i] = static_cast<uint8_t>(label[i]);
    at += length;
  }
  Put32(rec, at, 0xFFFFFFFF);
  return rec;
}

std::string MakeVolumesImage(const std::string& dir, const std::string& name,
                             const std::vector<VolumeSpec>& volumes, uint32_t partSectors) {
  std::string image = dir + "/" + name;
  const size_t n = volumes.size();
  const uint32_t slot = partSectors + 64;  // room for an extended boot record before each
  ::unlink(image.c_str());
  MakeSparseFile(image, (2048 + static_cast<uint64_t>(n) * slot + 2048) * 512);
  std::vector<MbrEntry> mbr;
  std::vector<uint64_t> starts;
  size_t primaries = n <= 4 ? n : 3;
  for (size_t i = 0; i < primaries; ++i) {
    MbrEntry e;
    e.type = volumes[i].kind == 'N' ? 0x07 : 0x06;
    e.start = 2048 + static_cast<uint32_t>(i) * slot;
    e.count = partSectors;
    mbr.push_back(e);
    starts.push_back(e.start);
  }
  if (n > primaries) {
    uint32_t ext = 2048 + static_cast<uint32_t>(primaries) * slot;
    MbrEntry e;
    e.type = 0x0F;
    e.start = ext;
    e.count = static_cast<uint32_t>(n - primaries) * slot;
    mbr.push_back(e);
    for (size_t k = 0; k < n - primaries; ++k) {
      MbrEntry data;
      data.type = volumes[primaries + k].kind == 'N' ? 0x07 : 0x06;
      data.start = 64;
      data.count = partSectors;
      std::vector<MbrEntry> ebr = {data};
      if (primaries + k + 1 < n) {
        MbrEntry link;
        link.type = 0x05;
        link.start = static_cast<uint32_t>(k + 1) * slot;
        link.count = slot;
        ebr.push_back(link);
      }
      uint64_t at = ext + static_cast<uint64_t>(k) * slot;
      WriteAt(image, at * 512, BootRecord(ebr));
      starts.push_back(at + 64);
    }
  }
  WriteAt(image, 0, BootRecord(mbr));
  for (size_t i = 0; i < n; ++i) {
    uint64_t base = starts[i] * 512;
    if (volumes[i].kind == 'F') {
      FatParams p;
      p.sectorsPerCluster = 2;
      p.fatSize = 32;  // 8159 clusters on 8 MiB: FAT16
      p.totalSectors = partSectors;
      WriteAt(image, base, FatBootSector(p));
      std::vector<uint8_t> fat = {0xF8, 0xFF, 0xFF, 0xFF};
      WriteAt(image, base + 1 * 512, fat);
      WriteAt(image, base + 33 * 512, fat);
      if (!volumes[i].label.empty()) WriteAt(image, base + 65 * 512, DirEntry(volumes[i].label, 0x08));
    } else if (volumes[i].kind == 'N') {
      WriteAt(image, base, NtfsBootSector(partSectors));
      WriteAt(image, base + 38 * 512, NtfsVolumeRecord(volumes[i].label));
    } else {
      WriteAt(image, base, std::vector<uint8_t>(512, 0xF6));
    }
  }
  return image;
}

std::string MakeFatVolumesImage(const std::string& dir, const std::vector<std::string>& labels) {
  std::vector<VolumeSpec> specs;
  for (size_t i = 0; i < labels.size() && i < 4; ++i) specs.push_back(VolumeSpec{'F', labels[i]});
  return MakeVolumesImage(dir, "fat-volumes.img", specs);
}

std::string MakeTempDir(const std::string& prefix) {
  std::string templ = "/tmp/" + prefix + "XXXXXX";
  std::vector<char> buf(templ.begin(), templ.end());
  buf.push_back(0);
  if (mkdtemp(buf.data()) == nullptr) return std::string();
  return std::string(buf.data());
}

static int RemoveOne(const char* path, const struct stat*, int, struct FTW*) {
  return ::remove(path);
}

void RemoveTree(const std::string& dir) {
  if (dir.empty() || dir == "/") return;
  nftw(dir.c_str(), RemoveOne, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace vt
