// Worker threads, the background task and the plain message box.
#include "host/Host.h"
#include "host/Host_Backend.h"
#include "host/Host_Threads.h"
#include "host/headless/Headless.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

class WorkerCount {
public:
    explicit WorkerCount(const char* n) { setenv("PELLUCIDA_WORKERS", n, 1); }
    ~WorkerCount() { unsetenv("PELLUCIDA_WORKERS"); }
};

struct ColumnParams {
    uint32_t workerIndex = 0;
    uint32_t workerCount = 0;
    uint32_t width = 0, height = 0;
    std::vector<int>* owner = nullptr;  // which worker wrote each pixel (-1: none)
    std::atomic<int>* calls = nullptr;
    uint32_t stopAtRow = UINT32_MAX;
};

int StopAt(void* context, uint32_t row, uint32_t) {
    return row >= static_cast<ColumnParams*>(context)->stopAtRow ? 1 : 0;
}

void PaintColumns(ColumnParams* p) {
    p->calls->fetch_add(1);
    Worker_ForInterleavedColumns(
        p->workerIndex, p->workerCount, p->width, p->height, StopAt, p,
        [p](uint32_t x, uint32_t y) { (*p->owner)[y * p->width + x] = int(p->workerIndex); });
}

TEST(Workers, EachWorkerTakesInterleavedColumnsOfEveryRow) {
    WorkerCount three("3");
    std::vector<int> owner(10 * 4, -1);
    std::atomic<int> calls{0};
    ColumnParams p;
    p.width = 10;
    p.height = 4;
    p.owner = &owner;
    p.calls = &calls;
    Host_RunWorkers(p, PaintColumns);
    EXPECT_EQ(calls.load(), 3);
    EXPECT_EQ(Host_GetWorkerCount(), 0u);
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 10; ++x) EXPECT_EQ(owner[y * 10 + x], int(x % 3)) << x << "," << y;
}

TEST(Workers, OneProcessorMeansOneWorker) {
    WorkerCount one("1");
    std::vector<int> owner(7 * 3, -1);
    std::atomic<int> calls{0};
    ColumnParams p;
    p.width = 7;
    p.height = 3;
    p.owner = &owner;
    p.calls = &calls;
    Host_RunWorkers(p, PaintColumns);
    EXPECT_EQ(calls.load(), 1);
    for (int o : owner) EXPECT_EQ(o, 0);
}

TEST(Workers, AProgressAnswerStopsEachWorkerAtItsNextRow) {
    WorkerCount two("2");
    std::vector<int> owner(6 * 8, -1);
    std::atomic<int> calls{0};
    ColumnParams p;
    p.width = 6;
    p.height = 8;
    p.owner = &owner;
    p.calls = &calls;
    p.stopAtRow = 5;
    Host_RunWorkers(p, PaintColumns);
    for (uint32_t y = 0; y < 8; ++y)
        for (uint32_t x = 0; x < 6; ++x)
            EXPECT_EQ(owner[y * 6 + x], y < 5 ? int(x % 2) : -1) << x << "," << y;
}

TEST(Workers, WaitReturnsWhenTheLastWorkerEnds) {
    std::atomic<bool> release{false};
    auto worker = [](void* arg) {
        while (!static_cast<std::atomic<bool>*>(arg)->load())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    Host_StartWorker(worker, &release);
    Host_StartWorker(worker, &release);
    EXPECT_EQ(Host_GetWorkerCount(), 2u);
    release = true;
    Host_WaitWorkers();
    EXPECT_EQ(Host_GetWorkerCount(), 0u);
    Host_WaitWorkers();  // nothing running: returns at once
}

struct Task {
    std::atomic<bool> release{false};
    std::atomic<int> runs{0};
};

void BlockingTask(void* context) {
    auto* task = static_cast<Task*>(context);
    task->runs.fetch_add(1);
    while (!task->release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST(BackgroundTask, OnlyOneRunsAtATime) {
    Host_TakeBackgroundFinished();
    Task first, second;
    Host_StartBackgroundTask(BlockingTask, &first);
    EXPECT_EQ(Host_IsBackgroundRunning(), 1);
    Host_StartBackgroundTask(BlockingTask, &second);  // refused while the first runs
    first.release = true;
    for (int i = 0; i < 5000 && !Host_TakeBackgroundFinished(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(first.runs.load(), 1);
    EXPECT_EQ(second.runs.load(), 0);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    EXPECT_EQ(Host_TakeBackgroundFinished(), 0);  // taking clears it
    Host_SetBackgroundFinished();
    EXPECT_EQ(Host_TakeBackgroundFinished(), 1);

    // With the first one finished, a new task starts.
    second.release = true;
    Host_StartBackgroundTask(BlockingTask, &second);
    for (int i = 0; i < 5000 && !Host_TakeBackgroundFinished(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(second.runs.load(), 1);
    // A task that ends at once still leaves the flag down, so callers that
    // wait for it to fall do not wait forever.
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    Task third;
    third.release = true;
    Host_StartBackgroundTask(BlockingTask, &third);
    for (int i = 0; i < 5000 && Host_IsBackgroundRunning(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    EXPECT_EQ(third.runs.load(), 1);
    Host_TakeBackgroundFinished();
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

TEST(HostMessage, ShowsTheTextUnderTheHostCaption) {
    ASSERT_TRUE(Host_SelectBackend("headless"));
    Headless_TakeMessages();
    Host_ShowMessage("Out of memory\n");
    auto messages = Headless_TakeMessages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0], "HOST MULTIPLATFORM MESSAGE: Out of memory\n");
}

TEST(HostProcessors, AtLeastOne) {
    EXPECT_GE(Host_GetProcessorCount(), 1u);
    WorkerCount bad("0");
    EXPECT_GE(Host_GetProcessorCount(), 1u);
}

}  // namespace
