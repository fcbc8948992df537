// The load and save flow's rules: names, the stacking-artefact detector, the
// grey and transparency tests, and the dataset log lines.
#include "formats/File_Load.h"
#include "formats/File_Names.h"
#include "formats/Stacking_Artefacts.h"
#include "image/Image.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

TEST(FileNames, OpenableAndSaveableNamesAndTheDefaultSaveName) {
    for (const char* ok :
         {"a.jpg", "a.JPEG", "a.png", "a.fits", "a.tiff", "a.tif", "a.crw", "a.bmp", "a.fts", "a.fit"})
        EXPECT_TRUE(File_IsOpenableName(ok)) << ok;
    for (const char* no : {"a.gif", "a.npy", "a", "fits", "a.", "a.fits.gz"})
        EXPECT_FALSE(File_IsOpenableName(no)) << no;
    for (const char* ok : {"a.jpg", "a.jpeg", "a.JPS", "a.tiff", "a.png", "a.tif"})
        EXPECT_TRUE(File_IsSaveableName(ok)) << ok;
    for (const char* no : {"a.fits", "a.bmp", "a"}) EXPECT_FALSE(File_IsSaveableName(no)) << no;

    const std::vector<SaveFormat> formats = {File_SaveFormatFor("x.JPG"),  File_SaveFormatFor("x.jps"),
                                             File_SaveFormatFor("x.Png"),  File_SaveFormatFor("x.tif"),
                                             File_SaveFormatFor("x.fits"), File_SaveFormatFor("x")};
    EXPECT_EQ(formats, (std::vector<SaveFormat>{SaveFormat::kJpeg, SaveFormat::kJpeg, SaveFormat::kPng,
                                                SaveFormat::kTiff, SaveFormat::kTiff, SaveFormat::kTiff}));

    EXPECT_EQ(File_DefaultSaveName(nullptr), "NewFile.tiff");
    for (auto [name, save] : {std::pair{"", "NewFile.tiff"},
                              {"/data/m42.fits", "/data/m42.tiff"},
                              {"/data/m42.FIT", "/data/m42.tiff"},
                              {"/data/m42.fts", "/data/m42.tiff"},
                              {"/data/m42.png", "/data/m42.png"}})
        EXPECT_EQ(File_DefaultSaveName(name), save);
}

// A 30-bit image filled with `value`.
ImagePtr Filled(int w, int h, int64_t value) {
    return MakeImage(w, h, 30, [value](int32_t, int32_t, int) { return value; });
}

void Set(ImageBuffer* image, int x, int y, int64_t value) {
    for (int64_t* plane : {image->red, image->green, image->blue}) plane[y * image->stride + x] = value;
}

// Samples the size of real 30-bit data: the means are taken at 14 bits.
constexpr int64_t kDim = int64_t(2000) << 16;
constexpr int64_t kBright = int64_t(8000) << 16;

// A w x h checkerboard of dim and bright samples: no border anywhere.
ImagePtr Textured(int w, int h) {
    return MakeImage(w, h, 30, [](int32_t x, int32_t y, int) { return (x + y) % 2 ? kBright : kDim; });
}

// Whether a border was found, and the box left, top, right, bottom.
using Found = std::tuple<bool, int32_t, int32_t, int32_t, int32_t>;

Found Detect(const ImagePtr& image) {
    ArtefactBox box;
    const bool found = File_DetectStackingArtefacts(image.get(), &box);
    return {found, box.left, box.top, box.right, box.bottom};
}

