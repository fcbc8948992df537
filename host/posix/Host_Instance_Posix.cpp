// The single-instance rule on POSIX systems: an flock on "<name>.lock" decides
// who is first (the kernel drops it when a process dies, however it dies); the
// first listens on the Unix socket "<name>.socket" beside it on a thread of its
// own. A later start connects, sends its request and waits for "ok".
//
// Request: NUL-terminated fields, "activate" first, then key and value pairs
// ("open", path; "startup-id", id), then the end of the stream. Answer: "ok".
#include "host/Host_Instance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr const char* kActivate = "activate";
constexpr const char* kAnswer = "ok";
constexpr size_t kRequestLimit = 64 * 1024;
// The first instance takes the lock before it listens: a later start that
// comes in between retries its connection for this long.
constexpr auto kConnectPatience = std::chrono::milliseconds(3000);
constexpr auto kConnectRetry = std::chrono::milliseconds(50);
// How long either side waits for the other's next bytes.
constexpr int kIoTimeoutMs = 5000;

class Fd {
public:
    Fd() = default;
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() { Reset(); }
    Fd(Fd&& other) noexcept : fd_(other.Release()) {}
    Fd& operator=(Fd&& other) noexcept {
        if (this != &other) {
            Reset();
            fd_ = other.Release();
        }
        return *this;
    }
    int Get() const { return fd_; }
    bool Valid() const { return fd_ >= 0; }
    int Release() { return std::exchange(fd_, -1); }
    void Reset() {
        if (fd_ >= 0) close(fd_);
        fd_ = -1;
    }

private:
    int fd_ = -1;
};

bool MakeAddress(const std::string& path, sockaddr_un* address) {
    *address = sockaddr_un{};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof address->sun_path) return false;
    std::memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

bool WaitFor(int fd, short events) {
    pollfd p{fd, events, 0};
    int n;
    while ((n = poll(&p, 1, kIoTimeoutMs)) < 0 && errno == EINTR) {
    }
    return n > 0;
}

bool WriteAll(int fd, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        if (!WaitFor(fd, POLLOUT)) return false;
        ssize_t n = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += size_t(n);
    }
    return true;
}

// Reads until the other side ends its stream (or the limit); false on a timeout.
bool ReadToEnd(int fd, std::string* bytes) {
    char buffer[4096];
    for (;;) {
        if (!WaitFor(fd, POLLIN)) return false;
        ssize_t n = recv(fd, buffer, sizeof buffer, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0) return true;
        bytes->append(buffer, size_t(n));
        if (bytes->size() > kRequestLimit) return false;
    }
}

std::string Encode(const HostInstanceRequest& request) {
    std::string bytes = kActivate;
    bytes += '\0';
    auto field = [&](const char* key, const std::string& value) {
        if (value.empty()) return;
        bytes.append(key).append(1, '\0').append(value).append(1, '\0');
    };
    field("open", request.path);
    field("startup-id", request.startupId);
    return bytes;
}

bool Decode(const std::string& bytes, HostInstanceRequest* request) {
    std::vector<std::string> fields;
    for (size_t start = 0; start < bytes.size();) {
        size_t end = bytes.find('\0', start);
        if (end == std::string::npos) return false;  // every field ends in a NUL
        fields.emplace_back(bytes, start, end - start);
        start = end + 1;
    }
    if (fields.empty() || fields[0] != kActivate || fields.size() % 2 == 0) return false;
    for (size_t i = 1; i + 1 < fields.size(); i += 2) {
        if (fields[i] == "open") request->path = fields[i + 1];
        if (fields[i] == "startup-id") request->startupId = fields[i + 1];
    }
    return true;
}

