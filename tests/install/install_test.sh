#!/usr/bin/env bash
# The install rules: into a fresh prefix, the command in bin/ is a link to the
# program beside its resources archive, and the installed program starts from
# it; the desktop entry is valid and opens the image types named in it; the
# icon is there as SVG and as a 256 x 256 PNG.
set -u
cmake="$1" build="$2" validate="${3:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

prefix="$work/usr"
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || { cat "$work/install.log"; fail "install failed"; }

[ -L "$prefix/bin/pellucida" ] || fail "bin/pellucida is not a link"
program="$(readlink -f "$prefix/bin/pellucida")"
[ -x "$program" ] || fail "bin/pellucida does not lead to the program"
[ -f "$(dirname "$program")/resources" ] || fail "no resources archive beside $program"

# Started through the link, the installed program finds its archive and runs.
printf 'wait 30\nclose\nanswer Close\n' >"$work/script.txt"
PELLUCIDA_STATE_DIR="$work/state" "$prefix/bin/pellucida" --host=headless --script="$work/script.txt" \
  >"$work/run.log" 2>&1 || { cat "$work/run.log"; fail "the installed program did not run"; }
grep -q "^Pellucida " "$work/run.log" || { cat "$work/run.log"; fail "the installed program showed no main form"; }

entry="$prefix/share/applications/pellucida.desktop"
[ -f "$entry" ] || fail "no desktop entry"
grep -qx "Exec=pellucida %f" "$entry" || fail "the entry does not start pellucida with one file"
grep -qx "Icon=pellucida" "$entry" || fail "the entry names another icon"
for type in image/fits image/tiff image/png image/jpeg; do
  grep "^MimeType=" "$entry" | tr ';=' '\n\n' | grep -qx "$type" || fail "the entry does not open $type"
done
if [ -n "$validate" ]; then
  # Hints (advice) are allowed; errors and warnings are not.
  "$validate" "$entry" >"$work/validate.log" 2>&1; status=$?
  cat "$work/validate.log"
  [ "$status" -eq 0 ] || fail "desktop-file-validate refused the entry"
  grep -qE "(error|warning):" "$work/validate.log" && fail "desktop-file-validate found problems"
else
  echo "desktop-file-validate is not installed (tools/setup.sh installs it): the entry is not validated"
fi

icons="$prefix/share/icons/hicolor"
grep -q "<svg " "$icons/scalable/apps/pellucida.svg" 2>/dev/null || fail "no SVG icon"
png="$icons/256x256/apps/pellucida.png"
[ -f "$png" ] || fail "no PNG icon"
# The PNG header's width and height, big-endian at bytes 16 to 23.
size="$(od -An -tx1 -j16 -N8 "$png" | tr -d ' \n')"
[ "$size" = "0000010000000100" ] || fail "the PNG icon is not 256 x 256 ($size)"
echo "PASS: the install holds the linked program, its archive, a valid desktop entry and the icons"
