// Worker threads and the one background task. A single process-wide critical
// section guards the worker count, the background flags and whatever modules
// share with their threads.
#pragma once

#include <cstdint>

void Host_Lock();
void Host_Unlock();

// RAII form of Host_Lock/Host_Unlock.
class HostLockGuard {
public:
    HostLockGuard() { Host_Lock(); }
    ~HostLockGuard() { Host_Unlock(); }
    HostLockGuard(const HostLockGuard&) = delete;
    HostLockGuard& operator=(const HostLockGuard&) = delete;
};

using HostThreadFn = void (*)(void* argument);

void Host_StartWorker(HostThreadFn function, void* argument);
uint32_t Host_GetWorkerCount();
void Host_WaitWorkers();

void Host_StartBackgroundTask(HostThreadFn function, void* context);
uint8_t Host_IsBackgroundRunning();
uint8_t Host_TakeBackgroundFinished();
void Host_SetBackgroundFinished();

// Plain message box with the host's caption and an OK button.
void Host_ShowMessage(const char* text);
inline constexpr const char* kHostMessageCaption = "HOST MULTIPLATFORM MESSAGE: ";

// Number of logical processors, at least 1. PELLUCIDA_WORKERS overrides it (tests).
uint32_t Host_GetProcessorCount();

// Progress callback of the parallel kernels: row being started and row count;
// a non-zero answer stops the worker that asked.
using WorkerProgressFn = int (*)(void* context, uint32_t row, uint32_t rows);

// The split every parallel kernel follows: `Params` is copied from the template
// into one record per logical processor, record k gets workerIndex k and
// workerCount n, each runs `function` on a worker thread, and the call returns
// once all have ended.
template <class Params>
void Host_RunWorkers(const Params& templ, void (*function)(Params* params)) {
    struct Record {
        Params params;
        void (*function)(Params*);
        static void Run(void* argument) {
            auto* record = static_cast<Record*>(argument);
            record->function(&record->params);
        }
    };
    const uint32_t n = Host_GetProcessorCount();
    Record* records = new Record[n];
    for (uint32_t k = 0; k < n; ++k) {
        records[k].params = templ;
        records[k].params.workerIndex = k;
        records[k].params.workerCount = n;
        records[k].function = function;
    }
    for (uint32_t k = 0; k < n; ++k) Host_StartWorker(&Record::Run, &records[k]);
    Host_WaitWorkers();
    delete[] records;
}

// Inside a worker of an image-filter kernel: rows first to last, the progress
// callback before each row (non-zero stops this worker), then the columns
// k, k + n, k + 2n, ... of that row. Interleaving keeps the load even when the
// detail of an image sits in one part of it. Returns false when stopped.
template <class Body>
bool Worker_ForInterleavedColumns(uint32_t k, uint32_t n, uint32_t width, uint32_t height,
                                  WorkerProgressFn progress, void* context, Body&& body) {
    for (uint32_t y = 0; y < height; ++y) {
        if (progress && progress(context, y, height) != 0) return false;
        for (uint32_t x = k; x < width; x += n) body(x, y);
    }
    return true;
}
