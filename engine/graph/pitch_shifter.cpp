#include "engine/graph/pitch_shifter.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "engine/graph/denormals.h"
#include "platform/audio_library.h"

namespace melvane::engine {

using RubberBand::RubberBandStretcher;

namespace {

// Measured on drum hits between -5 and 5 semitones: the engine sets attacks this many frames earlier than the
// delay that it reports would have them.
std::int64_t attackLead(double scale) {
    const double shift = scale - 1;
    return std::llround(shift < 0 ? 68 * shift : 135 * shift + 230 * shift * shift);
}

}  // namespace

void PitchShifter::Side::restart(double newScale) {
    scale = newScale;
    engine.reset();
    resampler.reset(soxr_create(scale, 1, 1, nullptr, nullptr, nullptr, nullptr));
    if (!resampler) throw std::bad_alloc();
    waiting.clear();
    ready.clear();
}

void PitchShifter::Side::process() {
    const DenormalsOff denormalsOff;  // for the right side's thread
    // Made where it is used: on the thread that processes. A new one each time, since one that was reset still glides
    // from its old ratio.
    if (!engine) {
        engine.emplace(kSampleRate, 1,
                       RubberBandStretcher::OptionProcessRealTime | RubberBandStretcher::OptionEngineFiner, scale, 1.0);
        engine->setMaxProcessSize(kMostResampled);
        return;
    }
    // The engine has the shorter sound to work on: that is cheaper, and at -5 a held chord stands 8 dB further above
    // its artefacts.
    const std::span<const float> shifted = scale > 1 ? stretch(resample(input)) : resample(stretch(input));
    ready.insert(ready.end(), shifted.begin(), shifted.end());
}

std::span<const float> PitchShifter::Side::stretch(std::span<const float> sound) {
    waiting.insert(waiting.end(), sound.begin(), sound.end());
    std::size_t taken = 0;
    std::size_t made = 0;
    for (std::size_t need = 0; (need = engine->getSamplesRequired()) <= waiting.size() - taken;) {
        const float* const in[] = {waiting.data() + taken};
        engine->process(in, need, false);
        taken += need;
        float* const out[] = {stretched.data() + made};
        const int available = std::clamp(engine->available(), 0, static_cast<int>(stretched.size() - made));
        made += engine->retrieve(out, static_cast<std::size_t>(available));
    }
    waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(taken));
    return {stretched.data(), made};
}

std::span<const float> PitchShifter::Side::resample(std::span<const float> sound) {
    std::size_t got = 0;
    soxr_process(resampler.get(), sound.data(), sound.size(), nullptr, resampled.data(), resampled.size(), &got);
    return {resampled.data(), got};
}

PitchShifter::PitchShifter(SourceWindow& source) : source_(source), right_([this] { sides_[1].process(); }) {}

void PitchShifter::processBoth() {
    right_.start();
    sides_[0].process();
    right_.wait();
}

void PitchShifter::start(std::int64_t frame, float semitones) {
    const double scale = std::exp2(static_cast<double>(semitones) / 12.0);
    for (Side& side : sides_) side.restart(scale);
    processBoth();
    const RubberBandStretcher& engine = *sides_[0].engine;
    const auto pad = static_cast<double>(engine.getPreferredStartPad());
    const auto delay = static_cast<double>(engine.getStartDelay());
    nextInput_ = frame - std::llround(pad * std::max(scale, 1.0)) - attackLead(scale);
    std::array<float, kStep * kSides> dropped;
    for (auto left = static_cast<std::size_t>(std::llround(delay / std::min(scale, 1.0))); left > 0;) {
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
    for (std::size_t i = 0; i < kStep * kSides; ++i) sides_[i % kSides].input[i / kSides] = step_[i];
    processBoth();
}

std::size_t PitchShifter::take(float* out, std::size_t frames) {
    for (const Side& side : sides_) frames = std::min(frames, side.ready.size());
    for (std::size_t s = 0; s < kSides; ++s) {
        std::vector<float>& ready = sides_[s].ready;
        for (std::size_t i = 0; i < frames; ++i) out[kSides * i + s] = ready[i];
        ready.erase(ready.begin(), ready.begin() + static_cast<std::ptrdiff_t>(frames));
    }
    return frames;
}

}  // namespace melvane::engine
