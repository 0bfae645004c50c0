// The events of a track chunk that make sound or time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace melvane::music {

enum class TrackEventKind : std::uint8_t { kChannel, kSysex, kTempo, kEndOfTrack };

struct TrackEvent {
    std::int64_t tick = 0;    // from the track's beginning
    std::uint32_t value = 0;  // index of the system exclusive message, or microseconds in a beat
    TrackEventKind kind = TrackEventKind::kEndOfTrack;
    std::uint8_t status = 0;
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;
};

// Appends what can be read of the track, until there are `maxEvents` in all. Events come in the track's order, only
// that a message in pieces may stand behind later ones that are no messages. Returns the track's name as its bytes are,
// "" where it has none.
std::string readTrack(std::span<const std::uint8_t> track, std::size_t maxEvents, std::vector<TrackEvent>& events,
                      std::vector<std::vector<std::uint8_t>>& sysex);

}  // namespace melvane::music
