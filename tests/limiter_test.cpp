#include "engine/graph/limiter.h"

#include <gtest/gtest.h>
#include <soxr.h>

#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

Sound limited(Sound sound, std::size_t block = 441) {
    Limiter limiter;
    const std::size_t frames = sound.size() / 2;
    sound.resize(sound.size() + Limiter::kDelay * 2);
    for (std::size_t done = 0; done < sound.size() / 2; done += block)
        limiter.process(sound.data() + done * 2, std::min(block, sound.size() / 2 - done));
    return Sound(sound.end() - static_cast<std::ptrdiff_t>(frames * 2), sound.end());
}

// Sixteen times oversampled by a converter that is not ours.
double truePeak(const Sound& sound) {
    Sound fine(sound.size() * 16 + 4096);
    std::size_t made = 0;
    const auto io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const auto quality = soxr_quality_spec(SOXR_VHQ, 0);
    soxr_oneshot(1, 16, 2, sound.data(), sound.size() / 2, nullptr, fine.data(), fine.size() / 2, &made, &io, &quality,
                 nullptr);
    float peak = 0;
    for (std::size_t i = 0; i < made * 2; ++i) peak = std::max(peak, std::abs(fine[i]));
    return static_cast<double>(peak);
}

Sound scaled(Sound sound, float gain) {
    for (float& sample : sound) sample *= gain;
    return sound;
}

TEST(Limiter, WhatStaysWithinFullScalePassesBitByBit) {
    Sound sound = noise16(50000, 1, 32767);
    sound[5000] = 1.0F;
    sound[5001] = -1.0F;
    EXPECT_EQ(limited(sound), sound);
}

TEST(Limiter, WhatGoesBeyondStaysBelowTheTruePeakLimit) {
    const auto twoTones = [](double low, double high) {
        Sound sound = sine(low, 0.9, 44100);
        const Sound other = sine(high, 0.9, 44100);
        for (std::size_t i = 0; i < sound.size(); ++i) sound[i] += other[i];
        return sound;
    };
    const struct {
        const char* name;
        Sound sound;
    } cases[] = {{"noise at +8 dB", scaled(noise16(44100, 2, 32767), 2.5F)},
                 {"quarter of the rate", scaled(sine(11025.5, 1, 44100), 1.3F)},
                 {"low and high", twoTones(60, 15000)},
                 {"two highs", twoTones(9000, 13001)},
                 {"far too loud", scaled(sine(997, 1, 44100), 8)}};
    for (const auto& c : cases) {
        const Sound out = limited(c.sound);
        EXPECT_LT(decibels(truePeak(out)), -0.1) << c.name;
        EXPECT_GT(decibels(truePeak(out)), -2.5) << c.name;
    }
}

// A lone peak is turned down around it and nowhere else; the gain moves without steps.
TEST(Limiter, IsBackToBitExactSoonAfterAPeak) {
    Sound sound = sine(440, 0.5, 3 * kSampleRate);
    const Sound before = sound;
    for (std::size_t i = 0; i < 40; ++i) sound[(50000 + i) * 2] = sound[(50000 + i) * 2 + 1] = 1.6F;
    const Sound out = limited(sound);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + 2 * (50000 - 200), before.begin()));
    EXPECT_TRUE(std::equal(out.end() - kSampleRate, out.end(), before.end() - kSampleRate));
    double largest = 0;
    for (std::size_t i = 50100; i < 52000; ++i) {
        if (std::abs(before[2 * i]) < 0.2F || std::abs(before[2 * i + 2]) < 0.2F) continue;
        const double gain = static_cast<double>(out[2 * i] / before[2 * i]);
        const double next = static_cast<double>(out[2 * i + 2] / before[2 * i + 2]);
        largest = std::max(largest, std::abs(next - gain));
    }
    EXPECT_LT(largest, 0.001);
}

TEST(Limiter, TheSamplesDoNotDependOnTheBlock) {
    const Sound sound = scaled(noise16(30000, 3, 32767), 1.7F);
    const Sound reference = limited(sound, 4096);
    for (const std::size_t block : {1U, 64U, 441U}) EXPECT_EQ(limited(sound, block), reference) << block;
}

}  // namespace
}  // namespace melvane::engine
