// Reading a delay line between its samples: Lagrange's polynomial through the neighbours (T. I. Laakso et al.,
// "Splitting the Unit Delay", 1996). Between the two middle ones of an even number of neighbours its gain is nowhere
// above 1, so that it can stand in a feedback loop.
#pragma once

#include <array>

#include "engine/effects/delay_line.h"

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

// The same through the inner four.
inline Weights fourPoints(float t) {
    const float b = t + 1, c = t - 1, d = t - 2;
    return {0, t * c * d * (-1.0F / 6), b * c * d * 0.5F, b * t * d * -0.5F, b * t * c * (1.0F / 6), 0};
}

struct Between {
    float value;    // of the line
    float current;  // the weight that the newest sample has in it
};

// The neighbours of `age` have the ages whole - 2 and so on.
inline float weightedSum(const DelayLine& line, std::size_t whole, const Weights& weights) {
    float sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) sum += weights[i] * line[whole + i - 2];
    return sum;
}

// `age` >= 1. Below 2 there are only four neighbours.
inline Between readBetween(const DelayLine& line, double age) {
    const auto whole = static_cast<std::size_t>(age);
    const auto t = static_cast<float>(age - static_cast<double>(whole));
    if (whole > 2) return {weightedSum(line, whole, sixPoints(t)), 0};
    const Weights weights = whole < 2 ? fourPoints(t) : sixPoints(t);
    return {weightedSum(line, whole, weights), weights[2 - whole]};
}

}  // namespace melvane::engine
