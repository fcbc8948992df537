// Stereo synthesis. The depth map is built in four passes: the image's
// brightness on a linear scale running from the sky (the histogram's median)
// to the bright end of the histogram; the nebula's depth from that brightness
// binned to a few hundred pixels, blurred wide and square-rooted so faint
// structure counts; the stars from the difference of a narrow and a wider
// blur (a local-peak detector) above the sky's noise, spread a little so a
// star's disc moves as one; and the two mixed. Every pass splits its rows
// over the workers and tests the cancel flag per row.
#include "modules/stereo/Stereo_Kernel.h"

#include "host/Host_Cpu.h"
#include "host/Host_Threads.h"
#include "modules/common/GaussianBlur.h"
#include "modules/common/KernelBand.h"
#include "modules/common/KernelImage.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

namespace {

constexpr const char* kStageDepth = "Depth";
constexpr const char* kStageViews = "Views";
constexpr int32_t kUnit = int32_t(kStereoDepthMax);  // the passes' samples run 0..kUnit

// The brightness scale: the histogram's median is the sky, this fraction of
// the samples lies below the top of the scale.
constexpr double kBrightQuantile = 0.995;
// The sky's noise: the median distance from the median, as a standard deviation.
constexpr double kMadToSigma = 1.4826;
constexpr int64_t kHistogramSamples = 1 << 18;
// The nebula's depth: brightness binned until the long side is about this
// many pixels, blurred by this fraction of it.
constexpr int32_t kNebulaSide = 400;
constexpr double kNebulaBlur = 1.0 / 30;
// The star detector: a narrow and a wider blur; their difference counts
// from this many noise deviations on, and this fraction of the scale above
// that is a whole star; the spread of its disc.
constexpr double kStarCore = 1.0;
constexpr double kStarSurround = 5.0;
constexpr double kStarNoiseFloor = 3.0;
constexpr double kStarThreshold = 0.06;
constexpr double kStarSpread = 1.5;

// ---- Row-parallel passes -------------------------------------------------------

struct RowJob {
    const void* body;
    void (*call)(const void* body, int32_t row);
    int32_t rows;
    const char* stage;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

void RowWorker(RowJob* j) {
    const KernelBand band = Kernel_RowBand(j->workerIndex, j->workerCount, j->rows);
    for (int32_t y = band.begin; y < band.end; ++y) {
        if (KernelControl_RowStop(j->control, j->stopped, j->stage, j->workerIndex, y - band.begin,
                                  band.end - band.begin))
            return;
        j->call(j->body, y);
    }
}

// Runs body(y) for every row, split over the workers; false when cancelled.
template <class Body>
bool ForRows(int32_t rows, const char* stage, const KernelControl* control, const Body& body) {
    std::atomic<bool> stopped{false};
    const RowJob job{&body,   [](const void* b, int32_t y) { (*static_cast<const Body*>(b))(y); },
                     rows,    stage,
                     control, &stopped,
                     0,       1};
    Host_RunWorkers(job, &RowWorker);
    return !stopped.load();
}

// ---- Brightness ----------------------------------------------------------------

struct Scale {
    int64_t sky = 0;
    int64_t span = 1;
    double noise = 0;  // the sky's standard deviation, in the passes' units
};

int64_t Luminance(const ImageBuffer& image, size_t i) {
    return (image.red[i] + image.green[i] + image.blue[i]) / 3;
}

// The sky (median) and the bright end from a grid of samples.
Scale BrightnessScale(const ImageBuffer& image) {
    const int64_t pixels = int64_t{image.width} * image.height;
    const int64_t step = std::max<int64_t>(1, pixels / kHistogramSamples);
    std::vector<int64_t> samples;
    samples.reserve(size_t(pixels / step) + 1);
    for (int64_t p = 0; p < pixels; p += step) {
        const int64_t y = p / image.width, x = p % image.width;
        samples.push_back(Luminance(image, size_t(y * image.stride + x)));
    }
    const auto at = [&](double q) {
        auto nth = samples.begin() + std::ptrdiff_t(q * double(samples.size() - 1));
        std::nth_element(samples.begin(), nth, samples.end());
        return *nth;
    };
    Scale s;
    s.sky = at(0.5);
    s.span = std::max<int64_t>(1, at(kBrightQuantile) - s.sky);
    for (int64_t& v : samples) v = std::abs(v - s.sky);
    s.noise = double(at(0.5)) * kMadToSigma / double(s.span) * kUnit;
    return s;
}

// ---- Depth ---------------------------------------------------------------------

struct Planes {
    int32_t width, height;
    size_t Size() const { return size_t(width) * size_t(height); }
};

HOST_HOT_LOOP void BrightnessRow(const ImageBuffer& image, const Scale& scale, int32_t* out, int32_t y) {
    const size_t row = size_t(y) * size_t(image.stride);
    const double inverse = 1.0 / double(scale.span);
    for (int32_t x = 0; x < image.width; ++x) {
        const double t =
            std::clamp(double(Luminance(image, row + size_t(x)) - scale.sky) * inverse, 0.0, 1.0);
        out[x] = int32_t(t * kUnit + 0.5);
    }
}

// The nebula's depth on a small grid: the brightness binned and blurred (which
// averages the noise away first), square-rooted, and normalised so that its
// brightest part is at the front.
bool NebulaGrid(const ImageBuffer& image, const Scale& scale, int32_t factor, std::vector<int32_t>* grid,
                Planes* small, const KernelControl* control) {
    *small = {(image.width + factor - 1) / factor, (image.height + factor - 1) / factor};
    std::vector<int32_t> binned(small->Size());
    // Averaged about the sky before anything is clipped, so the sky's noise
    // cancels instead of adding up to a false glow.
    const double toUnit = double(kUnit) / double(scale.span);
    if (!ForRows(small->height, kStageDepth, control, [&](int32_t by) {
            for (int32_t bx = 0; bx < small->width; ++bx) {
                int64_t sum = 0, count = 0;
                for (int32_t y = by * factor; y < std::min(image.height, (by + 1) * factor); ++y)
                    for (int32_t x = bx * factor; x < std::min(image.width, (bx + 1) * factor); ++x, ++count)
                        sum += Luminance(image, size_t(y) * size_t(image.stride) + size_t(x)) - scale.sky;
                binned[size_t(by) * size_t(small->width) + size_t(bx)] =
                    int32_t(std::clamp(double(sum) / double(count) * toUnit, 0.0, double(kUnit)));
            }
        }))
        return false;
    grid->assign(small->Size(), 0);
    const double r = std::max(small->width, small->height) * kNebulaBlur;
    if (!GaussianBlur(binned.data(), grid->data(), small->width, small->height, small->width, r, control))
        return false;
    const double top = std::sqrt(double(std::max(1, *std::max_element(grid->begin(), grid->end()))));
    for (int32_t& v : *grid) v = int32_t(std::sqrt(double(v)) / top * kUnit + 0.5);
    return true;
}

// The grid's value at a full-resolution pixel, bilinear between cell centres.
struct GridSampler {
    const int32_t* grid;
    Planes small;
    int32_t factor;
    int32_t At(int32_t x, int32_t y) const {
        const double gx = std::clamp((x + 0.5) / factor - 0.5, 0.0, double(small.width - 1));
        const double gy = std::clamp((y + 0.5) / factor - 0.5, 0.0, double(small.height - 1));
        const int32_t ix = int32_t(gx), iy = int32_t(gy);
        const int32_t dx = ix + 1 < small.width ? 1 : 0, dy = iy + 1 < small.height ? small.width : 0;
        const double tx = gx - ix, ty = gy - iy;
        const int32_t* p = grid + size_t(iy) * size_t(small.width) + size_t(ix);
        return int32_t((1 - ty) * ((1 - tx) * p[0] + tx * p[dx]) + ty * ((1 - tx) * p[dy] + tx * p[dy + dx]));
    }
};

}  // namespace

ImageBuffer* Stereo_DepthMap(const ImageBuffer* image, const StereoSettings& settings,
                             const KernelControl* control) {
    if (!image || image->width <= 0 || image->height <= 0) return nullptr;
    const Planes full{image->width, image->height};
    const Scale scale = BrightnessScale(*image);
    WorkPlane<int32_t> brightness = WorkPlane_Allocate<int32_t>(full.Size());
    if (!ForRows(full.height, kStageDepth, control, [&](int32_t y) {
            BrightnessRow(*image, scale, brightness.get() + size_t(y) * size_t(full.width), y);
        }))
        return nullptr;

    const int32_t factor = std::max(1, (std::max(full.width, full.height) + kNebulaSide - 1) / kNebulaSide);
    std::vector<int32_t> grid;
    Planes small{};
    if (!NebulaGrid(*image, scale, factor, &grid, &small, control)) return nullptr;

    // Stars: the narrow blur above the wider one, past the noise, as a
    // fraction of a whole star, then spread over the star's disc.
    WorkPlane<int32_t> core = WorkPlane_Allocate<int32_t>(full.Size());
    WorkPlane<int32_t> surround = WorkPlane_Allocate<int32_t>(full.Size());
    const int32_t w = full.width, h = full.height;
    if (!GaussianBlur(brightness.get(), core.get(), w, h, w, kStarCore, control) ||
        !GaussianBlur(brightness.get(), surround.get(), w, h, w, kStarSurround, control))
        return nullptr;
    const double gain = 1.0 / kStarThreshold, floor = kStarNoiseFloor * scale.noise;
    int32_t* peaks = brightness.get();  // the brightness is not needed any more
    if (!ForRows(h, kStageDepth, control, [&](int32_t y) {
            const size_t row = size_t(y) * size_t(w);
            for (int32_t x = 0; x < w; ++x) {
                const double d = core[row + size_t(x)] - surround[row + size_t(x)] - floor;
                peaks[row + size_t(x)] = d > 0 ? int32_t(std::min<double>(kUnit, d * gain)) : 0;
            }
        }))
        return nullptr;
    int32_t* stars = core.get();
    if (!GaussianBlur(peaks, stars, w, h, w, kStarSpread, control)) return nullptr;

    ImagePtr depth(Image_Create(w, h));
    depth->bitDepth = kStereoDepthBits;
    depth->maxValue = kStereoDepthMax;
    depth->mono = 1;
    const GridSampler nebula{grid.data(), small, factor};
    const double standOut = std::clamp(settings.standOut, 0.0, 1.0);
    if (!ForRows(h, kStageDepth, control, [&](int32_t y) {
            const size_t in = size_t(y) * size_t(w), out = size_t(y) * size_t(depth->stride);
            for (int32_t x = 0; x < w; ++x) {
                const int64_t n = nebula.At(x, y);
                const int64_t star = std::min<int64_t>(kUnit, 2 * int64_t{stars[in + size_t(x)]});
                const int64_t d = n + int64_t(double(kUnit - n) * standOut * double(star) / kUnit);
                depth->red[out + size_t(x)] = depth->green[out + size_t(x)] = depth->blue[out + size_t(x)] =
                    std::clamp<int64_t>(d, 0, kStereoDepthMax);
            }
        }))
        return nullptr;
    KernelControl_Report(control, kStageDepth, 100);
    return depth.release();
}

double Stereo_ParallaxPixels(int32_t width, double strength) {
    return width * kStereoMaxParallax * std::clamp(strength, 0.0, 1.0);
}

namespace {

// One row of one view: every pixel moved by its shift, a nearer one winning a
// place, then each gap filled from its farther neighbour (the background the
// moved pixel uncovered).
struct ViewRow {
    std::vector<int32_t> from;  // source column shown at each place, -1 for a gap
    std::vector<int64_t> z;
};

void WarpRow(const int64_t* depth, int32_t width, double halfParallax, int sign, ViewRow* v) {
    v->from.assign(size_t(width), -1);
    v->z.assign(size_t(width), -1);
    const double perDepth = halfParallax / double(kStereoDepthMax);
    for (int32_t x = 0; x < width; ++x) {
        const int32_t to = x + sign * int32_t(std::lround(double(depth[x]) * perDepth));
        if (to < 0 || to >= width || depth[x] <= v->z[size_t(to)]) continue;
        v->z[size_t(to)] = depth[x];
        v->from[size_t(to)] = x;
    }
    for (int32_t x = 0; x < width;) {
        if (v->from[size_t(x)] >= 0) {
            ++x;
            continue;
        }
        int32_t end = x;
        while (end < width && v->from[size_t(end)] < 0) ++end;
        const int32_t left = x - 1, right = end < width ? end : -1;
        int32_t fill = left < 0    ? right
                       : right < 0 ? left
                                   : (v->z[size_t(left)] <= v->z[size_t(right)] ? left : right);
        const int32_t source = fill >= 0 ? v->from[size_t(fill)] : x;
        for (; x < end; ++x) v->from[size_t(x)] = source;
    }
}

}  // namespace

bool Stereo_Views(const ImageBuffer* image, const ImageBuffer* depth, const StereoSettings& settings,
                  const KernelControl* control, ImagePtr* left, ImagePtr* right) {
    if (!image || !depth || depth->width != image->width || depth->height != image->height) return false;
    ImagePtr l(Kernel_CreateLike(image, image->width, image->height));
    ImagePtr r(Kernel_CreateLike(image, image->width, image->height));
    const double half = Stereo_ParallaxPixels(image->width, settings.strength) / 2;
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    const bool done = ForRows(image->height, kStageViews, control, [&](int32_t y) {
        thread_local ViewRow row;
        const int64_t* d = depth->red + size_t(y) * size_t(depth->stride);
        for (auto [view, sign] : {std::pair{l.get(), 1}, std::pair{r.get(), -1}}) {
            WarpRow(d, image->width, half, sign, &row);
            int64_t* out[3] = {view->red, view->green, view->blue};
            for (int c = 0; c < 3; ++c) {
                const int64_t* in = planes[c] + size_t(y) * size_t(image->stride);
                int64_t* o = out[c] + size_t(y) * size_t(view->stride);
                for (int32_t x = 0; x < image->width; ++x) o[x] = in[row.from[size_t(x)]];
            }
        }
    });
    if (!done) return false;
    KernelControl_Report(control, kStageViews, 100);
    *left = std::move(l);
    *right = std::move(r);
    return true;
}

ImageBuffer* Stereo_Preview(const ImageBuffer* image, const StereoSettings& settings,
                            const KernelControl* control) {
    ImagePtr depth(Stereo_DepthMap(image, settings, control));
    if (!depth) return nullptr;
    const int32_t w = image->width, h = image->height;
    if (settings.preview == StereoPreview::kDepth) {
        ImagePtr out(Kernel_CreateLike(image, w, h));
        out->mono = 1;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                const size_t i = size_t(y) * size_t(w) + size_t(x);
                out->red[i] = out->green[i] = out->blue[i] =
                    depth->red[i] * image->maxValue / kStereoDepthMax;
            }
        return out.release();
    }
    ImagePtr left, right;
    if (!Stereo_Views(image, depth.get(), settings, control, &left, &right)) return nullptr;
    if (settings.preview == StereoPreview::kPair) {
        ImagePtr out(Kernel_CreateLike(image, 2 * w + kStereoPairGap, h));
        const int64_t gap = image->maxValue / 4;
        const ImageBuffer* views[2] = {left.get(), right.get()};
        for (int c = 0; c < 3; ++c) {
            int64_t* o = c == 0 ? out->red : c == 1 ? out->green : out->blue;
            for (int32_t y = 0; y < h; ++y) {
                int64_t* row = o + size_t(y) * size_t(out->stride);
                for (int v = 0; v < 2; ++v) {
                    const int64_t* in[3] = {views[v]->red, views[v]->green, views[v]->blue};
                    std::copy_n(in[c] + size_t(y) * size_t(w), w, row + v * (w + kStereoPairGap));
                }
                std::fill_n(row + w, kStereoPairGap, gap);
            }
        }
        return out.release();
    }
    // Each channel stays itself, so that linear data shows through its
    // channels' screen stretch as any result does.
    ImagePtr out(Kernel_CreateLike(image, w, h));
    out->mono = 0;
    std::copy_n(left->red, size_t(w) * size_t(h), out->red);
    std::copy_n(right->green, size_t(w) * size_t(h), out->green);
    std::copy_n(right->blue, size_t(w) * size_t(h), out->blue);
    return out.release();
}
