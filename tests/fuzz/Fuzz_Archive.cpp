// libFuzzer target for the resource archive reader: the input is written to a
// file, opened as a volume, and every record the slot walk reaches is looked
// up by name and read, in pieces and whole.
#include "ui/archive/Resources_Archive.h"

#include <unistd.h>
#include <cstdio>
#include <string>

namespace {

std::string TempPath() {
    static const std::string path = "/tmp/pellucida_fuzz_archive_" + std::to_string(getpid());
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = TempPath();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    ResourceArchive archive;
    if (ResourceArchive_AddVolume(&archive, path.c_str()) != kResourceOk) return 0;
    std::vector<ResourceRecordInfo> records;
    ResourceArchive_ListRecords(&archive, &records);
    records.push_back({});
    records.back().name = "missing.xml";
    for (const ResourceRecordInfo& record : records) {
        ResourceEntry* entry = nullptr;
        if (ResourceArchive_OpenEntry(&archive, record.name.c_str(), kResourceModeRead, &entry) !=
            kResourceOk)
            continue;
        uint8_t buffer[64];
        ResourceEntry_Read(&archive, entry, buffer, sizeof buffer);
        ResourceEntry_Seek(&archive, entry, -8, 2);
        ResourceEntry_Read(&archive, entry, buffer, sizeof buffer);
        ResourceEntry_Read(&archive, entry, nullptr, 4);
        if (entry->position > entry->dataLength) __builtin_trap();
        ResourceEntry_Close(&archive, entry);
        const std::vector<uint8_t> whole = ResourceArchive_LoadWhole(&archive, record.name.c_str());
        // Nothing read whole can be larger than the file it came from.
        if (whole.size() > size) __builtin_trap();
    }
    if (!archive.entries.empty()) __builtin_trap();
    return 0;
}
