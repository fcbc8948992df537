// AutoDev's computation, stage by stage:
//   1-5  the clamped source brought to 24 bits and reduced to its luminance L
//        (read from the source on the fly: the source itself is never changed);
//   6    detail suppression: L' = trunc(t * L + (1 - t) * blur(L)), t = (L / max)^(1/2.2);
//   7    the weight map from L';
//   8    the exact count and weight histograms over L;
//   9-11 segments, curve, normalise and tone blend, as one map from each
//        occurring L to its final grey value (AutoDev_Curve.cpp);
//   12   colour given back from the clamped source, or grey for monochrome data.
// Luminance planes are 24-bit values held in 32 bits. The cancel flag is tested
// between the stages and per row inside the parallel ones.
#include "modules/autodev/AutoDev_Kernel.h"

#include "host/Host_Cpu.h"
#include "host/Host_Threads.h"
#include "image/Image.h"
#include "modules/autodev/AutoDev_Internal.h"
#include "modules/common/GaussianBlur.h"
#include "modules/common/KernelBand.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr const char* kStageAutoDev = "AutoDev";
constexpr double kDetailExponent = 1 / 2.2;

bool RowStop(const KernelControl* control, std::atomic<bool>* stopped, int32_t row) {
    if ((row & 31) != 0) return false;
    if (stopped->load(std::memory_order_relaxed)) return true;
    if (KernelControl_Cancelled(control)) {
        stopped->store(true);
        return true;
    }
    return false;
}

// ---- Stages 2, 4, 5: clamp, 24 bits, luminance ------------------------------

struct LumJob {
    const ImageBuffer* source;
    int32_t* lum;
    uint8_t* used;  // one flag per 24-bit value
    const KernelControl* control;
    std::atomic<bool>* stopped;
    int32_t* ranges;  // per worker: smallest and largest L of its band
    uint32_t workerIndex, workerCount;
};

// One row: clamp to max - 1, bring to 24 bits and average. The 24-bit values
// fit 32 bits, where the division by 3 vectorises.
HOST_HOT_LOOP void LumRow(const int64_t* r, const int64_t* g, const int64_t* b, int32_t* out, int32_t width,
                          int64_t top, int shift, int32_t* lo, int32_t* hi) {
    const int right = shift > 0 ? shift : 0, left = shift < 0 ? -shift : 0;
    int32_t rowLo = *lo, rowHi = *hi;
    for (int32_t x = 0; x < width; ++x) {
        const int32_t cr = static_cast<int32_t>((std::clamp<int64_t>(r[x], 0, top) >> right) << left);
        const int32_t cg = static_cast<int32_t>((std::clamp<int64_t>(g[x], 0, top) >> right) << left);
        const int32_t cb = static_cast<int32_t>((std::clamp<int64_t>(b[x], 0, top) >> right) << left);
        const int32_t l = (cr + cg + cb) / 3;
        out[x] = l;
        rowLo = std::min(rowLo, l);
        rowHi = std::max(rowHi, l);
    }
    *lo = rowLo;
    *hi = rowHi;
}

void LumWorker(LumJob* j) {
    const ImageBuffer& s = *j->source;
    const KernelBand band = Kernel_RowBand(j->workerIndex, j->workerCount, s.height);
    const int64_t top = s.maxValue - 1;
    const int shift = static_cast<int>(s.bitDepth) - kAutoDevDepth;
    int32_t lo = kAutoDevMax, hi = 0;
    for (int32_t y = band.begin; y < band.end; ++y) {
        if (RowStop(j->control, j->stopped, y - band.begin)) return;
        int32_t* out = j->lum + int64_t{y} * s.width;
        LumRow(s.red + int64_t{y} * s.stride, s.green + int64_t{y} * s.stride, s.blue + int64_t{y} * s.stride,
               out, s.width, top, shift, &lo, &hi);
        // Marking in a second sweep keeps the loop above vectorisable. Both
        // workers may store 1 into the same flag.
        for (int32_t x = 0; x < s.width; ++x)
            std::atomic_ref<uint8_t>(j->used[out[x]]).store(1, std::memory_order_relaxed);
    }
    j->ranges[2 * j->workerIndex] = lo;
    j->ranges[2 * j->workerIndex + 1] = hi;
}

// ---- Stage 6: detail suppression --------------------------------------------

