#include "probe_report.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "disk/DiskDiscovery.h"
#include "disk/DiskImage.h"
#include "disk/GptTable.h"

volatile sig_atomic_t g_probeStop = 0;

namespace {

// Appends at most max bytes of text (less at a NUL); bytes that are not
// printable ASCII are written as \xNN so that a line stays one line.
void AppendEscaped(std::string* line, const char* text, size_t max) {
  if (text == NULL) return;
  for (size_t i = 0; i < max && text[i] != 0; ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 || c >= 0x7F) {
      char hex[8];
      snprintf(hex, sizeof(hex), "\\x%02X", c);
      *line += hex;
    } else {
      *line += static_cast<char>(c);
    }
  }
}

void AppendField(std::string* line, const std::string& field) {
  *line += '\t';
  *line += field;
}

std::string Number(unsigned long long value) { return std::to_string(value); }

struct PartitionSnapshot {
  char letter;        // from discovery
  int fsType;
  std::string label;  // escaped
};

// The record lines are fixed output, checked by tests and read by scripts:
// not debugging leftovers.
void Emit(const std::string& line) {
  fputs(line.c_str(), stdout);
  fputc('\n', stdout);
}

// Waits until standard input ends or a stop signal has been taken.
void WaitForRelease() {
  char buffer[256];
  while (!g_probeStop) {
    ssize_t n = read(0, buffer, sizeof(buffer));
    if (n == 0 || (n < 0 && errno != EINTR)) break;
  }
}

const char* TableName(int table) {
  switch (table) {
    case GPT_RESULT_PRIMARY: return "gpt";
    case GPT_RESULT_BACKUP: return "gpt-backup";
    case GPT_RESULT_HYBRID: return "mbr-hybrid";
    case GPT_RESULT_DAMAGED: return "mbr-damaged-gpt";
    default: return "mbr";
  }
}

}  // namespace

void PrintProbeUsage(FILE* out) {
  // Fixed output, checked by tests.
  fputs(
      "usage: vantori-probe [--no-mount | --keep-mounted | --hold]\n"
      "                     [--image FILE[,usb][,rw][,4096]]... [--help]\n"
      "\n"
      "Takes the inventory of the machine's disks the way the Vantori module does\n"
      "(device nodes /dev/hd[a-d], /dev/nvme[0-7]n[1-4], /dev/vd[a-p],\n"
      "/dev/mmcblk[0-7], /dev/sg[0-9], /dev/sd[a-j], then the disk images given with\n"
      "--image), reads their MBR or GPT partition tables, recognises the FAT and\n"
      "NTFS volumes of every partition, mounts them under /mnt/<letter> and prints one\n"
      "line per record, fields separated by TAB:\n"
      "\n"
      "  disk       path, model, flags (bit 0 removable, 1 DMA, 2 LBA), bytes per\n"
      "             sector, heads, sectors per track, cylinders, total sectors,\n"
      "             partition count\n"
      "  partition  disk path, partition number, drive letter given at discovery (or -),\n"
      "             start sector, sector count, file-system type (0 unknown, 1 FAT12,\n"
      "             2 FAT16, 3 FAT32, 4 NTFS), label (empty when none); a GPT\n"
      "             partition has two more: its type GUID and its name\n"
      "  table      disk path, the partition table read: mbr, gpt, gpt-backup (the\n"
      "             first GPT header was damaged), mbr-hybrid (a GPT beside MBR\n"
      "             entries) or mbr-damaged-gpt (neither GPT header checks out)\n"
      "  volume     drive letter, mount point, removable (0/1), file-system name,\n"
      "             label, free space, total space\n"
      "\n"
      "Bytes of the model and labels that are not printable ASCII are written as \\xNN.\n"
      "Partition lines show what recognition found before anything was mounted;\n"
      "volume lines list the volumes that mounted. Other lines on standard output are\n"
      "the module's own diagnostics.\n"
      "\n"
      "  (default)       inventory, mount, print, then unmount everything before exit\n"
      "  --no-mount      discovery and recognition only: nothing is mounted and no\n"
      "                  volume lines are printed\n"
      "  --keep-mounted  leave the volumes mounted on exit\n"
      "  --hold          after the report keep the volumes mounted until standard\n"
      "                  input ends or SIGTERM, SIGINT or SIGHUP arrives, then\n"
      "                  unmount everything\n"
      "  --image FILE[,usb][,rw][,4096]\n"
      "                  take a disk image file (a raw dump of a disk) as one more\n"
      "                  disk, named /dev/vantori-image0, /dev/vantori-image1, ...\n"
      "                  (partitions /dev/vantori-image0p1, ...); its volumes are\n"
      "                  mounted through loop devices, read-only (ntfsfix is not run)\n"
      "                  unless ,rw is given; ,usb shows it as a removable USB disk;\n"
      "                  ,4096 gives it 4096-byte sectors. Loop devices are released\n"
      "                  when the volumes are unmounted. May be repeated.\n"
      "  --help          this text\n"
      "\n"
      "Needs root rights (raw device access, mount). Exit status 0 on success.\n",
      out);
}

