// BinImage: box averaging or Gaussian prefilter plus bilinear resampling.
//
// Box path: source pixel (x, y) goes to (trunc(x * s), trunc(y * s)) when that
// lies inside the output; the count of pixels per output pixel is the count of
// its source columns times the count of its source rows, held in 64 bits so no
// factor can wrap it.
#include "modules/bin/Bin_Kernel.h"

#include "host/Host_Cpu.h"
#include "host/Host_Threads.h"
#include "image/Image.h"
#include "modules/common/GaussianBlur.h"
#include "modules/common/KernelBand.h"
#include "modules/common/KernelImage.h"
#include "modules/common/SampleBilinear.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr const char* kStageBin = "Bin";
constexpr double kLog2E = 1.4426950408889634;

// Truncating division by a count that is a power of two, for either sign.
inline int64_t DivideByPowerOfTwo(int64_t sum, int shift) {
    const int64_t bias = (sum >> 63) & ((int64_t{1} << shift) - 1);
    return (sum + bias) >> shift;
}

// ---- Box path ----------------------------------------------------------------

struct BoxJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    const int32_t* colOf;     // output column of each source column (>= out width: dropped)
    const int64_t* colCount;  // source columns per output column
    const int32_t* rowStart;  // first source row of each output row, rowStart[H'] = end
    int32_t block;            // q when every column block is x / q, else 0
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

// Halving, the module's default: each output sample is the four samples of
// its 2 x 2 block over 4, in one pass without the sums.
inline void HalveRow(const int64_t* p0, const int64_t* p1, int64_t* out, int32_t width, int64_t maxValue) {
    for (int32_t X = 0; X < width; ++X) {
        const int64_t sum = p0[2 * X] + p0[2 * X + 1] + p1[2 * X] + p1[2 * X + 1];
        out[X] = std::clamp<int64_t>(DivideByPowerOfTwo(sum, 2), 0, maxValue);
    }
}

HOST_HOT_LOOP void BoxWorker(BoxJob* j) {
    const ImageBuffer& s = *j->source;
    ImageBuffer& o = *j->out;
    const KernelBand band = Kernel_RowBand(j->workerIndex, j->workerCount, o.height);
    std::vector<int64_t> sums(size_t(o.width));
    const int64_t* planesIn[3] = {s.red, s.green, s.blue};
    int64_t* planesOut[3] = {o.red, o.green, o.blue};
    for (int32_t Y = band.begin; Y < band.end; ++Y) {
        if (KernelControl_RowStop(j->control, j->stopped, kStageBin, j->workerIndex, Y - band.begin,
                                  band.end - band.begin))
            return;
        const int32_t y0 = j->rowStart[Y], y1 = j->rowStart[Y + 1];
        const int64_t rowCount = y1 - y0;
        if (j->block == 2 && rowCount == 2) {
            for (int c = 0; c < 3; ++c) {
                const int64_t* p0 = planesIn[c] + int64_t{y0} * s.stride;
                HalveRow(p0, p0 + s.stride, planesOut[c] + int64_t{Y} * o.stride, o.width, o.maxValue);
            }
            continue;
        }
        for (int c = 0; c < 3; ++c) {
            std::fill(sums.begin(), sums.end(), 0);
            int64_t* sum = sums.data();
            for (int32_t y = y0; y < y1; ++y) {
                const int64_t* p = planesIn[c] + int64_t{y} * s.stride;
                if (j->block == 1) {
                    for (int32_t X = 0; X < o.width; ++X) sum[X] += p[X];
                } else if (j->block == 2) {
                    for (int32_t X = 0; X < o.width; ++X) sum[X] += p[2 * X] + p[2 * X + 1];
                } else if (j->block > 2) {
                    const int32_t q = j->block;
                    for (int32_t X = 0; X < o.width; ++X) {
                        int64_t t = 0;
                        for (int32_t i = 0; i < q; ++i) t += p[X * q + i];
                        sum[X] += t;
                    }
                } else {
                    for (int32_t x = 0; x < s.width; ++x)
                        if (j->colOf[x] < o.width) sum[j->colOf[x]] += p[x];
                }
            }
            int64_t* out = planesOut[c] + int64_t{Y} * o.stride;
            const int64_t maxValue = o.maxValue;
            const uint64_t count = static_cast<uint64_t>(int64_t{j->block} * rowCount);
            if (j->block > 0 && std::has_single_bit(count)) {
                const int shift = std::countr_zero(count);
                for (int32_t X = 0; X < o.width; ++X)
                    out[X] = std::clamp<int64_t>(DivideByPowerOfTwo(sum[X], shift), 0, maxValue);
            } else {
                for (int32_t X = 0; X < o.width; ++X)
                    out[X] = std::clamp<int64_t>(sum[X] / (j->colCount[X] * rowCount), 0, maxValue);
            }
        }
    }
}

