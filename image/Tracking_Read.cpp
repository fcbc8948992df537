// Reading a slot: link records are followed, a full record's planes are
// restored block by block (the history's state files read their planes here
// too, under strict rules).
//
// Block i of a plane fills bytes i x 8 MiB onwards, up to 8 MiB or the plane's
// end, as the writer cuts them; a block that does not decompress to exactly
// that is reported ("Error") and its range left zero, and reading goes on.
// A file that ends early, names a block longer than the input buffer, or
// whose header announces more samples than its size could ever decompress to
// is refused before anything image-sized is allocated.
//
// The file is read in order by whichever worker's turn it is; the blocks are
// decompressed by all of the host's workers at once, straight into the planes.
#include "image/Tracking.h"
#include "image/Tracking_Internal.h"

#include "host/Host_Path.h"
#include "host/Host_Threads.h"

#include <lz4.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <system_error>

namespace {

constexpr const char* kCantOpenText = "Can't open tracking file!";
constexpr const char* kBlockErrorText = "Error";

// A chain of links longer than this loops back on itself.
constexpr int kMaxLinkHops = 16;

constexpr uint64_t kParallelPlaneBytes = uint64_t{1} << 20;

struct BlockReader {
    int64_t* planes[3] = {};
    TrackingLayout layout;
    std::FILE* file = nullptr;
    // Samples of a plain record are held to 0..clampTo as they arrive, so that a
    // damaged file can never hand out-of-range data to code that indexes tables
    // with it; a composed record (signed differences) is clamped after
    // conversion instead, and has clampTo < 0. A strict read refuses instead.
    TrackingReadRules rules;

    std::mutex mutex;
    std::condition_variable turn;
    uint32_t nextBlock = 0;  // the block whose turn it is to be read from the file
    std::atomic<bool> failed{false};
};

struct DecompressWorker {
    BlockReader* reader = nullptr;
    uint32_t workerIndex = 0;
    uint32_t workerCount = 1;
};

void SayOnConsole(const char* text) {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

// Reads the next block into `buffer`; its compressed length, or -1 when the
// file ends early or the length cannot be a block of ours.
int ReadBlock(std::FILE* file, char* buffer) {
    uint8_t word[4];
    if (std::fread(word, 1, sizeof word, file) != sizeof word) return -1;
    const uint32_t length = Tracking_GetWord(word);
    if (length > kTrackingReadBufferBytes) return -1;
    if (std::fread(buffer, 1, length, file) != length) return -1;
    return static_cast<int>(length);
}

void DecompressBlocks(DecompressWorker* worker) {
    BlockReader& reader = *worker->reader;
    const TrackingLayout& layout = reader.layout;
    std::unique_ptr<char[]> buffer;
    if (worker->workerIndex < layout.blockCount) {
        buffer.reset(new (std::nothrow) char[kTrackingReadBufferBytes]);
        if (!buffer) reader.failed.store(true);
    }
    for (uint32_t block = worker->workerIndex; block < layout.blockCount; block += worker->workerCount) {
        int length = -1;
        {
            std::unique_lock lock(reader.mutex);
            reader.turn.wait(lock, [&] { return reader.nextBlock == block; });
            if (!reader.failed.load(std::memory_order_relaxed)) {
                length = ReadBlock(reader.file, buffer.get());
                if (length < 0) reader.failed.store(true, std::memory_order_relaxed);
            }
            ++reader.nextBlock;
            reader.turn.notify_all();
        }
        if (length < 0) continue;
        char* target = reinterpret_cast<char*>(reader.planes[layout.Plane(block)]) + layout.Offset(block);
        const int size = static_cast<int>(layout.Size(block));
        if (LZ4_decompress_safe(buffer.get(), target, length, size) != size) {
            if (reader.rules.strict)
                reader.failed.store(true);
            else
                SayOnConsole(kBlockErrorText);
            std::memset(target, 0, static_cast<size_t>(size));
        } else if (reader.rules.clampTo >= 0) {
            int64_t* samples = reinterpret_cast<int64_t*>(target);
            const size_t count = static_cast<size_t>(size) / sizeof(int64_t);
            const int64_t top = reader.rules.clampTo;
            if (reader.rules.strict) {
                bool outside = false;
                for (size_t i = 0; i < count; ++i) outside |= samples[i] < 0 || samples[i] > top;
                if (outside) reader.failed.store(true);
            } else {
                for (size_t i = 0; i < count; ++i) samples[i] = std::clamp<int64_t>(samples[i], 0, top);
            }
        }
    }
}

ImageBuffer* ReadSlot(int a, int b, bool compose, int hops) {
    const std::string path = Tracking_SlotPath(a, b);
    TrackingFile file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        SayOnConsole(kCantOpenText);
        return nullptr;
    }
    std::error_code ec;
    const uint64_t fileBytes = std::filesystem::file_size(Host_Path(path), ec);
    if (ec || fileBytes == 0) return nullptr;

    uint8_t header[kTrackingHeaderBytes];
    if (std::fread(header, 1, 4, file.get()) != 4) return nullptr;
    if (const uint32_t link = Tracking_GetWord(header); link != 0) {
        file.reset();
        if (hops >= kMaxLinkHops) return nullptr;
        return ReadSlot(static_cast<int>(link), b, compose, hops + 1);
    }
    if (fileBytes <= 4) return nullptr;
    if (fileBytes < kTrackingHeaderBytes || std::fread(header + 4, 1, 12, file.get()) != 12) return nullptr;

    const uint32_t stride = Tracking_GetWord(header + 4);
    const uint32_t height = Tracking_GetWord(header + 8);
    const uint32_t bitDepth = Tracking_GetWord(header + 12);
    if (stride == 0 || stride > INT32_MAX || height == 0 || height > INT32_MAX) return nullptr;
    // Images never exceed 32 bits: their maximum is computed in 32-bit arithmetic.
    if (bitDepth == 0 || bitDepth > 32) return nullptr;
    const uint64_t samples = uint64_t{stride} * height;
    if (samples > (fileBytes - kTrackingHeaderBytes) * kTrackingMaxExpansion / 24) return nullptr;

    // Every byte of the planes is either decompressed or zeroed below.
    ImagePtr image(Image_Create(static_cast<int32_t>(stride), static_cast<int32_t>(height)));
    image->bitDepth = static_cast<uint16_t>(bitDepth);
    image->maxValue = (int64_t{1} << bitDepth) - 1;
    int64_t* const planes[3] = {image->red, image->green, image->blue};
    TrackingReadRules rules;
    rules.clampTo = compose ? -1 : image->maxValue;
    if (!Tracking_ReadPlanes(file.get(), planes, samples, rules)) return nullptr;
    if (compose) Tracking_ComposeBack(image.get());
    return image.release();
}

}  // namespace

bool Tracking_ReadPlanes(std::FILE* file, int64_t* const planes[3], uint64_t samples,
                         const TrackingReadRules& rules) {
    BlockReader reader;
    reader.rules = rules;
    for (int p = 0; p < 3; ++p) reader.planes[p] = planes[p];
    reader.layout = Tracking_Layout(samples);
    reader.file = file;
    DecompressWorker worker;
    worker.reader = &reader;
    if (reader.layout.planeBytes < kParallelPlaneBytes) {
        DecompressBlocks(&worker);
    } else {
        Host_RunWorkers(worker, &DecompressBlocks);
    }
    return !reader.failed.load();
}

ImageBuffer* Tracking_ReadSlot(int a, int b, bool compose) {
    return ReadSlot(a, b, compose, 0);
}
