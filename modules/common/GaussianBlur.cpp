// GaussianBlur: integer weights, two separable passes, bands of rows per worker.
//
// The sums are formed in double: every product and sum is an integer below
// 2^52 for the sample ranges the program uses, so the arithmetic is exact and
// vectorises, and the truncating division of such a sum by the weight total
// gives the same quotient as 64-bit integer division. Samples too large for
// that fall back to plain 64-bit integer sums.
#include "modules/common/GaussianBlur.h"

#include "host/Host_Cpu.h"

#include "host/Host_Threads.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kWeightFloor = 0.000244140625;     // 1/4096
constexpr double kExactLimit = 4503599627370496.0;  // 2^52
constexpr const char* kStageBlur = "Blur";

struct BlurShared {
    const GaussianKernel* kernel;
    int32_t width, height, stride;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    std::atomic<bool>* tooLarge;
};

bool WorkerStop(const BlurShared& s, uint32_t worker, int32_t row, int32_t rows, int pass) {
    if (s.stopped->load(std::memory_order_relaxed)) return true;
    if (KernelControl_Cancelled(s.control)) {
        s.stopped->store(true);
        return true;
    }
    if (worker == 0 && s.control && s.control->progress && (row & 63) == 0)
        KernelControl_Report(s.control, kStageBlur, (pass * 50) + static_cast<int>(int64_t{row} * 50 / rows));
    return false;
}

void BandOf(uint32_t k, uint32_t n, int32_t height, int32_t* begin, int32_t* end) {
    *begin = static_cast<int32_t>(int64_t{height} * k / n);
    *end = static_cast<int32_t>(int64_t{height} * (k + 1) / n);
}

// trunc(sum / weights) for integer-valued sum in 0..2^52 and weights > 0: the
// product with the reciprocal is within one of the quotient; exact products
// put it right. Cheaper than a division per sample.
inline double TruncQuotient(double sum, double weights, double inverse) {
    double q = std::trunc(sum * inverse);
    q -= q * weights > sum ? 1.0 : 0.0;
    q += (q + 1.0) * weights <= sum ? 1.0 : 0.0;
    return q;
}

// Horizontal pass of one row: in -> tmp (truncated quotients, stored exactly).
template <class T, class Tmp>
void BlurRowHorizontal(const GaussianKernel& kernel, const T* in, Tmp* tmp, int32_t width, double* rowD,
                       double* acc) {
    const int32_t half = kernel.half;
    const int32_t* w = kernel.weights.data();
    for (int32_t x = 0; x < width; ++x) rowD[x] = static_cast<double>(in[x]);
    const int32_t interiorBegin = half;
    const int32_t interiorEnd = width - half;  // exclusive
    if (interiorEnd > interiorBegin) {
        const int32_t count = interiorEnd - interiorBegin;
        const double w0 = w[0];
        for (int32_t i = 0; i < count; ++i) acc[i] = w0 * rowD[i];
        for (int32_t j = 1; j <= 2 * half; ++j) {
            const double wj = w[j];
            const double* src = rowD + j;
            for (int32_t i = 0; i < count; ++i) acc[i] += wj * src[i];
        }
        double wsum = 0;
        for (int32_t j = 0; j <= 2 * half; ++j) wsum += w[j];
        Tmp* dst = tmp + interiorBegin;
        const double inverse = 1.0 / wsum;
        for (int32_t i = 0; i < count; ++i) dst[i] = static_cast<Tmp>(TruncQuotient(acc[i], wsum, inverse));
    }
    for (int32_t x = 0; x < width; ++x) {
        if (x >= interiorBegin && x < interiorEnd) {
            x = interiorEnd - 1;
            continue;
        }
        double sum = 0, wsum = 0;
        const int32_t lo = std::max(-half, -x), hi = std::min(half, width - 1 - x);
        for (int32_t k = lo; k <= hi; ++k) {
            sum += w[k + half] * rowD[x + k];
            wsum += w[k + half];
        }
        tmp[x] = static_cast<Tmp>(std::trunc(sum / wsum));
    }
}

template <class T, class Tmp>
struct BlurJob {
    BlurShared shared;
    const T* in;
    Tmp* tmp;
    T* out;
    uint32_t workerIndex, workerCount;
};

