#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "engine/capture/encoder_process.h"

extern char** environ;

namespace melvane::engine {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kKillPatience = 200;  // ms
// A second and a half of sound.
constexpr int kPipeBytes = 1 << 18;
constexpr auto kRoomPoll = 2ms;
constexpr auto kAskInterval = 10ms;

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

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
};

}  // namespace

EncoderProcess::~EncoderProcess() {
    closeInput();
    kill();
}

bool EncoderProcess::start(const std::vector<std::string>& words) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);  // a smaller one will do too
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.files, ends[0], STDIN_FILENO);
    posix_spawn_file_actions_addopen(&settings.files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&settings.files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // Files that other code of this program has open are none of the encoder's business.
    posix_spawn_file_actions_addclosefrom_np(&settings.files, STDERR_FILENO + 1);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int result =
        posix_spawn(&pid_, words.front().c_str(), &settings.files, &settings.attributes, arguments.data(), environ);
    close(ends[0]);
    if (result != 0) {
        close(ends[1]);
        pid_ = 0;
        return false;
    }
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    pipe_ = ends[1];
    state_ = EncoderState::running;
    return true;
}

void EncoderProcess::prepareWritingThread() {
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
}

std::size_t EncoderProcess::write(std::span<const std::byte> bytes, std::chrono::milliseconds patience) {
    const auto limit = Clock::now() + patience;
    std::size_t done = 0;
    while (pipe_ >= 0 && done < bytes.size()) {
        const ssize_t taken = ::write(pipe_, bytes.data() + done, bytes.size() - done);
        if (taken > 0) {
            done += static_cast<std::size_t>(taken);
        } else if (errno == EAGAIN) {
            if (Clock::now() >= limit) break;
            // poll() would have the encoder wake this thread for every page that it takes.
            std::this_thread::sleep_for(kRoomPoll);
        } else if (errno != EINTR) {
            // It has gone, or lives on without an input: either way nothing more will reach its file.
            kill();
            break;
        }
    }
    return done;
}

std::size_t EncoderProcess::unread() const {
    int bytes = 0;
    return pipe_ >= 0 && ioctl(pipe_, FIONREAD, &bytes) == 0 ? static_cast<std::size_t>(bytes) : 0;
}

void EncoderProcess::closeInput() {
    const std::lock_guard lock(mutex_);
    if (pipe_ >= 0) close(pipe_);
    pipe_ = -1;
    inputClosed_ = true;
}

void EncoderProcess::kill() {
    const std::lock_guard lock(mutex_);
    reap();
    if (state_ != EncoderState::running) return;
    ::kill(-pid_, SIGKILL);
    // Not waited for without limit: one that hangs in the kernel, on a dead network drive say, does not end.
    for (int i = 0; i < kKillPatience && waitpid(pid_, nullptr, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    state_ = EncoderState::failed;
}

void EncoderProcess::reap() {
    if (state_ != EncoderState::running) return;
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, WNOHANG);
    if (ended == 0 || (ended < 0 && errno == EINTR)) return;
    const bool good = ended == pid_ && WIFEXITED(status) && WEXITSTATUS(status) == 0 && inputClosed_;
    state_ = good ? EncoderState::finished : EncoderState::failed;
}

bool EncoderProcess::running() {
    return state() == EncoderState::running;
}

EncoderState EncoderProcess::state() {
    const std::lock_guard lock(mutex_);
    // Not for every block that is written.
    const auto now = Clock::now();
    if (inputClosed_ || now - asked_ >= kAskInterval) {
        asked_ = now;
        reap();
    }
    return state_;
}

}  // namespace melvane::engine
