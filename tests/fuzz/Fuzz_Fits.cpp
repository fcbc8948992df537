// libFuzzer entry for the FITS reader: any bytes, read from memory, freed.
#include "formats/Fits_Read.h"
#include "image/Image.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Image_Free(Fits_ReadMemory(data, size));
    return 0;
}
