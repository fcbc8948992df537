// Runs zenity as a child process with an argument vector (no shell, so no
// quoting of names) and reads the chosen path from its standard output.
#include "host/sdl2/Zenity.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

extern char** environ;

namespace {

struct ChildOutput {
    int status = -1;  // exit status, -1 when killed by a signal
    std::string text;
};

// Runs "zenity args..." from PATH with its errors discarded; nothing when it
// cannot be started (not installed).
std::optional<ChildOutput> Run(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>("zenity"));
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);

    int out[2];
    if (pipe2(out, O_CLOEXEC) != 0) return std::nullopt;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    // GTK's warnings are not ours to show.
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    const int spawned = posix_spawnp(&pid, "zenity", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (spawned != 0) {
        close(out[0]);
        return std::nullopt;
    }

    ChildOutput result;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(out[0], buffer, sizeof buffer);
        if (n > 0) {
            result.text.append(buffer, size_t(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    close(out[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return result;
    }
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    return result;
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find_first_of("\r\n"));
}

}  // namespace

DesktopDialogResult Zenity_FileDialog(const DesktopDialogRequest& request, std::string* chosen) {
    // zenity answers --version only where it can open the display; an unknown
    // version gets the flags every version takes.
    const std::optional<ChildOutput> version = Run({"--version"});
    if (!version) return DesktopDialogResult::kUnavailable;
    const ZenityVersion parsed =
        version->status == 0 ? Zenity_ParseVersion(FirstLine(version->text)) : ZenityVersion{};

    const std::optional<ChildOutput> dialog = Run(Zenity_Arguments(parsed, request));
    if (!dialog) return DesktopDialogResult::kUnavailable;
    // 1 is Cancel or Escape; anything else but 0 is an error, no choice either way.
    const std::string path = FirstLine(dialog->text);
    if (dialog->status != 0 || path.empty()) return DesktopDialogResult::kCanceled;
    *chosen = path;
    return DesktopDialogResult::kChosen;
}
