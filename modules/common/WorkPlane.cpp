// Allocation of the kernels' work buffers, with the program's out-of-memory exit.
#include "modules/common/WorkPlane.h"

#include "host/Host_Threads.h"

#include <limits>

namespace {

constexpr const char* kOutOfMemoryText = "Out of memory\n";

[[noreturn]] void OutOfMemory() {
    Host_ShowMessage(kOutOfMemoryText);
    std::exit(1);
}

}  // namespace

void* WorkPlane_AllocateBytes(size_t count, size_t elementSize) {
    if (count == 0) count = 1;
    if (count > std::numeric_limits<size_t>::max() / elementSize) OutOfMemory();
    void* p = std::malloc(count * elementSize);
    if (!p) OutOfMemory();
    return p;
}

void* WorkPlane_AllocateZeroedBytes(size_t count, size_t elementSize) {
    if (count == 0) count = 1;
    void* p = std::calloc(count, elementSize);
    if (!p) OutOfMemory();
    return p;
}
