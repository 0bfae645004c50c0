#include "engine/graph/level.h"

#include <algorithm>

#include "engine/graph/peak_meter.h"

namespace melvane::engine {

namespace {

StereoGain gainOf(VolumeAndPan level) {
    const float amplitude = static_cast<float>(level.volume) / 100.0F;
    const float side = static_cast<float>(level.pan) / 100.0F;
    return {amplitude * std::min(1.0F, 1.0F - side), amplitude * std::min(1.0F, 1.0F + side)};
}

}  // namespace

void Level::set(VolumeAndPan wanted) {
    wanted_ = {std::min(wanted.volume, 100U), std::clamp(wanted.pan, -100, 100)};
}

void Level::finish() {
    ramp_.aim(gainOf(wanted_));
    ramp_.finish();
}

PeakLevels Level::mixInto(float* out, const float* in, std::size_t frames) {
    ramp_.aim(gainOf(wanted_));
    std::size_t i = 0;
    PeakLevels peaks;
    for (; i < frames && ramp_.moving(); ++i) {
        const StereoGain gain = ramp_.advance();
        peaks = higher(peaks, addScaled(out + 2 * i, in + 2 * i, 1, gain.left, gain.right));
    }
    const StereoGain gain = ramp_.now();
    return higher(peaks, addScaled(out + 2 * i, in + 2 * i, frames - i, gain.left, gain.right));
}

}  // namespace melvane::engine
