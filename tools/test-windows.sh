#!/usr/bin/env bash
# Cross-builds the Windows program with mingw-w64 and runs its tests under
# wine, without a Windows machine or an X server:
#   - installs what it needs from Debian's packages (only here, so the Linux
#     suites do not pay for it);
#   - keeps one wine prefix per machine, with wine's null display driver
#     (HKCU\Software\Wine\Drivers Graphics=null: windows, DIB sections and
#     window messages work without a display);
#   - starts the wine server and one program detached from this script's
#     pipes first: otherwise wine's helper processes inherit the test runner's
#     output and every test waits for them;
#   - builds the "windows" preset and runs its tests, printing ctest's summary.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh

packages=(wine wine64 g++-mingw-w64-x86-64-posix googletest libstb-dev zip)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -ne 0 ]; then
  echo "test-windows: installing ${missing[*]}"
  SUDO=""
  if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends -o DPkg::Lock::Timeout=600 "${missing[@]}" >/dev/null
fi

export WINEPREFIX="${PELLUCIDA_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/pellucida/wine}"
export WINEDEBUG=-all
# No Mono or Gecko download prompts: the tests need neither.
export WINEDLLOVERRIDES="mscoree,mshtml="
if [ ! -f "$WINEPREFIX/.pellucida-ready" ]; then
  echo "test-windows: making the wine prefix $WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  wineboot -i </dev/null >/dev/null 2>&1
  wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1
  wineserver -w
  touch "$WINEPREFIX/.pellucida-ready"
fi
# Persistent server and a warm start, both detached from our output.
setsid wineserver -p </dev/null >/dev/null 2>&1 &
setsid wine cmd /c exit </dev/null >/dev/null 2>&1 || true

jobs="${PELLUCIDA_JOBS:-$(nproc)}"
echo "== windows build"
cmake --preset windows >/dev/null
cmake --build --preset windows -j "$jobs"
echo "== windows tests (wine)"
ctest --preset windows -j "$jobs"
