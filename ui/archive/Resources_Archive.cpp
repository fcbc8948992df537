// Reading the resource archive: volumes, the slot walk that finds the index
// record "#", the bucket chains that find every other name, and entries read
// like small files.
#include "ui/archive/Resources_Archive.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr uint32_t kTypeOffset = 60;
constexpr uint32_t kCreatorOffset = 64;
constexpr uint32_t kSlotCountOffset = 76;
// Names longer than this are not names the program asks for; reading stops there.
constexpr uint32_t kNameBound = 4096;

uint32_t ReadBe32(const uint8_t* p) {
    return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3];
}
uint32_t ReadLe32(const uint8_t* p) {
    return uint32_t{p[0]} | (uint32_t{p[1]} << 8) | (uint32_t{p[2]} << 16) | (uint32_t{p[3]} << 24);
}
uint16_t ReadLe16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

// Reads exactly `count` bytes at `offset`; false when the file ends before.
bool ReadAt(ResourceVolume* volume, uint64_t offset, void* buffer, size_t count) {
    std::FILE* file = volume->file.get();
    if (volume->streamPosition != static_cast<int64_t>(offset)) {
        if (std::fseek(file, static_cast<long>(offset), SEEK_SET) != 0) {
            volume->streamPosition = -1;
            return false;
        }
    }
    const size_t got = std::fread(buffer, 1, count, file);
    volume->streamPosition = got == count ? static_cast<int64_t>(offset + count) : -1;
    return got == count;
}

bool ReadSlotCount(ResourceVolume* volume, uint32_t* count) {
    uint8_t bytes[2];
    if (!ReadAt(volume, kSlotCountOffset, bytes, 2)) return false;
    *count = (uint32_t{bytes[0]} << 8) | bytes[1];
    return true;
}

// The record offset that slot `slot` names; false when the slot cannot be read.
bool ReadSlot(ResourceVolume* volume, uint32_t slot, uint32_t* offset) {
    uint8_t bytes[4];
    if (!ReadAt(volume, kResourceFileHeaderSize + uint64_t{kResourceSlotSize} * slot, bytes, 4)) return false;
    *offset = ReadBe32(bytes);
    return true;
}

bool ReadRecord(ResourceVolume* volume, uint32_t offset, ResourceRecordInfo* record) {
    uint8_t head[kResourceRecordHeaderSize];
    if (!ReadAt(volume, offset, head, sizeof head)) return false;
    record->offset = offset;
    record->headerLength = ReadLe32(head + 4);
    record->dataLength = ReadLe32(head + 8);
    record->span = ReadLe16(head + 12);
    record->next = ReadLe16(head + 16);
    record->flags = ReadLe32(head + 20);
    if (record->headerLength <= kResourceRecordHeaderSize) return false;
    const uint32_t room = std::min(record->headerLength - kResourceRecordHeaderSize, kNameBound);
    char name[kNameBound];
    // The name may be shorter than the room the header leaves, so a read that
    // runs into the end of the file still yields it when its NUL came first.
    std::FILE* file = volume->file.get();
    const size_t got = std::fread(name, 1, room, file);
    volume->streamPosition = -1;
    const void* nul = std::memchr(name, '\0', got);
    if (!nul) return false;
    record->name.assign(name, static_cast<size_t>(static_cast<const char*>(nul) - name));
    return true;
}

enum class WalkResult { Found, Missing, Broken };

// The slot walk: from slot 0, record by record, advancing by each record's span.
WalkResult WalkForIndex(ResourceVolume* volume, ResourceRecordInfo* index) {
    uint32_t count = 0;
    if (!ReadSlotCount(volume, &count)) return WalkResult::Broken;
    for (uint32_t slot = 0; slot < count;) {
        uint32_t offset = 0;
        if (!ReadSlot(volume, slot, &offset)) return WalkResult::Broken;
        if (offset == 0) return WalkResult::Missing;
        ResourceRecordInfo record;
        if (!ReadRecord(volume, offset, &record)) return WalkResult::Broken;
        record.slot = slot;
        if (record.name == kResourceIndexName) {
            *index = record;
            return WalkResult::Found;
        }
        if (record.span == 0 || record.span > count) return WalkResult::Broken;
        slot += record.span;
    }
    return WalkResult::Missing;
}

