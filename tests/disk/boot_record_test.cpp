// The bounded little-endian readers and the boot-record rules. Buffers are
// allocated with their exact length, so AddressSanitizer builds would also
// catch a read one byte past the end.
#include <gtest/gtest.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "disk/BootRecord.h"

namespace {

// A heap block of exactly n bytes 0x01, 0x02, ...
struct ExactBuffer {
  explicit ExactBuffer(size_t n) : size(n), data(static_cast<unsigned char*>(malloc(n ? n : 1))) {
    for (size_t i = 0; i < n; ++i) data[i] = static_cast<unsigned char>(i + 1);
  }
  ~ExactBuffer() { free(data); }
  size_t size;
  unsigned char* data;
};

// What a read of width bytes at offset returns, and whether it failed.
struct Read {
  uint64_t value;
  int failed;
};

Read ReadWidth(const ExactBuffer& b, size_t offset, int width) {
  ByteView v = MakeByteView(b.data, b.size);
  uint64_t value = 0;
  switch (width) {
    case 1: value = ViewU8(&v, offset); break;
    case 2: value = ViewLe16(&v, offset); break;
    case 4: value = ViewLe32(&v, offset); break;
    case 8: value = ViewLe64(&v, offset); break;
  }
  return Read{value, v.failed};
}

uint64_t Expected(size_t offset, int width) {
  uint64_t value = 0;
  for (int i = width - 1; i >= 0; --i) value = (value << 8) | static_cast<uint8_t>(offset + i + 1);
  return value;
}

TEST(ByteView, ReadsEndingExactlyAtTheEndSucceedAndOneFurtherFails) {
  for (size_t n : {0u, 1u, 2u, 4u, 8u}) {
    ExactBuffer b(n);
    for (int width : {1, 2, 4, 8}) {
      SCOPED_TRACE("buffer " + std::to_string(n) + ", width " + std::to_string(width));
      if (n >= static_cast<size_t>(width)) {
        Read last = ReadWidth(b, n - width, width);
        EXPECT_EQ(last.failed, 0);
        EXPECT_EQ(last.value, Expected(n - width, width));
        Read over = ReadWidth(b, n - width + 1, width);
        EXPECT_EQ(over.failed, 1);
        EXPECT_EQ(over.value, 0u);
      } else {
        Read tooShort = ReadWidth(b, 0, width);
        EXPECT_EQ(tooShort.failed, 1);
        EXPECT_EQ(tooShort.value, 0u);
      }
      Read atEnd = ReadWidth(b, n, width);
      EXPECT_EQ(atEnd.failed, 1);
      EXPECT_EQ(atEnd.value, 0u);
    }
  }
}

TEST(ByteView, OffsetsNearTheTopOfTheAddressRangeDoNotWrap) {
  ExactBuffer b(8);
  for (size_t offset : {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - 3, SIZE_MAX - 7, size_t{9}}) {
    for (int width : {1, 2, 4, 8}) {
      Read r = ReadWidth(b, offset, width);
      EXPECT_EQ(r.failed, 1) << offset << " " << width;
      EXPECT_EQ(r.value, 0u);
    }
  }
  ByteView v = MakeByteView(b.data, b.size);
  EXPECT_EQ(ByteViewAt(&v, 4, SIZE_MAX), nullptr);
  EXPECT_EQ(ByteViewHas(&v, 8, 0), 1);  // an empty range at the end is inside
  EXPECT_EQ(ByteViewHas(&v, 9, 0), 0);
}

TEST(ByteView, LittleEndianValuesAndStickyFailure) {
  const unsigned char bytes[] = {0x00, 0x02, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF,
                                 0xFF, 0xFF, 0xFF, 0xFF, 0x34, 0x12};
  ByteView v = MakeByteView(bytes, sizeof(bytes));
  EXPECT_EQ(ViewLe32(&v, 0), 512u);
  EXPECT_EQ(ViewLe64(&v, 4), UINT64_MAX);
  EXPECT_EQ(ViewLe16(&v, 12), 0x1234u);
  EXPECT_EQ(ViewU8(&v, 13), 0x12u);
  EXPECT_EQ(v.failed, 0);
  EXPECT_EQ(ViewLe16(&v, 13), 0u);
  EXPECT_EQ(v.failed, 1);
  // A good read afterwards still returns its value; the flag stays.
  EXPECT_EQ(ViewU8(&v, 0), 0u);
  EXPECT_EQ(ViewLe16(&v, 1), 2u);
  EXPECT_EQ(v.failed, 1);
}

TEST(ByteView, NullDataIsAnEmptyView) {
  ByteView v = MakeByteView(nullptr, 512);
  EXPECT_EQ(v.size, 0u);
  EXPECT_EQ(ViewU8(&v, 0), 0u);
  EXPECT_EQ(v.failed, 1);
  EXPECT_EQ(ByteViewAt(nullptr, 0, 0), nullptr);
}

std::vector<unsigned char> Record(size_t size) {
  std::vector<unsigned char> b(size, 0);
  if (size >= 512) {
    b[BOOT_SIGNATURE_OFFSET] = 0x55;
    b[BOOT_SIGNATURE_OFFSET + 1] = 0xAA;
  }
  return b;
}

TEST(BootRecord, SignatureAt510OnlyInsideTheView) {
  std::vector<unsigned char> b = Record(512);
  ByteView v = MakeByteView(b.data(), b.size());
  EXPECT_EQ(HasBootSignature(&v), 1);
  ByteView shortView = MakeByteView(b.data(), 511);
  EXPECT_EQ(HasBootSignature(&shortView), 0);
  b[511] = 0xAB;
  EXPECT_EQ(HasBootSignature(&v), 0);
  // Larger sectors keep the signature in their first 512 bytes.
  std::vector<unsigned char> big = Record(4096);
  ByteView bigView = MakeByteView(big.data(), big.size());
  EXPECT_EQ(HasBootSignature(&bigView), 1);
  EXPECT_EQ(v.failed, 0);  // the check works on a copy of the view
}

TEST(BootRecord, EntryFieldsAndBounds) {
  std::vector<unsigned char> b = Record(512);
  const size_t at = PartitionEntryOffset(2);
  EXPECT_EQ(at, 0x1DEu);
  b[at] = 0x80;
  b[at + 4] = 0x0F;
  b[at + 5] = 254;
  b[at + 6] = 0xFF;
  b[at + 8] = 0x00;
  b[at + 9] = 0x08;  // start 2048
  b[at + 12] = 0x10; // count 16
  ByteView v = MakeByteView(b.data(), b.size());
  PartitionEntry e;
  ASSERT_EQ(ReadPartitionEntry(&v, 2, &e), 0);
  EXPECT_EQ(e.boot, 0x80);
  EXPECT_EQ(e.type, 0x0F);
  EXPECT_EQ(e.endHead, 254);
  EXPECT_EQ(e.endSector, 0xFF);
  EXPECT_EQ(e.start, 2048u);
  EXPECT_EQ(e.count, 16u);
  EXPECT_EQ(ReadPartitionEntry(&v, 4, &e), -1);
  EXPECT_EQ(e.type, 0);
  EXPECT_EQ(ReadPartitionEntry(&v, -1, &e), -1);
  // The last entry ends at 510: a view of 509 bytes cannot hold it.
  ByteView cut = MakeByteView(b.data(), 509);
  EXPECT_EQ(ReadPartitionEntry(&cut, 3, &e), -1);
  EXPECT_EQ(ReadPartitionEntry(&cut, 2, &e), 0);
  EXPECT_EQ(ReadPartitionEntry(&v, 0, nullptr), -1);
}

TEST(BootRecord, UsedAndExtendedRules) {
  PartitionEntry e;
  memset(&e, 0, sizeof(e));
  e.type = 0x06;
  EXPECT_EQ(PartitionEntryUsed(&e), 1);
  e.boot = 0x80;
  EXPECT_EQ(PartitionEntryUsed(&e), 1);
  e.boot = 0xFF;
  EXPECT_EQ(PartitionEntryUsed(&e), 1);
  e.boot = 0x01;
  EXPECT_EQ(PartitionEntryUsed(&e), 0);
  e.boot = 0x7F;
  EXPECT_EQ(PartitionEntryUsed(&e), 0);
  e.boot = 0;
  e.type = 0;
  EXPECT_EQ(PartitionEntryUsed(&e), 0);
  for (int type : {0x05, 0x0F}) {
    e.type = static_cast<uint8_t>(type);
    EXPECT_EQ(PartitionEntryExtended(&e), 1) << type;
  }
  for (int type : {0x85, 0x06, 0x07, 0x00}) {
    e.type = static_cast<uint8_t>(type);
    EXPECT_EQ(PartitionEntryExtended(&e), 0) << type;
  }
}

}  // namespace
