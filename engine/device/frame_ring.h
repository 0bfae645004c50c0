// Stereo frames from one writing thread to one reading thread, without locks or allocation.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <vector>

namespace melvane::engine {

class FrameRing {
public:
    explicit FrameRing(std::size_t frames) : room_(std::bit_ceil(frames)), samples_(room_ * 2) {}

    // Any thread; exact for the two ends, a moment old for others.
    std::size_t filled() const {
        return written_.load(std::memory_order_acquire) - read_.load(std::memory_order_acquire);
    }

    // Writing thread. Returns the frames that fitted.
    std::size_t write(const float* in, std::size_t frames) {
        const std::size_t place = written_.load(std::memory_order_relaxed);
        frames = std::min(frames, room_ - (place - read_.load(std::memory_order_acquire)));
        for (std::size_t i = 0; i < frames * 2; ++i) samples_[(place * 2 + i) & (room_ * 2 - 1)] = in[i];
        written_.store(place + frames, std::memory_order_release);
        return frames;
    }

    // Reading thread. Returns the frames that were there.
    std::size_t read(float* out, std::size_t frames) {
        const std::size_t place = read_.load(std::memory_order_relaxed);
        frames = std::min(frames, written_.load(std::memory_order_acquire) - place);
        for (std::size_t i = 0; i < frames * 2; ++i) out[i] = samples_[(place * 2 + i) & (room_ * 2 - 1)];
        read_.store(place + frames, std::memory_order_release);
        return frames;
    }

    // Reading thread: drops what is there.
    void clear() { read_.store(written_.load(std::memory_order_acquire), std::memory_order_release); }

private:
    const std::size_t room_;
    std::vector<float> samples_;
    std::atomic<std::size_t> written_{0};
    std::atomic<std::size_t> read_{0};
};

}  // namespace melvane::engine