TEST(StackingArtefacts, BorderLinesZeroEdgesAndTheWidestChannel) {
    // A line with nothing above the mean is border; a checkerboard has none.
    EXPECT_EQ(Detect(Textured(8, 6)), Found(false, 0, 0, 8, 6));
    // A flat image has no sample above its own mean: every line is border,
    // in both directions.
    EXPECT_EQ(Detect(Filled(5, 4, kDim)), Found(true, 5, 4, 0, 0));
    // Below 2^16 a sample is 0 at 14-bit precision, so the mean is 0 and any
    // non-zero sample ends the border.
    EXPECT_FALSE(std::get<0>(Detect(Filled(5, 4, 1000))));

    // Zero edges are cut off, and a zero first makes a line border.
    const int w = 12, h = 10;
    ImagePtr image = Textured(w, h);
    for (int y = 0; y < h; ++y)
        for (int x : {0, 1}) Set(image.get(), x, y, 0);  // two zero columns on the left
    // Every row starts with the zero columns, so walking along it meets a 0
    // before anything bright: rows are border from both sides.
    EXPECT_EQ(Detect(image), Found(true, 2, h, w, 0));

    ImagePtr bottom = Textured(w, h);
    for (int x = 0; x < w; ++x) Set(bottom.get(), x, h - 1, 0);
    for (int x = 0; x < w; ++x) Set(bottom.get(), x, h - 2, kDim);  // dim, not zero: still border
    EXPECT_EQ(Detect(bottom), Found(true, 0, 0, w, h - 2));

    // The widest channel decides: only the blue one has a dim last column.
    ImagePtr blue = Textured(6, 6);
    for (int y = 0; y < 6; ++y) blue->blue[y * 6 + 5] = 10;
    EXPECT_EQ(Detect(blue), Found(true, 0, 0, 5, 6));
}

TEST(LoadPreparation, TransparencyDecidesTheDataGapsQuestion) {
    for (int64_t transparent : {0, 3, 16}) {
        SCOPED_TRACE(transparent);
        const bool ask = transparent == 3;  // some pixels transparent, not all
        ImageBuffer* image = Image_CreateCleared(4, 4);
        Image_AddAlpha(image);
        for (int i = 0; i < transparent; ++i) image->alpha[i] = 0;
        LoadInfo info;
        ASSERT_TRUE(File_PrepareLoaded(image, &info));
        // Alpha is kept only for the question; the image is raised to 30 bits.
        EXPECT_EQ(std::tuple(info.askDataGaps, info.transparentCount, image->alpha != nullptr,
                             info.alphaAsRead, int(image->bitDepth), info.bitDepthAsRead),
                  std::tuple(ask, transparent, ask, true, 30, 16));
        Image_Free(image);
    }
}

TEST(LoadPreparation, NearlyOpaqueCountsAsOpaqueGreyIsTestedAndEmptyImagesAreRefused) {
    // Counted after the depth is raised: at 30 bits, maxValue - 1 is opaque
    // enough, anything lower is transparent.
    ImageBuffer* image = Image_CreateCleared(2, 1);
    Image_SetBitDepth(image, 30);
    Image_AddAlpha(image);
    image->alpha[0] = image->maxValue - 1;
    LoadInfo info;
    ASSERT_TRUE(File_PrepareLoaded(image, &info));
    EXPECT_EQ(std::tuple(info.transparentCount, info.grey), std::tuple(0, true));
    Image_Free(image);

    image = Image_CreateCleared(2, 1);
    Image_AddAlpha(image);
    image->alpha[1] = 65534;  // 16 bits: raised to 30 it falls below maxValue - 1
    image->blue[1] = 7;
    ASSERT_TRUE(File_PrepareLoaded(image, &info));
    EXPECT_EQ(std::tuple(info.transparentCount, info.grey), std::tuple(1, false));
    Image_Free(image);

    EXPECT_FALSE(File_PrepareLoaded(Image_CreateHeader(0, 5), &info));
}

TEST(DatasetAnswers, LogLinesForGreyAndColour) {
    const std::tuple<DatasetAnswer, bool, const char*> cases[] = {
        {DatasetAnswer::kLinear, false,
         "Type of Data: Linear, was not Bayered, or was Bayered + white balanced\n"},
        {DatasetAnswer::kLinear, true, "Type of Data: Linear\n"},
        {DatasetAnswer::kLinearOsc, false, "Type of Data: Linear and was Bayered, but not whitebalanced\n"},
        {DatasetAnswer::kNonLinearSrgb, false, "Type of Data: Non-linear sRGB source\n"},
        {DatasetAnswer::kNonLinearSrgb, true, "Type of Data: Modified and not linear\n"}};
    for (auto [answer, grey, line] : cases) EXPECT_STREQ(File_DatasetLogLine(answer, grey), line);
}

}  // namespace
