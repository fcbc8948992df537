// FITS reader on crafted headers. The real files' samples are pinned by their
// SHA-256 in the data folder (see Readers_test): they hold the BZERO of
// unsigned data, the float cap at 128, negatives without BZERO, NaN, a constant
// image and the image extension behind a data-less primary (and its refusal
// without NEXTEND). Crafted files pin the rules the samples do not reach, with
// their exact results.
#include "formats/Fits_Read.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/Sha256.h"
#include "support/TestData.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <string>
#include <vector>

namespace {

// A header of the given cards (END added) padded to whole blocks, then data.
std::vector<uint8_t> MakeFits(std::vector<std::string> cards, const std::vector<uint8_t>& data,
                              bool addEnd = true) {
    if (addEnd) cards.push_back("END");
    std::string header;
    for (const auto& c : cards) header += (c + std::string(80, ' ')).substr(0, 80);
    header.resize((header.size() + 2879) / 2880 * 2880, ' ');
    header.append(data.begin(), data.end());
    return std::vector<uint8_t>(header.begin(), header.end());
}

// Values stored big-endian as BITPIX says.
std::vector<uint8_t> BigEndian(int bitpix, const std::vector<double>& values) {
    std::vector<uint8_t> out;
    for (double v : values) {
        const uint64_t u = bitpix == -32   ? std::bit_cast<uint32_t>(float(v))
                           : bitpix == -64 ? std::bit_cast<uint64_t>(v)
                                           : uint64_t(int64_t(v));
        for (int b = std::abs(bitpix) / 8 - 1; b >= 0; --b) out.push_back(uint8_t(u >> (8 * b)));
    }
    return out;
}

constexpr auto ReadMemory = ReadBytes<&Fits_ReadMemory>;

// The red plane; for colour images the green and blue ones after it, for grey
// ones checked to equal it.
std::vector<int64_t> Samples(const ImageBuffer* image) {
    const size_t n = size_t(image->width) * size_t(image->height);
    std::vector<int64_t> out(image->red, image->red + n);
    for (const int64_t* plane : {image->green, image->blue})
        if (image->mono)
            EXPECT_EQ(std::vector<int64_t>(plane, plane + n), out);
        else
            out.insert(out.end(), plane, plane + n);
    return out;
}

// A card "KEYWORD = value" in the free format.
std::string Keyed(const std::string& keyword, const std::string& value) {
    return (keyword + std::string(8, ' ')).substr(0, 8) + "= " + value;
}

constexpr int64_t kTop = 1073741822;  // 2^30 - 2: the final clamp keeps the top one below maxValue

struct Crafted {
    const char* what;
    int bitpix, width, height, planes;
    std::vector<std::pair<const char*, const char*>> cards;  // after SIMPLE, BITPIX and NAXISn
    std::vector<double> values;
    std::vector<int64_t> samples;  // see Samples()
    const char* digest = nullptr;  // instead of samples: SampleHash of the red plane
    size_t cut = 0;                // bytes missing from the end of the data
};

// Float values spread over 0..top, one of them replaced by `value`.
std::vector<double> Ramp(int n, double step, double top, int at, double value) {
    std::vector<double> out;
    for (int i = 0; i < n; ++i) out.push_back(float(std::fmod(i * step, 1.0) * top));
    out[at] = value;
    return out;
}

const std::vector<double> kLarge = {0, 64, 128, 65535};
const std::vector<int64_t> kLifted = {0, 1048592, 2097184, kTop};

// Floats above 128 are held there unless BSCALE or a known writer lifts the cap.
const Crafted kValues[] = {
    Crafted("BSCALE lifts the cap", -32, 4, 1, 1, {{"BSCALE", "1.0"}}, kLarge, kLifted),
    Crafted("Nebulosity lifts the cap", -32, 4, 1, 1, {{"CREATOR", "'Nebulosity 4'"}}, kLarge, kLifted),
    Crafted("DeepSkyStacker lifts the cap", -32, 4, 1, 1, {{"SOFTWARE", "'DeepSkyStacker'"}}, kLarge,
            kLifted),
    Crafted("IRAF lifts the cap", -32, 4, 1, 1, {{"ORIGIN", "'NOAO-IRAF FITS'"}}, kLarge, kLifted),
    Crafted("Fitswork lifts the cap", -32, 4, 1, 1, {{"COMMENT", "'Created with 1234 Fitswork'"}}, kLarge,
            kLifted),
    Crafted("BZERO keeps negatives", -32, 4, 1, 1, {{"BZERO", "0.0"}}, {-1, 0, 0.5, 1},
            {0, 536870912, 805306368, kTop}),
    Crafted("DATAMIN and DATAMAX clamp integers", 16, 4, 1, 1, {{"DATAMIN", "100.0"}, {"DATAMAX", "300.0"}},
            {0, 100, 200, 1000}, {0, 0, 536870912, kTop}),
    // Given a range, floats are clamped to it instead of to 0..128.
    Crafted("DATAMIN and DATAMAX clamp floats", -32, 4, 1, 1, {{"DATAMIN", "1.0"}, {"DATAMAX", "3.0"}},
            {-5, 2, 3, 200}, {0, 536870912, kTop, kTop}),
    // Width 2: the 1/16 share pushed from every last column lands on the first
    // column of the row after next, through the flat array. The 128 samples
    // are pinned by their digest.
    Crafted("lower-right push from the last column", -32, 2, 64, 1, {{"DATAMIN", "0.0"}, {"DATAMAX", "3.0"}},
            Ramp(128, 0.618033988749, 2.9, 3, 3.0), {}, "8ad55fd54be9f52c"),
    Crafted("width one only pushes down", -64, 1, 5, 1, {{"BSCALE", "1.0"}}, {0.1, 3.7, 2.2, 9.9, 0.3},
            {0, 394435772, 230087533, kTop, 21913098}),
    // Three planes of four are colour; the fourth takes no part in the range.
    Crafted("three planes of four", 16, 2, 2, 4, {},
            {0, 1, 2, 3, 100, 101, 102, 103, 200, 201, 202, 203, 300, 301, 302, 303},
            {0, 5289368, 10578737, 15868106, 528936859, 534226227, 539515596, 544804965, 1057873718,
             1063163086, 1068452455, kTop}),
    // Four values announced, two and a half present: the half value keeps the
    // low byte of the value before it (696), and the last value repeats it.
    Crafted("truncated data", 16, 4, 1, 1, {}, {1000, 3000, 512, 0}, {141674268, kTop, 0, 0}, nullptr, 3),
};

}  // namespace

