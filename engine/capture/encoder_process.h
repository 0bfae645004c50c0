// The external encoder: a child process that takes a WAV stream on its standard input and writes the file.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "engine/process/child_process.h"
#include "platform/audio_library.h"

namespace melvane::engine {

class EncoderProcess {
public:
    EncoderProcess() = default;
    // Ends a child that still runs.
    ~EncoderProcess();
    EncoderProcess(const EncoderProcess&) = delete;
    EncoderProcess& operator=(const EncoderProcess&) = delete;

    // Starts words[0], an absolute path. False when it cannot be started.
    bool start(const std::vector<std::string>& words);

    // Called once on the thread that writes: a child that has gone then shows as a failed write, not as a signal.
    static void prepareWritingThread();
    // Capture thread. Waits for the child to take the bytes; returns how many it took when `patience` is over
    // or it has gone. A child that has closed its input is ended.
    std::size_t write(std::span<const std::byte> bytes, std::chrono::milliseconds patience);
    // Capture thread: how many of the bytes written the child hasn't read yet.
    std::size_t unread() const;
    // Capture thread: the child sees the end of its input. What it hadn't read by then, it may leave unread and still
    // be taken for finished.
    void closeInput();
    // Ends the child at once.
    void kill();

    // Any thread. An end that nobody asked for shows within 10 ms.
    bool running();
    EncoderState state();

private:
    void reap();

    std::mutex mutex_;
    ChildProcess child_;
    int pipe_ = -1;
    bool inputClosed_ = false;
    EncoderState state_ = EncoderState::none;
    std::chrono::steady_clock::time_point asked_;
};

// The header of a 44100 Hz 16-bit stereo WAV stream whose length is not known yet.
std::span<const std::byte> streamedWavHeader();

}  // namespace melvane::engine
