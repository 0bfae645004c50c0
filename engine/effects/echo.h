// Repetitions of the sound. For each side
//     line(t) = dry(t) + feedback * wet(t)      wet(t) = line(t - delay)
//     out(t)  = (1 - mix) * dry(t) + mix * wet(t)
// and with lPanDelay = 1 the feedback of each side comes from the other one, so that repetitions change sides. Delays
// are whole frames; a changed one is faded over to. A delay of 0 gives the dry sound and has no repetitions.
#pragma once

#include <array>

#include "engine/effects/crossfade.h"
#include "engine/effects/delay_line.h"
#include "engine/effects/record_effect.h"

namespace melvane::engine {

struct EchoValues {
    float mix, feedback, swap;  // 0..1
};

class Echo final : public RecordEffect<EchoRecord, EchoValues, float> {
public:
    Echo();

private:
    using Delays = std::array<std::size_t, 2>;  // of both sides, in frames

    EchoValues goalOf(const EchoRecord& record) override;
    void render(float* block, std::size_t frames, const EchoValues& values) override;
    void clear(std::int64_t frame, const EchoValues& values) override;
    bool lastsWith(const EchoValues& values) const override { return values.mix > 0; }
    std::size_t straightFrames() const;
    void renderChunk(float* block, std::size_t frames, const EchoValues& values);

    std::array<DelayLine, 2> lines_;
    Crossfade<Delays> delays_;
};

}  // namespace melvane::engine
