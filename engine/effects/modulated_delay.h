// Chorus and flanger: a delay moved by a slow oscillator. For each side
//     line(t)  = dry(t) + feedback * wet(t)     wet(t) = line(t - delay(t))
//     delay(t) = fDelay * (1 + depth * oscillator(t)), at least one frame
//     out(t)   = (1 - mix) * dry(t) + mix * wet(t)
// (J. Dattorro, "Delay-Line Modulation and Chorus", J. Audio Eng. Soc. 45, 1997). The oscillator is a triangle or a
// sine between -1 and 1 that begins at 0 and rises; the right side's is ahead by lPhase. Its phase goes on from where
// it is when its rate changes. A changed delay, depth, waveform or lPhase is faded over to.
#pragma once

#include <array>

#include "engine/effects/crossfade.h"
#include "engine/effects/delay_line.h"
#include "engine/effects/interpolation.h"
#include "engine/effects/oscillator.h"
#include "engine/effects/record_effect.h"

namespace melvane::engine {

struct ModulatedDelayValues {
    double mix, feedback;
    double rate;  // turns a frame
};

struct Sweep {
    double delay;  // frames
    double depth;  // 0..1
    Phase ahead;   // of the right side
    bool sine;     // or triangle

    bool operator==(const Sweep&) const = default;
};

// ChorusRecord or FlangerRecord.
template <typename Record>
class ModulatedDelay final : public RecordEffect<Record, ModulatedDelayValues, double> {
public:
    ModulatedDelay();

private:
    ModulatedDelayValues goalOf(const Record& record) override;
    void render(float* block, std::size_t frames, const ModulatedDelayValues& values) override;
    void clear(std::int64_t frame, const ModulatedDelayValues& values) override;
    bool lastsWith(const ModulatedDelayValues& values) const override { return values.mix > 0; }
    void push(const float* block, std::size_t frames);
    void aim(const Row<Phase>& phases, std::size_t frames, float feedback);
    void goThrough(float* block, std::size_t frames, float mix, float feedback);

    std::array<DelayLine, 2> lines_;
    Crossfade<Sweep> sweep_;
    Turning turning_;
    std::array<std::array<Taps, 2>, 2> taps_;  // of the chunk in work: for each sweep that is heard, for each side
};

using Chorus = ModulatedDelay<ChorusRecord>;
using Flanger = ModulatedDelay<FlangerRecord>;

}  // namespace melvane::engine
