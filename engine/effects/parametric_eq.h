// One peaking band. The analogue band is
//     H(s) = (s^2 + s A/Q w0 + w0^2) / (s^2 + s/(A Q) w0 + w0^2),  A = 10^(gain/40),
//     1/Q = 2 sinh(ln 2 / 2 * octaves)
// and the digital one has its poles, transformed so that their impulse response stays, and a numerator that gives its
// gain at 0 Hz, its gain at the centre and its flat top there (M. Vicanek, "Matched Second Order Digital Filters",
// 2016). It does not narrow towards the highest frequencies: with 18 semitones it is within 0.5 dB of the analogue band
// up to 15 kHz. A cut is the boost turned over, exactly its inverse.
//
// Coefficients glide in a straight line; the stable ones form a triangle, so they stay stable on the way.
#pragma once

#include <array>

#include "engine/effects/record_effect.h"

namespace melvane::engine {

// H(z) = (b0 + b1/z + b2/z^2) / (1 + a1/z + a2/z^2)
struct Biquad {
    double b0 = 1, b1 = 0, b2 = 0;
    double a1 = 0, a2 = 0;

    bool flat() const { return b0 == 1 && b1 == a1 && b2 == a2; }
};

// Centre in Hz, bandwidth in semitones, gain in dB.
Biquad peakingBand(double centre, double bandwidth, double gain);

class ParametricEq final : public RecordEffect<ParametricEqRecord, Biquad, double> {
private:
    Biquad goalOf(const ParametricEqRecord& record) override;
    void render(float* block, std::size_t frames, const Biquad& band) override;
    void clear(std::int64_t frame, const Biquad& band) override;
    bool lastsWith(const Biquad&) const override { return false; }  // but for bands narrower than any that is used
    void filter(float* block, std::size_t frames, const Biquad& band);

    // A flat band works on until the narrowest one has died away, and then passes the sound on untouched.
    static constexpr std::size_t kRestFrames = 88200;

    // Left and right side by side, as GCC and Clang compute them on every processor.
    using Sides __attribute__((vector_size(16))) = double;
    // Transposed direct form II.
    struct State {
        Sides first{}, second{};
    };
    State state_;
    std::size_t flatFrames_ = kRestFrames;
};

}  // namespace melvane::engine
