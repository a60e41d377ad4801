// Bounded little-endian readers over a sector buffer, and the layout and
// rules of a boot record (master boot record or extended boot record): the
// 0x55 0xAA signature, the four 16-byte partition entries at 446 and which
// entries count as used or extended. Every parser of on-disk data reads
// through these, so no offset taken from a disk can reach outside its buffer.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "disk/DiskInformation.h"

// A buffer and its length. A read whose bytes do not all lie inside the
// buffer returns 0 and sets failed (which stays set), so a parser can read
// several fields and check once; nothing outside [data, data + size) is read.
// The bytes found inside are assembled by ByteToWord / ByteToDWord /
// ByteToQWord.
struct ByteView {
  const unsigned char* data;
  size_t size;
  int failed;
};

inline ByteView MakeByteView(const unsigned char* data, size_t size) {
  ByteView view;
  view.data = data;
  view.size = data != NULL ? size : 0;
  view.failed = 0;
  return view;
}

// 1 when the width bytes at offset lie inside the view, else 0.
inline int ByteViewHas(const ByteView* view, size_t offset, size_t width) {
  return view != NULL && view->data != NULL && offset <= view->size &&
         width <= view->size - offset;
}

// The width bytes at offset, or NULL (and failed set) when they leave the view.
inline const unsigned char* ByteViewAt(ByteView* view, size_t offset, size_t width) {
  if (!ByteViewHas(view, offset, width)) {
    if (view != NULL) view->failed = 1;
    return NULL;
  }
  return view->data + offset;
}

inline uint8_t ViewU8(ByteView* view, size_t offset) {
  const unsigned char* p = ByteViewAt(view, offset, 1);
  return p != NULL ? p[0] : 0;
}

inline uint16_t ViewLe16(ByteView* view, size_t offset) {
  const unsigned char* p = ByteViewAt(view, offset, 2);
  return p != NULL ? ByteToWord(p, 0) : 0;
}

inline uint32_t ViewLe32(ByteView* view, size_t offset) {
  const unsigned char* p = ByteViewAt(view, offset, 4);
  return p != NULL ? ByteToDWord(p, 0) : 0;
}

inline uint64_t ViewLe64(ByteView* view, size_t offset) {
  const unsigned char* p = ByteViewAt(view, offset, 8);
  return p != NULL ? ByteToQWord(p, 0) : 0;
}

// ---- boot records ---------------------------------------------------------

// The signature and the table lie in the first 512 bytes of the sector,
// whatever the sector size.
#define BOOT_RECORD_SIZE 512
#define BOOT_SIGNATURE_OFFSET 510  // 0x55 at 510, 0xAA at 511
#define BOOT_SIGNATURE_0 0x55
#define BOOT_SIGNATURE_1 0xAA
#define PARTITION_ENTRY_BASE 446   // 0x1BE
#define PARTITION_ENTRY_SIZE 16
#define PARTITION_ENTRY_COUNT 4

// Fields of a partition entry, relative to the entry.
#define PARTITION_ENTRY_BOOT 0
#define PARTITION_ENTRY_TYPE 4
#define PARTITION_ENTRY_END_HEAD 5
#define PARTITION_ENTRY_END_SECTOR 6
#define PARTITION_ENTRY_START 8
#define PARTITION_ENTRY_COUNT_FIELD 12

// The two extended partition types that are followed; 0x85 is not.
#define PARTITION_TYPE_EXTENDED_CHS 0x05
#define PARTITION_TYPE_EXTENDED_LBA 0x0F

// Offset of slot's entry in a boot record.
inline size_t PartitionEntryOffset(int slot) {
  return PARTITION_ENTRY_BASE + PARTITION_ENTRY_SIZE * static_cast<size_t>(slot);
}

// 1 when the view holds 0x55 0xAA at 510, else 0 (also for a view shorter
// than 512 bytes).
inline int HasBootSignature(const ByteView* sector) {
  ByteView v = *sector;
  const unsigned char* p = ByteViewAt(&v, BOOT_SIGNATURE_OFFSET, 2);
  return p != NULL && p[0] == BOOT_SIGNATURE_0 && p[1] == BOOT_SIGNATURE_1;
}

struct PartitionEntry {
  uint8_t boot;       // boot indicator
  uint8_t type;
  uint8_t endHead;
  uint8_t endSector;  // bits 0-5 the sector, 6-7 cylinder bits
  uint32_t start;     // LBA start
  uint32_t count;     // sector count
};

// Reads entry slot (0..3) of a boot record. 0, or -1 (entry zeroed) when the
// slot is out of range or the entry does not lie inside the view.
inline int ReadPartitionEntry(const ByteView* sector, int slot, PartitionEntry* entry) {
  if (entry == NULL) return -1;
  entry->boot = entry->type = entry->endHead = entry->endSector = 0;
  entry->start = entry->count = 0;
  if (sector == NULL || slot < 0 || slot >= PARTITION_ENTRY_COUNT) return -1;
  ByteView v = *sector;
  v.failed = 0;
  const size_t at = PartitionEntryOffset(slot);
  if (!ByteViewHas(&v, at, PARTITION_ENTRY_SIZE)) return -1;
  entry->boot = ViewU8(&v, at + PARTITION_ENTRY_BOOT);
  entry->type = ViewU8(&v, at + PARTITION_ENTRY_TYPE);
  entry->endHead = ViewU8(&v, at + PARTITION_ENTRY_END_HEAD);
  entry->endSector = ViewU8(&v, at + PARTITION_ENTRY_END_SECTOR);
  entry->start = ViewLe32(&v, at + PARTITION_ENTRY_START);
  entry->count = ViewLe32(&v, at + PARTITION_ENTRY_COUNT_FIELD);
  return 0;
}

// Used: a type, and a boot indicator that read as a signed byte is 0 or
// negative (0x00 or 0x80..0xFF); 0x01..0x7F marks an entry that is passed by.
inline int PartitionEntryUsed(const PartitionEntry* entry) {
  return static_cast<int8_t>(entry->boot) <= 0 && entry->type != 0;
}

inline int PartitionEntryExtended(const PartitionEntry* entry) {
  return entry->type == PARTITION_TYPE_EXTENDED_CHS || entry->type == PARTITION_TYPE_EXTENDED_LBA;
}
