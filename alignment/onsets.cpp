#include "alignment/onsets.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "alignment/moments.h"

namespace melvane {

namespace {

constexpr std::size_t kFrame = 128;
constexpr std::size_t kBandBins = 4;
constexpr std::size_t kBands = kFrame / 2 / kBandBins;
constexpr std::size_t kBefore = 3;   // steps: what is compared does not overlap much
constexpr float kFaint = 1000;       // power that is no sound
constexpr std::size_t kAround = 86;  // steps on either side, 0.25 s

using Levels = std::array<float, kBands>;

Levels levelsOf(std::span<const Bin> bins) {
    Levels levels{};
    for (std::size_t i = 0; i < kBands * kBandBins; ++i) levels[i / kBandBins] += std::norm(bins[i]);
    for (float& level : levels) level = std::log(level + kFaint);
    return levels;
}

using Rises = std::array<std::vector<float>, kBands>;

Rises risesOf(const Trace& imprint) {
    std::array<Levels, kBefore> last{};
    Rises rises;
    std::size_t step = 0;
    eachMoment(imprint, kFrame, kOnsetStep, [&](std::span<const Bin> bins) {
        const Levels levels = levelsOf(bins);
        Levels& before = last[step % kBefore];
        for (std::size_t band = 0; band < kBands; ++band)
            rises[band].push_back(step < kBefore ? 0 : std::max(levels[band] - before[band], 0.0F));
        before = levels;
        ++step;
    });
    return rises;
}

}  // namespace

std::vector<Trace> onsetsOf(const Trace& imprint) {
    std::vector<Trace> onsets;
    for (const std::vector<float>& values : risesOf(imprint)) onsets.push_back(againstOthers(values, kAround));
    return onsets;
}

}  // namespace melvane
