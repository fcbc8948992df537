// The name instances of the program meet under; the lock and the listening
// are the platform's (host/posix), the hand-over at start-up is Host_Run's.
#include "host/Host_Instance.h"

#include <cctype>

std::string HostInstance_Name(const std::string& program, const std::string& display) {
    std::string name = program;
    if (!display.empty()) name += "-" + display;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_' && c != '.') c = '_';
    return name;
}
