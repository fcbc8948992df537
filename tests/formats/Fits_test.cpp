// FITS reader against the real sample files and against crafted headers.
//
// Real files: each is read or refused as the data folder's expected.json says,
// with its size and mono flag, and the samples are compared exactly (a) with the
// SHA-256 listed there and (b) with a plain re-implementation in this file of
// the normalisation and the error diffusion, fed from the raw big-endian values.
#include "formats/Fits_Header.h"
#include "formats/Fits_Read.h"
#include "image/Image.h"
#include "support/Manifest.h"
#include "support/Sha256.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

// The samples as the data folder hashes them: int64 little-endian, planes red,
// green, blue, each height x width.
std::string SampleHash(const ImageBuffer* image) {
    Sha256 sha;
    const size_t n = static_cast<size_t>(image->width) * image->height;
    std::vector<uint8_t> row(static_cast<size_t>(image->width) * 8);
    for (const int64_t* plane : {image->red, image->green, image->blue})
        for (size_t start = 0; start < n; start += image->width) {
            for (int32_t x = 0; x < image->width; ++x) {
                const uint64_t v = static_cast<uint64_t>(plane[start + x]);
                for (int b = 0; b < 8; ++b) row[8 * x + b] = static_cast<uint8_t>(v >> (8 * b));
            }
            sha.Update(row.data(), row.size());
        }
    return sha.Hex().substr(0, 16);
}

// ---------------------------------------------------------------- reference

// What the header says, parsed the ordinary way (keyword in columns 1-8).
struct RefHeader {
    int bitpix = 0, naxis = 0, n1 = 0, n2 = 0, n3 = 0;
    double bzero = 0, dataMin = 0, dataMax = 0;
    bool hasBzero = false, hasBscale = false, knownWriter = false;
    size_t dataOffset = 0;
};

std::string Trim(std::string s) {
    std::string out;
    for (char c : s)
        if (c != ' ') out += c;
    return out;
}

bool ParsePrimary(const std::vector<uint8_t>& file, RefHeader* h) {
    for (size_t off = 0; off + 80 <= file.size(); off += 80) {
        const std::string card(reinterpret_cast<const char*>(&file[off]), 80);
        const std::string key = Trim(card.substr(0, 8));
        std::string value = card.substr(10);
        value = Trim(value.substr(0, value.find('/')));
        if (key == "END") {
            h->dataOffset = (off / 2880 + 1) * 2880;
            return true;
        }
        if (card[8] != '=') continue;
        if (key == "BITPIX") h->bitpix = std::stoi(value);
        if (key == "NAXIS") h->naxis = std::stoi(value);
        if (key == "NAXIS1") h->n1 = std::stoi(value);
        if (key == "NAXIS2") h->n2 = std::stoi(value);
        if (key == "NAXIS3") h->n3 = std::stoi(value);
        if (key == "BZERO") h->bzero = std::stod(value), h->hasBzero = true;
        if (key == "BSCALE") h->hasBscale = true;
        if (key == "DATAMIN") h->dataMin = std::stod(value);
        if (key == "DATAMAX") h->dataMax = std::stod(value);
        if (key == "ORIGIN" && value.rfind("'NOAO-IRAF", 0) == 0) h->knownWriter = true;
        if (key == "CREATOR" && value.rfind("'Nebulosity", 0) == 0) h->knownWriter = true;
        if (key == "SOFTWARE" && value.rfind("'DeepSkySt", 0) == 0) h->knownWriter = true;
    }
    return false;
}

// Raw big-endian values of plane p, as doubles; NaN stays NaN.
std::vector<double> RawPlane(const std::vector<uint8_t>& file, const RefHeader& h, int p) {
    const size_t bytes = static_cast<size_t>(std::abs(h.bitpix) / 8);
    const size_t n = static_cast<size_t>(h.n1) * h.n2;
    std::vector<double> out(n);
    for (size_t i = 0; i < n; ++i) {
        const size_t at = h.dataOffset + (p * n + i) * bytes;
        uint64_t u = 0;
        for (size_t b = 0; b < bytes; ++b) u = u << 8 | file.at(at + b);
        switch (h.bitpix) {
            case 8:
                out[i] = static_cast<double>(u);
                break;
            case 16:
                out[i] = static_cast<int16_t>(u);
                break;
            case 32:
                out[i] = static_cast<int32_t>(u);
                break;
            case -32:
                out[i] = std::bit_cast<float>(static_cast<uint32_t>(u));
                break;
            default:
                out[i] = std::bit_cast<double>(u);
                break;
        }
    }
    return out;
}

