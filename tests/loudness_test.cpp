// Loudness, against the signals that EBU Tech 3341 and 3342 publish for meters.
#include "loudness/loudness_meter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "loudness/gain_search.h"
#include "loudness/level_search.h"
#include "tests/sound.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct Step {
    double dbfs;
    double seconds;
};

// A sine of 1 kHz on both sides, at one level after the other, as it comes in blocks.
Loudness measured(const std::vector<Step>& steps) {
    constexpr std::size_t kBlock = 4096;
    Sound sound;
    for (const Step& step : steps) {
        const Sound piece = sine(1000, std::pow(10, step.dbfs / 20), static_cast<std::size_t>(step.seconds * 44100));
        sound.insert(sound.end(), piece.begin(), piece.end());
    }
    LoudnessMeter meter;
    for (std::size_t at = 0; at < sound.size(); at += 2 * kBlock)
        meter.add(&sound[at], std::min(kBlock, (sound.size() - at) / 2));
    return meter.result();
}

TEST(LoudnessMeter, GatesAsPublished) {
    const std::pair<std::vector<Step>, double> cases[] = {
        {{{-23, 20}}, -23},
        {{{-33, 20}}, -33},
        {{{-36, 10}, {-23, 60}, {-36, 10}}, -23},
        {{{-72, 10}, {-36, 10}, {-23, 60}, {-36, 10}, {-72, 10}}, -23},
        {{{-26, 20}, {-20, 20.1}, {-26, 20}}, -23},
    };
    for (const auto& [steps, lufs] : cases) EXPECT_NEAR(measured(steps).lufs, lufs, 0.1) << steps.size();
}

TEST(LoudnessMeter, TellsTheRangeAsPublished) {
    const std::pair<std::vector<Step>, double> cases[] = {
        {{{-20, 20}, {-30, 20}}, 10},
        {{{-20, 20}, {-15, 20}}, 5},
        {{{-40, 20}, {-20, 20}}, 20},
        {{{-50, 20}, {-35, 20}, {-20, 20}, {-35, 20}, {-50, 20}}, 15},
    };
    for (const auto& [steps, range] : cases) EXPECT_NEAR(measured(steps).rangeLu, range, 1) << steps.size();
}

// A quarter of the rate, where no sample meets the peak.
TEST(LoudnessMeter, FindsPeaksBetweenSamples) {
    const auto peakOf = [](double level, double phase, int periodFrames) {
        Sound sound;
        for (int i = 0; i < 44100; ++i) {
            const double fadeIn = std::min(i / 441.0, 1.0);
            const double sine = std::sin(2 * std::numbers::pi * i / periodFrames + phase * std::numbers::pi / 180);
            sound.insert(sound.end(), 2, static_cast<float>(level * fadeIn * sine));
        }
        LoudnessMeter meter;
        meter.add(sound.data(), sound.size() / 2);
        return meter.result().truePeakDb;
    };
    constexpr double kMiddle = -0.1;  // +0.2, -0.4 are allowed
    EXPECT_NEAR(peakOf(0.5, 45, 4), -6 + kMiddle, 0.3);
    EXPECT_NEAR(peakOf(0.5, 60, 6), -6 + kMiddle, 0.3);
    EXPECT_NEAR(peakOf(0.5, 67.5, 8), -6 + kMiddle, 0.3);
    EXPECT_NEAR(peakOf(1.41, 45, 4), 3 + kMiddle, 0.3);
}

TEST(LoudnessMeter, TellsWhatHasNoLoudness) {
    const Loudness silence = measured({{-300, 5}});
    EXPECT_FALSE(silence.known());
    EXPECT_EQ(silence.rangeLu, 0);
    EXPECT_FALSE(measured({}).known());
    const Loudness brief = measured({{-6, 0.39}});
    EXPECT_FALSE(brief.known());
    EXPECT_FALSE(brief.silent());
    EXPECT_NEAR(brief.truePeakDb, -6, 0.1);
    const std::vector<std::int16_t> zeros(44100 * 2, 0);
    LoudnessMeter meter;
    meter.add(zeros.data(), zeros.size() / 2);
    EXPECT_TRUE(meter.result().silent());
}

