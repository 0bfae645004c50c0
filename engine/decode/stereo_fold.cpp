#include "engine/decode/stereo_fold.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace melvane::decode {
namespace {

constexpr std::size_t kKnownPlaces = 8;

// One letter per channel: L, R; l, r for surround left and right; C centre, c rear centre, S subwoofer.
constexpr std::array<std::string_view, kKnownPlaces> kWavPlaces{"C",     "LR",     "LRC",     "LRlr",
                                                                "LRClr", "LRCSlr", "LRCSclr", "LRCSlrlr"};
constexpr std::array<std::string_view, kKnownPlaces> kVorbisPlaces{"C",     "LR",     "LCR",     "LRlr",
                                                                   "LCRlr", "LCRlrS", "LCRlrcS", "LCRlrlrS"};

StereoWeight weightOf(char place) {
    constexpr float kMinus3dB = 0.70710678F;
    switch (place) {
        case 'L':
            return {1.0F, 0.0F};
        case 'R':
            return {0.0F, 1.0F};
        case 'l':
            return {kMinus3dB, 0.0F};
        case 'r':
            return {0.0F, kMinus3dB};
        case 'C':
            return {kMinus3dB, kMinus3dB};
        case 'c':
            return {kMinus3dB / 2, kMinus3dB / 2};
        default:
            return {0.0F, 0.0F};
    }
}

std::string placesOf(int channels, ChannelOrder order) {
    const auto count = static_cast<std::size_t>(channels);
    if (count <= kKnownPlaces) return std::string((order == ChannelOrder::wav ? kWavPlaces : kVorbisPlaces)[count - 1]);
    std::string places(count, 'L');
    for (std::size_t i = 1; i < count; i += 2) places[i] = 'R';
    return places;
}

}  // namespace

std::vector<StereoWeight> stereoWeights(int channels, ChannelOrder order) {
    std::vector<StereoWeight> weights;
    StereoWeight sum{0.0F, 0.0F};
    for (const char place : placesOf(channels, order)) {
        weights.push_back(weightOf(place));
        sum.left += weights.back().left;
        sum.right += weights.back().right;
    }
    const float loudest = std::max(sum.left, sum.right);
    for (StereoWeight& weight : weights) weight = {weight.left / loudest, weight.right / loudest};
    return weights;
}

}  // namespace melvane::decode
