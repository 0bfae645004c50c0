// Renders the card in real time, ahead of the device; on the machine's clock while there is no device. It
// sleeps while nothing plays and nothing listens.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <thread>
#include <vector>

#include "engine/device/output_device.h"
#include "engine/graph/card.h"

namespace melvane::engine {

class MixingThread {
public:
    // `server` null: always on the machine's clock.
    MixingThread(Card& card, std::shared_ptr<SoundServer> server, std::size_t blockFrames);
    ~MixingThread();
    MixingThread(const MixingThread&) = delete;
    MixingThread& operator=(const MixingThread&) = delete;

    // Any thread.
    bool deviceOpen() const { return deviceOpen_; }
    std::uint64_t underruns() const { return *underruns_; }
    std::uint32_t latencyMilliseconds() const { return latency_; }

private:
    using Clock = std::chrono::steady_clock;

    void run();
    void playWhileActive();
    void openDevice();
    void closeDevice();
    void letDeviceFinish();
    bool waitForRoom();
    bool deviceStalled();
    void restartMachineClock();

    Card& card_;
    const std::shared_ptr<SoundServer> server_;
    const std::size_t blockFrames_;
    std::vector<float> block_;
    std::unique_ptr<OutputDevice> device_;
    std::uint64_t callbacksSeen_ = 0;
    Clock::time_point lastCallback_;
    Clock::time_point clockStart_;
    std::uint64_t clockFrames_ = 0;
    const std::shared_ptr<std::atomic<std::uint64_t>> underruns_ = std::make_shared<std::atomic<std::uint64_t>>(0);
    std::atomic<std::uint32_t> latency_{0};
    std::atomic<bool> deviceOpen_{false};
    std::stop_source quit_;
    std::thread thread_;
};

}  // namespace melvane::engine
