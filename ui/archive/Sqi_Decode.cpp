// Decoding .sqi icons into the framebuffer: placement by fill mode, one
// quadtree per plane decoded into a power-of-two buffer, 4 x 4 supersampled
// resampling to the shown size, and the per-plane pixel operations.
#include "ui/archive/Sqi_Decode.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace {

// Larger buffers are not decoded: no screen shows an icon that big, and a
// hostile header must not ask for gigabytes.
constexpr uint64_t kMaxBufferArea = uint64_t{1} << 24;
constexpr int kSamplesPerAxis = 4;

enum FillModeCode : uint32_t { kAutoFit = 0, kAutoFillOut = 1, kStretch = 2, kNative = 3 };

uint32_t RoundUpToPowerOfTwo(int32_t size) {
    if (size < 2) return 1;
    uint32_t p = 1;
    while (p < static_cast<uint32_t>(size)) p <<= 1;
    return p;
}

class BitReader {
public:
    BitReader(const uint8_t* stream, size_t length) : stream_(stream), bitLength_(uint64_t{length} * 8) {}

    uint32_t Read(int bits) {
        uint32_t value = 0;
        for (int i = 0; i < bits; ++i) value |= ReadBit() << i;
        return value;
    }
    uint32_t ReadBit() {
        const uint64_t at = position_++;
        if (at >= bitLength_) return 0;
        return (stream_[at >> 3] >> (at & 7)) & 1u;
    }
    uint64_t Position() const { return position_; }

private:
    const uint8_t* stream_;
    uint64_t bitLength_;
    uint64_t position_ = 0;
};

struct Node {
    int32_t x, y, w, h;
    bool inert;
};

void FillRect(uint8_t* buffer, uint32_t bw, uint32_t bh, const Node& n, uint8_t value) {
    const int32_t x0 = std::max(n.x, 0);
    const int32_t y0 = std::max(n.y, 0);
    const int32_t x1 = std::min<int64_t>(int64_t{n.x} + n.w, bw);
    const int32_t y1 = std::min<int64_t>(int64_t{n.y} + n.h, bh);
    if (x1 <= x0) return;
    for (int32_t y = y0; y < y1; ++y)
        std::memset(buffer + size_t{static_cast<uint32_t>(y)} * bw + x0, value, x1 - x0);
}

struct Fields {
    int32_t r, g, b;
};

Fields FieldsOf(uint32_t pixel) {
    return {static_cast<int32_t>((pixel >> 19) & 31), static_cast<int32_t>((pixel >> 10) & 63),
            static_cast<int32_t>((pixel >> 3) & 31)};
}
Fields FieldsOf565(uint16_t colour) {
    return {colour >> 11, (colour >> 5) & 63, colour & 31};
}

// The sums of the tinted mode are not clamped: the 5-6-5 word is formed from
// them as they stand, so a field that overflows spills into its neighbour.
uint32_t PackFields(const Fields& f) {
    const uint32_t word = ((static_cast<uint32_t>(f.r) << 11) | (static_cast<uint32_t>(f.g) << 5) |
                           static_cast<uint32_t>(f.b)) &
                          0xFFFFu;
    return Sqi_PixelFrom565(word >> 11, (word >> 5) & 63, word & 31);
}

}  // namespace

bool Sqi_Place(uint32_t w, uint32_t h, int32_t bw, int32_t bh, uint32_t fillMode, SqiPlacement* out) {
    if (bw < 1 || bh < 1 || !out) return false;
    int64_t dw = bw;
    int64_t dh = bh;
    int64_t ox = 0;
    int64_t oy = 0;
    if (fillMode != kStretch) {
        if (w == 0 || h == 0) return false;
        if (fillMode == kNative) {
            dw = w;
            dh = h;
        } else {
            const int64_t sx = (int64_t{bw} << 15) / w;
            const int64_t sy = (int64_t{bh} << 15) / h;
            const int64_t scale = fillMode == kAutoFillOut ? std::max(sx, sy) : std::min(sx, sy);
            dw = (int64_t{w} * scale) >> 15;
            dh = (int64_t{h} * scale) >> 15;
        }
        ox = (bw - dw) / 2;
        oy = (bh - dh) / 2;
    }
    if (dw < 1 || dh < 1) return false;
    const uint64_t pw = dw >= (int64_t{1} << 24) ? 0 : RoundUpToPowerOfTwo(static_cast<int32_t>(dw));
    const uint64_t ph = dh >= (int64_t{1} << 24) ? 0 : RoundUpToPowerOfTwo(static_cast<int32_t>(dh));
    if (pw == 0 || ph == 0 || pw * ph > kMaxBufferArea) return false;
    out->destWidth = static_cast<int32_t>(dw);
    out->destHeight = static_cast<int32_t>(dh);
    out->offsetX = static_cast<int32_t>(ox);
    out->offsetY = static_cast<int32_t>(oy);
    out->bufferWidth = static_cast<uint32_t>(pw);
    out->bufferHeight = static_cast<uint32_t>(ph);
    return true;
}

