// What the tracking store's files share: the slot file layout, the runs of
// LZ4 blocks that hold the planes (the history's state files use them too),
// the Y, B - Y, R - Y transform of compose mode, and the safe replacement of a
// slot file. Not part of the store's public face (image/Tracking.h).
#pragma once

#include "image/Image.h"

#include <lz4.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

// Planes go to and from the file as they lie in memory.
static_assert(std::endian::native == std::endian::little,
              "slot files hold little-endian samples, written straight from the planes");

constexpr uint32_t kTrackingHeaderBytes = 16;      // link, stride, height, bitDepth
constexpr uint32_t kTrackingBlockBytes = 8388608;  // 8 MiB of plane per block
constexpr int kTrackingCompressBound = LZ4_COMPRESSBOUND(kTrackingBlockBytes);
static_assert(kTrackingCompressBound == 8421520);
constexpr uint32_t kTrackingReadBufferBytes = 16777216;  // largest block length a reader takes
// LZ4 cannot expand one compressed byte into more than 255; with the 4-byte
// length of every block, 256 bytes of plane per file byte is a safe ceiling.
// A header that announces more samples than its file could hold is refused
// before anything image-sized is allocated.
constexpr uint64_t kTrackingMaxExpansion = 256;

// How a plane of `samples` 8-byte samples is cut into blocks. Blocks are
// numbered through the file: block i belongs to plane i / blocksPerPlane.
struct TrackingLayout {
    uint64_t planeBytes = 0;
    uint32_t blocksPerPlane = 0;
    uint32_t blockCount = 0;  // all three planes

    uint32_t Plane(uint32_t block) const { return block / blocksPerPlane; }
    uint64_t Offset(uint32_t block) const { return uint64_t{block % blocksPerPlane} * kTrackingBlockBytes; }
    uint32_t Size(uint32_t block) const {
        const uint64_t left = planeBytes - Offset(block);
        return left < kTrackingBlockBytes ? static_cast<uint32_t>(left) : kTrackingBlockBytes;
    }
};

inline TrackingLayout Tracking_Layout(uint64_t samples) {
    TrackingLayout layout;
    layout.planeBytes = samples * 8;
    layout.blocksPerPlane =
        static_cast<uint32_t>((layout.planeBytes + kTrackingBlockBytes - 1) / kTrackingBlockBytes);
    layout.blockCount = layout.blocksPerPlane * 3;
    return layout;
}

inline void Tracking_PutWord(uint8_t* p, uint32_t value) {
    p[0] = static_cast<uint8_t>(value);
    p[1] = static_cast<uint8_t>(value >> 8);
    p[2] = static_cast<uint8_t>(value >> 16);
    p[3] = static_cast<uint8_t>(value >> 24);
}

inline uint32_t Tracking_GetWord(const uint8_t* p) {
    return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

struct TrackingFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using TrackingFile = std::unique_ptr<std::FILE, TrackingFileCloser>;

// Appends three planes of `samples` samples each as runs of blocks (a 4-byte
// compressed length, then the block's LZ4 bytes), compressed by all of the
// host's workers; the number of bytes appended, or 0 when a write failed.
uint64_t Tracking_WritePlanes(std::FILE* file, const int64_t* const planes[3], uint64_t samples);

// How Tracking_ReadPlanes treats what it finds. A slot is read leniently: a
// block that does not decompress to its size is said on the console
// ("Error") and left zero, and samples are held to 0..clampTo (clampTo < 0:
// not at all). A strict read refuses both instead.
struct TrackingReadRules {
    int64_t clampTo = -1;
    bool strict = false;
};

// Reads the runs of blocks of three planes of `samples` samples each, in the
// order Tracking_WritePlanes wrote them. False when the file ends early, a
// block length exceeds the input buffer, or a strict rule is broken; after a
// true answer every byte of the planes has been written.
bool Tracking_ReadPlanes(std::FILE* file, int64_t* const planes[3], uint64_t samples,
                         const TrackingReadRules& rules);

// Compose mode, in place over the red, green and blue planes, split over the
// host's workers. Forward: Y, B - Y, R - Y with Y = 0.299 R + 0.587 G +
// 0.114 B truncated towards zero. Back: R and B restored exactly, G from Y,
// every sample clamped to 0..maxValue.
void Tracking_ComposeForward(ImageBuffer* image);
void Tracking_ComposeBack(ImageBuffer* image);

// Where a link record is written before it replaces its slot.
std::string Tracking_PendingPath(const std::string& slotPath);

// The spare: the file a full record is written into before it takes its
// slot's place. The slot's previous file then becomes the spare, so the next
// write overwrites storage the file system already holds, and mostly has in
// its cache, rather than allocating a few hundred megabytes anew while freeing
// as much: several times less work for the system. The price is one
// record-sized file beside the slots.
std::string Tracking_SparePath();

// Puts the finished spare in the slot's place and keeps the slot's previous
// file as the next spare; false, with the slot as it was, when it cannot.
bool Tracking_CommitSpare(const std::string& slotPath);

// Puts the finished pending file in the slot's place; false when it cannot
// (the pending file is removed then, the slot left as it was).
bool Tracking_CommitPending(const std::string& pendingPath, const std::string& slotPath);

// Tells the user that slot `slotPath` could not be created or, when it
// exists, modified.
void Tracking_ShowWriteRefused(const std::string& slotPath);
