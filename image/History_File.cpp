// One state file of the history: writing it safely and reading it strictly.
//
// Layout (integers little-endian):
//   0  "PLHS", version 1
//   8  width, height, bitDepth, flags (1 mono, 2 a mask follows, 4 linear,
//      8 tracked)
//   24 time in milliseconds since 1970 (8 bytes)
//   32 caption length, name length, then the caption and the name
//   .. the image's red, green and blue planes as runs of LZ4 blocks (the
//      tracking store's format)
//   .. with a mask: its bit depth (4 bytes), then its three planes the same way
// The file ends with the last block.
#include "host/Host_Path.h"
#include "image/History.h"
#include "image/Tracking_Internal.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr uint8_t kMagic[4] = {'P', 'L', 'H', 'S'};
constexpr uint32_t kVersion = 1;
constexpr uint32_t kFixedBytes = 40;
constexpr uint32_t kFlagMono = 1;
constexpr uint32_t kFlagMask = 2;
constexpr uint32_t kFlagLinear = 4;
constexpr uint32_t kFlagTracking = 8;
constexpr uint32_t kFlagsKnown = kFlagMono | kFlagMask | kFlagLinear | kFlagTracking;
// Captions and names are short; a longer length is damage.
constexpr uint32_t kMaxTextBytes = 4096;
constexpr const char* kTemporarySuffix = ".tmp";

void PutWord64(std::vector<uint8_t>* out, uint64_t value) {
    for (int i = 0; i < 8; ++i) out->push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void PutWord(std::vector<uint8_t>* out, uint32_t value) {
    out->resize(out->size() + 4);
    Tracking_PutWord(out->data() + out->size() - 4, value);
}

bool ValidDepth(uint32_t depth) {
    return depth >= 1 && depth <= 32;  // maxima are computed in 32-bit arithmetic
}

uint64_t Samples(const ImageBuffer* image) {
    return static_cast<uint64_t>(image->stride) * static_cast<uint64_t>(image->height);
}

bool Writable(const ImageBuffer* image) {
    return image && image->red && image->green && image->blue && image->width > 0 && image->height > 0 &&
           image->stride == image->width && ValidDepth(image->bitDepth);
}

// Appends an image's planes; the bytes appended, or 0.
uint64_t WriteImagePlanes(std::FILE* file, const ImageBuffer* image) {
    const int64_t* const planes[3] = {image->red, image->green, image->blue};
    return Tracking_WritePlanes(file, planes, Samples(image));
}

// Reads the header from the start of an open file. `fileBytes` bounds every
// length it announces.
bool ReadHeader(std::FILE* file, uint64_t fileBytes, HistoryState* state, uint32_t* bitDepth,
                uint64_t* headerBytes) {
    uint8_t fixed[kFixedBytes];
    if (fileBytes < kFixedBytes || std::fread(fixed, 1, kFixedBytes, file) != kFixedBytes) return false;
    if (std::memcmp(fixed, kMagic, 4) != 0 || Tracking_GetWord(fixed + 4) != kVersion) return false;
    const uint32_t width = Tracking_GetWord(fixed + 8);
    const uint32_t height = Tracking_GetWord(fixed + 12);
    const uint32_t depth = Tracking_GetWord(fixed + 16);
    const uint32_t flags = Tracking_GetWord(fixed + 20);
    const uint32_t captionBytes = Tracking_GetWord(fixed + 32);
    const uint32_t nameBytes = Tracking_GetWord(fixed + 36);
    if (width == 0 || width > INT32_MAX || height == 0 || height > INT32_MAX || !ValidDepth(depth))
        return false;
    if ((flags & ~kFlagsKnown) != 0) return false;
    if (captionBytes > kMaxTextBytes || nameBytes > kMaxTextBytes) return false;
    const uint64_t total = uint64_t{kFixedBytes} + captionBytes + nameBytes;
    if (total > fileBytes) return false;
    std::string caption(captionBytes, '\0'), name(nameBytes, '\0');
    if (std::fread(caption.data(), 1, captionBytes, file) != captionBytes) return false;
    if (std::fread(name.data(), 1, nameBytes, file) != nameBytes) return false;

    uint64_t time = 0;
    for (int i = 7; i >= 0; --i) time = time << 8 | fixed[24 + i];
    state->caption = std::move(caption);
    state->name = std::move(name);
    state->timeMs = static_cast<int64_t>(time);
    state->width = static_cast<int32_t>(width);
    state->height = static_cast<int32_t>(height);
    state->mono = (flags & kFlagMono) != 0;
    state->hasMask = (flags & kFlagMask) != 0;
    state->linear = (flags & kFlagLinear) != 0;
    state->tracking = (flags & kFlagTracking) != 0;
    *bitDepth = depth;
    *headerBytes = total;
    return true;
}

// An image of the state's size at `depth`, its planes read strictly: every
// block must decompress to its size and every sample lie in 0..maxValue.
ImagePtr ReadImagePlanes(std::FILE* file, const HistoryState& state, uint32_t depth) {
    ImagePtr image(Image_Create(state.width, state.height));
    image->bitDepth = static_cast<uint16_t>(depth);
    image->maxValue = (int64_t{1} << depth) - 1;
    int64_t* const planes[3] = {image->red, image->green, image->blue};
    TrackingReadRules rules;
    rules.clampTo = image->maxValue;
    rules.strict = true;
    if (!Tracking_ReadPlanes(file, planes, Samples(image.get()), rules)) return nullptr;
    return image;
}

bool PlanesAlike(const ImageBuffer& image) {
    const size_t bytes = static_cast<size_t>(Samples(&image)) * sizeof(int64_t);
    return std::memcmp(image.red, image.green, bytes) == 0 && std::memcmp(image.red, image.blue, bytes) == 0;
}

}  // namespace

