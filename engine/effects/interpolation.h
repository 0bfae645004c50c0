// Reading a delay line between its samples: Lagrange's polynomial through the neighbours (T. I. Laakso et al.,
// "Splitting the Unit Delay", 1996). Between the two middle ones of an even number of neighbours its gain is nowhere
// above 1, so that it can stand in a feedback loop.
#pragma once

#include <array>
#include <cstdint>

#include "engine/effects/chunk.h"

namespace melvane::engine {

using Weights = std::array<float, 6>;

// For the place `t` (0..1) between the third and the fourth of six neighbours.
inline Weights sixPoints(float t) {
    const float a = t + 2, b = t + 1, c = t - 1, d = t - 2, e = t - 3;
    const float ab = a * b, de = d * e;
    const float outer = b * t * c * d, lower = t * c * de, upper = ab * t * e;
    return {outer * e * (-1.0F / 120), a * lower * (1.0F / 24),  ab * c * de * (-1.0F / 12),
            upper * d * (1.0F / 12),   upper * c * (-1.0F / 24), outer * a * (1.0F / 120)};
}

// For the place `t` between the second and the third, through the first four.
inline Weights fourPoints(float t) {
    const float b = t + 1, c = t - 1, d = t - 2;
    return {t * c * d * (-1.0F / 6), b * c * d * 0.5F, b * t * d * -0.5F, b * t * c * (1.0F / 6), 0, 0};
}

// How a line is read in each frame of a chunk.
class Taps {
public:
    // `ages` >= 2, in frames before the one that reads.
    void aim(const Row<double>& ages, std::size_t frames) {
        for (std::size_t f = 0; f < frames; ++f) {
            const auto whole = static_cast<std::int32_t>(ages[f]);
            youngest_[f] = static_cast<std::int32_t>(f) + 2 - whole;
            set(f, sixPoints(static_cast<float>(ages[f] - whole)), 1);
        }
    }
    // For ages >= 1 in a loop with `feedback`. Below 2 there are only four neighbours, and below 3 the newest sample is
    // one of them, in which its own feedback is still missing.
    void aimInLoop(const Row<double>& ages, std::size_t frames, float feedback) {
        aim(ages, frames);
        for (std::size_t f = 0; f < frames; ++f) {
            if (ages[f] >= 3) continue;
            const bool close = ages[f] < 2;
            const auto t = static_cast<float>(ages[f] - (close ? 1 : 2));
            const Weights weights = close ? fourPoints(t) : sixPoints(t);
            youngest_[f] = static_cast<std::int32_t>(f);
            set(f, weights, 1 / (1 - weights[0] * feedback));
        }
    }
    // What frame `f` reads; the chunk begins at `line`.
    float read(const float* line, std::size_t f) const {
        const float* youngest = line + youngest_[f];
        float sum = 0;
        for (std::size_t i = 0; i < weights_.size(); ++i) sum += weights_[i][f] * *(youngest - i);
        return sum;
    }

private:
    void set(std::size_t frame, const Weights& weights, float gain) {
        for (std::size_t i = 0; i < weights.size(); ++i) weights_[i][frame] = gain * weights[i];
    }

    Row<std::int32_t> youngest_;  // of the neighbours, in frames from the beginning of the chunk
    std::array<Row<float>, 6> weights_;
};

}  // namespace melvane::engine
