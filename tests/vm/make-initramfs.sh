#!/bin/bash
# Builds the guest's initramfs for the VM test:
#   make-initramfs.sh OUT.cpio.gz KERNEL_VERSION PROBE WORKDIR
# busybox-static with its applet links, tests/vm/guest-init.sh as /init, the
# kernel modules the guest loads (with their dependencies and a modules.dep
# made by depmod), the probe program, ntfs-3g and ntfsfix, each program with
# the shared libraries it links (its ldd closure).
set -euo pipefail

out=$1 kver=$2 probe=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)
root=$work/initramfs-root
rm -rf "$root"
mkdir -p "$root"/{bin,sbin,usr/bin,usr/sbin,lib,lib64,proc,sys,dev,mnt,tmp,etc,run,root}

die() { echo "make-initramfs: $*" >&2; exit 1; }

# busybox and its applets
bb=$(command -v busybox) || die "busybox not found (package busybox-static)"
ldd "$bb" >/dev/null 2>&1 && die "$bb is linked dynamically; the guest needs busybox-static"
cp "$bb" "$root/bin/busybox"
"$root/bin/busybox" --list-full | while read -r applet; do
  [ -e "$root/$applet" ] || [ -L "$root/$applet" ] || ln -s /bin/busybox "$root/$applet"
done

# copy_with_libs FILE DEST: FILE to DEST inside the root, and every shared
# library ldd names for it at the same path as on this host.
copy_file() {  # host-path root-relative-path
  mkdir -p "$root/$(dirname "$2")"
  cp -L "$1" "$root/$2"
}
copy_with_libs() {
  local file=$1 dest=$2 lib
  copy_file "$file" "$dest"
  ldd "$file" 2>/dev/null | while read -r line; do
    case $line in
      *"=> /"*) lib=${line#*=> }; lib=${lib%% (*} ;;
      /*) lib=${line%% (*} ;;
      *) continue ;;
    esac
    [ -e "$root/$lib" ] || copy_file "$lib" "$lib"
  done || true
}

copy_with_libs "$probe" /usr/bin/vantori-probe
for tool in ntfs-3g ntfsfix; do
  path=$(command -v "$tool") || die "$tool not found (package ntfs-3g)"
  copy_with_libs "$path" "/usr/bin/$tool"
done

# kernel modules with their dependencies (soft dependencies included)
modules="crc64_rocksoft_generic crct10dif_generic sd_mod sg sr_mod ata_piix ahci
  virtio_pci virtio_scsi xhci_pci ehci_pci uhci_hcd usb_storage uas
  nvme virtio_blk sdhci_pci mmc_block
  fat vfat nls_cp437 nls_ascii nls_iso8859_1 nls_utf8 fuse"
[ -d "/lib/modules/$kver" ] || die "/lib/modules/$kver missing (package linux-image-amd64)"
for m in $modules; do
  modprobe -S "$kver" --show-depends "$m" || die "module $m not found for kernel $kver"
done | awk '$1 == "insmod" { print $2 }' | sort -u | while read -r ko; do
  copy_file "$ko" "$ko"
done
for f in modules.order modules.builtin modules.builtin.modinfo; do
  [ -e "/lib/modules/$kver/$f" ] && copy_file "/lib/modules/$kver/$f" "/lib/modules/$kver/$f"
done
depmod -b "$root" "$kver" || die "depmod failed"

install -m 0755 "$here/guest-init.sh" "$root/init"
ln -sf /proc/mounts "$root/etc/mtab"
echo "root:x:0:0:root:/root:/bin/sh" >"$root/etc/passwd"
printf 'root:x:0:\ndisk:x:6:\nplugdev:x:46:\n' >"$root/etc/group"

(cd "$root" && find . -print0 | cpio --null -o -H newc --quiet) | gzip -1 >"$out"