bool History_WriteFile(const std::string& path, const HistoryState& state, const ImageBuffer* image,
                       const ImageBuffer* mask) {
    if (!Writable(image)) return false;
    if (mask && (!Writable(mask) || mask->width != image->width || mask->height != image->height))
        return false;
    if (state.caption.size() > kMaxTextBytes || state.name.size() > kMaxTextBytes) return false;

    std::vector<uint8_t> header(kMagic, kMagic + 4);
    PutWord(&header, kVersion);
    PutWord(&header, static_cast<uint32_t>(image->width));
    PutWord(&header, static_cast<uint32_t>(image->height));
    PutWord(&header, image->bitDepth);
    PutWord(&header, (image->mono ? kFlagMono : 0) | (mask ? kFlagMask : 0) |
                         (state.linear ? kFlagLinear : 0) | (state.tracking ? kFlagTracking : 0));
    PutWord64(&header, static_cast<uint64_t>(state.timeMs));
    PutWord(&header, static_cast<uint32_t>(state.caption.size()));
    PutWord(&header, static_cast<uint32_t>(state.name.size()));
    header.insert(header.end(), state.caption.begin(), state.caption.end());
    header.insert(header.end(), state.name.begin(), state.name.end());

    const std::string temporary = path + kTemporarySuffix;
    TrackingFile file(std::fopen(temporary.c_str(), "wb"));
    if (!file) return false;
    // Blocks are written whole; a stream buffer would only add a copy.
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    uint64_t expected = header.size();
    bool ok = std::fwrite(header.data(), 1, header.size(), file.get()) == header.size();
    if (ok) {
        const uint64_t planes = WriteImagePlanes(file.get(), image);
        ok = planes != 0;
        expected += planes;
    }
    if (ok && mask) {
        uint8_t depth[4];
        Tracking_PutWord(depth, mask->bitDepth);
        const uint64_t planes =
            std::fwrite(depth, 1, 4, file.get()) == 4 ? WriteImagePlanes(file.get(), mask) : 0;
        ok = planes != 0;
        expected += 4 + planes;
    }
    // Closing can still report what the system had deferred (a full disk).
    ok = std::fclose(file.release()) == 0 && ok;
    std::error_code ec;
    ok = ok && std::filesystem::file_size(Host_Path(temporary), ec) == expected && !ec;
    if (ok) std::filesystem::rename(Host_Path(temporary), Host_Path(path), ec);
    if (!ok || ec) {
        std::filesystem::remove(Host_Path(temporary), ec);
        return false;
    }
    return true;
}

bool History_ReadHeader(const std::string& path, HistoryState* state) {
    std::error_code ec;
    const uint64_t fileBytes = std::filesystem::file_size(Host_Path(path), ec);
    TrackingFile file(ec ? nullptr : std::fopen(path.c_str(), "rb"));
    uint32_t depth = 0;
    uint64_t headerBytes = 0;
    HistoryState read;
    if (!file || !ReadHeader(file.get(), fileBytes, &read, &depth, &headerBytes)) return false;
    *state = std::move(read);
    return true;
}

bool History_ReadFile(const std::string& path, HistoryState* state, ImagePtr* image, ImagePtr* mask) {
    std::error_code ec;
    const uint64_t fileBytes = std::filesystem::file_size(Host_Path(path), ec);
    TrackingFile file(ec ? nullptr : std::fopen(path.c_str(), "rb"));
    HistoryState read;
    uint32_t depth = 0;
    uint64_t headerBytes = 0;
    if (!file || !ReadHeader(file.get(), fileBytes, &read, &depth, &headerBytes)) return false;

    // Nothing image-sized is allocated for more samples than the rest of the
    // file could decompress to.
    const uint64_t samples = uint64_t(read.width) * uint64_t(read.height);
    const uint64_t planeCount = read.hasMask ? 6 : 3;
    if (samples > (fileBytes - headerBytes) * kTrackingMaxExpansion / (8 * planeCount)) return false;

    ImagePtr readImage = ReadImagePlanes(file.get(), read, depth);
    if (!readImage || (read.mono && !PlanesAlike(*readImage))) return false;
    readImage->mono = read.mono;
    ImagePtr readMask;
    if (read.hasMask) {
        uint8_t word[4];
        if (std::fread(word, 1, 4, file.get()) != 4 || !ValidDepth(Tracking_GetWord(word))) return false;
        readMask = ReadImagePlanes(file.get(), read, Tracking_GetWord(word));
        if (!readMask) return false;
    }
    // The file ends with the last block: anything after it is damage.
    if (std::fgetc(file.get()) != EOF) return false;
    *state = std::move(read);
    *image = std::move(readImage);
    *mask = std::move(readMask);
    return true;
}
