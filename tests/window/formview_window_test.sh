#!/usr/bin/env bash
# The toolkit's test form in a real SDL2 window on a private Xvfb display must
# look exactly as the headless backend renders it: the same code draws both,
# and the window only shows the framebuffer. The headless picture is taken at
# the window's own size, then the window is read back and compared.
set -u
formview="$1" probe="$2" xvfb="$3"
title="Pellucida"

workdir="$(mktemp -d)"
xvfb_pid=""; app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null
  rm -rf "$workdir"
}
trap cleanup EXIT

display=""
for n in $(seq 141 190); do
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

ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" SDL_RENDER_DRIVER=software \
  "$formview" --host=sdl2 >"$workdir/app.log" 2>&1 &
app_pid=$!

fail() { echo "FAIL: $*"; echo "--- program output"; cat "$workdir/app.log"; exit 1; }

"$probe" wait "$title" 20 || fail "the window did not appear"
size="$("$probe" size "$title")" || fail "no window size"
echo "window $size"

# The same form, headless, at the window's size.
printf 'wait 2\nscreenshot %s\n' "$workdir/headless.png" >"$workdir/script.txt"
PELLUCIDA_HEADLESS_SIZE="$size" "$formview" --host=headless --script="$workdir/script.txt" \
  >"$workdir/headless.log" 2>&1 || { cat "$workdir/headless.log"; fail "the headless rendering failed"; }
[ -f "$workdir/headless.png" ] || fail "no headless picture"

# The window may still be drawing its first frames: try for a few seconds.
ok=""
for _ in $(seq 1 30); do
  if "$probe" compare "$title" "$workdir/headless.png" 0 >"$workdir/compare.log"; then ok=1; break; fi
  sleep 0.2
done
cat "$workdir/compare.log"
if [ -z "$ok" ]; then
  keep="${TMPDIR:-/tmp}/pellucida-formview-window"
  mkdir -p "$keep" && cp "$workdir"/headless.png* "$keep"/ 2>/dev/null
  fail "the window differs from the headless rendering (pictures in $keep)"
fi

"$probe" close "$title" || fail "could not send the close request"
for _ in $(seq 1 100); do
  kill -0 "$app_pid" 2>/dev/null || break
  sleep 0.1
done
if kill -0 "$app_pid" 2>/dev/null; then fail "the viewer did not end after the close request"; fi
wait "$app_pid"; status=$?
app_pid=""
[ "$status" -eq 0 ] || fail "exit status $status, expected 0"
echo "PASS: the SDL2 window shows the test form as the headless backend renders it"
