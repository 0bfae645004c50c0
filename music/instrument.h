// What a song sounds on. Mixing thread.
#pragma once

#include <cstddef>

#include "music/midi_sink.h"

namespace melvane::music {

// Frames rendered at a time; messages act in between.
inline constexpr std::size_t kPieceFrames = 64;

class Instrument : public MidiSink {
public:
    // The song begins: frame 0 is next, as if nothing had been before.
    virtual void begin() = 0;
    // The next kPieceFrames stereo frames.
    virtual void render(float* out) = 0;
    // Nothing is to be heard any more, unless further messages come.
    virtual bool silent() const = 0;
};

}  // namespace melvane::music
