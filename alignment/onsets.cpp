#include "alignment/onsets.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "alignment/correlation.h"

namespace melvane {

namespace {

constexpr std::size_t kFrame = 128;
constexpr std::size_t kBandBins = 4;
constexpr std::size_t kBands = kFrame / 2 / kBandBins;
constexpr std::size_t kBefore = 3;   // steps: what is compared does not overlap much
constexpr float kFaint = 1000;       // power that is no sound
constexpr std::size_t kAround = 86;  // steps on either side, 0.25 s
constexpr double kScale = 4000;      // of the trace for one deviation
constexpr double kMost = 32000;

using Levels = std::array<float, kBands>;

Levels levelsOf(std::span<const Bin> bins) {
    Levels levels{};
    for (std::size_t i = 0; i < kBands * kBandBins; ++i) levels[i / kBandBins] += std::norm(bins[i]);
    for (float& level : levels) level = std::log(level + kFaint);
    return levels;
}

using Rises = std::array<std::vector<double>, kBands>;

Rises risesOf(const Trace& imprint) {
    Fourier fourier(kFrame);
    std::array<Levels, kBefore> last{};
    Rises rises;
    std::size_t step = 0;
    for (std::size_t at = 0; at < imprint.size(); at += kOnsetStep, ++step) {
        readVoice(imprint, static_cast<std::int64_t>(at) - static_cast<std::int64_t>(kFrame / 2), fourier.time());
        for (std::size_t i = 0; i < kFrame; ++i)
            fourier.time()[i] *= static_cast<float>(1 - std::abs(2 * (static_cast<double>(i) + 0.5) / kFrame - 1));
        fourier.forward();
        const Levels levels = levelsOf(fourier.bins());
        Levels& before = last[step % kBefore];
        for (std::size_t band = 0; band < kBands; ++band) {
            const float rise = step < kBefore ? 0 : levels[band] - before[band];
            rises[band].push_back(static_cast<double>(std::max(rise, 0.0F)));
        }
        before = levels;
    }
    return rises;
}

// Of values up to each: their sums, and those of their squares.
struct Sums {
    explicit Sums(const std::vector<double>& values) : plain(values.size() + 1), squares(values.size() + 1) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            plain[i + 1] = plain[i] + values[i];
            squares[i + 1] = squares[i] + values[i] * values[i];
        }
    }
    std::vector<double> plain, squares;
};

Trace againstOthers(const std::vector<double>& values) {
    const Sums sums(values);
    Trace trace;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t from = i < kAround ? 0 : i - kAround;
        const std::size_t to = std::min(i + kAround + 1, values.size());
        const auto count = static_cast<double>(to - from);
        const double mean = (sums.plain[to] - sums.plain[from]) / count;
        const double variance = std::max((sums.squares[to] - sums.squares[from]) / count - mean * mean, 0.0);
        const double height = variance > 1e-6 ? (values[i] - mean) / std::sqrt(variance) : 0;
        trace.push_back(static_cast<std::int16_t>(std::lrint(std::clamp(height * kScale, -kMost, kMost))));
    }
    return trace;
}

}  // namespace

std::vector<Trace> onsetsOf(const Trace& imprint) {
    std::vector<Trace> onsets;
    for (const std::vector<double>& values : risesOf(imprint)) onsets.push_back(againstOthers(values));
    return onsets;
}

}  // namespace melvane
