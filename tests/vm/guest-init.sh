#!/bin/sh
# /init of the VM test's guest. Loads the disk drivers one controller at a
# time so the disks get fixed names (IDE sda, SATA sdb, virtio-scsi sdc, USB
# sdd, then NVMe nvme0n1, virtio-blk vda, SD card mmcblk0), runs vantori-probe three times (default, --no-mount, --keep-mounted)
# and prints what the host side checks between "@@VT" markers on the serial
# console, then powers off.
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
mount -t tmpfs tmpfs /tmp
echo 1 >/proc/sys/kernel/printk

say() { echo "@@VT $*"; }
finish() { say END-OF-RUN; sync; poweroff -f; sleep 5; }
fail() { say "GUEST-ERROR $*"; finish; }

say BOOTED "$(uname -r)"

# wait_node NAME: waits up to 20 s for /dev/NAME.
wait_node() {
  i=0
  while [ ! -e "/dev/$1" ]; do
    i=$((i + 1))
    [ $i -gt 200 ] && return 1
    sleep 0.1
  done
}
load() { modprobe "$@" || fail "modprobe $* failed"; }

load crc64_rocksoft_generic
load crct10dif_generic
load sd_mod
load sg
load sr_mod
load ata_piix
wait_node sda1 || fail "the IDE disk did not appear as /dev/sda"
wait_node sr0 || fail "the IDE CD-ROM did not appear as /dev/sr0"
load ahci
wait_node sdb1 || fail "the SATA disk did not appear as /dev/sdb"
load virtio_pci
load virtio_scsi
wait_node sdc1 || fail "the virtio-scsi disk did not appear as /dev/sdc"
load xhci_pci
load usb_storage delay_use=0
wait_node sdd1 || fail "the USB stick did not appear as /dev/sdd"
load nvme
wait_node nvme0n1p3 || fail "the NVMe disk did not appear as /dev/nvme0n1"
load virtio_blk
wait_node vda1 || fail "the virtio-blk disk did not appear as /dev/vda"
load sdhci_pci
load mmc_block
wait_node mmcblk0p2 || fail "the SD card did not appear as /dev/mmcblk0"
for m in nls_cp437 nls_ascii nls_iso8859_1 nls_utf8 fat vfat fuse; do load $m; done
wait_node fuse || fail "/dev/fuse did not appear"
i=0
while [ "$(ls /sys/class/scsi_generic | wc -l)" -lt 5 ]; do
  i=$((i + 1)); [ $i -gt 100 ] && fail "fewer than 5 SCSI generic nodes"; sleep 0.1
done
sleep 0.5

say BEGIN sysfs
for d in /sys/block/sd*; do
  n=${d##*/}
  printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$n" "$(cat $d/device/vendor)" "$(cat $d/device/model)" \
    "$(cat $d/removable)" "$(cat $d/size)" "$(readlink -f $d/device)"
done
say END sysfs
# NVMe, virtio and SD/eMMC disks: name, card type, model or card name,
# removable, size, device.
say BEGIN sysfs-other
for d in /sys/block/nvme* /sys/block/vd* /sys/block/mmcblk*; do
  [ -e "$d" ] || continue
  n=${d##*/}
  case $n in mmcblk*boot*|mmcblk*rpmb) continue ;; esac
  type=$(cat $d/device/type 2>/dev/null || echo -)
  model=$(cat $d/device/model 2>/dev/null || cat $d/device/name 2>/dev/null || echo -)
  printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$n" "$type" "$model" "$(cat $d/removable)" "$(cat $d/size)" \
    "$(readlink -f $d/device)"
done
say END sysfs-other
say BEGIN partitions
cat /proc/partitions
say END partitions

run_probe() {
  name=$1; shift
  say BEGIN "probe-$name"
  /usr/bin/vantori-probe "$@" </dev/null
  rc=$?
  say END "probe-$name" "rc=$rc"
}
mounts() {
  say BEGIN "mounts-$1"
  grep ' /mnt/' /proc/mounts
  say END "mounts-$1"
}

run_probe default
mounts after-default
run_probe nomount --no-mount
mounts after-nomount
run_probe kept --keep-mounted
mounts kept
say BEGIN statfs-kept
for m in /mnt/*; do
  grep -q " $m " /proc/mounts && stat -f -c '%n %s %S %b %f %a' "$m"
done
say END statfs-kept
finish
