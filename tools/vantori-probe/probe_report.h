// The report of vantori-probe: one TAB-separated line per disk, partition and
// mounted volume, for people and for scripts that check what the disk layer
// sees on a machine.
#pragma once

#include <signal.h>
#include <stdio.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "disk/View_Disk_Info.h"

struct ProbeOptions {
  bool mount = true;         // mount the recognised volumes and list them
  bool keepMounted = false;  // leave them mounted on exit
  bool hold = false;         // after the report, wait for the end of input or a signal
  bool help = false;
  std::vector<std::string> images;  // --image options, as given
};

// Set by the program's handlers for SIGTERM, SIGINT and SIGHUP: the probe
// then ends its wait and unmounts what it mounted before it exits.
extern volatile sig_atomic_t g_probeStop;

// 0 when the arguments were understood, else 2 (after a message on err).
int ParseProbeArgs(int argc, char** argv, ProbeOptions* options, FILE* err);

void PrintProbeUsage(FILE* out);

// Takes info's inventory, recognises (and with options.mount mounts) its
// volumes and prints the record lines to standard output. Returns 0.
int RunProbe(View_Disk_Info* info, const ProbeOptions& options);

// The whole program: arguments, the root check (euid), the report.
int ProbeMain(int argc, char** argv, uid_t euid, View_Disk_Info* info, FILE* err);
