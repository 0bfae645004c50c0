#include "engine/effects/reverb.h"

#include <numbers>
#include <utility>

#include "engine/effects/interpolation.h"
#include "platform/audio_library.h"

namespace melvane::engine {

namespace {

constexpr std::array<std::size_t, kReverbLines> kLengths = {887,  971,  1069, 1171, 1283, 1409, 1543, 1693,
                                                            1861, 2039, 2237, 2447, 2689, 2953, 3229, 3527};
constexpr std::array<std::size_t, 2 * kDiffusers> kDiffuserLengths = {73, 109, 151, 199, 79, 107, 157, 193};
constexpr float kDiffusion = 0.6F;

constexpr std::array<std::size_t, 4> kMovedLines = {3, 6, 9, 12};
constexpr std::array<double, 4> kMoveRates = {0.47, 0.61, 0.73, 0.89};  // Hz
constexpr double kMove = 12;                                            // frames to each side

constexpr std::size_t kTogether = 4;

constexpr double kSmear = 0.008;        // s; by how much the allpasses lengthen every decay, as measured
constexpr double kShortestTime = 0.01;  // s; what is shorter is heard as one reflection anyway
constexpr float kSilent = -96;

// The signs of a bent function of the line's number: unlike every row of the matrix in the same degree.
constexpr float sign(std::size_t line) {
    return ((line & line >> 1 & 1) ^ (line >> 2 & line >> 3 & 1)) != 0 ? -1.0F : 1.0F;
}

constexpr std::size_t sideInto(std::size_t line) {
    return line >> 1 & 1;
}

double squaredTangent(double hertz) {
    return std::pow(std::tan(std::numbers::pi * hertz / kSampleRate), 2);
}

double secondsOf(std::size_t frames) {
    return static_cast<double>(frames) / kSampleRate;
}

// The filter at the end of a line as it is designed: (low corner + high s) / (corner + s), s = i tan(w/2).
struct Absorption {
    double low, high, corner;

    double power(double hertz) const {
        const double s2 = squaredTangent(hertz);
        return (low * low * corner * corner + high * high * s2) / (corner * corner + s2);
    }
};

using Absorptions = std::array<Absorption, kReverbLines>;

Absorptions absorptionsFor(double time, double highRatio) {
    Absorptions absorptions;
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        const double middle = std::pow(10, -3 * secondsOf(kLengths[i]) / time);
        const double low = std::pow(middle, 1 / (1 + 0.1 * (1 - highRatio)));
        const double high = std::pow(middle, 1 / highRatio);
        const double ratio = (middle * middle - high * high) / (low * low - middle * middle);
        absorptions[i] = {low, high, std::sqrt(ratio * squaredTangent(1000))};
    }
    return absorptions;
}

// What would sound before the first line answers, of a decay that began at once.
double earlyPower(double time) {
    double meanLength = 0;
    for (const std::size_t length : kLengths) meanLength += secondsOf(length) / kReverbLines;
    const double decay = 6 * std::numbers::ln10 / time;
    return (1 - std::exp(-decay * secondsOf(kLengths.front()))) / (decay * meanLength);
}

// The power of the lines' sum for an input of power 1, as a mean over octaves. Energy that is spread evenly over the
// lines comes back with the mean of their power gains.
double latePower(const Absorptions& absorptions) {
    constexpr std::array<double, 8> kOctaves = {125, 250, 500, 1000, 2000, 4000, 8000, 16000};
    double sum = 0;
    for (const double hertz : kOctaves) {
        double kept = 0;
        for (const Absorption& absorption : absorptions) kept += absorption.power(hertz) / kReverbLines;
        sum += kept / (1 - kept);
    }
    return sum / kOctaves.size();
}

}  // namespace

Reverb::Reverb() {
    for (const std::size_t length : kLengths) lines_.emplace_back(length + static_cast<std::size_t>(kMove) + 4);
    for (const std::size_t length : kDiffuserLengths) diffusers_.emplace_back(length);
}

ReverbValues Reverb::goalOf(const ReverbRecord& record) {
    const double wanted = static_cast<double>(limited(record.fReverbTime, 0.001F, 3000)) / 1000;
    const double time = std::max(kShortestTime, wanted - kSmear);
    const auto highRatio = static_cast<double>(limited(record.fHighFreqRTRatio, 0.001F, 0.999F));
    const Absorptions absorptions = absorptionsFor(time, highRatio);
    ReverbValues values{};
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        const auto [low, high, corner] = absorptions[i];
        values.b0[i] = static_cast<float>((low * corner + high) / (corner + 1));
        values.b1[i] = static_cast<float>((low * corner - high) / (corner + 1));
        values.a1[i] = static_cast<float>((corner - 1) / (corner + 1));
    }
    // The allpasses end at least three times as fast as the room.
    for (std::size_t i = 0; i < kDiffuserLengths.size(); ++i)
        values.diffusion[i] =
            std::min(kDiffusion, static_cast<float>(std::pow(10, -9 * secondsOf(kDiffuserLengths[i]) / time)));
    const double early = earlyPower(time);
    const auto mix = limited(record.fReverbMix, kSilent, 0);
    values.early = static_cast<float>(std::sqrt(early));
    if (mix > kSilent) {
        values.in = static_cast<float>(amplitude(static_cast<double>(limited(record.fInGain, -96, 0))));
        values.wet =
            static_cast<float>(amplitude(static_cast<double>(mix)) / std::sqrt(early + latePower(absorptions)));
    }
    return values;
}

