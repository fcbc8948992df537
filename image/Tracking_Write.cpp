// Writing a full slot record: the header, then every plane as a run of LZ4
// blocks, each a 4-byte compressed length and the block's compressed bytes.
//
// Blocks are compressed by all of the host's workers at once and written in
// file order: worker k compresses blocks k, k + n, ... into a buffer of its
// own (allocated once per write) and appends each when its turn comes, so the
// file is byte for byte what a single loop would write while the disk writes
// overlap the compression of the next blocks.
//
// The record goes into the store's spare file and replaces the slot only once
// it is complete and the right size (see Tracking_CommitSpare).
#include "image/Tracking.h"
#include "image/Tracking_Internal.h"

#include "host/Host_Path.h"
#include "host/Host_Threads.h"

#include <lz4.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <system_error>

namespace {

constexpr const char* kSwapErrorText =
    "Error while swapping tracking information to disk. Tracking information has likely been corrupted. Use "
    "the Undo button to recover previous tracking information. Free disk space on the drive you are running "
    "Pellucida from and try again.";

// Planes below this size are compressed on the calling thread.
constexpr uint64_t kParallelPlaneBytes = uint64_t{1} << 20;

struct BlockWriter {
    const int64_t* planes[3] = {};
    TrackingLayout layout;
    std::FILE* file = nullptr;

    std::mutex mutex;
    std::condition_variable turn;
    uint32_t nextBlock = 0;  // the block whose turn it is to be written
    uint64_t bytes = 0;      // appended so far
    std::atomic<bool> failed{false};
};

struct CompressWorker {
    BlockWriter* writer = nullptr;
    uint32_t workerIndex = 0;
    uint32_t workerCount = 1;
};

// `block` holds 4 free bytes and then `length` compressed bytes: the length
// goes in front, so each block reaches the file in one write.
bool AppendBlock(std::FILE* file, char* block, int length) {
    Tracking_PutWord(reinterpret_cast<uint8_t*>(block), static_cast<uint32_t>(length));
    const size_t bytes = 4 + static_cast<size_t>(length);
    return std::fwrite(block, 1, bytes, file) == bytes;
}

void CompressBlocks(CompressWorker* worker) {
    BlockWriter& writer = *worker->writer;
    const TrackingLayout& layout = writer.layout;
    std::unique_ptr<char[]> buffer;
    for (uint32_t block = worker->workerIndex; block < layout.blockCount; block += worker->workerCount) {
        int length = 0;
        if (!writer.failed.load(std::memory_order_relaxed)) {
            if (!buffer) buffer.reset(new (std::nothrow) char[4 + kTrackingCompressBound]);
            if (buffer) {
                const char* source =
                    reinterpret_cast<const char*>(writer.planes[layout.Plane(block)]) + layout.Offset(block);
                length = LZ4_compress_default(source, buffer.get() + 4, static_cast<int>(layout.Size(block)),
                                              kTrackingCompressBound);
            }
        }
        // Every worker takes every one of its turns, failed or not, so that
        // none waits for a block that will never come.
        std::unique_lock lock(writer.mutex);
        writer.turn.wait(lock, [&] { return writer.nextBlock == block; });
        if (!writer.failed.load(std::memory_order_relaxed)) {
            if (length > 0 && AppendBlock(writer.file, buffer.get(), length)) {
                writer.bytes += 4 + static_cast<uint64_t>(length);
            } else {
                writer.failed.store(true, std::memory_order_relaxed);
            }
        }
        ++writer.nextBlock;
        writer.turn.notify_all();
    }
}

bool WriteHeader(std::FILE* file, const ImageBuffer* image) {
    uint8_t header[kTrackingHeaderBytes];
    Tracking_PutWord(header + 0, 0);
    Tracking_PutWord(header + 4, static_cast<uint32_t>(image->stride));
    Tracking_PutWord(header + 8, static_cast<uint32_t>(image->height));
    Tracking_PutWord(header + 12, image->bitDepth);
    return std::fwrite(header, 1, sizeof header, file) == sizeof header;
}

}  // namespace

uint64_t Tracking_WritePlanes(std::FILE* file, const int64_t* const planes[3], uint64_t samples) {
    BlockWriter writer;
    for (int p = 0; p < 3; ++p) writer.planes[p] = planes[p];
    writer.layout = Tracking_Layout(samples);
    writer.file = file;
    CompressWorker worker;
    worker.writer = &writer;
    if (writer.layout.planeBytes < kParallelPlaneBytes) {
        CompressBlocks(&worker);
    } else {
        Host_RunWorkers(worker, &CompressBlocks);
    }
    return writer.failed.load() ? 0 : writer.bytes;
}

bool Tracking_WriteSlot(int a, int b, ImageBuffer* image, bool compose) {
    if (!image || !image->red || !image->green || !image->blue || image->stride <= 0 || image->height <= 0) {
        return false;
    }
    const std::string path = Tracking_SlotPath(a, b);
    const std::string spare = Tracking_SparePath();
    // Overwritten where it lies; created only the first time.
    TrackingFile file(std::fopen(spare.c_str(), "r+b"));
    if (!file) file.reset(std::fopen(spare.c_str(), "wb"));
    if (!file) {
        Tracking_ShowWriteRefused(path);
        return false;
    }
    // Blocks are written whole; a stream buffer would only add a copy.
    std::setvbuf(file.get(), nullptr, _IONBF, 0);

    bool ok = WriteHeader(file.get(), image);
    if (compose) Tracking_ComposeForward(image);
    const int64_t* const planes[3] = {image->red, image->green, image->blue};
    const uint64_t samples = static_cast<uint64_t>(image->stride) * static_cast<uint64_t>(image->height);
    const uint64_t planeBytes = ok ? Tracking_WritePlanes(file.get(), planes, samples) : 0;
    const uint64_t expected = planeBytes ? kTrackingHeaderBytes + planeBytes : 0;
    if (compose) Tracking_ComposeBack(image);

    // Every write was checked as it went; closing can still report what the
    // system had deferred (a full disk). The spare may have been longer than
    // this record: cut it to size, then check the size as the layout gives it.
    ok = (std::fclose(file.release()) == 0) && expected != 0;
    std::error_code ec;
    if (ok) std::filesystem::resize_file(Host_Path(spare), expected, ec);
    ok = ok && !ec && std::filesystem::file_size(Host_Path(spare), ec) == expected && !ec;
    if (!ok) {
        std::filesystem::remove(Host_Path(spare), ec);
        Host_ShowMessage(kSwapErrorText);
        return false;
    }
    if (!Tracking_CommitSpare(path)) {
        Tracking_ShowWriteRefused(path);
        return false;
    }
    return true;
}
