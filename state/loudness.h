// How loud a sound is, as EBU R128 measures it.
#pragma once

#include <cmath>

namespace melvane {

// What a mix may be brought to, LUFS.
inline constexpr double kLeastLoudness = -40;
inline constexpr double kMostLoudness = -5;

struct Loudness {
    double lufs = -HUGE_VAL;        // integrated and gated; -infinity where nothing is above -70 LUFS for 0.4 s
    double rangeLu = 0;             // as EBU Tech 3342 defines it
    double truePeakDb = -HUGE_VAL;  // dBTP; -infinity of silence

    // Loud and long enough to have a loudness.
    bool known() const { return std::isfinite(lufs); }
    bool silent() const { return !std::isfinite(truePeakDb); }
    bool operator==(const Loudness&) const = default;
};

}  // namespace melvane
