// GaussianBlur: integer weights, two separable passes fused per band of rows.
//
// Each worker takes a band of output rows. It filters the source rows it needs
// horizontally into a ring of 2 * half + 1 rows and forms every output row
// from that ring at once, so the intermediate never goes to memory: one read
// of the input and one write of the output per plane, which is what the pass
// costs on a large image.
//
// The sums are formed in double: every product and sum is an integer below
// 2^52 for the sample ranges the program uses, so the arithmetic is exact in
// any order (which lets the symmetric taps share one product) and vectorises,
// and the truncating division of such a sum by the weight total gives the same
// quotient as 64-bit integer division. Samples too large for that fall back to
// plain 64-bit integer sums. Taps whose integer weight is 0 add nothing to
// either sum and are left out.
#include "modules/common/GaussianBlur.h"

#include "host/Host_Cpu.h"
#include "host/Host_Threads.h"
#include "modules/common/KernelBand.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kWeightFloor = 0.000244140625;     // 1/4096
constexpr double kExactLimit = 4503599627370496.0;  // 2^52
constexpr int32_t kChunk = 512;                     // columns summed at a time: stays in L1
constexpr const char* kStageBlur = "Blur";

#define BLUR_INLINE [[gnu::always_inline]] inline

// The taps that carry weight: half-width and weights, offset -half first.
struct Taps {
    int32_t half = 0;
    std::vector<double> w;
    double total = 0;
};

Taps EffectiveTaps(const GaussianKernel& kernel) {
    int32_t trim = 0;
    while (trim < kernel.half && kernel.weights[size_t(trim)] == 0) ++trim;
    Taps taps;
    taps.half = kernel.half - trim;
    taps.w.assign(kernel.weights.begin() + trim, kernel.weights.end() - trim);
    for (const double w : taps.w) taps.total += w;
    return taps;
}

// trunc(sum / weights) for integer-valued sum in 0..2^52 and weights > 0: the
// product with the reciprocal is within one of the quotient; exact products
// put it right. Cheaper than a division per sample.
BLUR_INLINE double TruncQuotient(double sum, double weights, double inverse) {
    const double q = std::trunc(sum * inverse);
    const double rest = sum - q * weights;  // exact: both products are integers below 2^53
    return q + ((rest >= weights ? 1.0 : 0.0) - (rest < 0 ? 1.0 : 0.0));
}

// Exact conversions between samples and doubles for integers in 0..2^52,
// written so that they vectorise on every instruction set (64-bit integer
// <-> double conversions have no vector form before AVX-512).
constexpr double kTwo52 = 4503599627370496.0;

template <class T>
BLUR_INLINE double ToDouble(T v) {
    if constexpr (sizeof(T) == 8)
        return std::bit_cast<double>(static_cast<int64_t>(v) | std::bit_cast<int64_t>(kTwo52)) - kTwo52;
    else
        return static_cast<double>(v);
}

template <class T>
BLUR_INLINE T FromDouble(double q) {
    if constexpr (sizeof(T) == 8)
        return static_cast<T>(std::bit_cast<int64_t>(q + kTwo52) - std::bit_cast<int64_t>(kTwo52));
    else
        return static_cast<T>(q);
}

// Horizontal pass of one row already in double: rowD -> dst (quotients).
template <class Tmp>
BLUR_INLINE void FilterRow(const Taps& t, const double* rowD, Tmp* dst, double* acc, int32_t width) {
    const int32_t half = t.half;
    const double* w = t.w.data() + half;  // w[-half..half]
    const int32_t interiorEnd = width - half;
    const double inverse = 1.0 / t.total;
    for (int32_t c0 = half; c0 < interiorEnd; c0 += kChunk) {
        const int32_t n = std::min(kChunk, interiorEnd - c0);
        const double* center = rowD + c0;
        const double w0 = w[0];
        for (int32_t i = 0; i < n; ++i) acc[i] = w0 * center[i];
        for (int32_t j = 1; j <= half; ++j) {
            const double wj = w[j];
            const double* left = center - j;
            const double* right = center + j;
            for (int32_t i = 0; i < n; ++i) acc[i] += wj * (left[i] + right[i]);
        }
        for (int32_t i = 0; i < n; ++i)
            dst[c0 + i] = static_cast<Tmp>(TruncQuotient(acc[i], t.total, inverse));
    }
    // The edges, where only the taps inside the row count.
    for (int32_t x = 0; x < width; ++x) {
        if (x == half && interiorEnd > half) x = interiorEnd;
        if (x >= width) break;
        double sum = 0, wsum = 0;
        const int32_t lo = std::max(-half, -x), hi = std::min(half, width - 1 - x);
        for (int32_t k = lo; k <= hi; ++k) {
            sum += w[k] * rowD[x + k];
            wsum += w[k];
        }
        dst[x] = static_cast<Tmp>(std::trunc(sum / wsum));
    }
}

