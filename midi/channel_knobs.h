// The knobs of the channels window: where they go, and the values that their positions stand for. Both ways lose what
// lies behind the point.
#pragma once

#include <cstdint>

#include "controls/track.h"
#include "state/scale.h"

namespace melvane {

inline constexpr int kStripStep = 25;  // from one channel's strip to the next
inline constexpr std::int16_t kNeutralVolume = 100;
inline constexpr std::int16_t kNeutralBalance = 64;

inline constexpr Track kChannelVolumeTrack{60, 120, 74};                      // top edge; up is more
inline constexpr Scale kChannelVolumeScale{120, -128, 60, Fraction::cut};     // 0..128
inline constexpr Scale kSwitchedOnVolumeScale{120, -129, 60, Fraction::cut};  // of a channel that is switched on

// Left edge, for channel 0..15.
constexpr Track channelBalanceTrack(std::int16_t channel) {
    const int left = 32 + kStripStep * channel;
    return {left, left + 16, left + 8};
}
// 0..120: the track is one pixel shorter than the scale.
constexpr Scale channelBalanceScale(std::int16_t channel) {
    return {channelBalanceTrack(channel).first, 128, 17, Fraction::cut};
}

}  // namespace melvane
