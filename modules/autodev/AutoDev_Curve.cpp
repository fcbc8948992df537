// AutoDev's transfer curve: segments of the exact 24-bit histograms, their
// shares of the output range, and the map from each occurring luminance value
// to the final grey sample (curve, normalise back to the image's depth, tone
// blend). Only values that occur are mapped: every pow() here depends on one
// 24-bit value, so the map is the table the output pass reads.
#include "modules/autodev/AutoDev_Internal.h"

#include "host/Host_Threads.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kSrgbLinearLimit = 0.04045;
constexpr double kSrgbLinearFactor = 0.07739938080495357;  // 1 / 12.92
constexpr double kSrgbOffset = 0.055;
constexpr double kSrgbScale = 0.9478672985781991;  // 1 / 1.055
constexpr double kSrgbExponent = 2.4;
constexpr double kGammaExponent = 0.45454545454545453;  // 1 / 2.2

// Image_SetBitDepth's rule from 24 bits to the image's depth, then the clamp.
int64_t Normalise(int64_t v, int bitDepth, int64_t maxValue) {
    const int d = bitDepth - kAutoDevDepth;
    if (d > 0)
        v = static_cast<int64_t>((static_cast<uint64_t>(v) << d) | ((uint64_t{1} << d) - 1));
    else if (d < 0)
        v >>= -d;
    return std::clamp<int64_t>(v, 0, maxValue);
}

struct MapJob {
    const AutoDevHistogram* histogram;
    const std::vector<AutoDevSegment>* segments;
    const AutoDevSettings* settings;
    int bitDepth;
    int64_t maxValue;
    int64_t* out;
    uint32_t workerIndex, workerCount;
};

int64_t FinalValue(const MapJob& job, int64_t curved) {
    int64_t v = Normalise(curved, job.bitDepth, job.maxValue);
    if (job.settings->p3 != 0) v = AutoDev_ToneBlend(v, job.maxValue, job.settings->p3);
    return v;
}

void MapWorker(MapJob* job) {
    const AutoDevHistogram& h = *job->histogram;
    const std::vector<AutoDevSegment>& segments = *job->segments;
    if (segments.empty()) {
        // No weight anywhere: the identity curve. Values are dealt out in
        // interleaved blocks.
        constexpr int32_t kBlock = 4096;
        for (int64_t b = h.minValue + int64_t{kBlock} * job->workerIndex; b <= h.maxValue;
             b += int64_t{kBlock} * job->workerCount)
            for (int64_t v = b; v < std::min<int64_t>(b + kBlock, int64_t{h.maxValue} + 1); ++v)
                if (h.counts[v]) job->out[v] = FinalValue(*job, v);
        return;
    }
    for (size_t k = job->workerIndex; k < segments.size(); k += job->workerCount) {
        const AutoDevSegment& s = segments[k];
        const int32_t lo = std::max(s.first, h.minValue), hi = std::min(s.last, h.maxValue);
        for (int32_t v = lo; v <= hi; ++v)
            if (h.counts[v]) job->out[v] = FinalValue(*job, AutoDev_CurveValue(s, v));
    }
}

}  // namespace

std::vector<AutoDevSegment> AutoDev_Segments(const AutoDevHistogram& h, int64_t pixelCount) {
    // N from the 32-bit pixel count.
    const int64_t n = static_cast<int64_t>(static_cast<uint32_t>(pixelCount) >> 12);
    std::vector<AutoDevSegment> segments;
    segments.reserve(4096);
    int64_t count = 0, weight = 0, total = 0;
    int32_t first = 0;
    // Below the smallest and above the largest occurring value the tables are
    // empty: no segment closes there on its count.
    for (int32_t v = h.minValue; v <= h.maxValue; ++v) {
        count += h.counts[v];
        weight += h.weights[v];
        if (count > n) {
            segments.push_back({first, v, weight, 0, 0});
            total += weight;
            first = v + 1;
            count = 0;
            weight = 0;
        }
    }
    if (first <= kAutoDevMax) {
        segments.push_back({first, kAutoDevMax, weight, 0, 0});
        total += weight;
    }
    if (total == 0) return {};
    int64_t ya = 0;
    for (AutoDevSegment& s : segments) {
        // The weight shifted left by 24 can pass 2^63 on extreme images; the
        // quotient is formed in 128 bits.
        const int64_t share =
            static_cast<int64_t>((static_cast<__int128>(s.weight) << kAutoDevDepth) / total);
        s.ya = ya;
        s.yb = ya + share;
        ya = s.yb;
    }
    return segments;
}

int64_t AutoDev_ToneBlend(int64_t v, int64_t m, double p3) {
    const double md = static_cast<double>(m);
    const double u = std::clamp(static_cast<double>(v) / md, 0.0, 1.0);
    const double lin = u <= kSrgbLinearLimit ? u * kSrgbLinearFactor
                                             : std::pow((u + kSrgbOffset) * kSrgbScale, kSrgbExponent);
    const double g = std::pow(lin, kGammaExponent);
    return static_cast<int64_t>(static_cast<double>(v) * (1 - p3) + g * p3 * md);
}

void AutoDev_BuildOutputMap(const AutoDevHistogram& histogram, int64_t pixelCount,
                            const AutoDevSettings& settings, int bitDepth, int64_t maxValue, int64_t* out) {
    const std::vector<AutoDevSegment> segments = AutoDev_Segments(histogram, pixelCount);
    MapJob job{&histogram, &segments, &settings, bitDepth, maxValue, out, 0, 1};
    Host_RunWorkers(job, &MapWorker);
}
