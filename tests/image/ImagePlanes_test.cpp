// The plane store: large planes come back to the next image of their size,
// zeroed when asked, within the cache's bound.
#include "image/Image.h"
#include "image/Image_Planes.h"

#include <gtest/gtest.h>

namespace {

constexpr size_t kLarge = size_t(2) << 20;  // 16 MiB of samples

class ImagePlanes : public testing::Test {
protected:
    void SetUp() override { ImagePlanes_SetBudget(size_t(64) << 20); }
    void TearDown() override { ImagePlanes_SetBudget(size_t(1) << 30); }
};

TEST_F(ImagePlanes, ALargePlaneIsReusedForTheSameSizeAndZeroedWhenAskedSmallOnesAreNot) {
    int64_t* first = ImagePlanes_Allocate(kLarge, false);
    ASSERT_NE(first, nullptr);
    first[0] = 42;
    first[kLarge - 1] = 43;
    ImagePlanes_Release(first);
    EXPECT_EQ(ImagePlanes_CachedBytes(), kLarge * 8);

    int64_t* again = ImagePlanes_Allocate(kLarge, true);
    EXPECT_EQ(again, first);
    EXPECT_EQ(again[0], 0);
    EXPECT_EQ(again[kLarge - 1], 0);
    EXPECT_EQ(ImagePlanes_CachedBytes(), 0u);

    int64_t* other = ImagePlanes_Allocate(kLarge + 1, false);  // another size: a fresh plane
    EXPECT_NE(other, first);
    for (int64_t* plane : {other, again}) ImagePlanes_Release(plane);
    ImagePlanes_Trim();
    EXPECT_EQ(ImagePlanes_CachedBytes(), 0u);

    // Small planes and a zero bound keep nothing.
    ImagePlanes_Release(ImagePlanes_Allocate(1000, true));
    EXPECT_EQ(ImagePlanes_CachedBytes(), 0u);
    ImagePlanes_SetBudget(0);
    ImagePlanes_Release(ImagePlanes_Allocate(kLarge, false));
    EXPECT_EQ(ImagePlanes_CachedBytes(), 0u);
}

TEST_F(ImagePlanes, TheCacheKeepsWithinItsBoundOldestOut) {
    int64_t* a = ImagePlanes_Allocate(kLarge, false);
    int64_t* b = ImagePlanes_Allocate(kLarge, false);
    int64_t* c = ImagePlanes_Allocate(kLarge, false);
    for (int64_t* plane : {a, b, c}) ImagePlanes_Release(plane);  // 48 MiB: fits the 64 MiB bound
    EXPECT_EQ(ImagePlanes_CachedBytes(), 3 * kLarge * 8);
    int64_t* d = ImagePlanes_Allocate(kLarge * 2, false);
    ImagePlanes_Release(d);  // 32 more make 80: the oldest goes
    EXPECT_EQ(ImagePlanes_CachedBytes(), 4 * kLarge * 8);
    EXPECT_EQ(ImagePlanes_Allocate(kLarge, false), c);  // the newest of that size
    ImagePlanes_Release(c);
    ImagePlanes_Trim();
}

TEST_F(ImagePlanes, ImagesGiveTheirPlanesBackAndClearedImagesStartAtZero) {
    ImageBuffer* image = Image_Create(2048, 1024);  // 16 MiB a plane
    for (int64_t* plane : {image->red, image->green, image->blue}) plane[12345] = 7;
    Image_Free(image);
    EXPECT_EQ(ImagePlanes_CachedBytes(), 3 * kLarge * 8);
    ImageBuffer* cleared = Image_CreateCleared(2048, 1024);
    EXPECT_EQ(ImagePlanes_CachedBytes(), 0u);
    for (const int64_t* plane : {cleared->red, cleared->green, cleared->blue}) EXPECT_EQ(plane[12345], 0);
    Image_Free(cleared);
    ImagePlanes_Trim();
}

}  // namespace
