// Whole-file read through stdio: one size query, one allocation, one read.
#include "formats/File_ReadAll.h"
#include "host/Host_Path.h"

#include <cstdio>
#include <filesystem>
#include <new>
#include <system_error>

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

}  // namespace

bool File_ReadAll(const char* path, FileBytes* bytes) {
    *bytes = FileBytes{};
    if (!path) return false;
    std::error_code error;
    const std::filesystem::path name = Host_Path(path);
    if (!std::filesystem::is_regular_file(name, error)) return false;
    const uintmax_t size = std::filesystem::file_size(name, error);
    if (error || size > SIZE_MAX / 2) return false;
    std::unique_ptr<FILE, FileCloser> file(std::fopen(path, "rb"));
    if (!file) return false;
    // A file larger than the memory left is unreadable, not an out-of-memory event.
    std::unique_ptr<uint8_t[]> data(new (std::nothrow) uint8_t[size > 0 ? size : 1]);
    if (!data) return false;
    if (size > 0 && std::fread(data.get(), 1, size, file.get()) != size) return false;
    bytes->data = std::move(data);
    bytes->size = static_cast<size_t>(size);
    return true;
}
