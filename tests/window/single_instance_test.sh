#!/usr/bin/env bash
# One desktop window per display: with the program running in a real SDL2
# window on a private Xvfb display, a second start ends at once with status 0,
# the first says it was brought forward, and an image named to the second
# start is opened by the first as if it had been dropped on its window.
set -u
program="$1" xvfb="$2" image="$3"
title="Pellucida"
. "$(dirname "$0")/xvfb_session.sh"

xvfb_start "$xvfb" 190 240
export PELLUCIDA_STATE_DIR="$workdir/state"
export XDG_RUNTIME_DIR="$workdir/runtime"
mkdir -p "$PELLUCIDA_STATE_DIR" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
app_start env PELLUCIDA_HOST=sdl2 "$program"
win_wait "$title" 20 || fail "the window did not appear"

# A handed-over file is opened like a drop, and a drop waits for the main
# form: its start banner says it is up.
banner=""
for _ in $(seq 1 150); do
  if grep -q "^Pellucida " "$workdir/app.log"; then banner=1; break; fi
  sleep 0.2
done
[ -n "$banner" ] || fail "the main form did not come up"

second() {  # second [ARGS...]: a second start; its status, which must come soon
  ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" DESKTOP_STARTUP_ID="test-launch_TIME0" \
    timeout 20 env PELLUCIDA_HOST=sdl2 "$program" "$@" >"$workdir/second.log" 2>&1
}

wait_for() {  # wait_for FILE TEXT: the text appears in the file within 30 s (sanitizer builds on a busy machine are slow)
  for _ in $(seq 1 300); do
    grep -qF -- "$2" "$1" 2>/dev/null && return 0
    sleep 0.1
  done
  return 1
}

second; status=$?
cat "$workdir/second.log"
[ "$status" -eq 0 ] || fail "the second start ended with status $status, expected 0"
grep -q "already running" "$workdir/second.log" || fail "the second start did not hand over"
wait_for "$workdir/app.log" "Brought forward by another start" || fail "the first was not asked to come forward"

# The image by a relative name from another folder: the first opens the same file.
(cd "$(dirname "$image")" && second "$(basename "$image")"); status=$?
[ "$status" -eq 0 ] || fail "the second start with an image ended with status $status"
wait_for "$PELLUCIDA_STATE_DIR/Pellucida.log" "File loaded [$image]" ||
  { cat "$PELLUCIDA_STATE_DIR/Pellucida.log" 2>/dev/null; fail "the first did not open the handed-over image"; }

kill -0 "$app_pid" 2>/dev/null || fail "the first instance ended"
[ "$(grep -c "^Pellucida " "$workdir/app.log")" -eq 1 ] || fail "a second program started its own window"
echo "PASS: a second start hands over to the running window and ends with status 0"
