#include "engine/graph/limiter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {

constexpr int kPhases = 4;
constexpr int kTaps = 2 * static_cast<int>(Limiter::kHalfTaps);
// -0.77 dBTP: measured on noise, the interpolation sees up to 0.65 dB too little of what lies at the top of the band.
constexpr float kCeiling = 0.915F;
// A sinc of this length adds up to less than this: quieter surroundings hold no peak beyond the ceiling.
constexpr float kQuiet = 0.4F;
// Longer than beats between a tone and the sample rate hide its peaks.
constexpr std::uint64_t kWork = 4410;
constexpr double kReleaseSeconds = 0.15;  // long enough not to follow the lowest notes
constexpr double kReleased = 1e-4;        // 0.001 dB: then samples pass bit by bit again

using Phase = std::array<float, kTaps>;

// Interpolators for 1/4, 2/4 and 3/4 of the way to the next frame.
std::array<Phase, kPhases - 1> makePhases() {
    std::array<Phase, kPhases - 1> phases{};
    for (int p = 1; p < kPhases; ++p) {
        double sum = 0;
        std::array<double, kTaps> taps{};
        for (int t = 0; t < kTaps; ++t) {
            const double x = t - (kTaps / 2 - 1) - static_cast<double>(p) / kPhases;
            const double window = std::cos(std::numbers::pi * x / kTaps);
            taps[static_cast<std::size_t>(t)] = std::sin(std::numbers::pi * x) / (std::numbers::pi * x) * window;
            sum += taps[static_cast<std::size_t>(t)];
        }
        for (std::size_t t = 0; t < taps.size(); ++t)
            phases[static_cast<std::size_t>(p - 1)][t] = static_cast<float>(taps[t] / sum);
    }
    return phases;
}

const std::array<Phase, kPhases - 1> kInterpolators = makePhases();
const double kReleaseStep = std::exp(-1.0 / (kReleaseSeconds * kSampleRate));

float peakOf(float left, float right) {
    return std::max(std::abs(left), std::abs(right));
}

}  // namespace

void Limiter::reset() {
    ring_.fill({});
    // Far from 0, so that frames before the start have numbers too.
    now_ = kWork + kRing;
    lastOver_ = 0;
    reduction_ = 0;
    firstCandidate_ = candidateCount_ = 0;
    held_.fill(1);
    heldSum_ = kLookAhead;
}

float Limiter::process(float* block, std::size_t frames) {
    leastGain_ = 1;
    for (std::size_t i = 0; i < frames; ++i) {
        const Frame out = step({block[2 * i], block[2 * i + 1]});
        block[2 * i] = out.left;
        block[2 * i + 1] = out.right;
    }
    return 1 - leastGain_;
}

Limiter::Frame Limiter::step(Frame in) {
    ring_[now_ % kRing] = in;
    if (peakOf(in.left, in.right) > 1.0F) lastOver_ = now_;
    const float demand = demandAt(now_ - kHalfTaps);
    reduction_ = std::max(1 - static_cast<double>(demand), reduction_ * kReleaseStep);
    if (reduction_ < kReleased) reduction_ = 0;
    const float held = heldMinimum(static_cast<float>(1 - reduction_));
    float& oldest = held_[now_ % kLookAhead];
    heldSum_ += static_cast<double>(held) - static_cast<double>(oldest);
    oldest = held;
    const auto gain = static_cast<float>(heldSum_ / kLookAhead);
    leastGain_ = std::min(leastGain_, gain);
    const Frame out = at(now_ - kDelay);
    ++now_;
    return {out.left * gain, out.right * gain};
}

// 1 unless a sample beyond full scale is near or was there of late.
float Limiter::demandAt(std::uint64_t centre) const {
    const bool atWork = lastOver_ + kWork >= centre;
    if (!atWork) return 1;
    const float peak = truePeakAt(centre);
    return peak > kCeiling ? kCeiling / peak : 1;
}

float Limiter::truePeakAt(std::uint64_t centre) const {
    const std::uint64_t first = centre - (kHalfTaps - 1);
    float loudest = 0;
    for (std::size_t t = 0; t < kTaps; ++t)
        loudest = std::max(loudest, peakOf(at(first + t).left, at(first + t).right));
    if (loudest < kQuiet) return loudest;
    float peak = peakOf(at(centre).left, at(centre).right);
    for (const Phase& phase : kInterpolators) {
        float left = 0;
        float right = 0;
        for (std::size_t t = 0; t < kTaps; ++t) {
            left += phase[t] * at(first + t).left;
            right += phase[t] * at(first + t).right;
        }
        peak = std::max(peak, peakOf(left, right));
    }
    return peak;
}

float Limiter::heldMinimum(float demand) {
    const auto candidate = [this](std::size_t i) -> Candidate& {
        return candidates_[(firstCandidate_ + i) % kLookAhead];
    };
    while (candidateCount_ > 0 && candidate(candidateCount_ - 1).gain >= demand) --candidateCount_;
    if (candidateCount_ > 0 && candidate(0).frame + kLookAhead <= now_) {
        firstCandidate_ = (firstCandidate_ + 1) % kLookAhead;
        --candidateCount_;
    }
    candidate(candidateCount_++) = {now_, demand};
    return candidate(0).gain;
}

}  // namespace melvane::engine
