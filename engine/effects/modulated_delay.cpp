#include "engine/effects/modulated_delay.h"

#include "engine/effects/interpolation.h"
#include "engine/effects/oscillator.h"
#include "platform/audio_library.h"

namespace melvane::engine {

namespace {

// ms
template <typename Record>
constexpr float kLongest = 0;
template <>
constexpr float kLongest<ChorusRecord> = 20;
template <>
constexpr float kLongest<FlangerRecord> = 4;

constexpr double kFramesPerMs = kSampleRate / 1000.0;

// Twice the longest delay, at full depth, and the neighbours that are read around it.
template <typename Record>
constexpr auto kLineFrames = static_cast<std::size_t>(2 * kLongest<Record> * kFramesPerMs) + 8;

double ageAt(const Sweep& sweep, double phase, std::size_t side) {
    double wave = triangle(phase + static_cast<double>(side) * sweep.ahead);
    if (sweep.sine) wave = sineOfTriangle(wave);
    return std::max(1.0, sweep.delay * (1 + sweep.depth * wave));
}

}  // namespace

template <typename Record>
ModulatedDelay<Record>::ModulatedDelay() : lines_{DelayLine(kLineFrames<Record>), DelayLine(kLineFrames<Record>)} {}

template <typename Record>
ModulatedDelayValues ModulatedDelay<Record>::goalOf(const Record& record) {
    const auto within = [](float value, float least, float most) {
        return static_cast<double>(limited(value, least, most));
    };
    sweep_.aim({.delay = within(record.fDelay, 0, kLongest<Record>) * kFramesPerMs,
                .depth = within(record.fDepth, 0, 100) / 100,
                .ahead = (std::min(record.lPhase, 4U) - 2.0) / 4,
                .sine = record.lWaveform != kWaveformTriangle});
    return {.mix = within(record.fWetDryMix, 0, 100) / 100,
            .feedback = within(record.fFeedback, -99, 99) / 100,
            .rate = within(record.fFrequency, 0, 10) / kSampleRate};
}

template <typename Record>
float ModulatedDelay<Record>::goThrough(std::size_t side, float dry, float feedback) {
    DelayLine& line = lines_[side];
    line.push(dry);
    const float wet = sweep_.heard([&](const Sweep& sweep) {
        const Between read = readBetween(line, ageAt(sweep, phase_, side));
        // A short delay hears the newest sample, in which its own feedback is still missing.
        return read.value / (1 - read.current * feedback);
    });
    line.newest() = bounded(dry + feedback * wet);
    return wet;
}

template <typename Record>
void ModulatedDelay<Record>::render(float* block, std::size_t frames, const ModulatedDelayValues& values) {
    const auto mix = static_cast<float>(values.mix);
    const auto feedback = static_cast<float>(values.feedback);
    const bool inaudible = mix == 0 && feedback == 0;
    for (float* frame = block; frame != block + frames * 2; frame += 2) {
        sweep_.advance();
        for (std::size_t side = 0; side < 2; ++side) {
            if (inaudible) {
                lines_[side].push(frame[side]);
                continue;
            }
            const float wet = goThrough(side, frame[side], feedback);
            if (mix > 0) frame[side] = (1 - mix) * frame[side] + mix * wet;
        }
        phase_ += values.rate;
        if (phase_ >= 1) phase_ -= 1;
    }
}

template class ModulatedDelay<ChorusRecord>;
template class ModulatedDelay<FlangerRecord>;

}  // namespace melvane::engine
