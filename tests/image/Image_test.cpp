// The image record: creation, clearing, optional planes, clone, bit depth and
// resampling, with the exact values the record's rules fix.
#include "image/Image.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

void FillPlane(int64_t* plane, const ImageBuffer* image, int64_t (*f)(int32_t x, int32_t y)) {
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t x = 0; x < image->width; ++x) plane[y * image->stride + x] = f(x, y);
}

int64_t PixelHash(int32_t x, int32_t y) {
    return (x * 7919 + y * 104729) % 65536;
}

std::vector<int64_t> PlaneCopy(const int64_t* plane, const ImageBuffer* image) {
    return std::vector<int64_t>(plane, plane + static_cast<size_t>(image->stride) * image->height);
}

}  // namespace

TEST(ImageCreate, FreshRecordHasDocumentedHeader) {
    ImagePtr image(Image_Create(13, 7));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 13);
    EXPECT_EQ(image->height, 7);
    EXPECT_EQ(image->stride, 13);
    EXPECT_EQ(image->bitDepth, 16);
    EXPECT_EQ(image->maxValue, 65535);
    EXPECT_EQ(image->mono, 0);
    EXPECT_NE(image->red, nullptr);
    EXPECT_NE(image->green, nullptr);
    EXPECT_NE(image->blue, nullptr);
    EXPECT_EQ(image->alpha, nullptr);
    EXPECT_EQ(image->aux, nullptr);
    EXPECT_EQ(image->attachment, nullptr);
    EXPECT_EQ(image->attachmentSize, 0u);

    ImagePtr header(Image_CreateHeader(13, 7));
    EXPECT_EQ(header->stride, 13);
    EXPECT_EQ(header->red, nullptr);
    EXPECT_EQ(header->green, nullptr);
    EXPECT_EQ(header->blue, nullptr);
}

TEST(ImageCreate, ClearedAndClearSetPlanesAsDocumented) {
    ImagePtr image(Image_CreateCleared(9, 5));
    for (int i = 0; i < 45; ++i) {
        ASSERT_EQ(image->red[i], 0);
        ASSERT_EQ(image->green[i], 0);
        ASSERT_EQ(image->blue[i], 0);
    }
    Image_AddAlpha(image.get());
    Image_AddAux(image.get());
    ASSERT_NE(image->alpha, nullptr);
    ASSERT_NE(image->aux, nullptr);
    for (int i = 0; i < 45; ++i) {
        EXPECT_EQ(image->alpha[i], 65535);
        EXPECT_EQ(image->aux[i], 65535);
    }
    for (int i = 0; i < 45; ++i)
        image->red[i] = image->green[i] = image->blue[i] = image->alpha[i] = image->aux[i] = 3;
    Image_Clear(image.get());
    for (int i = 0; i < 45; ++i) {
        EXPECT_EQ(image->red[i], 0);
        EXPECT_EQ(image->green[i], 0);
        EXPECT_EQ(image->blue[i], 0);
        EXPECT_EQ(image->alpha[i], 65535);
        EXPECT_EQ(image->aux[i], 0);
    }
    // Adding a plane that exists keeps its contents.
    image->alpha[0] = 17;
    Image_AddAlpha(image.get());
    EXPECT_EQ(image->alpha[0], 17);
    Image_FreeAlpha(image.get());
    Image_FreeAux(image.get());
    EXPECT_EQ(image->alpha, nullptr);
    EXPECT_EQ(image->aux, nullptr);
    Image_FreeAlpha(image.get());  // already null
}

TEST(ImageCreate, FreeAcceptsNull) {
    Image_Free(nullptr);
    Image_FreeAlpha(nullptr);
    Image_FreeAux(nullptr);
}

TEST(ImageCreateDeathTest, ImpossibleSizeIsOutOfMemory) {
    EXPECT_EXIT(Image_Create(INT32_MAX, INT32_MAX), testing::ExitedWithCode(1), "Out of memory");
}

