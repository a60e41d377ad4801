// make_fuzz_seed: turns a disk or partition image into a fuzz input in the
// encoding of FuzzDisk.h, keeping only the sectors that hold a non-zero byte.
//
//   make_fuzz_seed [-S SECTOR_SIZE] [-o FIRST_SECTOR] [-n SECTORS] [-m MAX_BYTES]
//                  IMAGE OUTPUT
//
//   -S  sector size of the encoding: 512 (default), 1024, 2048 or 4096
//   -o  first sector of the image to take (a partition inside a disk image)
//   -n  number of sectors to take (default: to the end of the image)
//   -m  stop adding sectors before the output would exceed MAX_BYTES; the
//       sectors are added in ascending order, so the front of the device
//       (boot records, FATs, the start of the MFT) stays
// The device size written is the number of sectors taken.
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

namespace {

int Usage() {
  fprintf(stderr,
          "usage: make_fuzz_seed [-S SECTOR_SIZE] [-o FIRST_SECTOR] [-n SECTORS] [-m MAX_BYTES] "
          "IMAGE OUTPUT\n");
  return 2;
}

void PutLe32(std::vector<uint8_t>* out, uint32_t v) {
  for (int i = 0; i < 4; ++i) out->push_back(static_cast<uint8_t>(v >> (8 * i)));
}

bool ParseNumber(const char* text, unsigned long long* value) {
  char* end = nullptr;
  errno = 0;
  *value = strtoull(text, &end, 0);
  return errno == 0 && end != text && *end == 0;
}

}  // namespace

int main(int argc, char** argv) {
  unsigned long long sectorSize = 512, first = 0, count = 0, maxBytes = 0;
  bool haveCount = false;
  int i = 1;
  for (; i + 1 < argc && argv[i][0] == '-'; i += 2) {
    unsigned long long v;
    if (!ParseNumber(argv[i + 1], &v)) return Usage();
    if (strcmp(argv[i], "-S") == 0) sectorSize = v;
    else if (strcmp(argv[i], "-o") == 0) first = v;
    else if (strcmp(argv[i], "-n") == 0) count = v, haveCount = true;
    else if (strcmp(argv[i], "-m") == 0) maxBytes = v;
    else return Usage();
  }
  if (argc - i != 2) return Usage();
  int code = -1;
  for (int c = 0; c < 4; ++c)
    if (sectorSize == (512ull << c)) code = c;
  if (code < 0) {
    fprintf(stderr, "make_fuzz_seed: sector size must be 512, 1024, 2048 or 4096\n");
    return 2;
  }
  FILE* in = fopen(argv[i], "rb");
  if (in == nullptr) {
    fprintf(stderr, "make_fuzz_seed: cannot open %s: %s\n", argv[i], strerror(errno));
    return 1;
  }
  if (fseeko(in, 0, SEEK_END) != 0) return 1;
  unsigned long long imageSectors = static_cast<unsigned long long>(ftello(in)) / sectorSize;
  if (first > imageSectors) first = imageSectors;
  if (!haveCount || first + count > imageSectors) count = imageSectors - first;
  if (count > 0xFFFFFFFFull) {
    fprintf(stderr, "make_fuzz_seed: more than 2^32 sectors\n");
    return 1;
  }
  if (fseeko(in, static_cast<off_t>(first * sectorSize), SEEK_SET) != 0) return 1;

  std::vector<uint8_t> out;
  out.push_back(static_cast<uint8_t>(code));
  PutLe32(&out, static_cast<uint32_t>(count));
  std::vector<uint8_t> sector(sectorSize);
  unsigned long long kept = 0;
  for (unsigned long long s = 0; s < count; ++s) {
    if (fread(sector.data(), 1, sectorSize, in) != sectorSize) break;
    bool zero = true;
    for (uint8_t b : sector) zero = zero && b == 0;
    if (zero) continue;
    if (maxBytes != 0 && out.size() + 4 + sectorSize > maxBytes) break;
    PutLe32(&out, static_cast<uint32_t>(s));
    out.insert(out.end(), sector.begin(), sector.end());
    ++kept;
  }
  fclose(in);
  FILE* o = fopen(argv[i + 1], "wb");
  if (o == nullptr || fwrite(out.data(), 1, out.size(), o) != out.size() || fclose(o) != 0) {
    fprintf(stderr, "make_fuzz_seed: cannot write %s\n", argv[i + 1]);
    return 1;
  }
  fprintf(stderr, "make_fuzz_seed: %s: %llu of %llu sectors kept, %zu bytes\n", argv[i + 1], kept,
          count, out.size());
  return 0;
}
