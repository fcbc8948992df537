#!/usr/bin/env bash
# Sets up the machine, builds, and runs the whole test suite twice: once in the
# release build and once under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh
jobs="${PELLUCIDA_JOBS:-$(nproc)}"
for preset in release asan; do
  echo "== $preset build"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  echo "== $preset tests"
  ctest --preset "$preset" -j "$jobs"
done
