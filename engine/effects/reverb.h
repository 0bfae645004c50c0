// A room as a feedback delay network (J.-M. Jot, A. Chaigne, "Digital Delay Networks for Designing Artificial
// Reverberators", 1991). Sixteen delay lines of prime lengths between 20 and 80 ms come back through a Hadamard matrix,
// which keeps the energy; each line ends in a filter that takes exactly what its length costs of the decay:
//     gain at 1 kHz             10^(-3 length / time)
//     at the highest frequency  that ^ (1 / fHighFreqRTRatio)
//     at 0 Hz                   that ^ (1 / k), k = 1 + 0.1 (1 - fHighFreqRTRatio): a little longer, but ending
// Its gain lies between the outer two at all frequencies, also while it glides, so that the network is always stable.
//
// Each side passes four allpasses (M. R. Schroeder, 1962) before it enters, and is heard behind them as the beginning
// of the reverberation, until the lines answer. Four lines are slowly moved by some frames, which keeps single modes
// from ringing. The wet sound is brought to the loudness of the dry one for any time, at a fReverbMix of 0 dB; at -96
// dB it is silent and the network is left empty. The dry sound is never touched.
#pragma once

#include <array>
#include <vector>

#include "engine/effects/delay_line.h"
#include "engine/effects/oscillator.h"
#include "engine/effects/record_effect.h"

namespace melvane::engine {

inline constexpr std::size_t kReverbLines = 16;
inline constexpr std::size_t kDiffusers = 4;  // a side

// The filters are (b0 + b1/z) / (1 + a1/z).
struct ReverbValues {
    std::array<float, kReverbLines> b0, b1, a1;
    std::array<float, 2 * kDiffusers> diffusion;
    float in, early, wet;
};

class Reverb final : public RecordEffect<ReverbRecord, ReverbValues, float> {
public:
    Reverb();

private:
    struct FilterState {
        float in1, out1;  // of the last frame
    };

    ReverbValues goalOf(const ReverbRecord& record) override;
    void render(float* block, std::size_t frames, const ReverbValues& values) override;
    void renderChunk(float* block, std::size_t frames, const ReverbValues& values);
    void diffuse(std::size_t side, std::size_t frames, const ReverbValues& values);
    void readLines(std::size_t frames, const ReverbValues& values);
    void readMoved(std::size_t moved, std::size_t frames);
    void absorb(std::size_t first, std::size_t frames, const ReverbValues& values);
    void addWet(float* block, std::size_t frames, const ReverbValues& values) const;
    void writeLines(std::size_t frames);
    void clear(std::int64_t frame, const ReverbValues& values) override;
    bool lastsWith(const ReverbValues& values) const override { return values.wet != 0; }
    void empty();

    std::vector<DelayLine> lines_;
    std::array<FilterState, kReverbLines> filters_{};
    std::vector<DelayLine> diffusers_;  // four of the left side, four of the right
    std::array<Turning, 4> turnings_{Turning(0), Turning(kQuarterTurn), Turning(2 * kQuarterTurn),
                                     Turning(3 * kQuarterTurn)};
    std::array<Row<float>, kReverbLines> rows_{};  // of the chunk in work: what the lines give, then what they take
    std::array<Row<float>, 2> diffused_{};
    bool empty_ = true;
};

}  // namespace melvane::engine
