// What every reader promises alike. The real sample files: each is read by its
// own reader as the data folder's expected.json says (or refused), and refused
// by every other reader whatever its name says; known pixels are those other
// programs decode. The fuzzers' corpora (seeds and every crasher they ever
// found) are replayed through the memory entry points, so that each finding
// stays fixed in every build, the sanitizer build included; a seed whose name
// says "_refused" must be refused.
#include "formats/Bmp_Read.h"
#include "formats/Fits_Read.h"
#include "formats/Jpeg_Read.h"
#include "formats/Png_Read.h"
#include "formats/Raw_Read.h"
#include "formats/Tiff_Read.h"
#include "fuzz/FuzzCheck.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/FuzzReplay.h"
#include "support/Manifest.h"
#include "support/Sha256.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Reader {
    const char* name;    // as expected.json names it
    const char* corpus;  // the fuzzer's corpus folder, if it has one
    ImageBuffer* (*read)(const char*);
    ImageBuffer* (*readMemory)(const uint8_t*, size_t);
};

const Reader kReaders[] = {
    {"BMP", "Bmp", &Bmp_Read, &Bmp_ReadMemory},     {"TIFF", "Tiff", &Tiff_Read, &Tiff_ReadMemory},
    {"raw", nullptr, &Raw_Read, &Raw_ReadMemory},   {"PNG", "Png", &Png_Read, &Png_ReadMemory},
    {"JPEG", "Jpeg", &Jpeg_Read, &Jpeg_ReadMemory}, {"FITS", "Fits", &Fits_Read, &Fits_ReadMemory}};

// The samples as the data folder hashes FITS ones: int64 little-endian (as
// they lie in memory here), planes red, green, blue, each height x width; the
// first 16 hex digits.
std::string SampleHash(const ImageBuffer& image) {
    Sha256 sha;
    for (const int64_t* plane : {image.red, image.green, image.blue})
        sha.Update(plane, size_t(image.width) * size_t(image.height) * 8);
    return sha.Hex().substr(0, 16);
}

}  // namespace

TEST(Readers, EverySampleIsReadByItsOwnReaderAsExpectedAndRefusedByTheOthers) {
    PELLUCIDA_REQUIRE_DATA(manifest, "expected.json");
    Manifest_CheckEveryRead(
        "", 90,
        [](const std::string& path, const ManifestEntry& e) {
            ImageBuffer* own = nullptr;
            for (const Reader& r : kReaders) {
                ImagePtr image(r.read(path.c_str()));
                if (e.reader == r.name)
                    own = image.release();
                else
                    EXPECT_EQ(image, nullptr) << "the " << r.name << " reader took it";
            }
            if (e.reader == "JPEG") {
                const std::vector<uint8_t> bytes = ReadFileBytes(path);
                EXPECT_EQ(Jpeg_IsBaseline(bytes.data(), bytes.size()), !e.refused);
            }
            return own;
        },
        [](const ManifestEntry& e, const ImageBuffer& image) {
            if (e.reader == "FITS") {
                EXPECT_EQ(SampleHash(image), e.notes);
            } else if (e.reader == "TIFF") {
                EXPECT_EQ(image.attachment, nullptr);
                EXPECT_GT(e.depth, 0) << "every TIFF result states its depth";
            } else {
                EXPECT_EQ(image.bitDepth,
                          e.reader == "PNG" && e.file.find("16") != std::string::npos ? 16 : 8);
            }
        });
}

