#include "engine/effects/parametric_eq.h"

#include <numbers>

#include "platform/audio_library.h"

namespace melvane::engine {

namespace {

// The denominator of a boost of `peak` = A: 1 + a1/z + a2/z^2.
Biquad boostPoles(double w0, double octaves, double a) {
    const double damping = std::sinh(std::numbers::ln2 / 2 * octaves) / a;
    const double decay = std::exp(-damping * w0);
    const double turn = damping <= 1 ? std::cos(std::sqrt(1 - damping * damping) * w0)
                                     : std::cosh(std::sqrt(damping * damping - 1) * w0);
    return {.a1 = -2 * decay * turn, .a2 = decay * decay};
}

// Works on squared magnitudes, which are sums of cos^2(w/2), sin^2(w/2) and sin^2(w) with weights: `d` of the
// denominator, `n` of the numerator.
void matchNumerator(Biquad& band, double w0, double a) {
    const double sin2 = std::pow(std::sin(w0 / 2), 2);
    const double cos2 = 1 - sin2;
    const double d0 = std::pow(1 + band.a1 + band.a2, 2);
    const double d1 = std::pow(1 - band.a1 + band.a2, 2);
    const double d2 = -4 * band.a2;
    const double top = std::pow(a, 4) * (d0 * cos2 + d1 * sin2 + d2 * 4 * cos2 * sin2);
    const double slope = std::pow(a, 4) * (d1 - d0 + 4 * (cos2 - sin2) * d2);
    const double n0 = d0;
    const double n2 = (top - slope * sin2 - n0) / (4 * sin2 * sin2);
    const double n1 = slope + n0 + 4 * (sin2 - cos2) * n2;
    const double sum = (std::sqrt(n0) + std::sqrt(n1)) / 2;
    band.b0 = (sum + std::sqrt(sum * sum + n2)) / 2;
    band.b1 = (std::sqrt(n0) - std::sqrt(n1)) / 2;
    band.b2 = -n2 / (4 * band.b0);
}

}  // namespace

Biquad peakingBand(double centre, double bandwidth, double gain) {
    const double w0 = 2 * std::numbers::pi * centre / kSampleRate;
    const double a = std::pow(10, std::abs(gain) / 40);
    Biquad boost = boostPoles(w0, bandwidth / 12, a);
    if (gain == 0) return {1, boost.a1, boost.a2, boost.a1, boost.a2};
    matchNumerator(boost, w0, a);
    if (gain > 0) return boost;
    return {1 / boost.b0, boost.a1 / boost.b0, boost.a2 / boost.b0, boost.b1 / boost.b0, boost.b2 / boost.b0};
}

Biquad ParametricEq::goalOf(const ParametricEqRecord& record) {
    return peakingBand(static_cast<double>(limited(record.fCenter, 80, 16000)),
                       static_cast<double>(limited(record.fBandwidth, 1, 36)),
                       static_cast<double>(limited(record.fGain, -15, 15)));
}

void ParametricEq::render(float* block, std::size_t frames, const Biquad& band) {
    if (!band.flat()) {
        flatFrames_ = 0;
        filter(block, frames, band);
        return;
    }
    const std::size_t count = std::min(frames, kRestFrames - flatFrames_);
    if (count == 0) return;
    filter(block, count, band);
    flatFrames_ += count;
    if (flatFrames_ == kRestFrames) state_ = State{};
}

void ParametricEq::clear(std::int64_t, const Biquad& band) {
    state_ = State{};
    flatFrames_ = band.flat() ? kRestFrames : 0;
}

// The states follow from the sound alone, not from what comes out, so that a frame waits as shortly as possible for the
// one before it: first' = (b1 - a1 b0) in + second - a1 first.
void ParametricEq::filter(float* block, std::size_t frames, const Biquad& band) {
    const auto [b0, b1, b2, a1, a2] = band;
    const double c1 = b1 - a1 * b0, c2 = b2 - a2 * b0;
    auto [first, second] = state_;
    for (std::size_t i = 0; i < frames; ++i) {
        const Sides in = {static_cast<double>(block[2 * i]), static_cast<double>(block[2 * i + 1])};
        const Sides out = b0 * in + first;
        const Sides next = c1 * in + second - a1 * first;
        second = c2 * in - a2 * first;
        first = next;
        block[2 * i] = static_cast<float>(out[0]);
        block[2 * i + 1] = static_cast<float>(out[1]);
    }
    state_ = {first, second};
}

}  // namespace melvane::engine
