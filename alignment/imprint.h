// What a search needs of a sound: mono at 11025 Hz, each moment as loud as any other and each frequency as strong as
// its neighbours, so that the quiet moments between a singer's words tell as much as the loud ones.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "alignment/fourier.h"

namespace melvane {

inline constexpr int kImprintRate = 11025;  // Hz

// Samples of an imprint; those before the first and behind the last are 0.
using Trace = std::vector<std::int16_t>;

// As much as is searched at once, which bounds its memory: 12 minutes.
inline constexpr std::size_t kLongestImprint = std::size_t{12} * 60 * kImprintRate;

// Takes a sound as it is read. One thread at a time. Two bytes for a sample of the trace and nothing else grow with the
// sound.
class ImprintMaker {
public:
    ImprintMaker();
    // Interleaved stereo at 44100 Hz.
    void add(const float* stereo, std::size_t frames);
    // Nothing may be added any more. All 0 of a sound below -80 dB: what is left of a song whose channels are silenced.
    Trace take();

private:
    static constexpr std::size_t kFrame = 1024;
    static constexpr std::size_t kHop = kFrame / 2;

    void addLow(float sample);
    void evenOut();

    std::vector<float> history_;  // mono at 44100 Hz that the low-pass filter has still to see
    std::vector<float> window_;
    std::array<float, kFrame> frame_{};
    std::array<float, kFrame> overlap_{};
    std::size_t filled_ = kHop;
    std::size_t heard_ = 0;   // frames at 44100 Hz
    float loudest_ = 0;       // of them
    std::size_t frames_ = 0;  // of the trace
    std::vector<double> sums_;
    Fourier fourier_{kFrame};
    Trace trace_;
};

// The same at a quarter of the rate, from its lower frequencies.
Trace quarter(const Trace& trace);

}  // namespace melvane
