#!/usr/bin/env bash
# Cross-builds the Windows program with mingw-w64 and tests it under wine,
# without a Windows machine or an X server (wine's null display driver; see
# tools/windows-env.sh):
#   - the library test programs and the window tests of the "windows" preset,
#     with ctest's summary;
#   - the package users download (tools/package-windows.sh): its command line
#     must write the same TIFF as the Linux build, byte for byte, and its
#     program must open its window and load an image.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
. tools/windows-env.sh
windows_install
windows_wine

jobs="${PELLUCIDA_JOBS:-$(nproc)}"
echo "== windows build"
cmake --preset windows >/dev/null
cmake --build --preset windows -j "$jobs"
echo "== windows tests (wine)"
ctest --preset windows -j "$jobs"

echo "== windows package (wine)"
tools/package-windows.sh
# The Linux command line the package is compared with.
cmake --preset release >/dev/null
cmake --build --preset release -j "$jobs" --target pellucida-cli
images=(samples/M94-Seestar-stack.tif)
real_fits=../shared/data/fits/linear/dss_M67_1059px_int16.fits
if [ -f "$real_fits" ]; then
  images+=("$real_fits")
else
  echo "windows package: $real_fits absent, comparing on the bundled sample only"
fi
tests/window/win32_package_test.sh build/windows/pellucida-windows-x64.zip build/windows/tests/win32probe.exe \
  build/release/pellucida-cli "${images[@]}"
