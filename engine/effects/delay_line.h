// The newest samples of one side.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "engine/effects/chunk.h"

namespace melvane::engine {

// What comes back through a feedback is held to 18 dB above full scale: a full feedback has no end of its own.
inline float bounded(float sample) {
    return std::clamp(sample, -8.0F, 8.0F);
}

// The samples lie in a row, without a seam to watch for when they are read. At its end the newest are carried to the
// front, seldom enough to cost little.
class DelayLine {
public:
    // Keeps at least the newest `frames` samples.
    explicit DelayLine(std::size_t frames) : kept_(frames), samples_(2 * frames + 16 * kChunk), end_(frames) {}

    // Where the next `count` <= kChunk samples go. Those that came before lie before them.
    float* append(std::size_t count) {
        if (end_ + count > samples_.size()) {
            std::copy_n(newest(kept_), kept_, samples_.data());
            end_ = kept_;
        }
        end_ += count;
        return newest(count);
    }
    // The last that were given to write to.
    float* newest(std::size_t count) { return samples_.data() + end_ - count; }
    void clear() { std::ranges::fill(samples_, 0.0F); }

private:
    std::size_t kept_;
    std::vector<float> samples_;
    std::size_t end_;
};

}  // namespace melvane::engine
