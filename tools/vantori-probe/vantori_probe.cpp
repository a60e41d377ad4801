// vantori-probe: prints what the disk layer sees on this machine (see --help).
// The inventory itself is taken when the library's volume table is
// constructed at start-up; opening the nodes fails without root rights and
// leaves it empty.
#include <unistd.h>

#include "disk/View_Disk_Info.h"
#include "probe_report.h"

int main(int argc, char** argv) {
  return ProbeMain(argc, argv, geteuid(), &g_AllDiskPartitionInf, stderr);
}
