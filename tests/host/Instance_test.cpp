// The single-instance rule's platform side: the lock, the hand-over through
// the socket, and what a crashed or silent first instance leaves behind.
#include "host/Host_Instance.h"
#include "host/Host_Run.h"

#include "support/Files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <vector>

namespace fs = std::filesystem;

namespace {

class InstanceTest : public testing::Test {
protected:
    static inline std::mutex mutex;
    static inline std::vector<HostInstanceRequest> received;

    static void OnRequest(const HostInstanceRequest& request) {
        std::lock_guard<std::mutex> lock(mutex);
        received.push_back(request);
    }

    TempDir dir;
    const std::string name = "pellucida-_0";

    void SetUp() override { received.clear(); }
    void TearDown() override { HostOs_ReleaseInstance(); }

    HostInstanceClaim Claim(const HostInstanceRequest& request = {}) {
        return HostOs_ClaimInstance(dir.Path().string(), name, request, OnRequest);
    }
    fs::path File(const char* suffix) const { return dir.Path() / (name + suffix); }
};

TEST_F(InstanceTest, TheSecondStartHandsItsRequestToTheFirst) {
    ASSERT_EQ(Claim(), kHostInstanceFirst);
    EXPECT_TRUE(fs::exists(File(".lock")));
    EXPECT_TRUE(fs::is_socket(File(".socket")));
    EXPECT_TRUE(received.empty());

    const HostInstanceRequest requests[] = {
        {"/data/M 31\nwith a line feed.fits", "launcher-42_TIME1234"},
        {"", ""},  // only "come forward"
        {"/data/ngc7000.tif", ""},
    };
    for (const HostInstanceRequest& request : requests)
        EXPECT_EQ(Claim(request), kHostInstanceHandedOver) << request.path;
    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(received.size(), 3u);
    for (size_t i = 0; i < received.size(); ++i) {
        EXPECT_EQ(received[i].path, requests[i].path);
        EXPECT_EQ(received[i].startupId, requests[i].startupId);
    }
}

TEST_F(InstanceTest, ReleasingRemovesTheSocketAndFreesTheLock) {
    ASSERT_EQ(Claim(), kHostInstanceFirst);
    HostOs_ReleaseInstance();
    EXPECT_FALSE(fs::exists(File(".socket")));
    EXPECT_EQ(Claim(), kHostInstanceFirst);
}

// A crashed first instance leaves its lock file and socket; the kernel has
// dropped its lock, so the next start is first and replaces the socket.
TEST_F(InstanceTest, FilesLeftByACrashedRunDoNotBlockTheNextStart) {
    {
        std::ofstream(File(".lock")) << "stale";
        const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, File(".socket").c_str());
        ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(fd);  // nobody listens on it any more
    }
    ASSERT_EQ(Claim(), kHostInstanceFirst);
    EXPECT_EQ(Claim({"/data/a.png", ""}), kHostInstanceHandedOver);
    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].path, "/data/a.png");
}

// A first instance that holds the lock but never listens (hung before it got
// there): the later start gives up after its patience and runs on its own.
TEST_F(InstanceTest, AHolderThatNeverListensIsGivenUpOn) {
    const int fd = open(File(".lock").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(flock(fd, LOCK_EX | LOCK_NB), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Claim(), kHostInstanceUnavailable);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    close(fd);
    EXPECT_TRUE(received.empty());
}

TEST_F(InstanceTest, AFolderThatDoesNotExistMakesTheRuleUnavailable) {
    EXPECT_EQ(HostOs_ClaimInstance((dir.Path() / "missing").string(), name, {}, OnRequest),
              kHostInstanceUnavailable);
}

TEST(InstanceName, ProgramAndDisplayWithUnfitCharactersReplaced) {
    EXPECT_EQ(HostInstance_Name("pellucida", ":0"), "pellucida-_0");
    EXPECT_EQ(HostInstance_Name("pellucida", "wayland-1"), "pellucida-wayland-1");
    EXPECT_EQ(HostInstance_Name("pellucida", "host/x:1.0"), "pellucida-host_x_1.0");
    EXPECT_EQ(HostInstance_Name("pellucida", ""), "pellucida");
}

class InstanceFolderTest : public testing::Test {
protected:
    TempDir dir;
    const fs::path runtime = dir.Path() / "runtime";  // private to its owner, the session's
    EnvScope tmp{"TMPDIR", dir.Path().string()};
    EnvScope session{"XDG_RUNTIME_DIR", runtime.string()};
    void SetUp() override {
        fs::create_directory(runtime);
        chmod(runtime.c_str(), 0700);
    }
};

// The session's runtime folder when it is private, else one of our own in
// the temporary folder; a folder others can write to is never trusted.
TEST_F(InstanceFolderTest, RuntimeFolderOrAPrivateOneOfOurOwn) {
    const std::string own = dir.Path().string() + "/pellucida-" + std::to_string(getuid());
    EXPECT_EQ(HostOs_InstanceFolder(), runtime.string());
    chmod(runtime.c_str(), 0777);
    EXPECT_EQ(HostOs_InstanceFolder(), own);
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(HostOs_InstanceFolder(), own);
    EXPECT_EQ(fs::status(own).permissions() & fs::perms::all, fs::perms::owner_all);

    chmod(own.c_str(), 0777);  // someone else's doing: refused
    EXPECT_EQ(HostOs_InstanceFolder(), "");
}

// Headless runs (tests, batch work) run side by side: they take no lock.
TEST_F(InstanceFolderTest, TheHeadlessBackendTakesNoPart) {
    HostOptions options;
    options.host = "headless";
    EXPECT_FALSE(Host_HandOverToRunningInstance("pellucida", options, "a.fits"));
    EXPECT_TRUE(fs::is_empty(runtime));
}

}  // namespace
