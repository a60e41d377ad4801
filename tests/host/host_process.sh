#!/usr/bin/env bash
# Starts the host program as a separate process, the way a rescue system
# does, and checks what a user sees: the "Vantori" window with the module's
# controls, Exit ending the process with status 0, clear errors for a
# missing library or entry point, and the warning when not run as root.
#
# The program runs in a private mount namespace with an empty /dev (only
# null, zero, urandom) and its own tmpfs /mnt, so it finds no disk of this
# machine and mounts nothing outside the test.
set -u
BIN=${1:?usage: host_process.sh BUILD_BIN_DIR}
BIN=$(cd "$BIN" && pwd)
WORK=$(mktemp -d /tmp/vantori-host-test.XXXXXX)
chmod 755 "$WORK"
fails=0
passes=0
ok() { echo "ok: $*"; passes=$((passes + 1)); }
bad() { echo "FAIL: $*"; fails=$((fails + 1)); }

# Our own X server, open to every local user so the non-root run can use it.
n=91
while [ -e /tmp/.X11-unix/X$n ] || [ -e /tmp/.X$n-lock ]; do n=$((n + 1)); done
Xvfb :$n -screen 0 1024x768x24 -ac -nolisten tcp >"$WORK/xvfb.log" 2>&1 &
XPID=$!
cleanup() { kill $XPID 2>/dev/null; wait $XPID 2>/dev/null; rm -rf "$WORK"; }
trap cleanup EXIT
export DISPLAY=:$n
for i in $(seq 1 50); do [ -e /tmp/.X11-unix/X$n ] && break; sleep 0.1; done

# Runs "$@" in the private namespace described above.
isolated() { "$(dirname "$0")/../run-in-mntns.sh" --empty-dev "$@"; }

# 1. The window, its controls, and Exit.
isolated "$BIN/vantori" --print-layout >"$WORK/out.txt" 2>"$WORK/err.txt" &
PID=$!
for i in $(seq 1 600); do grep -q '^layout-end' "$WORK/out.txt" 2>/dev/null && break; sleep 0.1; done
if ! grep -q '^layout-end' "$WORK/out.txt"; then
  bad "the window did not come up"; cat "$WORK/err.txt"
