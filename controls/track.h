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

inline int onTrack(const Track& track, int position) {
    return std::clamp(position, track.first, track.last);
}

}  // namespace melvane
