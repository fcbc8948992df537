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

// Each worker maps a stretch of the listed values; the segments cover every
// value from 0 to 2^24 - 1, so each value lies in exactly one.
void MapWorker(MapJob* job) {
    const AutoDevHistogram& h = *job->histogram;
    const std::vector<AutoDevSegment>& segments = *job->segments;
    const int64_t begin = h.valueCount * job->workerIndex / job->workerCount;
    const int64_t end = h.valueCount * (job->workerIndex + 1) / job->workerCount;
    if (begin >= end) return;
    if (segments.empty()) {  // no weight anywhere: the identity curve
        for (int64_t i = begin; i < end; ++i) job->out[h.values[i]] = FinalValue(*job, h.values[i]);
        return;
    }
    auto s = std::lower_bound(segments.begin(), segments.end(), h.values[begin],
                              [](const AutoDevSegment& a, int32_t v) { return a.last < v; });
    for (int64_t i = begin; i < end; ++i) {
        const int32_t v = h.values[i];
        while (s->last < v) ++s;
        job->out[v] = FinalValue(*job, AutoDev_CurveValue(*s, v));
    }
}

// The occurring values in ascending order: the list, or every value of the
// range (the tables are zero at the others).
template <class Fn>
void ForEachValue(const AutoDevHistogram& h, Fn&& fn) {
    if (h.values) {
        for (int64_t i = 0; i < h.valueCount; ++i) fn(h.values[i]);
        return;
    }
    for (int32_t v = h.minValue; v <= h.maxValue; ++v) fn(v);
}

}  // namespace

std::vector<AutoDevSegment> AutoDev_Segments(const AutoDevHistogram& h, int64_t pixelCount) {
    // N from the 32-bit pixel count.
    const int64_t n = static_cast<int64_t>(static_cast<uint32_t>(pixelCount) >> 12);
    std::vector<AutoDevSegment> segments;
    segments.reserve(4096);
    int64_t count = 0, weight = 0, total = 0;
    int32_t first = 0;
    // At a value that does not occur the count does not grow, so no segment
    // closes there: walking the occurring values alone gives the same ones.
    ForEachValue(h, [&](int32_t v) {
        count += h.counts[v];
        weight += h.weights[v];
        if (count > n) {
            segments.push_back({first, v, weight, 0, 0});
            total += weight;
            first = v + 1;
            count = 0;
            weight = 0;
        }
    });
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
