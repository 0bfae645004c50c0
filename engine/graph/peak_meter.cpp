// Compiled with permission to take no heed of NaN: only then is a maximum one instruction for four samples.
#include "engine/graph/peak_meter.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace melvane::engine {

namespace {

// Samples side by side: their maxima don't wait for each other.
constexpr std::size_t kLanes = 16;
using Lanes = std::array<float, kLanes>;

void raise(Lanes& highest, const Lanes& samples) {
    for (std::size_t i = 0; i < kLanes; ++i) highest[i] = std::max(highest[i], std::abs(samples[i]));
}

PeakLevels bothSides(const Lanes& highest) {
    PeakLevels peaks;
    for (std::size_t i = 0; i < kLanes; i += 2) peaks = higher(peaks, {highest[i], highest[i + 1]});
    return peaks;
}

}  // namespace

PeakLevels higher(PeakLevels one, PeakLevels other) {
    return {std::max(one.left, other.left), std::max(one.right, other.right)};
}

PeakLevels peakOf(const float* block, std::size_t frames) {
    Lanes highest{};
    std::size_t i = 0;
    for (; i + kLanes <= frames * 2; i += kLanes) {
        Lanes samples;
        std::copy_n(block + i, kLanes, samples.begin());
        raise(highest, samples);
    }
    for (; i < frames * 2; ++i) highest[i % 2] = std::max(highest[i % 2], std::abs(block[i]));
    return bothSides(highest);
}

PeakLevels addScaled(float* out, const float* in, std::size_t frames, float left, float right) {
    Lanes highest{};
    Lanes gain;
    for (std::size_t lane = 0; lane < kLanes; ++lane) gain[lane] = lane % 2 == 0 ? left : right;
    std::size_t i = 0;
    for (; i + kLanes <= frames * 2; i += kLanes) {
        Lanes added;
        for (std::size_t lane = 0; lane < kLanes; ++lane) added[lane] = in[i + lane] * gain[lane];
        for (std::size_t lane = 0; lane < kLanes; ++lane) out[i + lane] += added[lane];
        raise(highest, added);
    }
    for (; i < frames * 2; ++i) {
        const float added = in[i] * gain[i % 2];
        out[i] += added;
        highest[i % 2] = std::max(highest[i % 2], std::abs(added));
    }
    return bothSides(highest);
}

void PeakMeter::raise(PeakLevels peaks) {
    PeakLevels before = highest_.load(std::memory_order_relaxed);
    while (!highest_.compare_exchange_weak(before, higher(before, peaks), std::memory_order_relaxed)) {
    }
}

}  // namespace melvane::engine
