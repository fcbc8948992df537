// RotateImage: exact quarter turns by tiles, the general angle by walking each
// output row through the source with steps (+c, -s) and sampling bilinearly.
#include "modules/rotate/Rotate_Kernel.h"

#include "host/Host_Threads.h"
#include "image/Image.h"
#include "modules/common/KernelImage.h"
#include "modules/common/SampleBilinear.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

namespace {

constexpr const char* kStageRotate = "Rotate";
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kQuarter = 90.0;
constexpr int32_t kTile = 64;

// ---- Quarter turns -----------------------------------------------------------

struct QuarterJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    int turns;  // 1, 2 or 3 quarters
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

// Source position of output (x, y).
inline int64_t QuarterIndex(int turns, int32_t x, int32_t y, int32_t w, int32_t h, int32_t stride) {
    switch (turns) {
        case 1:
            return int64_t{h - 1 - x} * stride + y;
        case 2:
            return int64_t{h - 1 - y} * stride + (w - 1 - x);
        default:
            return int64_t{x} * stride + (w - 1 - y);
    }
}

void QuarterWorker(QuarterJob* j) {
    const ImageBuffer& s = *j->source;
    ImageBuffer& o = *j->out;
    const int64_t* in[3] = {s.red, s.green, s.blue};
    int64_t* out[3] = {o.red, o.green, o.blue};
    // Tiles of output rows are dealt out in turn, so both workers write the
    // new image's pages at the same time.
    const int32_t tileRows = (o.height + kTile - 1) / kTile;
    for (int32_t t = static_cast<int32_t>(j->workerIndex); t < tileRows;
         t += static_cast<int32_t>(j->workerCount)) {
        const int32_t y0 = t * kTile, y1 = std::min(o.height, y0 + kTile);
        for (int32_t y = y0; y < y1; ++y)
            if (KernelControl_RowStop(j->control, j->stopped, kStageRotate, j->workerIndex, y, o.height))
                return;
        for (int32_t x0 = 0; x0 < o.width; x0 += kTile) {
            const int32_t x1 = std::min(o.width, x0 + kTile);
            for (int c = 0; c < 3; ++c)
                for (int32_t y = y0; y < y1; ++y) {
                    int64_t* row = out[c] + int64_t{y} * o.stride;
                    for (int32_t x = x0; x < x1; ++x)
                        row[x] = in[c][QuarterIndex(j->turns, x, y, s.width, s.height, s.stride)];
                }
        }
    }
}

// ---- General angle -----------------------------------------------------------

struct RotateJob {
    const ImageBuffer* source;
    ImageBuffer* out;
    double c, s;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

void RotateWorker(RotateJob* j) {
    const ImageBuffer& src = *j->source;
    ImageBuffer& o = *j->out;
    const double halfW = src.width / 2.0, halfH = src.height / 2.0;
    const double outHalfW = o.width / 2.0, outHalfH = o.height / 2.0;
    const double w = src.width, h = src.height;
    const int64_t maxValue = o.maxValue;
    const double c = j->c, s = j->s;
    for (int32_t y = static_cast<int32_t>(j->workerIndex); y < o.height;
         y += static_cast<int32_t>(j->workerCount)) {
        if (KernelControl_RowStop(j->control, j->stopped, kStageRotate, j->workerIndex, y, o.height)) return;
        const double u = 0 - outHalfW;
        const double v = y - outHalfH;
        double sx = halfW + u * c + v * s;
        double sy = halfH - u * s + v * c;
        int64_t* dr = o.red + int64_t{y} * o.stride;
        int64_t* dg = o.green + int64_t{y} * o.stride;
        int64_t* db = o.blue + int64_t{y} * o.stride;
        for (int32_t x = 0; x < o.width; ++x, sx += c, sy -= s) {
            if (!(sx > -1.0 && sx < w && sy > -1.0 && sy < h)) {
                dr[x] = dg[x] = db[x] = 0;
                continue;
            }
            const int32_t ix = static_cast<int32_t>(sx), iy = static_cast<int32_t>(sy);
            const double tx = sx - ix, ty = sy - iy;
            const int32_t dx = ix + 1 < src.width ? 1 : 0, dy = iy + 1 < src.height ? 1 : 0;
            dr[x] = SampleBilinear_Plane(src.red, src.stride, ix, iy, dx, dy, tx, ty, maxValue);
            dg[x] = SampleBilinear_Plane(src.green, src.stride, ix, iy, dx, dy, tx, ty, maxValue);
            db[x] = SampleBilinear_Plane(src.blue, src.stride, ix, iy, dx, dy, tx, ty, maxValue);
        }
    }
}

void SinCos(double degrees, double* c, double* s) {
    // c = sin(theta + 90 degrees), as the rotation has always computed it.
    *c = std::sin((degrees + kQuarter) * kRadiansPerDegree);
    *s = std::sin(degrees * kRadiansPerDegree);
}

}  // namespace

void Rotate_OutputSize(int32_t width, int32_t height, double degrees, int32_t* outWidth, int32_t* outHeight) {
    double c, s;
    SinCos(degrees, &c, &s);
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
        Host_RunWorkers(QuarterJob{image, out.get(), turns, control, &stopped, 0, 1}, &QuarterWorker);
    } else {
        int32_t w, h;
        Rotate_OutputSize(image->width, image->height, degrees, &w, &h);
        if (w < 1 || h < 1) return nullptr;
        double c, s;
        SinCos(degrees, &c, &s);
        out.reset(Kernel_CreateLike(image, w, h));
        Host_RunWorkers(RotateJob{image, out.get(), c, s, control, &stopped, 0, 1}, &RotateWorker);
    }
    if (stopped.load()) return nullptr;
    KernelControl_Report(control, kStageRotate, 100);
    return out.release();
}
