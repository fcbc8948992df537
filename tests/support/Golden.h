// A picture against its reviewed copy in tests/golden/NAME/expected.png:
// a sample counts as different when it is more than `tolerance` away, and at most
// `allowed` samples may differ (0 for the program's own drawing, a few for a
// browser's, whose text and scaling vary between its versions).
// PELLUCIDA_REBASELINE=1 writes the picture instead, for a human to look at.
#pragma once

#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

inline void CompareGolden(const std::string& actual, const std::string& name, size_t allowed = 0,
                          int tolerance = 8) {
    namespace fs = std::filesystem;
    const fs::path golden = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "golden" / name / "expected.png";
    if (const char* r = std::getenv("PELLUCIDA_REBASELINE"); r && std::string(r) == "1") {
        fs::create_directories(golden.parent_path());
        fs::copy_file(actual, golden, fs::copy_options::overwrite_existing);
        return;
    }
    std::vector<uint8_t> a, e;
    unsigned aw = 0, ah = 0, ew = 0, eh = 0;
    ASSERT_EQ(lodepng::decode(a, aw, ah, actual, LCT_RGB, 8), 0u) << actual;
    ASSERT_EQ(lodepng::decode(e, ew, eh, golden.string(), LCT_RGB, 8), 0u) << golden;
    ASSERT_EQ(aw, ew);
    ASSERT_EQ(ah, eh);
    size_t bad = 0;
    for (size_t i = 0; i < a.size(); ++i) bad += std::abs(int(a[i]) - int(e[i])) > tolerance;
    EXPECT_LE(bad, allowed) << name << ": the picture differs from the reviewed one (" << actual << ")";
}
