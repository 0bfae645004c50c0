// How alike a whole recording and a song are at every place in it.
#pragma once

#include "alignment/coarse_search.h"
#include "alignment/correlation.h"

namespace melvane {

// A place and how much the recording's pieces have in common with the song there, in deviations of chance.
struct Peak {
    double lag = 0;  // frames, at the line's pivot
    double height = 0;
};

struct Peaks {
    Peak best;
    Peak rival;  // the highest elsewhere
};

// Of all lines as steep as `line`. Exact to a frame: a song that repeats its loops to the sample has the same chance in
// each place, so that what one place leaves unexplained, or explains in vain, decides. Nothing when it is not wanted
// any more.
Peaks searchEverywhere(Bands song, Bands voice, const Pieces& pieces, const Line& line, const GoOn& goOn);

}  // namespace melvane
