// A running host on the headless backend, with a handler that records every
// application event it is given.
#pragma once

#include "host/Host.h"
#include "host/headless/Headless.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

// Runs loop passes until nothing is queued anywhere (at most `limit`); true
// when a pass asked the loop to stop.
inline bool HostTest_Settle(int limit) {
    for (int i = 0; i < limit; ++i) {
        if (Host_LoopPass()) return true;
        if (Headless_PendingMessages() == 0 && Host_GetState()->pendingCount == 0 &&
            Host_GetState()->pendingTicks == 0)
            return false;
    }
    return false;
}

class HostTest : public testing::Test {
protected:
    static inline std::vector<AppEvent> events;
    // Answer of the handler for each event; 0 when unset.
    static inline std::function<int(const AppEvent&)> answer;

    static int Handler(AppEvent* event) {
        events.push_back(*event);
        return answer ? answer(*event) : 0;
    }

    void SetUp() override {
        events.clear();
        answer = nullptr;
        ASSERT_TRUE(Host_SelectBackend("headless"));
        Headless_Reset();
        Headless_SetAutoTicks(false);
        Host_CreateMainWindow();
        ASSERT_TRUE(Host_Init(Handler));
    }

    void TearDown() override {
        Host_Shutdown();
        Host_Shutdown();  // a second shutdown is harmless
        Host_DestroyMainWindow();
        Headless_SetAutoTicks(true);
        EXPECT_EQ(Host_GetState(), nullptr);
    }

    void Settle(int limit = 20) { HostTest_Settle(limit); }

    // Start-up's events delivered and forgotten.
    void Ready() {
        Settle();
        events.clear();
    }

    std::vector<AppEvent> EventsOfKind(uint32_t kind) const {
        std::vector<AppEvent> out;
        for (const AppEvent& e : events)
            if (e.kind == kind) out.push_back(e);
        return out;
    }

    static uint32_t VideoValue(const char* method) {
        uint32_t value = 0;
        Host_Call("video", method, &value);
        return value;
    }
};
