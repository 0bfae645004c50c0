// One of the machine's own sources (a microphone, a line, a monitor), recorded as it comes.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "engine/device/frame_ring.h"
#include "engine/device/sound_server.h"

namespace melvane::engine {

class InputDevice {
public:
    // `id` as in CaptureSource.
    InputDevice(std::shared_ptr<cubeb> connection, std::string id);
    ~InputDevice();
    InputDevice(const InputDevice&) = delete;
    InputDevice& operator=(const InputDevice&) = delete;

    // False when the source cannot be recorded.
    bool start();
    // One thread at a time: the frames that have come, up to `frames`.
    std::size_t read(float* out, std::size_t frames) { return ring_.read(out, frames); }
    // One thread at a time: drops what has come so far.
    void clear() { ring_.clear(); }
    // One thread at a time: looks now and then whether the server has put another source in its place.
    void look();
    // True when the device has vanished. What comes then is dropped.
    bool lost() const { return lost_; }

private:
    static long record(cubeb_stream*, void* user, const void* input, void*, long frames);
    static void stateChanged(cubeb_stream*, void* user, cubeb_state state);

    std::shared_ptr<cubeb> connection_;
    std::string id_;
    cubeb_stream* stream_ = nullptr;
    FrameRing ring_;
    std::atomic<bool> lost_{false};
    std::chrono::steady_clock::time_point lookedAt_;
};

}  // namespace melvane::engine
