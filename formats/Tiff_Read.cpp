// Reader for uncompressed baseline TIFF. Three layouts are accepted, all with
// Compression 1 and one strip offset per strip byte count:
//   grey  Photometric 0 or 1, 1 sample of 8, 16 or 32 bits, unsigned or float;
//   RGB   Photometric 2, 3 samples of 8, 16 or 32 bits, unsigned or float;
//   RGBA  Photometric 2, 4 samples (exactly one extra) of 8 or 16 bits, unsigned.
// Planar, tiled, compressed and BigTIFF files are refused. Integer samples keep
// their own depth (bitDepth = BitsPerSample). Float samples (32-bit IEEE or
// 16-bit half) land on 0..maxValue of that depth: values within 0..1 linearly,
// and when the file's largest value exceeds 1 everything is first divided by
// that largest value. NaN and negatives become 0, +infinity becomes maxValue.
#include "formats/Tiff_Read.h"

#include "formats/File_ReadAll.h"
#include "formats/Format_Limits.h"
#include "image/Image.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <unordered_set>
#include <vector>

namespace {

enum : uint16_t {
    kTagImageWidth = 256,
    kTagImageLength = 257,
    kTagBitsPerSample = 258,
    kTagCompression = 259,
    kTagPhotometric = 262,
    kTagStripOffsets = 273,
    kTagSamplesPerPixel = 277,
    kTagStripByteCounts = 279,
    kTagPlanarConfiguration = 284,
    kTagTileWidth = 322,
    kTagTileLength = 323,
    kTagTileOffsets = 324,
    kTagTileByteCounts = 325,
    kTagExtraSamples = 338,
    kTagSampleFormat = 339,
    kTagAttachment = 65000,
};

constexpr uint16_t kTiffMagic = 42;
constexpr uint32_t kSampleFormatUnsigned = 1;
constexpr uint32_t kSampleFormatFloat = 3;
// A multi-page file keeps its image in one of its first pages; the cap bounds
// the work on a chain of empty directories.
constexpr size_t kMaxDirectories = 1024;

// The file's bytes with reads in the file's byte order; every read is bounds
// checked by the caller through Has().
struct TiffBytes {
    const uint8_t* data;
    size_t size;
    bool bigEndian;

    bool Has(uint64_t offset, uint64_t length) const { return offset <= size && length <= size - offset; }
    uint16_t U16(size_t at) const {
        const uint8_t* p = data + at;
        return bigEndian ? uint16_t(p[0] << 8 | p[1]) : uint16_t(p[1] << 8 | p[0]);
    }
    uint32_t U32(size_t at) const {
        const uint8_t* p = data + at;
        return bigEndian ? uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]
                         : uint32_t(p[3]) << 24 | uint32_t(p[2]) << 16 | uint32_t(p[1]) << 8 | p[0];
    }
};

struct TiffDirectory {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t compression = 1;
    int64_t photometric = -1;  // no default: a file without it is refused
    uint32_t samplesPerPixel = 1;
    uint32_t bitsPerSample = 1;
    bool bitsDiffer = false;
    uint32_t sampleFormat = kSampleFormatUnsigned;
    bool formatsDiffer = false;
    uint32_t extraSamples = 0;
    uint32_t planar = 1;
    bool tiled = false;
    std::vector<uint32_t> stripOffsets;
    std::vector<uint32_t> stripByteCounts;
    uint32_t attachmentOffset = 0;
    uint32_t attachmentSize = 0;
};

// One directory entry and where its values lie.
struct TiffEntry {
    uint16_t tag;
    uint16_t type;
    uint32_t count;
    size_t values;
};

size_t TypeSize(uint16_t type) {
    switch (type) {
        case 1:
        case 2:
        case 6:
        case 7:
            return 1;  // BYTE, ASCII, SBYTE, UNDEFINED
        case 3:
        case 8:
            return 2;  // SHORT, SSHORT
        case 4:
        case 9:
        case 11:
        case 13:
            return 4;  // LONG, SLONG, FLOAT, IFD
        case 5:
        case 10:
        case 12:
            return 8;  // RATIONAL, SRATIONAL, DOUBLE
        default:
            return 0;
    }
}

