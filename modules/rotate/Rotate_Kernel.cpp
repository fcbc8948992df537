// RotateImage: exact quarter turns by bands of output rows (Rotate_Quarter.h);
// the general angle by walking each output row through the source with steps
// (+c, -s), tile by tile, and sampling bilinearly a row segment at a time
// (Rotate_Span.h).
#include "modules/rotate/Rotate_Kernel.h"

#include "host/Host_Threads.h"
#include "image/Image.h"
#include "modules/common/KernelImage.h"
#include "modules/rotate/Rotate_Quarter.h"
#include "modules/rotate/Rotate_Span.h"

#include <algorithm>
#include <atomic>
#include <cmath>

namespace {

constexpr const char* kStageRotate = "Rotate";
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kQuarter = 90.0;
constexpr int32_t kQuarterBand = 128;  // output rows per quarter-turn band (measured: 64 and 32 slower)

// ---- Quarter turns -----------------------------------------------------------

struct QuarterJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    int turns;  // 1, 2 or 3 quarters
    RotateQuarterFn copy;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

void QuarterWorker(QuarterJob* j) {
    const ImageBuffer& s = *j->source;
    ImageBuffer& o = *j->out;
    const int64_t* in[3] = {s.red, s.green, s.blue};
    int64_t* out[3] = {o.red, o.green, o.blue};
    // Bands of output rows are dealt out in turn, so both workers write the
    // new image's pages at the same time.
    const int32_t bands = (o.height + kQuarterBand - 1) / kQuarterBand;
    for (int32_t t = static_cast<int32_t>(j->workerIndex); t < bands;
         t += static_cast<int32_t>(j->workerCount)) {
        const int32_t y0 = t * kQuarterBand, y1 = std::min(o.height, y0 + kQuarterBand);
        for (int32_t y = y0; y < y1; ++y)
            if (KernelControl_RowStop(j->control, j->stopped, kStageRotate, j->workerIndex, y, o.height))
                return;
        for (int c = 0; c < 3; ++c)
            j->copy({in[c], s.width, s.height, s.stride, out[c], o.width, o.stride, j->turns, y0, y1});
    }
}

// ---- General angle -----------------------------------------------------------

// Output rows per band and columns per tile. A tile's rows cross about
// kSpan x |sin(theta)| source rows, each one below the last, so the lines one
// row reads are still in L2 for the next; a whole output row crosses far more
// source rows than the cache and the TLB hold. Longer tiles measured faster
// than shorter ones down to 128 columns; 512 to 2048 were alike.
constexpr int32_t kBand = 16;
constexpr int32_t kSpan = 512;
constexpr int32_t kGroup = 4;  // rows whose positions are walked together

struct RotateJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    double c, s;
    RotateSpanFn sample;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

// Positions of four rows along one tile, each row continuing from where the
// previous tile left it. Four rows side by side keep eight independent sums
// in registers, so the walk runs at the adder's rate rather than its latency.
void WalkRows(double* sx, double* sy, int32_t rows, int32_t n, double c, double s, double (*xs)[kSpan],
              double (*ys)[kSpan]) {
    if (rows == 4) {
        double x0 = sx[0], x1 = sx[1], x2 = sx[2], x3 = sx[3];
        double y0 = sy[0], y1 = sy[1], y2 = sy[2], y3 = sy[3];
        for (int32_t i = 0; i < n; ++i) {
            xs[0][i] = x0, xs[1][i] = x1, xs[2][i] = x2, xs[3][i] = x3;
            ys[0][i] = y0, ys[1][i] = y1, ys[2][i] = y2, ys[3][i] = y3;
            x0 += c, x1 += c, x2 += c, x3 += c;
            y0 -= s, y1 -= s, y2 -= s, y3 -= s;
        }
        sx[0] = x0, sx[1] = x1, sx[2] = x2, sx[3] = x3;
        sy[0] = y0, sy[1] = y1, sy[2] = y2, sy[3] = y3;
        return;
    }
    for (int32_t r = 0; r < rows; ++r)
        for (int32_t i = 0; i < n; ++i, sx[r] += c, sy[r] -= s) {
            xs[r][i] = sx[r];
            ys[r][i] = sy[r];
        }
}

void RotateWorker(RotateJob* j) {
    const ImageBuffer& src = *j->source;
    ImageBuffer& o = *j->out;
    const double halfW = src.width / 2.0, halfH = src.height / 2.0;
    const double outHalfW = o.width / 2.0, outHalfH = o.height / 2.0;
    const double c = j->c, s = j->s;
    const RotateSpanSource source{
        {src.red, src.green, src.blue}, src.width, src.height, src.stride, o.maxValue};
    const RotateSpanFn sample = j->sample;
    // Each row keeps its running position from tile to tile, so every sample
    // sits where the plain walk from x = 0 with steps (+c, -s) puts it.
    double sx[kBand], sy[kBand];
    alignas(64) double xs[kGroup][kSpan], ys[kGroup][kSpan];
    const int32_t bands = (o.height + kBand - 1) / kBand;
    for (int32_t band = static_cast<int32_t>(j->workerIndex); band < bands;
         band += static_cast<int32_t>(j->workerCount)) {
        const int32_t y0 = band * kBand, rows = std::min(kBand, o.height - y0);
        for (int32_t r = 0; r < rows; ++r) {
            if (KernelControl_RowStop(j->control, j->stopped, kStageRotate, j->workerIndex, y0 + r, o.height))
                return;
            const double u = 0 - outHalfW;
            const double v = (y0 + r) - outHalfH;
            sx[r] = halfW + u * c + v * s;
            sy[r] = halfH - u * s + v * c;
        }
        for (int32_t x0 = 0; x0 < o.width; x0 += kSpan) {
            const int32_t n = std::min(kSpan, o.width - x0);
            for (int32_t g = 0; g < rows; g += kGroup) {
                const int32_t groupRows = std::min(kGroup, rows - g);
                WalkRows(sx + g, sy + g, groupRows, n, c, s, xs, ys);
                for (int32_t r = 0; r < groupRows; ++r) {
                    const int64_t at = int64_t{y0 + g + r} * o.stride + x0;
                    int64_t* const out[3] = {o.red + at, o.green + at, o.blue + at};
                    sample(source, xs[r], ys[r], n, out);
                }
            }
        }
    }
}

}  // namespace

