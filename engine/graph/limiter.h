// Keeps the card's sum within full scale. What stays within it passes bit by bit, late by kDelay frames and
// otherwise untouched. A sample beyond it brings the level down before it comes (look-ahead) and lets it up again
// slowly; for 0.1 s the peaks between the samples count too, so that the true peak stays below -0.1 dBTP. It has
// forgotten everything that lies 1.5 s behind.
//
// Gain: per frame the ceiling divided by the true peak, held over the look-ahead (sliding minimum) and smoothed by
// a moving average of the same length, which reaches the demanded gain exactly at the peak. True peak: four times
// oversampled as in ITU-R BS.1770-4, annex 2, here with a longer windowed sinc.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace melvane::engine {

class Limiter {
public:
    static constexpr std::size_t kLookAhead = 128;  // frames; 3 ms
    static constexpr std::size_t kHalfTaps = 12;
    static constexpr std::size_t kDelay = kLookAhead - 1 + kHalfTaps;

    Limiter() { reset(); }

    // As if only silence had been there.
    void reset();
    // Stereo frames in place; the output is the input of kDelay frames ago. The most that was taken away: 0 nothing, 1
    // all.
    float process(float* block, std::size_t frames);

private:
    static constexpr std::size_t kRing = 256;

    struct Frame {
        float left = 0;
        float right = 0;
    };

    Frame step(Frame in);
    const Frame& at(std::uint64_t frame) const { return ring_[frame % kRing]; }
    float demandAt(std::uint64_t centre) const;
    float truePeakAt(std::uint64_t centre) const;
    float heldMinimum(float demand);

    std::array<Frame, kRing> ring_;
    std::uint64_t now_ = 0;       // frames taken since the start
    std::uint64_t lastOver_ = 0;  // the last one beyond full scale
    float leastGain_ = 1;         // of the block
    double reduction_ = 0;        // 1 - demanded gain, with its slow release
    // The sliding minimum: candidates in rising order, as a ring.
    struct Candidate {
        std::uint64_t frame = 0;
        float gain = 1;
    };
    std::array<Candidate, kLookAhead> candidates_;
    std::size_t firstCandidate_ = 0;
    std::size_t candidateCount_ = 0;
    std::array<float, kLookAhead> held_;
    double heldSum_ = kLookAhead;
};

}  // namespace melvane::engine
