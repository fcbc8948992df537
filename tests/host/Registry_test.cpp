// The driver registry: the re-entrancy gate, broadcasts, the lifecycle and the
// unload order, on registries built by the tests themselves.
#include "host/Host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_calls;  // "driver.method" in call order

void Record(HostDriver* driver, HostMethod* method, void*) {
    g_calls.push_back(std::string(driver->name, strnlen(driver->name, kHostNameBound)) + "." +
                      std::string(method->name, strnlen(method->name, kHostNameBound)));
}
void WritesArgument(HostDriver*, HostMethod*, void* argument) {
    *static_cast<int*>(argument) = 42;
}

// Fatal paths end the process; the statement runs in a child whose standard
// output is sent to standard error, where the death test reads it.
#define EXPECT_FATAL(statement, message)        \
    EXPECT_EXIT(                                \
        {                                       \
            dup2(STDERR_FILENO, STDOUT_FILENO); \
            statement;                          \
        },                                      \
        testing::ExitedWithCode(1), "^" message "$")

class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        g_calls.clear();
        ASSERT_NE(Host_CreateState(), nullptr);
    }
    void TearDown() override { Host_DestroyState(); }

    HostDriver* Driver(const char* name, std::initializer_list<const char*> methods, bool resume = true) {
        HostDriver* driver = Host_DriverCreate(name);
        for (const char* m : methods) Host_DriverAddMethod(driver, m, Record);
        if (resume) Host_DriverResume(driver);
        return driver;
    }
};

TEST_F(RegistryTest, AMethodMayCallAnotherOfItsDriverButNeverItself) {
    HostDriver* self = Driver("self", {"Sibling"});
    Host_DriverAddMethod(self, "Outer", [](HostDriver* d, HostMethod* m, void* arg) {
        Record(d, m, arg);
        Host_Call("self", "Sibling", arg);
    });
    Host_DriverAddMethod(self, "Again",
                         [](HostDriver*, HostMethod*, void*) { Host_Call("self", "Again", nullptr); });
    Host_Call("self", "Outer", nullptr);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"self.Outer", "self.Sibling"}));
    EXPECT_EQ(self->useCount, 0u);
    for (auto& m : self->methods) EXPECT_EQ(m->locked, 0);
    EXPECT_FATAL(Host_Call("self", "Again", nullptr),
                 "Attempt to call locked method \\(reentrant code\\?\\)");
}

TEST_F(RegistryTest, BroadcastReachesOnlyDriversWithTheMethodInOrder) {
    Driver("a", {"Common"});
    Driver("b", {"Only", "Common"});
    Driver("c", {"Common"});
    Host_Call("*", "Only", nullptr);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"b.Only"}));
    g_calls.clear();
    Host_Call("*", "Common", nullptr);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"a.Common", "b.Common", "c.Common"}));
    g_calls.clear();
    Host_Call("*", "Nobody", nullptr);
    Host_Call("nobody", "Common", nullptr);
    EXPECT_TRUE(g_calls.empty());
}

TEST_F(RegistryTest, ANamedCallTakesTheFirstMatchingMethodOfAnActiveDriver) {
    HostDriver* d = Host_DriverCreate("d");
    Host_DriverAddMethod(d, "Twice", WritesArgument);
    Host_DriverAddMethod(d, "Twice", Record);
    int value = 5;
    Host_Call("d", "Twice", &value);  // created inactive
    EXPECT_EQ(value, 5);
    Host_DriverResume(d);
    Host_Call("d", "Missing", &value);
    EXPECT_EQ(value, 5);
    Host_Call("d", "Twice", &value);
    EXPECT_EQ(value, 42);
    EXPECT_TRUE(g_calls.empty());  // the second entry is never reached
}

TEST_F(RegistryTest, NamesAreComparedOnTheirFirst32Characters) {
    const std::string base(32, 'x');
    HostDriver* d = Host_DriverCreate((base + "-driver-one").c_str());
    Host_DriverAddMethod(d, (base + "-method-one").c_str(), WritesArgument);
    Host_DriverResume(d);
    int value = 0;
    Host_Call((base + "-driver-two").c_str(), (base + "-method-two").c_str(), &value);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(Host_FindDriver(base.c_str()), d);
    EXPECT_EQ(Host_FindDriver(base.substr(0, 31).c_str()), nullptr);
}