void FillEntry(ResourceEntry* entry, ResourceVolume* volume, const ResourceRecordInfo& record, int mode) {
    entry->volume = volume;
    entry->name = record.name;
    entry->mode = mode;
    entry->dataOffset = uint64_t{record.offset} + record.headerLength;
    entry->dataLength = record.dataLength;
    entry->position = 0;
    entry->headerLength = record.headerLength;
    entry->span = record.span;
    entry->flags = record.flags & kResourceFlagPassed;
}

enum class FindResult { Found, Missing, Broken };

// Looks a name up through the index of one volume.
FindResult FindInVolume(ResourceVolume* volume, const char* name, ResourceRecordInfo* found) {
    ResourceRecordInfo index;
    if (WalkForIndex(volume, &index) != WalkResult::Found) return FindResult::Missing;
    uint32_t count = 0;
    if (!ReadSlotCount(volume, &count)) return FindResult::Broken;
    const uint32_t bucket = Resources_Hash(name) & (kResourceBuckets - 1);
    uint8_t headBytes[2];
    if (!ReadAt(volume, uint64_t{index.offset} + index.headerLength + 2ull * bucket, headBytes, 2))
        return FindResult::Broken;
    uint32_t slot = ReadLe16(headBytes);
    if (slot == 0) return FindResult::Missing;
    // A chain longer than the slot list has a loop in it.
    for (uint32_t steps = 0; steps <= count; ++steps) {
        if (slot >= count) return FindResult::Broken;
        uint32_t offset = 0;
        if (!ReadSlot(volume, slot, &offset) || offset == 0) return FindResult::Broken;
        ResourceRecordInfo record;
        if (!ReadRecord(volume, offset, &record)) return FindResult::Broken;
        record.slot = slot;
        if (record.name == name) {
            *found = record;
            return FindResult::Found;
        }
        if (record.next == 0) return FindResult::Missing;
        slot = record.next;
    }
    return FindResult::Broken;
}

}  // namespace

