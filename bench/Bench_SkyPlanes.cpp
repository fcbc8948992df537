// The benchmarks' deep-sky image; see Bench_SkyPlanes.h. Single precision
// where the reference generator works in single precision, so the low bits of
// the 30-bit samples carry the same kind of noise.
#include "Bench_SkyPlanes.h"

#include "formats/Fits_Read.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace {

constexpr int W = kBenchSkyWidth;
constexpr int H = kBenchSkyHeight;
constexpr size_t kSamples = size_t{W} * H;

// xoshiro256**: fast and reproducible on every platform.
class Random {
public:
    explicit Random(uint64_t seed) {
        for (uint64_t& word : s_) {
            seed += 0x9E3779B97F4A7C15ull;
            uint64_t z = seed;
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            word = z ^ (z >> 31);
        }
    }
    uint64_t Next() {
        const uint64_t result = Rotl(s_[1] * 5, 7) * 9;
        const uint64_t t = s_[1] << 17;
        s_[2] ^= s_[0];
        s_[3] ^= s_[1];
        s_[1] ^= s_[2];
        s_[0] ^= s_[3];
        s_[2] ^= t;
        s_[3] = Rotl(s_[3], 45);
        return result;
    }
    double Uniform() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
    double Uniform(double lo, double hi) { return lo + (hi - lo) * Uniform(); }
    double Normal() {
        if (haveSpare_) {
            haveSpare_ = false;
            return spare_;
        }
        const double u = 1.0 - Uniform();
        const double v = Uniform();
        const double r = std::sqrt(-2.0 * std::log(u));
        spare_ = r * std::sin(6.283185307179586 * v);
        haveSpare_ = true;
        return r * std::cos(6.283185307179586 * v);
    }
    // Exact for faint pixels; the normal limit where the count is large.
    double Poisson(double lambda) {
        if (lambda <= 0.0) return 0.0;
        if (lambda < 30.0) {
            const double limit = std::exp(-lambda);
            double product = Uniform();
            int k = 0;
            while (product > limit) {
                product *= Uniform();
                ++k;
            }
            return k;
        }
        return std::max(0.0, std::round(lambda + std::sqrt(lambda) * Normal()));
    }

private:
    static uint64_t Rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    uint64_t s_[4];
    double spare_ = 0.0;
    bool haveSpare_ = false;
};

void AddSky(std::vector<float>& img) {
    const float base[3][3] = {{0.021f, 0.006f, 0.002f}, {0.019f, 0.005f, 0.003f}, {0.017f, 0.004f, 0.004f}};
    for (int c = 0; c < 3; ++c) {
        float* plane = img.data() + c * kSamples;
        for (int y = 0; y < H; ++y) {
            for (int x = 0; x < W; ++x) {
                plane[static_cast<size_t>(y) * W + x] = base[c][0] + base[c][1] * x / W + base[c][2] * y / H;
            }
        }
    }
}

void AddNebula(std::vector<float>& img) {
    struct Lobe {
        float cx, cy, sx, sy, theta, amp, colour[3];
    };
    const Lobe lobes[] = {{3100, 1900, 900, 500, 0.5f, 0.020f, {1.0f, 0.45f, 0.55f}},
                          {2700, 2300, 400, 260, -0.3f, 0.030f, {1.0f, 0.35f, 0.40f}},
                          {3500, 1700, 300, 200, 1.1f, 0.015f, {0.4f, 0.9f, 1.0f}}};
    for (const Lobe& lobe : lobes) {
        const float ct = std::cos(lobe.theta), st = std::sin(lobe.theta);
        // Beyond 7 sigma the lobe adds less than a float step of the sky.
        const float reach = 7.0f * std::max(lobe.sx, lobe.sy);
        const int x0 = std::max(0, static_cast<int>(lobe.cx - reach));
        const int x1 = std::min(W, static_cast<int>(lobe.cx + reach));
        const int y0 = std::max(0, static_cast<int>(lobe.cy - reach));
        const int y1 = std::min(H, static_cast<int>(lobe.cy + reach));
        for (int y = y0; y < y1; ++y) {
            for (int x = x0; x < x1; ++x) {
                const float u = ((x - lobe.cx) * ct + (y - lobe.cy) * st) / lobe.sx;
                const float v = (-(x - lobe.cx) * st + (y - lobe.cy) * ct) / lobe.sy;
                const float blob = lobe.amp * std::exp(-0.5f * (u * u + v * v));
                for (int c = 0; c < 3; ++c)
                    img[c * kSamples + static_cast<size_t>(y) * W + x] += lobe.colour[c] * blob;
            }
        }
    }
}

