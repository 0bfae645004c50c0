// What a song sounds on. Mixing thread.
#pragma once

#include <cstddef>

#include "music/midi_sink.h"

namespace melvane::music {

// Frames rendered at a time; messages act in between.
inline constexpr std::size_t kPieceFrames = 64;

class Instrument : public MidiSink {
public:
    // The song's frame `frame` is next, as if nothing had been before.
    virtual void begin(std::int64_t frame) = 0;
    // The next kPieceFrames stereo frames.
    virtual void render(float* out) = 0;
    // Nothing is to be heard any more, unless further messages come.
    virtual bool silent() const = 0;
    // It sounds outside, where nothing can be rendered that is not heard.
    virtual bool outside() const { return false; }
    // A bit for each channel that can be heard, of which those of `keysDown` have a key down.
    virtual std::uint16_t sounding(std::uint16_t keysDown) const { return keysDown; }
};

}  // namespace melvane::music
