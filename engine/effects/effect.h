// An effect on a channel: takes its record on one thread and works on another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/effect_records.h"

namespace melvane::engine {

class Effect {
public:
    virtual ~Effect() = default;

    // User-interface thread. False for the record of another type. A record that is set before the first frame
    // holds from it on; later ones are reached by ramps that count frames, not blocks.
    virtual bool set(const EffectRecord& record) = 0;
    // User-interface thread: the record as it was set.
    virtual EffectRecord get() const = 0;

    // Mixing thread: `frames` stereo frames in place. Allocates nothing.
    virtual void process(float* block, std::size_t frames) = 0;
    // Mixing thread: the next frame is the song's frame `frame`, as if only silence had been before, with the newest
    // record. Oscillators are where they would have come from frame 0 on.
    virtual void restart(std::int64_t frame) = 0;
    // Mixing thread: with the newest record its sound goes on for longer than a second.
    virtual bool lasts() = 0;
};

// An effect for 44100 Hz with its default record.
std::unique_ptr<Effect> makeEffect(EffectType type);

}  // namespace melvane::engine
