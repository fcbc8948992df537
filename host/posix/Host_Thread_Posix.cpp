// Detached threads on POSIX systems.
#include "host/Host_Os.h"

#include <pthread.h>

namespace {

struct ThreadStart {
    void (*function)(void*);
    void* argument;
};

void* ThreadMain(void* raw) {
    const ThreadStart start = *static_cast<ThreadStart*>(raw);
    delete static_cast<ThreadStart*>(raw);
    start.function(start.argument);
    return nullptr;
}

}  // namespace

bool HostOs_StartThread(void (*function)(void* argument), void* argument) {
    auto* start = new ThreadStart{function, argument};
    pthread_t thread;
    if (pthread_create(&thread, nullptr, ThreadMain, start) != 0) {
        delete start;
        return false;
    }
    pthread_detach(thread);
    return true;
}