ImageBuffer* BoxPath(const ImageBuffer* image, double s, int32_t outW, int32_t outH,
                     const KernelControl* control) {
    std::vector<int32_t> colOf(size_t(image->width));
    std::vector<int64_t> colCount(size_t(outW), 0);
    for (int32_t x = 0; x < image->width; ++x) {
        colOf[size_t(x)] = static_cast<int32_t>(x * s);
        if (colOf[size_t(x)] < outW) ++colCount[size_t(colOf[size_t(x)])];
    }
    // Output row Y gathers the source rows whose trunc(y * s) is Y: a run,
    // since the mapping only ever steps up by at most one.
    std::vector<int32_t> rowStart(size_t(outH) + 1, image->height);
    for (int32_t y = image->height - 1; y >= 0; --y) {
        const int32_t Y = static_cast<int32_t>(y * s);
        if (Y < outH) rowStart[size_t(Y)] = y;
    }
    rowStart[size_t(outH)] = rowStart[size_t(outH) - 1];
    for (int32_t y = rowStart[size_t(outH) - 1]; y < image->height && static_cast<int32_t>(y * s) < outH; ++y)
        rowStart[size_t(outH)] = y + 1;
    // Uniform blocks of q columns, the common case, take the loops without
    // the column table.
    const int32_t q = static_cast<int32_t>(1 / s);
    bool uniform = true;
    for (int32_t x = 0; x < image->width && uniform; ++x) {
        const int32_t expected = x / q < outW ? x / q : outW;
        uniform = (colOf[size_t(x)] < outW ? colOf[size_t(x)] : outW) == expected;
    }
    ImagePtr out(Kernel_CreateLike(image, outW, outH));
    std::atomic<bool> stopped{false};
    BoxJob job{
        image, out.get(), colOf.data(), colCount.data(), rowStart.data(), uniform ? q : 0, control, &stopped,
        0,     1};
    Host_RunWorkers(job, &BoxWorker);
    if (stopped.load()) return nullptr;
    return out.release();
}

// ---- Resampling path ---------------------------------------------------------

struct ResampleJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    const int32_t* ix;
    const double* tx;
    double fy;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

HOST_HOT_LOOP void ResampleWorker(ResampleJob* j) {
    const ImageBuffer& s = *j->source;
    ImageBuffer& o = *j->out;
    const KernelBand band = Kernel_RowBand(j->workerIndex, j->workerCount, o.height);
    const int64_t* planesIn[3] = {s.red, s.green, s.blue};
    int64_t* planesOut[3] = {o.red, o.green, o.blue};
    for (int32_t y = band.begin; y < band.end; ++y) {
        if (KernelControl_RowStop(j->control, j->stopped, kStageBin, j->workerIndex, y - band.begin,
                                  band.end - band.begin))
            return;
        const double sy = y * j->fy;
        const int32_t iy = static_cast<int32_t>(sy);
        const double ty = sy - iy;
        const bool rowInside = iy >= 0 && iy < s.height;
        const int32_t dy = iy + 1 < s.height ? 1 : 0;
        for (int c = 0; c < 3; ++c) {
            int64_t* out = planesOut[c] + int64_t{y} * o.stride;
            if (!rowInside) {
                std::fill(out, out + o.width, 0);
                continue;
            }
            for (int32_t x = 0; x < o.width; ++x) {
                const int32_t ix = j->ix[x];
                if (ix < 0 || ix >= s.width) {
                    out[x] = 0;
                    continue;
                }
                const int32_t dx = ix + 1 < s.width ? 1 : 0;
                out[x] =
                    SampleBilinear_Plane(planesIn[c], s.stride, ix, iy, dx, dy, j->tx[x], ty, o.maxValue);
            }
        }
    }
}

ImageBuffer* ResamplePath(const ImageBuffer* image, double s, int32_t outW, int32_t outH,
                          const KernelControl* control) {
    const double q = 1 / s;
    const double r = Bin_PrefilterRadius(q);
    ImagePtr filtered;
    const ImageBuffer* source = image;
    if (r != 0) {
        filtered.reset(Kernel_CreateLike(image, image->width, image->height));
        const int64_t* in[3] = {image->red, image->green, image->blue};
        int64_t* out[3] = {filtered->red, filtered->green, filtered->blue};
        for (int c = 0; c < 3; ++c)
            if (!GaussianBlur(in[c], out[c], image->width, image->height, image->stride, r, control))
                return nullptr;
        source = filtered.get();
    }
    const double fy = static_cast<double>(image->height) / outH;
    const double fx = static_cast<double>(image->width) / outW;
    std::vector<int32_t> ix(static_cast<size_t>(outW));
    std::vector<double> tx(static_cast<size_t>(outW));
    for (int32_t x = 0; x < outW; ++x) {
        const double sx = x * fx;
        ix[size_t(x)] = static_cast<int32_t>(sx);
        tx[size_t(x)] = sx - ix[size_t(x)];
    }
    ImagePtr result(Kernel_CreateLike(image, outW, outH));
    std::atomic<bool> stopped{false};
    ResampleJob job{source, result.get(), ix.data(), tx.data(), fy, control, &stopped, 0, 1};
    Host_RunWorkers(job, &ResampleWorker);
    if (stopped.load()) return nullptr;
    return result.release();
}

}  // namespace

void Bin_OutputSize(int32_t width, int32_t height, double s, int32_t* outWidth, int32_t* outHeight) {
    *outWidth = static_cast<int32_t>(width * s);
    *outHeight = static_cast<int32_t>(height * s);
}

double Bin_PrefilterRadius(double q) {
    const double p = 100 / std::max(q, 1.0);
    return kLog2E * std::log(100 / p);
}

bool Bin_IsBoxPath(double s) {
    const double q = 1 / s;
    return q == std::trunc(q);
}

ImageBuffer* BinImage(const ImageBuffer* image, double s, const KernelControl* control) {
    if (!image || !(s > 0) || s > 1) return nullptr;
    int32_t outW, outH;
    Bin_OutputSize(image->width, image->height, s, &outW, &outH);
    if (int64_t{outW} * outH < 1) return nullptr;
    ImageBuffer* result = Bin_IsBoxPath(s) ? BoxPath(image, s, outW, outH, control)
                                           : ResamplePath(image, s, outW, outH, control);
    if (result) KernelControl_Report(control, kStageBin, 100);
    return result;
}

ImageBuffer* Bin_Run(const ImageBuffer* image, const BinSettings& settings, const KernelControl* control) {
    return BinImage(image, settings.scale, control);
}
