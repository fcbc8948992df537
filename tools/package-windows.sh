#!/usr/bin/env bash
# Builds the Windows program with mingw-w64 and packs it for users:
#   build/windows/pellucida-windows-x64.zip, one folder "Pellucida" holding
#   pellucida.exe, pellucida-cli.exe, the resources archive, the licences and
#   the bundled sample image.
# The executables are linked statically, so no DLL goes with them. The zip is
# the same bytes for the same build: fixed dates, no extra attributes.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/windows-env.sh
windows_install

jobs="${PELLUCIDA_JOBS:-$(nproc)}"
cmake --preset windows >/dev/null
cmake --build --preset windows -j "$jobs" --target pellucida pellucida-cli

build=build/windows
stage="$build/package"
rm -rf "$stage"
mkdir -p "$stage/Pellucida/sample"
cp "$build/pellucida.exe" "$build/pellucida-cli.exe" "$build/resources" \
  LICENSE THIRD_PARTY_NOTICES.md "$stage/Pellucida/"
cp samples/M94-Seestar-stack.tif "$stage/Pellucida/sample/"
find "$stage" -exec touch -h -d "2000-01-01 00:00:00 UTC" {} +

zip="$PWD/$build/pellucida-windows-x64.zip"
rm -f "$zip"
(cd "$stage" && find Pellucida | LC_ALL=C sort | TZ=UTC zip -q -X -D "$zip" -@)
echo "package: $build/pellucida-windows-x64.zip ($(du -k "$zip" | cut -f1) KiB)"
