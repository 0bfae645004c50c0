#include "engine/capture/capture.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

#include "engine/capture/pcm16.h"

namespace melvane::engine {

namespace {
using namespace std::chrono_literals;
// How long an encoder may take nothing, once its input was ended or where nobody else waits, before it is ended itself.
constexpr auto kFinishPatience = 60s;
// The same in a hurry: until its input ends, and until it is ended.
constexpr auto kHurriedInput = 5s;
constexpr auto kHurriedEnd = 9s;
// How often the patience is looked at.
constexpr auto kWritePatience = 100ms;
// Several blocks of the card at a time cost fewer changes of threads than each by itself.
constexpr auto kGatherTime = 50ms;
constexpr std::size_t kGatherFrames = kSampleRate / 20;
// Shorter than a block of the card.
constexpr auto kDevicePoll = 5ms;
}  // namespace

Capture::Capture(RecordProc proc, void* user, bool live) : proc_(proc), user_(user), live_(live) {}

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

bool Capture::open(const RecordingInputs& inputs, const std::shared_ptr<SoundServer>& server,
                   const std::stop_token& givenUp) {
    for (const RecordingInputs::Input& input : inputs.all()) {
        const float gain = static_cast<float>(input.level) / 100.0F;
        if (!input.on) continue;
        if (input.sourceId.empty()) {
            cardOn_ = true;
            cardGain_ = gain;
            continue;
        }
        auto device = server ? startDevice<InputDevice>(server, givenUp, input.sourceId) : nullptr;
        if (!device) return false;
        devices_.push_back({std::move(device), gain, {}});
    }
    return true;
}

bool Capture::begin(Handle handle) {
    handle_ = handle;
    capturing_ = true;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        capturing_ = false;
        encoder_.kill();
    }
    return begun();
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
        noteProgress();  // its patience begins here
    }
    pushed_.notify_one();
    // Nobody is there to end its input.
    if (!begun()) encoder_.kill();
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
        if (waitingFrames_ > kMostFrames) overflown_ = true;
        drainDevices();
        if (waitingFrames_ < kGatherFrames) return;
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
    const auto ended = [this] { return encodingEnded_ || quit_; };
    while (blocks_.empty() && !ended())
        pushed_.wait_for(lock, kGatherTime, [&] { return waitingFrames_ >= kGatherFrames || ended(); });
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
        device.input->look();
        std::unique_lock lock(mutex_);
        drainDevices();
        while (!cardOn_ && device.waiting.size() < block.size() && capturing_ && !device.input->lost()) {
            lock.unlock();
            std::this_thread::sleep_for(kDevicePoll);
            device.input->look();
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
    procEnded_ = procEnded_ || !proc_(handle_, bytes.data(), static_cast<std::uint32_t>(bytes.size()), user_);
    if (procEnded_) capturing_ = false;
}

void Capture::feedEncoder(std::span<const std::byte> bytes) {
    if (!headerWritten_) {
        headerWritten_ = true;
        feedEncoder(streamedWavHeader());
    }
    noteProgress();
    writing_ = true;
    while (!bytes.empty() && encoder_.running() && sinceHurry() < kHurriedInput) {
        const std::size_t taken = encoder_.write(bytes, kWritePatience);
        bytes = bytes.subspan(taken);
        if (taken > 0) noteProgress();
        if (lostPatience()) encoder_.kill();
    }
    writing_ = false;
}

void Capture::hurry() {
    auto never = Clock::time_point::max();
    hurriedAt_.compare_exchange_strong(never, Clock::now());
}

double Capture::stalledSeconds() const {
    return writing_ ? std::chrono::duration<double>(sinceProgress()).count() : 0;
}

void Capture::noteProgress() {
    lastProgress_ = Clock::now();
}

Capture::Clock::duration Capture::sinceProgress() const {
    return Clock::now() - lastProgress_.load();
}

Capture::Clock::duration Capture::sinceHurry() const {
    const auto from = hurriedAt_.load();
    return from == Clock::time_point::max() ? Clock::duration::zero() : Clock::now() - from;
}

bool Capture::lostPatience() const {
    const bool mayWait = live_ && capturing_;
    return overflown_ || sinceHurry() > kHurriedEnd || (!mayWait && sinceProgress() > kFinishPatience);
}

// An encoder that goes before it has read everything shows as failed only while its input is open.
void Capture::waitUntilRead() {
    for (std::size_t unread = encoder_.unread(); unread > 0 && encoder_.running() && !lostPatience();) {
        std::this_thread::sleep_for(1ms);
        const std::size_t before = std::exchange(unread, encoder_.unread());
        if (unread < before) noteProgress();
    }
}

void Capture::finishEncoder() {
    if (!headerWritten_) feedEncoder({});
    noteProgress();
    waitUntilRead();
    encoder_.closeInput();
    while (encoder_.running() && !lostPatience()) std::this_thread::sleep_for(1ms);
    encoder_.kill();
}

}  // namespace melvane::engine
