// Reads a whole file into memory, so that every reader parses from a byte span
// and the same code serves files and in-memory data (fuzzing).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct FileBytes {
    std::unique_ptr<uint8_t[]> data;  // left uninitialised before the read: no wasted fill
    size_t size = 0;
};

// False when the file cannot be opened, read or held in memory.
bool File_ReadAll(const char* path, FileBytes* bytes);