void AddStars(std::vector<float>& img, Random& random) {
    constexpr int kStars = 5000;
    for (int i = 0; i < kStars; ++i) {
        const double peak = i < 25 ? random.Uniform(2.0, 20.0) : 0.003 / random.Uniform(0.0005, 1.0);
        const double sigma = random.Uniform(1.2, 2.2) * (1 + 0.15 * std::log10(1 + peak));
        const double sx = random.Uniform(8, W - 8), sy = random.Uniform(8, H - 8);
        const double tint = random.Uniform(-1, 1);
        const bool halo = peak > 0.3;
        const double sOut = halo ? 6.0 * sigma : sigma;
        const double aOut = halo ? 0.05 * peak : peak;
        const int r = static_cast<int>(
            std::min(80.0, std::ceil(sOut * std::sqrt(2 * std::log(std::max(aOut, 2e-5) / 1e-5)))));
        const int x0 = std::max(0, static_cast<int>(sx) - r), x1 = std::min(W, static_cast<int>(sx) + r + 1);
        const int y0 = std::max(0, static_cast<int>(sy) - r), y1 = std::min(H, static_cast<int>(sy) + r + 1);
        const double factor[3] = {1 + 0.25 * tint, 1.0, 1 - 0.25 * tint};
        for (int y = y0; y < y1; ++y) {
            for (int x = x0; x < x1; ++x) {
                const double d2 = (x - sx) * (x - sx) + (y - sy) * (y - sy);
                double profile = peak * std::exp(-0.5 * d2 / (sigma * sigma));
                if (halo) profile += aOut * std::exp(-0.5 * d2 / (sOut * sOut));
                for (int c = 0; c < 3; ++c) {
                    img[c * kSamples + static_cast<size_t>(y) * W + x] +=
                        static_cast<float>(factor[c] * profile);
                }
            }
        }
    }
}

void AddNoise(std::vector<float>& img, Random& random) {
    constexpr double kFullWell = 20000.0;
    for (float& v : img) {
        const double lambda = std::clamp(static_cast<double>(v), 0.0, 1.5) * kFullWell;
        float sample = static_cast<float>(random.Poisson(lambda)) / static_cast<float>(kFullWell);
        sample += static_cast<float>(random.Normal() * 0.0005);
        v = std::clamp(sample, 0.0f, 1.0f);
    }
}

bool LoadPlanes(const char* path, ImageBuffer& image) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) return false;
    const std::streamoff size = in.tellg();
    const std::streamoff plane = static_cast<std::streamoff>(kSamples * 8);
    if (size != plane && size != 3 * plane) return false;
    in.seekg(0);
    int64_t* planes[3] = {image.red, image.green, image.blue};
    for (int c = 0; c < 3; ++c) {
        if (c > 0 && size == plane) {
            std::copy(planes[0], planes[0] + kSamples, planes[c]);
        } else if (!in.read(reinterpret_cast<char*>(planes[c]), plane)) {
            return false;
        }
    }
    return true;
}

struct Sky {
    ImagePtr image;
    std::string source;
};

Sky MakeSky() {
    Sky sky;
    sky.image.reset(Image_Create(W, H));
    sky.image->bitDepth = 30;
    sky.image->maxValue = (int64_t{1} << 30) - 1;
    if (const char* path = std::getenv("PELLUCIDA_BENCH_PLANES"); path && *path) {
        // A FITS file (the comparison tools' rgb_f32.fits) goes through our own
        // reader, so both sides start from the very same samples.
        const std::string name(path);
        if (name.ends_with(".fits") || name.ends_with(".fit")) {
            ImagePtr read(Fits_Read(path));
            if (!read || read->width != W || read->height != H) {
                std::fprintf(stderr, "PELLUCIDA_BENCH_PLANES: %s is not a 6000 x 4000 FITS image\n", path);
                std::exit(2);
            }
            sky.image = std::move(read);
            sky.source = path;
            return sky;
        }
        if (LoadPlanes(path, *sky.image)) {
            sky.source = path;
            return sky;
        }
        std::fprintf(stderr, "PELLUCIDA_BENCH_PLANES: %s is not one or three 6000 x 4000 int64 planes\n",
                     path);
        std::exit(2);
    }
    std::vector<float> img(3 * kSamples);
    Random random(20240601);
    AddSky(img);
    AddNebula(img);
    AddStars(img, random);
    AddNoise(img, random);
    int64_t* planes[3] = {sky.image->red, sky.image->green, sky.image->blue};
    for (int c = 0; c < 3; ++c) {
        for (size_t i = 0; i < kSamples; ++i) {
            planes[c][i] = std::llround(static_cast<double>(img[c * kSamples + i]) * 1073741823.0);
        }
    }
    sky.source = "generated";
    return sky;
}

Sky& TheSky() {
    static Sky sky = MakeSky();
    return sky;
}

}  // namespace

ImageBuffer& Bench_SkyImage() {
    return *TheSky().image;
}

const std::string& Bench_SkySource() {
    return TheSky().source;
}
