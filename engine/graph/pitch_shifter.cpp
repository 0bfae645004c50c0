#include "engine/graph/pitch_shifter.h"

#include <algorithm>
#include <cmath>

#include "engine/graph/denormals.h"
#include "platform/audio_library.h"

namespace melvane::engine {

using RubberBand::RubberBandStretcher;

namespace {

// Measured on drum hits between -5 and 5 semitones: the engine sets attacks this many frames earlier than the
// delay that it reports would have them.
std::int64_t attackLead(double scale) {
    const double shift = scale - 1;
    return std::llround(shift < 0 ? 90 * scale * shift : 126 * shift + 1838 * shift * shift);
}

}  // namespace

void PitchShifter::Side::process() {
    const DenormalsOff denormalsOff;  // for the right side's thread
    // Made and set where it is used: on the thread that processes. A new one each time, since one that was reset
    // still glides from its old pitch. It never changes its pitch while it plays, so it need not be consistent over
    // changes: what is called the speed option is then also the clearest (a held chord at +5 stands 1.7 dB further
    // above the engine's artefacts).
    if (!engine) {
        engine.emplace(kSampleRate, 1,
                       RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner |
                           RubberBandStretcher::OptionPitchHighSpeed,
                       1.0, scale);
        engine->setMaxProcessSize(kStep);
        return;
    }
    const float* const planes[] = {plane.data()};
    engine->process(planes, kStep, false);
}

PitchShifter::PitchShifter(SourceWindow& source) : source_(source), right_([this] { sides_[1].process(); }) {}

void PitchShifter::processBoth() {
    right_.start();
    sides_[0].process();
    right_.wait();
}

void PitchShifter::start(std::int64_t frame, float semitones) {
    const double scale = std::exp2(static_cast<double>(semitones) / 12.0);
    for (Side& side : sides_) {
        side.scale = scale;
        side.engine.reset();
    }
    processBoth();
    const RubberBandStretcher& engine = *sides_[0].engine;
    nextInput_ = frame - static_cast<std::int64_t>(engine.getPreferredStartPad()) - attackLead(scale);
    std::array<float, kStep * kSides> dropped;
    for (std::size_t left = engine.getStartDelay(); left > 0;) {
        const std::size_t got = take(dropped.data(), std::min(left, kStep));
        if (got == 0) feed();
        left -= got;
    }
}

void PitchShifter::read(float* out, std::size_t frames) {
    while (frames > 0) {
        const std::size_t got = take(out, std::min(frames, kStep));
        if (got == 0) feed();
        out += got * kSides;
        frames -= got;
    }
}

void PitchShifter::feed() {
    source_.read(nextInput_, step_.data(), kStep);
    nextInput_ += static_cast<std::int64_t>(kStep);
    for (std::size_t i = 0; i < kStep * kSides; ++i) sides_[i % kSides].plane[i / kSides] = step_[i];
    processBoth();
}

std::size_t PitchShifter::take(float* out, std::size_t frames) {
    for (const Side& side : sides_)
        frames = std::min(frames, static_cast<std::size_t>(std::max(side.engine->available(), 0)));
    if (frames == 0) return 0;
    for (std::size_t s = 0; s < kSides; ++s) {
        float* const planes[] = {sides_[s].plane.data()};
        sides_[s].engine->retrieve(planes, frames);
        for (std::size_t i = 0; i < frames; ++i) out[kSides * i + s] = sides_[s].plane[i];
    }
    return frames;
}

}  // namespace melvane::engine
