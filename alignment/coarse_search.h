// Where in a song a recording may belong, to a few milliseconds.
#pragma once

#include <functional>
#include <vector>

#include "alignment/correlation.h"

namespace melvane {

// Is told how much is done, 0..1, and tells whether it is still wanted.
using GoOn = std::function<bool(double done)>;

// For what is part `from`..`to` of the whole.
inline GoOn partOf(const GoOn& goOn, double from, double to) {
    return [&goOn, from, to](double done) { return goOn(from + (to - from) * done); };
}

// The lines on which voice and song are most alike, the best first: wrong by `kCoarseError` frames at most where they
// are right at all. None when it is not wanted any more.
std::vector<Line> searchCoarsely(Bands song, Bands voice, const GoOn& goOn);

inline constexpr std::size_t kCoarseError = 48;

}  // namespace melvane
