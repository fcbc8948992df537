#include "host/Host_OutOfMemory.h"

#include "host/Host_Threads.h"

#include <cstdlib>

void Host_OutOfMemory() {
    Host_ShowMessage(kOutOfMemoryText);
    std::exit(1);
}
