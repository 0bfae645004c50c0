// The gain that brings a mix to a loudness, when a limiter comes behind it. Pure computation.
#pragma once

#include <functional>

namespace melvane {

// What comes out with one gain.
struct GainTrial {
    double lufs = 0;     // integrated; -infinity where there is no loudness
    double takenDb = 0;  // the most that the limiter took
};

struct GainFound {
    double gainDb = 0;
    GainTrial result;
    bool reached =
        false;  // within 0.05 LU; else the limiter would take more than kMostTakenDb, or there is no loudness
};

inline constexpr double kMostTakenDb = 6;

// Asks `attempt` for what comes out a few times; what it throws is passed on. More gain has to mean more of both.
GainFound findGain(double lufs, const std::function<GainTrial(double gainDb)>& attempt);

}  // namespace melvane
