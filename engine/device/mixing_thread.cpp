#include "engine/device/mixing_thread.h"

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {
using namespace std::chrono_literals;
// Some devices take up to 2 s to begin.
constexpr auto kStallLimit = 3s;
// The device's ring holds 50 ms; one that does not empty it in four times that has stopped.
constexpr auto kFinishLimit = 200ms;
// What the device holds itself is lost when it is closed: twice its 40 ms.
constexpr auto kDrainTime = 80ms;
// A third of what the ring holds.
constexpr auto kPollInterval = 15ms;
}  // namespace

MixingThread::MixingThread(Card& card, std::shared_ptr<SoundServer> server, std::size_t blockFrames)
    : card_(card), server_(std::move(server)), blockFrames_(blockFrames), block_(blockFrames * 2), thread_([this] {
          run();
      }) {}

MixingThread::~MixingThread() {
    quit_.request_stop();
    card_.wake();
    thread_.join();
}

void MixingThread::run() {
    while (!quit_.stop_requested()) {
        if (card_.active()) {
            openDevice();
            playWhileActive();
            closeDevice();
        } else {
            card_.waitForChange();
        }
    }
}

void MixingThread::playWhileActive() {
    restartMachineClock();
    while (!quit_.stop_requested() && card_.active()) {
        if (!card_.running()) {
            if (device_) device_->expectFrames(false);
            card_.waitForChange();
            restartMachineClock();
            continue;
        }
        if (!waitForRoom()) continue;
        if (device_ && card_.cued()) device_->expectFrames(false);
        const std::size_t frames = card_.mix(block_.data(), blockFrames_);
        clockFrames_ += frames;
        if (device_) {
            device_->write(block_.data(), frames);
            // Once the ring was full, until the sound ends.
            if (frames < blockFrames_)
                device_->expectFrames(false);
            else if (!device_->hasRoomFor(blockFrames_))
                device_->expectFrames(true);
        }
    }
    if (!quit_.stop_requested()) letDeviceFinish();
}

// Waits a moment at most. True when a block may be mixed now.
bool MixingThread::waitForRoom() {
    if (device_ && deviceStalled()) {
        closeDevice();
        restartMachineClock();
    }
    if (device_) {
        if (device_->hasRoomFor(blockFrames_)) return true;
    } else {
        const auto due = std::chrono::duration<double>(Clock::now() - clockStart_) * kSampleRate;
        if (static_cast<double>(clockFrames_) <= due.count()) return true;
    }
    std::this_thread::sleep_for(kPollInterval);
    return false;
}

bool MixingThread::deviceStalled() {
    const auto now = Clock::now();
    if (device_->callbacks() != callbacksSeen_) {
        callbacksSeen_ = device_->callbacks();
        lastCallback_ = now;
    }
    return device_->lost() || now - lastCallback_ > kStallLimit;
}

void MixingThread::openDevice() {
    if (!server_) return;
    device_ = startDevice<OutputDevice>(server_, quit_.get_token(), blockFrames_, underruns_);
    if (!device_) return;
    callbacksSeen_ = 0;
    lastCallback_ = Clock::now();
    latency_ = device_->latencyMilliseconds();
    deviceOpen_ = true;
}

void MixingThread::closeDevice() {
    closeWithPatience(kClosePatience, std::move(device_));
    deviceOpen_ = false;
    latency_ = 0;
}

void MixingThread::letDeviceFinish() {
    if (!device_) return;
    device_->expectFrames(false);
    const auto limit = Clock::now() + kFinishLimit;
    while (device_->waiting() > 0 && Clock::now() < limit && !card_.active())
        std::this_thread::sleep_for(kPollInterval);
    if (device_->waiting() == 0 && !card_.active()) std::this_thread::sleep_for(kDrainTime);
}

void MixingThread::restartMachineClock() {
    clockStart_ = Clock::now();
    clockFrames_ = 0;
    lastCallback_ = clockStart_;
}

}  // namespace melvane::engine
