// vantori-probe: prints what the disk layer sees on this machine (see --help).
// The volume table is constructed at start-up without touching a device; the
// inventory is taken only after the options and the root check (--help and
// a start without root rights open no device).
#include <unistd.h>

#include "disk/View_Disk_Info.h"
#include "probe_report.h"

int main(int argc, char** argv) {
  return ProbeMain(argc, argv, geteuid(), &g_AllDiskPartitionInf, stderr);
}