TEST(FitsValues, NormalisationAndDiffusionOfCraftedFiles) {
    for (const Crafted& c : kValues) {
        SCOPED_TRACE(c.what);
        std::vector<std::string> cards = {Keyed("SIMPLE", "T"), Keyed("BITPIX", std::to_string(c.bitpix)),
                                          Keyed("NAXIS", c.planes > 1 ? "3" : "2"),
                                          Keyed("NAXIS1", std::to_string(c.width)),
                                          Keyed("NAXIS2", std::to_string(c.height))};
        if (c.planes > 1) cards.push_back(Keyed("NAXIS3", std::to_string(c.planes)));
        for (const auto& [keyword, value] : c.cards) cards.push_back(Keyed(keyword, value));
        std::vector<uint8_t> data = BigEndian(c.bitpix, c.values);
        data.resize(data.size() - c.cut);
        ImagePtr image = ReadMemory(MakeFits(cards, data));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->mono, c.planes == 1 ? 1 : 0);
        if (c.digest)
            EXPECT_EQ(Sha256_Hex(image->red, Samples(image.get()).size() * 8).substr(0, 16), c.digest);
        else
            EXPECT_EQ(Samples(image.get()), c.samples);
    }
}

TEST(FitsRefused, MalformedAndTruncatedHeaders) {
    const std::vector<std::string> good = {"SIMPLE  =                    T", "BITPIX  =                   16",
                                           "NAXIS   =                    2", "NAXIS1  =                    2",
                                           "NAXIS2  =                    2"};
    const auto data = BigEndian(16, {1, 2, 3, 4});
    ASSERT_NE(ReadMemory(MakeFits(good, data)), nullptr);

    // Logical false, a string that is not logical true, SIMPLE not first, bad BITPIX, NAXIS and sizes,
    // an image larger than the whole file, or one that could never be held.
    const std::pair<size_t, const char*> replaced[] = {
        {0, "SIMPLE  =                    F"}, {0, "SIMPLE  =                  'T'"},
        {0, "BITPIX  =                   16"}, {1, "BITPIX  =                   64"},
        {1, "BITPIX  =                   12"}, {2, "NAXIS   =                    1"},
        {3, "NAXIS1  =                    0"}, {4, "NAXIS2  =                   -2"},
        {3, "NAXIS1  =                 5000"}, {3, "NAXIS1  =           2000000000"}};
    for (auto [index, card] : replaced) {
        auto cards = good;
        cards[index] = card;
        EXPECT_EQ(ReadMemory(MakeFits(cards, data)), nullptr) << card;
    }

    // No END anywhere, a header cut short, nothing at all.
    EXPECT_EQ(ReadMemory(MakeFits(good, data, false)), nullptr);
    auto cut = MakeFits(good, data);
    cut.resize(300);  // inside the fourth card, before END
    EXPECT_EQ(ReadMemory(cut), nullptr);
    EXPECT_EQ(Fits_ReadMemory(cut.data(), 0), nullptr);
}

TEST(FitsRefused, EveryTruncationOfARealFileIsSafe) {
    PELLUCIDA_REQUIRE_DATA(path, "fits/odd/astropy_wfpc2_mef_4chips_datamin0.fits");
    const std::vector<uint8_t> file = ReadFileBytes(path);
    for (size_t size = 0; size < file.size(); size += 97) {
        ImagePtr image(Fits_ReadMemory(file.data(), size));
        if (image) {
            EXPECT_EQ(image->width, 40);
        }
    }
}