// The values that occur, ascending, into `values` (room for 2^24); returns
// how many. Written without a branch: the slot after the last is scratch.
int64_t ListValues(const uint8_t* used, int32_t lo, int32_t hi, int32_t* values) {
    int64_t n = 0;
    for (int32_t v = lo; v <= hi; ++v) {
        values[n] = v;
        n += used[v];
    }
    return n;
}

struct DetailTableJob {
    const int32_t* values;
    int64_t count;
    double* t;
    uint32_t workerIndex, workerCount;
};

void DetailTableWorker(DetailTableJob* j) {
    const double m = static_cast<double>(kAutoDevMax);
    const int64_t begin = j->count * j->workerIndex / j->workerCount;
    const int64_t end = j->count * (j->workerIndex + 1) / j->workerCount;
    for (int64_t i = begin; i < end; ++i)
        j->t[j->values[i]] = std::pow(static_cast<double>(j->values[i]) / m, kDetailExponent);
}

struct BlendJob {
    const int32_t* lum;
    int32_t* blurred;  // becomes L'
    const double* t;
    int64_t count;
    uint32_t workerIndex, workerCount;
};

void BlendWorker(BlendJob* j) {
    const int64_t begin = j->count * j->workerIndex / j->workerCount;
    const int64_t end = j->count * (j->workerIndex + 1) / j->workerCount;
    for (int64_t i = begin; i < end; ++i) {
        const int32_t l = j->lum[i];
        const double t = j->t[l];
        j->blurred[i] =
            static_cast<int32_t>(t * static_cast<double>(l) + (1 - t) * static_cast<double>(j->blurred[i]));
    }
}

// ---- Stage 8: histograms ------------------------------------------------------

// The rows [yBegin, yEnd) into one pair of tables.
void FillHistograms(const int32_t* lum, const int32_t* weight, int32_t width, int32_t yBegin, int32_t yEnd,
                    const AutoDevSettings& st, uint32_t* counts, int64_t* weights) {
    const int32_t x0 = std::clamp(st.roiX, 0, width), x1 = std::clamp(st.roiX + st.roiWidth, x0, width);
    for (int32_t y = yBegin; y < yEnd; ++y) {
        const int32_t* l = lum + int64_t{y} * width;
        const int32_t* w = weight + int64_t{y} * width;
        for (int32_t x = 0; x < width; ++x) ++counts[l[x]];
        const bool rowInside = y >= st.roiY && y < st.roiY + st.roiHeight;
        const int32_t in0 = rowInside ? x0 : width, in1 = rowInside ? x1 : width;
        for (int32_t x = 0; x < in0; ++x) weights[l[x]] += static_cast<int64_t>(w[x] * st.p4);
        for (int32_t x = in0; x < in1; ++x) weights[l[x]] += w[x];
        for (int32_t x = std::max(in1, in0); x < width; ++x)
            weights[l[x]] += static_cast<int64_t>(w[x] * st.p4);
    }
}

// Two halves of the rows, each into its own pair of tables (the second pair
// added to the first afterwards at the values that occur: sums of integers,
// so the order does not matter). More pairs would cost 192 MB each for
// increments that are mostly waiting on memory already.
constexpr uint32_t kHistogramBands = 2;

struct HistogramJob {
    const int32_t* lum;
    const int32_t* weight;
    int32_t width, height;
    const AutoDevSettings* settings;
    uint32_t* counts[kHistogramBands];
    int64_t* weights[kHistogramBands];
    uint32_t workerIndex, workerCount;
};

void HistogramWorker(HistogramJob* j) {
    const uint32_t bands = std::min(j->workerCount, kHistogramBands);
    if (j->workerIndex >= bands) return;
    const KernelBand band = Kernel_RowBand(j->workerIndex, bands, j->height);
    FillHistograms(j->lum, j->weight, j->width, band.begin, band.end, *j->settings, j->counts[j->workerIndex],
                   j->weights[j->workerIndex]);
}

// ---- Stage 12: output --------------------------------------------------------

struct OutputJob {
    const ImageBuffer* source;
    ImageBuffer* destination;
    const int32_t* lum;
    const int64_t* map;
    bool monochrome;
    uint32_t workerIndex, workerCount;
};

