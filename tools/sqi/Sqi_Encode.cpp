// The .sqi encoder of pellucida-sqi.
#include "tools/sqi/Sqi_Encode.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kBits[4] = {5, 6, 5, 8};
// Colour under fully transparent pixels is spread from their neighbours, so
// that resampling at the edge of a shape does not pull in black.
constexpr int kBleedPasses = 64;

class BitWriter {
public:
    void Put(uint32_t value, int bits) {
        for (int i = 0; i < bits; ++i) {
            if (count_ % 8 == 0) bytes_.push_back(0);
            if ((value >> i) & 1u) bytes_.back() |= static_cast<uint8_t>(1u << (count_ % 8));
            ++count_;
        }
    }
    std::vector<uint8_t> Take() { return std::move(bytes_); }

private:
    std::vector<uint8_t> bytes_;
    uint64_t count_ = 0;
};

uint32_t NextPowerOfTwo(uint32_t v) {
    uint32_t p = 1;
    while (p < v) p <<= 1;
    return p;
}

// Bilinear resampling of the straight-alpha source to the grid, weighting
// colour by coverage.
std::vector<float> Resample(const SqiSource& src, uint32_t gw, uint32_t gh) {
    std::vector<float> out(size_t{gw} * gh * 4);
    for (uint32_t y = 0; y < gh; ++y) {
        const float sy = std::clamp((y + 0.5f) * src.height / gh - 0.5f, 0.0f, float(src.height - 1));
        const uint32_t y0 = static_cast<uint32_t>(sy);
        const uint32_t y1 = std::min(y0 + 1, src.height - 1);
        const float fy = sy - y0;
        for (uint32_t x = 0; x < gw; ++x) {
            const float sx = std::clamp((x + 0.5f) * src.width / gw - 0.5f, 0.0f, float(src.width - 1));
            const uint32_t x0 = static_cast<uint32_t>(sx);
            const uint32_t x1 = std::min(x0 + 1, src.width - 1);
            const float fx = sx - x0;
            const uint32_t xs[4] = {x0, x1, x0, x1};
            const uint32_t ys[4] = {y0, y0, y1, y1};
            const float ws[4] = {(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
            float rgb[3] = {0, 0, 0};
            float a = 0;
            float plain[3] = {0, 0, 0};
            for (int k = 0; k < 4; ++k) {
                const uint8_t* p = &src.rgba[(size_t{ys[k]} * src.width + xs[k]) * 4];
                const float w = ws[k];
                for (int c = 0; c < 3; ++c) {
                    rgb[c] += w * p[c] * p[3];
                    plain[c] += w * p[c];
                }
                a += w * p[3];
            }
            float* o = &out[(size_t{y} * gw + x) * 4];
            for (int c = 0; c < 3; ++c) o[c] = a > 0 ? rgb[c] / a : plain[c];
            o[3] = a;
        }
    }
    return out;
}

void Bleed(std::vector<float>& grid, uint32_t gw, uint32_t gh) {
    std::vector<uint8_t> known(size_t{gw} * gh);
    for (size_t i = 0; i < known.size(); ++i) known[i] = grid[i * 4 + 3] > 0;
    for (int pass = 0; pass < kBleedPasses; ++pass) {
        std::vector<uint8_t> next = known;
        bool changed = false;
        for (uint32_t y = 0; y < gh; ++y)
            for (uint32_t x = 0; x < gw; ++x) {
                const size_t i = size_t{y} * gw + x;
                if (known[i]) continue;
                float sum[3] = {0, 0, 0};
                int n = 0;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) {
                        const int nx = int(x) + dx, ny = int(y) + dy;
                        if (nx < 0 || ny < 0 || nx >= int(gw) || ny >= int(gh)) continue;
                        const size_t j = size_t(ny) * gw + size_t(nx);
                        if (!known[j]) continue;
                        for (int c = 0; c < 3; ++c) sum[c] += grid[j * 4 + c];
                        ++n;
                    }
                if (n == 0) continue;
                for (int c = 0; c < 3; ++c) grid[i * 4 + c] = sum[c] / n;
                next[i] = 1;
                changed = true;
            }
        known.swap(next);
        if (!changed) break;
    }
}

struct Plane {
    uint32_t width, height;
    std::vector<uint8_t> values;
};

// The tree over (x, y, w, h), children in the decoder's order and with its halves.
void EncodeNode(const Plane& p, int bits, int32_t x, int32_t y, int32_t w, int32_t h, BitWriter* out) {
    if (w <= 0 || h <= 0) {
        out->Put(0, bits);
        out->Put(0, 1);
        return;
    }
    uint64_t sum = 0;
    const uint8_t first = p.values[size_t(y) * p.width + size_t(x)];
    bool uniform = true;
    for (int32_t yy = y; yy < y + h; ++yy)
        for (int32_t xx = x; xx < x + w; ++xx) {
            const uint8_t v = p.values[size_t(yy) * p.width + size_t(xx)];
            sum += v;
            uniform = uniform && v == first;
        }
    const uint64_t area = uint64_t(w) * uint64_t(h);
    const uint32_t mean = static_cast<uint32_t>((sum + area / 2) / area);
    if (uniform || (w == 1 && h == 1)) {
        out->Put(uniform ? first : mean, bits);
        out->Put(0, 1);
        return;
    }
    out->Put(mean, bits);
    out->Put(1, 1);
    const int32_t hw = w / 2, hh = h / 2;
    EncodeNode(p, bits, x, y, hw, hh, out);
    EncodeNode(p, bits, x + hw, y, w - hw, hh, out);
    EncodeNode(p, bits, x, y + hh, hw, h - hh, out);
    EncodeNode(p, bits, x + hw, y + hh, w - hw, h - hh, out);
}

void PutLe(std::vector<uint8_t>& out, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

}  // namespace

std::vector<uint8_t> Sqi_Encode(const SqiSource& source, bool tinted) {
    const uint32_t gw = NextPowerOfTwo(source.width);
    const uint32_t gh = NextPowerOfTwo(source.height);
    std::vector<float> grid = Resample(source, gw, gh);
    Bleed(grid, gw, gh);

    std::vector<uint8_t> file;
    PutLe(file, source.width, 2);
    PutLe(file, source.height, 2);
    PutLe(file, tinted ? 1u : 0u, 4);
    for (int plane = 0; plane < 4; ++plane) {
        Plane p{gw, gh, std::vector<uint8_t>(size_t{gw} * gh)};
        const float top = float((1u << kBits[plane]) - 1);
        for (size_t i = 0; i < p.values.size(); ++i) {
            const float v = std::clamp(grid[i * 4 + plane] / 255.0f, 0.0f, 1.0f);
            p.values[i] = static_cast<uint8_t>(std::lround(v * top));
        }
        BitWriter writer;
        EncodeNode(p, kBits[plane], 0, 0, int32_t(gw), int32_t(gh), &writer);
        const std::vector<uint8_t> stream = writer.Take();
        PutLe(file, static_cast<uint32_t>(stream.size()), 4);
        file.insert(file.end(), stream.begin(), stream.end());
    }
    return file;
}
