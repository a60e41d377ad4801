#!/bin/sh
# Runs a command in a private mount namespace whose /mnt is a fresh tmpfs, so
# that nothing a test mounts or creates under /mnt reaches the machine's own.
# With --empty-dev, /dev is a fresh tmpfs too (only null, zero and urandom):
# a module loaded with its real device calls then finds no disk at all.
# With --loop-dev, that /dev also holds the loop devices (loop-control and
# nodes loop0..loop63) and fuse, and nothing else: disk images can be
# mounted, the machine's disks still cannot be reached.
set -e
dev=0
case "${1:-}" in
  --empty-dev) dev=1; shift ;;
  --loop-dev) dev=2; shift ;;
esac
exec unshare --mount --propagation private sh -c '
  set -e
  if [ "$0" != 0 ]; then
    d=$(mktemp -d)
    keep="null zero urandom"
    if [ "$0" = 2 ]; then keep="$keep fuse loop-control"; fi
    for f in $keep; do
      [ -e /dev/$f ] || continue
      touch "$d/$f"; mount --bind /dev/$f "$d/$f"
    done
    mount -t tmpfs -o mode=0755 vantori-test-dev /dev
    for f in $keep; do
      [ -e "$d/$f" ] || continue
      touch /dev/$f; mount --bind "$d/$f" /dev/$f
    done
    if [ "$0" = 2 ]; then
      n=0
      while [ $n -lt 64 ]; do mknod -m 0660 /dev/loop$n b 7 $n; n=$((n + 1)); done
    fi
  fi
  mount -t tmpfs -o mode=0755,size=256m vantori-test-mnt /mnt || exit 97
  exec "$@"' "$dev" "$@"
