#!/usr/bin/env bash
# Saves a picture of the destination panel choosing a folder of E: (docs/destination.png):
# the GUI test that opens the panel from Copy on faked volumes, run with
# VANTORI_SCREENSHOT set. Needs a configured build (./dev.sh test or run).
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
cmake --build "$BUILD" --target gui_tests
out=$PWD/docs/destination.png
cd "$BUILD/tests/gui_tests"
VANTORI_SCREENSHOT=$out xvfb-run -a -s "-screen 0 1280x1024x24" \
  ../../../tests/run-in-mntns.sh ./gui_tests --gtest_filter='CopyOpensPanelTest.Screenshot'
echo "saved $out"