// Values of up to four bytes sit in the entry itself, longer ones at an offset.
bool LocateValues(const TiffBytes& file, size_t entry, TiffEntry* out) {
    out->tag = file.U16(entry);
    out->type = file.U16(entry + 2);
    out->count = file.U32(entry + 4);
    const size_t unit = TypeSize(out->type);
    if (unit == 0) return false;
    const uint64_t bytes = uint64_t{unit} * out->count;
    if (bytes <= 4) {
        out->values = entry + 8;
        return true;
    }
    out->values = file.U32(entry + 8);
    return file.Has(out->values, bytes);
}

// Value `index` of an unsigned integer entry (BYTE, SHORT or LONG).
bool ReadUnsigned(const TiffBytes& file, const TiffEntry& entry, uint32_t index, uint32_t* value) {
    if (index >= entry.count) return false;
    switch (entry.type) {
        case 1:
            *value = file.data[entry.values + index];
            return true;
        case 3:
            *value = file.U16(entry.values + size_t{index} * 2);
            return true;
        case 4:
            *value = file.U32(entry.values + size_t{index} * 4);
            return true;
        default:
            return false;
    }
}

bool ReadScalar(const TiffBytes& file, const TiffEntry& entry, uint32_t* value) {
    return ReadUnsigned(file, entry, 0, value);
}

bool ReadArray(const TiffBytes& file, const TiffEntry& entry, std::vector<uint32_t>* values) {
    values->resize(entry.count);
    for (uint32_t i = 0; i < entry.count; ++i)
        if (!ReadUnsigned(file, entry, i, &(*values)[i])) return false;
    return true;
}

// Reads a per-sample entry whose values must all agree; `differ` records when they do not.
bool ReadUniform(const TiffBytes& file, const TiffEntry& entry, uint32_t* value, bool* differ) {
    if (!ReadScalar(file, entry, value)) return false;
    for (uint32_t i = 1; i < entry.count; ++i) {
        uint32_t other = 0;
        if (!ReadUnsigned(file, entry, i, &other)) return false;
        if (other != *value) *differ = true;
    }
    return true;
}

// Reads the tags this reader uses from the `count` entries at `first`; others are
// skipped. False when an entry we need is malformed.
bool ParseDirectory(const TiffBytes& file, size_t first, uint32_t count, TiffDirectory* dir) {
    for (uint32_t i = 0; i < count; ++i) {
        const size_t at = first + size_t{i} * 12;
        const uint16_t tag = file.U16(at);
        if (tag == kTagAttachment) {
            // Our own private tag: its value is always the offset of the block, as
            // the writer puts it, even for blocks of four bytes or fewer.
            dir->attachmentSize = file.U32(at + 4);
            dir->attachmentOffset = file.U32(at + 8);
            continue;
        }
        if (tag == kTagTileWidth || tag == kTagTileLength || tag == kTagTileOffsets ||
            tag == kTagTileByteCounts) {
            dir->tiled = true;
            continue;
        }
        if (tag != kTagImageWidth && tag != kTagImageLength && tag != kTagBitsPerSample &&
            tag != kTagCompression && tag != kTagPhotometric && tag != kTagStripOffsets &&
            tag != kTagSamplesPerPixel && tag != kTagStripByteCounts && tag != kTagPlanarConfiguration &&
            tag != kTagExtraSamples && tag != kTagSampleFormat)
            continue;
        TiffEntry entry;
        if (!LocateValues(file, at, &entry)) return false;
        uint32_t value = 0;
        bool ok = true;
        switch (tag) {
            case kTagImageWidth:
                ok = ReadScalar(file, entry, &dir->width);
                break;
            case kTagImageLength:
                ok = ReadScalar(file, entry, &dir->height);
                break;
            case kTagBitsPerSample:
                ok = ReadUniform(file, entry, &dir->bitsPerSample, &dir->bitsDiffer);
                break;
            case kTagCompression:
                ok = ReadScalar(file, entry, &dir->compression);
                break;
            case kTagPhotometric:
                ok = ReadScalar(file, entry, &value);
                dir->photometric = value;
                break;
            case kTagSamplesPerPixel:
                ok = ReadScalar(file, entry, &dir->samplesPerPixel);
                break;
            case kTagPlanarConfiguration:
                ok = ReadScalar(file, entry, &dir->planar);
                break;
            case kTagStripOffsets:
                ok = ReadArray(file, entry, &dir->stripOffsets);
                break;
            case kTagStripByteCounts:
                ok = ReadArray(file, entry, &dir->stripByteCounts);
                break;
            case kTagExtraSamples:
                dir->extraSamples = entry.count;
                break;
            case kTagSampleFormat:
                ok = ReadUniform(file, entry, &dir->sampleFormat, &dir->formatsDiffer);
                break;
        }
        if (!ok) return false;
    }
    return true;
}

