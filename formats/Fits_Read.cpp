// FITS reader: header blocks card by card, then the data planes as doubles,
// normalised over all planes and quantised to 30 bits by error diffusion.
//
// The file is streamed (nothing beyond one chunk is copied), so the same code
// serves a file and bytes in memory. The real values of a plane are kept in
// the image's own int64 plane, bit for bit, until the diffusion replaces them
// by integers: no plane-sized temporary is needed.
#include "formats/Fits_Read.h"

#include "formats/Fits_Dither.h"
#include "formats/Fits_Header.h"
#include "formats/Format_Limits.h"
#include "host/Host_Path.h"
#include "host/Host_Threads.h"
#include "image/Image.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

namespace {

constexpr size_t kCardBytes = 80;
constexpr size_t kCardsPerBlock = 36;
constexpr double kUnsetRange = 140737488355328.0;  // 2^47
constexpr double kFloatCap = 128.0;
constexpr int kRepeatLimit = 7;
constexpr int64_t kTopSample = 1073741822;  // the final clamp; 2^30 - 1 never survives

// A byte stream that can start over: a file or a block of memory.
class FitsSource {
public:
    virtual ~FitsSource() = default;
    virtual size_t Read(uint8_t* to, size_t count) = 0;
    virtual bool Rewind() = 0;
    virtual uint64_t Size() const = 0;
};

class MemorySource final : public FitsSource {
public:
    MemorySource(const uint8_t* data, size_t size) : data_(data), size_(data ? size : 0) {}
    size_t Read(uint8_t* to, size_t count) override {
        const size_t n = std::min(count, size_ - position_);
        if (n) std::memcpy(to, data_ + position_, n);
        position_ += n;
        return n;
    }
    bool Rewind() override {
        position_ = 0;
        return true;
    }
    uint64_t Size() const override { return size_; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
};

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

class FileSource final : public FitsSource {
public:
    FileSource(FILE* file, uint64_t size) : file_(file), size_(size) {}
    size_t Read(uint8_t* to, size_t count) override { return std::fread(to, 1, count, file_.get()); }
    bool Rewind() override { return std::fseek(file_.get(), 0, SEEK_SET) == 0; }
    uint64_t Size() const override { return size_; }

private:
    std::unique_ptr<FILE, FileCloser> file_;
    uint64_t size_;
};

// Big-endian values of one width, with the behaviour of a byte-at-a-time read
// at the end of the file: a byte that is not there leaves the byte buffer as
// the previous value left it.
class ValueStream {
public:
    ValueStream(FitsSource& source, size_t bytesPerValue) : source_(source), width_(bytesPerValue) {}

