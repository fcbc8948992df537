#!/usr/bin/env bash
# Starts the program with the SDL2 backend on a private Xvfb display, checks the
# test picture and the pointer marker on the real screen, closes the window the
# way a window manager does and expects exit status 0.
set -u
program="$1" probe="$2" xvfb="$3"
title="Pellucida"
. "$(dirname "$0")/xvfb_session.sh"

xvfb_start "$xvfb" 90 140
app_start env PELLUCIDA_HOST=sdl2 "$program"

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

app_close_expect_zero "$probe" "$title"
echo "PASS: picture shown, pointer followed, closed with status 0"
