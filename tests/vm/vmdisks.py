#!/usr/bin/python3
"""Disk images for the VM test and the check of what vantori-probe printed.

  vmdisks.py make WORKDIR          makes ide.img, nvme.img, vblk.img, sdcard.img,
                                   sata.img, vscsi.img, usb.img and
                                   expected.json in WORKDIR
  vmdisks.py check WORKDIR LOG     checks the guest's serial log against
                                   expected.json; exit 0 when all checks pass

The images are sparse files partitioned with sfdisk and formatted with
mkfs.fat --offset (FAT) or mkntfs on a partition file copied in place (NTFS),
with primary and logical partitions, labels and one partition without a file
system. Two tables carry end cylinder/head/sector values of a chosen geometry
so that the geometry comes from the table; the other two keep sfdisk's values,
whose end heads disagree, so the geometry comes from the driver.
"""

import json
import os
import re
import struct
import subprocess
import sys

MIB = 1 << 20
SECTOR = 512

# GPT partition types.
ESP = 'C12A7328-F81F-11D2-BA4B-00A0C93EC93B'
MSR = 'E3C9E316-0B5C-4DB8-817D-F92DF00215AE'
BASIC_DATA = 'EBD0A0A2-B9E5-4433-87C0-68B6B72699C7'

# Partition entries: ('gpt', type GUID, file system, size MiB, label, name)
# on a disk with 'table': 'gpt' (only basic data gets a letter), or
# ('data', type byte, file system, size MiB, label, options)
# or ('ext', [logical data entries]). File system None leaves the partition
# empty. Options: 'boot' marks the entry active; 'cluster=N' is mkntfs' -c.
DISKS = [
    # In the order discovery finds them: NVMe, virtio, SD/eMMC, then the
    # SCSI nodes (the guest's IDE disk is sda through libata).
    {
        # An NVMe system disk as a desktop system installs it (GPT).
        'key': 'nvme', 'node': 'nvme0n1', 'kind': 'nvme', 'size_mib': 64, 'chs': None, 'ata': False,
        'removable': False, 'table': 'gpt',
        'parts': [
            ('gpt', ESP, 'fat16', 16, 'EFI', 'EFI system partition'),
            ('gpt', MSR, None, 4, None, 'Microsoft reserved partition'),
            ('gpt', BASIC_DATA, 'ntfs', 24, 'NVME WINDOWS', 'Basic data partition'),
        ],
    },
    {
        'key': 'vblk', 'node': 'vda', 'kind': 'virtio', 'size_mib': 32, 'chs': None, 'ata': False,
        'removable': False,
        'parts': [
            ('data', 0x0C, 'fat32', 24, 'VIRTIO BLK', ''),
        ],
    },
    {
        # qemu's SD card needs a size that is a power of 2.
        'key': 'sdcard', 'node': 'mmcblk0', 'kind': 'mmc', 'size_mib': 64, 'chs': None, 'ata': False,
        'removable': True,
        'parts': [
            ('data', 0x06, 'fat16', 32, 'SD CARD', ''),
            ('data', 0x07, 'ntfs', 16, 'SD NTFS', ''),
        ],
    },
    {
        'key': 'ide', 'node': 'sda', 'size_mib': 64, 'chs': None, 'ata': True,
        'vendor': 'ATA', 'product': 'TEST-IDE-DISK', 'removable': False,
        'parts': [
            ('data', 0x06, 'fat16', 24, 'IDE FAT16', 'boot'),
            ('ext', [
                ('data', 0x07, 'ntfs', 16, 'IDE NTFS LOGICAL', ''),
                ('data', 0x01, 'fat12', 4, 'IDELOG12', ''),
            ]),
        ],
    },
    {
        'key': 'sata', 'node': 'sdb', 'size_mib': 128, 'chs': (128, 16), 'ata': True,
        'vendor': 'ATA', 'product': 'TEST-SATA-DISK', 'removable': False,
        'parts': [
            ('data', 0x07, 'ntfs', 20, 'SATA NTFS', 'cluster=512'),
            ('data', 0x0C, 'fat32', 40, 'SATA FAT32', ''),
            ('ext', [
                ('data', 0x0B, 'fat32', 40, None, ''),
                ('data', 0x06, 'fat16', 16, 'SATA LOG16', ''),
            ]),
        ],
    },
    {
        'key': 'vscsi', 'node': 'sdc', 'size_mib': 64, 'chs': (32, 32), 'ata': False,
        'vendor': 'TESTVEND', 'product': 'VSCSI-DISK', 'removable': False,
        'parts': [
            ('data', 0x01, 'fat12', 8, 'VS FAT12', ''),
            ('ext', [
                ('data', 0x83, 'fat16', 24, 'VS FAT16 83', ''),
                ('data', 0x07, 'ntfs', 16, 'VS NTFS', 'cluster=1024'),
            ]),
        ],
    },
    {
        'key': 'usb', 'node': 'sdd', 'size_mib': 1248, 'chs': None, 'ata': False,
        'vendor': 'QEMU', 'product': 'QEMU HARDDISK', 'removable': True,
        'parts': [
            ('data', 0x83, None, 16, None, ''),
            ('data', 0x0C, 'fat32', 1200, 'USB STICK', ''),
        ],
    },
]

