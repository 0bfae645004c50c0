#include "effects/effect_knobs.h"

#include <cstdlib>

#include "state/errors.h"

namespace melvane {

namespace {

constexpr double kTonePixels = 60;     // for 100
constexpr double kBalancePixels = 32;  // for 100
constexpr int kRedStep = 8;
constexpr int kFullRed = 255;

int placed(const Track& track, double position) {
    return onTrack(track, roundedCast<int>(position));
}

int offCentre(std::size_t index, int left) {
    const Track& track = kBalanceTracks.at(index);
    return onTrack(track, left) - track.neutral;
}

}  // namespace

std::int16_t levelAt(int top) {
    return checkedCast<std::int16_t>(onTrack(kLevelTrack, top) - kLevelTrack.first);
}

int levelTop(std::int16_t level) {
    return onTrack(kLevelTrack, kLevelTrack.first + level);
}

std::int16_t toneAt(int top) {
    return roundedCast<std::int16_t>((onTrack(kToneTrack, top) - kToneTrack.first) * 100 / kTonePixels);
}

int toneTop(std::int16_t value) {
    return placed(kToneTrack, kToneTrack.first + value * kTonePixels / 100);
}

double toneGain(int top) {
    return 10 - toneAt(top) / 5.0;
}

std::int32_t balanceAt(std::size_t index, int left) {
    return roundedCast<std::int32_t>(offCentre(index, left) * 100 / kBalancePixels);
}

int balanceLeft(std::size_t index, std::int32_t value) {
    const Track& track = kBalanceTracks.at(index);
    return placed(track, track.neutral + value * kBalancePixels / 100);
}

double balanceReadout(std::size_t index, int left) {
    return offCentre(index, left) * 10 / kBalancePixels;
}

int balanceRed(std::size_t index, int left) {
    return std::min(kFullRed, kRedStep * std::abs(offCentre(index, left)));
}

}  // namespace melvane
