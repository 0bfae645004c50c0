// Moves the key of a source without moving its time. Mixing thread only; the right side is worked on beside it, on
// a second core where there is one.
#pragma once

#include <rubberband/RubberBandStretcher.h>
#include <soxr.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "engine/graph/source_window.h"
#include "engine/graph/worker.h"

namespace melvane::engine {

class PitchShifter {
public:
    explicit PitchShifter(SourceWindow& source);

    // The next frame read will be the shifted `frame`; -12 to 12 semitones, not 0. The engine is fed with what the
    // source plays before that frame, and its delay is taken off, so that attacks stay within 1 ms of the source's.
    void start(std::int64_t frame, float semitones);
    void read(float* out, std::size_t frames);

private:
    // Always the same step, so that the output does not depend on how it is asked for; a long one, since the engine's
    // tables have left the processor's caches by the next. It takes a tenth of the time that it sounds.
    static constexpr std::size_t kStep = 4096;
    static constexpr std::size_t kSides = 2;
    static constexpr std::size_t kMostResampled = 2 * kStep;  // of a step, an octave down

    struct DeleteResampler {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };

    // The engine changes the duration alone, the resampler the key with it, at a fraction of what the engine's own
    // would cost. The sides share nothing in the engine either; two engines give what one for both would.
    struct Side {
        void restart(double newScale);
        // Shifts the step in `input` into `ready`; makes the engine when there is none.
        void process();
        // Gives the engine what it needs for one hop at a time: with other amounts it wanders by up to 5 ms.
        std::span<const float> stretch(std::span<const float> sound);
        std::span<const float> resample(std::span<const float> sound);

        std::optional<RubberBand::RubberBandStretcher> engine;
        std::unique_ptr<soxr, DeleteResampler> resampler;
        std::array<float, kStep> input{};
        std::array<float, kMostResampled> stretched{};
        std::vector<float> waiting;  // for the engine's next hop
        std::array<float, kMostResampled> resampled{};
        std::vector<float> ready;  // shifted, not read yet
        double scale = 1;
    };

    void feed();
    void processBoth();
    // Up to `frames` of what both sides have ready.
    std::size_t take(float* out, std::size_t frames);

    SourceWindow& source_;
    std::array<Side, kSides> sides_;
    std::int64_t nextInput_ = 0;
    std::array<float, kStep * kSides> step_{};
    Worker right_;
};

}  // namespace melvane::engine
