#include "alignment/moments.h"

#include <algorithm>
#include <cmath>

#include "alignment/correlation.h"

namespace melvane {

namespace {

constexpr double kScale = 4000;  // of the trace for one deviation
constexpr double kMost = 32000;

// Of values up to each: their sums, and those of their squares.
struct Sums {
    explicit Sums(const std::vector<float>& values) : plain(values.size() + 1), squares(values.size() + 1) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto value = static_cast<double>(values[i]);
            plain[i + 1] = plain[i] + value;
            squares[i + 1] = squares[i] + value * value;
        }
    }
    std::vector<double> plain, squares;
};

}  // namespace

void eachMoment(const Trace& imprint, std::size_t length, std::size_t step,
                const std::function<void(std::span<const Bin>)>& take) {
    Fourier fourier(length);
    std::vector<float> window(length);
    for (std::size_t i = 0; i < length; ++i)
        window[i] =
            static_cast<float>(1 - std::abs(2 * (static_cast<double>(i) + 0.5) / static_cast<double>(length) - 1));
    for (std::size_t at = 0; at < imprint.size(); at += step) {
        readVoice(imprint, static_cast<std::int64_t>(at) - static_cast<std::int64_t>(length / 2), fourier.time());
        for (std::size_t i = 0; i < length; ++i) fourier.time()[i] *= window[i];
        fourier.forward();
        take(fourier.bins());
    }
}

Trace againstOthers(const std::vector<float>& values, std::size_t around) {
    const Sums sums(values);
    Trace trace;
    trace.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t from = i < around ? 0 : i - around;
        const std::size_t to = std::min(i + around + 1, values.size());
        const auto count = static_cast<double>(to - from);
        const double mean = (sums.plain[to] - sums.plain[from]) / count;
        const double variance = std::max((sums.squares[to] - sums.squares[from]) / count - mean * mean, 0.0);
        const double height = variance > 1e-6 ? (static_cast<double>(values[i]) - mean) / std::sqrt(variance) : 0;
        trace.push_back(static_cast<std::int16_t>(std::lrint(std::clamp(height * kScale, -kMost, kMost))));
    }
    return trace;
}

}  // namespace melvane
