// Where a slider can be.
#pragma once

#include <algorithm>

namespace melvane {

// A track in units of the window, both ends included.
struct Track {
    int first;
    int last;
    int neutral;  // where a double click puts the slider
};

inline double onTrack(const Track& track, double position) {
    return std::clamp<double>(position, track.first, track.last);
}

}  // namespace melvane
