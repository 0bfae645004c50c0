// The volume and place of a playing channel, moved without clicks.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/gain_ramp.h"
#include "platform/audio_library.h"

namespace melvane::engine {

struct VolumeAndPan {
    std::uint32_t volume = 100;  // 0..100, linear amplitude
    std::int32_t pan = 0;        // -100..100: turns the opposite side down linearly, the near one stays
};

class Level {
public:
    // Any thread; what is outside the ranges is clamped.
    void set(VolumeAndPan wanted);
    VolumeAndPan get() const { return wanted_; }

    // Mixing thread: adds `frames` stereo frames of `in` to `out` and returns the peaks of what was added. A new level
    // is reached over 20 ms, one that is set before the first frame at once.
    PeakLevels mixInto(float* out, const float* in, std::size_t frames);

    // Mixing thread: the level that is wanted holds at once.
    void finish();

private:
    std::atomic<VolumeAndPan> wanted_{VolumeAndPan{}};
    GainRamp ramp_{882};
};

}  // namespace melvane::engine
