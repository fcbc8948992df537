#!/usr/bin/env bash
# Times the processing kernels beside the anchors of ../shared/anchors on the
# very same generated image (their rgb_f32.fits, read by our own FITS reader),
# alternating ours and theirs in every round (the machine is shared and noisy,
# so only figures taken side by side are compared), and prints each figure as
# the ratio of the medians to its anchor:
#
#   AutoDev, whole `pellucida-cli process IN.fits --autodev -o OUT.tif` vs Siril's
#            load + stat + mtf (autostretch equivalent) + savetif, both whole processes
#   AutoDev kernel alone vs the same Siril process (for orientation only)
#   Bin 5000       vs OpenCV resize 1/2 INTER_AREA (64F)
#   Bin 7071       vs OpenCV GaussianBlur sigma 1 + resize 0.7071 INTER_LINEAR (64F)
#   Rotate 100     vs OpenCV warpAffine 10 degrees INTER_LINEAR, bounding canvas (64F)
#   Rotate 900     vs three passes over the image (576 MB each) at the measured
#                  two-thread copy bandwidth
#   GaussianBlur r = 2 vs OpenCV GaussianBlur at sigma = r / 1.1774 (64F)
#   AutoDev peak resident memory vs input + 3 x input + 400 MiB
#
# OpenCV runs with two threads on 64-bit float planes (our samples are 64-bit
# too). Needs siril, libopencv-dev, hyperfine and python3-astropy/numpy/
# tifffile (installed here when missing).
#
#   bench/compare_modules.sh [ROUNDS]     (default 3)
#   DATA_DIR=...  where the anchors' images live (default $TMPDIR/anchors-data)
#   BUILD_DIR=... an existing release-flags build folder to use instead of the preset's
set -euo pipefail
cd "$(dirname "$0")/.."
rounds="${1:-3}"
anchors="$(cd .. && pwd)/shared/anchors"
[ -f "$anchors/opencv_bench.cpp" ] || { echo "compare_modules: $anchors is missing"; exit 1; }
data="${DATA_DIR:-${TMPDIR:-/tmp}/anchors-data}"
py=/usr/bin/python3

tools/setup.sh
missing=()
for pkg in siril libopencv-dev hyperfine python3-astropy python3-numpy python3-tifffile; do
  dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