struct RefRules {
    bool isFloat = false;
    double bzero = 0, dataMin = 0, dataMax = 0;
    bool hasBzero = false, uncapped = false;
};

struct RefOptions {
    bool lowerRightWraps = true;  // the flat-array push from the last column
    bool finalClamp = true;
};

// Normalisation and Floyd-Steinberg, written for clarity: one plain 2-D walk.
std::vector<std::vector<int64_t>> Reference(std::vector<std::vector<double>> planes, int w, int h,
                                            const RefRules& r, RefOptions options = {}) {
    const double unset = 140737488355328.0;
    const bool rangeGiven = !(r.dataMin == 0 && r.dataMax == 0);
    const double lo = rangeGiven ? r.dataMin : -unset, hi = rangeGiven ? r.dataMax : unset;
    double minimum = unset, maximum = -unset;
    for (auto& plane : planes)
        for (double& v : plane) {
            if (r.isFloat && std::isnan(v)) {
                v = -1.0;
                continue;
            }
            v += r.bzero;
            if (!r.isFloat || rangeGiven) {
                v = std::max(v, lo);
                v = std::min(v, hi);
            } else {
                if (v < 0 && !r.hasBzero) v = 0;
                if (v > 128 && !r.uncapped) v = 128;
            }
            minimum = std::min(minimum, v);
            maximum = std::max(maximum, v);
        }
    const double range = maximum - minimum;
    const double scale = range > 0 ? 1073741824.0 / range : 1.0;
    std::vector<std::vector<int64_t>> out;
    for (auto& t : planes) {
        std::vector<int64_t> q(t.size());
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const size_t i = static_cast<size_t>(y) * w + x;
                const double v = t[i] - minimum;
                const double s = v * scale;
                q[i] = (s >= -9.2233720368547758e18 && s < 9.2233720368547758e18) ? static_cast<int64_t>(s)
                                                                                  : INT64_MIN;
                const double e = v - static_cast<double>(q[i]) / scale;
                if (x < w - 1) t[i + 1] += e * 0.4375;
                if (y < h - 1) {
                    if (x > 0) t[i + w - 1] += e * 0.1875;
                    t[i + w] += e * 0.3125;
                    if (x < w - 1 || (options.lowerRightWraps && i + w + 1 < t.size()))
                        t[i + w + 1] += e * 0.0625;
                }
            }
        if (options.finalClamp)
            for (int64_t& s : q) s = s < 0 ? 0 : (s >= 1073741823 ? 1073741822 : s);
        out.push_back(std::move(q));
    }
    return out;
}

std::vector<uint8_t> LoadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

// ---------------------------------------------------------------- crafted files

std::string Card(const std::string& text) {
    std::string c = text.substr(0, 80);
    c.resize(80, ' ');
    return c;
}

// A header of the given cards (END added) padded to whole blocks, then data.
std::vector<uint8_t> MakeFits(const std::vector<std::string>& cards, const std::vector<uint8_t>& data,
                              bool addEnd = true) {
    std::string header;
    for (const auto& c : cards) header += Card(c);
    if (addEnd) header += Card("END");
    header.resize((header.size() + 2879) / 2880 * 2880, ' ');
    std::vector<uint8_t> out(header.begin(), header.end());
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

std::vector<uint8_t> BigEndianFloats(const std::vector<float>& values) {
    std::vector<uint8_t> out;
    for (float f : values) {
        const uint32_t u = std::bit_cast<uint32_t>(f);
        for (int b = 3; b >= 0; --b) out.push_back(static_cast<uint8_t>(u >> (8 * b)));
    }
    return out;
}

std::vector<uint8_t> BigEndianInt16(const std::vector<int>& values) {
    std::vector<uint8_t> out;
    for (int v : values) {
        out.push_back(static_cast<uint8_t>((v >> 8) & 255));
        out.push_back(static_cast<uint8_t>(v & 255));
    }
    return out;
}

ImagePtr ReadBytes(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Fits_ReadMemory(bytes.data(), bytes.size()));
}

