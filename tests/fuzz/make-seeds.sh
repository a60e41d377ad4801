#!/bin/bash
# Makes the seed inputs of one fuzz target from images that the usual tools
# write (sfdisk, mkfs.fat, mkntfs), converted by make_fuzz_seed:
#   make-seeds.sh partition_walk|gpt_walk|volume_detect|discovery MAKE_FUZZ_SEED OUTDIR
set -euo pipefail
kind=$1 tool=$2 out=$3
for t in sfdisk mkfs.fat mkntfs; do
  command -v $t >/dev/null || { echo "make-seeds: $t not found (packages fdisk, dosfstools, ntfs-3g)" >&2; exit 1; }
done
mkdir -p "$out"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
q() { "$@" >"$tmp/log" 2>&1 || { cat "$tmp/log" >&2; echo "make-seeds: failed: $*" >&2; exit 1; }; }

table() {  # name size-MiB sfdisk-script
  local img=$tmp/$1.img
  rm -f "$img"
  truncate -s "$2M" "$img"
  # "@" in the script stands for the image (partition names such as @5).
  printf '%b' "${3//@/$img}" | q sfdisk -q --no-reread --no-tell-kernel "$img"
  q "$tool" "$img" "$out/$1"
}

fat() {  # name size-MiB mkfs.fat options...
  local name=$1 size=$2 img=$tmp/$1.img
  shift 2
  rm -f "$img"
  truncate -s "${size}M" "$img"
  q mkfs.fat "$@" "$img"
  local ss=512
  for ((i = 1; i <= $#; i++)); do [ "${!i}" = -S ] && { j=$((i + 1)); ss=${!j}; }; done
  q "$tool" -S "$ss" "$img" "$out/$name"
}

ntfs() {  # name size-MiB sector-size mkntfs options...
  local name=$1 size=$2 ss=$3 img=$tmp/$1.img
  shift 3
  rm -f "$img"
  truncate -s "${size}M" "$img"
  q mkntfs -F -Q -q -s "$ss" -p 2048 -H 255 -S 63 "$@" "$img"
  q "$tool" -S "$ss" -m 65536 "$img" "$out/$name"
}

walk_seeds() {
  table primaries 64 'label: dos\nsize=8MiB,type=6,bootable\nsize=8MiB,type=7\nsize=8MiB,type=b\nsize=8MiB,type=c\n'
  table logical-chain 64 'label: dos\nsize=8MiB,type=6\ntype=5\nsize=4MiB,type=7\nsize=4MiB,type=b\nsize=4MiB,type=1\nsize=4MiB,type=e\n'
  table extended-first 64 'label: dos\n@1 : size=40MiB,type=f\n@2 : size=8MiB,type=c\n@3 : size=8MiB,type=7\n@5 : size=2MiB,type=6\n@6 : size=2MiB,type=6\n@7 : size=2MiB,type=6\n@8 : size=2MiB,type=6\n@9 : size=2MiB,type=6\n'
  table one-logical 16 'label: dos\ntype=5\nsize=4MiB,type=83\n'
  table empty 8 'label: dos\n'
  rm -f "$tmp/x.img"; truncate -s 64M "$tmp/x.img"
  printf 'label: dos\nsize=8MiB,type=6\ntype=5\nsize=4MiB,type=7\nsize=4MiB,type=b\n' |
    q sfdisk -q --no-reread --no-tell-kernel "$tmp/x.img"
  q "$tool" -S 4096 "$tmp/x.img" "$out/sector-4096"
}

case $kind in
  partition_walk)
    walk_seeds
    ;;
  gpt_walk)
    # GUID partition tables as sfdisk writes them (both headers), with the
    # types a Windows disk holds, a small entry array, a non-ASCII name, a
    # hidden partition, 4096-byte sectors, and one MBR table as the fallback.
    esp=C12A7328-F81F-11D2-BA4B-00A0C93EC93B msr=E3C9E316-0B5C-4DB8-817D-F92DF00215AE
    data=EBD0A0A2-B9E5-4433-87C0-68B6B72699C7 rec=DE94BBA4-06D1-4D40-A16A-BFD50179D6AC
    table gpt-windows 64 "label: gpt\nsize=8MiB,type=$esp,name=\"EFI system partition\"\nsize=4MiB,type=$msr\nsize=24MiB,type=$data,name=\"Basic data partition\"\nsize=8MiB,type=$rec,attrs=RequiredPartition\n"
    table gpt-4-entries 16 "label: gpt\ntable-length: 4\nsize=4MiB,type=$data,name=\"Donn\xc3\xa9es\"\nsize=4MiB,type=$data,attrs=\"GUID:62\"\n"
    table gpt-empty 8 'label: gpt\n'
    rm -f "$tmp/g.img"; truncate -s 64M "$tmp/g.img"
    printf 'label: gpt\nsector-size: 4096\nsize=16MiB,type=%s\n' "$data" |
      q sfdisk -q --no-reread --no-tell-kernel "$tmp/g.img"
    q "$tool" -S 4096 "$tmp/g.img" "$out/gpt-sector-4096"
    table mbr-fallback 16 'label: dos\nsize=4MiB,type=7\ntype=5\nsize=2MiB,type=b\n'
    ;;
  volume_detect)
    fat fat12-label 4 -F 12 -n SEEDFAT12
    fat fat12-nolabel 2 -F 12
    fat fat16-label 24 -F 16 -n SEEDFAT16
    fat fat16-1024 24 -F 16 -S 1024 -n SEEDFAT16K
    fat fat32-label 40 -F 32 -s 1 -n SEEDFAT32
    fat fat32-4096 300 -F 32 -S 4096 -s 1 -n SEEDFAT32K
    ntfs ntfs-4096cluster 16 512 -L SEEDNTFS
    ntfs ntfs-512cluster 16 512 -c 512 -L "NTFS 512 CLUSTERS"
    ntfs ntfs-1024cluster 16 512 -c 1024
    ntfs ntfs-4096sector 32 4096 -L SEEDNTFS4K
    ;;
  discovery)
    # The answers of the device nodes (see fuzz_discovery.cpp) in front of
    # the partition-walk images: all nodes open and answer with bytes 0x01,
    # or with bytes 0xFD.
    walk_seeds
    for f in "$out"/*; do
      for fill in 01 fd; do
        { printf '\x00\x02'; head -c 512 /dev/zero | tr '\0' "\\$(printf '%03o' 0x$fill)"; cat "$f"; } \
          >"$f-answers-$fill"
      done
      { printf '\x00\x00'; cat "$f"; } >"$f-no-answers"
      rm "$f"
    done
    ;;
  *) echo "make-seeds: unknown target $kind" >&2; exit 2 ;;
esac
n=$(ls "$out" | wc -l)
[ "$n" -gt 0 ] || { echo "make-seeds: no seeds made" >&2; exit 1; }
echo "make-seeds: $n seed inputs for $kind in $out"
