// Follows a song through a recording, from about where it is to exactly where.
#pragma once

#include <limits>

#include "alignment/correlation.h"

namespace melvane {

struct Followed {
    Line line;          // of what is heard best
    double height = 0;  // of the most that all pieces have in common, in deviations of what chance has
};

// `guess` may be wrong by `error` frames, in the middle of the voice and at its ends. The line is rarely steeper than
// `usual`, which counts where the sounds themselves leave it open.
Followed follow(Bands song, Bands voice, const Pieces& pieces, const Line& guess, std::size_t error,
                double usual = std::numeric_limits<double>::infinity());

// The direct sound, up to `before` frames earlier than what is `heard` best, which may be a reflection of it.
Line lineOfDirect(Bands song, Bands voice, const Pieces& pieces, const Line& heard, std::size_t before);

}  // namespace melvane
