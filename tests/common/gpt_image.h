// GUID partition tables built by hand for tests: a protective master boot
// record, both headers with their CRC32s and both entry arrays, as a
// partitioning tool writes them.
#pragma once

#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "disk/GptTable.h"
#include "disk_images.h"

namespace vt {

struct GptPart {
  std::string type;      // GUID text
  uint64_t first, last;
  uint64_t attributes = 0;
  std::u16string name;
};

// The on-disk bytes of a GUID in text form.
inline std::vector<uint8_t> GuidBytes(const std::string& text) {
  std::string hex;
  for (char c : text)
    if (c != '-') hex += c;
  std::vector<uint8_t> raw;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) raw.push_back(std::stoi(hex.substr(i, 2), nullptr, 16));
  return {raw[3], raw[2], raw[1], raw[0], raw[5], raw[4], raw[7], raw[6],
          raw[8], raw[9], raw[10], raw[11], raw[12], raw[13], raw[14], raw[15]};
}

inline void Put64(std::vector<uint8_t>& b, size_t off, uint64_t v) {
  for (int i = 0; i < 8; ++i) b[off + i] = static_cast<uint8_t>(v >> (8 * i));
}

// A disk image with a protective master boot record and both GPT headers
// and entry arrays, as a partitioning tool writes them.
struct GptImage {
  unsigned bps = 512;
  uint64_t totalSectors = 131072;  // 64 MiB of 512-byte sectors
  uint32_t entryCount = 128;
  uint32_t entrySize = 128;
  std::vector<GptPart> parts;
  std::vector<vt::MbrEntry> extraMbr;  // beside the protective entry (hybrid)

  uint64_t EntrySectors() const { return (uint64_t(entryCount) * entrySize + bps - 1) / bps; }
  std::vector<uint8_t> Entries() const {
    std::vector<uint8_t> e(EntrySectors() * bps, 0);
    for (size_t i = 0; i < parts.size(); ++i) {
      const size_t at = i * entrySize;
      std::vector<uint8_t> type = GuidBytes(parts[i].type);
      std::copy(type.begin(), type.end(), e.begin() + at);
      e[at + 16] = static_cast<uint8_t>(i + 1);  // unique GUID
      Put64(e, at + 32, parts[i].first);
      Put64(e, at + 40, parts[i].last);
      Put64(e, at + 48, parts[i].attributes);
      for (size_t k = 0; k < parts[i].name.size() && k < 36; ++k)
        vt::Put16(e, at + 56 + 2 * k, parts[i].name[k]);
    }
    return e;
  }
  std::vector<uint8_t> Header(uint64_t my, uint64_t alternate, uint64_t entriesLba,
                              const std::vector<uint8_t>& entries) const {
    std::vector<uint8_t> h(bps, 0);
    memcpy(h.data(), "EFI PART", 8);
    vt::Put32(h, 8, 0x00010000);
    vt::Put32(h, 12, 92);
    Put64(h, 24, my);
    Put64(h, 32, alternate);
    Put64(h, 40, 2 + EntrySectors());
    Put64(h, 48, totalSectors - 2 - EntrySectors());
    Put64(h, 72, entriesLba);
    vt::Put32(h, 80, entryCount);
    vt::Put32(h, 84, entrySize);
    vt::Put32(h, 88, GptCrc32(entries.data(), size_t(entryCount) * entrySize));
    vt::Put32(h, 16, GptCrc32(h.data(), 92));
    return h;
  }
  void Write(const std::string& path) const {
    vt::MakeSparseFile(path, totalSectors * bps);
    std::vector<vt::MbrEntry> mbr;
    vt::MbrEntry protective;
    protective.type = 0xEE;
    protective.start = 1;
    protective.count = totalSectors - 1 > 0xFFFFFFFFull ? 0xFFFFFFFFu : uint32_t(totalSectors - 1);
    mbr.push_back(protective);
    for (const vt::MbrEntry& e : extraMbr) mbr.push_back(e);
    std::vector<uint8_t> record = vt::BootRecord(mbr);
    record.resize(bps, 0);
    vt::WriteAt(path, 0, record);
    const std::vector<uint8_t> entries = Entries();
    const uint64_t backupEntries = totalSectors - 1 - EntrySectors();
    vt::WriteAt(path, 1ull * bps, Header(1, totalSectors - 1, 2, entries));
    vt::WriteAt(path, 2ull * bps, entries);
    vt::WriteAt(path, backupEntries * bps, entries);
    vt::WriteAt(path, (totalSectors - 1) * bps, Header(totalSectors - 1, 1, backupEntries, entries));
  }
};

}  // namespace vt
