#!/usr/bin/env bash
# Starts a program on the current X display, waits (up to 20 s) for its
# window of the given name, saves a picture of that window and ends the
# program. ./dev.sh run uses it under Xvfb when there is no display.
#   tools/screenshot-window.sh WINDOW_NAME OUTPUT.png PROGRAM [ARGS...]
set -u
if [ $# -lt 3 ]; then
  echo "usage: $0 WINDOW_NAME OUTPUT.png PROGRAM [ARGS...]" >&2
  exit 2
fi
name=$1 shot=$2
shift 2
"$@" & pid=$!
geo=
for i in $(seq 1 100); do
  geo=$(xwininfo -name "$name" 2>/dev/null | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4} /Width:/{w=$2} /Height:/{h=$2} END{if (w) print w"x"h"+"x"+"y}')
  [ -n "$geo" ] && break
  kill -0 $pid 2>/dev/null || break
  sleep 0.2
done
if [ -z "$geo" ]; then echo "the $name window did not appear" >&2; kill $pid 2>/dev/null; wait $pid; exit 1; fi
sleep 2
import -window root -crop "$geo" "$shot"
kill $pid 2>/dev/null; wait $pid 2>/dev/null || true
