// Worker threads, the background task and the process-wide critical section.
//
// Workers are detached at once; only the worker count says they still run.
// Host_WaitWorkers wakes as soon as the last worker ends (a condition variable)
// rather than sleeping a fixed 50 ms per parallel pass, which would add visible
// latency to every preview; it still looks at least every 50 ms.
//
// A started worker whose thread has not begun by then is run by the waiting
// thread itself. A thread the system reported as created can die before it
// runs a line (wine does this now and then); its share of the kernel would
// never be done and the wait would never end. Each start is claimed once,
// by its thread or by a waiter, so no share runs twice.
#include "host/Host_Threads.h"

#include "host/Host.h"
#include "host/Host_Backend.h"
#include "host/Host_Os.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

// Recursive, as a critical section is: a thread that holds it may enter again.
std::recursive_mutex& CriticalSection() {
    static std::recursive_mutex section;
    return section;
}

std::condition_variable_any& WorkersDone() {
    static std::condition_variable_any done;
    return done;
}

// Counters live in the host state; before Host_Init (tests, the command line)
// a process-wide fallback record serves, so the thread operations work alone.
HostState& ThreadState() {
    if (HostState* state = Host_GetState()) return *state;
    static HostState fallback;
    return fallback;
}

struct WorkerStart {
    void* argument;
    HostThreadFn function;
    std::chrono::steady_clock::time_point startedAt;
};

constexpr auto kLookAgain = std::chrono::milliseconds(50);

// Starts no thread has claimed yet, oldest first; guarded by the critical section.
std::vector<std::shared_ptr<WorkerStart>>& Unclaimed() {
    static std::vector<std::shared_ptr<WorkerStart>> starts;
    return starts;
}

[[noreturn]] void ThreadCreationFailed() {
    std::fputs("Could not create thread\n", stdout);
    std::fflush(stdout);
    std::exit(0);
}

void RunClaimed(const WorkerStart& start) {
    start.function(start.argument);
    std::lock_guard lock(CriticalSection());
    HostState& state = ThreadState();
    if (--state.workerCount == 0) WorkersDone().notify_all();
}

void WorkerMain(void* argument) {
    const std::unique_ptr<std::shared_ptr<WorkerStart>> owned(
        static_cast<std::shared_ptr<WorkerStart>*>(argument));
    const std::shared_ptr<WorkerStart>& start = *owned;
    bool claimed = false;
    {
        std::lock_guard lock(CriticalSection());
        auto& starts = Unclaimed();
        auto found = std::find(starts.begin(), starts.end(), start);
        if (found != starts.end()) {
            starts.erase(found);
            claimed = true;
        }
    }
    if (claimed) RunClaimed(*start);
}

// Under the critical section: the oldest start left unclaimed for longer than
// a waiter looks, now claimed by the caller, or null.
std::shared_ptr<WorkerStart> ClaimOverdueStart() {
    auto& starts = Unclaimed();
    if (starts.empty() || std::chrono::steady_clock::now() - starts.front()->startedAt < kLookAgain)
        return nullptr;
    std::shared_ptr<WorkerStart> start = std::move(starts.front());
    starts.erase(starts.begin());
    return start;
}

struct BackgroundStart {
    HostThreadFn function;
    void* context;
};

void BackgroundMain(void* argument) {
    const BackgroundStart start = *static_cast<BackgroundStart*>(argument);
    delete static_cast<BackgroundStart*>(argument);
    start.function(start.context);
    std::lock_guard lock(CriticalSection());
    HostState& state = ThreadState();
    state.backgroundTask = nullptr;
    state.backgroundFinished = 1;
    state.backgroundRunning = 0;
}

}  // namespace

void Host_Lock() {
    CriticalSection().lock();
}
void Host_Unlock() {
    CriticalSection().unlock();
}

void Host_StartWorker(HostThreadFn function, void* argument) {
    auto start =
        std::make_shared<WorkerStart>(WorkerStart{argument, function, std::chrono::steady_clock::now()});
    // Counted before the thread exists, so a worker that ends at once can never
    // take the count below zero.
    {
        std::lock_guard lock(CriticalSection());
        ++ThreadState().workerCount;
        Unclaimed().push_back(start);
    }
    if (!HostOs_StartThread(WorkerMain, new std::shared_ptr<WorkerStart>(start))) ThreadCreationFailed();
}

uint32_t Host_GetWorkerCount() {
    std::lock_guard lock(CriticalSection());
    return ThreadState().workerCount;
}

void Host_WaitWorkers() {
    std::unique_lock lock(CriticalSection());
    while (ThreadState().workerCount != 0) {
        WorkersDone().wait_for(lock, kLookAgain);
        if (std::shared_ptr<WorkerStart> overdue = ClaimOverdueStart()) {
            lock.unlock();
            RunClaimed(*overdue);
            lock.lock();
        }
    }
}

void Host_StartBackgroundTask(HostThreadFn function, void* context) {
    // The running flag is raised before the thread exists, not after: a task
    // that ended before the starter got round to it would otherwise leave the
    // flag set for good, no later task could start, and everyone who waits for
    // the flag to fall (leaving a module does) would wait forever.
    {
        std::lock_guard lock(CriticalSection());
        HostState& state = ThreadState();
        if (state.backgroundTask != nullptr || state.backgroundRunning) return;
        state.backgroundTask = function;
        state.backgroundRunning = 1;
    }
    if (!HostOs_StartThread(BackgroundMain, new BackgroundStart{function, context})) ThreadCreationFailed();
}

uint8_t Host_IsBackgroundRunning() {
    std::lock_guard lock(CriticalSection());
    return ThreadState().backgroundRunning;
}

uint8_t Host_TakeBackgroundFinished() {
    std::lock_guard lock(CriticalSection());
    uint8_t finished = ThreadState().backgroundFinished;
    ThreadState().backgroundFinished = 0;
    return finished;
}

void Host_SetBackgroundFinished() {
    std::lock_guard lock(CriticalSection());
    ThreadState().backgroundFinished = 1;
}

uint32_t Host_GetProcessorCount() {
    if (const char* env = std::getenv("PELLUCIDA_WORKERS"); env && *env) {
        int n = std::atoi(env);
        if (n >= 1) return static_cast<uint32_t>(n);
    }
    unsigned n = std::thread::hardware_concurrency();
    return n == 0 ? 1 : n;
}

void Host_ShowMessage(const char* text) {
    HostBackend_ShowMessage(kHostMessageCaption, text);
}
