#!/usr/bin/env bash
# The program in a real SDL2 window on a private Xvfb display: after the
# splash the window must show exactly what the headless backend renders at
# the same size (the main form), and a close request from the window manager
# must bring up the close question, again as headless renders it. Answering
# it is covered by the headless script tests, which drive the same handler.
set -u
program="$1" xvfb="$2"
title="Pellucida"
. "$(dirname "$0")/xvfb_session.sh"

xvfb_start "$xvfb" 90 140
state="$workdir/state"; mkdir -p "$state"
export PELLUCIDA_STATE_DIR="$state"
app_start env PELLUCIDA_HOST=sdl2 "$program"

win_wait "$title" 20 || fail "the window did not appear"
sleep 0.5
size="$(win_size "$title")" || fail "no window size"
echo "window $size"

headless() {  # headless SCRIPT-LINES PICTURE
  printf '%b' "$1" >"$workdir/script.txt"
  PELLUCIDA_HEADLESS_SIZE="$size" "$program" --host=headless --script="$workdir/script.txt" \
    >"$workdir/headless.log" 2>&1
  [ -f "$2" ] || { cat "$workdir/headless.log"; fail "no headless picture $2"; }
}

matches() {  # matches PICTURE: the window shows it within a few seconds
  for _ in $(seq 1 50); do
    if win_matches "$title" "$1" >"$workdir/compare.log"; then return 0; fi
    sleep 0.2
  done
  cat "$workdir/compare.log"
  keep="${TMPDIR:-/tmp}/pellucida-window"
  mkdir -p "$keep" && cp "$1"* "$keep"/ 2>/dev/null
  return 1
}

headless 'wait 30\nscreenshot '"$workdir"'/main.png\nclose\nanswer Close\n' "$workdir/main.png"
matches "$workdir/main.png" || fail "the main form differs from the headless rendering"

headless 'wait 30\nclose\nwait 2\nscreenshot '"$workdir"'/question.png\nanswer Close\n' "$workdir/question.png"
wmctrl -i -c "$(win_id "$title")" || fail "could not send the close request"
matches "$workdir/question.png" || fail "the close question differs from the headless rendering"
kill -0 "$app_pid" 2>/dev/null || fail "the program ended without asking"
echo "PASS: the main form and the close question in the real window match the headless rendering"
