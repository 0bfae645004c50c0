#include "midi/channel_knobs.h"

namespace melvane {

namespace {

constexpr int kValues = 128;
constexpr int kSwitchedOnValues = 129;
constexpr int kVolumePixels = 60;
constexpr int kBalancePixels = 17;  // one more than the track has

// Whole numbers, so that no rounding comes between a value and its position.
std::int16_t volumeOf(int top, int values) {
    const int up = kChannelVolumeTrack.last - onTrack(kChannelVolumeTrack, top);
    return static_cast<std::int16_t>(up * values / kVolumePixels);
}

}  // namespace

std::int16_t channelVolumeAt(int top) {
    return volumeOf(top, kValues);
}

std::int16_t switchedOnVolumeAt(int top) {
    return volumeOf(top, kSwitchedOnValues);
}

int channelVolumeTop(std::int16_t volume) {
    return onTrack(kChannelVolumeTrack, kChannelVolumeTrack.last - volume * kVolumePixels / kValues);
}

std::int16_t channelBalanceAt(std::int16_t channel, int left) {
    const Track track = channelBalanceTrack(channel);
    return static_cast<std::int16_t>((onTrack(track, left) - track.first) * kValues / kBalancePixels);
}

int channelBalanceLeft(std::int16_t channel, std::int16_t balance) {
    const Track track = channelBalanceTrack(channel);
    return onTrack(track, track.first + balance * kBalancePixels / kValues);
}

}  // namespace melvane