uint32_t Resources_Hash(const char* name) {
    uint32_t h = 0;
    for (const unsigned char* c = reinterpret_cast<const unsigned char*>(name); *c; ++c) {
        h += *c;
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    return h;
}

int ResourceArchive_AddVolume(ResourceArchive* archive, const char* path) {
    if (!archive || !path) return kResourceNoTarget;
    auto volume = std::make_unique<ResourceVolume>();
    volume->path = path;
    volume->file.reset(std::fopen(path, "rb"));
    if (!volume->file) return kResourceCannotOpen;
    if (std::fseek(volume->file.get(), 0, SEEK_END) == 0) {
        const long end = std::ftell(volume->file.get());
        volume->fileSize = end > 0 ? static_cast<uint64_t>(end) : 0;
    }
    uint8_t header[kResourceFileHeaderSize];
    if (!ReadAt(volume.get(), 0, header, sizeof header) ||
        ReadBe32(header + kTypeOffset) != kResourceSignature ||
        ReadBe32(header + kCreatorOffset) != kResourceSignature)
        return kResourceCorrupt;
    archive->volumes.insert(archive->volumes.begin(), std::move(volume));
    ResourceVolume* added = archive->volumes.front().get();
    int result = kResourceNoIndex;
    for (auto& candidate : archive->volumes) {
        ResourceRecordInfo index;
        const WalkResult walk = WalkForIndex(candidate.get(), &index);
        if (walk == WalkResult::Broken) break;
        if (walk == WalkResult::Found) {
            if (candidate.get() == added) result = kResourceOk;
            break;
        }
    }
    // A volume without its own index is of no use: it is closed and not kept.
    if (result != kResourceOk) archive->volumes.erase(archive->volumes.begin());
    return result;
}

int ResourceArchive_OpenEntry(ResourceArchive* archive, const char* name, int mode, ResourceEntry** entry) {
    if (entry) *entry = nullptr;
    if (!archive || !name) return kResourceNoTarget;
    for (auto& volume : archive->volumes) {
        ResourceRecordInfo record;
        if (std::strcmp(name, kResourceIndexName) == 0) {
            if (WalkForIndex(volume.get(), &record) != WalkResult::Found) continue;
        } else {
            const FindResult found = FindInVolume(volume.get(), name, &record);
            if (found == FindResult::Broken) return kResourceCorrupt;
            if (found == FindResult::Missing) continue;
        }
        for (const auto& open : archive->entries)
            if (open->volume == volume.get() && open->mode == kResourceModeWrite && open->name == record.name)
                return kResourceBusy;
        auto opened = std::make_unique<ResourceEntry>();
        FillEntry(opened.get(), volume.get(), record, mode);
        if (mode == kResourceModeWrite) ++volume->writers;
        archive->entries.insert(archive->entries.begin(), std::move(opened));
        if (entry) *entry = archive->entries.front().get();
        return kResourceOk;
    }
    return kResourceNotFound;
}

int ResourceEntry_Read(ResourceArchive* archive, ResourceEntry* entry, void* buffer, uint32_t count) {
    if (!archive || !entry) return kResourceNoTarget;
    uint64_t end = uint64_t{entry->position} + count;
    int result = kResourceOk;
    if (end > entry->dataLength) {
        end = entry->dataLength;
        result = kResourceShortRead;
    }
    const uint32_t wanted = static_cast<uint32_t>(end - std::min<uint64_t>(entry->position, end));
    if (wanted > 0) {
        if (!buffer) {
            entry->position = static_cast<uint32_t>(end);
            return kResourceNoTarget;
        }
        if (!ReadAt(entry->volume, entry->dataOffset + entry->position, buffer, wanted)) {
            // The file ends before the record says it does: what was not there reads as zero.
            std::memset(buffer, 0, wanted);
            result = kResourceShortRead;
        }
    }
    entry->position = static_cast<uint32_t>(end);
    return result;
}

void ResourceEntry_Seek(ResourceArchive* archive, ResourceEntry* entry, int64_t offset, int whence) {
    if (!archive || !entry) return;
    int64_t position = offset;
    if (whence == 1) position = int64_t{entry->position} + offset;
    if (whence == 2) position = int64_t{entry->dataLength} + offset;
    entry->position = static_cast<uint32_t>(std::clamp<int64_t>(position, 0, entry->dataLength));
}

void ResourceEntry_Close(ResourceArchive* archive, ResourceEntry* entry) {
    if (!archive || !entry) return;
    auto it = std::find_if(archive->entries.begin(), archive->entries.end(),
                           [entry](const auto& open) { return open.get() == entry; });
    if (it == archive->entries.end()) return;
    if (entry->mode == kResourceModeWrite && entry->volume->writers > 0) --entry->volume->writers;
    archive->entries.erase(it);
}

std::vector<uint8_t> ResourceArchive_LoadWhole(ResourceArchive* archive, const char* name) {
    std::vector<uint8_t> data;
    ResourceEntry* entry = nullptr;
    if (ResourceArchive_OpenEntry(archive, name, kResourceModeRead, &entry) != kResourceOk) return data;
    // An entry that claims more than the file holds cannot be read whole:
    // refused before the memory for it is asked for.
    if (entry->dataLength > 0 && entry->dataOffset + entry->dataLength <= entry->volume->fileSize) {
        try {
            data.resize(entry->dataLength);
        } catch (const std::bad_alloc&) {
            ResourceEntry_Close(archive, entry);
            return {};
        }
        if (ResourceEntry_Read(archive, entry, data.data(), entry->dataLength) != kResourceOk) data.clear();
    }
    ResourceEntry_Close(archive, entry);
    return data;
}

int ResourceArchive_ListRecords(ResourceArchive* archive, std::vector<ResourceRecordInfo>* records) {
    if (!archive || archive->volumes.empty() || !records) return kResourceNoTarget;
    ResourceVolume* volume = archive->volumes.front().get();
    uint32_t count = 0;
    if (!ReadSlotCount(volume, &count)) return kResourceCorrupt;
    for (uint32_t slot = 0; slot < count;) {
        uint32_t offset = 0;
        if (!ReadSlot(volume, slot, &offset)) return kResourceCorrupt;
        if (offset == 0) break;
        ResourceRecordInfo record;
        if (!ReadRecord(volume, offset, &record)) return kResourceCorrupt;
        record.slot = slot;
        if (record.span == 0 || record.span > count) return kResourceCorrupt;
        records->push_back(record);
        slot += record.span;
    }
    return kResourceOk;
}
