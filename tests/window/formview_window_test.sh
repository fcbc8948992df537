#!/usr/bin/env bash
# The toolkit's test form in a real SDL2 window on a private Xvfb display must
# look exactly as the headless backend renders it: the same code draws both,
# and the window only shows the framebuffer. The headless picture is taken at
# the window's own size, then the window is read back and compared.
set -u
formview="$1" xvfb="$2"
title="Pellucida"

. "$(dirname "$0")/xvfb_session.sh"

xvfb_start "$xvfb" 141 190
app_start "$formview" --host=sdl2

win_wait "$title" 20 || fail "the window did not appear"
size="$(win_size "$title")" || fail "no window size"
echo "window $size"

# The same form, headless, at the window's size.
printf 'wait 2\nscreenshot %s\n' "$workdir/headless.png" >"$workdir/script.txt"
PELLUCIDA_HEADLESS_SIZE="$size" "$formview" --host=headless --script="$workdir/script.txt" \
  >"$workdir/headless.log" 2>&1 || { cat "$workdir/headless.log"; fail "the headless rendering failed"; }
[ -f "$workdir/headless.png" ] || fail "no headless picture"

# The window may still be drawing its first frames: try for a few seconds.
ok=""
for _ in $(seq 1 30); do
  if win_matches "$title" "$workdir/headless.png" >"$workdir/compare.log"; then ok=1; break; fi
  sleep 0.2
done
cat "$workdir/compare.log"
if [ -z "$ok" ]; then
  keep="${TMPDIR:-/tmp}/pellucida-formview-window"
  mkdir -p "$keep" && cp "$workdir"/headless.png* "$keep"/ 2>/dev/null
  fail "the window differs from the headless rendering (pictures in $keep)"
fi

app_close_expect_zero "$title"
echo "PASS: the SDL2 window shows the test form as the headless backend renders it"
