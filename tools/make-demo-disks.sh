#!/bin/sh
# Builds Vantori's demo disks in DIR, for trying it on a machine whose own
# disks it does not see (a virtual machine, a developer's laptop):
#   DIR/demo-fixed.img  a "fixed disk": an NTFS volume "Windows" holding a
#                       sample tree (documents, photos, a folder with a few
#                       hundred files, names with letters beyond ASCII), a FAT
#                       primary volume "DATA" and a FAT logical volume
#                       "PHOTOS" in an extended partition, both with files
#   DIR/demo-usb.img    a "USB stick" with one empty volume "USB STICK"
# Start Vantori with them:
#   vantori --image DIR/demo-fixed.img --image DIR/demo-usb.img,usb,rw
# The stick is FAT when the running kernel has the vfat file system, else
# NTFS, so that a copy onto it works either way (FAT volumes cannot be
# mounted without vfat; Vantori then leaves them out and says why).
# Needs root (ntfs-3g mounts the NTFS volumes to fill them) and the Debian
# packages fdisk, dosfstools, ntfs-3g and mtools. Writes only into DIR.
set -eu
dir=${1:?usage: make-demo-disks.sh DIR}
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
work=$(mktemp -d "$dir/.work.XXXXXX")
cleanup() {
  for m in "$work"/mnt-*; do
    [ -d "$m" ] && mountpoint -q "$m" && umount "$m" 2>/dev/null
  done
  rm -rf "$work"
}
trap cleanup EXIT

for tool in sfdisk mkfs.fat mkntfs ntfs-3g mcopy mmd; do
  command -v "$tool" >/dev/null 2>&1 || {
    echo "make-demo-disks: $tool is missing (Debian packages fdisk, dosfstools, ntfs-3g, mtools)" >&2
    exit 1
  }
done

# Does this kernel mount FAT? (The file system may also come as a module.)
has_vfat() {
  grep -qw vfat /proc/filesystems 2>/dev/null && return 0
  modprobe vfat >/dev/null 2>&1 && grep -qw vfat /proc/filesystems 2>/dev/null
}
if has_vfat; then
  vfat=yes
  echo "make-demo-disks: this kernel has vfat: the USB stick gets a FAT volume"
else
  vfat=no
  echo "make-demo-disks: this kernel has no vfat file system: the USB stick gets an NTFS"
  echo "  volume; Vantori will leave out the fixed disk's FAT volumes and say why"
fi

# The sample tree.
tree=$work/tree
mkdir -p "$tree/Documents/Rechnungen" "$tree/Photos/Fotos 2024" "$tree/Many files" \
  "$tree/Musique et café"
printf 'Übersicht der Ablage\n\nRechnungen liegen unter Rechnungen/, Fotos unter Photos/.\n' \
  >"$tree/Documents/Übersicht.txt"
printf 'Dear customer,\n\nthank you for your letter.\n' >"$tree/Documents/Letter to the bank.txt"
printf 'Liste des courses : café, crème, pâtes\n' >"$tree/Musique et café/Liste à faire.txt"
n=1
while [ $n -le 12 ]; do
  printf 'Rechnung Nr. %04d\nBetrag: %d,00 EUR\n' $n $((n * 17)) \
    >"$tree/Documents/Rechnungen/Rechnung-$(printf %04d $n).txt"
  n=$((n + 1))
done
# Small pictures: a few kilobytes of PPM each.
n=1
while [ $n -le 8 ]; do
  {
    printf 'P6\n64 48\n255\n'
    head -c $((64 * 48 * 3)) /dev/urandom
  } >"$tree/Photos/Fotos 2024/Urlaub-$n.ppm"
  n=$((n + 1))
done
n=1
while [ $n -le 300 ]; do
  printf 'note %d\n' $n >"$tree/Many files/note-$(printf %03d $n).txt"
  n=$((n + 1))
done

# An NTFS volume of size MiB with label, filled with the files of src (if
# any), written into image at the sector given.
ntfs_volume() {  # image start_sector size_mib label [src]
  part=$work/ntfs-$2.img
  truncate -s "$3M" "$part"
  mkntfs -F -Q -p "$2" -H 255 -S 63 -L "$4" "$part" >/dev/null 2>&1
  if [ -n "${5:-}" ]; then
    mnt=$work/mnt-$2
    mkdir -p "$mnt"
    ntfs-3g "$part" "$mnt"
    cp -r "$5"/. "$mnt"/
    umount "$mnt"
    # ntfs-3g ends just after the unmount: wait until the file is let go.
    i=0
    while [ $i -lt 50 ] && fuser "$part" >/dev/null 2>&1; do sleep 0.1; i=$((i + 1)); done
  fi
  dd if="$part" of="$1" bs=512 seek="$2" conv=notrunc,sparse status=none
  rm -f "$part"
}

# A FAT16 volume at a sector of image, filled with src with mtools.
fat_volume() {  # image start_sector sectors label src
  mkfs.fat -F 16 -n "$4" --offset "$2" "$1" $(($3 / 2)) >/dev/null 2>&1
  if [ -n "${5:-}" ]; then
    MTOOLS_SKIP_CHECK=1 mcopy -s -i "$1@@$(($2 * 512))" "$5"/* ::/
  fi
}

# The fixed disk: NTFS C: with the sample tree, FAT DATA, FAT PHOTOS (logical).
fixed=$work/demo-fixed.img
truncate -s 80M "$fixed"
sfdisk -q "$fixed" >/dev/null <<'EOF'
label: dos
start=2048, size=65536, type=7
start=67584, size=32768, type=6
start=100352, type=f
start=102400, size=61440, type=6
EOF
ntfs_volume "$fixed" 2048 32 Windows "$tree"
mkdir -p "$work/data" "$work/photos"
cp -r "$tree/Documents" "$work/data/"
cp -r "$tree/Photos/Fotos 2024" "$work/photos/"
fat_volume "$fixed" 67584 32768 DATA "$work/data"
fat_volume "$fixed" 102400 61440 PHOTOS "$work/photos"

# The USB stick: one empty volume.
usb=$work/demo-usb.img
truncate -s 48M "$usb"
if [ $vfat = yes ]; then
  printf 'label: dos\nstart=2048, type=6\n' | sfdisk -q "$usb" >/dev/null
  fat_volume "$usb" 2048 96256 "USB STICK"
else
  printf 'label: dos\nstart=2048, type=7\n' | sfdisk -q "$usb" >/dev/null
  ntfs_volume "$usb" 2048 47 "USB STICK"
fi

mv -f "$fixed" "$dir/demo-fixed.img"
mv -f "$usb" "$dir/demo-usb.img"
echo "make-demo-disks: made $dir/demo-fixed.img and $dir/demo-usb.img"
echo "  start: vantori --image $dir/demo-fixed.img --image $dir/demo-usb.img,usb,rw"
