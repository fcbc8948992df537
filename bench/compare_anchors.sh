#!/usr/bin/env bash
# Times our FITS reader beside the cfitsio anchor of ../shared/anchors on the
# very same files, alternating the two in one run (the machine is shared and
# noisy, so only figures taken side by side are compared), and prints the
# ratio of the medians. Needs libcfitsio-dev (installed here when missing).
#
#   bench/compare_anchors.sh [ROUNDS]     (default 3 rounds of 5 reads each)
set -euo pipefail
cd "$(dirname "$0")/.."
rounds="${1:-3}"
anchors="$(cd .. && pwd)/shared/anchors"
[ -f "$anchors/fits_read_cfitsio.c" ] || { echo "compare_anchors: $anchors is missing"; exit 1; }

tools/setup.sh
if ! dpkg-query -W -f='${Status}' libcfitsio-dev 2>/dev/null | grep -q "install ok installed"; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get install -y -qq --no-install-recommends libcfitsio-dev >/dev/null
fi

cmake --preset release >/dev/null
cmake --build --preset release --target pellucida_bench >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
gcc -O2 "$anchors/fits_read_cfitsio.c" -o "$work/fits_read_cfitsio" $(pkg-config --cflags --libs cfitsio)

export PELLUCIDA_STATE_DIR="$work" PELLUCIDA_BENCH_KEEP=1
bench=build/release/bench/pellucida_bench
# The first call writes the two files; later calls reuse them.
"$bench" --benchmark_filter='BM_FitsRead' --benchmark_min_time=0.01 >/dev/null

ours_rgb=() ours_mono=() ref_rgb=() ref_mono=()
for round in $(seq 1 "$rounds"); do
  for which in rgb mono; do
    if [ "$which" = rgb ]; then file="$work/pellucida-bench-rgb-f32.fits"; filter='BM_FitsReadRgbFloat32';
    else file="$work/pellucida-bench-mono-u16.fits"; filter='BM_FitsReadMonoU16'; fi
    # cfitsio into freshly allocated doubles: the anchor's first line.
    ref=$("$work/fits_read_cfitsio" "$file" 5 | awk -F'\t' '$2=="double_fresh_malloc"{print $3}')
    ours=$("$bench" --benchmark_filter="$filter" --benchmark_repetitions=5 \
             --benchmark_report_aggregates_only=true --benchmark_format=csv 2>/dev/null |
           awk -F, '/_median"?,/{print $3}')
    echo "round $round $which: cfitsio ${ref} ms, ours ${ours} ms"
    if [ "$which" = rgb ]; then ref_rgb+=("$ref"); ours_rgb+=("$ours"); else ref_mono+=("$ref"); ours_mono+=("$ours"); fi
  done
done

median() { printf '%s\n' "$@" | sort -g | awk '{a[NR]=$1} END{print a[int((NR+1)/2)]}'; }
for which in rgb mono; do
  if [ "$which" = rgb ]; then r=$(median "${ref_rgb[@]}"); o=$(median "${ours_rgb[@]}"); name="RGB float32 288 MB";
  else r=$(median "${ref_mono[@]}"); o=$(median "${ours_mono[@]}"); name="mono uint16 48 MB"; fi
  awk -v n="$name" -v r="$r" -v o="$o" 'BEGIN{printf "%s: cfitsio %.0f ms, Pellucida %.0f ms, ratio %.2f\n", n, r, o, o/r}'
done
