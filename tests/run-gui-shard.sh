#!/bin/sh
# Runs one shard of the GUI test binary: GoogleTest's own sharding picks the
# tests, the shard gets a private copy of the binary's directory (tests
# rewrite settings files beside the binary), an X server of its own and a
# mount namespace of its own. The shards wait mostly on the toolkit, so they
# run side by side.
#   run-gui-shard.sh INDEX TOTAL BINARY [gtest arguments...]
set -eu
index=$1 total=$2 bin=$3
shift 3
here=$(cd "$(dirname "$0")" && pwd)
src=$(dirname "$bin")
dir=$src/shard$index
rm -rf "$dir"
mkdir -p "$dir"
# A hard link, not a symbolic one: the binary finds its data beside the path
# it was started from.
ln -f "$bin" "$dir/"
cp -a "$src/setting" "$src/res" "$dir/"
export GTEST_SHARD_INDEX="$index" GTEST_TOTAL_SHARDS="$total"
# Each shard starts its search for a free display elsewhere, so parallel
# shards do not race for the same one.
exec xvfb-run -a -n $((110 + 10 * index)) -s "-screen 0 1280x1024x24" \
  "$here/run-in-mntns.sh" "$dir/$(basename "$bin")" "$@"