// trunc(a * b / d) for 0 <= a, b < 2^31 and 0 < d: a double estimate, which
// is within one of the quotient, corrected with exact 64-bit products. Three
// integer divisions per pixel would cost more than the rest of the pass.
inline int64_t ScaledQuotient(int64_t a, int64_t b, int64_t d, double inverse) {
    const int64_t product = a * b;
    int64_t q = static_cast<int64_t>(static_cast<double>(a) * static_cast<double>(b) * inverse);
    const int64_t rest = product - q * d;
    q -= rest < 0 ? 1 : 0;
    q += rest >= d ? 1 : 0;
    return q;
}

// Colour of one row, written so that it vectorises: each channel scaled by
// S / Ls, S itself where Ls is 0 (as S x 1 / 1). The planes never overlap (the
// caller stages an in-place row). Returns the largest channel written, so
// that ScaleDownRow runs only for a row that needs it.
HOST_HOT_LOOP int64_t ColourRow(const int64_t* __restrict greys, const int64_t* __restrict r,
                                const int64_t* __restrict g, const int64_t* __restrict b,
                                int64_t* __restrict dr, int64_t* __restrict dg, int64_t* __restrict db,
                                int32_t width, int64_t maxValue) {
    const int64_t top = maxValue - 1;
    constexpr double kThird = 1.0 / 3.0;
    int64_t peak = 0;
    for (int64_t x = 0; x < int64_t{width}; ++x) {
        const int64_t grey = greys[x];
        const int64_t cr = std::min(std::max(r[x], int64_t{0}), top);
        const int64_t cg = std::min(std::max(g[x], int64_t{0}), top);
        const int64_t cb = std::min(std::max(b[x], int64_t{0}), top);
        // The sum is below 2^34 (depths up to 32 bits), so its third, which lies
        // at least 1/3 from the next integer, truncates exactly from a double.
        const int64_t ls = static_cast<int64_t>(static_cast<double>(cr + cg + cb) * kThird);
        // All ones where Ls is 0; a mask rather than a branch keeps the loop whole.
        const int64_t flat = (ls - 1) >> 63;
        const int64_t d = ls | (flat & 1);
        const int64_t ur = (cr & ~flat) | (flat & 1), ug = (cg & ~flat) | (flat & 1),
                      ub = (cb & ~flat) | (flat & 1);
        const double inverse = 1.0 / static_cast<double>(d);
        const int64_t outR = ScaledQuotient(grey, ur, d, inverse);
        const int64_t outG = ScaledQuotient(grey, ug, d, inverse);
        const int64_t outB = ScaledQuotient(grey, ub, d, inverse);
        dr[x] = outR;
        dg[x] = outG;
        db[x] = outB;
        peak = std::max(peak, std::max(outR, std::max(outG, outB)));
    }
    return peak;
}

// All three channels scaled together so that the largest equals maxValue.
void ScaleDownRow(int64_t* dr, int64_t* dg, int64_t* db, int32_t width, int64_t maxValue) {
    for (int32_t x = 0; x < width; ++x) {
        const int64_t peak = std::max(dr[x], std::max(dg[x], db[x]));
        if (peak <= maxValue) continue;
        dr[x] = static_cast<int64_t>(static_cast<__int128>(dr[x]) * maxValue / peak);
        dg[x] = static_cast<int64_t>(static_cast<__int128>(dg[x]) * maxValue / peak);
        db[x] = static_cast<int64_t>(static_cast<__int128>(db[x]) * maxValue / peak);
    }
}

HOST_HOT_LOOP void GreyRow(const int32_t* l, const int64_t* map, int64_t* greys, int32_t width) {
    for (int32_t x = 0; x < width; ++x) greys[x] = map[l[x]];
}

