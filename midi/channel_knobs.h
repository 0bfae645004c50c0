// The knobs of the channels window: their pixel positions and the values that these stand for. Both ways lose what
// lies behind the point, and values beyond a track stand at its end.
#pragma once

#include <cstdint>

#include "controls/track.h"

namespace melvane {

inline constexpr int kStripStep = 25;  // from one channel's strip to the next
inline constexpr std::int16_t kNeutralVolume = 100;
inline constexpr std::int16_t kNeutralBalance = 64;

inline constexpr Track kChannelVolumeTrack{60, 120, 74};  // top edge; up is more
// Left edge, for channel 0..15.
constexpr Track channelBalanceTrack(std::int16_t channel) {
    const int left = 32 + kStripStep * channel;
    return {left, left + 16, left + 8};
}

std::int16_t channelVolumeAt(int top);     // 0..128
std::int16_t switchedOnVolumeAt(int top);  // what a channel gets that is switched on: 0..129
int channelVolumeTop(std::int16_t volume);

std::int16_t channelBalanceAt(std::int16_t channel, int left);  // 0..120
int channelBalanceLeft(std::int16_t channel, std::int16_t balance);

}  // namespace melvane
