#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "engine/capture/encoder_process.h"

namespace melvane::engine {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// A second and a half of sound.
constexpr int kPipeBytes = 1 << 18;
constexpr auto kRoomPoll = 2ms;
constexpr auto kAskInterval = 10ms;

}  // namespace

EncoderProcess::~EncoderProcess() {
    closeInput();
    kill();
}

bool EncoderProcess::start(const std::vector<std::string>& words) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return false;
    fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);  // a smaller one will do too
    const bool started = child_.start(words, {.input = ends[0]});
    close(ends[0]);
    if (!started) {
        close(ends[1]);
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
    child_.kill();
    state_ = EncoderState::failed;
}

void EncoderProcess::reap() {
    if (state_ != EncoderState::running) return;
    const ChildState child = child_.state();
    if (child == ChildState::running) return;
    state_ = child == ChildState::done && inputClosed_ ? EncoderState::finished : EncoderState::failed;
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
