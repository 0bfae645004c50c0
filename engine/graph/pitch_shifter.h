// Moves the key of a source without moving its time. Mixing thread only; the right side is worked on beside it, on
// a second core where there is one.
#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <array>
#include <cstdint>
#include <optional>

#include "engine/graph/source_window.h"
#include "engine/graph/worker.h"

namespace melvane::engine {

class PitchShifter {
public:
    explicit PitchShifter(SourceWindow& source);

    // The next frame read will be the shifted `frame`. The engine is fed with what the source plays before
    // that frame, and its delay is taken off, so that attacks stay within 1 ms of the source's.
    void start(std::int64_t frame, float semitones);
    void read(float* out, std::size_t frames);

private:
    // Always the same step, so that the output does not depend on how it is asked for; a long one, since the engine's
    // tables have left the processor's caches by the next.
    static constexpr std::size_t kStep = 2048;
    static constexpr std::size_t kSides = 2;

    // The sides share nothing in the engine either; two engines give what one for both would.
    struct Side {
        // Feeds the engine with the plane; makes it when there is none.
        void process();

        std::optional<RubberBand::RubberBandStretcher> engine;
        std::array<float, kStep> plane{};
        double scale = 1;
    };

    void feed();
    void processBoth();
    // Up to `frames` of what the engines have ready.
    std::size_t take(float* out, std::size_t frames);

    SourceWindow& source_;
    std::array<Side, kSides> sides_;
    std::int64_t nextInput_ = 0;
    std::array<float, kStep * kSides> step_{};
    Worker right_;
};

}  // namespace melvane::engine
