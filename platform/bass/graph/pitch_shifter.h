// Moves the key of a source without moving its time. Mixing thread only.
#pragma once

#include <rubberband/RubberBandStretcher.h>

#include <array>
#include <cstdint>
#include <vector>

#include "platform/bass/graph/source_window.h"

namespace melvane::bass {

class PitchShifter {
public:
    explicit PitchShifter(SourceWindow& source);

    // The next frame read will be the shifted `frame`. The engine is fed with what the source plays before
    // that frame, and its delay is taken off, so that attacks stay within 1 ms of the source's.
    void start(std::int64_t frame, float semitones);
    void read(float* out, std::size_t frames);

private:
    // Always the same step, so that the output does not depend on how it is asked for.
    static constexpr std::size_t kStep = 512;

    void feed();
    // Up to `frames` of what the engine has ready.
    std::size_t take(float* out, std::size_t frames);

    SourceWindow& source_;
    RubberBand::RubberBandStretcher engine_;
    std::int64_t nextInput_ = 0;
    std::array<float, kStep * 2> step_{};
    std::array<std::array<float, kStep>, 2> planes_{};
};

}  // namespace melvane::bass
