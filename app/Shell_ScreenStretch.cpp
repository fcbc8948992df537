// The main view's screen stretch for linear data. A linear stack keeps its
// object in the lowest few per cent of the range and shows black; these
// tables put the sky's median at a quarter of the screen's range with the
// black point just below the sky's noise, as astrophotographers expect of a
// preview. Each channel gets its own table, so a stack that is not yet colour
// balanced shows a neutral sky instead of a green one. Only the lookup tables
// change; the data is untouched.
#include "app/Shell.h"

#include "ui/widgets/ImageView.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kTargetBackground = 0.25;
constexpr double kShadowsInSigma = 2.8;
constexpr size_t kMaxSamples = 1 << 20;  // a sparse grid is enough for the sky's statistics

// The midtones transfer function: maps m to 0.5, keeps 0 and 1.
double Mtf(double m, double x) {
    if (x <= 0.0) return 0.0;
    if (x >= 1.0) return 1.0;
    return ((m - 1.0) * x) / ((2.0 * m - 1.0) * x - m);
}

}  // namespace

namespace {

// One channel's table: 65536 entries from its sky median and spread.
void ChannelTable(const ImageBuffer* image, const int64_t* plane, uint8_t* table) {
    const size_t pixels = size_t(image->width) * size_t(image->height);
    const size_t step = std::max<size_t>(1, pixels / kMaxSamples);
    const double scale = 1.0 / double(image->maxValue);
    std::vector<float> samples;
    samples.reserve(pixels / step + 1);
    for (size_t i = 0; i < pixels; i += step) {
        const size_t x = i % size_t(image->width), y = i / size_t(image->width);
        samples.push_back(float(double(plane[y * size_t(image->stride) + x]) * scale));
    }
    auto middle = samples.begin() + samples.size() / 2;
    std::nth_element(samples.begin(), middle, samples.end());
    const double median = *middle;
    for (float& s : samples) s = std::fabs(s - float(median));
    std::nth_element(samples.begin(), middle, samples.end());
    const double sigma = 1.4826 * *middle;

    const double shadows = std::clamp(median - kShadowsInSigma * sigma, 0.0, 1.0);
    const double span = std::max(1e-9, 1.0 - shadows);
    const double background = std::clamp((median - shadows) / span, 1e-6, 1.0);
    // The midtone that takes the background to the target.
    const double midtone = Mtf(kTargetBackground, background);
    for (size_t i = 0; i < kImageViewLutSize; ++i) {
        const double x = (double(i) / 65535.0 - shadows) / span;
        table[i] = static_cast<uint8_t>(std::lround(255.0 * Mtf(midtone, std::clamp(x, 0.0, 1.0))));
    }
}

}  // namespace

void Shell_ComputeScreenStretch(const ImageBuffer* image, std::vector<uint8_t>* luts) {
    luts->assign(3 * kImageViewLutSize, 0);
    const int64_t* planes[3] = {image->red, image->green ? image->green : image->red,
                                image->blue ? image->blue : image->red};
    for (size_t c = 0; c < 3; ++c) ChannelTable(image, planes[c], luts->data() + c * kImageViewLutSize);
}
