// Writing a file without ever destroying the one it replaces: the data go to a
// new temporary file beside the target, which is renamed over the target only
// when every byte was written and the file closed cleanly. A failed write leaves
// the old file as it was and removes the temporary one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

class SafeWriteFile {
public:
    SafeWriteFile() = default;
    ~SafeWriteFile();  // abandons an uncommitted write
    SafeWriteFile(const SafeWriteFile&) = delete;
    SafeWriteFile& operator=(const SafeWriteFile&) = delete;

    // Creates the temporary file beside `path`; false when it cannot be created.
    bool Open(const char* path);
    // The stream to write to (seeking within it is allowed); null before Open.
    FILE* Stream() const { return m_file; }
    // Flushes, closes and renames over the target. False (and the target left
    // untouched) when any earlier write or the close or the rename failed.
    bool Commit();
    void Abandon();

private:
    FILE* m_file = nullptr;
    std::string m_tempPath;
    std::string m_targetPath;
};

// One-shot form for writers that hold the whole encoded file in memory.
// Returns 1 on success and 0 on failure, like the writers themselves.
int File_SafeWrite(const char* path, const uint8_t* data, size_t size);
