#!/usr/bin/env bash
# The interface scale on X11, where SDL reports none: on a 4K screen whose
# desktop sets "Xft.dpi: 192" the maximised window must show exactly what the
# headless backend renders at that size with a scale of 2; GDK_SCALE, the
# user's own factor, overrides the resource; a desktop that sets nothing gets
# no scale. The window manager maximises the window as a desktop would.
set -u
program="$1" xvfb="$2"
title="Pellucida"
. "$(dirname "$0")/xvfb_session.sh"

xvfb_start "$xvfb" 241 290 3840x2160x24
export PELLUCIDA_STATE_DIR="$workdir/state"
export XDG_RUNTIME_DIR="$workdir/runtime"
mkdir -p "$PELLUCIDA_STATE_DIR" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"

headless() {  # headless SCALE: the main form at 4K, rendered headless at that scale
  local picture="$workdir/main-$1.png"
  [ -f "$picture" ] && return 0
  printf 'wait 30\nscreenshot %s\nclose\nanswer Close\n' "$picture" >"$workdir/script.txt"
  PELLUCIDA_HEADLESS_SCALE="$1" PELLUCIDA_HEADLESS_SIZE=3840x2160 "$program" --host=headless \
    --script="$workdir/script.txt" >"$workdir/headless.log" 2>&1
  [ -f "$picture" ] || { cat "$workdir/headless.log"; fail "no headless picture at scale $1"; }
}

check() {  # check RESOURCES GDK_SCALE EXPECTED-SCALE
  printf '%s\n' "$1" | xrdb -nocpp -load - || fail "could not set the resource database"
  app_start env PELLUCIDA_HOST=sdl2 ${2:+GDK_SCALE=$2} "$program"
  win_wait "$title" 20 || fail "the window did not appear"
  headless "$3"
  local ok=""
  # Up to 30 s: under the sanitizers on a busy machine the 4K main form is slow to come.
  for _ in $(seq 1 150); do
    if win_matches "$title" "$workdir/main-$3.png" >"$workdir/compare.log"; then ok=1; break; fi
    sleep 0.2
  done
  cat "$workdir/compare.log"
  if [ -z "$ok" ]; then
    keep="${TMPDIR:-/tmp}/pellucida-hidpi-window"
    mkdir -p "$keep" && cp "$workdir/main-$3.png"* "$keep"/ 2>/dev/null
    fail "resources \"$1\", GDK_SCALE \"$2\": the window is not the scale-$3 rendering (pictures in $keep)"
  fi
  # Killed, not closed (closing asks first): the next start must not be blocked by it.
  kill -9 "$app_pid"; wait "$app_pid" 2>/dev/null; app_pid=""
  for _ in $(seq 1 50); do [ -n "$(win_id "$title")" ] || break; sleep 0.1; done
}

check "$(printf 'Xft.antialias:\t1\nXft.dpi:\t192\n')" "" 2
check "$(printf 'Xft.dpi:\t192\n')" 1 1
check "$(printf 'Xft.antialias:\t1\n')" "" 1
echo "PASS: the X11 window takes its scale from GDK_SCALE, then Xft.dpi"