void OutputWorker(OutputJob* j) {
    const ImageBuffer& s = *j->source;
    ImageBuffer& d = *j->destination;
    const KernelBand band = Kernel_RowBand(j->workerIndex, j->workerCount, s.height);
    const int64_t maxValue = s.maxValue;
    const bool inPlace = s.red == d.red || s.green == d.green || s.blue == d.blue;
    // Per worker: the row's grey values and, in place, the staged colour rows.
    std::vector<int64_t> rows(size_t(s.width) * (inPlace ? 4 : 1));
    int64_t* greys = rows.data();
    for (int32_t y = band.begin; y < band.end; ++y) {
        const int32_t* l = j->lum + int64_t{y} * s.width;
        int64_t* dr = d.red + int64_t{y} * d.stride;
        int64_t* dg = d.green + int64_t{y} * d.stride;
        int64_t* db = d.blue + int64_t{y} * d.stride;
        GreyRow(l, j->map, greys, s.width);
        if (j->monochrome) {
            for (int64_t* row : {dr, dg, db}) std::memcpy(row, greys, size_t(s.width) * sizeof(int64_t));
            continue;
        }
        const int64_t* r = s.red + int64_t{y} * s.stride;
        const int64_t* g = s.green + int64_t{y} * s.stride;
        const int64_t* b = s.blue + int64_t{y} * s.stride;
        int64_t* outR = inPlace ? greys + s.width : dr;
        int64_t* outG = inPlace ? greys + 2 * int64_t{s.width} : dg;
        int64_t* outB = inPlace ? greys + 3 * int64_t{s.width} : db;
        if (ColourRow(greys, r, g, b, outR, outG, outB, s.width, maxValue) > maxValue)
            ScaleDownRow(outR, outG, outB, s.width, maxValue);
        if (inPlace) {
            std::memcpy(dr, outR, size_t(s.width) * sizeof(int64_t));
            std::memcpy(dg, outG, size_t(s.width) * sizeof(int64_t));
            std::memcpy(db, outB, size_t(s.width) * sizeof(int64_t));
        }
    }
}

}  // namespace

bool AutoDev_IsMonochrome(const ImageBuffer* image) {
    if (!image) return true;
    const int64_t threshold = image->bitDepth >= 8 ? int64_t{1} << (image->bitDepth - 8) : 1;
    for (int32_t y = 0; y < image->height; ++y) {
        const int64_t* r = image->red + int64_t{y} * image->stride;
        const int64_t* g = image->green + int64_t{y} * image->stride;
        const int64_t* b = image->blue + int64_t{y} * image->stride;
        bool colour = false;
        for (int32_t x = 0; x < image->width; ++x)
            colour |= std::abs(r[x] - g[x]) >= threshold || std::abs(r[x] - b[x]) >= threshold ||
                      std::abs(g[x] - b[x]) >= threshold;
        if (colour) return false;
    }
    return true;
}