std::vector<int64_t> Red(const ImageBuffer* image) {
    return std::vector<int64_t>(image->red, image->red + static_cast<size_t>(image->width) * image->height);
}

}  // namespace

// ---------------------------------------------------------------- real files

TEST(FitsRealFiles, EveryFitsReadOrRefusedAsExpected) {
    PELLUCIDA_REQUIRE_DATA(json, "expected.json");
    int checked = 0;
    for (const ManifestEntry& entry : Manifest_Entries("FITS")) {
        const std::string& path = entry.file;
        const std::string& result = entry.result;
        const std::string& note = entry.notes;
        SCOPED_TRACE(path);
        const std::string full = TestData_Path(path);
        ASSERT_FALSE(full.empty()) << "listed but missing";
        ImagePtr image(Fits_Read(full.c_str()));
        ++checked;
        if (result == "refused") {
            EXPECT_EQ(image, nullptr);
            continue;
        }
        ASSERT_NE(image, nullptr);
        int w = 0, h = 0;
        char kind[16] = {};
        ASSERT_EQ(std::sscanf(result.c_str(), "%dx%d %15s", &w, &h, kind), 3);
        EXPECT_EQ(image->width, w);
        EXPECT_EQ(image->height, h);
        EXPECT_EQ(image->stride, w);
        EXPECT_EQ(image->mono, std::string(kind) == "mono" ? 1 : 0);
        EXPECT_EQ(image->bitDepth, 30);
        EXPECT_EQ(image->maxValue, 1073741823);
        EXPECT_EQ(image->alpha, nullptr);
        EXPECT_EQ(SampleHash(image.get()), note);
    }
    EXPECT_GE(checked, 40);
}

TEST(FitsRealFiles, SamplesMatchPlainReimplementation) {
    // Primary images of every BITPIX, with and without BZERO, DATAMIN/DATAMAX,
    // NaN, colour and a fourth plane.
    const char* files[] = {"fits/linear/m13_300px_float32.fits",
                           "fits/linear/msx_gc_e_float64.fits",
                           "fits/linear/spitzer_glimpse_float32_nan.fits",
                           "fits/linear/iraf_M51_B600s_int16.fits",
                           "fits/linear/dss_M67_1059px_int16.fits",
                           "fits/linear/hst_wfpc2_cube_200x200x4_float32.fits",
                           "fits/linear/2mass_gc_k_bscale.fits",
                           "fits/odd/hst_fgs_89688x7_int32.fits",
                           "fits/writers/pixinsight_M51_color_8.fits",
                           "fits/writers/pixinsight_NGC3344_mono_F32.fits",
                           "raw_cfa/sv305_8bit_CFA_GRBG_1920x1080.fits",
                           "derived/siril_M94_32x10s_rgb_uint16.fit",
                           "fits/odd/astropy_ngc1316_aips_datamin_mismatch.fits"};
    PELLUCIDA_REQUIRE_DATA(first, files[0]);
    for (const char* name : files) {
        SCOPED_TRACE(name);
        const std::string path = TestData_Path(name);
        ASSERT_FALSE(path.empty());
        const std::vector<uint8_t> file = LoadFile(path);
        RefHeader h;
        ASSERT_TRUE(ParsePrimary(file, &h));
        const int planes = std::min(h.n3 == 0 ? 1 : h.n3, 3);
        std::vector<std::vector<double>> raw;
        for (int p = 0; p < planes; ++p) raw.push_back(RawPlane(file, h, p));
        RefRules rules{h.bitpix < 0, h.bzero, h.dataMin, h.dataMax, h.hasBzero, h.hasBscale || h.knownWriter};
        const auto expected = Reference(raw, h.n1, h.n2, rules);

        ImagePtr image(Fits_Read(path.c_str()));
        ASSERT_NE(image, nullptr);
        const size_t n = static_cast<size_t>(h.n1) * h.n2;
        const int64_t* got[] = {image->red, image->green, image->blue};
        for (int p = 0; p < 3; ++p) {
            const auto& want = expected[planes == 1 ? 0 : p];
            std::vector<int64_t> plane(got[p], got[p] + n);
            if (p >= planes && planes > 1) {
                EXPECT_EQ(plane, std::vector<int64_t>(n, 0));
                continue;
            }
            size_t mismatches = 0, first = n;
            for (size_t i = 0; i < n; ++i)
                if (plane[i] != want[i]) mismatches++, first = std::min(first, i);
            EXPECT_EQ(mismatches, 0u) << "plane " << p << " first at " << first;
        }
    }
}

