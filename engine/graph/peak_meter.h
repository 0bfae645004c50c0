// How loud something was between two looks at it.
#pragma once

#include <atomic>
#include <cstddef>

#include "platform/audio_library.h"

namespace melvane::engine {

// The highest absolute sample of each side of stereo frames; 0 without frames.
PeakLevels peakOf(const float* block, std::size_t frames);
// Adds `in` times `left` and `right` to `out`; the peaks of what was added.
PeakLevels addScaled(float* out, const float* in, std::size_t frames, float left, float right);
// The higher one on each side.
PeakLevels higher(PeakLevels one, PeakLevels other);

class PeakMeter {
public:
    // Mixing thread.
    void raise(PeakLevels peaks);
    // Any thread: the highest since it was called last.
    PeakLevels take() { return highest_.exchange({}, std::memory_order_relaxed); }

private:
    std::atomic<PeakLevels> highest_{PeakLevels{}};
};

}  // namespace melvane::engine
