#include "engine/graph/card.h"

#include <gtest/gtest.h>
#include <soxr.h>

#include "engine/device/gap_fade.h"
#include "engine/graph/kept_mix.h"
#include "engine/graph/limited_source.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

class Recorder : public CardListener {
public:
    void push(const float* mix, std::size_t frames) override { sound.insert(sound.end(), mix, mix + frames * 2); }
    bool congested() const override { return false; }
    Sound sound;
};

std::shared_ptr<Channel> channelOf(Sound sound, bool loop = false) {
    return std::make_shared<Channel>(std::make_shared<MemorySource>(std::move(sound)), loop);
}

// Mixes up to `frames` frames in blocks of `block`, less where the card stops.
std::size_t mix(Card& card, std::size_t frames, std::size_t block) {
    Sound buffer(block * 2);
    std::size_t done = 0;
    while (done < frames) {
        const std::size_t got = card.mix(buffer.data(), std::min(block, frames - done));
        done += got;
        if (got == 0) break;
    }
    return done;
}

struct Session {
    Card card;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();

    Session() { card.listen(recorder); }
    void play(const std::shared_ptr<Channel>& channel) { card.play(channel, false); }
};

TEST(Card, ChannelsSetUpWhileHeldStartOnOneFrameAndNothingIsMixedBefore) {
    Session session;
    session.card.hold(true);
    session.play(channelOf(noise16(100, 1)));
    EXPECT_EQ(mix(session.card, 100, 10), 0U);
    session.play(channelOf(noise16(100, 2)));
    session.card.hold(false);
    mix(session.card, 100, 10);
    const Sound one = noise16(100, 1);
    const Sound two = noise16(100, 2);
    ASSERT_EQ(session.recorder->sound.size(), one.size());
    for (std::size_t i = 0; i < one.size(); ++i) EXPECT_FLOAT_EQ(session.recorder->sound[i], one[i] + two[i]);
}

TEST(Card, HoldsItselfBehindTheLastFrameOfTheSongWhateverTheBlock) {
    for (const std::size_t block : {1U, 64U, 441U, 1000U, 1001U, 4096U}) {
        Session session;
        const auto song = channelOf(noise16(1000, 1));
        session.play(channelOf(noise16(300, 2), true));
        session.play(song);
        session.card.holdAtEndOf(song);
        EXPECT_EQ(mix(session.card, 5000, block), 1000U) << block;
        EXPECT_EQ(session.recorder->sound.size(), 2000U) << block;
        EXPECT_FALSE(song->playing());
        EXPECT_EQ(song->position(), 1000);
        EXPECT_FALSE(session.card.running());
    }
}

// What is kept beside the card, through a limiter of its own, is what the card has handed out.
TEST(Card, KeptMixIsWhatWasMixed) {
    constexpr std::size_t kFrames = 30000;
    for (const bool apart : {false, true}) {
        Session session;
        const auto song = channelOf(sine(440, 0.9, kFrames));
        const auto voice = channelOf(noise16(kFrames / 3, 2, 20000), true);
        voice->trim(1.5F);
        const auto kept = std::make_shared<KeptMixFile>(apart);
        session.card.tap(kept, apart ? voice : nullptr);
        session.play(voice);
        session.play(song);
        session.card.holdAtEndOf(song);
        mix(session.card, 2 * kFrames, 441);
        ASSERT_EQ(kept->failure(), 0);
        ASSERT_EQ(kept->frames(), static_cast<std::int64_t>(kFrames));
        LimitedSource limited(kept->read(1, 1));
        Sound heard(kFrames * 2 + 2000);
        std::size_t done = 0;
        while (const std::size_t got = limited.read(&heard[done * 2], 1000)) done += got;
        ASSERT_EQ(done, kFrames);
        EXPECT_GT(limited.takeReduction(), 0.2F) << "there was something to limit";
        for (std::size_t i = 0; i < kFrames * 2; ++i)
            ASSERT_NEAR(heard[i], session.recorder->sound[i], apart ? 1e-6 : 0) << i;
        Sound alone(2000);
        kept->read(0, 1)->read(alone.data(), 1000);
        const Sound source = noise16(kFrames / 3, 2, 20000);
        for (std::size_t i = 0; apart && i < alone.size(); ++i) ASSERT_FLOAT_EQ(alone[i], source[i] * 1.5F);
    }
}

TEST(Card, TrimRampsAndDoesNotDependOnTheBlock) {
    const auto run = [](std::size_t block) {
        Session session;
        const auto voice = channelOf(Sound(20000, 0.1F));
        session.play(voice);
        mix(session.card, 2000, block);
        voice->trim(8);
        mix(session.card, 4000, block);
        return session.recorder->sound;
    };
    const Sound sound = run(64);
    EXPECT_EQ(sound, run(1000));
    EXPECT_EQ(sound[0], 0.1F) << "bit by bit";
    EXPECT_FLOAT_EQ(sound.back(), 0.8F);
    for (std::size_t i = 2; i < sound.size(); ++i) ASSERT_LT(std::abs(sound[i] - sound[i - 2]), 0.001F) << i;
}

