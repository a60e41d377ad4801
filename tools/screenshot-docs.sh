#!/usr/bin/env bash
# Saves the README's pictures, each made by a GUI test on faked volumes run
# with VANTORI_SCREENSHOT set to the file to write:
#   docs/browsing.png     the main window browsing C:\Documents
#   docs/destination.png  the destination panel choosing a folder of E:
#   docs/copying.png      the progress window of a copy from C: to E:
#   docs/report.png       the report at the end of a copy from a failing disk
# Needs a configured build (./dev.sh test or run).
#   tools/screenshot-docs.sh [BUILD_DIR] [browsing|destination|copying|report ...]
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
shift || true
[ $# -gt 0 ] || set -- browsing destination copying report
cmake --build "$BUILD" --target gui_tests
docs=$PWD/docs
cd "$BUILD/tests/gui_tests"
for name in "$@"; do
  case $name in
    browsing) filter='BrowsingScreenshot.*' ;;
    destination) filter='CopyOpensPanelTest.Screenshot' ;;
    copying) filter='CopyScreenshot.*' ;;
    report) filter='CopyReportTest.Screenshot' ;;
    *) echo "unknown picture: $name" >&2; exit 2 ;;
  esac
  VANTORI_SCREENSHOT=$docs/$name.png xvfb-run -a -s "-screen 0 1280x1024x24" \
    ../../../tests/run-in-mntns.sh ./gui_tests --gtest_filter="$filter"
  echo "saved $docs/$name.png"
done
