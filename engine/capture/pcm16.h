// The step from the mix to what is recorded.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace melvane::engine {

// Full scale is 1.0. Rounded to the nearest step, so that 16-bit sources at full volume come through bit by
// bit; what lies outside the scale is cut to it.
inline std::int16_t toPcm16(float sample) {
    return static_cast<std::int16_t>(std::lrint(std::clamp(sample * 32768.0F, -32768.0F, 32767.0F)));
}

}  // namespace melvane::engine
