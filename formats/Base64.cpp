// Base64 encoding, three bytes to four characters.
#include "formats/Base64.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string Base64_Encode(std::span<const uint8_t> bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const uint32_t v = uint32_t(bytes[i]) << 16 | uint32_t(bytes[i + 1]) << 8 | bytes[i + 2];
        for (int shift = 18; shift >= 0; shift -= 6) text += kAlphabet[(v >> shift) & 63];
    }
    if (const size_t rest = bytes.size() - i; rest > 0) {
        const uint32_t v = uint32_t(bytes[i]) << 16 | (rest == 2 ? uint32_t(bytes[i + 1]) << 8 : 0);
        text += kAlphabet[(v >> 18) & 63];
        text += kAlphabet[(v >> 12) & 63];
        text += rest == 2 ? kAlphabet[(v >> 6) & 63] : '=';
        text += '=';
    }
    return text;
}
