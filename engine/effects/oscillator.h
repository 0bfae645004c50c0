// The slow oscillators that move delays.
#pragma once

#include <cmath>
#include <cstdint>

#include "engine/effects/chunk.h"

namespace melvane::engine {

// A part of a turn, 2^32 to the turn; wraps around by itself.
using Phase = std::uint32_t;
inline constexpr Phase kQuarterTurn = 1U << 30;

// Counts 2^64 to the turn: sums of whole numbers are exact for every frame, wherever a block ends.
class Turning {
public:
    explicit Turning(Phase start = 0) : place_(std::uint64_t{start} << 32) {}

    // To where `rate` takes it in `frames` frames from `start`.
    void place(Phase start, double rate, std::int64_t frames) {
        place_ = (std::uint64_t{start} << 32) + stepOf(rate) * static_cast<std::uint64_t>(frames);
    }
    // Goes on by `count` frames of `rate` turns each, 0 <= rate < 0.5, and writes their phases.
    void advance(double rate, std::size_t count, Row<Phase>& phases) {
        const std::uint64_t step = stepOf(rate);
        for (std::size_t f = 0; f < count; ++f) phases[f] = static_cast<Phase>((place_ + f * step) >> 32);
        place_ += count * step;
    }

private:
    static std::uint64_t stepOf(double rate) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(rate * 0x1p64));
    }

    std::uint64_t place_;
};

// -1..1; begins at 0 and rises.
inline double triangle(Phase phase) {
    const auto behindPeak = static_cast<std::int32_t>(phase - kQuarterTurn);
    return 1 - 0x1p-30 * std::abs(static_cast<double>(behindPeak));
}

// The sine of the same phase: sin(pi/2 x) by its power series, which is within 4e-6 for -1 <= x <= 1.
inline double sineOfTriangle(double x) {
    const double q = x * x;
    return x * (1.5707963268 + q * (-0.6459640975 + q * (0.0796926262 + q * (-0.0046817541 + q * 0.0001604412))));
}

}  // namespace melvane::engine
