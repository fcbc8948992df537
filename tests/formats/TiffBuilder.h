// Assembles small TIFF files for the reader tests, independently of the
// program's writer: any byte order, any entries, values placed in the entry or
// after the directory as the format requires, pixel data split into strips.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

class TiffBuilder {
public:
    explicit TiffBuilder(bool bigEndian) : m_big(bigEndian) {}

    // Adds the entry, or replaces the one of the same tag; no values remove it.
    void Entry(uint16_t tag, uint16_t type, std::vector<uint32_t> values) {
        std::erase_if(m_entries, [&](const Item& e) { return e.tag == tag; });
        if (!values.empty()) m_entries.push_back({tag, type, std::move(values)});
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
        const size_t strips = m_pixels.empty() ? 0 : (m_pixels.size() + m_stripBytes - 1) / m_stripBytes;
        if (strips) {
            std::vector<uint32_t> counts(strips);
            for (size_t i = 0; i < strips; ++i)
                counts[i] = uint32_t(std::min(m_stripBytes, m_pixels.size() - i * m_stripBytes));
            entries.push_back({273, 4, std::vector<uint32_t>(strips)});  // offsets, known below
            entries.push_back({279, 4, counts});
        }
        // The header, the directory, the values too long for their entry, then the pixels.
        const size_t longStart = 8 + 2 + entries.size() * 12 + 4;
        size_t pixelStart = longStart;
        for (const Item& e : entries) pixelStart += Bytes(e).size() > 4 ? Bytes(e).size() : 0;
        for (size_t s = 0; s < strips; ++s)
            entries[entries.size() - 2].values[s] = uint32_t(pixelStart + s * m_stripBytes);
        std::vector<uint8_t> out = {uint8_t(m_big ? 'M' : 'I'), uint8_t(m_big ? 'M' : 'I')}, longValues;
        Put(out, 42, 2);
        Put(out, 8, 4);
        Put(out, uint32_t(entries.size()), 2);
        for (const Item& e : entries) {
            std::vector<uint8_t> bytes = Bytes(e);
            Put(out, e.tag, 2);
            Put(out, e.type, 2);
            Put(out, uint32_t(e.values.size()), 4);
            if (bytes.size() > 4) {
                Put(out, uint32_t(longStart + longValues.size()), 4);
                longValues.insert(longValues.end(), bytes.begin(), bytes.end());
            } else {
                bytes.resize(4, 0);
                out.insert(out.end(), bytes.begin(), bytes.end());
            }
        }
        Put(out, 0, 4);  // no next directory
        out.insert(out.end(), longValues.begin(), longValues.end());
        out.insert(out.end(), m_pixels.begin(), m_pixels.end());
        return out;
    }

    // Writes a value of `size` bytes (1, 2 or 4) in the file's byte order.
    void Put(std::vector<uint8_t>& out, uint32_t v, int size) const {
        for (int i = 0; i < size; ++i) out.push_back(uint8_t(v >> 8 * (m_big ? size - 1 - i : i)));
    }

private:
    struct Item {
        uint16_t tag;
        uint16_t type;  // 1 byte, 3 short, 4 long
        std::vector<uint32_t> values;
    };
    std::vector<uint8_t> Bytes(const Item& e) const {
        std::vector<uint8_t> bytes;
        for (uint32_t v : e.values) Put(bytes, v, e.type == 3 ? 2 : e.type);
        return bytes;
    }

    bool m_big;
    std::vector<Item> m_entries;
    std::vector<uint8_t> m_pixels;
    size_t m_stripBytes = 0;
};