uint64_t Sqi_DecodePlane(const uint8_t* stream, size_t length, int bits, uint32_t bw, uint32_t bh,
                         uint8_t* buffer) {
    BitReader reader(stream, length);
    // Pre-order with an explicit stack: a hostile stream can nest as deep as it has bits.
    std::vector<Node> pending;
    pending.push_back({0, 0, static_cast<int32_t>(bw), static_cast<int32_t>(bh), false});
    while (!pending.empty()) {
        const Node node = pending.back();
        pending.pop_back();
        const uint8_t value = static_cast<uint8_t>(reader.Read(bits));
        if (reader.ReadBit() == 0) {
            if (!node.inert && node.h >= 1) FillRect(buffer, bw, bh, node, value);
            continue;
        }
        bool childrenInert = node.inert;
        if (!node.inert) {
            if (node.w >= 2 || node.h >= 2) {
                childrenInert = false;
            } else if (node.h < 1) {
                childrenInert = true;
            } else {
                // A single pixel that splits: it takes its own value (the mean of
                // its subtree) and the finer levels are read through unused.
                if (node.x >= 0 && node.y >= 0 && static_cast<uint32_t>(node.x) < bw &&
                    static_cast<uint32_t>(node.y) < bh)
                    buffer[size_t{static_cast<uint32_t>(node.y)} * bw + node.x] = value;
                childrenInert = true;
            }
        }
        const int32_t hw = node.w / 2;
        const int32_t hh = node.h / 2;
        const Node children[4] = {
            {node.x, node.y, hw, hh, childrenInert},
            {node.x + hw, node.y, node.w - hw, hh, childrenInert},
            {node.x, node.y + hh, hw, node.h - hh, childrenInert},
            {node.x + hw, node.y + hh, node.w - hw, node.h - hh, childrenInert},
        };
        for (int i = 3; i >= 0; --i) pending.push_back(children[i]);
    }
    return reader.Position();
}