// ---------------------------------------------------------------- normalisation rules

TEST(FitsValues, UnsignedShortDarkestIsZeroBrightestOneBelowTop) {
    // BITPIX 16 + BZERO 32768 holds 0..65535; no range given.
    const auto bytes = MakeFits({"SIMPLE  =                    T", "BITPIX  =                   16",
                                 "NAXIS   =                    2", "NAXIS1  =                    4",
                                 "NAXIS2  =                    1", "BZERO   =              32768.0"},
                                BigEndianInt16({-32768, -32768 + 100, 0, 32767}));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->mono, 1);
    EXPECT_EQ(image->red[0], 0);
    EXPECT_EQ(image->red[3], 1073741822);  // 2^30 would be the top; the clamp keeps it one below
    EXPECT_EQ(Red(image.get()), std::vector<int64_t>(image->green, image->green + 4));
    EXPECT_EQ(Red(image.get()), std::vector<int64_t>(image->blue, image->blue + 4));
    const auto ref =
        Reference({{-32768, -32768 + 100, 0, 32767}}, 4, 1, RefRules{false, 32768.0, 0, 0, true, false});
    EXPECT_EQ(Red(image.get()), ref[0]);
    const auto unclamped = Reference({{-32768, -32768 + 100, 0, 32767}}, 4, 1,
                                     RefRules{false, 32768.0, 0, 0, true, false}, RefOptions{true, false});
    EXPECT_NE(ref[0], unclamped[0]);  // the case really exercises the final clamp
}

TEST(FitsValues, FloatZeroToOneStretchesAndLargeFloatsAreCapped) {
    const std::vector<std::string> head = {"SIMPLE  =                    T", "BITPIX  =                  -32",
                                           "NAXIS   =                    2", "NAXIS1  =                    4",
                                           "NAXIS2  =                    1"};
    {
        ImagePtr image = ReadBytes(MakeFits(head, BigEndianFloats({0.0f, 0.25f, 0.5f, 1.0f})));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(Red(image.get()), (std::vector<int64_t>{0, 268435456, 536870912, 1073741822}));
    }
    {
        // 64 and 65535 with no BSCALE and no known writer: 65535 becomes 128, so
        // 64 lands half-way and 65535 and 128 both at the top.
        ImagePtr image = ReadBytes(MakeFits(head, BigEndianFloats({0.0f, 64.0f, 128.0f, 65535.0f})));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(Red(image.get()), (std::vector<int64_t>{0, 536870912, 1073741822, 1073741822}));
    }
    for (const char* lift : {"BSCALE  =                  1.0", "CREATOR = 'Nebulosity 4'",
                             "SOFTWARE= 'DeepSkyStacker'", "ORIGIN  = 'NOAO-IRAF FITS'"}) {
        SCOPED_TRACE(lift);
        auto cards = head;
        cards.push_back(lift);
        ImagePtr image = ReadBytes(MakeFits(cards, BigEndianFloats({0.0f, 64.0f, 128.0f, 65535.0f})));
        ASSERT_NE(image, nullptr);
        const auto ref = Reference({{0, 64, 128, 65535}}, 4, 1, RefRules{true, 0, 0, 0, false, true});
        EXPECT_EQ(Red(image.get()), ref[0]);
        EXPECT_LT(image->red[2], 1073741822 / 2);
    }
    {
        // Negative floats become 0 unless BZERO is present.
        ImagePtr clipped = ReadBytes(MakeFits(head, BigEndianFloats({-1.0f, 0.0f, 0.5f, 1.0f})));
        EXPECT_EQ(clipped->red[0], 0);
        EXPECT_EQ(clipped->red[2], 536870912);
        auto cards = head;
        cards.push_back("BZERO   =                  0.0");
        ImagePtr kept = ReadBytes(MakeFits(cards, BigEndianFloats({-1.0f, 0.0f, 0.5f, 1.0f})));
        EXPECT_EQ(kept->red[0], 0);
        EXPECT_EQ(kept->red[1], 536870912);
    }
}

