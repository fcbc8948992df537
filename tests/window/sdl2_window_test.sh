#!/usr/bin/env bash
# Starts the program with the SDL2 backend on a private Xvfb display, checks the
# test picture and the pointer marker on the real screen, closes the window the
# way a window manager does and expects exit status 0.
set -u
program="$1" probe="$2" xvfb="$3"
title="Pellucida"

workdir="$(mktemp -d)"
xvfb_pid=""; app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null
  rm -rf "$workdir"
}
trap cleanup EXIT

# A free display number: the first whose lock file is absent.
display=""
for n in $(seq 90 140); do
  if [ ! -e "/tmp/.X$n-lock" ] && [ ! -e "/tmp/.X11-unix/X$n" ]; then display=":$n"; break; fi
done
[ -n "$display" ] || { echo "no free X display number"; exit 1; }

"$xvfb" "$display" -screen 0 1280x800x24 -nolisten tcp >"$workdir/xvfb.log" 2>&1 &
xvfb_pid=$!
export DISPLAY="$display"
for _ in $(seq 1 100); do
  [ -e "/tmp/.X11-unix/X${display#:}" ] && break
  sleep 0.1
done

# Software rendering keeps the test independent of the machine's GPU drivers.
# Under the sanitizer build, leak checking is left to the headless tests: the
# desktop libraries SDL loads (D-Bus, X11, GL drivers) keep allocations of their
# own until exit.
ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" SDL_RENDER_DRIVER=software PELLUCIDA_HOST=sdl2 "$program" >"$workdir/app.log" 2>&1 &
app_pid=$!

fail() { echo "FAIL: $*"; echo "--- program output"; cat "$workdir/app.log"; exit 1; }

"$probe" wait "$title" 20 || fail "the window did not appear"
sleep 0.5
"$probe" size "$title"
"$probe" picture "$title" || fail "the window does not show the test picture"

"$probe" move "$title" 300 100 || fail "could not move the pointer"
ok=""
for _ in $(seq 1 40); do
  if "$probe" marker "$title" 300 100 >/dev/null; then ok=1; break; fi
  sleep 0.1
done
[ -n "$ok" ] || { "$probe" marker "$title" 300 100; fail "the marker did not follow the pointer"; }

"$probe" close "$title" || fail "could not send the close request"
for _ in $(seq 1 100); do
  kill -0 "$app_pid" 2>/dev/null || break
  sleep 0.1
done
if kill -0 "$app_pid" 2>/dev/null; then fail "the program did not end after the close request"; fi
wait "$app_pid"; status=$?
app_pid=""
[ "$status" -eq 0 ] || fail "exit status $status, expected 0"
echo "PASS: picture shown, pointer followed, closed with status 0"
