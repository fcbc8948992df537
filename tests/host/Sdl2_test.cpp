// The SDL2 backend where it meets SDL without a window: host messages when no
// box can show, and the file names of drop events.
#if PELLUCIDA_HAVE_SDL2
#include "host/Host.h"
#include "host/Host_OutOfMemory.h"
#include "host/sdl2/Sdl2_Private.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

// Without a display zenity ends with status 1, which SDL takes for a box the
// user dismissed: the message must reach standard error all the same.
TEST(Sdl2MessageDeathTest, OutOfMemoryReachesStandardErrorWhenNoBoxCanShow) {
    const std::filesystem::path bin = std::filesystem::path(testing::TempDir()) / "pellucida_no_display";
    std::filesystem::create_directories(bin);
    std::ofstream(bin / "zenity") << "#!/bin/sh\nexit 1\n";
    std::filesystem::permissions(bin / "zenity", std::filesystem::perms::owner_all);
    EXPECT_EXIT(
        {
            setenv("PATH", bin.c_str(), 1);
            unsetenv("DISPLAY");
            unsetenv("WAYLAND_DISPLAY");
            Host_SelectBackend("sdl2");
            Host_OutOfMemory();
        },
        testing::ExitedWithCode(1), "HOST MULTIPLATFORM MESSAGE: Out of memory");
}

TEST(Sdl2Events, DroppedFileNamesAreFreed) {
    ASSERT_EQ(SDL_Init(SDL_INIT_EVENTS), 0);
    auto pushAndDispatch = [](std::initializer_list<uint32_t> types) {
        for (uint32_t type : types) {
            SDL_Event e{};
            e.type = type;
            if (type != SDL_USEREVENT) e.drop.file = SDL_strdup("M42.fits");
            SDL_PushEvent(&e);
        }
        while (Sdl2_DispatchOneMessage()) {
        }
    };
    pushAndDispatch({SDL_USEREVENT, SDL_USEREVENT});  // the event queue keeps its cells from now on
    const int before = SDL_GetNumAllocations();
    pushAndDispatch({SDL_DROPFILE, SDL_DROPTEXT});
    EXPECT_EQ(SDL_GetNumAllocations(), before);
    SDL_Quit();
}

}  // namespace
#endif
