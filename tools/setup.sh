#!/usr/bin/env bash
# Installs what Pellucida needs to build, run and test, from Debian's packages.
# Idempotent: when everything is present it says nothing and returns at once.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config
  libsdl2-dev libdbus-1-dev liblodepng-dev libstb-dev liblz4-dev
  libgtest-dev libgmock-dev libbenchmark-dev libssl-dev
  libtsan2
  clang libclang-rt-14-dev
  xvfb xauth matchbox-window-manager xdotool wmctrl imagemagick x11-xserver-utils
  desktop-file-utils
  dbus-daemon python3-dbusmock
  fonts-dejavu-core
  chromium
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
