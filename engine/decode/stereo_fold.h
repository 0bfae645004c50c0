// How sound of any number of channels becomes stereo.
#pragma once

#include <vector>

namespace melvane::decode {

enum class ChannelOrder { wav, vorbis };

// What a channel gives to the left and to the right.
struct StereoWeight {
    float left;
    float right;
};

// One weight per channel, 1 to 255 of them. Mono goes to both sides and stereo stays; with more channels,
// centre and surround come in 3 dB lower, the subwoofer not at all, and full scale in all channels gives
// full scale. Channels whose places are unknown (more than 8) go left and right in turn.
std::vector<StereoWeight> stereoWeights(int channels, ChannelOrder order);

}  // namespace melvane::decode
