#include "engine/effects/modulated_delay.h"

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

// What a side reads that is `ahead` of the phases.
Row<double> agesOf(const Sweep& sweep, Phase ahead, const Row<Phase>& phases, std::size_t frames) {
    const auto [delay, depth, rightAhead, sine] = sweep;
    Row<double> ages;
    for (std::size_t f = 0; f < frames; ++f) {
        const double wave = triangle(phases[f] + ahead);
        ages[f] = std::max(1.0, delay * (1 + depth * (sine ? sineOfTriangle(wave) : wave)));
    }
    return ages;
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
                .ahead = (std::min(record.lPhase, 4U) - 2) * kQuarterTurn,
                .sine = record.lWaveform != kWaveformTriangle});
    return {.mix = within(record.fWetDryMix, 0, 100) / 100,
            .feedback = within(record.fFeedback, -99, 99) / 100,
            .rate = within(record.fFrequency, 0, 10) / kSampleRate};
}

template <typename Record>
void ModulatedDelay<Record>::render(float* block, std::size_t frames, const ModulatedDelayValues& values) {
    const auto mix = static_cast<float>(values.mix);
    const auto feedback = static_cast<float>(values.feedback);
    for (std::size_t count = 0; frames > 0; frames -= count, block += 2 * count) {
        sweep_.advance();
        count = sweep_.resting() ? std::min(frames, kChunk) : 1;
        Row<Phase> phases;
        turning_.advance(values.rate, count, phases);
        if (mix == 0 && feedback == 0) {
            push(block, count);
            continue;
        }
        aim(phases, count, feedback);
        goThrough(block, count, mix, feedback);
    }
}

template <typename Record>
void ModulatedDelay<Record>::clear(std::int64_t frame, const ModulatedDelayValues& values) {
    for (DelayLine& line : lines_) line.clear();
    sweep_.finish();
    turning_.place(0, values.rate, frame);
}

template <typename Record>
void ModulatedDelay<Record>::push(const float* block, std::size_t frames) {
    for (std::size_t side = 0; side < 2; ++side) {
        float* line = lines_[side].append(frames);
        for (std::size_t f = 0; f < frames; ++f) line[f] = block[2 * f + side];
    }
}

template <typename Record>
void ModulatedDelay<Record>::aim(const Row<Phase>& phases, std::size_t frames, float feedback) {
    for (std::size_t i = sweep_.fading() ? 0 : 1; i < 2; ++i)
        for (std::size_t side = 0; side < 2; ++side) {
            const Phase ahead = side == 0 ? 0 : sweep_[i].ahead;
            taps_[i][side].aimInLoop(agesOf(sweep_[i], ahead, phases, frames), frames, feedback);
        }
}

// Frame by frame: what a frame leaves in the line the next one may read.
template <typename Record>
void ModulatedDelay<Record>::goThrough(float* block, std::size_t frames, float mix, float feedback) {
    const std::array<float*, 2> lines = {lines_[0].append(frames), lines_[1].append(frames)};
    for (std::size_t f = 0; f < frames; ++f)
        for (std::size_t side = 0; side < 2; ++side) {
            float& sample = block[2 * f + side];
            float& now = lines[side][f];
            now = sample;
            const float wet = sweep_.heard([&](std::size_t i) { return taps_[i][side].read(lines[side], f); });
            now = bounded(sample + feedback * wet);
            if (mix > 0) sample = (1 - mix) * sample + mix * wet;
        }
}

template class ModulatedDelay<ChorusRecord>;
template class ModulatedDelay<FlangerRecord>;

}  // namespace melvane::engine
