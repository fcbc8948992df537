// Replays the slot reader's fuzz corpus (every crasher the fuzzer ever found is
// kept there) in every build, the sanitizer build included.
#include "image/Tracking.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

TEST(TrackingCorpus, EveryKeptInputIsReadOrRefusedSafely) {
    const fs::path corpus = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / "TrackingSlot";
    ASSERT_TRUE(fs::is_directory(corpus));
    const fs::path dir = fs::temp_directory_path() / ("pellucida_slot_corpus_" + std::to_string(getpid()));
    fs::create_directories(dir);
    setenv("PELLUCIDA_STATE_DIR", dir.c_str(), 1);
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
    unsetenv("PELLUCIDA_STATE_DIR");
    fs::remove_all(dir);
    EXPECT_GE(inputs, 4);
    EXPECT_GE(images, 2);  // the seeds hold real slots
}
