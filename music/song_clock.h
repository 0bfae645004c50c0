// From a song's ticks to frames of the card, without rounding on the way.
#pragma once

#include <cstdint>

namespace melvane::music {

class SongClock {
public:
    // `division` as in the file's header: ticks in a beat, or with the high bit set SMPTE frames in a second (24, 25,
    // 29 for 30000 / 1001, or 30) and ticks in one of these. Another one throws MusicError.
    explicit SongClock(std::uint16_t division);

    // From here on; 120 beats a minute before the first. 0 changes nothing, nor does any where time is SMPTE.
    void setTempo(std::uint32_t microsecondsPerBeat);
    // False, and the clock stays, where these are more than ten minutes.
    bool advance(std::int64_t ticks);
    // At 44100 Hz, to the nearest, from where the clock began. The clock must not go beyond days.
    std::int64_t frame() const;

private:
    // A frame is perFrame_ / perUnit_ units: of 1 microsecond / ticks in a beat, or of one tick where time is SMPTE.
    std::int64_t perUnit_ = 0;
    std::int64_t perFrame_ = 0;
    std::int64_t units_ = 0;
    std::int64_t unitsPerTick_ = 1;
    bool smpte_ = false;
};

}  // namespace melvane::music
