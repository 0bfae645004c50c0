#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <span>

#include "alignment/find_place.h"
#include "tests/takes.h"

namespace melvane {
namespace {

using namespace test;

const GoOn kGoOn = [](double) { return true; };

const Mono& song() {
    static const Mono song = makeSong(150, 1000, 5);
    return song;
}

TEST(Imprint, HasAFrameForFourWhateverTheBlocksAre) {
    EXPECT_EQ(imprint(Mono(4 * 1000)).size(), 1000U);
    EXPECT_EQ(imprint(Mono(3)).size(), 1U);
    const Mono sound = noise(44100, 0.1, 2);
    Mono late(20000);
    late.insert(late.end(), sound.begin(), sound.end());
    const Trace there = imprint(late);
    const auto loudest = [](const Trace& trace, std::size_t from, std::size_t to) {
        int most = 0;
        for (std::size_t i = from; i < to; ++i) most = std::max(most, std::abs(static_cast<int>(trace[i])));
        return most;
    };
    EXPECT_LT(loudest(there, 0, 4000), 100) << "silence stays silence";
    EXPECT_GT(loudest(there, 5500, 9000), 1000);
    Mono quiet = sound;
    for (float& sample : quiet) sample *= 0.01F;
    EXPECT_NEAR(loudest(imprint(quiet), 500, 9000), loudest(imprint(sound), 500, 9000), 1000);
}

TEST(FindPlace, IsRightToAMillisecondAndThreePartsInAMillion) {
    const Damage damages[] = {{12.75, -100, 0.01, 0}, {-0.0125, 100, -0.02, 0.4}};
    const Trace wanted = imprint(song());
    unsigned seed = 10;
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.earlier);
        const Trace heard = imprint(record(song(), makeVoice(125, ++seed), damage));
        double done = 0;
        const auto found = findPlace(wanted, heard, [&](double now) {
            EXPECT_GE(now, done);
            done = now;
            return true;
        });
        ASSERT_TRUE(found);
        EXPECT_EQ(done, 1);
        EXPECT_NEAR(found->sync, damage.earlier, 0.001);
        EXPECT_NEAR(found->driftPpm, damage.driftPpm, 3);
        EXPECT_GT(found->certainty, 0.8);
        EXPECT_FALSE(findPlace(wanted, heard, [](double) { return false; })) << "given up";
    }
}

TEST(FindPlace, OfASongThatRepeatsItselfIsTheOneThatTheWholeRecordingShares) {
    Mono loops = makeSong(120, 4, 9);
    const Mono end = makeSong(10, 1000, 8);
    loops.insert(loops.end(), end.begin(), end.end());
    const auto found = findPlace(imprint(loops), imprint(record(loops, makeVoice(140, 4), {6, 20})), kGoOn);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->sync, 6, 0.001);
}

TEST(FindPlace, OfAShortRecordingIsFoundToo) {
    const auto found = findPlace(imprint(song()), imprint(record(song(), makeVoice(8, 6), {-70, 0, 0.2})), kGoOn);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->sync, -70, 0.001);
}

TEST(FindPlace, OfAStrangerIsNone) {
    const Mono voice = makeVoice(125, 3);
    const Mono other = makeSong(150, 1000, 6);  // the same drums at the same tempo
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    const Mono strangers[] = {
        voice, record(other, voice, {5}), Mono(44100), Mono(441000, 0.5F), Mono(441000, nothing), Mono(1), {}};
    const Trace wanted = imprint(song());
    for (const Mono& stranger : strangers) {
        SCOPED_TRACE(&stranger - strangers);
        const Trace heard = imprint(stranger);
        EXPECT_FALSE(findPlace(wanted, heard, kGoOn));
    }
    const Trace begin(wanted.begin(), wanted.begin() + 40 * kImprintRate);
    EXPECT_FALSE(findPlaceByShades(
        begin, imprint(record(other, Mono(voice.begin(), voice.begin() + 40 * kSampleRate), {5})), kGoOn));
    for (const Mono& stranger : std::span(strangers).subspan(2))
        EXPECT_FALSE(findPlaceByShades(begin, imprint(stranger), kGoOn));
}

TEST(FindPlaceByShades, BringsAnotherKeyToItsSong) {
    const Mono played = makeSong(150, 1000, 5, 6000);
    Mono lower = played;  // the same moments, other phases
    for (std::size_t i = 0; i + 30 < lower.size(); ++i) lower[i] = played[i] - played[i + 11] + played[i + 30];
    const auto found =
        findPlaceByShades(imprint(lower), imprint(record(played, makeVoice(125, 8), {-20, 40, 0.1})), kGoOn);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->sync, -20, 0.005);
    EXPECT_NEAR(found->driftPpm, 40, 30);
}

}  // namespace
}  // namespace melvane