int ParseProbeArgs(int argc, char** argv, ProbeOptions* options, FILE* err) {
  for (int i = 1; i < argc; ++i) {
    const char* arg = argv[i];
    if (strcmp(arg, "--no-mount") == 0) {
      options->mount = false;
    } else if (strcmp(arg, "--keep-mounted") == 0) {
      options->keepMounted = true;
    } else if (strcmp(arg, "--hold") == 0) {
      options->hold = true;
    } else if (strcmp(arg, "--image") == 0) {
      if (i + 1 >= argc) {
        fprintf(err, "vantori-probe: --image needs a file name\n");
        return 2;
      }
      options->images.push_back(argv[++i]);
    } else if (strncmp(arg, "--image=", 8) == 0) {
      options->images.push_back(arg + 8);
    } else if (strcmp(arg, "--help") == 0 || strcmp(arg, "-h") == 0) {
      options->help = true;
    } else {
      fprintf(err, "vantori-probe: unknown option %s (try --help)\n", arg);
      return 2;
    }
  }
  if ((!options->mount ? 1 : 0) + (options->keepMounted ? 1 : 0) + (options->hold ? 1 : 0) > 1) {
    fprintf(err, "vantori-probe: --no-mount, --keep-mounted and --hold exclude each other\n");
    return 2;
  }
  return 0;
}

