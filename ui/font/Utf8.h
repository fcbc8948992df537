// UTF-8 decoding for text drawing: one code point at a time, with every
// malformed sequence (stray continuation bytes, truncated, overlong or
// surrogate encodings, values beyond U+10FFFF) read as U+FFFD one byte at a
// time, so that drawing always moves on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr uint32_t kUtf8Replacement = 0xFFFD;

// The code point at `*at`, advancing `*at` past it. `*at` must be below text.size().
inline uint32_t Utf8_Next(std::string_view text, size_t* at) {
    const size_t i = *at;
    const uint32_t b0 = static_cast<uint8_t>(text[i]);
    *at = i + 1;
    if (b0 < 0x80) return b0;
    int extra;
    uint32_t cp, min;
    if ((b0 & 0xE0) == 0xC0) {
        extra = 1, cp = b0 & 0x1F, min = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        extra = 2, cp = b0 & 0x0F, min = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        extra = 3, cp = b0 & 0x07, min = 0x10000;
    } else {
        return kUtf8Replacement;
    }
    if (text.size() - i <= static_cast<size_t>(extra)) return kUtf8Replacement;
    for (int k = 1; k <= extra; ++k) {
        const uint32_t b = static_cast<uint8_t>(text[i + k]);
        if ((b & 0xC0) != 0x80) return kUtf8Replacement;
        cp = (cp << 6) | (b & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return kUtf8Replacement;
    *at = i + 1 + static_cast<size_t>(extra);
    return cp;
}
