#include "loudness/gain_search.h"

#include <algorithm>
#include <cmath>

namespace melvane {

namespace {

constexpr double kNear = 0.05;  // LU
constexpr int kRounds = 10;
// How much of a gain arrives behind a limiter; less is not believed, so that no step goes too far.
constexpr double kLeastSlope = 0.3;

bool isTooMuch(const GainTrial& trial) {
    return trial.takenDb > kMostTakenDb;
}

}  // namespace

GainFound findGain(double lufs, const std::function<GainTrial(double gainDb)>& attempt) {
    GainFound found{0, attempt(0)};
    if (!std::isfinite(found.result.lufs)) return found;
    double slope = 1;
    for (int round = 0; round < kRounds && std::abs(lufs - found.result.lufs) > kNear; ++round) {
        if (isTooMuch(found.result) && found.result.lufs < lufs) break;
        const GainFound before = found;
        found.gainDb += (lufs - before.result.lufs) / slope;
        found.result = attempt(found.gainDb);
        const double arrived = (found.result.lufs - before.result.lufs) / (found.gainDb - before.gainDb);
        slope = std::clamp(arrived, kLeastSlope, 1.0);
    }
    found.reached = !isTooMuch(found.result) && std::abs(lufs - found.result.lufs) <= kNear;
    // What the limiter takes of the highest peak falls with the gain, decibel by decibel.
    for (int round = 0; round < kRounds && isTooMuch(found.result); ++round) {
        found.gainDb -= found.result.takenDb - kMostTakenDb + kNear / kRounds;
        found.result = attempt(found.gainDb);
    }
    return found;
}

}  // namespace melvane
