#include "alignment/correlation.h"

#include <algorithm>
#include <cmath>

namespace melvane {

namespace {

constexpr std::size_t kAround = 16;  // bins on either side
constexpr double kFaint = 1;         // of the mean power beside which what is fainter is not made louder

float sampleAt(const Trace& trace, std::int64_t frame) {
    return frame >= 0 && frame < std::ssize(trace) ? static_cast<float>(trace[static_cast<std::size_t>(frame)]) : 0.0F;
}

}  // namespace

Pieces Pieces::of(std::size_t frames, std::size_t length, std::size_t most, std::size_t grid) {
    Pieces pieces{{}, length};
    const std::size_t count = std::clamp<std::size_t>((frames + length - 1) / length, 1, most);
    const std::size_t room = frames > length ? frames - length : 0;
    for (std::size_t i = 0; i < count; ++i)
        pieces.starts.push_back(static_cast<std::int64_t>(count > 1 ? room * i / (count - 1) / grid * grid : 0));
    return pieces;
}

void readVoice(const Trace& voice, std::int64_t first, std::span<float> out) {
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = sampleAt(voice, first + static_cast<std::int64_t>(i));
}

void readSong(const Trace& song, const Line& line, std::int64_t first, std::span<float> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        const auto frame = static_cast<double>(first + static_cast<std::int64_t>(i));
        out[i] = sampleAt(song, static_cast<std::int64_t>(std::floor(frame - line.at(frame) + 0.5)));
    }
}

void addPower(std::span<float> sum, std::span<const Bin> bins) {
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += std::norm(bins[i]);
}

void takeOffTones(std::span<Bin> bins, std::span<const float> power) {
    std::vector<double> sums(bins.size() + 1);
    for (std::size_t i = 0; i < bins.size(); ++i) sums[i + 1] = sums[i] + static_cast<double>(power[i]);
    const double floor = kFaint * sums.back() / static_cast<double>(bins.size()) + 1e-9;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const std::size_t from = i < kAround ? 0 : i - kAround;
        const std::size_t to = std::min(i + kAround + 1, bins.size());
        bins[i] /= static_cast<float>((sums[to] - sums[from]) / static_cast<double>(to - from) + floor);
    }
}

// As the pairs of numbers that they are: most of a search is spent here, and the standard's product looks for
// infinities.
void addCorrelation(std::span<Bin> sum, std::span<const Bin> first, std::span<const Bin> second) {
    auto* const to = reinterpret_cast<float*>(sum.data());
    const auto* const a = reinterpret_cast<const float*>(first.data());
    const auto* const b = reinterpret_cast<const float*>(second.data());
    for (std::size_t i = 0; i < 2 * sum.size(); i += 2) {
        to[i] += a[i] * b[i] + a[i + 1] * b[i + 1];
        to[i + 1] += a[i + 1] * b[i] - a[i] * b[i + 1];
    }
}

}  // namespace melvane
