// The painter's target: a view of the 32-bit framebuffer (or any pixel block
// laid out the same way) with the clip rectangle every drawing call obeys.
// The clip always lies inside the surface; ClipScope narrows it for a block of
// drawing and restores it on leaving, so a widget cannot paint over its
// neighbours.
#pragma once

#include <cstdint>

struct DrawRect {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};

struct Surface {
    uint32_t* pixels = nullptr;  // the pixel at (0, 0)
    int32_t pixelsPerRow = 0;    // distance between rows, in pixels
    int32_t width = 0;
    int32_t height = 0;
    DrawRect clip;  // drawing reaches only this part of the surface
};

// A surface over `pixels`, clipped to the whole of it.
Surface Draw_MakeSurface(uint32_t* pixels, int32_t pixelsPerRow, int32_t width, int32_t height);

// The common part of two rectangles; an empty result has width or height 0.
DrawRect Draw_Intersect(const DrawRect& a, const DrawRect& b);

inline bool Draw_IsEmpty(const DrawRect& r) {
    return r.width <= 0 || r.height <= 0;
}

// Narrows the surface's clip to its intersection with `rect` for the lifetime
// of the scope.
class ClipScope {
public:
    ClipScope(Surface& surface, const DrawRect& rect) : surface_(surface), saved_(surface.clip) {
        surface_.clip = Draw_Intersect(saved_, rect);
    }
    ~ClipScope() { surface_.clip = saved_; }
    ClipScope(const ClipScope&) = delete;
    ClipScope& operator=(const ClipScope&) = delete;

private:
    Surface& surface_;
    DrawRect saved_;
};
