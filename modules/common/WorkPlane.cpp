// Allocation of the kernels' work buffers, with the program's out-of-memory exit.
#include "modules/common/WorkPlane.h"

#include "host/Host_OutOfMemory.h"
#include "image/Image_Planes.h"

#include <cstdlib>
#include <limits>

void WorkPlaneDeleter::operator()(void* p) const {
    ImagePlanes_Release(static_cast<int64_t*>(p));
}

void* WorkPlane_AllocatePlane(size_t count, size_t elementSize, bool zeroed) {
    if (count == 0) count = 1;
    if (count > std::numeric_limits<size_t>::max() / elementSize - sizeof(int64_t)) Host_OutOfMemory();
    const size_t elements = (count * elementSize + sizeof(int64_t) - 1) / sizeof(int64_t);
    int64_t* p = ImagePlanes_Allocate(elements, zeroed);
    if (!p) Host_OutOfMemory();
    return p;
}

void* WorkPlane_AllocateBytes(size_t count, size_t elementSize) {
    if (count == 0) count = 1;
    if (count > std::numeric_limits<size_t>::max() / elementSize) Host_OutOfMemory();
    void* p = std::malloc(count * elementSize);
    if (!p) Host_OutOfMemory();
    return p;
}
