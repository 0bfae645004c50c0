#include "platform/bass/capture/capture.h"

#include <algorithm>
#include <chrono>

#include "platform/bass/capture/pcm16.h"

namespace melvane::bass {

namespace {
using namespace std::chrono_literals;
// How long an encoder may take nothing, once its input was ended, before it is ended itself.
constexpr auto kFinishPatience = 30s;
constexpr auto kWritePatience = 100ms;
constexpr auto kDevicePoll = 5ms;
}  // namespace

Capture::Capture(Handle handle, RecordProc proc, void* user) : handle_(handle), proc_(proc), user_(user) {}

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

bool Capture::open(const RecordingInputs& inputs, SoundServer* server) {
    for (const RecordingInput& input : inputs.all()) {
        const float gain = static_cast<float>(input.level) / 100.0F;
        if (!input.on) continue;
        if (input.sourceId.empty()) {
            cardOn_ = true;
            cardGain_ = gain;
            continue;
        }
        auto connection = server ? server->connection() : nullptr;
        if (!connection) return false;
        auto device = std::make_unique<InputDevice>(std::move(connection), input.sourceId);
        if (!device->start()) return false;
        devices_.push_back({std::move(device), gain});
    }
    return true;
}

void Capture::begin() {
    capturing_ = true;
    thread_ = std::thread([this] { run(); });
}

void Capture::stop() {
    capturing_ = false;
    pushed_.notify_one();
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
        blocks_.emplace_back(mix, mix + frames * 2);
        waitingFrames_ += frames;
    }
    pushed_.notify_one();
}

void Capture::run() {
    EncoderProcess::prepareWritingThread();
    std::vector<float> block;
    for (bool first = true; waitForBlock(block); first = false) {
        if (first)
            for (Device& device : devices_) device.input->clear();
        for (float& sample : block) sample *= cardGain_;
        addDevices(block);
        deliver(block);
    }
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

// The card's mix sets the pace. A device alone is waited for, so that what it delivers is complete; beside
// the card it adds what has come.
void Capture::addDevices(std::vector<float>& block) {
    const std::size_t frames = block.size() / 2;
    deviceBlock_.resize(block.size());
    for (Device& device : devices_) {
        std::size_t done = device.input->read(deviceBlock_.data(), frames);
        while (!cardOn_ && done < frames && capturing_) {
            std::this_thread::sleep_for(kDevicePoll);
            done += device.input->read(deviceBlock_.data() + done * 2, frames - done);
        }
        for (std::size_t i = 0; i < done * 2; ++i) block[i] += deviceBlock_[i] * device.gain;
    }
}

void Capture::deliver(const std::vector<float>& block) {
    pcm_.resize(block.size());
    std::ranges::transform(block, pcm_.begin(), toPcm16);
    const auto bytes = std::as_bytes(std::span(pcm_));
    feedEncoder(bytes);
    if (capturing_ && !proc_(handle_, bytes.data(), static_cast<std::uint32_t>(bytes.size()), user_))
        capturing_ = false;
}

void Capture::feedEncoder(std::span<const std::byte> bytes) {
    if (!headerWritten_) {
        headerWritten_ = true;
        feedEncoder(streamedWavHeader());
    }
    auto lastProgress = std::chrono::steady_clock::now();
    while (!bytes.empty() && encoder_.running()) {
        const std::size_t taken = encoder_.write(bytes, kWritePatience);
        bytes = bytes.subspan(taken);
        const auto now = std::chrono::steady_clock::now();
        if (taken > 0 || capturing_) lastProgress = now;
        if (now - lastProgress > kFinishPatience) encoder_.kill();
    }
}

void Capture::finishEncoder() {
    if (!headerWritten_) feedEncoder({});
    encoder_.closeInput();
    const auto limit = std::chrono::steady_clock::now() + kFinishPatience;
    while (encoder_.running() && std::chrono::steady_clock::now() < limit) std::this_thread::sleep_for(1ms);
    encoder_.kill();
}

}  // namespace melvane::bass
