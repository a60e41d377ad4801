#include "disk/GptTable.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "disk/BootRecord.h"
#include "disk/SectorIO.h"

namespace {

const unsigned char kSignature[8] = {'E', 'F', 'I', ' ', 'P', 'A', 'R', 'T'};
const uint8_t kProtectiveType = 0xEE;

// Header fields.
const size_t kHeaderSize = 12;
const size_t kHeaderCrc = 16;
const size_t kMyLba = 24;
const size_t kEntriesLba = 72;
const size_t kEntryCount = 80;
const size_t kEntrySize = 84;
const size_t kEntriesCrc = 88;
const uint32_t kMinHeaderSize = 92;
const uint32_t kMinEntrySize = 128;

// Entry fields.
const size_t kEntryType = 0;
const size_t kEntryFirst = 32;
const size_t kEntryLast = 40;
const size_t kEntryAttributes = 48;
const size_t kEntryName = 56;
const size_t kNameUnits = 36;

// Basic-data attribute bits a desktop system honours.
const uint64_t kAttributeHidden = 1ULL << 62;
const uint64_t kAttributeNoLetter = 1ULL << 63;

const char kBasicData[] = "EBD0A0A2-B9E5-4433-87C0-68B6B72699C7";

uint32_t g_crcTable[256];
bool g_crcTableReady = false;

void MakeCrcTable() {
  for (uint32_t n = 0; n < 256; ++n) {
    uint32_t c = n;
    for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    g_crcTable[n] = c;
  }
  g_crcTableReady = true;
}

struct Header {
  uint64_t entriesLba;
  uint32_t entryCount;
  uint32_t entrySize;
  uint32_t entriesCrc;
};

// Reads and checks the header in sector lba: signature, size, CRC, its own
// position and an entry array that fits the bounds and the disk.
bool ReadHeader(int fd, unsigned short bps, uint64_t totalSectors, uint64_t lba,
                unsigned char* sector, Header* header) {
  if (lba >= totalSectors) return false;
  if (DirectReadDisk(fd, static_cast<unsigned long>(lba), 1, sector, bps) != 1) return false;
  ByteView view = MakeByteView(sector, bps);
  const unsigned char* signature = ByteViewAt(&view, 0, sizeof(kSignature));
  if (signature == NULL || memcmp(signature, kSignature, sizeof(kSignature)) != 0) return false;
  const uint32_t size = ViewLe32(&view, kHeaderSize);
  if (size < kMinHeaderSize || size > bps) return false;
  const uint32_t crc = ViewLe32(&view, kHeaderCrc);
  unsigned char copy[4096];
  if (size > sizeof(copy)) return false;
  memcpy(copy, sector, size);
  memset(copy + kHeaderCrc, 0, 4);
  if (GptCrc32(copy, size) != crc) return false;
  if (ViewLe64(&view, kMyLba) != lba) return false;
  header->entriesLba = ViewLe64(&view, kEntriesLba);
  header->entryCount = ViewLe32(&view, kEntryCount);
  header->entrySize = ViewLe32(&view, kEntrySize);
  header->entriesCrc = ViewLe32(&view, kEntriesCrc);
  if (view.failed) return false;
  if (header->entrySize < kMinEntrySize || header->entrySize % 8 != 0) return false;
  if (header->entryCount == 0 || header->entryCount > GPT_MAX_ENTRIES) return false;
  const uint64_t bytes = static_cast<uint64_t>(header->entryCount) * header->entrySize;
  if (bytes > GPT_MAX_ENTRY_BYTES) return false;
  const uint64_t sectors = (bytes + bps - 1) / bps;
  if (header->entriesLba < 1 || header->entriesLba >= totalSectors ||
      sectors > totalSectors - header->entriesLba)
    return false;
  return true;
}

// The entry array of a checked header, read whole and checked against its
// CRC; a new malloc buffer of entryCount x entrySize bytes, or NULL.
unsigned char* ReadEntries(int fd, unsigned short bps, const Header* header) {
  const size_t bytes = static_cast<size_t>(header->entryCount) * header->entrySize;
  const size_t sectors = (bytes + bps - 1) / bps;
  unsigned char* buffer = static_cast<unsigned char*>(malloc(sectors * bps));
  if (buffer == NULL) return NULL;
  if (DirectReadDisk(fd, static_cast<unsigned long>(header->entriesLba),
                     static_cast<int>(sectors), buffer, bps) != static_cast<int>(sectors) ||
      GptCrc32(buffer, bytes) != header->entriesCrc) {
    free(buffer);
    return NULL;
  }
  return buffer;
}

// Appends the UTF-8 form of code point c when it fits with a NUL after it.
void PutUtf8(uint32_t c, char* out, size_t size, size_t* at) {
  char bytes[4];
  size_t n;
  if (c < 0x80) {
    bytes[0] = static_cast<char>(c);
    n = 1;
  } else if (c < 0x800) {
    bytes[0] = static_cast<char>(0xC0 | (c >> 6));
    bytes[1] = static_cast<char>(0x80 | (c & 0x3F));
    n = 2;
  } else if (c < 0x10000) {
    bytes[0] = static_cast<char>(0xE0 | (c >> 12));
    bytes[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | (c & 0x3F));
    n = 3;
  } else {
    bytes[0] = static_cast<char>(0xF0 | (c >> 18));
    bytes[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    bytes[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    bytes[3] = static_cast<char>(0x80 | (c & 0x3F));
    n = 4;
  }
  if (*at + n >= size) return;
  memcpy(out + *at, bytes, n);
  *at += n;
}

// The entry's UTF-16LE name up to its first NUL unit, in UTF-8; a lone
// surrogate becomes U+FFFD.
void NameToUtf8(ByteView* entry, char* out, size_t size) {
  size_t at = 0;
  for (size_t i = 0; i < kNameUnits; ++i) {
    uint32_t unit = ViewLe16(entry, kEntryName + 2 * i);
    if (unit == 0) break;
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < kNameUnits) {
      const uint32_t low = ViewLe16(entry, kEntryName + 2 * (i + 1));
      if (low >= 0xDC00 && low < 0xE000) {
        unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      } else {
        unit = 0xFFFD;
      }
    } else if (unit >= 0xD800 && unit < 0xE000) {
      unit = 0xFFFD;
    }
    PutUtf8(unit, out, size, &at);
  }
  out[at] = 0;
}

bool AllZero(const unsigned char* p, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (p[i] != 0) return false;
  return true;
}

// The used entries of a checked array as partition records, numbered by
// their place in the array as the kernel numbers them. An entry whose
// sectors lie outside the disk is left out.
int EntriesToRecords(const unsigned char* entries, const Header* header, uint64_t totalSectors,
                     PartitionInformation** out) {
  PartitionInformation* records = static_cast<PartitionInformation*>(
      calloc(MAX_PARTITION_RECORDS, sizeof(PartitionInformation)));
  if (records == NULL) return -1;
  int count = 0;
  for (uint32_t i = 0; i < header->entryCount && count < MAX_PARTITION_RECORDS; ++i) {
    ByteView entry = MakeByteView(entries + static_cast<size_t>(i) * header->entrySize,
                                  header->entrySize);
    const unsigned char* type = ByteViewAt(&entry, kEntryType, 16);
    if (type == NULL || AllZero(type, 16)) continue;
    const uint64_t first = ViewLe64(&entry, kEntryFirst);
    const uint64_t last = ViewLe64(&entry, kEntryLast);
    const uint64_t attributes = ViewLe64(&entry, kEntryAttributes);
    if (entry.failed || first == 0 || first > last || last >= totalSectors) continue;
    // Numbers beyond 255 do not fit the record; the kernel's numbering is
    // kept for every entry that can be described.
    if (i + 1 > 255) break;
    PartitionInformation* rec = &records[count++];
    rec->PartitionNumber = static_cast<uint8_t>(i + 1);
    rec->StartSector = first;
    rec->SectorCount = last - first + 1;
    rec->TableKind = PARTITION_TABLE_GPT;
    memcpy(rec->TypeGuid, type, 16);
    rec->NoLetter = GptPartitionGetsLetter(type, attributes) ? 0 : 1;
    NameToUtf8(&entry, rec->Name, sizeof(rec->Name));
  }
  if (count == 0) {
    free(records);
    records = NULL;
  }
  *out = records;
  return count;
}

// Reads the header in sector lba and its entries into records: the number
// of records (0 or more), or -1 when the header or its entries are damaged.
int ReadTable(int fd, unsigned short bps, uint64_t totalSectors, uint64_t lba,
              unsigned char* sector, PartitionInformation** out) {
  Header header;
  if (!ReadHeader(fd, bps, totalSectors, lba, sector, &header)) return -1;
  unsigned char* entries = ReadEntries(fd, bps, &header);
  if (entries == NULL) return -1;
  int count = EntriesToRecords(entries, &header, totalSectors, out);
  free(entries);
  return count;
}

}  // namespace

uint32_t GptCrc32(const unsigned char* data, size_t size) {
  if (!g_crcTableReady) MakeCrcTable();
  uint32_t c = 0xFFFFFFFFu;
  for (size_t i = 0; i < size; ++i) c = g_crcTable[(c ^ data[i]) & 0xFF] ^ (c >> 8);
  return c ^ 0xFFFFFFFFu;
}

void GptGuidText(const unsigned char* g, char* out) {
  snprintf(out, 37, "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", g[3],
           g[2], g[1], g[0], g[5], g[4], g[7], g[6], g[8], g[9], g[10], g[11], g[12], g[13],
           g[14], g[15]);
}

int GptPartitionGetsLetter(const unsigned char* typeGuid, uint64_t attributes) {
  char text[37];
  GptGuidText(typeGuid, text);
  if (strcasecmp(text, kBasicData) != 0) return 0;
  return (attributes & (kAttributeHidden | kAttributeNoLetter)) == 0 ? 1 : 0;
}

int GptProtectiveKind(const unsigned char* mbr, size_t size) {
  ByteView view = MakeByteView(mbr, size);
  if (!HasBootSignature(&view)) return GPT_RESULT_NOT_GPT;
  int protective = 0, others = 0;
  for (int i = 0; i < PARTITION_ENTRY_COUNT; ++i) {
    PartitionEntry entry;
    if (ReadPartitionEntry(&view, i, &entry) != 0) break;
    if (entry.type == kProtectiveType)
      ++protective;
    else if (entry.type != 0)
      ++others;
  }
  if (protective == 0) return GPT_RESULT_NOT_GPT;
  return others == 0 ? GPT_RESULT_PRIMARY : GPT_RESULT_HYBRID;
}

int GetGptPartitionInformation(int fd, unsigned short bps, uint64_t totalSectors,
                               PartitionInformation** out, int* count) {
  if (fd == -1 || out == NULL || count == NULL || bps < 512 || bps > 4096 || totalSectors < 3)
    return GPT_RESULT_NOT_GPT;
  unsigned char* sector = static_cast<unsigned char*>(malloc(bps));
  if (sector == NULL) return GPT_RESULT_NOT_GPT;
  int result = GPT_RESULT_NOT_GPT;
  if (DirectReadDisk(fd, 0, 1, sector, bps) == 1) result = GptProtectiveKind(sector, bps);
  if (result == GPT_RESULT_PRIMARY) {
    PartitionInformation* records = NULL;
    int found = ReadTable(fd, bps, totalSectors, 1, sector, &records);
    if (found < 0) {
      found = ReadTable(fd, bps, totalSectors, totalSectors - 1, sector, &records);
      result = found < 0 ? GPT_RESULT_DAMAGED : GPT_RESULT_BACKUP;
    }
    if (found >= 0) {
      *out = records;
      *count = found;
    }
  }
  free(sector);
  return result;
}
