// Follows a song through a recording, from about where it is to exactly where.
#pragma once

#include "alignment/correlation.h"

namespace melvane {

struct Followed {
    Line line;          // of the direct sound
    double height = 0;  // of the most that all pieces have in common, in deviations of what chance has
    double share = 0;   // of the pieces, those that have it
};

// `guess` may be wrong by `error` frames, in the middle of the voice and at its ends; the direct sound is up to
// `before` frames earlier than what is heard best.
Followed follow(Bands song, Bands voice, const Pieces& pieces, const Line& guess, std::size_t error,
                std::size_t before);

}  // namespace melvane
