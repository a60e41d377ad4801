#!/bin/sh
# Runs a command in a private mount namespace whose /mnt is a fresh tmpfs, so
# that nothing a test mounts or creates under /mnt reaches the machine's own.
set -e
exec unshare --mount --propagation private sh -c '
  mount -t tmpfs -o mode=0755,size=256m vantori-test-mnt /mnt || exit 97
  export VANTORI_PRIVATE_MNT=1
  exec "$@"' sh "$@"
