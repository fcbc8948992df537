// Replays the slot reader's fuzz corpus (every crasher the fuzzer ever found is
// kept there) in every build, the sanitizer build included.
#include "image/Tracking.h"

#include "support/Files.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

TEST(TrackingCorpus, EveryKeptInputIsReadOrRefusedSafely) {
    const fs::path corpus = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / "TrackingSlot";
    ASSERT_TRUE(fs::is_directory(corpus));
    TempDir dir;
    SetEnv("PELLUCIDA_STATE_DIR", dir.Path().string());
    int inputs = 0, images = 0;
    for (const auto& entry : fs::directory_iterator(corpus)) {
        SCOPED_TRACE(entry.path().filename().string());
        fs::copy_file(entry.path(), Tracking_SlotPath(0, 0), fs::copy_options::overwrite_existing);
        ImagePtr image(Tracking_ReadSlot(0, 0, fs::file_size(entry.path()) % 2 == 1));
        ++inputs;
        if (!image) continue;
        ++images;
        ASSERT_GT(image->width, 0);
        ASSERT_GT(image->height, 0);
        const size_t n = size_t(image->width) * image->height;
        for (const int64_t* plane : {image->red, image->green, image->blue})
            for (size_t i = 0; i < n; ++i) ASSERT_GE(plane[i], 0);
    }
    UnsetEnv("PELLUCIDA_STATE_DIR");
    EXPECT_GE(inputs, 4);
    EXPECT_GE(images, 2);  // the seeds hold real slots
}