// A mix of this loudness and peak, behind a limiter that takes what is above 0 dB, half as much from the loudness.
GainFound gainFor(double target, double lufs, double peak) {
    return findGain(target, [&](double gain) {
        const double taken = std::max(peak + gain, 0.0);
        return GainTrial{lufs + gain - taken / 2, taken};
    });
}

TEST(GainSearch, ReachesWhatTheLimiterAllows) {
    for (const auto& [lufs, peak] :
         {std::pair(-40.0, -30.0), {-23.0, -10.0}, {-16.0, -1.0}, {-8.0, 3.0}, {-3.0, 0.0}}) {
        const GainFound found = gainFor(-14, lufs, peak);
        EXPECT_TRUE(found.reached) << lufs;
        EXPECT_NEAR(found.result.lufs, -14, 0.05) << lufs;
    }
    const GainFound less = gainFor(-14, -30, 0);
    EXPECT_FALSE(less.reached);
    EXPECT_NEAR(less.result.takenDb, 6, 0.02) << "as loud as six decibels allow";
    EXPECT_LE(less.result.takenDb, 6);
    const GainFound loud = gainFor(-30, -5, 12);
    EXPECT_TRUE(loud.reached) << "down to where the limiter has little to do";
    EXPECT_FALSE(gainFor(-14, -HUGE_VAL, -HUGE_VAL).reached);
}

// A song and a voice of these loudnesses, whose peaks are 12 dB above and make the limiter work 0.5 % of the time for
// each decibel beyond full scale.
LevelMatch matchOf(double song, double voice, const Levels& now = {}) {
    constexpr double kGate = -70;
    constexpr double kPeaks = 12;
    const auto gated = [](double lufs) { return lufs > kGate ? lufs : -HUGE_VAL; };
    const auto volume = [](int percent) { return 20 * std::log10(percent / 100.0); };
    return matchLevels(
        now, {[=](double gain) { return gated(song + gain); }, [=](double gain) { return gated(voice + gain); },
              [=](double songGain, double voiceGain) {
                  const double peak = std::max(song + songGain, voice + voiceGain) + kPeaks;
                  return std::max(peak, 0.0) * 0.005;
              },
              volume, volume});
}

TEST(LevelSearch, PutsTheVoiceAboveTheSong) {
    const struct {
        double song;
        double voice;
        Levels now;
    } cases[] = {
        {-20, -25, {}},
        {-20, -60, {}},                // more than the trim
        {-20, -75, {}},                // of which nothing is above the gate as it is
        {-20, 10, {}},                 // more than the trim the other way
        {-5, -30, {}},                 // beyond what the limiter is to do
        {-30, -25, {{40, 70}, -6.5}},  // from other levels than the usual
    };
    for (const auto& [song, voice, now] : cases) {
        const LevelMatch match = matchOf(song, voice, now);
        ASSERT_EQ(match.end, MatchEnd::matched) << song << ' ' << voice;
        EXPECT_NEAR(match.voiceLufs - match.songLufs, 2, 0.5) << song << ' ' << voice;
        EXPECT_LE(match.limitedShare, 0.01);
        EXPECT_LE(std::abs(match.levels.trim), 24);
        EXPECT_NEAR(match.levels.trim * 10, std::round(match.levels.trim * 10), 1e-6) << "to a tenth";
        const auto& volume = match.levels.volume;
        const double songChange = 20 * std::log10(double(volume[0]) / now.volume[0]);
        const double voiceChange = 20 * std::log10(double(volume[1]) / now.volume[1]);
        EXPECT_LE(songChange, 0);
        EXPECT_NEAR(match.songLufs, song + songChange, 1e-6);
        EXPECT_NEAR(match.voiceLufs, voice + voiceChange + match.levels.trim - now.trim, 1e-6);
    }
    EXPECT_EQ(matchOf(-20, -25).levels, (Levels{{100, 100}, 7})) << "volumes stay where the trim is enough";
}

TEST(LevelSearch, TellsWhatCannotBeMatched) {
    EXPECT_EQ(matchOf(-80, -20).end, MatchEnd::songSilent);
    EXPECT_EQ(matchOf(-20, -95).end, MatchEnd::voiceSilent);
    EXPECT_EQ(matchOf(-5, -69).end, MatchEnd::outOfReach);
}

}  // namespace
}  // namespace melvane
