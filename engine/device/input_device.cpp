#include "engine/device/input_device.h"

#include <algorithm>

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {
// Longer than the mixing thread ever stays away while it looks for a lost device (3 s).
constexpr std::size_t kRingFrames = 4 * kSampleRate;
// 23 ms, which every server grants; what is recorded does not depend on it.
constexpr std::uint32_t kLatencyFrames = 1024;
constexpr std::chrono::milliseconds kLook{100};
}  // namespace

InputDevice::InputDevice(std::shared_ptr<cubeb> connection, std::string id)
    : connection_(std::move(connection)), id_(std::move(id)), ring_(kRingFrames) {}

InputDevice::~InputDevice() {
    if (!stream_) return;
    cubeb_stream_stop(stream_);
    cubeb_stream_destroy(stream_);
}

bool InputDevice::start() {
    // A device is opened by the identifier of a fresh listing, which is valid only while that listing lives.
    cubeb_device_collection found{};
    if (cubeb_enumerate_devices(connection_.get(), CUBEB_DEVICE_TYPE_INPUT, &found) != CUBEB_OK) return false;
    const auto* end = found.device + found.count;
    const auto* device = std::find_if(found.device, const_cast<cubeb_device_info*>(end),
                                      [this](const cubeb_device_info& d) { return d.device_id && id_ == d.device_id; });
    bool started = false;
    if (device != end) {
        cubeb_stream_params format{CUBEB_SAMPLE_FLOAT32NE, kSampleRate, 2, CUBEB_LAYOUT_STEREO, CUBEB_STREAM_PREF_NONE};
        started = cubeb_stream_init(connection_.get(), &stream_, "Melvane", device->devid, &format, nullptr, nullptr,
                                    kLatencyFrames, record, stateChanged, this) == CUBEB_OK &&
                  cubeb_stream_start(stream_) == CUBEB_OK;
    }
    cubeb_device_collection_destroy(connection_.get(), &found);
    return started;
}

long InputDevice::record(cubeb_stream*, void* user, const void* input, void*, long frames) {
    auto* const self = static_cast<InputDevice*>(user);
    if (!self->lost_) self->ring_.write(static_cast<const float*>(input), static_cast<std::size_t>(frames));
    return frames;
}

// Where a source goes, the server may go on with one that nobody has chosen.
void InputDevice::look() {
    const auto now = std::chrono::steady_clock::now();
    if (!stream_ || lost_ || now < lookedAt_ + kLook) return;
    lookedAt_ = now;
    cubeb_device* device = nullptr;
    if (cubeb_stream_get_current_device(stream_, &device) != CUBEB_OK) return;  // not every server tells
    if (device->input_name && id_ != device->input_name) lost_ = true;
    cubeb_stream_device_destroy(stream_, device);
}

void InputDevice::stateChanged(cubeb_stream*, void* user, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR) static_cast<InputDevice*>(user)->lost_ = true;
}

}  // namespace melvane::engine
