#!/bin/bash
# Runs one fuzz target for a while from fresh seeds and fails on any crash,
# sanitizer report, leak, time-out or broken invariant:
#   run-fuzz.sh FUZZER KIND MAKE_FUZZ_SEED WORKDIR SECONDS [libFuzzer options...]
# KIND is partition_walk, gpt_walk, volume_detect or discovery. WORKDIR/seeds is made anew;
# WORKDIR/corpus is kept between runs (it only grows); crashing inputs land
# in WORKDIR/artifacts/.
set -uo pipefail
[ $# -ge 5 ] || { echo "usage: $0 FUZZER KIND MAKE_FUZZ_SEED WORKDIR SECONDS [options]" >&2; exit 2; }
fuzzer=$1 kind=$2 tool=$3 work=$4 seconds=$5
shift 5
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work/seeds" "$work/artifacts" "$work/regression-artifacts"
mkdir -p "$work/seeds" "$work/corpus" "$work/artifacts"
"$here/make-seeds.sh" "$kind" "$tool" "$work/seeds" || { echo "FUZZ $kind FAILED: could not make the seed inputs"; exit 1; }

export ASAN_OPTIONS=${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

# Inputs that once broke the target run first, one by one.
regression_failed=0
if [ -d "$here/regressions/$kind" ] && [ -n "$(ls "$here/regressions/$kind")" ]; then
  echo "== running the regression inputs of $kind"
  for f in "$here/regressions/$kind"/*; do
    mkdir -p "$work/regression-artifacts"
    if "$fuzzer" -timeout=10 -rss_limit_mb=2048 -artifact_prefix="$work/regression-artifacts/" "$f" \
      >"$work/regression.log" 2>&1; then
      echo "  passed: $(basename "$f")"
    else
      echo "  FAILED: $(basename "$f") (reproduce: $fuzzer -timeout=10 $f)"
      grep -E 'ERROR|SUMMARY|timeout|abort|partition walk:|volume recognition:' "$work/regression.log" | head -n 5 | sed 's/^/    /'
      regression_failed=1
    fi
  done
fi

echo "== fuzzing $kind for $seconds s (corpus $work/corpus)"
"$fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
  -print_final_stats=1 -artifact_prefix="$work/artifacts/" "$@" "$work/corpus" "$work/seeds" \
  >"$work/fuzz.log" 2>&1
rc=$?
found=$(ls "$work/artifacts" 2>/dev/null)
if [ $rc -ne 0 ] || [ -n "$found" ]; then
  tail -n 60 "$work/fuzz.log"
  echo "FUZZ $kind FAILED (exit status $rc); full log: $work/fuzz.log"
  for f in $found; do
    echo "  input: $work/artifacts/$f  (reproduce: $fuzzer $work/artifacts/$f)"
  done
  exit 1
fi
grep -E '^(Done|stat::)' "$work/fuzz.log"
if [ $regression_failed -ne 0 ]; then
  echo "FUZZ $kind FAILED: a regression input still breaks the target (see above)"
  exit 1
fi
echo "FUZZ $kind PASSED: $(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' "$work/fuzz.log" | grep -o '[0-9]*$') inputs run, no crash"
