// Base64: the standard's test vectors (every padding case) and the top of the
// alphabet, which a table one character off would get wrong.
#include "formats/Base64.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(Base64, EncodesTheStandardVectorsAndEveryPadding) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
    };
    for (const auto& [plain, encoded] : cases)
        EXPECT_EQ(Base64_Encode(std::vector<uint8_t>(plain.begin(), plain.end())), encoded) << plain;
    EXPECT_EQ(Base64_Encode(std::vector<uint8_t>{0xFB, 0xFF, 0xBF}), "+/+/");  // 62, 63, 62, 63
}