template <class T, class Tmp>
HOST_HOT_LOOP void HorizontalWorker(BlurJob<T, Tmp>* job) {
    const BlurShared& s = job->shared;
    int32_t begin, end;
    BandOf(job->workerIndex, job->workerCount, s.height, &begin, &end);
    WorkPlane<double> rowD = WorkPlane_Allocate<double>(s.width);
    WorkPlane<double> acc = WorkPlane_Allocate<double>(s.width);
    double wsum = 0;
    for (int32_t w : s.kernel->weights) wsum += w;
    // A float intermediate holds integers exactly only up to 2^24.
    const double limit = std::min(kExactLimit / wsum, std::ldexp(1.0, std::numeric_limits<Tmp>::digits));
    for (int32_t y = begin; y < end; ++y) {
        if (WorkerStop(s, job->workerIndex, y - begin, end - begin, 0)) return;
        const T* row = job->in + int64_t{y} * s.stride;
        for (int32_t x = 0; x < s.width; ++x)
            if (static_cast<double>(row[x]) >= limit || static_cast<double>(row[x]) <= -limit) {
                s.tooLarge->store(true);
                return;
            }
        BlurRowHorizontal(*s.kernel, row, job->tmp + int64_t{y} * s.stride, s.width, rowD.get(), acc.get());
    }
}

template <class T, class Tmp>
HOST_HOT_LOOP void VerticalWorker(BlurJob<T, Tmp>* job) {
    const BlurShared& s = job->shared;
    const int32_t half = s.kernel->half;
    const int32_t* w = s.kernel->weights.data();
    int32_t begin, end;
    BandOf(job->workerIndex, job->workerCount, s.height, &begin, &end);
    WorkPlane<double> acc = WorkPlane_Allocate<double>(s.width);
    double* a = acc.get();
    for (int32_t y = begin; y < end; ++y) {
        if (WorkerStop(s, job->workerIndex, y - begin, end - begin, 1)) return;
        const int32_t lo = std::max(-half, -y), hi = std::min(half, s.height - 1 - y);
        double wsum = 0;
        for (int32_t k = lo; k <= hi; ++k) wsum += w[k + half];
        {
            const Tmp* src = job->tmp + int64_t{y + lo} * s.stride;
            const double wk = w[lo + half];
            for (int32_t x = 0; x < s.width; ++x) a[x] = wk * static_cast<double>(src[x]);
        }
        for (int32_t k = lo + 1; k <= hi; ++k) {
            const Tmp* src = job->tmp + int64_t{y + k} * s.stride;
            const double wk = w[k + half];
            for (int32_t x = 0; x < s.width; ++x) a[x] += wk * static_cast<double>(src[x]);
        }
        T* dst = job->out + int64_t{y} * s.stride;
        const double inverse = 1.0 / wsum;
        for (int32_t x = 0; x < s.width; ++x) dst[x] = static_cast<T>(TruncQuotient(a[x], wsum, inverse));
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
               const KernelControl* control, Tmp* scratch) {
    if (width <= 0 || height <= 0) return true;
    const GaussianKernel kernel = GaussianBlur_MakeKernel(r);
    if (kernel.half == 0) {
        for (int32_t y = 0; y < height; ++y)
            std::memcpy(out + int64_t{y} * stride, in + int64_t{y} * stride, size_t(width) * sizeof(T));
        return !KernelControl_Cancelled(control);
    }
    std::atomic<bool> stopped{false}, tooLarge{false};
    WorkPlane<Tmp> owned;
    if (!scratch) {
        owned = WorkPlane_Allocate<Tmp>(size_t(stride) * size_t(height));
        scratch = owned.get();
    }
    BlurJob<T, Tmp> job{
        {&kernel, width, height, stride, control, &stopped, &tooLarge}, in, scratch, out, 0, 1};
    Host_RunWorkers(job, &HorizontalWorker<T, Tmp>);
    if (tooLarge.load()) {
        owned.reset();
        return BlurInteger(kernel, in, out, width, height, stride, control);
    }
    if (stopped.load()) return false;
    Host_RunWorkers(job, &VerticalWorker<T, Tmp>);
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
    return BlurPlane<int64_t, double>(in, out, width, height, stride, r, control, nullptr);
}

bool GaussianBlur(const int32_t* in, int32_t* out, int32_t width, int32_t height, int32_t stride, double r,
                  const KernelControl* control, float* scratch) {
    // Quotients of 24-bit samples are 24-bit, which a float holds exactly.
    return BlurPlane<int32_t, float>(in, out, width, height, stride, r, control, scratch);
}
