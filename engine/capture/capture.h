// A running capture: takes the card's mix and the enabled devices, and feeds the callback and the encoder on
// a thread of its own. Nothing that was captured is dropped, however slow the encoder is.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/capture/encoder_process.h"
#include "engine/capture/recording_inputs.h"
#include "engine/device/input_device.h"
#include "engine/graph/card.h"

namespace melvane::engine {

class Capture : public CardListener {
public:
    // `live`: blocks come in real time, so they may have to wait for the encoder; otherwise they come as it takes them.
    Capture(RecordProc proc, void* user, bool live = true);
    // Waits until the encoder has finished its file.
    ~Capture() override;
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    // Any thread: false when a device that is on cannot be recorded, or was given up. `server` may be null when only
    // the card is on.
    bool open(const RecordingInputs& inputs, const std::shared_ptr<SoundServer>& server,
              const std::stop_token& givenUp = {});

    // --- user-interface thread ---
    bool startEncoder(const std::vector<std::string>& words) { return encoder_.start(words); }
    // Starts the thread; blocks that are pushed from now on are captured. `handle` is what the callback is told. False
    // when the system gives no thread.
    bool begin(Handle handle);
    bool begun() const { return thread_.joinable(); }
    // What is pushed from now on is ignored.
    void stop();
    // The encoder's input ends behind what was pushed so far.
    void endEncoding();
    // The encoder has ten seconds left; what it does not take in half of them is dropped.
    void hurry();
    // For how long the encoder has taken nothing of what waits.
    double stalledSeconds() const;
    // False once the callback has ended the capture or stop() was called.
    bool capturing() const { return capturing_; }

    // --- any thread ---
    bool encoderRunning() { return encoder_.running(); }
    EncoderState encoderState() { return encoder_.state(); }
    // How many frames the encoder has been given.
    std::int64_t framesEncoded() const { return framesEncoded_; }

    // --- mixing thread ---
    void push(const float* mix, std::size_t frames) override;
    bool congested() const override { return waitingFrames_ > kLeisureFrames; }

private:
    // Enough for an encoder that pauses, little enough for memory: 1.4 MB.
    static constexpr std::size_t kLeisureFrames = 4 * kSampleRate;
    static constexpr std::size_t kMostFrames = 600 * kSampleRate;

    using Clock = std::chrono::steady_clock;

    struct Device {
        std::unique_ptr<InputDevice> input;
        float gain;
        std::deque<float> waiting;  // what it has recorded so far
    };

    void run();
    bool waitForBlock(std::vector<float>& block);
    void drainDevices();
    void addDevices(std::vector<float>& block);
    void closeDevices();
    void deliver(const std::vector<float>& block);
    void feedEncoder(std::span<const std::byte> bytes);
    void noteProgress();
    Clock::duration sinceProgress() const;
    Clock::duration sinceHurry() const;
    bool lostPatience() const;
    void waitUntilRead();
    void finishEncoder();

    Handle handle_ = 0;
    const RecordProc proc_;
    void* const user_;
    const bool live_;
    float cardGain_ = 0.0F;
    bool cardOn_ = false;
    std::vector<Device> devices_;
    EncoderProcess encoder_;

    std::mutex mutex_;
    std::condition_variable pushed_;
    std::deque<std::vector<float>> blocks_;
    bool encodingEnded_ = false;
    bool quit_ = false;
    std::atomic<std::size_t> waitingFrames_{0};
    std::atomic<bool> capturing_{false};
    std::atomic<std::int64_t> framesEncoded_{0};
    std::atomic<bool> overflown_{false};
    std::atomic<bool> writing_{false};
    std::atomic<Clock::time_point> lastProgress_{Clock::now()};
    std::atomic<Clock::time_point> hurriedAt_{Clock::time_point::max()};

    bool begunPushing_ = false;
    std::vector<float> drained_;

    // Capture thread only.
    std::vector<std::int16_t> pcm_;
    bool headerWritten_ = false;
    bool procEnded_ = false;  // the callback has ended the capture
    std::thread thread_;
};

}  // namespace melvane::engine
