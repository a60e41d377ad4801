#!/bin/bash
# The disk layer against real kernel drivers: boots Debian's kernel in qemu
# (software emulation) with an IDE disk, a SATA (AHCI) disk, a virtio-scsi
# disk and a removable USB stick whose images hold FAT12, FAT16, FAT32 and
# NTFS volumes in primary and logical partitions, runs vantori-probe inside
# and checks what it printed against what was put into the images.
#
#   tests/vm/run-vm-test.sh PATH/TO/vantori-probe
#
# Environment: VT_VM_KEEP=1 keeps the work directory (images, initramfs,
# serial log) and prints its path; VT_VM_TIMEOUT sets qemu's time limit in
# seconds (default 300).
# A test that cannot run fails and says why; it is never skipped.
set -uo pipefail

here=$(cd "$(dirname "$0")" && pwd)
t0=$SECONDS

fail() {
  echo "VM TEST FAILED: $*" >&2
  exit 1
}

[ $# -eq 1 ] || fail "usage: $0 PATH/TO/vantori-probe"
probe=$1
[ -x "$probe" ] || fail "vantori-probe not found or not executable: $probe"

missing=()
for tool in qemu-system-x86_64 busybox sfdisk mkfs.fat mkntfs ntfs-3g ntfsfix cpio gzip depmod modprobe \
  ldd timeout /usr/bin/python3; do
  command -v "$tool" >/dev/null 2>&1 || missing+=("$tool")
done
[ ${#missing[@]} -eq 0 ] || fail "missing programs: ${missing[*]} (packages qemu-system-x86 busybox-static fdisk dosfstools ntfs-3g cpio kmod python3)"

kernel=$(ls /boot/vmlinuz-*-amd64 2>/dev/null | sort -V | tail -n 1)
[ -n "$kernel" ] || fail "no /boot/vmlinuz-*-amd64 (package linux-image-amd64)"
[ -r "$kernel" ] || fail "$kernel is not readable"
kver=${kernel#/boot/vmlinuz-}
[ -d "/lib/modules/$kver" ] || fail "kernel modules for $kver missing in /lib/modules"

work=$(mktemp -d /tmp/vantori-vm.XXXXXX) || fail "cannot make a work directory"
if [ "${VT_VM_KEEP:-0}" = 1 ]; then
  echo "work directory kept: $work"
else
  trap 'rm -rf "$work"' EXIT
fi

echo "== making disk images"
/usr/bin/python3 "$here/vmdisks.py" make "$work" || fail "could not make the disk images"
echo "== building the initramfs (kernel $kver)"
"$here/make-initramfs.sh" "$work/initramfs.cpio.gz" "$kver" "$probe" "$work" ||
  fail "could not build the initramfs"
t1=$SECONDS

echo "== booting the guest"
log=$work/serial.log
timeout "${VT_VM_TIMEOUT:-300}" qemu-system-x86_64 \
  -machine pc -accel tcg,thread=multi -cpu max -m 512 -smp 2 \
  -nodefaults -nographic -serial stdio -no-reboot \
  -kernel "$kernel" -initrd "$work/initramfs.cpio.gz" \
  -append "console=ttyS0 panic=-1 quiet loglevel=1" \
  -drive if=none,id=ide0,file="$work/ide.img",format=raw \
  -device ide-hd,bus=ide.0,unit=0,drive=ide0,model=TEST-IDE-DISK,serial=IDE0001 \
  -drive if=none,id=cd0,media=cdrom -device ide-cd,bus=ide.1,unit=0,drive=cd0 \
  -device ahci,id=ahci0 -drive if=none,id=sata0,file="$work/sata.img",format=raw \
  -device ide-hd,bus=ahci0.0,drive=sata0,model=TEST-SATA-DISK,serial=SATA0001 \
  -device virtio-scsi-pci,id=vscsi0 -drive if=none,id=vs0,file="$work/vscsi.img",format=raw \
  -device scsi-hd,bus=vscsi0.0,drive=vs0,vendor=TESTVEND,product=VSCSI-DISK \
  -device qemu-xhci,id=usbhc -drive if=none,id=usb0,file="$work/usb.img",format=raw \
  -device usb-storage,bus=usbhc.0,drive=usb0,removable=on \
  -drive if=none,id=nvm0,file="$work/nvme.img",format=raw \
  -device nvme,serial=NVME0001,drive=nvm0 \
  -drive if=none,id=vb0,file="$work/vblk.img",format=raw -device virtio-blk-pci,drive=vb0 \
  -device sdhci-pci -drive if=none,id=sd0,file="$work/sdcard.img",format=raw \
  -device sd-card,drive=sd0 \
  </dev/null >"$log" 2>"$work/qemu.stderr"
qrc=$?
t2=$SECONDS

show_log() {
  echo "---- serial console ----"
  tr -d '\r' <"$log"
  echo "---- qemu stderr ----"
  cat "$work/qemu.stderr"
  echo "------------------------"
}
if [ $qrc -eq 124 ]; then
  show_log
  fail "qemu did not finish within ${VT_VM_TIMEOUT:-300} s"
fi
if ! grep -q '@@VT BOOTED' "$log"; then
  show_log
  fail "the guest did not boot (qemu exit status $qrc)"
fi

echo "== checking what vantori-probe printed"
/usr/bin/python3 "$here/vmdisks.py" check "$work" "$log"
crc=$?
if [ $crc -ne 0 ]; then
  show_log
fi
echo "== times: images and initramfs $((t1 - t0)) s, guest $((t2 - t1)) s, total $((SECONDS - t0)) s"
if [ $crc -eq 0 ]; then
  echo "VM TEST PASSED"
  exit 0
fi
fail "vantori-probe's records differ from the disk images (see above)"
