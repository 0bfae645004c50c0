#include "alignment/correlation.h"

#include <algorithm>
#include <cmath>

namespace melvane {

namespace {

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

// Written out: the standard's product looks for infinities.
void addCorrelation(std::span<Bin> sum, std::span<const Bin> first, std::span<const Bin> second) {
    for (std::size_t i = 0; i < sum.size(); ++i) {
        const Bin a = first[i];
        const Bin b = second[i];
        sum[i] += Bin{a.real() * b.real() + a.imag() * b.imag(), a.imag() * b.real() - a.real() * b.imag()};
    }
}

}  // namespace melvane