// A list of actions at given frames gives the same samples in blocks of any size.
TEST(Card, LevelChangesRampAndDoNotDependOnTheBlock) {
    const auto run = [](std::size_t block) {
        Session session;
        const auto song = channelOf(Sound(40000, 0.5F));
        song->setLevel({100, 0});
        session.play(song);
        mix(session.card, 4096, block);
        song->setLevel({30, -50});
        mix(session.card, 300, block);
        song->setLevel({80, 100});
        mix(session.card, 8192, block);
        return session.recorder->sound;
    };
    const Sound reference = run(4096);
    for (const std::size_t block : {64U, 441U}) EXPECT_EQ(run(block), reference) << block;
    float largestStep = 0;
    for (std::size_t i = 2; i < reference.size(); ++i)
        largestStep = std::max(largestStep, std::abs(reference[i] - reference[i - 2]));
    EXPECT_LT(largestStep, 0.5F / 800);
    EXPECT_FLOAT_EQ(reference[reference.size() - 2], 0.0F);
    EXPECT_FLOAT_EQ(reference.back(), 0.4F);
}

TEST(Card, AVoiceLoopsWithoutAGapFromItsOffsetOn) {
    const Sound voice = noise16(1000, 3);
    for (const int offset : {-300, 0, 250, 1200}) {
        Session session;
        const auto channel = channelOf(voice, true);
        channel->place({static_cast<std::int32_t>(offset), false});
        session.play(channel);
        mix(session.card, 3000, 100);
        for (int i = 0; i < 3000; ++i) {
            const int place = i + offset;
            const float expected = place < 0 ? 0.0F : voice[static_cast<std::size_t>(place % 1000) * 2];
            ASSERT_EQ(session.recorder->sound[static_cast<std::size_t>(i) * 2], expected) << offset << " " << i;
        }
    }
}

// Moved and moved back in a run: to the frame, by a fade of 20 ms, the same in any block.
TEST(Card, AnOffsetInARunFadesOverToTheSample) {
    const Sound voice = noise16(60000, 5);
    const auto run = [&](std::size_t block) {
        Session session;
        const auto channel = channelOf(voice, true);
        session.play(channel);
        for (const int offset : {0, 5000, 5000, -20000, 0}) {
            channel->place({static_cast<std::int32_t>(offset), false});
            mix(session.card, 4096, block);
        }
        return session.recorder->sound;
    };
    const Sound reference = run(4096);
    const auto ahead = static_cast<std::size_t>(Limiter::kDelay);
    const auto expectAt = [&](std::size_t frame, std::size_t place) {
        EXPECT_TRUE(std::equal(reference.begin() + static_cast<std::ptrdiff_t>(frame * 2),
                               reference.begin() + static_cast<std::ptrdiff_t>(frame * 2 + 1000),
                               voice.begin() + static_cast<std::ptrdiff_t>(place * 2)))
            << frame;
    };
    expectAt(4096 + ahead + 900, 4096 + ahead + 900 + 5000);
    expectAt(3 * 4096 - 600, 3 * 4096 - 600 + 5000);
    expectAt(5 * 4096 - 600, 5 * 4096 - 600);
    for (std::size_t i = 3 * 4096 + ahead + 900; i < 4 * 4096; ++i) ASSERT_EQ(reference[2 * i], 0.0F) << i;
    for (const std::size_t block : {64U, 512U}) EXPECT_EQ(run(block), reference) << block;
}

TEST(Card, AnOffsetMovedAgainInItsFadeStillFadesTheSameInAnyBlock) {
    const auto run = [](std::size_t block) {
        Session session;
        const auto channel = channelOf(sine(50, 0.5, 60000), true);
        session.play(channel);
        mix(session.card, 4000, block);
        for (const int offset : {400, 800, 1200, 0}) {
            channel->place({static_cast<std::int32_t>(offset), false});
            mix(session.card, 300, block);
        }
        mix(session.card, 8000, block);
        return session.recorder->sound;
    };
    const Sound sound = run(100);
    for (std::size_t i = 2; i < sound.size(); ++i) ASSERT_LT(std::abs(sound[i] - sound[i - 2]), 0.01F) << i;
    for (const std::size_t block : {7U, 64U, 4096U}) EXPECT_EQ(run(block), sound) << block;
}

