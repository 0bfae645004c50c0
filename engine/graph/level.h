// The left and right gain of a playing channel, moved without clicks.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/audio_library.h"

namespace melvane::engine {

struct StereoGain {
    float left = 1.0F;
    float right = 1.0F;
    bool operator==(const StereoGain&) const = default;
};

// Volume 0..100 is linear amplitude; pan -100..100 turns the opposite side down linearly, so that the centre
// and the near side pass unchanged.
StereoGain gainOf(std::uint32_t volume, std::int32_t pan);

class Level {
public:
    // Any thread.
    void set(StereoGain target) { target_.store(target, std::memory_order_relaxed); }

    // Mixing thread: adds `frames` stereo frames of `in` to `out` and returns the peaks of what was added. A new target
    // is reached over kRampFrames, sample by sample, so that the result does not depend on how the frames come in
    // blocks; before the first frame it is taken at once.
    PeakLevels mixInto(float* out, const float* in, std::size_t frames);

private:
    static constexpr int kRampFrames = 882;  // 20 ms

    std::atomic<StereoGain> target_{StereoGain{}};
    StereoGain goal_;
    StereoGain now_;
    StereoGain step_;
    int rampLeft_ = 0;
    bool started_ = false;
};

}  // namespace melvane::engine