bool AutoDev_RunInto(const ImageBuffer* source, ImageBuffer* destination, const AutoDevSettings& settings,
                     const KernelControl* control) {
    if (!source || !destination || source->width <= 0 || source->height <= 0) return false;
    if (destination->width != source->width || destination->height != source->height) return false;
    const int32_t width = source->width, height = source->height;
    const int64_t pixels = int64_t{width} * height;
    std::atomic<bool> stopped{false};

    KernelControl_Report(control, kStageAutoDev, 0);
    WorkPlane<int32_t> lum = WorkPlane_Allocate<int32_t>(size_t(pixels));
    WorkPlane<uint8_t> used = WorkPlane_AllocateZeroed<uint8_t>(kAutoDevValues);
    const uint32_t workers = Host_GetProcessorCount();
    std::vector<int32_t> ranges(2 * size_t(workers));
    for (uint32_t k = 0; k < workers; ++k) {
        ranges[2 * k] = kAutoDevMax;
        ranges[2 * k + 1] = 0;
    }
    Host_RunWorkers(LumJob{source, lum.get(), used.get(), control, &stopped, ranges.data(), 0, 1},
                    &LumWorker);
    if (stopped.load()) return false;
    int32_t lo = kAutoDevMax, hi = 0;
    for (uint32_t k = 0; k < workers; ++k) {
        lo = std::min(lo, ranges[2 * k]);
        hi = std::max(hi, ranges[2 * k + 1]);
    }
    if (KernelControl_Cancelled(control)) return false;
    KernelControl_Report(control, kStageAutoDev, 10);

    // The values that occur: every table over the 24-bit values below is
    // written, cleared and read at these only, which on the quick preview's
    // small copy is a small part of the 2^24.
    WorkPlane<int32_t> values = WorkPlane_Allocate<int32_t>(kAutoDevValues);
    const int64_t valueCount = ListValues(used.get(), lo, hi, values.get());
    used.reset();

    // Stage 6: t depends on one 24-bit value only; it is worked out once for
    // every value that occurs.
    WorkPlane<int32_t> blended = WorkPlane_Allocate<int32_t>(size_t(pixels));
    {
        WorkPlane<double> t = WorkPlane_Allocate<double>(kAutoDevValues);
        Host_RunWorkers(DetailTableJob{values.get(), valueCount, t.get(), 0, 1}, &DetailTableWorker);
        if (!GaussianBlur(lum.get(), blended.get(), width, height, width, settings.p1, control)) return false;
        Host_RunWorkers(BlendJob{lum.get(), blended.get(), t.get(), pixels, 0, 1}, &BlendWorker);
    }
    if (KernelControl_Cancelled(control)) return false;
    KernelControl_Report(control, kStageAutoDev, 40);

    // Stage 7.
    WorkPlane<int32_t> weight = WorkPlane_Allocate<int32_t>(size_t(pixels));
    if (!AutoDev_WeightMap(blended.get(), weight.get(), width, height, width, settings.p2, kAutoDevMax,
                           control))
        return false;
    blended.reset();
    KernelControl_Report(control, kStageAutoDev, 60);

    // Stages 8 to 11.
    WorkPlane<int64_t> map = WorkPlane_Allocate<int64_t>(kAutoDevValues);
    {
        WorkPlane<uint32_t> counts = WorkPlane_Allocate<uint32_t>(kAutoDevValues);
        WorkPlane<int64_t> weights = WorkPlane_Allocate<int64_t>(kAutoDevValues);
        const bool split = workers > 1;
        WorkPlane<uint32_t> counts2 = split ? WorkPlane_Allocate<uint32_t>(kAutoDevValues) : nullptr;
        WorkPlane<int64_t> weights2 = split ? WorkPlane_Allocate<int64_t>(kAutoDevValues) : nullptr;
        for (int64_t i = 0; i < valueCount; ++i) counts[values[i]] = 0, weights[values[i]] = 0;
        if (split)
            for (int64_t i = 0; i < valueCount; ++i) counts2[values[i]] = 0, weights2[values[i]] = 0;
        Host_RunWorkers(HistogramJob{lum.get(),
                                     weight.get(),
                                     width,
                                     height,
                                     &settings,
                                     {counts.get(), counts2.get()},
                                     {weights.get(), weights2.get()},
                                     0,
                                     1},
                        &HistogramWorker);
        weight.reset();
        if (split)
            for (int64_t i = 0; i < valueCount; ++i) {
                counts[values[i]] += counts2[values[i]];
                weights[values[i]] += weights2[values[i]];
            }
        counts2.reset();
        weights2.reset();
        if (KernelControl_Cancelled(control)) return false;
        KernelControl_Report(control, kStageAutoDev, 75);
        const AutoDevHistogram histogram{counts.get(), weights.get(), lo, hi, values.get(), valueCount};
        AutoDev_BuildOutputMap(histogram, pixels, settings, source->bitDepth, source->maxValue, map.get());
    }
    if (KernelControl_Cancelled(control)) return false;
    KernelControl_Report(control, kStageAutoDev, 85);

    // Stage 12; from here on the destination is written and nothing cancels.
    destination->bitDepth = source->bitDepth;
    destination->maxValue = source->maxValue;
    destination->mono = source->mono;
    Host_RunWorkers(OutputJob{source, destination, lum.get(), map.get(), settings.monochrome, 0, 1},
                    &OutputWorker);
    KernelControl_Report(control, kStageAutoDev, 100);
    return true;
}

ImageBuffer* AutoDev_Run(const ImageBuffer* source, const AutoDevSettings& settings,
                         const KernelControl* control) {
    if (!source) return nullptr;
    ImagePtr result(Image_Create(source->width, source->height));
    if (source->attachment && source->attachmentSize > 0) {
        result->attachment = static_cast<uint8_t*>(WorkPlane_AllocateBytes(source->attachmentSize, 1));
        std::memcpy(result->attachment, source->attachment, source->attachmentSize);
        result->attachmentSize = source->attachmentSize;
    }
    if (!AutoDev_RunInto(source, result.get(), settings, control)) return nullptr;
    return result.release();
}

void AutoDev_ShadeOutsideRoi(ImageBuffer* preview, const AutoDevSettings& settings) {
    if (!preview) return;
    const int64_t max = preview->maxValue;
    for (int32_t y = 0; y < preview->height; ++y) {
        const bool rowInside = y >= settings.roiY && y < settings.roiY + settings.roiHeight;
        for (int64_t* plane : {preview->red, preview->green, preview->blue}) {
            int64_t* row = plane + int64_t{y} * preview->stride;
            for (int32_t x = 0; x < preview->width; ++x) {
                const bool inside = rowInside && x >= settings.roiX && x < settings.roiX + settings.roiWidth;
                if (!inside) row[x] = (3 * row[x] + max) / 4;
            }
        }
    }
}
