// Compose mode of the tracking store: luminance and colour differences
// (Y, B - Y, R - Y) held in the red, green and blue planes, and back.
#include "image/Tracking_Internal.h"

#include "host/Host_Threads.h"

#include <cstddef>
#include <cstdint>

namespace {

// Below this many samples per plane the pass runs on the calling thread:
// starting workers would cost more than the work.
constexpr size_t kParallelSamples = size_t{1} << 18;

// Truncation towards zero that saturates instead of overflowing for the
// wild values a damaged slot can hold.
int64_t TruncateSaturated(double value) {
    if (value >= 9.2233720368547758e18) return INT64_MAX;
    if (value <= -9.2233720368547758e18) return INT64_MIN;
    return static_cast<int64_t>(value);
}

int64_t WrappingAdd(int64_t x, int64_t y) {
    return static_cast<int64_t>(static_cast<uint64_t>(x) + static_cast<uint64_t>(y));
}

int64_t WrappingSub(int64_t x, int64_t y) {
    return static_cast<int64_t>(static_cast<uint64_t>(x) - static_cast<uint64_t>(y));
}

void ForwardRange(int64_t* red, int64_t* green, int64_t* blue, size_t begin, size_t end) {
    for (size_t i = begin; i < end; ++i) {
        const int64_t r = red[i];
        const int64_t g = green[i];
        const int64_t b = blue[i];
        const int64_t y = TruncateSaturated(0.299 * static_cast<double>(r) + 0.587 * static_cast<double>(g) +
                                            0.114 * static_cast<double>(b));
        red[i] = y;
        green[i] = WrappingSub(b, y);
        blue[i] = WrappingSub(r, y);
    }
}

void BackRange(int64_t* red, int64_t* green, int64_t* blue, size_t begin, size_t end, int64_t maxValue) {
    const double top = static_cast<double>(maxValue);
    for (size_t i = begin; i < end; ++i) {
        const int64_t y = red[i];
        const int64_t b = WrappingAdd(green[i], y);
        const int64_t r = WrappingAdd(blue[i], y);
        const double g =
            (static_cast<double>(y) - 0.299 * static_cast<double>(r) - 0.114 * static_cast<double>(b)) /
            0.587;
        red[i] = r < 0 ? 0 : r > maxValue ? maxValue : r;
        // Clamped before truncation: the same result, and never out of range.
        green[i] = g <= 0.0 ? 0 : g >= top ? maxValue : static_cast<int64_t>(g);
        blue[i] = b < 0 ? 0 : b > maxValue ? maxValue : b;
    }
}

struct ComposePass {
    ImageBuffer* image = nullptr;
    size_t samples = 0;
    bool forward = true;
    uint32_t workerIndex = 0;
    uint32_t workerCount = 1;
};

// Worker k takes the k-th of n contiguous runs, cut on cache-line bounds.
void RunPass(ComposePass* pass) {
    const size_t chunk = (pass->samples / pass->workerCount + 7) & ~size_t{7};
    const size_t begin = chunk * pass->workerIndex;
    if (begin >= pass->samples) return;
    const size_t end = pass->samples - begin < chunk ? pass->samples : begin + chunk;
    ImageBuffer* image = pass->image;
    if (pass->forward) {
        ForwardRange(image->red, image->green, image->blue, begin, end);
    } else {
        BackRange(image->red, image->green, image->blue, begin, end, image->maxValue);
    }
}

void Convert(ImageBuffer* image, bool forward) {
    if (!image || !image->red || !image->green || !image->blue || image->stride <= 0 || image->height <= 0)
        return;
    ComposePass pass;
    pass.image = image;
    pass.samples = static_cast<size_t>(image->stride) * static_cast<size_t>(image->height);
    pass.forward = forward;
    if (pass.samples < kParallelSamples) {
        RunPass(&pass);
    } else {
        Host_RunWorkers(pass, &RunPass);
    }
}

}  // namespace

void Tracking_ComposeForward(ImageBuffer* image) {
    Convert(image, true);
}

void Tracking_ComposeBack(ImageBuffer* image) {
    Convert(image, false);
}
