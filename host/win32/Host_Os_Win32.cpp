// Operating-system facts on Windows: the executable's folder, the state
// folder (%LOCALAPPDATA%\Pellucida when the program's own folder is not
// writable, as an installed program's is not), links through the shell, and
// file locks that the system drops with the process.
#include "host/Host_Os.h"
#include "host/win32/Win32_Private.h"

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

constexpr DWORD kModuleNameChars = MAX_PATH;  // 260, as the program always asked

std::string WithSeparator(std::string dir) {
    if (dir.empty() || (dir.back() != '\\' && dir.back() != '/')) dir += '\\';
    return dir;
}

// Asking for the permission is not enough on Windows (virtualised folders,
// access lists): try to create a file there.
bool IsWritableDir(const std::string& dir) {
    const std::wstring probe = Win32_Wide(dir) + L"pellucida-write-probe.tmp";
    HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
}

std::string CreatedDir(const std::string& dir) {
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::u8path(dir), ec);
    return WithSeparator(dir);
}

}  // namespace

std::string Win32_Utf8(const wchar_t* text, int length) {
    if (!text) return {};
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return {};
    std::string out(size_t(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, length, out.data(), bytes, nullptr, nullptr);
    if (length < 0) out.pop_back();  // the terminator was counted
    return out;
}

std::wstring Win32_Wide(const std::string& text) {
    if (text.empty()) return {};
    const int chars = MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), nullptr, 0);
    std::wstring out(size_t(chars), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), out.data(), chars);
    return out;
}

std::string Host_GetProgramDir() {
    wchar_t buffer[kModuleNameChars] = {};
    const DWORD n = GetModuleFileNameW(nullptr, buffer, kModuleNameChars);
    if (n == 0 || n >= kModuleNameChars) return ".\\";
    const std::string path = Win32_Utf8(buffer, int(n));
    const size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? std::string(".\\") : path.substr(0, slash + 1);
}

std::string Host_GetDataDir() {
    if (const char* env = std::getenv("PELLUCIDA_STATE_DIR"); env && *env) return CreatedDir(env);
    const std::string program = Host_GetProgramDir();
    if (IsWritableDir(program)) return program;
    const wchar_t* local = _wgetenv(L"LOCALAPPDATA");
    if (!local || !*local) return program;  // nowhere better; writes will fail and say so
    return CreatedDir(WithSeparator(Win32_Utf8(local)) + "Pellucida");
}

char Host_PathSeparator() {
    return '\\';
}

size_t HostOs_PhysicalMemoryBytes() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) ? size_t(status.ullTotalPhys) : 0;
}

void HostOs_AdviseLargeBlock(void*, size_t) {
    // Large pages need a privilege ordinary users do not hold.
}

std::FILE* HostOs_CreateNewFile(const char* path) {
    // The C library here knows no "x" mode.
    const int fd =
        _wopen(Win32_Wide(path).c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
    if (fd < 0) return nullptr;
    std::FILE* file = _fdopen(fd, "wb");
    if (!file) _close(fd);
    return file;
}

void HostOs_ShowURL(const char* url) {
    if (!url || !*url) return;
    ShellExecuteA(nullptr, nullptr, url, nullptr, nullptr, SW_SHOW);
}

int64_t HostOs_LockFile(const char* path) {
    // The lock is the byte range's, per handle: a second handle, in this
    // process or another, is refused, and the system lets go of it with the
    // process however it ends. The file itself stays shared, so that its
    // holder can rename it while locked.
    HANDLE file = CreateFileW(Win32_Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return -1;
    OVERLAPPED whole{};
    if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, MAXDWORD, MAXDWORD,
                    &whole)) {
        CloseHandle(file);
        return -1;
    }
    return int64_t(reinterpret_cast<intptr_t>(file));
}

void HostOs_UnlockFile(int64_t handle) {
    if (handle >= 0) CloseHandle(reinterpret_cast<HANDLE>(intptr_t(handle)));  // closing lets go of the lock
}