// Walks the directory chain to the first directory with a non-empty image. A
// chain that comes back to a directory already seen ends the walk.
bool FindImageDirectory(const TiffBytes& file, TiffDirectory* dir) {
    uint32_t offset = file.U32(4);
    std::unordered_set<uint32_t> seen;
    while (offset != 0 && seen.size() < kMaxDirectories) {
        if (!seen.insert(offset).second) return false;
        if (!file.Has(offset, 2)) return false;
        const uint32_t count = file.U16(offset);
        const size_t first = size_t{offset} + 2;
        if (!file.Has(first, uint64_t{count} * 12)) return false;
        *dir = TiffDirectory{};
        if (!ParseDirectory(file, first, count, dir)) return false;
        if (dir->width >= 1 && dir->height >= 1) return true;
        const size_t next = first + size_t{count} * 12;
        offset = file.Has(next, 4) ? file.U32(next) : 0;
    }
    return false;
}

enum class Layout { Grey, Rgb, Rgba };

bool ChooseLayout(const TiffDirectory& dir, Layout* layout) {
    if (dir.compression != 1 || dir.tiled || dir.bitsDiffer || dir.formatsDiffer) return false;
    if (dir.planar != 1 && dir.samplesPerPixel != 1) return false;
    if (dir.stripOffsets.empty() || dir.stripOffsets.size() != dir.stripByteCounts.size()) return false;
    const uint32_t bits = dir.bitsPerSample;
    const bool isFloat = dir.sampleFormat == kSampleFormatFloat;
    if (dir.sampleFormat != kSampleFormatUnsigned && !isFloat) return false;
    // 16-bit float is IEEE half; there is no 8-bit float to read.
    const bool colourBits = isFloat ? (bits == 16 || bits == 32) : (bits == 8 || bits == 16 || bits == 32);
    if ((dir.photometric == 0 || dir.photometric == 1) && dir.samplesPerPixel == 1 && colourBits) {
        *layout = Layout::Grey;
        return true;
    }
    if (dir.photometric == 2 && dir.samplesPerPixel == 3 && colourBits) {
        *layout = Layout::Rgb;
        return true;
    }
    if (dir.photometric == 2 && dir.samplesPerPixel == 4 && dir.extraSamples == 1 && !isFloat &&
        (bits == 8 || bits == 16)) {
        *layout = Layout::Rgba;
        return true;
    }
    return false;
}

// The pixel bytes, gathered from the strips in order. Strips that follow one
// another in the file are used in place; scattered ones are copied together.
// Strip data must lie in the file, and the pixels can never need more bytes
// than the whole file holds: that bounds what a header can make us allocate.
bool GatherStrips(const TiffBytes& file, const TiffDirectory& dir, uint64_t needed,
                  std::vector<uint8_t>* copy, const uint8_t** pixels) {
    if (needed > file.size) return false;
    uint64_t have = 0;
    bool contiguous = true;
    for (size_t i = 0; i < dir.stripOffsets.size() && have < needed; ++i) {
        const uint64_t take = std::min<uint64_t>(dir.stripByteCounts[i], needed - have);
        if (!file.Has(dir.stripOffsets[i], take)) return false;
        if (i > 0 && dir.stripOffsets[i] != dir.stripOffsets[0] + have) contiguous = false;
        have += take;
    }
    if (have < needed) return false;
    if (contiguous) {
        *pixels = file.data + dir.stripOffsets[0];
        return true;
    }
    copy->resize(needed);
    have = 0;
    for (size_t i = 0; i < dir.stripOffsets.size() && have < needed; ++i) {
        const uint64_t take = std::min<uint64_t>(dir.stripByteCounts[i], needed - have);
        std::memcpy(copy->data() + have, file.data + dir.stripOffsets[i], take);
        have += take;
    }
    *pixels = copy->data();
    return true;
}

