// Shared by the copy tests: file contents that differ at every offset, the
// progress window of a running copy, and a destination volume of a chosen
// file-system type.
#pragma once

#include <wx/toplevel.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "copy/my_dialog_gauge.h"
#include "disk/View_Disk_Info.h"

namespace vt {

// `size` bytes of a pseudo-random sequence chosen by `seed`.
inline std::string PatternBytes(size_t size, unsigned seed) {
  std::string data(size, '\0');
  unsigned x = seed * 2654435761u + 1;
  for (size_t i = 0; i < size; ++i) {
    x = x * 1103515245u + 12345u;
    data[i] = static_cast<char>(x >> 16);
  }
  return data;
}

// The progress window that is open and not being deleted, or null.
inline my_dialog_gauge* OpenGauge() {
  for (wxWindow* w : wxTopLevelWindows)
    if (my_dialog_gauge* g = dynamic_cast<my_dialog_gauge*>(w))
      if (!g->IsBeingDeleted()) return g;
  return nullptr;
}

// A volume table with one volume mounted at the copy's destination folder,
// of the given file-system type (3: FAT32); the table is restored after.
class DestinationVolume {
 public:
  DestinationVolume(const std::string& mountPoint, uint8_t fsType, char letter) {
    saved_ = g_AllDiskPartitionInf.m_VolumeCount;
    memcpy(&volume_, &g_AllDiskPartitionInf.m_Volume[0], sizeof(volume_));
    VolumeInformation& v = g_AllDiskPartitionInf.m_Volume[0];
    memset(&v, 0, sizeof(v));
    snprintf(v.MountPoint, sizeof(v.MountPoint), "%s", mountPoint.c_str());
    v.DriveLetter = letter;
    v.FsType = fsType;
    g_AllDiskPartitionInf.m_VolumeCount = 1;
  }
  ~DestinationVolume() {
    memcpy(&g_AllDiskPartitionInf.m_Volume[0], &volume_, sizeof(volume_));
    g_AllDiskPartitionInf.m_VolumeCount = saved_;
  }
  DestinationVolume(const DestinationVolume&) = delete;
  DestinationVolume& operator=(const DestinationVolume&) = delete;

 private:
  uint16_t saved_;
  VolumeInformation volume_;
};

}  // namespace vt
