#include "platform/bass/graph/pitch_shifter.h"

#include <algorithm>
#include <cmath>

#include "platform/audio_library.h"

namespace melvane::bass {

using RubberBand::RubberBandStretcher;

namespace {

// Measured on drum hits between -5 and 5 semitones: the engine sets attacks this many frames earlier than the
// delay that it reports would have them.
std::int64_t attackLead(double scale) {
    return std::llround(90 * scale * (scale - 1));
}

}  // namespace

PitchShifter::PitchShifter(SourceWindow& source)
    : source_(source),
      engine_(kSampleRate, 2,
              RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner |
                  RubberBandStretcher::OptionPitchHighConsistency) {
    engine_.setMaxProcessSize(kStep);
}

void PitchShifter::start(std::int64_t frame, float semitones) {
    engine_.reset();
    const double scale = std::exp2(static_cast<double>(semitones) / 12.0);
    engine_.setPitchScale(scale);
    nextInput_ = frame - static_cast<std::int64_t>(engine_.getPreferredStartPad()) - attackLead(scale);
    std::array<float, kStep * 2> dropped;
    for (std::size_t left = engine_.getStartDelay(); left > 0;) {
        const std::size_t got = take(dropped.data(), std::min(left, kStep));
        if (got == 0) feed();
        left -= got;
    }
}

void PitchShifter::read(float* out, std::size_t frames) {
    while (frames > 0) {
        const std::size_t got = take(out, std::min(frames, kStep));
        if (got == 0) feed();
        out += got * 2;
        frames -= got;
    }
}

void PitchShifter::feed() {
    source_.read(nextInput_, step_.data(), kStep);
    nextInput_ += static_cast<std::int64_t>(kStep);
    for (std::size_t i = 0; i < kStep; ++i) {
        planes_[0][i] = step_[2 * i];
        planes_[1][i] = step_[2 * i + 1];
    }
    const float* const planes[] = {planes_[0].data(), planes_[1].data()};
    engine_.process(planes, kStep, false);
}

std::size_t PitchShifter::take(float* out, std::size_t frames) {
    const int ready = std::max(engine_.available(), 0);
    frames = std::min(frames, static_cast<std::size_t>(ready));
    if (frames == 0) return 0;
    float* const planes[] = {planes_[0].data(), planes_[1].data()};
    frames = engine_.retrieve(planes, frames);
    for (std::size_t i = 0; i < frames; ++i) {
        out[2 * i] = planes_[0][i];
        out[2 * i + 1] = planes_[1][i];
    }
    return frames;
}

}  // namespace melvane::bass
