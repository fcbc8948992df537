// The one bound every reader checks before it allocates an image: a header that
// announces more pixels than this is refused like any unreadable file. At 30 bits
// the program holds 24 to 40 bytes a pixel in each of several copies of the
// working image, so 2^28 pixels (16384 x 16384) is already beyond any desktop;
// the bound also keeps width x height well inside signed 32-bit arithmetic.
#pragma once

#include <cstdint>

inline constexpr uint64_t kFormatMaxPixels = uint64_t{1} << 28;

inline bool Format_SizeFits(uint64_t width, uint64_t height) {
    return width >= 1 && height >= 1 && width <= kFormatMaxPixels && height <= kFormatMaxPixels &&
           width * height <= kFormatMaxPixels;
}
