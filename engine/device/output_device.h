// The device that plays the card's mix. It takes frames from a ring in its own callback, which neither locks
// nor allocates; an empty ring plays as silence.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "engine/device/frame_ring.h"
#include "engine/device/gap_fade.h"
#include "engine/device/sound_server.h"

namespace melvane::engine {

// Opened and closed on any thread, used on the mixing thread.
class OutputDevice {
public:
    // Frames that are kept ahead of the device, and in it: a change is heard within 100 ms. A sound server asks for a
    // quarter of the latter at a time, so fewer of them would wake it and the program more often.
    static constexpr std::size_t kAheadFrames = 2048;
    static constexpr std::uint32_t kDeviceFrames = 1764;

    OutputDevice(std::shared_ptr<cubeb> connection, std::size_t blockFrames,
                 std::shared_ptr<std::atomic<std::uint64_t>> underruns);
    ~OutputDevice();
    OutputDevice(const OutputDevice&) = delete;
    OutputDevice& operator=(const OutputDevice&) = delete;

    // Opens the default device and starts it. False when there is none.
    bool start();
    // True when the device failed. One that only stops asking for frames shows in callbacks().
    bool lost() const { return lost_; }
    bool hasRoomFor(std::size_t frames) const;
    void write(const float* frames, std::size_t count) { ring_.write(frames, count); }
    std::size_t waiting() const { return ring_.filled(); }
    std::uint64_t callbacks() const { return callbacks_; }
    std::uint32_t latencyMilliseconds() const;
    // While true, which is once the ring has been filled, an empty one counts as an underrun. Else what is left fades
    // out.
    void expectFrames(bool expected) { framesExpected_ = expected; }

private:
    static long play(cubeb_stream*, void* user, const void*, void* output, long frames);
    static void stateChanged(cubeb_stream*, void* user, cubeb_state state);

    std::shared_ptr<cubeb> connection_;
    cubeb_stream* stream_ = nullptr;
    const std::size_t ahead_;
    FrameRing ring_;
    const std::shared_ptr<std::atomic<std::uint64_t>> underruns_;  // a device may outlive who counts
    std::atomic<std::uint64_t> callbacks_{0};
    std::atomic<bool> framesExpected_{false};
    std::atomic<bool> lost_{false};
    GapFade fade_;  // the callback's own
};

}  // namespace melvane::engine
