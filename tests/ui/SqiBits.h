// Writing .sqi bit streams by hand for the decoder tests: bits least
// significant first within each byte, a value's lowest bit first.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace sqi_test {

struct BitWriter {
    std::vector<uint8_t> bytes;
    uint64_t bits = 0;

    void Bit(uint32_t b) {
        if (bits % 8 == 0) bytes.push_back(0);
        if (b) bytes.back() |= uint8_t(1u << (bits % 8));
        ++bits;
    }
    void Value(uint32_t v, int width) {
        for (int i = 0; i < width; ++i) Bit((v >> i) & 1u);
    }
    // A node: its value, then its split bit.
    void Node(uint32_t v, int width, bool split) {
        Value(v, width);
        Bit(split);
    }
};

// Nodes written as words, "S21" a node of value 21 that splits, "L7" a leaf.
inline BitWriter Nodes(const char* words, int width) {
    BitWriter w;
    for (const char* p = words; *p;) {
        const bool split = *p == 'S';
        char* end = nullptr;
        const uint32_t v = uint32_t(std::strtoul(p + 1, &end, 10));
        w.Node(v, width, split);
        p = *end ? end + 1 : end;
    }
    return w;
}

inline void PutLe(std::vector<uint8_t>& out, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(uint8_t(v >> (8 * i)));
}

// A whole file from four plane streams.
inline std::vector<uint8_t> File(uint16_t w, uint16_t h, uint32_t mode, const BitWriter (&planes)[4]) {
    std::vector<uint8_t> out;
    PutLe(out, w, 2);
    PutLe(out, h, 2);
    PutLe(out, mode, 4);
    for (const BitWriter& p : planes) {
        PutLe(out, uint32_t(p.bytes.size()), 4);
        out.insert(out.end(), p.bytes.begin(), p.bytes.end());
    }
    return out;
}

// Four planes that are each one uniform leaf.
inline std::vector<uint8_t> Uniform(uint16_t w, uint16_t h, uint32_t mode, uint32_t r, uint32_t g, uint32_t b,
                                    uint32_t a) {
    BitWriter planes[4];
    const uint32_t values[4] = {r, g, b, a};
    const int widths[4] = {5, 6, 5, 8};
    for (int i = 0; i < 4; ++i) planes[i].Node(values[i], widths[i], false);
    return File(w, h, mode, planes);
}

}  // namespace sqi_test