// Vertical pass of one output row from the filtered rows rows[lo..hi]
// (rows[k] is the filtered row at offset k).
template <class T, class Tmp>
BLUR_INLINE void CombineRows(const Taps& t, const Tmp* const* rows, int32_t lo, int32_t hi, T* dst,
                             double* acc, int32_t width) {
    const double* w = t.w.data() + t.half;
    double wsum = 0;
    for (int32_t k = lo; k <= hi; ++k) wsum += w[k];
    const double inverse = 1.0 / wsum;
    const int32_t pairs = std::min(-lo, hi);  // offsets +-k both inside for k <= pairs
    for (int32_t c0 = 0; c0 < width; c0 += kChunk) {
        const int32_t n = std::min(kChunk, width - c0);
        {
            const Tmp* center = rows[0] + c0;
            const double w0 = w[0];
            for (int32_t i = 0; i < n; ++i) acc[i] = w0 * static_cast<double>(center[i]);
        }
        for (int32_t k = 1; k <= pairs; ++k) {
            const Tmp* above = rows[-k] + c0;
            const Tmp* below = rows[k] + c0;
            const double wk = w[k];
            for (int32_t i = 0; i < n; ++i)
                acc[i] += wk * (static_cast<double>(above[i]) + static_cast<double>(below[i]));
        }
        // Near the top or bottom edge one side has more taps inside than the other.
        for (int32_t k = lo; k < -pairs; ++k) {
            const Tmp* src = rows[k] + c0;
            const double wk = w[k];
            for (int32_t i = 0; i < n; ++i) acc[i] += wk * static_cast<double>(src[i]);
        }
        for (int32_t k = pairs + 1; k <= hi; ++k) {
            const Tmp* src = rows[k] + c0;
            const double wk = w[k];
            for (int32_t i = 0; i < n; ++i) acc[i] += wk * static_cast<double>(src[i]);
        }
        T* out = dst + c0;
        for (int32_t i = 0; i < n; ++i) out[i] = FromDouble<T>(TruncQuotient(acc[i], wsum, inverse));
    }
}

template <class T, class Tmp>
struct BlurJob {
    Taps taps;
    const T* in;
    T* out;
    int32_t width, height, stride;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    std::atomic<bool>* tooLarge;
    uint32_t workerIndex, workerCount;
};

template <class T, class Tmp>
HOST_HOT_LOOP void BlurWorker(BlurJob<T, Tmp>* job) {
    const Taps& t = job->taps;
    const int32_t half = t.half, width = job->width, height = job->height;
    const auto [begin, end] = Kernel_RowBand(job->workerIndex, job->workerCount, height);
    if (begin >= end) return;
    // The ring holds the filtered rows y - half .. y + half of output row y.
    const int32_t ringRows = std::min(2 * half + 1, height);
    WorkPlane<Tmp> ring = WorkPlane_Allocate<Tmp>(size_t(ringRows) * size_t(width));
    WorkPlane<double> rowD = WorkPlane_Allocate<double>(size_t(width));
    WorkPlane<double> acc = WorkPlane_Allocate<double>(size_t(kChunk));
    std::vector<const Tmp*> window(size_t(2 * half + 1));
    const Tmp** rows = window.data() + half;
    // A float intermediate holds integers exactly only up to 2^24.
    const double limit = std::min(kExactLimit / t.total, std::ldexp(1.0, std::numeric_limits<Tmp>::digits));
    auto slot = [&](int32_t row) { return ring.get() + size_t(row % ringRows) * size_t(width); };
    int32_t next = std::max(0, begin - half);  // the next source row to filter
    for (int32_t y = begin; y < end; ++y) {
        if (KernelControl_RowStop(job->control, job->stopped, kStageBlur, job->workerIndex, y - begin,
                                  end - begin))
            return;
        const int32_t lo = std::max(-half, -y), hi = std::min(half, height - 1 - y);
        for (; next <= y + hi; ++next) {
            const T* src = job->in + int64_t{next} * job->stride;
            T least = 0, largest = 0;
            for (int32_t x = 0; x < width; ++x) {
                least = std::min(least, src[x]);
                largest = std::max(largest, src[x]);
                rowD[x] = ToDouble(src[x]);
            }
            // Negative samples would need a quotient truncated towards zero.
            if (static_cast<double>(largest) >= limit || least < 0) {
                job->tooLarge->store(true);
                job->stopped->store(true);
                return;
            }
            FilterRow(t, rowD.get(), slot(next), acc.get(), width);
        }
        for (int32_t k = lo; k <= hi; ++k) rows[k] = slot(y + k);
        CombineRows(t, rows, lo, hi, job->out + int64_t{y} * job->stride, acc.get(), width);
    }
}

