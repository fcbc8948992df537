#include "host/Shell_Log.h"

#include "host/Host_Os.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

std::string Shell_LogPath() {
    return Host_GetDataDir() + kShellLogFileName;
}

void Shell_Log(const char* text) {
    if (!text) return;
    FILE* file = std::fopen(Shell_LogPath().c_str(), "ab");
    if (!file) return;  // a log that cannot be written must not stop the work
    std::fputs(text, file);
    std::fclose(file);
}

void Shell_Logf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (n >= 0) {
        std::vector<char> text(size_t(n) + 1);
        std::vsnprintf(text.data(), text.size(), format, args);
        Shell_Log(text.data());
    }
    va_end(args);
}