TEST(FitsValues, NanEntersAsMinusOneAndEndsAtZero) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto bytes = MakeFits(
        {"SIMPLE  =                    T", "BITPIX  =                  -32", "NAXIS   =                    2",
         "NAXIS1  =                    3", "NAXIS2  =                    2"},
        BigEndianFloats({0.2f, nan, 0.6f, 1.0f, 0.4f, nan}));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->red[1], 0);
    EXPECT_EQ(image->red[5], 0);
    const auto ref =
        Reference({{0.2f, nan, 0.6f, 1.0f, 0.4f, nan}}, 3, 2, RefRules{true, 0, 0, 0, false, false});
    EXPECT_EQ(Red(image.get()), ref[0]);
}

TEST(FitsValues, ConstantImageIsAllZero) {
    const auto bytes = MakeFits(
        {"SIMPLE  =                    T", "BITPIX  =                   16", "NAXIS   =                    2",
         "NAXIS1  =                    3", "NAXIS2  =                    3"},
        BigEndianInt16({500, 500, 500, 500, 500, 500, 500, 500, 500}));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(Red(image.get()), std::vector<int64_t>(9, 0));
}

TEST(FitsValues, DataMinMaxClampIntegers) {
    const auto bytes = MakeFits(
        {"SIMPLE  =                    T", "BITPIX  =                   16", "NAXIS   =                    2",
         "NAXIS1  =                    4", "NAXIS2  =                    1", "DATAMIN =                100.0",
         "DATAMAX =                300.0"},
        BigEndianInt16({0, 100, 200, 1000}));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    const auto ref = Reference({{0, 100, 200, 1000}}, 4, 1, RefRules{false, 0, 100.0, 300.0, false, false});
    EXPECT_EQ(Red(image.get()), ref[0]);
    EXPECT_EQ(image->red[0], 0);
    EXPECT_EQ(image->red[1], 0);
    EXPECT_EQ(image->red[3], 1073741822);
}

// ---------------------------------------------------------------- error diffusion order

TEST(FitsDiffusion, LowerRightFromLastColumnLandsOnRowAfterNext) {
    // A narrow float image whose values leave errors everywhere; with width 2 the
    // wrapped 1/16 share from every last column changes some later sample.
    std::vector<float> values;
    for (int i = 0; i < 2 * 64; ++i)
        values.push_back(static_cast<float>(std::fmod(i * 0.618033988749, 1.0) * 2.9));
    values[3] = 3.0f;
    const auto bytes = MakeFits(
        {"SIMPLE  =                    T", "BITPIX  =                  -32", "NAXIS   =                    2",
         "NAXIS1  =                    2", "NAXIS2  =                   64", "DATAMIN =                  0.0",
         "DATAMAX =                  3.0"},
        BigEndianFloats(values));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    const std::vector<double> asDouble(values.begin(), values.end());
    const RefRules rules{true, 0, 0.0, 3.0, false, false};
    const auto wrapped = Reference({asDouble}, 2, 64, rules);
    const auto unwrapped = Reference({asDouble}, 2, 64, rules, RefOptions{false, true});
    ASSERT_NE(wrapped[0], unwrapped[0]) << "the case does not exercise the wrapped push";
    EXPECT_EQ(Red(image.get()), wrapped[0]);
}

TEST(FitsDiffusion, WidthOneImageOnlyPushesDown) {
    const auto bytes = MakeFits({"SIMPLE  =                    T", "BITPIX  =                  -64",
                                 "NAXIS   =                    2", "NAXIS1  =                    1",
                                 "NAXIS2  =                    5", "BSCALE  =                  1.0"},
                                [] {
                                    std::vector<uint8_t> out;
                                    for (double d : {0.1, 3.7, 2.2, 9.9, 0.3}) {
                                        const uint64_t u = std::bit_cast<uint64_t>(d);
                                        for (int b = 7; b >= 0; --b)
                                            out.push_back(static_cast<uint8_t>(u >> (8 * b)));
                                    }
                                    return out;
                                }());
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    const auto ref = Reference({{0.1, 3.7, 2.2, 9.9, 0.3}}, 1, 5, RefRules{true, 0, 0, 0, false, true});
    EXPECT_EQ(Red(image.get()), ref[0]);
}

