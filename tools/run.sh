#!/usr/bin/env bash
# Sets up the machine, builds the release program and starts it. Arguments are
# passed on to the program.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "${PELLUCIDA_JOBS:-$(nproc)}" --target pellucida
exec build/release/pellucida "$@"
