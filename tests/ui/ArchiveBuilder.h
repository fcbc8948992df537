// A small writer of resource archives for the tests, written from the file
// layout alone (not from the reader): a 78-byte header, 8-byte slots, the
// index record "#" in slot 0 and one record per entry, chained per bucket.
#pragma once

#include "support/Files.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace archive_test {

inline uint32_t Bucket(const std::string& name) {
    uint32_t h = 0;
    for (unsigned char c : name) {
        h += c;
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    return h & 0x1FFF;
}

struct Entry {
    std::string name;
    std::vector<uint8_t> data;
};

struct Options {
    std::string type = "VDSK";
    std::string creator = "VDSK";
    bool withIndex = true;
};

// The slot table is big-endian, the records little-endian.
inline void PutBe32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = uint8_t(v >> (24 - 8 * i));
}
inline void PutLe(std::vector<uint8_t>& b, size_t at, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) b[at + i] = uint8_t(v >> (8 * i));
}

// Byte offsets of what Build wrote, so tests can damage chosen fields.
struct Layout {
    std::vector<uint32_t> recordOffsets;  // per slot
};

inline std::vector<uint8_t> Build(const std::vector<Entry>& entries, const Options& options = {},
                                  Layout* layout = nullptr) {
    std::vector<Entry> records;
    if (options.withIndex) records.push_back({"#", std::vector<uint8_t>(2 * 8192, 0)});
    for (const Entry& e : entries) records.push_back(e);
    const uint32_t slots = uint32_t(records.size());
    std::vector<uint8_t> file(78 + 8 * slots, 0);
    for (int i = 0; i < 4; ++i) {
        file[60 + i] = uint8_t(options.type[i]);
        file[64 + i] = uint8_t(options.creator[i]);
    }
    file[76] = uint8_t(slots >> 8);
    file[77] = uint8_t(slots);
    // Bucket heads and chains, built from the last entry back: the first entry
    // of a bucket is its head, the later ones hang off the previous one's "next".
    std::vector<uint16_t> heads(8192, 0);
    std::vector<uint16_t> next(slots, 0);
    for (uint32_t s = slots; s-- > (options.withIndex ? 1u : 0u);) {
        const uint32_t b = Bucket(records[s].name);
        next[s] = heads[b];
        heads[b] = uint16_t(s);
    }
    if (options.withIndex)
        for (uint32_t b = 0; b < 8192; ++b) PutLe(records[0].data, 2 * b, heads[b], 2);
    if (layout) layout->recordOffsets.assign(slots, 0);
    for (uint32_t s = 0; s < slots; ++s) {
        const uint32_t offset = uint32_t(file.size());
        if (layout) layout->recordOffsets[s] = offset;
        PutBe32(file, 78 + 8 * s, offset);
        const uint32_t headerLength = (24 + uint32_t(records[s].name.size()) + 1 + 3) & ~3u;
        std::vector<uint8_t> head(headerLength, 0);
        PutLe(head, 4, headerLength, 4);
        PutLe(head, 8, uint32_t(records[s].data.size()), 4);
        PutLe(head, 12, 1, 2);
        PutLe(head, 16, next[s], 2);
        for (size_t i = 0; i < records[s].name.size(); ++i) head[24 + i] = uint8_t(records[s].name[i]);
        file.insert(file.end(), head.begin(), head.end());
        file.insert(file.end(), records[s].data.begin(), records[s].data.end());
    }
    return file;
}

inline std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

inline std::string WriteTemp(const std::vector<uint8_t>& bytes, const std::string& name) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / ("pellucida_ui_" + name);
    WriteFileBytes(path, bytes);
    return path.string();
}

// Two different names that fall in the same bucket.
inline std::pair<std::string, std::string> CollidingNames() {
    std::vector<int> seen(8192, -1);
    for (int i = 0;; ++i) {
        const std::string name = "entry" + std::to_string(i) + ".xml";
        const uint32_t b = Bucket(name);
        if (seen[b] >= 0) return {"entry" + std::to_string(seen[b]) + ".xml", name};
        seen[b] = i;
    }
}

}  // namespace archive_test