TEST_F(RegistryTest, SuspendStopsCallsWithoutCallingSuspendAndResumeCallsResume) {
    HostDriver* d = Driver("d", {"Work", "SUSPEND", "RESUME"}, false);
    Host_DriverResume(d);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"d.RESUME"}));
    g_calls.clear();
    Host_DriverSuspend(d);
    Host_Call("d", "Work", nullptr);
    Host_Call("*", "Work", nullptr);
    EXPECT_TRUE(g_calls.empty());  // neither Work nor SUSPEND ran
    Host_DriverResume(d);
    Host_DriverResume(d);  // already active: nothing more
    Host_Call("d", "Work", nullptr);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"d.RESUME", "d.Work"}));
}

TEST_F(RegistryTest, DestroyingADriverInUseChangesNothing) {
    HostDriver* base = Driver("base", {"DESTRUCT"});
    HostDriver* user = Driver("user", {});
    Host_DriverAddDependency(user, base);
    EXPECT_EQ(Host_DriverDestroy(base), 2);
    EXPECT_EQ(Host_FindDriver("base"), base);
    EXPECT_EQ(base->useCount, 1u);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_EQ(Host_DriverDestroy(nullptr), 1);
    Host_GetState()->driversChanged = 0;
    EXPECT_EQ(Host_DriverDestroy(user), 0);
    EXPECT_EQ(Host_FindDriver("user"), nullptr);
    EXPECT_EQ(base->useCount, 0u);
    EXPECT_EQ(Host_GetState()->driversChanged, 1);
}

TEST_F(RegistryTest, DestructRunsOnAResumedDriverThatSeesItselfAsTheOnlyUser) {
    HostDriver* d = Driver("d", {"RESUME"}, false);
    Host_DriverAddMethod(d, "DESTRUCT", [](HostDriver* driver, HostMethod* method, void* arg) {
        Record(driver, method, arg);
        g_calls.push_back("useCount=" + std::to_string(driver->useCount));
    });
    EXPECT_EQ(Host_DriverDestroy(d), 0);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"d.RESUME", "d.DESTRUCT", "useCount=1"}));
}

TEST_F(RegistryTest, UnloadAllFreesDependantsFirst) {
    // The program's own dependency graph, in its registration order.
    HostDriver* video = Driver("video", {"DESTRUCT"});
    HostDriver* event = Driver("event", {"DESTRUCT"});
    HostDriver* keyboard = Driver("keyboard", {"DESTRUCT"});
    HostDriver* pointer = Driver("pointer", {"DESTRUCT"});
    HostDriver* fileDialog = Driver("filedialog", {"DESTRUCT"});
    Driver("os", {"DESTRUCT"}, false);  // inactive drivers are resumed and unloaded too
    for (auto [user, used] :
         {std::pair{event, video}, {keyboard, event}, {pointer, event}, {fileDialog, video}})
        Host_DriverAddDependency(user, used);
    Host_DriversUnloadAll();
    EXPECT_EQ(g_calls, (std::vector<std::string>{"keyboard.DESTRUCT", "pointer.DESTRUCT", "event.DESTRUCT",
                                                 "filedialog.DESTRUCT", "video.DESTRUCT", "os.DESTRUCT"}));
    EXPECT_TRUE(Host_GetState()->drivers.empty());
}

TEST_F(RegistryTest, DriversThatCanNeverBeFreedAreFatalAtUnload) {
    HostDriver* a = Driver("a", {});
    HostDriver* b = Driver("b", {});
    Host_DriverAddDependency(a, b);
    Host_DriverAddDependency(b, a);
    EXPECT_FATAL(Host_DriversUnloadAll(), "Not all drivers succesfully unloaded");
}

TEST_F(RegistryTest, DependenciesAreWalkedAndRemoved) {
    HostDriver* a = Driver("a", {});
    HostDriver* b = Driver("b", {});
    HostDriver* c = Driver("c", {});
    Host_DriverAddDependency(a, b);
    Host_DriverAddDependency(a, c);
    EXPECT_EQ(Host_DriverGetDependency(a, nullptr), b);
    EXPECT_EQ(Host_DriverGetDependency(a, b), c);
    EXPECT_EQ(Host_DriverGetDependency(a, c), nullptr);
    Host_DriverRemoveDependency(a, b);
    EXPECT_EQ(Host_DriverGetDependency(a, nullptr), c);
    EXPECT_EQ(b->useCount, 0u);
    // Removed already, and from a driver with no dependencies at all.
    EXPECT_FATAL(Host_DriverRemoveDependency(a, b), "Attempting to remove non-existent dependency");
    EXPECT_FATAL(Host_DriverRemoveDependency(b, c), "Attempting to remove non-existent dependency");
}

TEST(RegistryWithoutState, CallsDoNothing) {
    ASSERT_EQ(Host_GetState(), nullptr);
    int value = 3;
    Host_Call("*", "Anything", &value);
    Host_Call("video", "Video_GetWidth", &value);
    EXPECT_EQ(value, 3);
}

}  // namespace
