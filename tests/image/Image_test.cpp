// The image record: clearing, optional planes, clone, bit depth and
// resampling, with the exact values the record's rules fix.
#include "image/Image.h"

#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using V = std::vector<int64_t>;

V Plane(const int64_t* plane, const ImageBuffer* image) {
    return V(plane, plane + size_t(image->stride) * size_t(image->height));
}

// An image whose red plane holds f(x, y), green f(x, y) + 1 and blue f(x, y) + 2.
ImagePtr Filled(int32_t width, int32_t height, int64_t (*f)(int32_t x, int32_t y)) {
    return MakeImage(width, height, 16, [f](int32_t x, int32_t y, int c) { return f(x, y) + c; });
}

int64_t PixelHash(int32_t x, int32_t y) {
    return (x * 7919 + y * 104729) % 65533;
}

}  // namespace

TEST(ImageCreate, ClearZeroesColourAndAuxAndLeavesAlphaOpaque) {
    ImagePtr image(Image_CreateCleared(9, 5));
    Image_AddAlpha(image.get());
    Image_AddAux(image.get());
    const V zero(45, 0), opaque(45, 65535);
    for (const int64_t* plane : {image->red, image->green, image->blue})
        EXPECT_EQ(Plane(plane, image.get()), zero);
    EXPECT_EQ(Plane(image->alpha, image.get()), opaque);
    EXPECT_EQ(Plane(image->aux, image.get()), opaque);

    for (int64_t* plane : {image->red, image->green, image->blue, image->alpha, image->aux})
        for (int i = 0; i < 45; ++i) plane[i] = 3;
    Image_Clear(image.get());
    for (const int64_t* plane : {image->red, image->green, image->blue, image->aux})
        EXPECT_EQ(Plane(plane, image.get()), zero);
    EXPECT_EQ(Plane(image->alpha, image.get()), opaque);

    // Adding a plane that exists keeps its contents; freeing twice or nothing is harmless.
    image->alpha[0] = 17;
    Image_AddAlpha(image.get());
    EXPECT_EQ(image->alpha[0], 17);
    Image_FreeAlpha(image.get());
    Image_FreeAux(image.get());
    EXPECT_EQ(image->alpha, nullptr);
    EXPECT_EQ(image->aux, nullptr);
    Image_FreeAlpha(image.get());
    Image_Free(nullptr);
    Image_FreeAlpha(nullptr);
    Image_FreeAux(nullptr);
}

TEST(ImageCreateDeathTest, ImpossibleSizeIsOutOfMemory) {
    EXPECT_EXIT(Image_Create(INT32_MAX, INT32_MAX), testing::ExitedWithCode(1), "Out of memory");
}

TEST(ImageClone, DropsAlphaCopiesAuxAttachmentAndHeader) {
    ImagePtr plain(Image_CreateCleared(4, 4));
    ImagePtr plainClone(Image_Clone(plain.get()));
    EXPECT_TRUE(!plainClone->aux && !plainClone->attachment && !plainClone->attachmentSize);

    ImagePtr source = MakeImage(11, 6, 30, [](int32_t x, int32_t y, int c) { return PixelHash(x, y) + c; });
    source->mono = 1;
    Image_AddAlpha(source.get());
    Image_AddAux(source.get());
    source->aux[5] = 42;
    const char block[] = "opaque\0bytes";
    source->attachment = static_cast<uint8_t*>(std::malloc(sizeof block));
    std::memcpy(source->attachment, block, sizeof block);
    source->attachmentSize = sizeof block;

    ImagePtr clone(Image_Clone(source.get()));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->alpha, nullptr);
    EXPECT_EQ((V{clone->width, clone->height, clone->stride, clone->bitDepth, clone->maxValue, clone->mono}),
              (V{11, 6, 11, 30, 1073741823, 1}));
    ASSERT_NE(clone->aux, nullptr);
    for (auto [copy, original] : {std::pair{clone->red, source->red},
                                  {clone->green, source->green},
                                  {clone->blue, source->blue},
                                  {clone->aux, source->aux}}) {
        EXPECT_NE(copy, original);
        EXPECT_EQ(Plane(copy, clone.get()), Plane(original, source.get()));
    }
    ASSERT_NE(clone->attachment, nullptr);
    EXPECT_NE(clone->attachment, source->attachment);
    ASSERT_EQ(clone->attachmentSize, sizeof block);
    EXPECT_EQ(std::memcmp(clone->attachment, block, sizeof block), 0);
}

