#include "engine/graph/level.h"

#include <algorithm>

#include "engine/graph/peak_meter.h"

namespace melvane::engine {

StereoGain gainOf(std::uint32_t volume, std::int32_t pan) {
    const float amplitude = static_cast<float>(std::min(volume, 100U)) / 100.0F;
    const float side = static_cast<float>(std::clamp(pan, -100, 100)) / 100.0F;
    return {amplitude * std::min(1.0F, 1.0F - side), amplitude * std::min(1.0F, 1.0F + side)};
}

PeakLevels Level::mixInto(float* out, const float* in, std::size_t frames) {
    const StereoGain target = target_.load(std::memory_order_relaxed);
    if (!started_) {
        started_ = true;
        now_ = goal_ = target;
    } else if (target != goal_) {
        goal_ = target;
        step_ = {(goal_.left - now_.left) / kRampFrames, (goal_.right - now_.right) / kRampFrames};
        rampLeft_ = kRampFrames;
    }
    std::size_t i = 0;
    PeakLevels ramp;
    for (; i < frames && rampLeft_ > 0; ++i) {
        now_ = --rampLeft_ == 0 ? goal_ : StereoGain{now_.left + step_.left, now_.right + step_.right};
        ramp = higher(ramp, addScaled(out + 2 * i, in + 2 * i, 1, now_.left, now_.right));
    }
    return higher(ramp, addScaled(out + 2 * i, in + 2 * i, frames - i, now_.left, now_.right));
}

}  // namespace melvane::engine
