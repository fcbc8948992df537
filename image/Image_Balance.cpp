#include "image/Image_Balance.h"

#include "image/Image.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int64_t kMaxSamples = int64_t{1} << 20;
// A pixel counts as signal when every channel stands this many noise widths
// above its background: faint sky noise must not decide the colour.
constexpr double kSignalSigmas = 5.0;
// 1.4826 x the median absolute deviation estimates the noise's standard
// deviation for Gaussian noise.
constexpr double kMadToSigma = 1.4826;
// Fewer signal pixels than this give no trustworthy colour: only the
// backgrounds are matched.
constexpr int64_t kMinSignalPixels = 16;

int64_t Median(std::vector<int64_t>& values) {
    auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

bool Image_MeasureOscBalance(const ImageBuffer* image, ColourBalance* balance) {
    if (!image || !balance || image->width <= 0 || image->height <= 0) return false;
    *balance = ColourBalance{};
    const int64_t pixels = int64_t{image->width} * image->height;
    // A square grid step that keeps the sample near kMaxSamples.
    const int32_t step = std::max<int32_t>(
        1, static_cast<int32_t>(std::ceil(std::sqrt(double(pixels) / double(kMaxSamples)))));
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    std::vector<int64_t> samples[3];
    bool colour = false;
    for (int32_t y = 0; y < image->height; y += step)
        for (int32_t x = 0; x < image->width; x += step) {
            const int64_t i = int64_t{y} * image->stride + x;
            for (int c = 0; c < 3; ++c) samples[c].push_back(planes[c][i]);
            colour |= planes[0][i] != planes[1][i] || planes[0][i] != planes[2][i];
        }
    if (!colour) return false;

    double threshold[3];
    for (int c = 0; c < 3; ++c) {
        std::vector<int64_t> work = samples[c];
        balance->background[c] = Median(work);
        for (int64_t& v : work) v = std::abs(v - balance->background[c]);
        const double sigma = kMadToSigma * static_cast<double>(Median(work));
        threshold[c] = static_cast<double>(balance->background[c]) + std::max(1.0, kSignalSigmas * sigma);
    }
    // Saturated pixels lost their colour: they are left out.
    const int64_t saturated = image->maxValue - 1;
    double signal[3] = {0, 0, 0};
    for (size_t i = 0; i < samples[0].size(); ++i) {
        bool clear = true;
        for (int c = 0; c < 3; ++c)
            clear = clear && static_cast<double>(samples[c][i]) > threshold[c] && samples[c][i] < saturated;
        if (!clear) continue;
        ++balance->signalPixels;
        for (int c = 0; c < 3; ++c) signal[c] += static_cast<double>(samples[c][i] - balance->background[c]);
    }
    if (balance->signalPixels >= kMinSignalPixels) {
        const double weakest = std::min({signal[0], signal[1], signal[2]});
        for (int c = 0; c < 3; ++c) balance->gain[c] = weakest / signal[c];
    }
    return true;
}

void Image_ApplyBalance(ImageBuffer* image, const ColourBalance& balance) {
    if (!image) return;
    const int64_t floor = std::min({balance.background[0], balance.background[1], balance.background[2]});
    int64_t* planes[3] = {image->red, image->green, image->blue};
    for (int c = 0; c < 3; ++c) {
        const double gain = balance.gain[c];
        const int64_t background = balance.background[c];
        for (int32_t y = 0; y < image->height; ++y) {
            int64_t* row = planes[c] + int64_t{y} * image->stride;
            for (int32_t x = 0; x < image->width; ++x) {
                const double v = static_cast<double>(row[x] - background) * gain;
                row[x] = std::clamp<int64_t>(static_cast<int64_t>(v) + floor, 0, image->maxValue);
            }
        }
    }
}