FS_NUMBER = {None: 0, 'fat12': 1, 'fat16': 2, 'fat32': 3, 'ntfs': 4}
FS_NAME = {1: 'FAT12', 2: 'FAT16', 3: 'FAT32', 4: 'NTFS'}


def run(cmd, **kw):
    res = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **kw)
    if res.returncode != 0:
        raise SystemExit('command failed (%d): %s\n%s' % (res.returncode, ' '.join(cmd), res.stdout))
    return res.stdout


def sfdisk_script(disk):
    if disk.get('table') == 'gpt':
        lines = ['label: gpt', 'unit: sectors']
        for (_, ptype, _fs, size, _label, name) in disk['parts']:
            lines.append('size=%dMiB, type=%s, name="%s"' % (size, ptype, name))
        return '\n'.join(lines) + '\n'
    lines = ['label: dos', 'unit: sectors']
    for entry in disk['parts']:
        if entry[0] == 'ext':
            lines.append('type=5')
            for (_, ptype, _fs, size, _label, _opts) in entry[1]:
                lines.append('size=%dMiB, type=%x' % (size, ptype))
        else:
            _, ptype, _fs, size, _label, opts = entry
            lines.append('size=%dMiB, type=%x%s' % (size, ptype, ', bootable' if 'boot' in opts else ''))
    return '\n'.join(lines) + '\n'


