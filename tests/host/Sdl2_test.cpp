// The SDL2 backend where it meets SDL without a window.
#if PELLUCIDA_HAVE_SDL2
#include "host/sdl2/Sdl2_Private.h"

#include <gtest/gtest.h>

namespace {

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
