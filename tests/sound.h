// Sound made and measured by the tests: interleaved stereo, full scale at 1.0.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "platform/audio_library.h"
#include "platform/pcm_source.h"

namespace melvane::test {

using Sound = std::vector<float>;

class MemorySource : public PcmSource {
public:
    explicit MemorySource(Sound sound) : sound_(std::move(sound)) {}

    std::int64_t frames() const override { return static_cast<std::int64_t>(sound_.size() / 2); }
    std::size_t read(float* out, std::size_t count) override {
        count = std::min(count, static_cast<std::size_t>(frames() - place_));
        std::copy_n(sound_.begin() + place_ * 2, count * 2, out);
        place_ += static_cast<std::int64_t>(count);
        return count;
    }
    void seek(std::int64_t frame) override { place_ = std::clamp<std::int64_t>(frame, 0, frames()); }

private:
    Sound sound_;
    std::int64_t place_ = 0;
};

inline Sound silence(std::size_t frames) {
    return Sound(frames * 2, 0.0F);
}

inline Sound sine(double hertz, double level, std::size_t frames) {
    Sound sound(frames * 2);
    for (std::size_t i = 0; i < frames; ++i)
        sound[2 * i] = sound[2 * i + 1] =
            static_cast<float>(level * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / kSampleRate));
    return sound;
}

// 16-bit steps, so that it must come through a 16-bit path unchanged.
inline Sound noise16(std::size_t frames, unsigned seed, int peak = 12000) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> step(-peak, peak);
    Sound sound(frames * 2);
    for (float& sample : sound) sample = static_cast<float>(step(random)) / 32768.0F;
    return sound;
}

// Drum-like hits on silence: their place can be told at any key.
inline Sound hits(std::size_t frames, std::size_t every) {
    Sound sound = silence(frames);
    std::mt19937 random(3);
    std::normal_distribution<float> noise(0, 0.25F);
    for (std::size_t start = every / 2; start + 6000 < frames; start += every)
        for (std::size_t i = 0; i < 6000; ++i)
            sound[(start + i) * 2] = sound[(start + i) * 2 + 1] =
                noise(random) * std::exp(-static_cast<float>(i) / 1500.0F);
    return sound;
}

// Amplitude of one frequency on the left side of `frames` frames from `start` on (Hann window).
inline double levelAt(const Sound& sound, double hertz, std::size_t start, std::size_t frames) {
    std::complex<double> sum;
    double weight = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double window =
            0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(frames));
        sum += window * static_cast<double>(sound[(start + i) * 2]) *
               std::polar(1.0, -2 * std::numbers::pi * hertz * static_cast<double>(i) / kSampleRate);
        weight += window;
    }
    return 2 * std::abs(sum) / weight;
}

// Power in each bin of a Hann-windowed DFT of the left side; `frames` is a power of two. Radix-2, in place.
inline std::vector<double> powerSpectrum(const Sound& sound, std::size_t start, std::size_t frames) {
    std::vector<std::complex<double>> bins(frames);
    std::size_t reversed = 0;
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(frames);
        bins[reversed] = (0.5 - 0.5 * std::cos(turn)) * static_cast<double>(sound[(start + i) * 2]);
        for (std::size_t bit = frames / 2; (reversed ^= bit) < bit; bit /= 2) {
        }
    }
    for (std::size_t half = 1; half < frames; half *= 2)
        for (std::size_t group = 0; group < frames; group += 2 * half)
            for (std::size_t i = 0; i < half; ++i) {
                const auto twiddle =
                    std::polar(1.0, -std::numbers::pi * static_cast<double>(i) / static_cast<double>(half));
                const auto odd = twiddle * bins[group + i + half];
                bins[group + i + half] = bins[group + i] - odd;
                bins[group + i] += odd;
            }
    std::vector<double> power(frames / 2);
    for (std::size_t i = 0; i < power.size(); ++i) power[i] = std::norm(bins[i]);
    return power;
}

inline double decibels(double ratio) {
    return 20 * std::log10(ratio);
}

}  // namespace melvane::test