TEST(ImageClone, DropsAlphaCopiesAuxAttachmentAndHeader) {
    ImagePtr source(Image_Create(11, 6));
    source->bitDepth = 30;
    source->maxValue = 1073741823;
    source->mono = 1;
    FillPlane(source->red, source.get(), PixelHash);
    FillPlane(source->green, source.get(), [](int32_t x, int32_t y) -> int64_t { return x + y; });
    FillPlane(source->blue, source.get(), [](int32_t x, int32_t y) -> int64_t { return x * y; });
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
    EXPECT_EQ(clone->width, 11);
    EXPECT_EQ(clone->height, 6);
    EXPECT_EQ(clone->stride, 11);
    EXPECT_EQ(clone->bitDepth, 30);
    EXPECT_EQ(clone->maxValue, 1073741823);
    EXPECT_EQ(clone->mono, 1);
    EXPECT_EQ(PlaneCopy(clone->red, clone.get()), PlaneCopy(source->red, source.get()));
    EXPECT_EQ(PlaneCopy(clone->green, clone.get()), PlaneCopy(source->green, source.get()));
    EXPECT_EQ(PlaneCopy(clone->blue, clone.get()), PlaneCopy(source->blue, source.get()));
    ASSERT_NE(clone->aux, nullptr);
    EXPECT_NE(clone->aux, source->aux);
    EXPECT_EQ(PlaneCopy(clone->aux, clone.get()), PlaneCopy(source->aux, source.get()));
    ASSERT_NE(clone->attachment, nullptr);
    EXPECT_NE(clone->attachment, source->attachment);
    ASSERT_EQ(clone->attachmentSize, sizeof block);
    EXPECT_EQ(std::memcmp(clone->attachment, block, sizeof block), 0);
    EXPECT_NE(clone->red, source->red);
}

TEST(ImageClone, WithoutAuxOrAttachmentStaysWithout) {
    ImagePtr source(Image_CreateCleared(4, 4));
    ImagePtr clone(Image_Clone(source.get()));
    EXPECT_EQ(clone->aux, nullptr);
    EXPECT_EQ(clone->attachment, nullptr);
    EXPECT_EQ(clone->attachmentSize, 0u);
}

TEST(ImageSetBitDepth, RaisingFillsNewLowBitsWithOnes) {
    ImagePtr image(Image_Create(3, 1));
    image->red[0] = 0;
    image->red[1] = 65535;
    image->red[2] = 1;
    image->green[0] = image->green[1] = image->green[2] = 0;
    image->blue[0] = image->blue[1] = image->blue[2] = 65535;
    Image_AddAlpha(image.get());
    Image_AddAux(image.get());
    image->aux[0] = 0;
    Image_SetBitDepth(image.get(), 30);
    EXPECT_EQ(image->bitDepth, 30);
    EXPECT_EQ(image->maxValue, 1073741823);
    EXPECT_EQ(image->red[0], 16383);
    EXPECT_EQ(image->red[1], 1073741823);
    EXPECT_EQ(image->red[2], (1 << 14) | 16383);
    EXPECT_EQ(image->green[1], 16383);
    EXPECT_EQ(image->blue[2], 1073741823);
    EXPECT_EQ(image->alpha[0], 1073741823);  // opaque stays opaque
    EXPECT_EQ(image->aux[0], 16383);
    EXPECT_EQ(image->aux[1], 1073741823);
}

TEST(ImageSetBitDepth, LoweringShiftsRight) {
    ImagePtr image(Image_Create(2, 1));
    image->bitDepth = 30;
    image->maxValue = 1073741823;
    image->red[0] = 1073741823;
    image->red[1] = 16383;
    image->green[0] = image->green[1] = image->blue[0] = image->blue[1] = 0;
    Image_SetBitDepth(image.get(), 16);
    EXPECT_EQ(image->bitDepth, 16);
    EXPECT_EQ(image->maxValue, 65535);
    EXPECT_EQ(image->red[0], 65535);
    EXPECT_EQ(image->red[1], 0);
}

