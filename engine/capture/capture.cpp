#include "engine/capture/capture.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "engine/capture/pcm16.h"

namespace melvane::engine {

namespace {
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
// How long an encoder may take nothing, once its input was ended, before it is ended itself.
constexpr auto kFinishPatience = 30s;
// How often the patience is looked at.
constexpr auto kWritePatience = 100ms;
// Shorter than a block of the card.
constexpr auto kDevicePoll = 5ms;
}  // namespace

Capture::Capture(RecordProc proc, void* user) : proc_(proc), user_(user) {}

Capture::~Capture() {
    stop();
    endEncoding();
    {
        const std::lock_guard lock(mutex_);
        quit_ = true;
    }
    pushed_.notify_one();
    if (thread_.joinable()) thread_.join();
}

bool Capture::open(const RecordingInputs& inputs, const std::shared_ptr<SoundServer>& server) {
    for (const RecordingInputs::Input& input : inputs.all()) {
        const float gain = static_cast<float>(input.level) / 100.0F;
        if (!input.on) continue;
        if (input.sourceId.empty()) {
            cardOn_ = true;
            cardGain_ = gain;
            continue;
        }
        auto device = server ? startDevice<InputDevice>(server, input.sourceId) : nullptr;
        if (!device) return false;
        devices_.push_back({std::move(device), gain, {}});
    }
    return true;
}

void Capture::begin(Handle handle) {
    handle_ = handle;
    thread_ = std::thread([this] { run(); });
    capturing_ = true;
}

void Capture::stop() {
    capturing_ = false;
    if (!begun()) closeDevices();
}

void Capture::endEncoding() {
    {
        const std::lock_guard lock(mutex_);
        encodingEnded_ = true;
        capturing_ = false;
    }
    pushed_.notify_one();
}

void Capture::push(const float* mix, std::size_t frames) {
    if (frames == 0) return;
    {
        const std::lock_guard lock(mutex_);
        if (!capturing_) return;
        // What a device recorded before the first frame of the mix belongs to no frame of it.
        if (!std::exchange(begunPushing_, true))
            for (Device& device : devices_) device.input->clear();
        blocks_.emplace_back(mix, mix + frames * 2);
        waitingFrames_ += frames;
        drainDevices();
    }
    pushed_.notify_one();
}

void Capture::run() {
    EncoderProcess::prepareWritingThread();
    std::vector<float> block;
    while (waitForBlock(block)) {
        for (float& sample : block) sample *= cardGain_;
        addDevices(block);
        deliver(block);
    }
    closeDevices();
    finishEncoder();
}

// False when everything that was pushed has been taken and no more will come.
bool Capture::waitForBlock(std::vector<float>& block) {
    std::unique_lock lock(mutex_);
    pushed_.wait(lock, [this] { return !blocks_.empty() || encodingEnded_ || quit_; });
    if (blocks_.empty()) return false;
    block = std::move(blocks_.front());
    blocks_.pop_front();
    waitingFrames_ -= block.size() / 2;
    return true;
}

// Under the lock. Empties the devices' rings, which are short, however far behind the encoder is.
void Capture::drainDevices() {
    constexpr std::size_t kFrames = 1024;
    drained_.resize(kFrames * 2);
    for (Device& device : devices_)
        while (const std::size_t got = device.input->read(drained_.data(), kFrames))
            device.waiting.insert(device.waiting.end(), drained_.begin(),
                                  drained_.begin() + static_cast<std::ptrdiff_t>(got * 2));
}

// The card's mix sets the pace. A device alone is waited for, so that what it delivers is complete; beside
// the card it adds what has come. One that has vanished is silent.
void Capture::addDevices(std::vector<float>& block) {
    for (Device& device : devices_) {
        std::unique_lock lock(mutex_);
        drainDevices();
        while (!cardOn_ && device.waiting.size() < block.size() && capturing_ && !device.input->lost()) {
            lock.unlock();
            std::this_thread::sleep_for(kDevicePoll);
            lock.lock();
            drainDevices();
        }
        const auto end =
            device.waiting.begin() + static_cast<std::ptrdiff_t>(std::min(device.waiting.size(), block.size()));
        std::transform(device.waiting.begin(), end, block.begin(), block.begin(),
                       [&](float recorded, float mixed) { return mixed + recorded * device.gain; });
        device.waiting.erase(device.waiting.begin(), end);
    }
}

// The user's microphone is not kept open behind a run.
void Capture::closeDevices() {
    const std::lock_guard lock(mutex_);
    for (Device& device : devices_) closeWithPatience(kClosePatience, std::move(device.input));
    devices_.clear();
}

void Capture::deliver(const std::vector<float>& block) {
    pcm_.resize(block.size());
    std::ranges::transform(block, pcm_.begin(), toPcm16);
    const auto bytes = std::as_bytes(std::span(pcm_));
    feedEncoder(bytes);
    framesEncoded_ += static_cast<std::int64_t>(block.size() / 2);
    if (capturing_ && !proc_(handle_, bytes.data(), static_cast<std::uint32_t>(bytes.size()), user_))
        capturing_ = false;
}

void Capture::feedEncoder(std::span<const std::byte> bytes) {
    if (!headerWritten_) {
        headerWritten_ = true;
        feedEncoder(streamedWavHeader());
    }
    auto lastProgress = Clock::now();
    while (!bytes.empty() && encoder_.running()) {
        const std::size_t taken = encoder_.write(bytes, kWritePatience);
        bytes = bytes.subspan(taken);
        const auto now = Clock::now();
        if (taken > 0 || capturing_) lastProgress = now;
        if (now - lastProgress > kFinishPatience) encoder_.kill();
    }
}

// An encoder that goes before it has read everything shows as failed only while its input is open.
void Capture::waitUntilRead() {
    auto limit = Clock::now() + kFinishPatience;
    for (std::size_t unread = encoder_.unread(); unread > 0 && encoder_.running() && Clock::now() < limit;) {
        std::this_thread::sleep_for(1ms);
        if (encoder_.unread() < unread) limit = Clock::now() + kFinishPatience;
        unread = encoder_.unread();
    }
}

void Capture::finishEncoder() {
    if (!headerWritten_) feedEncoder({});
    waitUntilRead();
    encoder_.closeInput();
    const auto limit = Clock::now() + kFinishPatience;
    while (encoder_.running() && Clock::now() < limit) std::this_thread::sleep_for(1ms);
    encoder_.kill();
}

}  // namespace melvane::engine
