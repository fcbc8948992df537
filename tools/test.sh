#!/usr/bin/env bash
# Sets up the machine, builds, and runs the whole test suite twice: once in the
# release build and once under AddressSanitizer and UndefinedBehaviorSanitizer.
# Then the test programs that run threads (label "threads") are built and run
# once more under ThreadSanitizer; its build preset names only those targets.
# Last, the Windows program is cross-built and tested under wine
# (tools/test-windows.sh).
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
echo "== tsan build"
cmake --preset tsan >/dev/null
cmake --build --preset tsan -j "$jobs"
echo "== tsan tests"
ctest --preset tsan -j "$jobs"
tools/test-windows.sh