else
  top=$(awk -F'\t' '$1=="window" && $2==0' "$WORK/out.txt")
  case "$top" in
    *"	Vantori") ok "top-level window titled Vantori" ;;
    *) bad "top-level window: $top" ;;
  esac
  size=$(xwininfo -name Vantori | awk '/Width:/{w=$2} /Height:/{h=$2} END{print w"x"h}')
  [ "$size" = "660x540" ] && ok "client size 660x540" || bad "client size $size"
  for want in "wxButton	3002	&Help" "wxButton	3003	&Copy" "wxButton	3006	&Exit"; do
    cls=${want%%	*}; rest=${want#*	}; id=${rest%%	*}; label=${rest#*	}
    awk -F'\t' -v c="$cls" -v i="$id" -v l="$label" '$1=="window" && $3==c && $4==i && $6==1 && $7==l {f=1} END{exit !f}' "$WORK/out.txt" \
      && ok "shown: $cls $id $label" || bad "missing: $cls $id $label"
  done
  for cls in wxSplitterWindow wxTextCtrl wxStaticBox; do
    awk -F'\t' -v c="$cls" '$1=="window" && $3==c && $6==1 {f=1} END{exit !f}' "$WORK/out.txt" \
      && ok "shown: $cls" || bad "missing: $cls"
  done
  awk -F'\t' '$1=="window" && $3=="wxStaticBox" && $7=="Source" {f=1} END{exit !f}' "$WORK/out.txt" \
    && ok "Source box" || bad "no Source box"
  awk -F'\t' '$1=="window" && $3=="wxTextCtrl" && $7=="c:\\" {f=1} END{exit !f}' "$WORK/out.txt" \
    && ok "path box reads c:\\" || bad "path box text"
  # Click Exit in the middle of its rectangle.
  rect=$(awk -F'\t' '$1=="window" && $3=="wxButton" && $4==3006 {print $5}' "$WORK/out.txt")
  IFS=, read -r x y w h <<<"$rect"
  xdotool mousemove $((x + w / 2)) $((y + h / 2)) click 1
  for i in $(seq 1 100); do kill -0 $PID 2>/dev/null || break; sleep 0.1; done
  if kill -0 $PID 2>/dev/null; then
    bad "Exit did not end the program"; kill $PID
  fi
  wait $PID; rc=$?
  [ $rc = 0 ] && ok "Exit ends the process with status 0" || bad "exit status $rc after Exit"
  # Where Exit lies inside the module's window, for the stand-alone start.
  topRect=$(awk -F'\t' '$1=="window" && $2==0 {print $5}' "$WORK/out.txt")
  IFS=, read -r tx ty tw th <<<"$topRect"
  exitDx=$((x + w / 2 - tx)); exitDy=$((y + h / 2 - ty))
fi

# 1b. The stand-alone program: the start-up window, then one main window at
# (132, 104) of 660 x 540; Exit ends it.
isolated "$BIN/vantori-standalone" >"$WORK/sa.out" 2>"$WORK/sa.err" &
PID=$!
win=""
for i in $(seq 1 600); do
  win=$(xdotool search --onlyvisible --name '^Vantori$' 2>/dev/null)
  [ -n "$win" ] && [ "$(echo "$win" | wc -l)" = 1 ] && \
    xwininfo -id "$win" | grep -q 'Width: 660' && break
  sleep 0.1
done
if [ -z "$win" ]; then
  bad "the stand-alone main window did not come up: $(cat "$WORK/sa.err")"
else
  [ "$(echo "$win" | wc -l)" = 1 ] && ok "stand-alone: one visible window" \
    || bad "stand-alone: visible windows: $win"
  geo=$(xwininfo -id "$win" | awk '/Absolute upper-left X/{x=$4} /Absolute upper-left Y/{y=$4} /Width:/{w=$2} /Height:/{h=$2} END{print x","y","w","h}')
  [ "$geo" = "132,104,660,540" ] && ok "stand-alone main window at 132,104 660x540" \
    || bad "stand-alone main window geometry $geo"
  grep -q '^nIsInistialized = 0$' "$WORK/sa.out" && ok "start-up window traced its first tick" \
    || bad "no trace line: $(head -3 "$WORK/sa.out")"
  if [ -n "${exitDx:-}" ]; then
    xdotool mousemove $((132 + exitDx)) $((104 + exitDy)) click 1
    for i in $(seq 1 100); do kill -0 $PID 2>/dev/null || break; sleep 0.1; done
  fi
fi
if kill -0 $PID 2>/dev/null; then
  bad "Exit did not end the stand-alone program"; kill $PID
fi
wait $PID; rc=$?
[ $rc = 0 ] && ok "stand-alone: Exit ends the process with status 0" || bad "stand-alone exit status $rc"
grep -q 'toolkit check failed' "$WORK/sa.err" && bad "stand-alone: $(grep 'toolkit check' "$WORK/sa.err" | head -2)"

# 2. A missing library: clear message, non-zero status.
mkdir -p "$WORK/nolib"
cp "$BIN/vantori" "$WORK/nolib/"
"$WORK/nolib/vantori" >"$WORK/nolib.out" 2>"$WORK/nolib.err"; rc=$?
if [ $rc != 0 ] && grep -q 'cannot load .*libvantori.so' "$WORK/nolib.err"; then
  ok "missing library: status $rc, $(head -1 "$WORK/nolib.err")"
else
  bad "missing library: status $rc, stderr: $(cat "$WORK/nolib.err")"
fi

# 3. A library without one of the entry points.
mkdir -p "$WORK/nosym"
cp "$BIN/vantori" "$WORK/nosym/"
printf 'int get_version(void){return 1;}\nint invoke(void){return 0;}\n' >"$WORK/nosym/lib.c"
cc -shared -fPIC -o "$WORK/nosym/libvantori.so" "$WORK/nosym/lib.c"
"$WORK/nosym/vantori" >"$WORK/nosym.out" 2>"$WORK/nosym.err"; rc=$?
if [ $rc != 0 ] && grep -q 'no entry point "create"' "$WORK/nosym.err"; then
  ok "missing entry point: status $rc, $(head -1 "$WORK/nosym.err")"
else
  bad "missing entry point: status $rc, stderr: $(cat "$WORK/nosym.err")"
fi

# 4. Without root rights it says so and still opens its window.
if id nobody >/dev/null 2>&1; then
  isolated setpriv --reuid=nobody --regid=nogroup --clear-groups \
    env HOME="$WORK" "$BIN/vantori" --print-layout >"$WORK/nr.out" 2>"$WORK/nr.err" &
  PID=$!
  for i in $(seq 1 600); do grep -q '^layout-end' "$WORK/nr.out" 2>/dev/null && break; sleep 0.1; done
  grep -q 'without root rights' "$WORK/nr.err" && ok "non-root warning on standard error" \
    || bad "no non-root warning: $(cat "$WORK/nr.err")"
  grep -q '^layout-end' "$WORK/nr.out" && ok "non-root run opens its window" \
    || bad "non-root run did not open its window: $(cat "$WORK/nr.err")"
  # No toolkit assertion (the help book's cache used to need root's /tmp
  # file) and no dialog beside the main window.
  sleep 0.5
  grep -q 'toolkit check failed' "$WORK/nr.err" \
    && bad "non-root run: $(grep -c 'toolkit check failed' "$WORK/nr.err") toolkit assertions: $(grep -m1 'toolkit check failed' "$WORK/nr.err")" \
    || ok "non-root run: no toolkit assertion"
  shown=$(xdotool search --onlyvisible --name '.' 2>/dev/null | while read -r w; do xwininfo -id "$w" | sed -n 's/^xwininfo: Window id: [^ ]* "\(.*\)"$/\1/p'; done | sort | tr '\n' '|')
  [ "$shown" = "Vantori|" ] && ok "non-root run: only the main window is shown" \
    || bad "non-root run: windows shown: $shown"
  kill $PID 2>/dev/null; wait $PID 2>/dev/null
else
  bad "no user 'nobody' to test the non-root start"
fi

# 5. A drive in use by another program (a shell sitting in it), on a disk
# image mounted through a real loop device: Refresh keeps it and says so,
# Exit says so, detaches it and ends with status 4; nothing stays under /mnt.
img=$WORK/busy.img
truncate -s 24M "$img"
printf 'label: dos\nstart=2048, type=7\n' | sfdisk -q "$img" >/dev/null 2>&1
truncate -s 22M "$WORK/busy-part.img"
mkntfs -F -Q -p 2048 -H 255 -S 63 -L "Data Disk" "$WORK/busy-part.img" >/dev/null 2>&1
dd if="$WORK/busy-part.img" of="$img" bs=512 seek=2048 conv=notrunc,sparse status=none
cat >"$WORK/busy.sh" <<'SCRIPT'
BIN=$1 WORK=$2 IMG=$3
cd "$WORK"
"$BIN/vantori" --image "$IMG" --print-layout >busy.out 2>busy.err &
pid=$!
for i in $(seq 1 300); do grep -q '^layout-end' busy.out 2>/dev/null && break; sleep 0.1; done
(cd /mnt/C && exec sleep 60) &
holder=$!
sleep 0.3
click() {  # the button with this id, from the layout
  rect=$(awk -F'\t' -v id="$1" '$1=="window" && $4==id {print $5; exit}' busy.out)
  IFS=, read -r x y w h <<EOF2
$rect
EOF2
  xdotool mousemove $((x + w / 2)) $((y + h / 2)) click 1
}
answer() {  # waits for the message box of this caption and presses its OK
  for i in $(seq 1 100); do
    w=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -1)
    [ -n "$w" ] && break
    sleep 0.1
  done
  [ -n "$w" ] || return 1
  echo "seen: $1" >>busy.seen
  xdotool windowfocus --sync "$w" key Return
}
# Refresh is the right one of the two 28 x 28 picture buttons.
rect=$(awk -F'\t' '$1=="window" && $5 ~ /,28,28$/ {print $5}' busy.out | sort -t, -k1,1n | tail -1)
IFS=, read -r x y w h <<EOF2
$rect
EOF2
xdotool mousemove $((x + w / 2)) $((y + h / 2)) click 1
answer Refresh || echo "no Refresh message" >>busy.seen
grep ' /mnt/C ' /proc/self/mountinfo >/dev/null && echo "C: still mounted after Refresh" >>busy.seen
click 3006
answer Exit || echo "no Exit message" >>busy.seen
for i in $(seq 1 100); do kill -0 $pid 2>/dev/null || break; sleep 0.1; done
kill $pid 2>/dev/null
wait $pid
echo "status $?" >>busy.seen
grep -cE ' /mnt/[C-Z] ' /proc/self/mountinfo >busy.mounts
kill $holder 2>/dev/null
wait $holder 2>/dev/null
SCRIPT
"$(dirname "$0")/../run-in-mntns.sh" --loop-dev sh "$WORK/busy.sh" "$BIN" "$WORK" "$img"
seen=$(cat "$WORK/busy.seen" 2>/dev/null)
case "$seen" in
  *"seen: Refresh"*) ok "busy drive: Refresh says so" ;;
  *) bad "busy drive: no Refresh message ($seen; $(tail -3 "$WORK/busy.err"))" ;;
esac
case "$seen" in
  *"C: still mounted after Refresh"*) ok "busy drive: still mounted after Refresh" ;;
  *) bad "busy drive: not mounted after Refresh" ;;
esac
case "$seen" in
  *"seen: Exit"*) ok "busy drive: Exit says so" ;;
  *) bad "busy drive: no Exit message ($seen)" ;;
esac
case "$seen" in
  *"status 4"*) ok "busy drive: exit status 4" ;;
  *) bad "busy drive: exit status: $seen" ;;
esac
[ "$(cat "$WORK/busy.mounts" 2>/dev/null)" = 0 ] && ok "busy drive: nothing left mounted under /mnt" \
  || bad "busy drive: mounts left: $(cat "$WORK/busy.mounts" 2>/dev/null)"
grep -q 'detached lazily' "$WORK/busy.err" && ok "busy drive: standard error says it was detached" \
  || bad "busy drive: stderr: $(tail -2 "$WORK/busy.err")"

echo "$passes passed, $fails failed"
[ $fails = 0 ]
