// Assembles small TIFF files for the reader tests, independently of the
// program's writer: any byte order, any entries, values placed in the entry or
// after the directory as the format requires, pixel data split into strips.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

class TiffBuilder {
public:
    explicit TiffBuilder(bool bigEndian) : m_big(bigEndian) {}

    // Adds the entry, or replaces the one of the same tag; no values remove it.
    void Entry(uint16_t tag, uint16_t type, std::vector<uint32_t> values) {
        std::erase_if(m_entries, [&](const Item& e) { return e.tag == tag; });
        if (!values.empty()) m_entries.push_back({tag, type, uint32_t(values.size()), std::move(values)});
    }
    // Pixel bytes in strips of `stripBytes` (0: one strip); adds tags 273 and 279.
    void Pixels(std::vector<uint8_t> pixels, size_t stripBytes = 0) {
        m_pixels = std::move(pixels);
        m_stripBytes = stripBytes ? stripBytes : m_pixels.size();
    }

    // Grey, RGB or RGBA header tags for a simple uncompressed image.
    void Basic(uint32_t width, uint32_t height, uint32_t samples, uint32_t bits, uint32_t photometric,
               uint32_t sampleFormat = 1) {
        Entry(256, 4, {width});
        Entry(257, 4, {height});
        Entry(258, 3, std::vector<uint32_t>(samples, bits));
        Entry(259, 3, {1});
        Entry(262, 3, {photometric});
        Entry(277, 3, {samples});
        if (samples == 4) Entry(338, 3, {2});
        if (sampleFormat != 1) Entry(339, 3, std::vector<uint32_t>(samples, sampleFormat));
    }

    std::vector<uint8_t> Build() const {
        std::vector<Item> entries = m_entries;
        size_t strips = 0;
        if (!m_pixels.empty()) {
            strips = (m_pixels.size() + m_stripBytes - 1) / m_stripBytes;
            std::vector<uint32_t> offsets(strips, 0), counts(strips);
            for (size_t i = 0; i < strips; ++i)
                counts[i] = uint32_t(std::min(m_stripBytes, m_pixels.size() - i * m_stripBytes));
            entries.push_back({273, 4, uint32_t(strips), offsets});
            entries.push_back({279, 4, uint32_t(strips), counts});
        }
        std::vector<uint8_t> out;
        out.push_back(m_big ? 'M' : 'I');
        out.push_back(m_big ? 'M' : 'I');
        Put16(out, 42);
        Put32(out, 8);
        Put16(out, uint16_t(entries.size()));
        const size_t dirStart = out.size();
        out.resize(dirStart + entries.size() * 12 + 4, 0);  // next offset 0
        size_t stripOffsetsEntry = SIZE_MAX;
        size_t stripOffsetsData = 0;
        for (size_t i = 0; i < entries.size(); ++i) {
            const Item& e = entries[i];
            std::vector<uint8_t> bytes;
            for (uint32_t v : e.values) {
                if (e.type == 3)
                    Put16(bytes, uint16_t(v));
                else if (e.type == 1)
                    bytes.push_back(uint8_t(v));
                else
                    Put32(bytes, v);
            }
            const size_t at = dirStart + i * 12;
            Set16(out, at, e.tag);
            Set16(out, at + 2, e.type);
            Set32(out, at + 4, e.count);
            if (bytes.size() <= 4) {
                std::memcpy(out.data() + at + 8, bytes.data(), bytes.size());
                if (e.tag == 273) stripOffsetsData = at + 8;
            } else {
                Set32(out, at + 8, uint32_t(out.size()));
                if (e.tag == 273) stripOffsetsData = out.size();
                out.insert(out.end(), bytes.begin(), bytes.end());
            }
            if (e.tag == 273) stripOffsetsEntry = i;
        }
        if (stripOffsetsEntry != SIZE_MAX) {
            const size_t pixelStart = out.size();
            out.insert(out.end(), m_pixels.begin(), m_pixels.end());
            for (size_t s = 0; s < strips; ++s)
                Set32(out, stripOffsetsData + s * 4, uint32_t(pixelStart + s * m_stripBytes));
        }
        return out;
    }

    // Helpers for writing sample values in the file's byte order.
    void Put16(std::vector<uint8_t>& out, uint16_t v) const {
        out.push_back(m_big ? uint8_t(v >> 8) : uint8_t(v));
        out.push_back(m_big ? uint8_t(v) : uint8_t(v >> 8));
    }
    void Put32(std::vector<uint8_t>& out, uint32_t v) const {
        for (int i = 0; i < 4; ++i) out.push_back(uint8_t(v >> (m_big ? 24 - 8 * i : 8 * i)));
    }

private:
    struct Item {
        uint16_t tag;
        uint16_t type;
        uint32_t count;
        std::vector<uint32_t> values;
    };
    void Set16(std::vector<uint8_t>& out, size_t at, uint16_t v) const {
        std::vector<uint8_t> b;
        Put16(b, v);
        std::memcpy(out.data() + at, b.data(), 2);
    }
    void Set32(std::vector<uint8_t>& out, size_t at, uint32_t v) const {
        std::vector<uint8_t> b;
        Put32(b, v);
        std::memcpy(out.data() + at, b.data(), 4);
    }

    bool m_big;
    std::vector<Item> m_entries;
    std::vector<uint8_t> m_pixels;
    size_t m_stripBytes = 0;
};
