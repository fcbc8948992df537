// Operating-system facts on POSIX systems: the executable's folder from
// /proc/self/exe, the XDG state folder, and opening links with xdg-open.
#include "host/Host_Os.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

extern char** environ;

namespace {

std::string WithSeparator(std::string dir) {
    if (dir.empty() || dir.back() != '/') dir += '/';
    return dir;
}

bool IsWritableDir(const std::string& dir) {
    return access(dir.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

std::string Host_GetProgramDir() {
    char buffer[PATH_MAX + 1];
    ssize_t n = readlink("/proc/self/exe", buffer, PATH_MAX);
    if (n <= 0) return "./";
    buffer[n] = 0;
    std::string path(buffer);
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

std::string Host_GetDataDir() {
    if (const char* env = std::getenv("PELLUCIDA_STATE_DIR"); env && *env) {
        std::error_code ec;
        std::filesystem::create_directories(env, ec);
        return WithSeparator(env);
    }
    std::string program = Host_GetProgramDir();
    if (IsWritableDir(program)) return program;

    std::string base;
    if (const char* xdg = std::getenv("XDG_STATE_HOME"); xdg && *xdg) {
        base = xdg;
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        base = std::string(home) + "/.local/state";
    } else {
        return program;  // nowhere better; writes will fail and say so
    }
    std::string dir = WithSeparator(base) + "pellucida";
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    return WithSeparator(dir);
}

char Host_PathSeparator() {
    return '/';
}

size_t HostOs_PhysicalMemoryBytes() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return 0;
    return static_cast<size_t>(pages) * static_cast<size_t>(pageSize);
}

void HostOs_AdviseLargeBlock(void* block, size_t bytes) {
#ifdef MADV_HUGEPAGE
    constexpr uintptr_t kHugePage = uintptr_t(2) << 20;
    if (!block || bytes < 2 * kHugePage) return;
    // Only whole large pages inside the block can be advised.
    const uintptr_t start = (reinterpret_cast<uintptr_t>(block) + kHugePage - 1) & ~(kHugePage - 1);
    const uintptr_t end = (reinterpret_cast<uintptr_t>(block) + bytes) & ~(kHugePage - 1);
    if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#else
    (void)block;
    (void)bytes;
#endif
}

std::FILE* HostOs_CreateNewFile(const char* path) {
    return std::fopen(path, "wbx");
}

void HostOs_ShowURL(const char* url) {
    if (!url || !*url) return;
    // The shell puts xdg-open in the background and ends at once, so the browser
    // is never our child and nothing is left to reap. A failure is not reported.
    pid_t pid;
    char* argv[] = {const_cast<char*>("sh"),
                    const_cast<char*>("-c"),
                    const_cast<char*>("xdg-open \"$1\" >/dev/null 2>&1 &"),
                    const_cast<char*>("sh"),
                    const_cast<char*>(url),
                    nullptr};
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv, environ) == 0) {
        int status;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
}

int64_t HostOs_LockFile(const char* path) {
    // flock belongs to the open file description, so a second open of the same
    // file, in this process or another, is refused while the first holds it.
    const int fd = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return -1;
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

void HostOs_UnlockFile(int64_t handle) {
    if (handle >= 0) close(static_cast<int>(handle));  // closing lets go of the lock
}
