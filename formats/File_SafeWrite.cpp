// Temporary-file-and-rename writing shared by every writer.
#include "formats/File_SafeWrite.h"

#include "host/Host_Os.h"
#include "host/Host_Path.h"

#include <filesystem>
#include <system_error>

namespace {

// Temporary names are tried in turn and created exclusively ("x"), so a stale
// file left by a crash, or one being written by another process, is never reused.
constexpr int kTempNameAttempts = 100;

}  // namespace

SafeWriteFile::~SafeWriteFile() {
    Abandon();
}

bool SafeWriteFile::Open(const char* path) {
    Abandon();
    if (!path || !*path) return false;
    std::error_code error;
    // Refuse to replace a directory: the rename would fail only after the work.
    if (std::filesystem::is_directory(Host_Path(path), error)) return false;
    for (int attempt = 0; attempt < kTempNameAttempts; ++attempt) {
        std::string temp = std::string(path) + ".tmp" + std::to_string(attempt);
        FILE* file = HostOs_CreateNewFile(temp.c_str());
        if (file) {
            m_file = file;
            m_tempPath = std::move(temp);
            m_targetPath = path;
            return true;
        }
        if (!std::filesystem::exists(Host_Path(temp), error)) return false;  // folder not writable
    }
    return false;
}

bool SafeWriteFile::Commit() {
    if (!m_file) return false;
    const bool written = std::ferror(m_file) == 0 && std::fflush(m_file) == 0;
    const bool closed = std::fclose(m_file) == 0;
    m_file = nullptr;
    std::error_code error;
    if (written && closed) {
        std::filesystem::rename(Host_Path(m_tempPath), Host_Path(m_targetPath), error);
        if (!error) {
            m_tempPath.clear();
            return true;
        }
    }
    std::filesystem::remove(Host_Path(m_tempPath), error);
    m_tempPath.clear();
    return false;
}

void SafeWriteFile::Abandon() {
    if (m_file) {
        std::fclose(m_file);
        m_file = nullptr;
    }
    if (!m_tempPath.empty()) {
        std::error_code error;
        std::filesystem::remove(Host_Path(m_tempPath), error);
        m_tempPath.clear();
    }
}

int File_SafeWrite(const char* path, const uint8_t* data, size_t size) {
    SafeWriteFile file;
    if (!file.Open(path)) return 0;
    if (size > 0 && std::fwrite(data, 1, size, file.Stream()) != size) return 0;
    return file.Commit() ? 1 : 0;
}
