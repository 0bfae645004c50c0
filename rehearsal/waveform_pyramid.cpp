#include "rehearsal/waveform_pyramid.h"

#include <algorithm>
#include <cmath>

namespace melvane {

namespace {

constexpr float kFullScale = 32767;

void widen(Extremes& extremes, const Extremes& by) {
    extremes.lowest = std::min(extremes.lowest, by.lowest);
    extremes.highest = std::max(extremes.highest, by.highest);
}

// What is no number counts as silence.
std::int16_t sampleOf(float value) {
    if (std::isnan(value)) return 0;
    return static_cast<std::int16_t>(std::lround(std::clamp(value, -1.0F, 1.0F) * kFullScale));
}

}  // namespace

WaveformPyramid::WaveformPyramid(std::int64_t frames) : frames_(std::max<std::int64_t>(frames, 0)) {
    auto bins = static_cast<std::size_t>((frames_ + kBinFrames - 1) / kBinFrames);
    levels_.emplace_back(bins);
    while (bins > 1) levels_.emplace_back(bins /= 2);
}

WaveformPyramid::WaveformPyramid(std::int64_t frames, std::span<const Extremes> bins) : WaveformPyramid(frames) {
    for (const Extremes& bin : bins.first(std::min(bins.size(), levels_.front().size()))) {
        open_ = bin;
        close();
    }
    finish();
}

void WaveformPyramid::add(const float* block, std::size_t count) {
    for (; count > 0 && done_ < levels_.front().size();) {
        const auto part = std::min(count, static_cast<std::size_t>(kBinFrames - openFrames_));
        const auto [lowest, highest] = std::minmax_element(block, block + 2 * part);
        widen(open_, {sampleOf(*lowest), sampleOf(*highest)});
        openFrames_ += static_cast<std::int64_t>(part);
        block += 2 * part;
        count -= part;
        if (openFrames_ == kBinFrames) close();
    }
}

void WaveformPyramid::finish() {
    while (done_ < levels_.front().size()) close();
}

void WaveformPyramid::close() {
    const std::size_t bin = done_;
    levels_.front()[bin] = open_;
    open_ = {};
    openFrames_ = 0;
    closeAbove(bin);
    done_.store(bin + 1, std::memory_order_release);
}

// A bin above is whole with the second of its halves; at the end there may be one half without another.
void WaveformPyramid::closeAbove(std::size_t bin) {
    for (std::size_t level = 1; bin % 2 == 1; ++level, bin /= 2) {
        Extremes both = levels_[level - 1][bin - 1];
        widen(both, levels_[level - 1][bin]);
        levels_[level][bin / 2] = both;
    }
}

std::int64_t WaveformPyramid::known() const {
    return std::min(static_cast<std::int64_t>(done_.load(std::memory_order_acquire)) * kBinFrames, frames_);
}

Extremes WaveformPyramid::between(std::int64_t begin, std::int64_t end) const {
    begin = std::max<std::int64_t>(begin, 0);
    end = std::min(end, known());
    Extremes extremes;
    if (begin >= end) return extremes;
    auto bin = static_cast<std::size_t>(begin / kBinFrames);
    const auto behind = static_cast<std::size_t>((end + kBinFrames - 1) / kBinFrames);
    // Steps as wide as they may be from each place on.
    while (bin < behind) {
        std::size_t level = 0;
        while (level + 1 < levels_.size() && bin % (std::size_t{2} << level) == 0 &&
               bin + (std::size_t{2} << level) <= behind)
            ++level;
        widen(extremes, levels_[level][bin >> level]);
        bin += std::size_t{1} << level;
    }
    return extremes;
}

}  // namespace melvane
