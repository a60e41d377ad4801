#!/bin/bash
# Runs the disk layer's fuzz targets for longer than the test suite does.
#
#   tools/fuzz-long.sh SECONDS [partition_walk] [gpt_walk] [volume_detect] [discovery]
#
# Builds the fuzz build (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in build-fuzz/ (or $BUILD_DIR), then runs each
# named target (default: all three) for SECONDS. The corpus of each target is kept
# in BUILD_DIR/fuzz/long-<target>/corpus and grows from run to run; inputs
# that break a target land in BUILD_DIR/fuzz/long-<target>/artifacts/ and
# the run fails. FUZZ_JOBS=N fuzzes with N processes per target (libFuzzer's
# -fork=N); further libFuzzer options can be given in FUZZ_OPTIONS.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

[ $# -ge 1 ] && [[ $1 =~ ^[0-9]+$ ]] || { sed -n '2,12p' "$0" | sed 's/^# \{0,1\}//'; exit 2; }
seconds=$1
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(partition_walk gpt_walk volume_detect discovery)
build=${BUILD_DIR:-$root/build-fuzz}

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DVANTORI_GUI=OFF -DVANTORI_TESTS=OFF -DVANTORI_FUZZ=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target make_fuzz_seed $(printf 'fuzz_%s ' "${targets[@]}")

extra=()
[ "${FUZZ_JOBS:-1}" -gt 1 ] && extra+=(-fork="$FUZZ_JOBS")
# shellcheck disable=SC2206
extra+=(${FUZZ_OPTIONS:-})
rc=0
for t in "${targets[@]}"; do
  "$root/tests/fuzz/run-fuzz.sh" "$build/fuzz/fuzz_$t" "$t" "$build/fuzz/make_fuzz_seed" \
    "$build/fuzz/long-$t" "$seconds" "${extra[@]}" || rc=1
done
exit $rc