TEST(ImageSetBitDepth, MaxValueIsComputedIn32Bits) {
    ImagePtr image(Image_CreateCleared(1, 1));
    Image_SetBitDepth(image.get(), 8);
    EXPECT_EQ(image->maxValue, 255);
    Image_SetBitDepth(image.get(), 31);
    EXPECT_EQ(image->maxValue, 2147483647);
    Image_SetBitDepth(image.get(), 32);
    EXPECT_EQ(image->maxValue, 0);
    EXPECT_EQ(image->bitDepth, 32);
}

TEST(ImageResample, SameSizeIsExactCopyWithoutAlpha) {
    ImagePtr source(Image_Create(17, 9));
    FillPlane(source->red, source.get(), PixelHash);
    FillPlane(source->green, source.get(), PixelHash);
    FillPlane(source->blue, source.get(), PixelHash);
    Image_AddAlpha(source.get());
    ImagePtr out(Image_Resample(source.get(), 17, 9, nullptr, nullptr));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->alpha, nullptr);
    EXPECT_EQ(PlaneCopy(out->red, out.get()), PlaneCopy(source->red, source.get()));
    EXPECT_EQ(PlaneCopy(out->blue, out.get()), PlaneCopy(source->blue, source.get()));
}

TEST(ImageResample, ConstantImageKeepsItsValue) {
    ImagePtr source(Image_Create(23, 19));
    source->bitDepth = 30;
    source->maxValue = 1073741823;
    for (int i = 0; i < 23 * 19; ++i) source->red[i] = source->green[i] = source->blue[i] = 123456789;
    const int sizes[][2] = {{46, 38}, {11, 9}, {37, 5}, {1, 1}, {100, 77}};
    for (const auto& s : sizes) {
        ImagePtr out(Image_Resample(source.get(), s[0], s[1], nullptr, nullptr));
        ASSERT_EQ(out->width, s[0]);
        ASSERT_EQ(out->height, s[1]);
        EXPECT_EQ(out->bitDepth, 30);
        EXPECT_EQ(out->maxValue, 1073741823);
        for (int i = 0; i < s[0] * s[1]; ++i) {
            ASSERT_EQ(out->red[i], 123456789) << s[0] << "x" << s[1] << " at " << i;
            ASSERT_EQ(out->blue[i], 123456789);
        }
    }
}

TEST(ImageResample, IntegerPositionsTakeSourceSamplesAndHalfwayIsTheMidpoint) {
    ImagePtr source(Image_Create(8, 8));
    FillPlane(source->red, source.get(), PixelHash);
    FillPlane(source->green, source.get(), [](int32_t x, int32_t) -> int64_t { return 1000 * x; });
    FillPlane(source->blue, source.get(), PixelHash);
    // Halving lands on even source pixels with zero fraction: a pure copy.
    ImagePtr half(Image_Resample(source.get(), 4, 4, nullptr, nullptr));
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 4; ++x) EXPECT_EQ(half->red[y * 4 + x], PixelHash(2 * x, 2 * y));
    // Doubling a ramp: odd columns sit half-way, where the cubic gives the
    // midpoint exactly away from the edges.
    ImagePtr twice(Image_Resample(source.get(), 16, 8, nullptr, nullptr));
    for (int32_t x = 2; x < 12; ++x) EXPECT_EQ(twice->green[3 * 16 + x], 500 * x) << x;
}

TEST(ImageResample, NeverNegativeAtHardEdges) {
    ImagePtr source(Image_Create(16, 16));
    auto edge = [](int32_t x, int32_t y) -> int64_t { return ((x / 3 + y / 5) & 1) ? 65535 : 0; };
    FillPlane(source->red, source.get(), edge);
    FillPlane(source->green, source.get(), edge);
    FillPlane(source->blue, source.get(), edge);
    ImagePtr out(Image_Resample(source.get(), 53, 41, nullptr, nullptr));
    int zeros = 0;
    for (int i = 0; i < 53 * 41; ++i) {
        ASSERT_GE(out->red[i], 0);
        zeros += out->red[i] == 0;
    }
    EXPECT_GT(zeros, 0);
}

TEST(ImageResample, ProgressEvery32RowsAndStop) {
    ImagePtr source(Image_Create(10, 10));
    for (int i = 0; i < 100; ++i) source->red[i] = source->green[i] = source->blue[i] = 500;

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
