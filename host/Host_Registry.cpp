// The driver registry: named drivers with named methods, reached through
// Host_Call and its re-entrancy gate, and their lifecycle (resume, suspend,
// destroy, unload in dependency order).
#include "host/Host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

HostState* g_host = nullptr;  // the one host state of the process

bool NamesEqual(const char* a, const char* b) {
    return std::strncmp(a, b, kHostNameBound) == 0;
}

HostMethod* FindMethod(HostDriver* driver, const char* name) {
    for (auto& method : driver->methods)
        if (NamesEqual(method->name, name)) return method.get();
    return nullptr;
}

// The gate every method call passes, lifecycle methods included.
void CallThroughGate(HostDriver* driver, HostMethod* method, void* argument) {
    if (method->locked) Host_Fatal(kFatalLockedMethod);
    ++driver->useCount;
    method->locked = 1;
    method->function(driver, method, argument);
    --driver->useCount;
    method->locked = 0;
}

void CallIfActive(HostDriver* driver, const char* methodName, void* argument) {
    if (!driver->active) return;
    if (HostMethod* method = FindMethod(driver, methodName)) CallThroughGate(driver, method, argument);
}

// The driver after `current` in the list as it is now; a method may have
// changed the list during a broadcast.
HostDriver* NextDriver(HostDriver* current) {
    auto& drivers = g_host->drivers;
    for (size_t i = 0; i < drivers.size(); ++i)
        if (drivers[i].get() == current) return i + 1 < drivers.size() ? drivers[i + 1].get() : nullptr;
    return nullptr;
}

void ResumeForDestruction(HostDriver* driver) {
    if (driver->active) return;
    driver->active = 1;
    if (HostMethod* resume = FindMethod(driver, "RESUME")) CallThroughGate(driver, resume, nullptr);
}

// Calls DESTRUCT, releases the dependencies and frees the driver. The caller
// has checked that nothing uses it.
void DestroyUnused(HostDriver* driver) {
    if (HostMethod* destruct = FindMethod(driver, "DESTRUCT")) {
        // The call itself is the only user: DESTRUCT sees a use count of 1.
        driver->useCount = 0;
        CallThroughGate(driver, destruct, nullptr);
    }
    g_host->driversChanged = 1;
    for (HostDriver* dependency : driver->dependencies) --dependency->useCount;
    auto& drivers = g_host->drivers;
    drivers.erase(
        std::remove_if(drivers.begin(), drivers.end(),
                       [driver](const std::unique_ptr<HostDriver>& d) { return d.get() == driver; }),
        drivers.end());
}

}  // namespace

HostState* Host_GetState() {
    return g_host;
}

void Host_CopyName(char (&to)[kHostNameBound], const char* from) {
    // Bound 32: a 32-character name fills the field without a terminator, and
    // every comparison is bounded the same way.
    std::memset(to, 0, kHostNameBound);
    if (from) std::memcpy(to, from, strnlen(from, kHostNameBound));
}

HostState* Host_CreateState() {
    if (g_host) return g_host;
    g_host = new (std::nothrow) HostState();
    if (g_host) g_host->driversChanged = 1;
    return g_host;
}

void Host_DestroyState() {
    delete g_host;
    g_host = nullptr;
}

void Host_Fatal(const char* message) {
    std::fputs(message, stdout);
    std::fflush(stdout);
    std::exit(1);
}

HostDriver* Host_DriverCreate(const char* name) {
    if (!g_host) return nullptr;
    auto driver = std::make_unique<HostDriver>();
    Host_CopyName(driver->name, name);
    g_host->drivers.push_back(std::move(driver));
    return g_host->drivers.back().get();
}

void Host_DriverAddMethod(HostDriver* driver, const HostMethod& method) {
    if (!driver) return;
    driver->methods.push_back(std::make_unique<HostMethod>(method));
}

void Host_DriverAddMethod(HostDriver* driver, const char* name, HostMethodFn function) {
    HostMethod method;
    Host_CopyName(method.name, name);
    method.function = function;
    Host_DriverAddMethod(driver, method);
}

void Host_DriverAddDependency(HostDriver* driver, HostDriver* other) {
    if (!driver || !other) return;
    driver->dependencies.push_back(other);
    ++other->useCount;
}

void Host_DriverRemoveDependency(HostDriver* driver, HostDriver* other) {
    if (!driver || !other) Host_Fatal(kFatalMissingDependency);
    auto& deps = driver->dependencies;
    auto it = std::find(deps.begin(), deps.end(), other);
    if (it == deps.end()) Host_Fatal(kFatalMissingDependency);
    deps.erase(it);
    // The reference no longer holds the other driver.
    --other->useCount;
}

HostDriver* Host_DriverGetDependency(HostDriver* driver, HostDriver* iterator) {
    if (!driver || driver->dependencies.empty()) return nullptr;
    if (!iterator) return driver->dependencies.front();
    auto& deps = driver->dependencies;
    auto it = std::find(deps.begin(), deps.end(), iterator);
    if (it == deps.end() || it + 1 == deps.end()) return nullptr;
    return *(it + 1);
}

HostDriver* Host_FindDriver(const char* name) {
    if (!g_host || !name) return nullptr;
    for (auto& driver : g_host->drivers)
        if (NamesEqual(driver->name, name)) return driver.get();
    return nullptr;
}

void Host_Call(const char* pattern, const char* method, void* argument) {
    if (!g_host || g_host->drivers.empty() || !pattern || !method) return;

    // Every caller names one driver or broadcasts with "*"; no prefix form is
    // offered, so nobody comes to depend on one.
    if (std::strncmp(pattern, "*", 2) == 0) {
        HostDriver* driver = g_host->drivers.front().get();
        while (driver) {
            CallIfActive(driver, method, argument);
            if (!g_host) return;
            driver = NextDriver(driver);
        }
        return;
    }
    if (HostDriver* driver = Host_FindDriver(pattern)) CallIfActive(driver, method, argument);
}

void Host_DriverResume(HostDriver* driver) {
    if (!driver || driver->active) return;
    driver->active = 1;
    if (HostMethod* resume = FindMethod(driver, "RESUME")) CallThroughGate(driver, resume, nullptr);
}

void Host_DriverSuspend(HostDriver* driver) {
    if (!driver || !driver->active) return;
    // SUSPEND is deliberately not called: suspending only stops further calls.
    driver->active = 0;
}

int Host_DriverDestroy(HostDriver* driver) {
    if (!driver) return 1;
    ResumeForDestruction(driver);
    if (driver->useCount != 0) return 2;
    DestroyUnused(driver);
    return 0;
}

void Host_DriversUnloadAll() {
    if (!g_host) return;
    while (!g_host->drivers.empty()) {
        bool destroyed = false;
        for (auto& entry : g_host->drivers) {
            HostDriver* driver = entry.get();
            ResumeForDestruction(driver);
            if (driver->useCount == 0) {
                DestroyUnused(driver);
                destroyed = true;
                break;  // the list changed: walk again from its head
            }
        }
        if (!destroyed) Host_Fatal(kFatalUnload);
    }
}