done
if [ "${#missing[@]}" -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
mkdir -p "$data"
[ -f "$data/rgb_f32.fits" ] && [ -f "$data/rgb_u16.tif" ] && [ -f "$data/lum30.i64" ] ||
  DATA_DIR="$data" "$py" "$anchors/gen_test_images.py"

build="${BUILD_DIR:-build/release}"
if [ -z "${BUILD_DIR:-}" ]; then cmake --preset release >/dev/null; fi
cmake --build "$build" --target pellucida_bench pellucida-cli >/dev/null
bench="$(cd "$build" && pwd)/bench/pellucida_bench"
cli="$(cd "$build" && pwd)/pellucida-cli"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# The OpenCV anchor trimmed to what is compared here (two threads, 64F), with
# one more blur at the width of our r = 2. Made from the anchor's own source.
sigma=$(awk 'BEGIN{printf "%.6f", 2 / 1.1774}')
sed -e 's/for (int thr : {2, 1})/for (int thr : {2})/' \
    -e 's/for (int depth : {CV_16U, CV_32F, CV_64F})/for (int depth : {CV_64F})/' \
    -e "s/\(.*\)bench(thr, dn, \"GaussianBlur_sigma1\", \[&\] {/\1bench(thr, dn, \"GaussianBlur_sigma_r2\", [\&] { cv::GaussianBlur(img, dst, cv::Size(0, 0), $sigma); }, dst);\n&/" \
    "$anchors/opencv_bench.cpp" > "$work/opencv_bench.cpp"
grep -q GaussianBlur_sigma_r2 "$work/opencv_bench.cpp" && grep -q '{CV_64F}' "$work/opencv_bench.cpp" ||
  { echo "compare_modules: the OpenCV anchor's source changed; adjust the edits"; exit 1; }
g++ -O2 -std=c++17 "$work/opencv_bench.cpp" -o "$work/opencv_bench" $(pkg-config --cflags --libs opencv4)
g++ -O2 -march=native -fopenmp "$anchors/membw.cpp" -o "$work/membw"

# Siril's autostretch equivalent, as the anchor runs it, in a fresh configuration.
mkdir -p "$work/siril"
ln -s "$data/rgb_f32.fits" "$work/siril/in.fits"
export XDG_CONFIG_HOME="$work/siril/config"
read -r lo mid hi < <("$py" "$anchors/siril_autostretch_params.py" "$work/siril/in.fits")
printf 'requires 1.0.0\nload in\nstat\nmtf %s %s %s\nsavetif out_stretch\n' "$lo" "$mid" "$hi" > "$work/siril/stretch.ssf"

export PELLUCIDA_HOST=headless PELLUCIDA_STATE_DIR="$work" PELLUCIDA_BENCH_PLANES="$data/rgb_f32.fits"
for round in $(seq 1 "$rounds"); do
  echo "round $round"
  "$bench" --benchmark_filter='BM_AutoDev_Defaults|BM_Bin|BM_Rotate|BM_GaussianBlur_R2' \
           --benchmark_format=json > "$work/ours.$round.json" 2>/dev/null
  "$work/opencv_bench" "$data/rgb_u16.tif" "$data/rgb_u16_stretched.tif" "$work" 5 > "$work/opencv.$round.tsv"
  "$work/membw" "$data/lum30.i64" 6 > "$work/membw.$round.tsv"
  (cd "$work/siril" && hyperfine -N --warmup 1 --runs 5 --export-json "$work/cli.$round.json" \
     -n siril "siril-cli -d . -s stretch.ssf" -n ours "$cli process in.fits --autodev -o ours.tif" >/dev/null)
done

"$py" - "$work" "$rounds" <<'PY'
import json, statistics, sys
work, rounds = sys.argv[1], int(sys.argv[2])
def med(v): return statistics.median(v)
ours, ocv, copy, cli = {}, {}, [], {}
for r in range(1, rounds + 1):
    for b in json.load(open(f"{work}/ours.{r}.json"))["benchmarks"]:
        name = b["name"].split("/iterations")[0]
        ours.setdefault(name, []).append(b["real_time"])
        ours.setdefault(name + ":cpu", []).append(b["cpu_s"] * 1000)
        if "peak_MiB" in b:
            ours.setdefault("peak", []).append(b["peak_MiB"])
            ours.setdefault("input", []).append(b["input_MiB"])
    for line in open(f"{work}/opencv.{r}.tsv"):
        f = line.rstrip("\n").split("\t")
        if f[0] == "2" and f[1] == "64F": ocv.setdefault(f[2], []).append(float(f[3]))
    for line in open(f"{work}/membw.{r}.tsv"):
        f = line.split("\t")
        if f[0] == "copy" and f[1] == "2": copy.append(float(f[2]))
    for res in json.load(open(f"{work}/cli.{r}.json"))["results"]:
        cli.setdefault(res["command"], []).append(res["median"] * 1000)
image_mb = 6000 * 4000 * 3 * 8 / 1e6
rows = [
    ("AutoDev, whole CLI command (1.0)", med(cli["ours"]), None, med(cli["siril"]), "Siril load+stat+mtf+savetif", 1.0),
    ("AutoDev kernel, new image (orient.)", med(ours["BM_AutoDev_Defaults"]), med(ours["BM_AutoDev_Defaults:cpu"]),
     med(cli["siril"]), "Siril load+stat+mtf+savetif", None),
    ("Bin 5000 (2.0)", med(ours["BM_Bin/5000"]), med(ours["BM_Bin/5000:cpu"]), med(ocv["resize_0.5_AREA"]),
     "OpenCV resize 1/2 INTER_AREA", 2.0),
    ("Bin 7071 (1.5)", med(ours["BM_Bin/7071"]), med(ours["BM_Bin/7071:cpu"]),
     med(ocv["GaussianBlur_sigma1"]) + med(ocv["resize_0.7071_LINEAR"]), "OpenCV blur sigma 1 + resize LINEAR", 1.5),
    ("Rotate 100 (1.5)", med(ours["BM_Rotate/100"]), med(ours["BM_Rotate/100:cpu"]),
     med(ocv["warpAffine_rot10_LINEAR"]), "OpenCV warpAffine LINEAR", 1.5),
    ("Rotate 900 (1.0)", med(ours["BM_Rotate/900"]), med(ours["BM_Rotate/900:cpu"]),
     3 * image_mb / med(copy), "3 x 576 MB at copy %.1f GB/s" % med(copy), 1.0),
    ("GaussianBlur r = 2 (1.0)", med(ours["BM_GaussianBlur_R2"]), med(ours["BM_GaussianBlur_R2:cpu"]),
     med(ocv["GaussianBlur_sigma_r2"]), "OpenCV GaussianBlur sigma %.4f" % (2 / 1.1774), 1.0),
]
print(f"\n{rounds} round(s), medians; ms (ours: wall, process CPU)")
print(f"{'figure (target ratio)':38} {'ours':>8} {'cpu':>8} {'anchor':>8}  {'ratio':>5}  anchor")
for name, o, c, a, what, target in rows:
    mark = "" if target is None else ("  ok" if o / a <= target else "  MISSES")
    cpu = "-" if c is None else f"{c:.0f}"
    print(f"{name:38} {o:8.0f} {cpu:>8} {a:8.0f}  {o / a:5.2f}  {what}{mark}")
inp = med(ours["input"]); limit = inp + 3 * inp + 400
peak = med(ours["peak"])
print(f"{'AutoDev peak resident MiB (1.0)':38} {peak:8.0f} {'-':>8} {limit:8.0f}  {peak / limit:5.2f}"
      f"  input {inp:.0f} + 3 x input + 400 MiB (process peak){'  ok' if peak <= limit else '  MISSES'}")
PY