void Reverb::render(float* block, std::size_t frames, const ReverbValues& values) {
    if (values.wet == 0) {
        empty();
        return;
    }
    empty_ = false;
    for (std::size_t count = 0; frames > 0; frames -= count, block += 2 * count) {
        count = std::min(frames, kChunk);
        renderChunk(block, count, values);
    }
}

void Reverb::renderChunk(float* block, std::size_t frames, const ReverbValues& values) {
    for (std::size_t side = 0; side < 2; ++side) {
        for (std::size_t f = 0; f < frames; ++f) diffused_[side][f] = block[2 * f + side] * values.in;
        diffuse(side, frames, values);
    }
    readLines(frames, values);
    addWet(block, frames, values);
    writeLines(frames);
}

void Reverb::diffuse(std::size_t side, std::size_t frames, const ReverbValues& values) {
    Row<float>& sound = diffused_[side];
    for (std::size_t i = side * kDiffusers; i < (side + 1) * kDiffusers; ++i) {
        float* const in = diffusers_[i].append(frames);
        const float* const late = in - kDiffuserLengths[i];
        const float gain = values.diffusion[i];
        for (std::size_t f = 0; f < frames; ++f) {
            in[f] = sound[f] + gain * late[f];
            sound[f] = late[f] - gain * in[f];
        }
    }
}

void Reverb::readLines(std::size_t frames, const ReverbValues& values) {
    for (std::size_t i = 0; i < kReverbLines; ++i)
        std::copy_n(lines_[i].append(frames) - kLengths[i], frames, rows_[i].data());
    for (std::size_t i = 0; i < kMovedLines.size(); ++i) readMoved(i, frames);
    for (std::size_t i = 0; i < kReverbLines; i += kTogether) absorb(i, frames, values);
}

// Some lines side by side: each frame has to wait for the one before it.
void Reverb::absorb(std::size_t first, std::size_t frames, const ReverbValues& values) {
    std::array<FilterState, kTogether> states;
    std::copy_n(&filters_[first], kTogether, states.data());
    for (std::size_t f = 0; f < frames; ++f)
        for (std::size_t i = 0; i < kTogether; ++i) {
            const std::size_t line = first + i;
            auto& [in1, out1] = states[i];
            float& sample = rows_[line][f];
            out1 = values.b0[line] * sample + values.b1[line] * in1 - values.a1[line] * out1;
            in1 = std::exchange(sample, out1);
        }
    std::copy_n(states.data(), kTogether, &filters_[first]);
}

void Reverb::readMoved(std::size_t moved, std::size_t frames) {
    const std::size_t line = kMovedLines[moved];
    const auto length = static_cast<double>(kLengths[line]);
    Row<Phase> phases;
    turnings_[moved].advance(kMoveRates[moved] / kSampleRate, frames, phases);
    Row<double> ages;
    for (std::size_t f = 0; f < frames; ++f) ages[f] = length + kMove * sineOfTriangle(triangle(phases[f]));
    Taps taps;
    taps.aim(ages, frames);
    const float* const in = lines_[line].newest(frames);
    for (std::size_t f = 0; f < frames; ++f) rows_[line][f] = taps.read(in, f);
}

// The sides share the even lines and get the odd ones in opposite phase, which makes them independent of each other.
void Reverb::addWet(float* block, std::size_t frames, const ReverbValues& values) const {
    Row<float> even{};
    Row<float> odd{};
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        Row<float>& sum = i % 2 == 0 ? even : odd;
        for (std::size_t f = 0; f < frames; ++f) sum[f] += sign(i) * rows_[i][f];
    }
    for (std::size_t f = 0; f < frames; ++f) {
        block[2 * f] += values.wet * (even[f] + odd[f] + values.early * diffused_[0][f]);
        block[2 * f + 1] += values.wet * (even[f] - odd[f] + values.early * diffused_[1][f]);
    }
}

void Reverb::writeLines(std::size_t frames) {
    for (std::size_t half = 1; half < kReverbLines; half *= 2)
        for (std::size_t i = 0; i < kReverbLines; ++i)
            if ((i & half) == 0)
                for (std::size_t f = 0; f < frames; ++f) {
                    const float a = rows_[i][f];
                    const float b = rows_[i + half][f];
                    rows_[i][f] = a + b;
                    rows_[i + half][f] = a - b;
                }
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        float* const line = lines_[i].newest(frames);
        for (std::size_t f = 0; f < frames; ++f) line[f] = 0.25F * (rows_[i][f] + sign(i) * diffused_[sideInto(i)][f]);
    }
}

void Reverb::clear(std::int64_t frame, const ReverbValues&) {
    empty();
    for (std::size_t i = 0; i < turnings_.size(); ++i)
        turnings_[i].place(static_cast<Phase>(i) * kQuarterTurn, kMoveRates[i] / kSampleRate, frame);
}

void Reverb::empty() {
    if (empty_) return;
    for (DelayLine& line : lines_) line.clear();
    for (DelayLine& diffuser : diffusers_) diffuser.clear();
    filters_ = {};
    empty_ = true;
}

}  // namespace melvane::engine
