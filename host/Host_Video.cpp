// The "video" driver: the program's 32-bit framebuffer and the window it is
// copied to. The storage and the copy belong to the backend; sizes, row
// rounding and the resized event are the same everywhere.
#include "host/Host_Drivers.h"

#include "host/Host_Backend.h"
#include "host/Host_Window.h"

namespace {

VideoState* State(HostDriver* driver) {
    return static_cast<VideoState*>(driver->data);
}

// Rows and row lengths are rounded up to a multiple of 4 pixels: a width of
// 801 gives 804 pixels per row.
uint32_t RoundedTo4(uint32_t pixels) {
    return ((pixels * 4 + 12) & ~15u) / 4;
}

void RebuildFramebuffer(VideoState* video, uint32_t width, uint32_t height) {
    const HostBackend* backend = HostBackend_Current();
    if (video->platform || video->pixels) backend->FramebufferDestroy(video);
    video->pixels = nullptr;
    video->platform = nullptr;
    video->width = width;
    video->height = height;
    video->pixelsPerRow = RoundedTo4(width);
    video->rows = RoundedTo4(height);
    if (HostWindow_State().exists) backend->FramebufferCreate(video);
}

void GetWidth(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<uint32_t*>(argument) = State(driver)->width;
}

void GetHeight(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<uint32_t*>(argument) = State(driver)->height;
}

void GetFramebuffer(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<uint32_t**>(argument) = State(driver)->pixels;
}

void GetPixelsPerRow(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<uint32_t*>(argument) = State(driver)->pixelsPerRow;
}

void Blit(HostDriver* driver, HostMethod*, void* argument) {
    auto* args = static_cast<VideoBlitArgs*>(argument);
    if (args && args->driver != driver) return;
    VideoState* video = State(driver);
    if (!HostWindow_State().exists || !video->pixels) return;
    HostBackend_Current()->Present(video);
}

void Resize(HostDriver* driver, HostMethod*, void* argument) {
    auto* args = static_cast<VideoResizeArgs*>(argument);
    if (!args || args->driver != driver) return;
    RebuildFramebuffer(State(driver), args->width, args->height);
    AppEvent resized;
    resized.kind = kAppEventResized;
    resized.payload[0] = args->width;
    resized.payload[1] = args->height;
    Host_Call("event", "Event_AppEventEnqueue", &resized);
}

void SetCursorArrow(HostDriver* driver, HostMethod*, void*) {
    if (State(driver)->pixels) HostBackend_Current()->SetCursor(kHostCursorArrow);
}

void SetCursorWait(HostDriver* driver, HostMethod*, void*) {
    if (State(driver)->pixels) HostBackend_Current()->SetCursor(kHostCursorWait);
}

// The desktop's interface scale in percent (100 on an ordinary screen).
void GetDisplayScale(HostDriver*, HostMethod*, void* argument) {
    const double scale = HostBackend_Current()->DisplayScale();
    *static_cast<uint32_t*>(argument) = uint32_t(scale * 100 + 0.5);
}

void Destruct(HostDriver* driver, HostMethod*, void*) {
    if (driver->useCount != 1) return;
    VideoState* video = State(driver);
    if (video->pixels || video->platform) HostBackend_Current()->FramebufferDestroy(video);
    delete video;
    driver->data = nullptr;
}

}  // namespace

HostDriver* HostDrivers_RegisterVideo() {
    HostDriver* driver = Host_DriverCreate("video");
    auto* video = new VideoState();
    // The first resize at start-up asks for the window's current client size.
    video->width = HostWindow_State().clientWidth;
    video->height = HostWindow_State().clientHeight;
    driver->data = video;
    Host_DriverAddMethod(driver, "Video_GetWidth", GetWidth);
    Host_DriverAddMethod(driver, "Video_GetHeight", GetHeight);
    Host_DriverAddMethod(driver, "Video_GetFramebuffer", GetFramebuffer);
    Host_DriverAddMethod(driver, "Video_GetPixelsPerRow", GetPixelsPerRow);
    Host_DriverAddMethod(driver, "Video_Blit", Blit);
    Host_DriverAddMethod(driver, "Video_Resize", Resize);
    Host_DriverAddMethod(driver, "Video_SetCursorArrow", SetCursorArrow);
    Host_DriverAddMethod(driver, "Video_SetCursorWait", SetCursorWait);
    Host_DriverAddMethod(driver, "Video_GetDisplayScale", GetDisplayScale);
    // Listed twice; lookup takes the first, so the second is never reached.
    Host_DriverAddMethod(driver, "Video_Resize", Resize);
    Host_DriverAddMethod(driver, "DESTRUCT", Destruct);
    return driver;
}