// ---------------------------------------------------------------- header quirks

TEST(FitsHeader, CardsAreSplitAtFirstEqualsWithAllSpacesRemoved) {
    char keyword[kFitsCardTextSize], value[kFitsCardTextSize];
    auto clean = [&](const std::string& text) {
        const std::string card = Card(text);
        Fits_CleanCard(reinterpret_cast<const uint8_t*>(card.data()), keyword, value);
    };
    clean("NAX IS1 =  1 2 / comment = here");
    EXPECT_STREQ(keyword, "NAXIS1");
    EXPECT_STREQ(value, "12");
    clean("CREATOR = 'Nebulosity 4 / x'");
    EXPECT_STREQ(value, "'Nebulosity4");  // a "/" inside quotes still ends the value
    clean("COMMENT no equals sign here");
    EXPECT_STREQ(keyword, "COMMENTnoequalssignhere");
    EXPECT_STREQ(value, "");
}

TEST(FitsHeader, IntegersAreReadAsAtoiReadsThem) {
    FitsHeader state;
    Fits_HandleCard(&state, "BITPIX", "-32");
    EXPECT_EQ(state.bitpix, -32);
    Fits_HandleCard(&state, "BITPIX", "+16abc");
    EXPECT_EQ(state.bitpix, 16);
    Fits_HandleCard(&state, "NAXIS1", "100");  // ignored while naxis <= 1
    EXPECT_EQ(state.naxis1, 0);
    Fits_HandleCard(&state, "NAXIS", "3");
    Fits_HandleCard(&state, "NAXIS1", "x7");
    EXPECT_EQ(state.naxis1, 0);
    Fits_HandleCard(&state, "NAXIS3", "4");
    EXPECT_EQ(state.naxis3, 4);
    EXPECT_EQ(Fits_HandleCard(&state, "END", ""), 1);
    EXPECT_EQ(Fits_HandleCard(&state, "ENDX", ""), 0);
    Fits_HandleCard(&state, "SIMPLE", "'T'");
    EXPECT_EQ(state.simple, 0);
    Fits_HandleCard(&state, "COMMENT", "'Createdwith1234Fitswork'");
    EXPECT_EQ(state.knownCreator, 1);
}

TEST(FitsHeader, ThreePlanesOfFourAreReadAsColour) {
    std::vector<int> values;
    for (int p = 0; p < 4; ++p)
        for (int i = 0; i < 4; ++i) values.push_back(p * 100 + i);
    const auto bytes = MakeFits({"SIMPLE  =                    T", "BITPIX  =                   16",
                                 "NAXIS   =                    3", "NAXIS1  =                    2",
                                 "NAXIS2  =                    2", "NAXIS3  =                    4"},
                                BigEndianInt16(values));
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->mono, 0);
    const auto ref = Reference({{0, 1, 2, 3}, {100, 101, 102, 103}, {200, 201, 202, 203}}, 2, 2, RefRules{});
    EXPECT_EQ(Red(image.get()), ref[0]);
    EXPECT_EQ(std::vector<int64_t>(image->blue, image->blue + 4), ref[2]);
    EXPECT_EQ(image->blue[3], 1073741822);  // the fourth plane took no part in the range
}

TEST(FitsHeader, ImageExtensionBehindDatalessPrimary) {
    std::vector<std::string> cards = {
        "SIMPLE  =                    T", "BITPIX  =                    8", "NAXIS   =                    0",
        "EXTEND  =                    T", "NEXTEND =                    1", "END",
        "XTENSION= 'IMAGE   '",           "BITPIX  =                    8", "NAXIS   =                    2",
        "NAXIS1  =                    2", "NAXIS2  =                    1"};
    // The primary's END ends its block; the extension header starts a new one.
    std::string header;
    for (int i = 0; i < 6; ++i) header += Card(cards[i]);
    header.resize(2880, ' ');
    for (size_t i = 6; i < cards.size(); ++i) header += Card(cards[i]);
    header += Card("END");
    header.resize(5760, ' ');
    std::vector<uint8_t> bytes(header.begin(), header.end());
    bytes.push_back(7);
    bytes.push_back(9);
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(Red(image.get()), (std::vector<int64_t>{0, 1073741822}));

    // Without NEXTEND the extension is never looked at.
    std::string noNextend = header;
    noNextend.replace(4 * 80, 80, Card("COMMENT"));
    std::vector<uint8_t> refused(noNextend.begin(), noNextend.end());
    refused.push_back(7);
    refused.push_back(9);
    EXPECT_EQ(ReadBytes(refused), nullptr);
}

