// Bicubic resampling of an image to a new size in fixed point.
//
// Kernel: Catmull-Rom (the cubic convolution with a = -0.5), separable. For an
// 8-bit fraction f (t = f / 256) the four tap weights are
//   w(-1) = (-t + 2t^2 - t^3) / 2      w(0) = (2 - 5t^2 + 3t^3) / 2
//   w(+1) = (t + 4t^2 - 3t^3) / 2      w(+2) = (-t^2 + t^3) / 2
// scaled by 256 and rounded, with the rounding remainder put on the largest
// tap so that every set sums to exactly 256: a constant image resamples to the
// same constant. The 4 x 4 sum carries 16 fractional bits; the kernel returns
// it with 8 (an arithmetic shift by 8), and the caller shifts the other 8 away
// and clamps negative results (the kernel overshoots at edges) to 0.
#include "image/Image.h"

#include <array>
#include <cmath>
#include <vector>

namespace {

using Taps = std::array<int32_t, 4>;

std::array<Taps, 256> MakeCatmullRomTable() {
    std::array<Taps, 256> table{};
    for (int f = 0; f < 256; ++f) {
        const double t = f / 256.0;
        const double w[4] = {(-t + 2 * t * t - t * t * t) / 2, (2 - 5 * t * t + 3 * t * t * t) / 2,
                             (t + 4 * t * t - 3 * t * t * t) / 2, (-t * t + t * t * t) / 2};
        int sum = 0;
        int largest = 0;
        for (int k = 0; k < 4; ++k) {
            table[f][k] = static_cast<int32_t>(std::lround(w[k] * 256.0));
            sum += table[f][k];
            if (w[k] > w[largest]) largest = k;
        }
        table[f][largest] += 256 - sum;
    }
    return table;
}

const std::array<Taps, 256>& CatmullRom() {
    static const std::array<Taps, 256> table = MakeCatmullRomTable();
    return table;
}

// Source column (or row) and interpolation fraction of each destination index:
// position i * step with 31 fractional bits, of which bits 23..30 are the fraction.
void MakePositions(int32_t sourceSize, int32_t newSize, std::vector<int32_t>& index,
                   std::vector<uint8_t>& fraction) {
    const int64_t step = (static_cast<int64_t>(sourceSize) << 31) / newSize;
    index.resize(newSize);
    fraction.resize(newSize);
    for (int32_t i = 0; i < newSize; ++i) {
        const int64_t pos = static_cast<int64_t>(i) * step;
        index[i] = static_cast<int32_t>(pos >> 31);
        fraction[i] = static_cast<uint8_t>((pos >> 23) & 255);
    }
}

// One output sample from the 4 x 4 neighbourhood whose top-left is one pixel up
// and left of (x, y). Neighbours outside the image take the central sample.
inline int64_t Kernel(const int64_t* plane, int32_t stride, int32_t width, int32_t height, int32_t x,
                      int32_t y, const Taps& wx, const Taps& wy) {
    const int64_t centre = plane[static_cast<int64_t>(y) * stride + x];
    int64_t sum = 0;
    if (x >= 1 && y >= 1 && x + 2 < width && y + 2 < height) {
        const int64_t* row = plane + static_cast<int64_t>(y - 1) * stride + (x - 1);
        for (int j = 0; j < 4; ++j, row += stride) {
            const int64_t h = wx[0] * row[0] + wx[1] * row[1] + wx[2] * row[2] + wx[3] * row[3];
            sum += wy[j] * h;
        }
    } else {
        for (int j = 0; j < 4; ++j) {
            const int32_t sy = y - 1 + j;
            int64_t h = 0;
            for (int i = 0; i < 4; ++i) {
                const int32_t sx = x - 1 + i;
                const int64_t s = (sx < 0 || sy < 0 || sx >= width || sy >= height)
                                      ? centre
                                      : plane[static_cast<int64_t>(sy) * stride + sx];
                h += wx[i] * s;
            }
            sum += wy[j] * h;
        }
    }
    return sum >> 8;
}

}  // namespace

ImageBuffer* Image_Resample(const ImageBuffer* source, int32_t newWidth, int32_t newHeight,
                            ImageProgressFn progress, void* context) {
    if (!source) return nullptr;
    if (newWidth == source->width && newHeight == source->height) return Image_Clone(source);

    ImageBuffer* dest = Image_CreateCleared(newWidth > 0 ? newWidth : 0, newHeight > 0 ? newHeight : 0);
    dest->bitDepth = source->bitDepth;
    dest->maxValue = source->maxValue;
    if (newWidth <= 0 || newHeight <= 0 || source->width <= 0 || source->height <= 0) return dest;

    std::vector<int32_t> xIndex, yIndex;
    std::vector<uint8_t> xFraction, yFraction;
    MakePositions(source->width, newWidth, xIndex, xFraction);
    MakePositions(source->height, newHeight, yIndex, yFraction);
    const auto& table = CatmullRom();

    const int64_t* from[] = {source->red, source->green, source->blue};
    int64_t* to[] = {dest->red, dest->green, dest->blue};
    for (int32_t y = 0; y < newHeight; ++y) {
        if ((y & 31) == 0 && progress && progress(context, y, newHeight) != 0) return dest;
        const int32_t sy = yIndex[y];
        const Taps& wy = table[yFraction[y]];
        for (int p = 0; p < 3; ++p) {
            if (!from[p] || !to[p]) continue;
            int64_t* out = to[p] + static_cast<int64_t>(y) * dest->stride;
            for (int32_t x = 0; x < newWidth; ++x) {
                const int64_t v = Kernel(from[p], source->stride, source->width, source->height, xIndex[x],
                                         sy, table[xFraction[x]], wy) >>
                                  8;
                out[x] = v < 0 ? 0 : v;
            }
        }
    }
    return dest;
}