bool Sqi_Draw(const uint8_t* data, size_t size, const SqiTarget& target) {
    if (!data || size < kSqiHeaderSize || !target.pixels) return false;
    const uint32_t w = data[0] | (data[1] << 8);
    const uint32_t h = data[2] | (data[3] << 8);
    const uint32_t mode =
        uint32_t{data[4]} | (uint32_t{data[5]} << 8) | (uint32_t{data[6]} << 16) | (uint32_t{data[7]} << 24);
    SqiPlacement place;
    if (!Sqi_Place(w, h, target.width, target.height, target.fillMode, &place)) return false;

    // The destination rectangle clipped to the widget and to the framebuffer,
    // in destination coordinates (0..DW, 0..DH).
    const int64_t originX = int64_t{target.x} + place.offsetX;
    const int64_t originY = int64_t{target.y} + place.offsetY;
    const int64_t clipLeft = std::max<int64_t>({int64_t{target.x}, 0, originX});
    const int64_t clipTop = std::max<int64_t>({int64_t{target.y}, 0, originY});
    const int64_t clipRight = std::min<int64_t>(
        {int64_t{target.x} + target.width, int64_t{target.framebufferWidth}, originX + place.destWidth});
    const int64_t clipBottom = std::min<int64_t>(
        {int64_t{target.y} + target.height, int64_t{target.framebufferHeight}, originY + place.destHeight});
    if (clipRight <= clipLeft || clipBottom <= clipTop) return true;
    const int32_t i0 = static_cast<int32_t>(clipLeft - originX);
    const int32_t i1 = static_cast<int32_t>(clipRight - originX);
    const int32_t j0 = static_cast<int32_t>(clipTop - originY);
    const int32_t j1 = static_cast<int32_t>(clipBottom - originY);

    const uint32_t pw = place.bufferWidth;
    const uint32_t ph = place.bufferHeight;
    std::vector<uint8_t> buffer;
    std::vector<uint32_t> background;
    std::vector<uint32_t> columns(static_cast<size_t>(i1 - i0) * kSamplesPerAxis);
    std::vector<uint32_t> rows(static_cast<size_t>(j1 - j0) * kSamplesPerAxis);
    try {
        buffer.assign(size_t{pw} * ph, 0);
        background.resize(static_cast<size_t>(i1 - i0) * static_cast<size_t>(j1 - j0));
    } catch (const std::bad_alloc&) {
        return false;
    }

    // Sample positions: destination pixel i starts at i * step (1/32768 units of
    // the buffer) and takes four samples a quarter step apart on each axis.
    const uint64_t stepX = (uint64_t{pw} << 15) / static_cast<uint64_t>(place.destWidth);
    const uint64_t stepY = (uint64_t{ph} << 15) / static_cast<uint64_t>(place.destHeight);
    for (int32_t i = i0; i < i1; ++i)
        for (int k = 0; k < kSamplesPerAxis; ++k)
            columns[static_cast<size_t>(i - i0) * kSamplesPerAxis + k] =
                static_cast<uint32_t>((static_cast<uint64_t>(i) * stepX + k * stepX / kSamplesPerAxis) >> 15);
    for (int32_t j = j0; j < j1; ++j)
        for (int k = 0; k < kSamplesPerAxis; ++k)
            rows[static_cast<size_t>(j - j0) * kSamplesPerAxis + k] =
                static_cast<uint32_t>((static_cast<uint64_t>(j) * stepY + k * stepY / kSamplesPerAxis) >> 15);

    // The coverage plane blends what the colour planes drew with what was there before.
    const int32_t clipWidth = i1 - i0;
    for (int32_t j = j0; j < j1; ++j) {
        const uint32_t* line =
            target.pixels + size_t{static_cast<uint32_t>(originY + j)} * target.pixelsPerRow;
        std::copy(line + originX + i0, line + originX + i1,
                  background.begin() + static_cast<size_t>(j - j0) * clipWidth);
    }

    const bool tinted = mode == kSqiModeTinted;
    size_t at = kSqiHeaderSize;
    for (int plane = 0; plane < 4; ++plane) {
        uint32_t length = 0;
        const uint8_t* stream = nullptr;
        if (size - at >= 4) {
            length = uint32_t{data[at]} | (uint32_t{data[at + 1]} << 8) | (uint32_t{data[at + 2]} << 16) |
                     (uint32_t{data[at + 3]} << 24);
            at += 4;
            length = static_cast<uint32_t>(std::min<size_t>(length, size - at));
            stream = data + at;
            at += length;
        } else {
            at = size;
        }
        const int bits = kSqiPlaneBits[plane];
        std::fill(buffer.begin(), buffer.end(), 0);
        Sqi_DecodePlane(stream, length, bits, pw, ph, buffer.data());

        const Fields tint = FieldsOf565(plane < 3 ? target.tint[plane] : 0);
        const int shiftTo8 = 8 - bits;
        for (int32_t j = j0; j < j1; ++j) {
            uint32_t* line =
                target.pixels + size_t{static_cast<uint32_t>(originY + j)} * target.pixelsPerRow + originX;
            const uint32_t* rowSamples = &rows[static_cast<size_t>(j - j0) * kSamplesPerAxis];
            const uint32_t* saved = &background[static_cast<size_t>(j - j0) * clipWidth];
            for (int32_t i = i0; i < i1; ++i) {
                const uint32_t* colSamples = &columns[static_cast<size_t>(i - i0) * kSamplesPerAxis];
                uint32_t sum = 0;
                for (int ky = 0; ky < kSamplesPerAxis; ++ky) {
                    const uint8_t* src = buffer.data() + size_t{rowSamples[ky]} * pw;
                    sum += src[colSamples[0]] + src[colSamples[1]] + src[colSamples[2]] + src[colSamples[3]];
                }
                const int32_t value = static_cast<int32_t>(sum >> 4);
                Fields f = FieldsOf(line[i]);
                if (plane == 3) {
                    const Fields bg = FieldsOf(saved[i - i0]);
                    f.r = (f.r * value + bg.r * (256 - value)) >> 8;
                    f.g = (f.g * value + bg.g * (256 - value)) >> 8;
                    f.b = (f.b * value + bg.b * (256 - value)) >> 8;
                } else if (!tinted) {
                    if (plane == 0) f.r = value;
                    if (plane == 1) f.g = value;
                    if (plane == 2) f.b = value;
                } else {
                    const int32_t s = value << shiftTo8;
                    const Fields add{tint.r * s / 256, tint.g * s / 256, tint.b * s / 256};
                    if (plane == 0) {
                        f = add;
                    } else {
                        f.r += add.r;
                        f.g += add.g;
                        f.b += add.b;
                    }
                }
                line[i] = PackFields(f);
            }
        }
    }
    return true;
}