// The first instance's listener: accepts one connection at a time, so a slow
// or silent client delays the next by at most the I/O timeout.
class Listener {
public:
    Listener(Fd lock, Fd socket, std::string socketPath, HostInstanceRequestFn onRequest)
        : lock_(std::move(lock)),
          socket_(std::move(socket)),
          socketPath_(std::move(socketPath)),
          onRequest_(onRequest) {
        // Without a way to stop it the thread is not started: later starts
        // then find nobody answering and run on their own.
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return;
        stopRead_ = Fd(fds[0]);
        stopWrite_ = Fd(fds[1]);
        thread_ = std::thread([this] { Run(); });
    }
    ~Listener() {
        if (thread_.joinable()) {
            (void)!write(stopWrite_.Get(), "x", 1);
            thread_.join();
        }
        // The socket goes before the lock: whoever takes the lock next finds no
        // socket of ours to connect to.
        unlink(socketPath_.c_str());
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

private:
    void Run() {
        for (;;) {
            pollfd p[2] = {{socket_.Get(), POLLIN, 0}, {stopRead_.Get(), POLLIN, 0}};
            if (poll(p, 2, -1) < 0) {
                if (errno == EINTR) continue;
                return;
            }
            if (p[1].revents) return;
            if (!(p[0].revents & POLLIN)) continue;
            Fd client(accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!client.Valid()) continue;
            std::string bytes;
            HostInstanceRequest request;
            if (!ReadToEnd(client.Get(), &bytes) || !Decode(bytes, &request)) continue;
            onRequest_(request);
            WriteAll(client.Get(), kAnswer);
        }
    }

    Fd lock_;
    Fd socket_;
    std::string socketPath_;
    HostInstanceRequestFn onRequest_;
    Fd stopRead_, stopWrite_;
    std::thread thread_;
};

// The one claim of the process, held from the claim to the release; a newer
// claim replaces it. A claim under the name this process already holds finds
// the lock taken (flock locks belong to the open file, not the process) and
// hands over to our own listener, which is how the tests see both sides.
std::unique_ptr<Listener>& Claimed() {
    static std::unique_ptr<Listener> listener;
    return listener;
}

Fd Connect(const sockaddr_un& address) {
    Fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.Valid()) return {};
    int result;
    while ((result = connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address)) < 0 &&
           errno == EINTR) {
    }
    return result == 0 ? std::move(fd) : Fd{};
}

bool HandOver(const sockaddr_un& address, const HostInstanceRequest& request) {
    const auto deadline = std::chrono::steady_clock::now() + kConnectPatience;
    Fd fd;
    while (!(fd = Connect(address)).Valid()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kConnectRetry);
    }
    if (!WriteAll(fd.Get(), Encode(request))) return false;
    shutdown(fd.Get(), SHUT_WR);
    std::string answer;
    return ReadToEnd(fd.Get(), &answer) && answer == kAnswer;
}

// A folder only we can write to: nobody else can plant a socket there.
bool IsPrivateFolder(const std::string& folder) {
    struct stat st;
    return lstat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == getuid() &&
           (st.st_mode & 022) == 0;
}

}  // namespace

HostInstanceClaim HostOs_ClaimInstance(const std::string& folder, const std::string& name,
                                       const HostInstanceRequest& request, HostInstanceRequestFn onRequest) {
    const std::string dir = folder.empty() ? HostOs_InstanceFolder() : folder;
    if (dir.empty() || name.empty()) return kHostInstanceUnavailable;
    const std::string base = dir + (dir.back() == '/' ? "" : "/") + name;
    const std::string socketPath = base + ".socket";
    sockaddr_un address;
    if (!MakeAddress(socketPath, &address)) return kHostInstanceUnavailable;

    Fd lock(open((base + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.Valid()) return kHostInstanceUnavailable;
    int locked;
    while ((locked = flock(lock.Get(), LOCK_EX | LOCK_NB)) < 0 && errno == EINTR) {
    }
    if (locked < 0) {
        if (errno != EWOULDBLOCK) return kHostInstanceUnavailable;
        return HandOver(address, request) ? kHostInstanceHandedOver : kHostInstanceUnavailable;
    }

    // We are first: a socket file left by a run that crashed is ours to replace.
    unlink(socketPath.c_str());
    Fd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.Valid() ||
        bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket.Get(), 8) != 0)
        return kHostInstanceUnavailable;
    Claimed() = std::make_unique<Listener>(std::move(lock), std::move(socket), socketPath, onRequest);
    return kHostInstanceFirst;
}

void HostOs_ReleaseInstance() {
    Claimed().reset();
}

std::string HostOs_InstanceFolder() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime && IsPrivateFolder(runtime))
        return runtime;
    // No session runtime folder (a bare ssh login, some containers): a private
    // folder of our own in the temporary folder, if nobody else made it first.
    const char* tmp = std::getenv("TMPDIR");
    std::string folder = std::string(tmp && *tmp ? tmp : "/tmp") + "/pellucida-" + std::to_string(getuid());
    mkdir(folder.c_str(), 0700);
    return IsPrivateFolder(folder) ? folder : std::string();
}

std::string HostOs_DisplayName() {
    for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY"})
        if (const char* value = std::getenv(variable); value && *value) return value;
    return "";
}

std::string HostOs_StartupId() {
    // X11 launchers set the first, Wayland ones the second.
    for (const char* variable : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"})
        if (const char* value = std::getenv(variable); value && *value) return value;
    return "";
}

void HostOs_ForgetStartupId() {
    unsetenv("DESKTOP_STARTUP_ID");
    unsetenv("XDG_ACTIVATION_TOKEN");
}
