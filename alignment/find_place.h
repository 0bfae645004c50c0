// Where a recording belongs in a song, from what its microphone caught of it. Pure computation: any thread, several at
// once.
#pragma once

#include <optional>

#include "alignment/coarse_search.h"
#include "alignment/imprint.h"

namespace melvane {

struct FoundPlace {
    double sync = 0;       // seconds of the song's time by which the recording begins before the song; behind it if < 0
    double driftPpm = 0;   // by how much the recording is longer than it should be; 0 of one below 30 s
    double certainty = 0;  // kCertain..1
};

inline constexpr double kCertain = 0.5;

// None when there is no trace of the song in the recording, or when it is not wanted any more.
std::optional<FoundPlace> findPlace(const Trace& song, const Trace& voice, const GoOn& goOn);

// The same by how loud each frequency is and when, to a few milliseconds: for a song that was moved into another key by
// something else than what the recording heard.
std::optional<FoundPlace> findPlaceByShades(const Trace& song, const Trace& voice, const GoOn& goOn);

}  // namespace melvane
