#!/usr/bin/env bash
# Sets up the machine, builds the release program and starts it. Arguments are
# passed on to the program; given no image, it opens the bundled sample.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "${PELLUCIDA_JOBS:-$(nproc)}" --target pellucida
for arg in "$@"; do
  case "$arg" in -*) ;; *) exec build/release/pellucida "$@" ;; esac
done
exec build/release/pellucida "$@" samples/M94-Seestar-stack.tif