TEST(FitsHeader, TruncatedDataRepeatsTheLastBytes) {
    // Four 16-bit values announced, two and a half present: the half value keeps
    // the low byte of the value before it, and the last value repeats it.
    auto data = BigEndianInt16({1000, 3000});
    data.push_back(0x02);  // high byte of a third value
    const auto bytes = MakeFits(
        {"SIMPLE  =                    T", "BITPIX  =                   16", "NAXIS   =                    2",
         "NAXIS1  =                    4", "NAXIS2  =                    1"},
        data);
    ImagePtr image = ReadBytes(bytes);
    ASSERT_NE(image, nullptr);
    const int third = 0x02 << 8 | (3000 & 255);
    const auto ref = Reference({{1000, 3000, double(third), double(third)}}, 4, 1, RefRules{});
    EXPECT_EQ(Red(image.get()), ref[0]);
}

TEST(FitsRefused, MalformedAndTruncatedHeaders) {
    const std::vector<std::string> good = {"SIMPLE  =                    T", "BITPIX  =                   16",
                                           "NAXIS   =                    2", "NAXIS1  =                    2",
                                           "NAXIS2  =                    2"};
    const auto data = BigEndianInt16({1, 2, 3, 4});
    ASSERT_NE(ReadBytes(MakeFits(good, data)), nullptr);

    auto with = [&](size_t index, const std::string& card) {
        auto cards = good;
        cards[index] = card;
        return MakeFits(cards, data);
    };
    EXPECT_EQ(ReadBytes(with(0, "SIMPLE  =                    F")), nullptr);
    EXPECT_EQ(ReadBytes(with(0, "BITPIX  =                   16")), nullptr);  // SIMPLE must come first
    EXPECT_EQ(ReadBytes(with(1, "BITPIX  =                   64")), nullptr);
    EXPECT_EQ(ReadBytes(with(1, "BITPIX  =                   12")), nullptr);
    EXPECT_EQ(ReadBytes(with(2, "NAXIS   =                    1")), nullptr);
    EXPECT_EQ(ReadBytes(with(3, "NAXIS1  =                    0")), nullptr);
    EXPECT_EQ(ReadBytes(with(4, "NAXIS2  =                   -2")), nullptr);
    // An image larger than the whole file, or one that could never be held.
    EXPECT_EQ(ReadBytes(with(3, "NAXIS1  =                 5000")), nullptr);
    EXPECT_EQ(ReadBytes(with(3, "NAXIS1  =           2000000000")), nullptr);

    // No END anywhere, a header cut short, nothing at all.
    EXPECT_EQ(ReadBytes(MakeFits(good, data, false)), nullptr);
    auto cut = MakeFits(good, data);
    cut.resize(300);  // inside the fourth card, before END
    EXPECT_EQ(ReadBytes(cut), nullptr);
    EXPECT_EQ(Fits_ReadMemory(nullptr, 0), nullptr);
    EXPECT_EQ(Fits_ReadMemory(cut.data(), 0), nullptr);
    EXPECT_EQ(Fits_Read(nullptr), nullptr);
    EXPECT_EQ(Fits_Read("/nonexistent/file.fits"), nullptr);
}

TEST(FitsRefused, EveryTruncationOfARealFileIsSafe) {
    PELLUCIDA_REQUIRE_DATA(path, "fits/odd/astropy_wfpc2_mef_4chips_datamin0.fits");
    const std::vector<uint8_t> file = LoadFile(path);
    for (size_t size = 0; size < file.size(); size += 97) {
        ImagePtr image(Fits_ReadMemory(file.data(), size));
        if (image) {
            EXPECT_EQ(image->width, 40);
        }
    }
}
