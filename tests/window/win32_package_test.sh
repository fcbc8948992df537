#!/usr/bin/env bash
# The packaged Windows program under wine, as a user would get it:
#   win32_package_test.sh ZIP PROBE LINUX_CLI IMAGE...
# - the zip holds the two programs, the resources archive, the licences and
#   the sample, and nothing else;
# - its pellucida-cli.exe writes, for every IMAGE, the same TIFF as the Linux
#   build for the same steps, byte for byte (the kernels' arithmetic, pow and
#   exp included, must not depend on the system's C library);
# - its pellucida.exe opens its window, reaches the main form, loads the sample
#   given on its command line (the processing log says "File loaded [") and
#   survives until it is closed.
# Expects the wine environment of tools/windows-env.sh.
set -u
zip="$1" probe="$2" linux_cli="$3"
shift 3
workdir="$(mktemp -d)"
app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null
  rm -rf "$workdir"
}
trap cleanup EXIT
fail() { echo "FAIL: $*"; exit 1; }

unzip -q "$zip" -d "$workdir" || fail "cannot unpack $zip"
program="$workdir/Pellucida"
expected="LICENSE
THIRD_PARTY_NOTICES.md
pellucida-cli.exe
pellucida.exe
resources
sample/M94-Seestar-stack.tif"
listed="$(cd "$program" && find . -type f | sed 's|^\./||' | LC_ALL=C sort)"
[ "$listed" = "$expected" ] || fail "the package holds:
$listed"

steps=(--autodev --bin=7071 --rotate=100)
for image in "$@"; do
  name="$(basename "$image")"
  "$linux_cli" process "$image" -o "$workdir/linux.tif" "${steps[@]}" >/dev/null ||
    fail "the Linux build could not process $name"
  cp "$image" "$workdir/in-$name"
  (cd "$workdir" && wine "$program/pellucida-cli.exe" process "in-$name" -o windows.tif "${steps[@]}" \
    </dev/null >"$workdir/cli.log" 2>&1) || { cat "$workdir/cli.log"; fail "pellucida-cli.exe failed on $name"; }
  cmp "$workdir/linux.tif" "$workdir/windows.tif" || fail "the Windows TIFF of $name differs from the Linux one"
  echo "same TIFF from both builds: $name ${steps[*]}"
  rm -f "$workdir/linux.tif" "$workdir/windows.tif" "$workdir/in-$name"
done

state="$workdir/state"
mkdir -p "$state"
(cd "$program" && PELLUCIDA_STATE_DIR="$(winepath -w "$state")" \
  exec wine "$program/pellucida.exe" 'sample\M94-Seestar-stack.tif' </dev/null >"$workdir/app.log" 2>&1) &
app_pid=$!
wine "$probe" wait 60 </dev/null >/dev/null 2>&1 || fail "the window did not appear"
for _ in $(seq 1 300); do
  grep -q "File loaded \[" "$state/Pellucida.log" 2>/dev/null && break
  kill -0 "$app_pid" 2>/dev/null || fail "the program ended: $(cat "$workdir/app.log")"
  sleep 0.2
done
grep -q "File loaded \[.*M94-Seestar-stack.tif" "$state/Pellucida.log" 2>/dev/null ||
  fail "the main form did not load the sample: $(cat "$state/Pellucida.log" 2>/dev/null)"
sleep 1
kill -0 "$app_pid" 2>/dev/null || fail "the program ended after loading"
echo "PASS: the packaged program's window loaded the sample; its command line matches the Linux build"