void Rotate_SinCos(double degrees, double* c, double* s) {
    *c = std::sin((degrees + kQuarter) * kRadiansPerDegree);
    *s = std::sin(degrees * kRadiansPerDegree);
}

void Rotate_OutputSize(int32_t width, int32_t height, double degrees, int32_t* outWidth, int32_t* outHeight) {
    double c, s;
    Rotate_SinCos(degrees, &c, &s);
    const double hw = width / 2.0, hh = height / 2.0;
    double maxX = -HUGE_VAL, maxY = -HUGE_VAL;
    for (const double X : {-hw, hw})
        for (const double Y : {-hh, hh}) {
            maxX = std::max(maxX, X * c - Y * s);
            maxY = std::max(maxY, Y * c + X * s);
        }
    *outWidth = static_cast<int32_t>(2 * maxX);
    *outHeight = static_cast<int32_t>(2 * maxY);
}

ImageBuffer* RotateImage(const ImageBuffer* image, double degrees, const KernelControl* control) {
    if (!image) return nullptr;
    if (degrees == 0) return KernelControl_Cancelled(control) ? nullptr : Image_Clone(image);
    std::atomic<bool> stopped{false};
    ImagePtr out;
    if (degrees == 90 || degrees == 180 || degrees == 270) {
        const int turns = static_cast<int>(degrees / kQuarter);
        out.reset(turns == 2 ? Kernel_CreateLike(image, image->width, image->height)
                             : Kernel_CreateLike(image, image->height, image->width));
        Host_RunWorkers(QuarterJob{image, out.get(), turns, RotateQuarter_Best(), control, &stopped, 0, 1},
                        &QuarterWorker);
    } else {
        int32_t w, h;
        Rotate_OutputSize(image->width, image->height, degrees, &w, &h);
        if (w < 1 || h < 1) return nullptr;
        double c, s;
        Rotate_SinCos(degrees, &c, &s);
        out.reset(Kernel_CreateLike(image, w, h));
        Host_RunWorkers(RotateJob{image, out.get(), c, s, RotateSpan_Best(), control, &stopped, 0, 1},
                        &RotateWorker);
    }
    if (stopped.load()) return nullptr;
    KernelControl_Report(control, kStageRotate, 100);
    return out.release();
}

ImageBuffer* Rotate_Run(const ImageBuffer* image, const RotateSettings& settings,
                        const KernelControl* control) {
    return RotateImage(image, settings.degrees, control);
}