TEST(ImageSetBitDepth, RaisingFillsNewLowBitsWithOnesLoweringShiftsRightTheMaximumIn32Bits) {
    // Each step starts from the previous one's depth; every plane, alpha and
    // aux included, follows the same rule (so opaque alpha stays opaque).
    const struct {
        int depth;
        V before, after;
        int64_t maxValue;
    } steps[] = {
        {30, {0, 65535, 1}, {16383, 1073741823, (1 << 14) | 16383}, 1073741823},
        {16, {1073741823, 16383, 16384}, {65535, 0, 1}, 65535},
        {8, {65535, 255, 256}, {255, 0, 1}, 255},
        {31, {0, 255, 1}, {8388607, 2147483647, 16777215}, 2147483647},
        {32, {0, 2147483647, 2}, {1, 4294967295, 5}, 0},  // 2^32 - 1 does not fit: 0
    };
    ImagePtr image(Image_Create(3, 1));
    Image_AddAlpha(image.get());
    Image_AddAux(image.get());
    for (const auto& step : steps) {
        SCOPED_TRACE(step.depth);
        for (int64_t* plane : {image->red, image->green, image->blue, image->alpha, image->aux})
            std::copy(step.before.begin(), step.before.end(), plane);
        Image_SetBitDepth(image.get(), step.depth);
        EXPECT_EQ(image->bitDepth, step.depth);
        EXPECT_EQ(image->maxValue, step.maxValue);
        for (const int64_t* plane : {image->red, image->green, image->blue, image->alpha, image->aux})
            EXPECT_EQ(Plane(plane, image.get()), step.after);
    }
}

TEST(ImageResample, IntegerPositionsCopySamplesAndHalfwayIsTheMidpoint) {
    ImagePtr source = Filled(8, 8, PixelHash);
    Image_AddAlpha(source.get());
    ImagePtr same(Image_Resample(source.get(), 8, 8, nullptr, nullptr));
    ASSERT_NE(same, nullptr);
    EXPECT_EQ(same->alpha, nullptr);
    EXPECT_EQ(Plane(same->red, same.get()), Plane(source->red, source.get()));
    EXPECT_EQ(Plane(same->blue, same.get()), Plane(source->blue, source.get()));
    // Halving lands on even source pixels with zero fraction: a pure copy.
    ImagePtr half(Image_Resample(source.get(), 4, 4, nullptr, nullptr));
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 4; ++x) EXPECT_EQ(half->green[y * 4 + x], PixelHash(2 * x, 2 * y) + 1);
    // Doubling a ramp: odd columns sit half-way, where the cubic gives the
    // midpoint exactly away from the edges.
    ImagePtr ramp = Filled(8, 8, [](int32_t x, int32_t) -> int64_t { return 1000 * x; });
    ImagePtr twice(Image_Resample(ramp.get(), 16, 8, nullptr, nullptr));
    for (int32_t x = 2; x < 12; ++x) EXPECT_EQ(twice->red[3 * 16 + x], 500 * x) << x;
}

TEST(ImageResample, ConstantImageKeepsItsValueAndDepth) {
    ImagePtr source = MakeImage(23, 19, 30, [](int32_t, int32_t, int c) { return int64_t{123456789} + c; });
    const int sizes[][2] = {{46, 38}, {11, 9}, {37, 5}, {1, 1}, {100, 77}};
    for (const auto& s : sizes) {
        SCOPED_TRACE(testing::Message() << s[0] << "x" << s[1]);
        ImagePtr out(Image_Resample(source.get(), s[0], s[1], nullptr, nullptr));
        ASSERT_EQ((V{out->width, out->height, out->bitDepth, out->maxValue}),
                  (V{s[0], s[1], 30, 1073741823}));
        EXPECT_EQ(Plane(out->red, out.get()), V(size_t(s[0] * s[1]), 123456789));
        EXPECT_EQ(Plane(out->blue, out.get()), V(size_t(s[0] * s[1]), 123456791));
    }
}

TEST(ImageResample, NeverNegativeAtHardEdges) {
    ImagePtr source =
        Filled(16, 16, [](int32_t x, int32_t y) -> int64_t { return ((x / 3 + y / 5) & 1) * 65533; });
    ImagePtr out(Image_Resample(source.get(), 53, 41, nullptr, nullptr));
    // The cubic overshoots below the dark squares; the result is held at zero.
    EXPECT_EQ(*std::min_element(out->red, out->red + 53 * 41), 0);
}

TEST(ImageResample, ProgressEvery32RowsAndStop) {
    ImagePtr source = Filled(10, 10, [](int32_t, int32_t) -> int64_t { return 500; });
    struct Log {
        std::vector<int32_t> rows;
        int32_t total = -1;
        int32_t stopAt = -1;
    } log;
    auto record = [](void* context, int32_t row, int32_t rows) -> int {
        auto* l = static_cast<Log*>(context);
        l->rows.push_back(row);
        l->total = rows;
        return row == l->stopAt;
    };
    ImagePtr full(Image_Resample(source.get(), 7, 100, record, &log));
    EXPECT_EQ(log.rows, (std::vector<int32_t>{0, 32, 64, 96}));
    EXPECT_EQ(log.total, 100);
    EXPECT_EQ(full->red[99 * 7], 500);

    log = Log{};
    log.stopAt = 32;
    ImagePtr partial(Image_Resample(source.get(), 7, 100, record, &log));
    EXPECT_EQ(log.rows, (std::vector<int32_t>{0, 32}));
    EXPECT_EQ(partial->red[31 * 7 + 6], 500);
    EXPECT_EQ(partial->red[32 * 7], 0);  // the stopped rows stay cleared
    EXPECT_EQ(partial->red[99 * 7], 0);
}