// Sample loaders, one per width and byte order.
template <bool Big>
inline uint32_t Load16(const uint8_t* p) {
    return Big ? uint32_t(p[0]) << 8 | p[1] : uint32_t(p[1]) << 8 | p[0];
}
template <bool Big>
inline uint32_t Load32(const uint8_t* p) {
    return Big ? uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]
               : uint32_t(p[3]) << 24 | uint32_t(p[2]) << 16 | uint32_t(p[1]) << 8 | p[0];
}

inline float HalfToFloat(uint32_t half) {
    const uint32_t sign = (half & 0x8000u) << 16;
    const uint32_t exponent = (half >> 10) & 0x1F;
    const uint32_t mantissa = half & 0x3FF;
    if (exponent == 0) {  // zero and subnormals: mantissa x 2^-24, exact in float
        const float v = float(mantissa) * (1.0f / 16777216.0f);
        return sign ? -v : v;
    }
    const uint32_t bits =
        exponent == 31 ? sign | 0x7F800000u | mantissa << 13 : sign | (exponent + 112) << 23 | mantissa << 13;
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

template <bool Big, int Bits>
inline float LoadFloat(const uint8_t* p) {
    if constexpr (Bits == 16) {
        return HalfToFloat(Load16<Big>(p));
    } else {
        const uint32_t bits = Load32<Big>(p);
        float v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
}

// Writes the samples of every row into the planes; `sample` turns the bytes of
// one sample into its integer value.
template <int Channels, int SampleBytes, class Sample>
void DecodeRows(const uint8_t* pixels, ImageBuffer* image, Sample sample) {
    const size_t width = static_cast<size_t>(image->width);
    const size_t rowBytes = width * Channels * SampleBytes;
    for (int32_t y = 0; y < image->height; ++y) {
        const uint8_t* p = pixels + static_cast<size_t>(y) * rowBytes;
        const size_t row = static_cast<size_t>(y) * static_cast<size_t>(image->stride);
        int64_t* red = image->red + row;
        int64_t* green = image->green + row;
        int64_t* blue = image->blue + row;
        int64_t* alpha = Channels == 4 ? image->alpha + row : nullptr;
        for (size_t x = 0; x < width; ++x, p += Channels * SampleBytes) {
            if constexpr (Channels == 1) {
                const int64_t v = sample(p);
                red[x] = v;
                green[x] = v;
                blue[x] = v;
            } else {
                red[x] = sample(p);
                green[x] = sample(p + SampleBytes);
                blue[x] = sample(p + 2 * SampleBytes);
                if constexpr (Channels == 4) alpha[x] = sample(p + 3 * SampleBytes);
            }
        }
    }
}

template <int SampleBytes, class Sample>
void DecodeAll(const uint8_t* pixels, ImageBuffer* image, int channels, Sample sample) {
    switch (channels) {
        case 1:
            DecodeRows<1, SampleBytes>(pixels, image, sample);
            break;
        case 3:
            DecodeRows<3, SampleBytes>(pixels, image, sample);
            break;
        case 4:
            DecodeRows<4, SampleBytes>(pixels, image, sample);
            break;
    }
}

template <bool Big>
void DecodeInteger(const uint8_t* pixels, ImageBuffer* image, int channels, uint32_t bits) {
    switch (bits) {
        case 8:
            DecodeAll<1>(pixels, image, channels, [](const uint8_t* p) { return int64_t{*p}; });
            break;
        case 16:
            DecodeAll<2>(pixels, image, channels, [](const uint8_t* p) { return int64_t{Load16<Big>(p)}; });
            break;
        case 32:
            DecodeAll<4>(pixels, image, channels, [](const uint8_t* p) { return int64_t{Load32<Big>(p)}; });
            break;
    }
}

template <bool Big, int Bits>
void DecodeFloat(const uint8_t* pixels, ImageBuffer* image, int channels) {
    constexpr int kBytes = Bits / 8;
    const size_t samples = static_cast<size_t>(image->width) * static_cast<size_t>(image->height) *
                           static_cast<size_t>(channels);
    float largest = 0.0f;
    for (size_t i = 0; i < samples; ++i) {
        const float v = LoadFloat<Big, Bits>(pixels + i * kBytes);
        if (std::isfinite(v) && v > largest) largest = v;
    }
    const double maxValue = static_cast<double>(image->maxValue);
    const double scale = largest > 1.0f ? maxValue / largest : maxValue;
    const int64_t top = image->maxValue;
    DecodeAll<kBytes>(pixels, image, channels, [scale, top](const uint8_t* p) -> int64_t {
        const float v = LoadFloat<Big, Bits>(p);
        if (!(v > 0.0f)) return 0;  // negatives, zero and NaN
        if (std::isinf(v)) return top;
        const int64_t s = std::llround(v * scale);
        return s < top ? s : top;
    });
}

template <bool Big>
void DecodePixels(const uint8_t* pixels, ImageBuffer* image, int channels, uint32_t bits, bool isFloat) {
    if (!isFloat)
        DecodeInteger<Big>(pixels, image, channels, bits);
    else if (bits == 16)
        DecodeFloat<Big, 16>(pixels, image, channels);
    else
        DecodeFloat<Big, 32>(pixels, image, channels);
}

}  // namespace

ImageBuffer* Tiff_ReadMemory(const uint8_t* data, size_t size) {
    if (!data || size < 8) return nullptr;
    bool bigEndian;
    if (data[0] == 'I' && data[1] == 'I')
        bigEndian = false;
    else if (data[0] == 'M' && data[1] == 'M')
        bigEndian = true;
    else
        return nullptr;
    const TiffBytes file{data, size, bigEndian};
    if (file.U16(2) != kTiffMagic) return nullptr;  // BigTIFF has 43

    TiffDirectory dir;
    Layout layout;
    if (!FindImageDirectory(file, &dir) || !ChooseLayout(dir, &layout)) return nullptr;
    if (!Format_SizeFits(dir.width, dir.height)) return nullptr;

    const int channels = layout == Layout::Grey ? 1 : layout == Layout::Rgb ? 3 : 4;
    const uint64_t needed = uint64_t{dir.width} * dir.height * channels * (dir.bitsPerSample / 8);
    std::vector<uint8_t> gathered;
    const uint8_t* pixels = nullptr;
    if (!GatherStrips(file, dir, needed, &gathered, &pixels)) return nullptr;

    ImagePtr image(Image_Create(static_cast<int32_t>(dir.width), static_cast<int32_t>(dir.height)));
    image->bitDepth = static_cast<uint16_t>(dir.bitsPerSample);
    image->maxValue = static_cast<int64_t>((uint64_t{1} << dir.bitsPerSample) - 1);
    image->mono = layout == Layout::Grey ? 1 : 0;
    if (layout == Layout::Rgba) {
        Image_AddAlpha(image.get());
        if (!image->alpha) return nullptr;
    }
    const bool isFloat = dir.sampleFormat == kSampleFormatFloat;
    if (bigEndian)
        DecodePixels<true>(pixels, image.get(), channels, dir.bitsPerSample, isFloat);
    else
        DecodePixels<false>(pixels, image.get(), channels, dir.bitsPerSample, isFloat);

    // A damaged attachment pointer costs the attachment, not the picture.
    if (dir.attachmentSize > 0 && file.Has(dir.attachmentOffset, dir.attachmentSize)) {
        image->attachment = static_cast<uint8_t*>(std::malloc(dir.attachmentSize));
        if (image->attachment) {
            std::memcpy(image->attachment, data + dir.attachmentOffset, dir.attachmentSize);
            image->attachmentSize = dir.attachmentSize;
        }
    }
    return image.release();
}

ImageBuffer* Tiff_Read(const char* path) {
    FileBytes file;
    if (!File_ReadAll(path, &file)) return nullptr;
    return Tiff_ReadMemory(file.data.get(), file.size);
}
