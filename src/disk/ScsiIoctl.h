// The SCSI ioctl numbers the disk layer uses. Not every C library ships the
// last two in <scsi/scsi_ioctl.h>, so their kernel values stand in.
#pragma once

#include <scsi/scsi.h>
#include <scsi/scsi_ioctl.h>
#include <scsi/sg.h>

#ifndef SCSI_IOCTL_GET_PCI
#define SCSI_IOCTL_GET_PCI 0x5387
#endif
#ifndef SCSI_IOCTL_PROBE_HOST
#define SCSI_IOCTL_PROBE_HOST 0x5385
#endif
