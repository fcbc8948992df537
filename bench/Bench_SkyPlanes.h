// The image the benchmarks work on: 6000 x 4000 RGB at the working 30 bits,
// a linear deep-sky frame made as the comparison tools' generator makes its
// own (sky with a per-channel gradient, faint nebula lobes, 5000 stars, shot
// and read noise, clipped to 0..1), so that compression and the rest see the
// same kind of content in both.
//
// PELLUCIDA_BENCH_PLANES names a file of little-endian int64 samples to use
// instead: three 6000 x 4000 planes, or one that serves as all three (the
// comparison tools' own luminance plane, for an exact like-for-like run), or a
// 6000 x 4000 FITS file (name ending in .fits or .fit) read by Fits_Read.
#pragma once

#include "image/Image.h"

#include <string>

constexpr int kBenchSkyWidth = 6000;
constexpr int kBenchSkyHeight = 4000;

// Made on first use, kept for the whole run.
ImageBuffer& Bench_SkyImage();

// Where the planes came from, for the report.
const std::string& Bench_SkySource();
