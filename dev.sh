#!/usr/bin/env bash
# Vantori's two commands:
#   ./dev.sh run    build and start the program (under Xvfb with a screenshot
#                   when there is no display)
#   ./dev.sh test   build and run every test
# Each installs the Debian packages it needs (as root) and configures and
# builds before it starts.
set -euo pipefail
cd "$(dirname "$0")"
ROOT=$PWD
JOBS=$(nproc)

PACKAGES=(
  build-essential cmake ninja-build pkg-config python3
  libwxgtk3.2-dev libgtest-dev clang libclang-rt-14-dev
  xvfb xauth x11-utils xdotool imagemagick fonts-dejavu-core
  ntfs-3g dosfstools fdisk util-linux strace libfuse3-dev fuse3 mtools psmisc
  qemu-system-x86 linux-image-amd64 busybox-static cpio kmod
)

say() { printf '== %s\n' "$*"; }

ensure_packages() {
  local missing=() p
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}\n' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" != 0 ]; then
    echo "missing Debian packages: ${missing[*]}; run as root or install them first" >&2
    exit 1
  fi
  say "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

configure_build() {  # dir, extra cmake args...
  local dir=$1; shift
  cmake -S "$ROOT" -B "$dir" -G Ninja "$@" >/dev/null
}

build_main() {
  say "building build/"
  configure_build build
  cmake --build build -j "$JOBS"
}

# On a machine whose disks Vantori does not see, the demo disks (built once
# under build/demo/, again when their script changed) stand in for them.
demo_args() {
  local demo=$ROOT/build/demo script=$ROOT/tools/make-demo-disks.sh
  if [ "$(id -u)" != 0 ]; then
    say "not root: Vantori can neither read disks nor mount the demo disks" >&2
    return 0
  fi
  if build/bin/vantori-probe --no-mount 2>/dev/null | grep -q '^disk'; then
    return 0
  fi
  if [ ! -f "$demo/demo-fixed.img" ] || [ ! -f "$demo/demo-usb.img" ] || \
     [ "$script" -nt "$demo/demo-fixed.img" ]; then
    say "Vantori finds no disk on this machine: building the demo disks in $demo" >&2
    "$script" "$demo" >&2
  fi
  say "no disk found: starting Vantori with the demo disks (./dev.sh run --no-demo skips them)" >&2
  printf '%s\n' --image "$demo/demo-fixed.img" --image "$demo/demo-usb.img,usb,rw"
}

cmd_run() {
  ensure_packages
  build_main
  local args=() demo=1 a
  for a in "$@"; do
    if [ "$a" = --no-demo ]; then demo=0; else args+=("$a"); fi
  done
  if [ $demo = 1 ]; then
    local line
    while IFS= read -r line; do args+=("$line"); done < <(demo_args)
  fi
  cd build/bin
  if [ -n "${DISPLAY:-}" ]; then
    exec ./vantori "${args[@]}"
  fi
  local shot=$ROOT/build/screenshot.png
  say "no display: running under Xvfb, screenshot goes to $shot"
  rm -f "$shot"
  xvfb-run -a -s "-screen 0 800x640x24" "$ROOT/tools/screenshot-window.sh" Vantori "$shot" ./vantori "${args[@]}"
  say "screenshot saved: $shot"
}

cmd_test() {
  ensure_packages
  local t0=$SECONDS
  build_main
  say "running the tests of build/"
  local rc=0
  (cd build && ctest --output-on-failure -j 3) || rc=1

  say "sanitizer build (AddressSanitizer + UndefinedBehaviorSanitizer): build-asan/"
  configure_build build-asan -DVANTORI_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug
  cmake --build build-asan -j "$JOBS" --target unit_tests disk_tests gui_tests
  # LeakSanitizer is on; tests/lsan-toolkit.supp names the toolkit's own
  # start-up allocations (fontconfig, D-Bus, GLib), nothing of ours.
  local sanitize="abort_on_error=1:detect_leaks=1"
  local lsan="suppressions=$ROOT/tests/lsan-toolkit.supp:print_suppressions=0"
  (cd build-asan && ASAN_OPTIONS=$sanitize LSAN_OPTIONS=$lsan UBSAN_OPTIONS=print_stacktrace=1 \
     ctest --output-on-failure -L nongui) || rc=1
  say "GUI tests in the sanitizer build"
  local t1=$SECONDS
  (cd build-asan && ASAN_OPTIONS=$sanitize LSAN_OPTIONS=$lsan UBSAN_OPTIONS=print_stacktrace=1 \
     ctest --output-on-failure -j 3 -R '^gui_') || rc=1
  say "sanitizer GUI tests took $((SECONDS - t1)) s"

  say "fuzz targets (clang libFuzzer + ASan + UBSan): build-fuzz/"
  configure_build build-fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DVANTORI_GUI=OFF -DVANTORI_TESTS=OFF -DVANTORI_FUZZ=ON
  cmake --build build-fuzz -j "$JOBS"
  (cd build-fuzz && ctest --output-on-failure -L fuzz) || rc=1

  say "all tests done in $((SECONDS - t0)) s"
  if [ $rc = 0 ]; then say "ALL TESTS PASSED"; else say "SOME TESTS FAILED"; fi
  return $rc
}

case "${1:-}" in
  run) shift; cmd_run "$@" ;;
  test) shift; cmd_test "$@" ;;
  *) echo "usage: $0 run|test" >&2; exit 2 ;;
esac
