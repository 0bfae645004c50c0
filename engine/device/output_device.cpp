#include "engine/device/output_device.h"

#include <algorithm>

#include "platform/audio_library.h"

namespace melvane::engine {

OutputDevice::OutputDevice(std::shared_ptr<cubeb> connection, std::size_t blockFrames,
                           std::shared_ptr<std::atomic<std::uint64_t>> underruns)
    : connection_(std::move(connection)),
      ahead_(std::max(kAheadFrames, blockFrames)),
      ring_(ahead_),
      underruns_(std::move(underruns)) {}

OutputDevice::~OutputDevice() {
    if (!stream_) return;
    cubeb_stream_stop(stream_);
    cubeb_stream_destroy(stream_);
}

bool OutputDevice::start() {
    cubeb_stream_params format{CUBEB_SAMPLE_FLOAT32NE, kSampleRate, 2, CUBEB_LAYOUT_STEREO, CUBEB_STREAM_PREF_NONE};
    std::uint32_t latency = 0;
    if (cubeb_get_min_latency(connection_.get(), &format, &latency) != CUBEB_OK) latency = kDeviceFrames;
    if (cubeb_stream_init(connection_.get(), &stream_, "Melvane", nullptr, nullptr, nullptr, &format,
                          std::max(latency, kDeviceFrames), play, stateChanged, this) != CUBEB_OK) {
        stream_ = nullptr;
        return false;
    }
    return cubeb_stream_start(stream_) == CUBEB_OK;
}

bool OutputDevice::hasRoomFor(std::size_t frames) const {
    return ring_.filled() + std::min(frames, ahead_) <= ahead_;
}

std::uint32_t OutputDevice::latencyMilliseconds() const {
    std::uint32_t frames = 0;
    if (!stream_ || cubeb_stream_get_latency(stream_, &frames) != CUBEB_OK) return 0;
    return static_cast<std::uint32_t>((frames + ahead_) * 1000 / kSampleRate);
}

long OutputDevice::play(cubeb_stream*, void* user, const void*, void* output, long frames) {
    auto* self = static_cast<OutputDevice*>(user);
    auto* out = static_cast<float*>(output);
    const auto wanted = static_cast<std::size_t>(frames);
    const std::size_t got = self->ring_.read(out, wanted);
    self->fade_.apply(out, got, wanted, self->framesExpected_ ? self->ahead_ : self->ring_.filled());
    if (got < wanted && self->framesExpected_) ++*self->underruns_;
    ++self->callbacks_;
    return frames;
}

void OutputDevice::stateChanged(cubeb_stream*, void* user, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR) static_cast<OutputDevice*>(user)->lost_ = true;
}

}  // namespace melvane::engine
