#include "alignment/shades.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "alignment/moments.h"

namespace melvane {

namespace {

constexpr std::size_t kFrame = 256;
constexpr std::size_t kBandBins = 2;
constexpr std::size_t kBands = kFrame / 2 / kBandBins;  // 86 Hz each
constexpr std::size_t kBeside = 2;                      // bands on either side
constexpr float kFaint = 2000;                          // power that is no sound
constexpr std::size_t kAround = 86;                     // steps on either side, 0.5 s

using Levels = std::array<float, kBands>;

Levels levelsOf(std::span<const Bin> bins) {
    Levels levels{};
    for (std::size_t i = 0; i < kBands * kBandBins; ++i) levels[i / kBandBins] += std::norm(bins[i]);
    for (float& level : levels) level = std::log(level + kFaint);
    return levels;
}

float besides(const Levels& levels, std::size_t band) {
    const std::size_t from = band < kBeside ? 0 : band - kBeside;
    const std::size_t to = std::min(band + kBeside + 1, kBands);
    float sum = 0;
    for (std::size_t i = from; i < to; ++i) sum += levels[i];
    return sum / static_cast<float>(to - from);
}

}  // namespace

std::vector<Trace> shadesOf(const Trace& imprint) {
    std::array<std::vector<float>, kBands> values;
    for (std::vector<float>& band : values) band.reserve(imprint.size() / kShadeStep + 1);
    eachMoment(imprint, kFrame, kShadeStep, [&](std::span<const Bin> bins) {
        const Levels levels = levelsOf(bins);
        for (std::size_t band = 0; band < kBands; ++band) values[band].push_back(levels[band] - besides(levels, band));
    });
    std::vector<Trace> shades;
    for (std::vector<float>& band : values) {
        shades.push_back(againstOthers(band, kAround));
        band = {};
    }
    return shades;
}

}  // namespace melvane