// Exact 64-bit integer form for samples beyond the double path's range.
template <class T>
bool BlurInteger(const GaussianKernel& kernel, const T* in, T* out, int32_t width, int32_t height,
                 int32_t stride, const KernelControl* control) {
    const int32_t half = kernel.half;
    const int32_t* w = kernel.weights.data();
    WorkPlane<int64_t> tmp = WorkPlane_Allocate<int64_t>(size_t(stride) * size_t(height));
    for (int32_t y = 0; y < height; ++y) {
        if (KernelControl_Cancelled(control)) return false;
        const T* row = in + int64_t{y} * stride;
        for (int32_t x = 0; x < width; ++x) {
            int64_t sum = 0, wsum = 0;
            for (int32_t k = std::max(-half, -x); k <= std::min(half, width - 1 - x); ++k) {
                sum += w[k + half] * int64_t{row[x + k]};
                wsum += w[k + half];
            }
            tmp[int64_t{y} * stride + x] = sum / wsum;
        }
    }
    for (int32_t y = 0; y < height; ++y) {
        if (KernelControl_Cancelled(control)) return false;
        for (int32_t x = 0; x < width; ++x) {
            int64_t sum = 0, wsum = 0;
            for (int32_t k = std::max(-half, -y); k <= std::min(half, height - 1 - y); ++k) {
                sum += w[k + half] * tmp[int64_t{y + k} * stride + x];
                wsum += w[k + half];
            }
            out[int64_t{y} * stride + x] = static_cast<T>(sum / wsum);
        }
    }
    return true;
}

template <class T, class Tmp>
bool BlurPlane(const T* in, T* out, int32_t width, int32_t height, int32_t stride, double r,
               const KernelControl* control) {
    if (width <= 0 || height <= 0) return true;
    const GaussianKernel kernel = GaussianBlur_MakeKernel(r);
    const Taps taps = EffectiveTaps(kernel);
    if (taps.half == 0) {
        // One tap (or side taps of weight 0): trunc(w * v / w) is v.
        for (int32_t y = 0; y < height; ++y)
            std::memcpy(out + int64_t{y} * stride, in + int64_t{y} * stride, size_t(width) * sizeof(T));
        return !KernelControl_Cancelled(control);
    }
    std::atomic<bool> stopped{false}, tooLarge{false};
    BlurJob<T, Tmp> job{taps, in, out, width, height, stride, control, &stopped, &tooLarge, 0, 1};
    Host_RunWorkers(job, &BlurWorker<T, Tmp>);
    if (tooLarge.load()) return BlurInteger(kernel, in, out, width, height, stride, control);
    return !stopped.load();
}

}  // namespace

GaussianKernel GaussianBlur_MakeKernel(double r) {
    GaussianKernel kernel;
    if (!(r > 0)) return kernel;
    // n: the smallest k >= 1 whose weight is not above 1/4096.
    int32_t n = 1;
    while (std::exp(-kLn2 * (double(n) * double(n)) / (r * r)) > kWeightFloor) ++n;
    if (n < 2) return kernel;
    kernel.half = n - 1;
    kernel.weights.resize(size_t(2 * kernel.half + 1));
    for (int32_t k = -kernel.half; k <= kernel.half; ++k) {
        const double weight = std::exp(-kLn2 * (double(k) * double(k)) / (r * r));
        kernel.weights[size_t(k + kernel.half)] = static_cast<int32_t>(weight * 256.0);
    }
    return kernel;
}

bool GaussianBlur(const int64_t* in, int64_t* out, int32_t width, int32_t height, int32_t stride, double r,
                  const KernelControl* control) {
    return BlurPlane<int64_t, double>(in, out, width, height, stride, r, control);
}

bool GaussianBlur(const int32_t* in, int32_t* out, int32_t width, int32_t height, int32_t stride, double r,
                  const KernelControl* control) {
    // Quotients of 24-bit samples are 24-bit, which a float holds exactly.
    return BlurPlane<int32_t, float>(in, out, width, height, stride, r, control);
}
