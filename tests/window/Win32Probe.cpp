// Looks for the program's window from outside, as a user's desktop would:
//   win32probe wait SECONDS    the window of class "APPL", title "Pellucida", appears in time
// Exit status 0 when it does. (Its pixels cannot be read from another process
// under wine's display driver without a screen; the window test reads them
// in the program's own process.)
#include <windows.h>

#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    if (argc != 3 || std::strcmp(argv[1], "wait") != 0) return 2;
    for (int i = 0; i < std::atoi(argv[2]) * 10; ++i) {
        if (FindWindowA("APPL", "Pellucida")) return 0;
        Sleep(100);
    }
    return 1;
}
