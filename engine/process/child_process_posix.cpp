#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "engine/process/child_process.h"

extern char** environ;

namespace melvane::engine {

namespace {

constexpr int kKillPatience = 200;  // ms

struct SpawnSettings {
    SpawnSettings() {
        posix_spawn_file_actions_init(&files);
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void give(int file, int as) {
        if (file >= 0)
            posix_spawn_file_actions_adddup2(&files, file, as);
        else
            posix_spawn_file_actions_addopen(&files, as, "/dev/null", as == STDIN_FILENO ? O_RDONLY : O_WRONLY, 0);
    }

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

}  // namespace

bool ChildProcess::start(const std::vector<std::string>& words, const Streams& streams) {
    SpawnSettings settings;
    settings.give(streams.input, STDIN_FILENO);
    settings.give(streams.output, STDOUT_FILENO);
    settings.give(streams.error, STDERR_FILENO);
    // Files that other code of this program has open are none of the child's business.
    posix_spawn_file_actions_addclosefrom_np(&settings.files, STDERR_FILENO + 1);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    if (posix_spawn(&pid_, words.front().c_str(), &settings.files, &settings.attributes, arguments.data(), environ) !=
        0)
        return false;
    state_ = ChildState::running;
    return true;
}

ChildState ChildProcess::state() {
    if (state_ != ChildState::running) return state_;
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, WNOHANG);
    if (ended == 0 || (ended < 0 && errno == EINTR)) return state_;
    const bool well = ended == pid_ && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return state_ = well ? ChildState::done : ChildState::failed;
}

void ChildProcess::kill() {
    if (state() != ChildState::running) return;
    ::kill(-pid_, SIGKILL);
    // Not waited for without limit: one that hangs in the kernel, on a dead network drive say, does not end.
    for (int i = 0; i < kKillPatience && waitpid(pid_, nullptr, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    state_ = ChildState::failed;
}

}  // namespace melvane::engine
