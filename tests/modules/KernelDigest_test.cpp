// Pinned digests of every kernel's exact output on small deterministic skies.
// The kernels are tuned for speed (tables, fused passes, dispatch by
// instruction set, work split over workers); none of that may move a single
// sample, so each result is hashed whole and compared with the digest taken
// from the plain implementation, with one worker and with two.
#include "modules/autodev/AutoDev_Params.h"
#include "modules/bin/Bin_Kernel.h"
#include "modules/common/GaussianBlur.h"
#include "modules/rotate/Rotate_Kernel.h"

#include "ModuleTestImages.h"
#include "support/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace {

// Takes the result over, so that a kernel's output can be hashed as it comes.
std::string Digest(ImagePtr image) {
    if (!image) return "none";
    std::vector<int64_t> all{image->width, image->height, image->bitDepth, image->maxValue};
    // The stride is the width: the rows follow each other.
    for (const int64_t* plane : {image->red, image->green, image->blue})
        all.insert(all.end(), plane, plane + int64_t{image->width} * image->height);
    return Sha256_Hex(all.data(), all.size() * sizeof(int64_t));
}

std::string AutoDevDigest(const ImageBuffer* sky, const AutoDevParams& params) {
    return Digest(ImagePtr(AutoDev_Run(
        sky, AutoDev_Settings(params, sky->width, sky->height, AutoDev_IsMonochrome(sky)), nullptr)));
}

// Runs `body` with one worker and with two; both must give `expected`.
template <class Body>
void ExpectDigest(const char* what, const std::string& expected, Body body) {
    for (int workers : {1, 2}) {
        EnvScope scope("PELLUCIDA_WORKERS", std::to_string(workers));
        EXPECT_EQ(body(), expected) << what << " with " << workers << " worker(s)";
    }
}

// Each channel through the shared Gaussian of half-width `r`.
ImageBuffer* BlurChannels(const ImageBuffer* sky, double r, const KernelControl* control) {
    ImageBuffer* out = Image_Clone(sky);
    const int64_t* in[3] = {sky->red, sky->green, sky->blue};
    int64_t* to[3] = {out->red, out->green, out->blue};
    for (int c = 0; c < 3; ++c) GaussianBlur(in[c], to[c], sky->width, sky->height, sky->stride, r, control);
    return out;
}

}  // namespace

TEST(KernelDigest, AutoDev) {
    const ImagePtr sky30 = TestSky(211, 157, 30);
    const ImagePtr sky16 = TestSky(211, 157, 16);
    const ImagePtr grey =
        MakeImage(97, 61, 30, [&](int32_t x, int32_t y, int) { return Pixel(sky30.get(), 1, x, y); });
    ExpectDigest("defaults, 30 bits", "1f906aac06856a5d261be99dfe1d6b0d06ec4404fcfa9fef95b91e22c8a3a3a2",
                 [&] { return AutoDevDigest(sky30.get(), AutoDevParams{}); });
    ExpectDigest("defaults, 16 bits", "7163db255074294bfaa349734321396e578e6b68abe13d3e866f61df3487d967",
                 [&] { return AutoDevDigest(sky16.get(), AutoDevParams{}); });
    ExpectDigest("defaults, grey", "189a8cbf01ab2498b94c1779cfeacacc4ec672c67fb4d53e34a1cb444606794a",
                 [&] { return AutoDevDigest(grey.get(), AutoDevParams{}); });
    const AutoDevParams tuned{.blur = 37,
                              .outside = 40,
                              .roiX0 = 150,
                              .roiY0 = 20,
                              .roiX1 = 40,
                              .roiY1 = 120,
                              .curve = 230,
                              .tone = 0};
    ExpectDigest("blur, curve, no tone, RoI",
                 "8ec3edf5869455117cc2b49828ac2417d3020241f5d077109cbbd45be4285ca8",
                 [&] { return AutoDevDigest(sky30.get(), tuned); });
    const AutoDevParams soft{.curve = 45, .tone = 100};
    ExpectDigest("curve below 1, full tone",
                 "f49235b4bc16dd189a09b4eba22fb1a2a026e7b678d4c0ab8d0f8863a9ee1153",
                 [&] { return AutoDevDigest(sky30.get(), soft); });
    // In place, as the batch pipeline runs it.
    ExpectDigest(
        "defaults in place", "1f906aac06856a5d261be99dfe1d6b0d06ec4404fcfa9fef95b91e22c8a3a3a2", [&] {
            ImagePtr work(Image_Clone(sky30.get()));
            AutoDev_RunInto(work.get(), work.get(),
                            AutoDev_Settings(AutoDevParams{}, work->width, work->height, false), nullptr);
            return Digest(std::move(work));
        });
}

