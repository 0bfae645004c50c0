// The knobs of the effects window: where they go, and the values that their positions stand for.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "controls/track.h"
#include "state/scale.h"

namespace melvane {

inline constexpr Track kLevelTrack{97, 197, 97};               // top edge; down is more
inline constexpr Scale kLevelScale{97, 1, 1, Fraction::kept};  // 0..100

inline constexpr Track kToneTrack{70, 130, 100};                    // top edge; up is more
inline constexpr Scale kToneScale{70, 100, 60, Fraction::rounded};  // 0 (full boost)..100 (full cut)

// Left edge, background and vocal; right of the vocal's centre there is one step more.
inline constexpr std::array<Track, 2> kBalanceTracks = {{{245, 309, 277}, {354, 419, 386}}};
// -100..100, vocal to 103.
constexpr Scale balanceScale(std::size_t index) {
    return {kBalanceTracks[index].neutral, 100, 32, Fraction::rounded};
}
// What is shown of it: -10..10, vocal to 10.3.
constexpr Scale balanceReadout(std::size_t index) {
    return {kBalanceTracks[index].neutral, 10, 32, Fraction::kept};
}
// Red of the bar behind the knob, 0..255.
inline int balanceRed(std::size_t index, double left) {
    return std::min(255, static_cast<int>(8 * std::abs(left - kBalanceTracks[index].neutral)));
}

}  // namespace melvane