int RunProbe(View_Disk_Info* info, const ProbeOptions& options) {
  // The first and only device access of the program: the table's
  // construction and --help open nothing.
  info->UI_TakeInventory();
  MyComputer* computer = &info->m_Computer;
  // Discovery letters first: mounting gives letters again, to mounted volumes only.
  std::vector<std::vector<PartitionSnapshot>> snapshot(
      computer->Disks != NULL ? computer->DiskCount : 0);
  for (size_t d = 0; d < snapshot.size(); ++d) {
    const HardDiskInformation& disk = computer->Disks[d];
    if (disk.Partitions == NULL) continue;
    for (int p = 0; p < disk.PartitionCount; ++p)
      snapshot[d].push_back(PartitionSnapshot{disk.Partitions[p].DriveLetter, 0, std::string()});
  }
  DetectAllPartitions(computer);
  for (size_t d = 0; d < snapshot.size(); ++d) {
    const HardDiskInformation& disk = computer->Disks[d];
    for (size_t p = 0; p < snapshot[d].size(); ++p) {
      const FileSystemInformation* fs = disk.Partitions[p].FileSystem;
      if (fs == NULL) continue;
      snapshot[d][p].fsType = fs->FsType;
      AppendEscaped(&snapshot[d][p].label, fs->VolumeLabel, static_cast<size_t>(-1));
    }
  }
  if (options.mount) {
    info->UI_InitDevice();
    info->GetDiskParttionInfo();
  }
  fflush(stdout);

  for (size_t d = 0; d < snapshot.size(); ++d) {
    const HardDiskInformation& disk = computer->Disks[d];
    std::string line = "disk";
    std::string path, model;
    AppendEscaped(&path, disk.DevicePath, sizeof(disk.DevicePath));
    AppendEscaped(&model, disk.Model, sizeof(disk.Model));
    AppendField(&line, path);
    AppendField(&line, model);
    AppendField(&line, Number(disk.Flags));
    AppendField(&line, Number(disk.BytesPerSector));
    AppendField(&line, Number(disk.Heads));
    AppendField(&line, Number(disk.SectorsPerTrack));
    AppendField(&line, Number(disk.Cylinders));
    AppendField(&line, Number(disk.TotalSectors));
    AppendField(&line, Number(disk.PartitionCount));
    Emit(line);
    std::string table = "table";
    AppendField(&table, path);
    AppendField(&table, TableName(disk.PartitionTable));
    Emit(table);
    for (size_t p = 0; p < snapshot[d].size(); ++p) {
      const PartitionInformation& part = disk.Partitions[p];
      const PartitionSnapshot& snap = snapshot[d][p];
      std::string pline = "partition";
      AppendField(&pline, path);
      AppendField(&pline, Number(part.PartitionNumber));
      AppendField(&pline, snap.letter != 0 ? std::string(1, snap.letter) : std::string("-"));
      AppendField(&pline, Number(part.StartSector));
      AppendField(&pline, Number(part.SectorCount));
      AppendField(&pline, Number(static_cast<unsigned>(snap.fsType)));
      AppendField(&pline, snap.label);
      if (part.TableKind == PARTITION_TABLE_GPT) {
        char guid[37];
        GptGuidText(part.TypeGuid, guid);
        AppendField(&pline, guid);
        std::string name;
        AppendEscaped(&name, part.Name, sizeof(part.Name));
        AppendField(&pline, name);
      }
      Emit(pline);
    }
  }
  if (options.mount) {
    for (int i = 0; i < info->GetCurrentParttionNum() && i < MAX_VOLUME_COUNT; ++i) {
      const VolumeInformation& v = info->m_Volume[i];
      std::string line = "volume";
      std::string field;
      AppendField(&line, std::string(1, v.DriveLetter));
      field.clear();
      AppendEscaped(&field, v.MountPoint, sizeof(v.MountPoint));
      AppendField(&line, field);
      AppendField(&line, Number(v.Removable));
      field.clear();
      AppendEscaped(&field, v.FsName, sizeof(v.FsName));
      AppendField(&line, field);
      field.clear();
      AppendEscaped(&field, v.VolumeLabel, sizeof(v.VolumeLabel));
      AppendField(&line, field);
      field.clear();
      AppendEscaped(&field, v.FreeText, sizeof(v.FreeText));
      AppendField(&line, field);
      field.clear();
      AppendEscaped(&field, v.SizeText, sizeof(v.SizeText));
      AppendField(&line, field);
      Emit(line);
    }
    fflush(stdout);
    if (options.hold) WaitForRelease();
    if (!options.keepMounted || g_probeStop) info->UI_FreeMemory();
  }
  fflush(stdout);
  return 0;
}

int ProbeMain(int argc, char** argv, uid_t euid, View_Disk_Info* info, FILE* err) {
  ProbeOptions options;
  int rc = ParseProbeArgs(argc, argv, &options, err);
  if (rc != 0) return rc;
  if (options.help) {
    PrintProbeUsage(stdout);
    return 0;
  }
  if (euid != 0) {
    // Fixed output, checked by tests; nothing has opened a device yet.
    fprintf(err, "vantori-probe: must be run as root (raw disk access and mount need it)\n");
    return 1;
  }
  for (const std::string& image : options.images) {
    if (AddDiskImage(image.c_str()) != 0) return 2;
  }
  return RunProbe(info, options);
}