TEST(KernelDigest, BinRotateAndGaussianBlur) {
    const ImagePtr sky = TestSky(211, 157, 30);
    const struct {
        const char* kernel;
        ImageBuffer* (*run)(const ImageBuffer*, double, const KernelControl*);
        double value;
        const char* digest;
    } cases[] = {
        {"bin", BinImage, 0.5, "35ba04b17632579024e7c771e5f67678ab46d61b084a7acc0a28f7aea45d1629"},
        {"bin", BinImage, 0.7071, "8329227ddde5054c0ef97e30ee4d9490d89dda8210a8077e98a1b3dad9665089"},
        {"bin", BinImage, 0.3538, "bc69a90a4310cb1949361d0de1d47aa18dd53e6b894f1f8894250a54ba5ed308"},
        {"bin", BinImage, 0.25, "4aaaf729af0f3ab0afe52bf9139dcc30192eceb9e822e319a2f12caac51bcc8f"},
        {"bin", BinImage, 0.1, "40721678e8dd1ecddaf8f1a67fb5c54acb22767347a9f38ead0afa1b5dc027e6"},
        {"rotate", RotateImage, 10.0, "63f9bb1fd10a38fa087f61eac34a3e6fed6058b714c959c7cc37d5bc148c7309"},
        {"rotate", RotateImage, 0.1, "b749aa6d0499a7bc0a2e69be2394da30ca8e1c4c3cbc6cd59a69c604d601b769"},
        {"rotate", RotateImage, 90.0, "84bede0ea38986c95893ddffb1914a592ebd3fb8a06c670e69f13cfa6a1e4449"},
        {"rotate", RotateImage, 233.7, "eab67b34108a362d6a60da5b953b5a597c880de77c77c935be6196fc1d841789"},
        {"rotate", RotateImage, 270.0, "ffa13902fa1140ebe62851aa30d94ed3920d9cc5eed0a11ca1abd251d4b4299f"},
        {"blur", BlurChannels, 2.0, "2e7a17961ea194e887bb96c8084e8258ae49f8c7d8ddb4dc62f83f38491210e4"},
        {"blur", BlurChannels, 0.5, "ff30810ff2674587733258a4e461910ebae2dffc46d576cbc74f88d85d0b7718"},
        {"blur", BlurChannels, 0.5145, "2c660336a70c3d0470eccb64a43c1182e6218c5fe15a49c4456a0c2dc2b2d650"},
        {"blur", BlurChannels, 7.3, "f44fb3b654ace644a8b1ca14f9f255f174b3c3682e5116fad145bf24a4977202"},
    };
    for (const auto& c : cases)
        ExpectDigest((std::string(c.kernel) + " " + std::to_string(c.value)).c_str(), c.digest,
                     [&] { return Digest(ImagePtr(c.run(sky.get(), c.value, nullptr))); });
    // The 24-bit form AutoDev uses, with its single-precision intermediate.
    for (const auto& [r, expected] : std::vector<std::pair<double, std::string>>{
             {0.5, "fee4fdbae15ba974296e5963a95a1b3805631d246abeeae9bb4a182af73f989f"},
             {2.45, "4266273949cba883f4ba0badd7515ba19323fe8486457b8cb5bc799ca9e79cee"}}) {
        ExpectDigest(("24-bit r " + std::to_string(r)).c_str(), expected, [&] {
            std::vector<int32_t> in(size_t(sky->width) * size_t(sky->height)), out(in.size());
            std::transform(sky->red, sky->red + in.size(), in.begin(),
                           [](int64_t v) { return int32_t(v >> 6); });
            GaussianBlur(in.data(), out.data(), sky->width, sky->height, sky->width, r, nullptr);
            return Sha256_Hex(out.data(), out.size() * sizeof(int32_t));
        });
    }
}
