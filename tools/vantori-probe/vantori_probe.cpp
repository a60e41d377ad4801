// vantori-probe: prints what the disk layer sees on this machine (see --help).
// The volume table is constructed at start-up without touching a device; the
// inventory is taken only after the options and the root check (--help and
// a start without root rights open no device).
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include "disk/View_Disk_Info.h"
#include "probe_report.h"

namespace {

void TakeStop(int) { g_probeStop = 1; }

}  // namespace

int main(int argc, char** argv) {
  // A stop signal ends the wait of --hold and, at any point, leads to the
  // normal end: everything mounted is unmounted and the loop devices of disk
  // images are released. No restart, so a waiting read returns.
  struct sigaction action;
  memset(&action, 0, sizeof(action));
  action.sa_handler = TakeStop;
  sigemptyset(&action.sa_mask);
  sigaction(SIGTERM, &action, NULL);
  sigaction(SIGINT, &action, NULL);
  sigaction(SIGHUP, &action, NULL);
  return ProbeMain(argc, argv, geteuid(), &g_AllDiskPartitionInf, stderr);
}
