// Whole-sector reads and writes on an open device node, through the device
// table.
#pragma once

// Both seek to sector x bytesPerSector (computed in 64 bits) and transfer
// count whole sectors with one read or write. They return the number of whole
// sectors transferred (a short transfer counts only whole sectors), 0 on any
// failure: a null buffer, fd -1, count below 1, a sector size of 0, a failed
// seek or a transfer error. Callers treat any result other than count as a
// failure.
int DirectReadDisk(int fd, unsigned long sector, int count, unsigned char* buffer,
                   unsigned short bytesPerSector);
// Nothing in the module writes sectors; it is the read's counterpart.
int DirectWriteDisk(int fd, unsigned long sector, int count, unsigned char* buffer,
                    unsigned short bytesPerSector);
