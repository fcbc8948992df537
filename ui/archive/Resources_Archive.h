// The resource archive: a record database (type and creator "VDSK") that holds
// every form, icon, picture and the font. Entries are found by name through a
// hashed index record "#" and read like small files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// Result codes of the archive operations.
enum ResourceCode : int {
    kResourceOk = 0,
    kResourceCannotOpen = 3,
    kResourceShortRead = 4,
    kResourceNoTarget = 5,  // no archive, or no buffer to read into
    kResourceBusy = 6,
    kResourceNotFound = 7,
    kResourceCorrupt = 10,  // also: a header whose type or creator is not "VDSK"
    kResourceNoIndex = 11,
};

enum ResourceMode : int { kResourceModeRead = 1, kResourceModeWrite = 2 };

inline constexpr uint32_t kResourceFileHeaderSize = 78;
inline constexpr uint32_t kResourceSlotSize = 8;
inline constexpr uint32_t kResourceRecordHeaderSize = 24;
inline constexpr uint32_t kResourceBuckets = 8192;
inline constexpr uint32_t kResourceSignature = 0x5644534B;  // "VDSK"
inline constexpr uint32_t kResourceFlagPassed = 4;          // the one flag handed to the opener
inline constexpr const char* kResourceIndexName = "#";

struct FileCloser {
    void operator()(std::FILE* file) const {
        if (file) std::fclose(file);
    }
};

struct ResourceVolume {
    std::string path;
    std::unique_ptr<std::FILE, FileCloser> file;
    int64_t streamPosition = -1;  // where the stream stands, -1 when unknown
    uint64_t fileSize = 0;
    uint32_t writers = 0;
};

struct ResourceEntry {
    ResourceVolume* volume = nullptr;
    std::string name;
    int mode = kResourceModeRead;
    uint64_t dataOffset = 0;  // absolute, in the volume's file
    uint32_t dataLength = 0;
    uint32_t position = 0;
    uint32_t headerLength = 0;
    uint16_t span = 0;
    uint32_t flags = 0;  // only kResourceFlagPassed is kept
};

// Volumes and open entries, newest first.
struct ResourceArchive {
    std::vector<std::unique_ptr<ResourceVolume>> volumes;
    std::vector<std::unique_ptr<ResourceEntry>> entries;
};

// The bucket of a name: the one-at-a-time hash without its final mixing step,
// which does not change the 13 bits kept.
uint32_t Resources_Hash(const char* name);

int ResourceArchive_AddVolume(ResourceArchive* archive, const char* path);
// On success *entry points at the newest open entry, owned by the archive.
int ResourceArchive_OpenEntry(ResourceArchive* archive, const char* name, int mode, ResourceEntry** entry);
int ResourceEntry_Read(ResourceArchive* archive, ResourceEntry* entry, void* buffer, uint32_t count);
void ResourceEntry_Seek(ResourceArchive* archive, ResourceEntry* entry, int64_t offset, int whence);
void ResourceEntry_Close(ResourceArchive* archive, ResourceEntry* entry);

// The whole data of an entry; empty when the name is missing, the entry is
// empty or the memory cannot be had.
std::vector<uint8_t> ResourceArchive_LoadWhole(ResourceArchive* archive, const char* name);

// A record as the slot walk and the bucket chains see it; exposed for the
// tools that list an archive.
struct ResourceRecordInfo {
    uint32_t slot = 0;
    uint32_t offset = 0;
    uint32_t headerLength = 0;
    uint32_t dataLength = 0;
    uint16_t span = 0;
    uint16_t next = 0;
    uint32_t flags = 0;
    std::string name;
};

// Every record reached by the slot walk of the newest volume, in slot order.
// Returns kResourceOk or the code of the walk's failure.
int ResourceArchive_ListRecords(ResourceArchive* archive, std::vector<ResourceRecordInfo>* records);
