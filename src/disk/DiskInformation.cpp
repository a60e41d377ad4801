#include "disk/DiskInformation.h"

#include <stdlib.h>

extern "C" {

uint16_t ByteToWord(const unsigned char* buffer, int offset) {
  return static_cast<uint16_t>(buffer[offset] | (buffer[offset + 1] << 8));
}

uint32_t ByteToDWord(const unsigned char* buffer, int offset) {
  return static_cast<uint32_t>(buffer[offset]) | (static_cast<uint32_t>(buffer[offset + 1]) << 8) |
         (static_cast<uint32_t>(buffer[offset + 2]) << 16) |
         (static_cast<uint32_t>(buffer[offset + 3]) << 24);
}

uint64_t ByteToQWord(const unsigned char* buffer, int offset) {
  return static_cast<uint64_t>(ByteToDWord(buffer, offset)) |
         (static_cast<uint64_t>(ByteToDWord(buffer, offset + 4)) << 32);
}

}  // extern "C"

void FreeHdInfoList(MyComputer* root, void (*release)(void*)) {
  if (root == NULL || root->Disks == NULL) return;
  for (int d = 0; d < root->DiskCount; ++d) {
    HardDiskInformation* disk = &root->Disks[d];
    if (disk->Partitions == NULL) continue;
    for (int p = 0; p < disk->PartitionCount; ++p) {
      PartitionInformation* part = &disk->Partitions[p];
      if (part->FileSystem == NULL) continue;
      // Deliberately no fallback: without a release callback the rest of the
      // inventory stays as it is.
      if (release == NULL) return;
      release(part->FileSystem);
      part->FileSystem = NULL;
    }
    free(disk->Partitions);
    disk->Partitions = NULL;
    disk->PartitionCount = 0;
  }
  free(root->Disks);
  root->Disks = NULL;
  root->DiskCount = 0;
}

void FreeFsInfo(void* record) {
  if (record == NULL) return;
  FileSystemInformation* fs = static_cast<FileSystemInformation*>(record);
  free(fs->VolumeLabel);
  fs->VolumeLabel = NULL;
  free(fs);
}