def chs_bytes(lba, heads, sectors):
    cyl = lba // (heads * sectors)
    head = (lba // sectors) % heads
    sec = lba % sectors + 1
    if cyl > 1023:
        cyl, head, sec = 1023, heads - 1, sectors
    return bytes([head, (sec & 63) | ((cyl >> 2) & 0xC0), cyl & 0xFF])


def write_table_geometry(path, heads, sectors):
    """Rewrites the start and end CHS fields of the used MBR entries."""
    with open(path, 'r+b') as f:
        mbr = bytearray(f.read(SECTOR))
        for i in range(4):
            off = 446 + 16 * i
            if mbr[off + 4] == 0:
                continue
            start, count = struct.unpack_from('<II', mbr, off + 8)
            mbr[off + 1:off + 4] = chs_bytes(start, heads, sectors)
            mbr[off + 5:off + 8] = chs_bytes(start + count - 1, heads, sectors)
        f.seek(0)
        f.write(mbr)


def copy_sparse(src, dst, offset):
    """Copies file src into dst at byte offset, leaving zero blocks as holes."""
    with open(src, 'rb') as fi, open(dst, 'r+b') as fo:
        pos = 0
        while True:
            block = fi.read(64 * 1024)
            if not block:
                break
            if block.count(0) != len(block):
                fo.seek(offset + pos)
                fo.write(block)
            pos += len(block)


def read_sector(path, lba):
    with open(path, 'rb') as f:
        f.seek(lba * SECTOR)
        return f.read(SECTOR)


def table_records(path):
    """The partition records of an image: (number, table start, size, volume start).

    Primary entries give their own start; a logical partition's table start is
    the sector of the extended boot record that describes it, and its volume
    starts at that sector plus the record's relative start. The chain is
    followed the standard way (links relative to the extended partition)."""
    mbr = read_sector(path, 0)
    records = []
    logical = 5
    for i in range(4):
        off = 446 + 16 * i
        ptype = mbr[off + 4]
        if ptype == 0:
            continue
        start, count = struct.unpack_from('<II', mbr, off + 8)
        if ptype in (0x05, 0x0F):
            ext = start
            link = 0
            while True:
                ebr_lba = ext + link
                ebr = read_sector(path, ebr_lba)
                assert ebr[510:512] == b'\x55\xaa', 'unsigned extended boot record at %d' % ebr_lba
                rel, size = struct.unpack_from('<II', ebr, 446 + 8)
                records.append((logical, ebr_lba, size, ebr_lba + rel))
                logical += 1
                link = struct.unpack_from('<I', ebr, 446 + 16 + 8)[0]
                if link == 0:
                    break
        else:
            records.append((i + 1, start, count, start))
    return records


def table_geometry(path):
    """Heads and sectors per track from the end values of the MBR entries:
    slot 0 sets them, every other used slot must agree; None otherwise."""
    mbr = read_sector(path, 0)
    heads = sectors = None
    for i in range(4):
        off = 446 + 16 * i
        boot = mbr[off] - 256 if mbr[off] > 127 else mbr[off]
        if boot > 0 or mbr[off + 4] == 0:
            continue
        end_head, end_sector = mbr[off + 5], mbr[off + 6] & 63
        if i == 0:
            heads, sectors = end_head, end_sector
        elif (end_head, end_sector) != (heads, sectors):
            return None
    if not heads or not sectors:
        return None
    return heads + 1, sectors


def make_fs(img, work, fs, label, opts, vol_start, sectors):
    if fs is None:
        return
    if fs.startswith('fat'):
        cmd = ['mkfs.fat', '-F', fs[3:], '-g', '255/63', '-h', str(vol_start),
               '--offset', str(vol_start)]
        if fs == 'fat32' and sectors * SECTOR < 256 * MIB:
            cmd += ['-s', '1']
        if label:
            cmd += ['-n', label]
        run(cmd + [img, str(sectors * SECTOR // 1024)])
    else:
        part = os.path.join(work, 'ntfs-part.img')
        with open(part, 'wb') as f:
            f.truncate(sectors * SECTOR)
        cmd = ['mkntfs', '-F', '-Q', '-q', '-s', '512', '-p', str(vol_start), '-H', '255', '-S', '63']
        for o in opts.split(','):
            if o.startswith('cluster='):
                cmd += ['-c', o[len('cluster='):]]
        if label:
            cmd += ['-L', label]
        run(cmd + [part])
        copy_sparse(part, img, vol_start * SECTOR)
        os.unlink(part)


def make(work):
    expected = {'disks': []}
    discovery_letter = ord('C')
    for disk in DISKS:
        img = os.path.join(work, disk['key'] + '.img')
        with open(img, 'wb') as f:
            f.truncate(disk['size_mib'] * MIB)
        run(['sfdisk', '-q', '--no-reread', '--no-tell-kernel', img], input=sfdisk_script(disk))
        dump = json.loads(run(['sfdisk', '--json', img]))['partitiontable']['partitions']
        if disk['chs']:
            write_table_geometry(img, *disk['chs'])

        data_entries = []
        for entry in disk['parts']:
            data_entries += entry[1] if entry[0] == 'ext' else [entry]
        gpt = disk.get('table') == 'gpt'
        if gpt:
            # GPT partitions are numbered by their entry, as sfdisk lists them.
            records = [(int(re.search(r'(\d+)$', p['node']).group(1)), p['start'], p['size'], p['start'])
                       for p in dump]
        else:
            records = table_records(img)
        if len(records) != len(data_entries):
            raise SystemExit('%s: %d records in the table, %d planned' % (img, len(records), len(data_entries)))
        by_number = {int(re.search(r'(\d+)$', p['node']).group(1)): p for p in dump}
        parts = []
        for (number, table_start, size, vol_start), entry in zip(records, data_entries):
            _, ptype, fs, size_mib, label, opts = entry
            # The table walk above must agree with sfdisk's own view.
            p = by_number.get(number)
            same_type = (p['type'] == ptype) if gpt else (int(p['type'], 16) == ptype) if p else False
            if p is None or p['start'] != vol_start or p['size'] != size or not same_type:
                raise SystemExit('%s: partition %d: table walk disagrees with sfdisk: %r' % (img, number, p))
            make_fs(img, work, fs, label, '' if gpt else opts, vol_start, size)
            # Of a GPT only basic-data partitions get letters.
            lettered = not gpt or ptype == BASIC_DATA
            if lettered:
                letter = chr(discovery_letter) if discovery_letter < ord('Z') else '-'
                discovery_letter += 1
            else:
                letter = '-'
            if fs is None:
                shown_label = ''
            elif fs == 'ntfs':
                shown_label = label or ''
            else:
                shown_label = (label or '').ljust(11) if label else ''
            parts.append({'number': number, 'start': table_start, 'size': size, 'volume_start': vol_start,
                          'fs': FS_NUMBER[fs], 'label': shown_label, 'letter': letter,
                          'lettered': lettered, 'gpt': [ptype, opts] if gpt else None})
        geometry = table_geometry(img)
        if disk['chs'] and geometry != tuple(disk['chs']):
            raise SystemExit('%s: table geometry %r, planned %r' % (img, geometry, disk['chs']))
        expected['disks'].append({
            'key': disk['key'], 'node': disk['node'], 'image': img, 'kind': disk.get('kind', 'scsi'),
            'table': 'gpt' if gpt else 'mbr',
            'total': disk['size_mib'] * MIB // SECTOR,
            'vendor': disk.get('vendor'), 'product': disk.get('product'), 'removable': disk['removable'],
            'ata': disk['ata'], 'table_geometry': geometry, 'partitions': parts})
    with open(os.path.join(work, 'expected.json'), 'w') as f:
        json.dump(expected, f, indent=1)


# ------------------------------------------------------------------ checking

class Checker:
    def __init__(self):
        self.passed = 0
        self.failed = []

    def eq(self, what, got, want):
        if got == want:
            self.passed += 1
        else:
            self.failed.append('%s: got %r, expected %r' % (what, got, want))
        return got == want

    def true(self, what, cond, detail=''):
        if cond:
            self.passed += 1
        else:
            self.failed.append('%s%s' % (what, (': ' + detail) if detail else ''))
        return cond


def sections(log):
    """Splits the serial log into the marked sections."""
    out, current, status = {}, None, {}
    for raw in log.splitlines():
        line = raw.rstrip('\r')
        m = re.match(r'^@@VT (BEGIN|END) (\S+)(?: (.*))?$', line)
        if m:
            if m.group(1) == 'BEGIN':
                current = m.group(2)
                out[current] = []
            else:
                status[m.group(2)] = m.group(3) or ''
                current = None
            continue
        if current is not None:
            out[current].append(line)
    return out, status


def size_text(n):
    g = n / 1024 / 1024 / 1024
    if g > 1024.0:
        return '%.1f TB' % (g / 1024)
    return '%.1f GB' % g if g > 1.0 else '%d MB' % (n >> 20)


def unescape_model(text):
    return re.sub(r'\\x([0-9a-fA-F]{2})', lambda m: chr(int(m.group(1), 16)), text)


def records(lines, kind):
    return [l.split('\t')[1:] for l in lines if l.split('\t')[0] == kind]


def part_node(node, number):
    """A partition's node as the kernel names it: a "p" after a disk name
    that ends in a digit (nvme0n1p3, mmcblk0p1)."""
    return '/dev/%s%s%d' % (node, 'p' if node[-1].isdigit() else '', number)


def expected_model(want, sysfs):
    """The model field the probe prints for a disk (40 characters, padded)."""
    info = sysfs[want['node']]
    if want['kind'] == 'scsi':
        return info[0].ljust(8)[:8] + info[1].ljust(16)[:16]
    if want['kind'] == 'nvme':
        return info[1].ljust(40)[:40]  # the identify data's model number
    if want['kind'] == 'mmc':
        return info[1][:40]            # the card's name
    return 'Virtio disk'


def check_probe_records(c, run, lines, expected, sysfs):
    disks = records(lines, 'disk')
    parts = records(lines, 'partition')
    tables = records(lines, 'table')
    c.eq('%s: table lines' % run, tables,
         [['/dev/' + d['node'], d['table']] for d in expected['disks']])
    c.eq('%s: disk paths in order' % run, [d[0] for d in disks],
         ['/dev/' + d['node'] for d in expected['disks']])
    for d in disks:
        c.eq('%s: disk line field count' % run, len(d), 9)
    for want, got in zip(expected['disks'], disks):
        if len(got) != 9:
            continue
        path, model, flags, bps, heads, spt, cyl, total, count = got
        name = '%s %s' % (run, path)
        c.eq('%s: model' % name, unescape_model(model), expected_model(want, sysfs))
        if want['kind'] == 'scsi':
            c.true('%s: model names the configured device' % name,
                   unescape_model(model).startswith(want['vendor'].ljust(8)) and want['product'] in model, model)
        c.eq('%s: flags' % name, flags, '7' if want['removable'] else '6')
        c.eq('%s: bytes per sector' % name, bps, '512')
        c.eq('%s: total sectors' % name, total, str(want['total']))
        c.eq('%s: partition count' % name, count, str(len(want['partitions'])))
        if want['table_geometry']:
            c.eq('%s: geometry from the partition table' % name, (heads, spt),
                 tuple(str(v) for v in want['table_geometry']))
        elif want['ata']:
            c.eq('%s: geometry from the ATA driver' % name, (heads, spt), ('255', '63'))
        h, s = int(heads), int(spt)
        c.true('%s: heads and sectors per track usable' % name, h > 0 and 1 <= s <= 63, '%d/%d' % (h, s))
        if h and s:
            c.eq('%s: cylinders' % name, cyl, str(want['total'] // (h * s)))

    want_parts = [(('/dev/' + d['node']), p) for d in expected['disks'] for p in d['partitions']]
    c.eq('%s: number of partition lines' % run, len(parts), len(want_parts))
    for (path, p), got in zip(want_parts, parts):
        name = '%s %s%d' % (run, path, p['number'])
        if not c.eq('%s: partition line field count' % name, len(got), 9 if p['gpt'] else 7):
            continue
        if p['gpt']:
            c.eq('%s: GPT type and name' % name, got[7:9], p['gpt'])
        c.eq('%s: disk and number' % name, (got[0], got[1]), (path, str(p['number'])))
        c.eq('%s: discovery letter' % name, got[2], p['letter'])
        c.eq('%s: start sector' % name, got[3], str(p['start']))
        c.eq('%s: sector count' % name, got[4], str(p['size']))
        c.eq('%s: file system' % name, got[5], str(p['fs']))
        c.eq('%s: label' % name, got[6], p['label'])


def mounted_volumes(expected):
    out = []
    letter = ord('C')
    for d in expected['disks']:
        for p in d['partitions']:
            if p['fs'] == 0 or not p['lettered']:
                continue
            out.append((chr(letter), d, p))
            letter += 1
    return out


def check_volumes(c, run, lines, expected, statfs):
    vols = records(lines, 'volume')
    want = mounted_volumes(expected)
    c.eq('%s: number of volume lines' % run, len(vols), len(want))
    for (letter, d, p), got in zip(want, vols):
        name = '%s volume %s' % (run, letter)
        if not c.eq('%s: field count' % name, len(got), 7):
            continue
        mp = '/mnt/' + letter
        c.eq('%s: letter, mount point' % name, (got[0], got[1]), (letter, mp))
        c.eq('%s: removable' % name, got[2], '1' if d['removable'] else '0')
        c.eq('%s: file-system name' % name, got[3], FS_NAME[p['fs']])
        c.eq('%s: label' % name, got[4], p['label'])
        if statfs is not None:
            st = statfs.get(mp)
            if c.true('%s: statfs of %s printed by the guest' % (name, mp), st is not None):
                bsize, frsize, blocks, bfree = st
                c.eq('%s: free text (f_bsize %d x f_bfree %d)' % (name, bsize, bfree), got[5], size_text(bsize * bfree))
                c.eq('%s: size text (f_bsize %d x f_blocks %d)' % (name, bsize, blocks), got[6], size_text(bsize * blocks))


def check(work, logfile):
    with open(os.path.join(work, 'expected.json')) as f:
        expected = json.load(f)
    with open(logfile, errors='replace') as f:
        log = f.read()
    secs, status = sections(log)
    c = Checker()
    c.true('guest booted', '@@VT BOOTED' in log)
    errors = [l for l in log.splitlines() if l.startswith('@@VT GUEST-ERROR')]
    c.true('guest set up its devices', not errors, '; '.join(errors))
    c.true('guest finished', '@@VT END-OF-RUN' in log)
    if errors or 'sysfs' not in secs:
        return c

    sysfs = {}
    for line in secs['sysfs'] + secs.get('sysfs-other', []):
        f = line.split('\t')
        if len(f) >= 6:
            sysfs[f[0]] = (f[1].rstrip(), f[2].rstrip(), f[3], int(f[4]), f[5])
    for d in expected['disks']:
        s = sysfs.get(d['node'])
        if not c.true('guest has /dev/%s' % d['node'], s is not None):
            return c
        c.eq('/dev/%s size' % d['node'], s[3], d['total'])
        if d['kind'] == 'scsi':
            c.eq('/dev/%s is the %s disk' % (d['node'], d['key']), (s[0], s[1]), (d['vendor'], d['product']))
            c.eq('/dev/%s removable attribute' % d['node'], s[2], '1' if d['removable'] else '0')
        if d['kind'] == 'mmc':
            c.eq('/dev/%s is an SD card' % d['node'], s[0], 'SD')

    for run in ('default', 'nomount', 'kept'):
        key = 'probe-' + run
        if not c.true('probe run %s printed its output' % run, key in secs and key in status):
            continue
        c.eq('probe run %s exit status' % run, status[key], 'rc=0')
        check_probe_records(c, run, secs[key], expected, sysfs)

    # Mounting: vfat for FAT, ntfs-3g (fuseblk) for NTFS, each under its letter.
    c.eq('nothing left mounted under /mnt after the default run', secs.get('mounts-after-default'), [])
    c.eq('--no-mount mounted nothing', secs.get('mounts-after-nomount'), [])
    c.eq('--no-mount printed no volume lines', records(secs.get('probe-nomount', []), 'volume'), [])
    mounts = {}
    for line in secs.get('mounts-kept', []):
        f = line.split()
        if len(f) >= 3:
            mounts[f[1]] = (f[0], f[2])
    want = mounted_volumes(expected)
    c.eq('mount points in use after --keep-mounted', sorted(mounts), sorted('/mnt/' + l for l, _, _ in want))
    for letter, d, p in want:
        c.eq('/mnt/%s mounted from' % letter, mounts.get('/mnt/' + letter),
             (part_node(d['node'], p['number']), 'fuseblk' if p['fs'] == 4 else 'vfat'))

    statfs = {}
    for line in secs.get('statfs-kept', []):
        f = line.split()
        if len(f) >= 5:
            statfs[f[0]] = tuple(int(v) for v in f[1:5])
    check_volumes(c, 'default', secs.get('probe-default', []), expected, statfs)
    check_volumes(c, 'kept', secs.get('probe-kept', []), expected, statfs)
    return c


def main():
    if len(sys.argv) == 3 and sys.argv[1] == 'make':
        make(sys.argv[2])
        return 0
    if len(sys.argv) == 4 and sys.argv[1] == 'check':
        c = check(sys.argv[2], sys.argv[3])
        with open(sys.argv[3], errors='replace') as f:
            secs, _ = sections(f.read())
        print('records of the --keep-mounted run:')
        for line in secs.get('probe-kept', []):
            if line.split('\t')[0] in ('disk', 'table', 'partition', 'volume'):
                print('  ' + line.replace('\t', ' | '))
        for f in c.failed:
            print('FAIL: ' + f)
        print('vm checks passed: %d, failed: %d' % (c.passed, len(c.failed)))
        return 1 if c.failed else 0
    print(__doc__)
    return 2


if __name__ == '__main__':
    sys.exit(main())
