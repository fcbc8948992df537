// libFuzzer target for the .sqi decoder: the first six bytes choose the
// widget's size, fill mode and tints, the rest is the icon.
#include "ui/archive/Sqi_Decode.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 6) return 0;
    constexpr uint32_t kCanvas = 96;
    SqiTarget target;
    // The widget may hang over every edge of the framebuffer.
    target.x = static_cast<int32_t>(data[0] % 128) - 16;
    target.y = static_cast<int32_t>(data[1] % 128) - 16;
    target.width = data[2] % 160;
    target.height = data[3] % 160;
    target.fillMode = data[4] % 4;
    target.tint[0] = static_cast<uint16_t>(data[5] * 257);
    target.tint[1] = static_cast<uint16_t>(~data[5] * 131);
    target.tint[2] = 0xFFFF;
    std::vector<uint32_t> pixels(kCanvas * kCanvas, 0x00123456);
    target.pixels = pixels.data();
    target.pixelsPerRow = kCanvas;
    target.framebufferWidth = kCanvas;
    target.framebufferHeight = kCanvas;
    Sqi_Draw(data + 6, size - 6, target);
    return 0;
}