TEST(Card, APlaybackThatNobodyRecordsComesOutWholeAndLeavesNothingBehind) {
    Card card;
    const auto first = channelOf(noise16(5392, 7));
    card.play(first, false);
    EXPECT_GE(mix(card, 20000, 441), 5392U);
    EXPECT_EQ(first->position(), 5392);
    EXPECT_FALSE(card.active());
    const Sound second = noise16(1000, 8);
    card.play(channelOf(second), false);
    Sound out(200);
    ASSERT_EQ(card.mix(out.data(), 100), 100U);
    EXPECT_TRUE(std::equal(out.begin(), out.end(), second.begin()));
}

TEST(Card, VolumeAndPanAreLinearAndClamped) {
    const struct {
        std::uint32_t volume;
        std::int32_t pan;
        float left, right;
    } cases[] = {{100, 0, 1, 1},       {50, 0, 0.5F, 0.5F}, {100, 100, 0, 1}, {100, -100, 1, 0},
                 {80, 25, 0.6F, 0.8F}, {0, 0, 0, 0},        {500, -300, 1, 0}};
    for (const auto& c : cases) {
        Level level;
        level.set({c.volume, c.pan});
        const float full[] = {1, 1};
        float out[] = {0, 0};
        level.mixInto(out, full, 1);
        EXPECT_FLOAT_EQ(out[0], c.left);
        EXPECT_FLOAT_EQ(out[1], c.right);
    }
}

TEST(Card, PeaksAreTheHighestSinceAskedLastBehindTheLevelAndBeforeTheLimiter) {
    Sound loud = silence(1003);
    loud[2 * 500] = -0.8F;
    loud[2 * 1002 + 1] = 0.9F;  // the very last frame
    Sound low = silence(1003);
    low[2 * 500] = -0.6F;
    Session session;
    const auto first = channelOf(loud);
    const auto second = channelOf(low);
    second->setLevel({50, 0});
    for (const auto& channel : {first, second}) session.play(channel);
    mix(session.card, 800, 100);
    const auto expectPeaks = [](PeakLevels peaks, float left, float right) {
        EXPECT_FLOAT_EQ(peaks.left, left);
        EXPECT_FLOAT_EQ(peaks.right, right);
    };
    expectPeaks(first->takePeaks(), 0.8F, 0);
    expectPeaks(second->takePeaks(), 0.3F, 0);
    expectPeaks(session.card.takePeaks(), 1.1F, 0);
    EXPECT_NEAR(session.card.takeReduction(), 1 - 0.915 / 1.1, 0.02);
    EXPECT_EQ(session.card.takeReduction(), 0);
    mix(session.card, 200, 7);
    expectPeaks(first->takePeaks(), 0, 0.9F);
    expectPeaks(second->takePeaks(), 0, 0);
    expectPeaks(session.card.takePeaks(), 0, 0.9F);
    expectPeaks(first->takePeaks(), 0, 0);
}

TEST(Channel, SeeksStopsAndStartsAgainFromTheEnd) {
    const Sound sound = noise16(100, 4);
    Session session;
    const auto channel = channelOf(sound);
    session.play(channel);
    EXPECT_TRUE(channel->seek(60));
    EXPECT_FALSE(channel->seek(101));
    EXPECT_EQ(channel->position(), 60);
    mix(session.card, 100, 100);
    EXPECT_FALSE(channel->playing());
    EXPECT_EQ(channel->position(), 100);
    EXPECT_EQ(session.recorder->sound[0], sound[120]);
    channel->play(false);
    EXPECT_EQ(channel->position(), 0);
}

Sound limited(Sound sound) {
    constexpr std::size_t block = 441;
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

// A device that runs dry now and then: what is heard has no step beyond the sound's own, and all of it between gaps.
TEST(GapFade, TakesTheClickFromBothEndsOfAGap) {
    const Sound tone = sine(100, 0.5, 20000);
    const float steepest = 0.5F * 2 * std::numbers::pi_v<float> * 100 / kSampleRate + 0.5F / 220;
    GapFade fade;
    Sound heard;
    std::size_t at = 0;
    for (const std::size_t stretch : {5000U, 300U, 8000U, 100U, 6000U})
        for (std::size_t left = stretch; left > 0 || heard[heard.size() - 1] != 0;) {
            constexpr std::size_t kWanted = 441;
            const std::size_t got = std::min(left, kWanted);
            Sound block(kWanted * 2, 7);
            std::copy_n(tone.begin() + static_cast<std::ptrdiff_t>(2 * at), got * 2, block.begin());
            at += got;
            left -= got;
            fade.apply(block.data(), got, kWanted, left);
            if (got == kWanted && left > 441 && stretch - left > 1000) {
                EXPECT_EQ(block.back(), tone[2 * at - 1]) << at;
            }
            heard.insert(heard.end(), block.begin(), block.end());
        }
    for (std::size_t i = 2; i < heard.size(); ++i) ASSERT_LE(std::abs(heard[i] - heard[i - 2]), steepest) << i / 2;
}

}  // namespace
}  // namespace melvane::engine