    void Next(uint8_t* to, size_t count) {
        const size_t want = count * width_;
        const size_t got = exhausted_ ? 0 : source_.Read(to, want);
        if (got == want) {
            std::memcpy(last_, to + want - width_, width_);
            return;
        }
        exhausted_ = true;
        const size_t whole = got / width_;
        if (whole > 0) std::memcpy(last_, to + (whole - 1) * width_, width_);
        std::memcpy(last_, to + whole * width_, got % width_);
        for (size_t k = whole; k < count; ++k) std::memcpy(to + k * width_, last_, width_);
    }

private:
    FitsSource& source_;
    size_t width_;
    uint8_t last_[8] = {};
    bool exhausted_ = false;
};

bool BitpixSupported(int32_t bitpix) {
    return bitpix == 8 || bitpix == 16 || bitpix == 32 || bitpix == -32 || bitpix == -64;
}

// Reads header blocks until an image header is complete. False for anything
// that is not a FITS image this reader takes.
bool ReadHeaders(FitsSource& source, FitsHeader* state) {
    uint8_t block[kCardBytes * kCardsPerBlock];
    char keyword[kFitsCardTextSize];
    char value[kFitsCardTextSize];
    bool extensionMode = false;
    int32_t nextend = 0;
    for (;;) {
        const size_t got = source.Read(block, sizeof block);
        if (got == 0) return false;
        if (got < sizeof block) std::memset(block + got, 0, sizeof block - got);
        bool endSeen = false;
        for (size_t c = 0; c < kCardsPerBlock; ++c) {
            Fits_CleanCard(block + c * kCardBytes, keyword, value);
            if (Fits_HandleCard(state, keyword, value)) endSeen = true;
            if (!extensionMode && !state->simple) return false;
        }
        if (!endSeen) continue;
        if (!extensionMode) nextend = state->nextend;
        if (state->naxis > 1 && state->naxis1 != 0 && state->naxis2 != 0 && BitpixSupported(state->bitpix))
            return true;
        if (!state->extend || nextend == 0) return false;
        extensionMode = true;  // the extension's header follows the data-less primary directly
    }
}

inline double Clamp(double v, double lo, double hi) {
    if (v < lo) v = lo;
    if (v > hi) v = hi;
    return v;
}

struct ValueRules {
    double bzero;
    double dataMin;
    double dataMax;
    bool rangeGiven;
    bool hasBzero;
    bool uncapped;  // BSCALE present or a known writer
};

template <int Bitpix>
double RawValue(const uint8_t* b, bool* isNan) {
    if constexpr (Bitpix == 8) {
        return b[0];
    } else if constexpr (Bitpix == 16) {
        return static_cast<int16_t>(static_cast<uint16_t>(b[0] << 8 | b[1]));
    } else if constexpr (Bitpix == 32) {
        return static_cast<int32_t>(uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3]);
    } else if constexpr (Bitpix == -32) {
        const uint32_t bits = uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
        *isNan = (bits & 0x7F800000u) == 0x7F800000u && (bits & 0x007FFFFFu) != 0;
        return std::bit_cast<float>(bits);
    } else {
        uint64_t bits = 0;
        for (int k = 0; k < 8; ++k) bits = bits << 8 | b[k];
        *isNan =
            (bits & 0x7FF0000000000000ull) == 0x7FF0000000000000ull && (bits & 0x000FFFFFFFFFFFFFull) != 0;
        return std::bit_cast<double>(bits);
    }
}

// Converts `count` raw values to the doubles that enter the normalisation,
// stored bit for bit into `to`, and widens [minimum, maximum].
template <int Bitpix>
void ConvertValues(const uint8_t* from, size_t count, int64_t* to, const ValueRules& r, double* minimum,
                   double* maximum) {
    constexpr size_t kWidth = (Bitpix < 0 ? -Bitpix : Bitpix) / 8;
    double lo = *minimum, hi = *maximum;
    for (size_t i = 0; i < count; ++i, from += kWidth) {
        bool isNan = false;
        const double raw = RawValue<Bitpix>(from, &isNan);
        double v;
        if constexpr (Bitpix > 0) {
            v = Clamp(raw + r.bzero, r.dataMin, r.dataMax);
        } else {
            if (isNan) {
                to[i] = std::bit_cast<int64_t>(-1.0);
                continue;
            }
            v = raw + r.bzero;
            if (r.rangeGiven) {
                v = Clamp(v, r.dataMin, r.dataMax);
            } else {
                if (v < 0.0 && !r.hasBzero) v = 0.0;
                if (v > kFloatCap && !r.uncapped) v = kFloatCap;
            }
        }
        if (v < lo) lo = v;
        if (v > hi) hi = v;
        to[i] = std::bit_cast<int64_t>(v);
    }
    *minimum = lo;
    *maximum = hi;
}

using ConvertFn = void (*)(const uint8_t*, size_t, int64_t*, const ValueRules&, double*, double*);

ConvertFn ConverterFor(int32_t bitpix) {
    switch (bitpix) {
        case 8:
            return ConvertValues<8>;
        case 16:
            return ConvertValues<16>;
        case 32:
            return ConvertValues<32>;
        case -32:
            return ConvertValues<-32>;
        default:
            return ConvertValues<-64>;
    }
}

struct PlaneJob {
    int64_t** planes = nullptr;
    int32_t planeCount = 0;
    int32_t width = 0, height = 0;
    double minimum = 0.0, scale = 1.0;
    uint32_t workerIndex = 0;
    uint32_t workerCount = 1;
};

// Error diffusion of each of the worker's planes, with the final clamp: the
// largest sample kept is 2^30 - 2, so 2^30 - 1 never survives.
void QuantisePlanes(PlaneJob* job) {
    for (int32_t p = static_cast<int32_t>(job->workerIndex); p < job->planeCount;
         p += static_cast<int32_t>(job->workerCount))
        Fits_DiffusePlane(job->planes[p], job->width, job->height, job->minimum, job->scale, kTopSample);
}

// A grey image's green and blue planes are copies of red, one per worker.
struct CopyJob {
    int64_t* from = nullptr;
    int64_t* to[2] = {};
    size_t bytes = 0;
    uint32_t workerIndex = 0;
    uint32_t workerCount = 1;
};

void CopyPlanes(CopyJob* job) {
    for (uint32_t k = job->workerIndex; k < 2; k += job->workerCount)
        std::memcpy(job->to[k], job->from, job->bytes);
}

// One pass over the file. Returns the image, or null when the file is not
// readable; *again is set (and nothing returned) when the repetition rule asks
// for another pass.
ImageBuffer* ReadOnce(FitsSource& source, int* repeatCounter, bool* again) {
    *again = false;
    FitsHeader state;
    if (!ReadHeaders(source, &state)) return nullptr;

    const int32_t width = state.naxis1;
    const int32_t height = state.naxis2;
    const int32_t depth = state.naxis3 == 0 ? 1 : state.naxis3;
    const int32_t planes = std::min(depth, 3);
    const size_t bytesPerValue = static_cast<size_t>(state.bitpix < 0 ? -state.bitpix : state.bitpix) / 8;
    // An image that could never fit, or that is larger than the whole file, is
    // refused before anything is allocated.
    if (width <= 0 || height <= 0 ||
        !Format_SizeFits(static_cast<uint64_t>(width), static_cast<uint64_t>(height)))
        return nullptr;
    const uint64_t pixels = static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
    if (pixels * static_cast<uint64_t>(std::max(planes, 1)) * bytesPerValue > source.Size()) return nullptr;

    // Every plane is written below (a grey image's green and blue as copies of
    // red) except the blue one of a two-plane file, which stays black.
    ImagePtr image(depth == 2 ? Image_CreateCleared(width, height) : Image_Create(width, height));
    if (depth == 1) image->mono = 1;

    ValueRules rules{};
    rules.bzero = state.bzero;
    rules.rangeGiven = !(state.dataMin == 0.0 && state.dataMax == 0.0);
    rules.dataMin = rules.rangeGiven ? state.dataMin : -kUnsetRange;
    rules.dataMax = rules.rangeGiven ? state.dataMax : kUnsetRange;
    rules.hasBzero = state.hasBzero != 0;
    rules.uncapped = state.hasBscale != 0 || state.knownCreator != 0;

    int64_t* targets[3] = {image->red, image->green, image->blue};
    double minimum = kUnsetRange;
    double maximum = -kUnsetRange;
    const ConvertFn convert = ConverterFor(state.bitpix);
    constexpr size_t kChunkValues = 1 << 15;
    std::vector<uint8_t> chunk(kChunkValues * bytesPerValue);
    ValueStream values(source, bytesPerValue);
    for (int32_t p = 0; p < planes; ++p) {
        for (uint64_t done = 0; done < pixels;) {
            const size_t n = static_cast<size_t>(std::min<uint64_t>(kChunkValues, pixels - done));
            values.Next(chunk.data(), n);
            convert(chunk.data(), n, targets[p] + done, rules, &minimum, &maximum);
            done += n;
        }
    }

    const double range = maximum - minimum;
    const double scale = range > 0.0 ? 1073741824.0 / range : 1.0;
    for (int32_t p = 0; p < planes; ++p) {
        if (range > 0.0 && scale < 8.0 && *repeatCounter < kRepeatLimit) {
            ++*repeatCounter;
            *again = true;
        }
    }
    // Another pass gives the same data: this one's quantisation would be thrown away.
    if (*again) return nullptr;

    // The planes are quantised independently (each in its own fixed order), so
    // they are shared out over the workers.
    PlaneJob job;
    job.planes = targets;
    job.planeCount = planes;
    job.width = width;
    job.height = height;
    job.minimum = minimum;
    job.scale = scale;
    if (planes > 1)
        Host_RunWorkers(job, &QuantisePlanes);
    else
        QuantisePlanes(&job);

    image->bitDepth = 30;
    image->maxValue = 1073741823;
    if (depth == 1) {
        CopyJob copy;
        copy.from = image->red;
        copy.to[0] = image->green;
        copy.to[1] = image->blue;
        copy.bytes = static_cast<size_t>(pixels) * sizeof(int64_t);
        Host_RunWorkers(copy, &CopyPlanes);
    }
    return image.release();
}

// The repetition rule: while a pass finds a range above 2^27 and the counter
// (starting at 1, raised once per such plane) is below 7, the image is thrown
// away and the file read again from the start. The passes give the same data.
ImageBuffer* ReadWithRepetition(FitsSource& source) {
    int repeatCounter = 1;
    for (;;) {
        bool again = false;
        ImagePtr image(ReadOnce(source, &repeatCounter, &again));
        if (!again) return image.release();
        if (!source.Rewind()) return nullptr;
    }
}

}  // namespace

ImageBuffer* Fits_Read(const char* path) {
    if (!path) return nullptr;
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(Host_Path(path), error);
    if (error) return nullptr;
    FILE* file = std::fopen(path, "rb");
    if (!file) return nullptr;
    FileSource source(file, size);
    return ReadWithRepetition(source);
}

ImageBuffer* Fits_ReadMemory(const uint8_t* data, size_t size) {
    MemorySource source(data, size);
    return ReadWithRepetition(source);
}
