// Worker threads, the background task and the plain message box.
#include "host/Host.h"
#include "host/Host_Backend.h"
#include "host/Host_Threads.h"
#include "host/headless/Headless.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

struct ColumnParams {
    uint32_t workerIndex = 0;
    uint32_t workerCount = 0;
    uint32_t width = 0, height = 0;
    std::vector<int>* owner = nullptr;  // which worker wrote each pixel (-1: none)
    std::atomic<int>* calls = nullptr;
    uint32_t stopAtRow = UINT32_MAX;
};

void PaintColumns(ColumnParams* p) {
    p->calls->fetch_add(1);
    Worker_ForInterleavedColumns(
        p->workerIndex, p->workerCount, p->width, p->height,
        [](void* context, uint32_t row, uint32_t) {
            return row >= static_cast<ColumnParams*>(context)->stopAtRow ? 1 : 0;
        },
        p, [p](uint32_t x, uint32_t y) { (*p->owner)[y * p->width + x] = int(p->workerIndex); });
}

// One worker per processor, each taking the columns k, k + n, ... of every
// row; a progress answer stops each worker at its next row.
TEST(Workers, EachWorkerTakesInterleavedColumnsOfEveryRowUntilStopped) {
    struct Case {
        int workers;
        uint32_t width, height, stopAtRow;
    };
    for (const Case& c : {Case{3, 10, 4, UINT32_MAX}, Case{1, 7, 3, UINT32_MAX}, Case{2, 6, 8, 5}}) {
        EnvScope count("PELLUCIDA_WORKERS", std::to_string(c.workers));
        std::vector<int> owner(c.width * c.height, -1);
        std::atomic<int> calls{0};
        ColumnParams p{
            .width = c.width, .height = c.height, .owner = &owner, .calls = &calls, .stopAtRow = c.stopAtRow};
        Host_RunWorkers(p, PaintColumns);
        EXPECT_EQ(calls.load(), c.workers);
        EXPECT_EQ(Host_GetWorkerCount(), 0u);
        for (uint32_t y = 0; y < c.height; ++y)
            for (uint32_t x = 0; x < c.width; ++x)
                ASSERT_EQ(owner[y * c.width + x], y < c.stopAtRow ? int(x) % c.workers : -1) << x << "," << y;
    }
    EnvScope none("PELLUCIDA_WORKERS", "0");  // a nonsense override still leaves one processor
    EXPECT_GE(Host_GetProcessorCount(), 1u);
}

// Runs until released.
struct Task {
    std::atomic<bool> release{false};
    std::atomic<int> runs{0};
};

void BlockingTask(void* context) {
    auto* task = static_cast<Task*>(context);
    task->runs.fetch_add(1);
    while (!task->release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST(Workers, WaitReturnsWhenTheLastWorkerEnds) {
    Task task;
    Host_StartWorker(BlockingTask, &task);
    Host_StartWorker(BlockingTask, &task);
    EXPECT_EQ(Host_GetWorkerCount(), 2u);
    task.release = true;
    Host_WaitWorkers();
    EXPECT_EQ(Host_GetWorkerCount(), 0u);
    Host_WaitWorkers();  // nothing running: returns at once
}

// A worker whose thread never begins (wine lets a fresh thread die now and
// then) is run by the waiter; the thread, if it begins late, runs nothing.
// Holding the critical section around the wait keeps the real threads from
// claiming their starts, as dead threads would not.
TEST(Workers, AWorkerWhoseThreadNeverBeginsIsRunByTheWaiterOnce) {
    struct Share {
        std::atomic<int> runs{0};
        std::thread::id ranOn;
    } shares[2];
    auto run = [](void* arg) {
        auto* share = static_cast<Share*>(arg);
        share->ranOn = std::this_thread::get_id();
        share->runs.fetch_add(1);
    };
    Host_Lock();
    Host_StartWorker(run, &shares[0]);
    Host_StartWorker(run, &shares[1]);
    Host_WaitWorkers();
    Host_Unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // time for a late thread to misbehave
    for (const Share& share : shares) {
        EXPECT_EQ(share.runs.load(), 1);
        EXPECT_EQ(share.ranOn, std::this_thread::get_id());
    }
    EXPECT_EQ(Host_GetWorkerCount(), 0u);
}

TEST(BackgroundTask, OnlyOneRunsAtATimeAndItsFlagFallsWhenItEnds) {
    auto waitFinished = [] {
        for (int i = 0; i < 5000 && !Host_TakeBackgroundFinished(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    Host_TakeBackgroundFinished();
    Task first, second;
    Host_StartBackgroundTask(BlockingTask, &first);
    EXPECT_EQ(Host_IsBackgroundRunning(), 1);
    Host_StartBackgroundTask(BlockingTask, &second);  // refused while the first runs
    first.release = true;
    waitFinished();
    EXPECT_EQ(first.runs.load(), 1);
    EXPECT_EQ(second.runs.load(), 0);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    EXPECT_EQ(Host_TakeBackgroundFinished(), 0);  // taking clears it
    Host_SetBackgroundFinished();
    EXPECT_EQ(Host_TakeBackgroundFinished(), 1);
    // A task that ends at once still leaves the flag down, so callers that
    // wait for it to fall do not wait forever.
    second.release = true;
    Host_StartBackgroundTask(BlockingTask, &second);
    waitFinished();
    EXPECT_EQ(second.runs.load(), 1);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
}

TEST(HostLock, IsReentrantForItsOwnerAndExcludesOthers) {
    Host_Lock();
    Host_Lock();  // a critical section may be entered again by its owner
    std::atomic<bool> entered{false};
    std::thread other([&] {
        HostLockGuard guard;
        entered = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(entered.load());
    Host_Unlock();
    Host_Unlock();
    other.join();
    EXPECT_TRUE(entered.load());
}

TEST(HostMessage, ShowsTheTextUnderTheHostCaptionAndOnStandardError) {
    ASSERT_TRUE(Host_SelectBackend("headless"));
    Headless_TakeMessages();
    testing::internal::CaptureStderr();
    Host_ShowMessage("Out of memory\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "HOST MULTIPLATFORM MESSAGE: Out of memory\n\n");
    EXPECT_EQ(Headless_TakeMessages(),
              std::vector<std::string>{"HOST MULTIPLATFORM MESSAGE: Out of memory\n"});
}

}  // namespace
