// The newest samples of one side.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

namespace melvane::engine {

// What comes back through a feedback is held to 18 dB above full scale: a full feedback has no end of its own.
inline float bounded(float sample) {
    return std::clamp(sample, -8.0F, 8.0F);
}

class DelayLine {
public:
    // Keeps at least the newest `frames` samples.
    explicit DelayLine(std::size_t frames) : samples_(std::bit_ceil(frames)), mask_(samples_.size() - 1) {}

    void push(float sample) { samples_[++newest_ & mask_] = sample; }
    float& newest() { return samples_[newest_ & mask_]; }
    // Age 0 is the newest.
    float operator[](std::size_t age) const { return samples_[(newest_ - age) & mask_]; }

    // The samples that come out `delay` frames late during the next `count` <= delay pushes.
    void read(std::size_t delay, float* out, std::size_t count) const {
        const std::size_t start = (newest_ + 1 - delay) & mask_;
        const std::size_t straight = std::min(count, samples_.size() - start);
        std::copy_n(samples_.data() + start, straight, out);
        std::copy_n(samples_.data(), count - straight, out + straight);
    }
    void push(const float* in, std::size_t count) {
        const std::size_t start = (newest_ + 1) & mask_;
        const std::size_t straight = std::min(count, samples_.size() - start);
        std::copy_n(in, straight, samples_.data() + start);
        std::copy_n(in + straight, count - straight, samples_.data());
        newest_ += count;
    }
    void clear() { std::fill(samples_.begin(), samples_.end(), 0.0F); }

private:
    std::vector<float> samples_;
    std::size_t mask_;
    std::size_t newest_ = 0;
};

}  // namespace melvane::engine
