#!/bin/sh
# Runs a command in a private mount namespace whose /mnt is a fresh tmpfs, so
# that nothing a test mounts or creates under /mnt reaches the machine's own.
# With --empty-dev, /dev is a fresh tmpfs too (only null, zero and urandom):
# a module loaded with its real device calls then finds no disk at all.
set -e
empty_dev=0
if [ "${1:-}" = "--empty-dev" ]; then empty_dev=1; shift; fi
exec unshare --mount --propagation private sh -c '
  set -e
  if [ "$0" = 1 ]; then
    d=$(mktemp -d)
    for f in null zero urandom; do touch "$d/$f"; mount --bind /dev/$f "$d/$f"; done
    mount -t tmpfs -o mode=0755 vantori-test-dev /dev
    for f in null zero urandom; do touch /dev/$f; mount --bind "$d/$f" /dev/$f; done
  fi
  mount -t tmpfs -o mode=0755,size=256m vantori-test-mnt /mnt || exit 97
  exec "$@"' "$empty_dev" "$@"
