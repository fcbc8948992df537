// Little-endian numbers in byte buffers, the order of the program's own file
// formats (archive, icons, font, tracking slots) and of BMP: written at an
// offset, appended, or read back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

inline void LittleEndian_Set(std::vector<uint8_t>& b, size_t at, uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) b[at + size_t(i)] = uint8_t(v >> (8 * i));
}

inline void LittleEndian_Append(std::vector<uint8_t>& b, uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) b.push_back(uint8_t(v >> (8 * i)));
}

inline uint32_t LittleEndian_Get(const std::vector<uint8_t>& b, size_t at, int bytes) {
    uint32_t v = 0;
    for (int i = bytes; i-- > 0;) v = v << 8 | b[at + size_t(i)];
    return v;
}