TEST(Readers, KnownPixelsOfTheSamples) {
    // Pixels as "x,y:grey" or "x,y:red,green,blue" or "x,y:red,green,blue,alpha";
    // "#" and the samples' SampleHash pins every pixel.
    const struct {
        const char* file;
        const char* pixels;
    } cases[] = {
        // TIFF, little-endian 8-bit RGB, one strip, a real astro image.
        {"tiff/astro/starnet_starless_rgb8_1048x712.tif",
         "0,0:115,51,69 523,300:151,43,65 1047,711:178,57,80"},
        // Big-endian 32-bit unsigned grey and RGB, several strips.
        {"tiff/odd/imagetiff_flower-minisblack-32.tif", "0,0:1455125979 72,42:1152407765"},
        {"tiff/odd/imagetiff_flower-rgb-contig-32.tif",
         "0,0:1489786731,1487293910,1198600246 36,20:1257472937,1226459270,485453981 "
         "72,42:1152914302,1179705243,1010517523"},
        // Big-endian 16-bit grey in 6 strips and RGB in 19 strips; 8-bit RGB.
        {"tiff/odd/imagetiff_minisblack-1c-16b.tiff", "0,0:21909 80,75:9292 156,150:49003"},
        {"tiff/odd/imagetiff_rgb-3c-16b.tiff",
         "0,0:41733,13385,13810 80,75:19825,4949,4028 156,150:45996,52028,41317"},
        {"tiff/odd/imagetiff_rgb-3c-8b.tiff", "0,0:162,52,53 80,75:77,19,15 156,150:178,202,160"},
        // Little-endian 16-bit grey in 4 strips; no SamplesPerPixel tag.
        {"tiff/odd/imagetiff_seq-1c-16b-multistrip-68f373a0.tiff", "0,0:0 5,9:149 15,15:255"},
        {"tiff/odd/pillow_16bit.cropped.tif", "0,0:480 63,63:357"},
        // RGBA: the fourth sample is the alpha plane (16-bit and 8-bit).
        {"tiff/odd/imagetiff_seq-4c-16b-rgba-5181991f.tiff",
         "0,0:0,1,2,3 5,9:596,597,598,599 15,15:1020,1021,1022,1023"},
        {"tiff/odd/imagetiff_seq-4c-8b-rgba-unassoc-50969cda.tiff",
         "0,0:0,1,2,3 5,9:84,85,86,87 15,15:252,253,254,255"},
        {"tiff/odd/pillow_pil136.tiff", "0,0:0,0,0,0 30,20:0,0,0,255"},
        // Several strips with a short last one; 7 strips of 21 rows.
        {"tiff/odd/pillow_tiff_strip_raw.tif", "0,0:0 139,200:228,236,247 277,373:255"},
        {"tiff/odd/pillow_hopper.tif", "0,0:20,21,67 64,100:24,18,22 127,127:134,160,209"},
        // The first of two directories.
        {"tiff/odd/libtiff_test_two_ifds.tif", "0,0:107"},
        // Floats: largest value 0.998 (below 1), so value x maxValue (2^32 - 1).
        {"tiff/odd/imagetiff_gradient-1c-32b-float.tiff", "0,0:3837672 128,0:2149297663 255,0:4287516159"},
        // Largest value exactly 1.0: no rescaling.
        {"tiff/odd/imagetiff_seq-3c-32f-9a471c2b.tiff",
         "0,0:0,5599696,11199393 5,9:2503064319,2508664063,2514263807 "
         "15,15:4283767807,4289367551,4294967295"},
        // Half floats, every sample 1.0, on a 16-bit scale.
        {"tiff/odd/imagetiff_white-fp16.tiff", "0,0:65535 255,255:65535"},
        // PNG: 8 and 16 bits, grey, RGB and RGBA.
        {"png/eso1723a_avm_320.png", "0,0:2,0,1 160,124:137,120,126 319,247:13,0,0"},
        {"png/libvips_sample_rgb16.png",
         "0,0:49210,41207,29445 145,221:16382,19308,28635 289,441:28156,23698,15306"},
        {"png/pillow_grey16_tiny.png", "0,0:65535 10,50:32437 19,99:0"},
        {"png/stellarium_ic410_rgba8.png", "256,256:55,71,78,255"},
        {"png/stellarium_m49_grey8.png", "0,0:3 128,128:152"},
        // BMP: top-left red, the middle white, the bottom-right (96, 96, 126);
        // the other three encodings give the same picture.
        {"bmp/bmpsuite_g_rgb24.bmp",
         "0,0:255,0,0 63,31:255 126,63:96,96,126 100,10:149,149,153 #615a832e04231711"},
        {"bmp/bmpsuite_g_rgb32.bmp", "#615a832e04231711"},
        {"bmp/bmpsuite_g_rgb32bf.bmp", "#615a832e04231711"},
        {"bmp/bmpsuite_q_rgb32fakealpha.bmp", "#615a832e04231711"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        PELLUCIDA_REQUIRE_DATA(path, c.file);
        const std::string extension = fs::path(path).extension().string();
        ImagePtr image(extension == ".png"   ? Png_Read(path.c_str())
                       : extension == ".bmp" ? Bmp_Read(path.c_str())
                                             : Tiff_Read(path.c_str()));
        ASSERT_NE(image, nullptr);
        std::istringstream pixels(c.pixels);
        for (std::string pixel; pixels >> pixel;) {
            SCOPED_TRACE(pixel);
            if (pixel[0] == '#') {
                EXPECT_EQ(SampleHash(*image), pixel.substr(1));
                continue;
            }
            int x = 0, y = 0;
            int64_t v[4] = {-1, -1, -1, -1};
            const int n = std::sscanf(pixel.c_str(), "%d,%d:%" SCNd64 ",%" SCNd64 ",%" SCNd64 ",%" SCNd64, &x,
                                      &y, &v[0], &v[1], &v[2], &v[3]);
            ASSERT_GE(n, 3);
            if (n == 3) v[1] = v[2] = v[0];
            const size_t i = size_t(y) * size_t(image->stride) + size_t(x);
            EXPECT_EQ((std::vector<int64_t>{image->red[i], image->green[i], image->blue[i],
                                            image->alpha ? image->alpha[i] : -1}),
                      (std::vector<int64_t>{v[0], v[1], v[2], v[3]}));
        }
    }
}

TEST(Readers, DecodeTheSameJpegPictureAsItsPngTwin) {
    // The ESO press image was published as both JPEG and PNG at 320 x 248.
    PELLUCIDA_REQUIRE_DATA(jpg, "jpeg/eso1723a_avm_320.jpg");
    PELLUCIDA_REQUIRE_DATA(png, "png/eso1723a_avm_320.png");
    ImagePtr a(Jpeg_Read(jpg.c_str()));
    ImagePtr b(Png_Read(png.c_str()));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    ASSERT_EQ(a->width, b->width);
    ASSERT_EQ(a->height, b->height);
    double total = 0;
    const size_t n = size_t(a->width) * size_t(a->height);
    for (size_t i = 0; i < n; ++i)
        total += std::abs(double(a->red[i] - b->red[i])) + std::abs(double(a->green[i] - b->green[i])) +
                 std::abs(double(a->blue[i] - b->blue[i]));
    const double mean = total / double(3 * n);
    RecordProperty("mean_abs_difference", std::to_string(mean));
    EXPECT_LT(mean, 1.0);  // measured 0.29: the two files differ only by JPEG loss
}

TEST(Readers, NoFileNoImageAndEveryKeptFuzzInputIsReadSanelyOrRefused) {
    for (const Reader& r : kReaders) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.read(nullptr), nullptr);
        EXPECT_EQ(r.read("/nonexistent/folder/x.img"), nullptr);
        EXPECT_EQ(r.readMemory(nullptr, 0), nullptr);
        if (!r.corpus) continue;
        Fuzz_Replay(r.corpus, [&r](const std::vector<uint8_t>& bytes, const fs::path& path) {
            ImagePtr image(r.readMemory(bytes.data(), bytes.size()));
            Fuzz_CheckImage(image.get());  // the promises the fuzz targets trap on
            // Seeds of layouts the reader must refuse say so in their names.
            if (image && path.filename().string().find("_refused") != std::string::npos) std::abort();
        });
    }
}
