// The archive writer of pellucida-pack.
#include "tools/pack/Pack_Write.h"

#include "ui/archive/Resources_Archive.h"

#include <algorithm>
#include <set>

namespace {

constexpr char kDatabaseName[] = "Pellucida resources";
constexpr uint32_t kMaxSlots = 65535;

void PutBe32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    b[at] = static_cast<uint8_t>(v >> 24);
    b[at + 1] = static_cast<uint8_t>(v >> 16);
    b[at + 2] = static_cast<uint8_t>(v >> 8);
    b[at + 3] = static_cast<uint8_t>(v);
}
void PutLe32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
}
void PutLe16(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    b[at] = static_cast<uint8_t>(v);
    b[at + 1] = static_cast<uint8_t>(v >> 8);
}

}  // namespace

bool Pack_Build(const std::vector<PackEntry>& entries, std::vector<uint8_t>* archive, std::string* error) {
    std::set<std::string> names;
    for (const PackEntry& e : entries) {
        if (e.name.empty() || e.name == kResourceIndexName) {
            *error = "an entry may not be called \"" + e.name + "\"";
            return false;
        }
        if (!names.insert(e.name).second) {
            *error = "two entries are called " + e.name;
            return false;
        }
    }
    if (entries.size() + 1 > kMaxSlots) {
        *error = "more entries than the 65535 slots of an archive";
        return false;
    }
    // Slot 0 holds the index: bucket heads are slot numbers and 0 means an
    // empty bucket, so no entry may live there. Entries follow in name order.
    std::vector<const PackEntry*> ordered;
    for (const PackEntry& e : entries) ordered.push_back(&e);
    std::sort(ordered.begin(), ordered.end(),
              [](const PackEntry* a, const PackEntry* b) { return a->name < b->name; });
    const uint32_t slots = static_cast<uint32_t>(ordered.size() + 1);

    std::vector<uint8_t> index(2 * kResourceBuckets, 0);
    std::vector<uint32_t> next(slots, 0);
    std::vector<uint32_t> tail(kResourceBuckets, 0);
    for (uint32_t slot = 1; slot < slots; ++slot) {
        const uint32_t bucket = Resources_Hash(ordered[slot - 1]->name.c_str()) & (kResourceBuckets - 1);
        if (tail[bucket] == 0)
            PutLe16(index, 2 * bucket, slot);
        else
            next[tail[bucket]] = slot;
        tail[bucket] = slot;
    }

    std::vector<uint8_t>& out = *archive;
    out.assign(kResourceFileHeaderSize + kResourceSlotSize * slots, 0);
    std::copy(std::begin(kDatabaseName), std::end(kDatabaseName) - 1, out.begin());
    PutBe32(out, 60, kResourceSignature);
    PutBe32(out, 64, kResourceSignature);
    out[76] = static_cast<uint8_t>(slots >> 8);
    out[77] = static_cast<uint8_t>(slots);
    for (uint32_t slot = 0; slot < slots; ++slot) {
        const std::string& name = slot == 0 ? std::string(kResourceIndexName) : ordered[slot - 1]->name;
        const std::vector<uint8_t>& data = slot == 0 ? index : ordered[slot - 1]->data;
        if (out.size() > UINT32_MAX || data.size() > UINT32_MAX - out.size()) {
            *error = "the archive would pass 4 GiB";
            return false;
        }
        PutBe32(out, kResourceFileHeaderSize + kResourceSlotSize * slot, static_cast<uint32_t>(out.size()));
        // Header, name and its NUL, padded to a multiple of 4 bytes.
        const uint32_t headerLength =
            (kResourceRecordHeaderSize + static_cast<uint32_t>(name.size()) + 1 + 3) & ~3u;
        std::vector<uint8_t> head(headerLength, 0);
        PutLe32(head, 4, headerLength);
        PutLe32(head, 8, static_cast<uint32_t>(data.size()));
        PutLe16(head, 12, 1);
        PutLe16(head, 16, next[slot]);
        std::copy(name.begin(), name.end(), head.begin() + kResourceRecordHeaderSize);
        out.insert(out.end(), head.begin(), head.end());
        out.insert(out.end(), data.begin(), data.end());
    }
    return true;
}
