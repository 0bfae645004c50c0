// The knobs of the effects window: their pixel positions and the values that these stand for. Values beyond a track,
// as an edited store may hold, stand at its end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "controls/track.h"

namespace melvane {

inline constexpr Track kLevelTrack{97, 197, 97};  // top edge; down is more
inline constexpr Track kToneTrack{70, 130, 100};  // top edge; up is more
// Left edge, background and vocal; right of the vocal's centre there is one step more.
inline constexpr std::array<Track, 2> kBalanceTracks = {{{245, 309, 277}, {354, 419, 386}}};

std::int16_t levelAt(int top);  // 0..100
int levelTop(std::int16_t level);

std::int16_t toneAt(int top);  // 0 (full boost)..100 (full cut)
int toneTop(std::int16_t value);
double toneGain(int top);  // dB, 10..-10

// `index`: 0 background, 1 vocal.
std::int32_t balanceAt(std::size_t index, int left);  // -100..100, vocal to 103
int balanceLeft(std::size_t index, std::int32_t value);
double balanceReadout(std::size_t index, int left);  // -10..10, vocal to 10.3
// Red of the bar behind the knob, 0..255.
int balanceRed(std::size_t index, int left);

}  // namespace melvane
