// Where in the song the voice is, beyond what the synchronisation moves it.
#pragma once

#include <cstdint>

namespace melvane {

struct VoicePlace {
    std::int64_t earlier =
        0;                // frames at 44100 Hz by which the recording begins before the song; behind it if negative
    double driftPpm = 0;  // by how much the recording is longer than it should be

    // Without one a voice begins with the song, and again when it is over.
    bool given() const { return *this != VoicePlace{}; }
    bool operator==(const VoicePlace&) const = default;
};

}  // namespace melvane
