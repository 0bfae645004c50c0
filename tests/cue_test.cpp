// Where song and voice are, and going to any place in the song: what is heard from there on is what a run has there.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "engine/decode/drift_source.h"
#include "engine/effects/effect.h"
#include "engine/graph/card.h"
#include "engine/graph/tempo_source.h"
#include "tests/sound.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

constexpr std::int64_t kLength = 12 * kSampleRate;
constexpr std::size_t kBridge = 220;

// A tone as a recorder writes it whose clock is off by `ppm`.
class DriftingTone : public decode::NativeSource {
public:
    DriftingTone(int rate, double hertz, double ppm) : step_(2 * std::numbers::pi * hertz / (rate * (1 + ppm / 1e6))) {
        setFormat(rate, std::llround(rate * 20 * (1 + ppm / 1e6)));
    }

private:
    std::size_t decode(float* out, std::size_t frames) override {
        for (std::size_t i = 0; i < frames; ++i, ++next_)
            out[2 * i] = out[2 * i + 1] = static_cast<float>(0.5 * std::sin(step_ * static_cast<double>(next_)));
        return frames;
    }
    void reposition(std::int64_t frame) override { next_ = frame; }

    const double step_;
    std::int64_t next_ = 0;
};

class Recorder : public CardListener {
public:
    void push(const float* mix, std::size_t frames) override { sound.insert(sound.end(), mix, mix + frames * 2); }
    bool congested() const override { return false; }
    Sound sound;
};

// A song and a voice on a card, too loud together so that the limiter works now and then.
struct Desk {
    Card card;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::shared_ptr<Channel> song, voice;
    std::vector<std::shared_ptr<Effect>> effects;

    explicit Desk(Place place = {}, std::size_t voiceFrames = 5 * kSampleRate) {
        Sound loud = noise16(kLength, 1, 9000);
        for (std::size_t at = 30000; at < loud.size(); at += 400000) loud[at] = 0.95F;
        song = std::make_shared<Channel>(std::make_shared<MemorySource>(loud), false);
        voice = std::make_shared<Channel>(std::make_shared<MemorySource>(noise16(voiceFrames, 2, 20000)), true);
        voice->place(place);
        card.hold(true);
        card.listen(recorder);
        card.play(song, false);
        card.play(voice, false);
        card.holdAtEndOf(song);
    }
    void attachAll() {
        const std::vector<EffectRecord> records = {
            ReverbRecord{.fInGain = 0, .fReverbMix = -6, .fReverbTime = 1500},
            EchoRecord{.fWetDryMix = 40, .fFeedback = 40, .fLeftDelay = 300, .fRightDelay = 333},
            ChorusRecord{.fWetDryMix = 50, .fFrequency = 1.1F}, FlangerRecord{.fWetDryMix = 50, .fFrequency = 0.25F},
            ParametricEqRecord{1000, 18, 6}};
        const EffectType types[] = {EffectType::reverb, EffectType::echo, EffectType::chorus, EffectType::flanger,
                                    EffectType::parametricEq};
        for (std::size_t i = 0; i < records.size(); ++i) {
            effects.push_back(makeEffect(types[i]));
            effects.back()->set(records[i]);
            voice->addEffect(effects.back(), 0);
        }
    }
    void cue(std::int64_t frame) { card.cue(frame); }
    bool held = true;
    // What the next frames are, in blocks of `block`.
    Sound mix(std::size_t frames, std::size_t block = 441) {
        if (held) card.hold(held = false);
        recorder->sound.clear();
        Sound out(block * 2);
        for (std::size_t got = 1; frames > 0 && got > 0; frames -= got)
            got = card.mix(out.data(), std::min(block, frames));
        return recorder->sound;
    }
};

double loudestDifference(const Sound& one, const Sound& other, std::size_t from) {
    double most = 0;
    for (std::size_t i = 0; i < one.size(); ++i)
        most = std::max(most, static_cast<double>(std::abs(one[i] - other[from * 2 + i])));
    return most;
}

TEST(Cue, FromAnyFrameOnItIsTheRunBitByBitInAnyBlock) {
    const Sound run = Desk().mix(kLength);
    ASSERT_EQ(run.size(), kLength * 2U);
    for (const std::int64_t frame : {0, 1, 100, 219, 221, 66149, 66151, 250000, 480001, 529000})
        for (const std::size_t block : {64U, 441U, 4096U}) {
            Desk desk;
            desk.cue(frame);
            EXPECT_EQ(desk.card.songFrame(), frame);
            // The way in is heard for 5 ms.
            const std::size_t before = std::min<std::size_t>(static_cast<std::size_t>(frame), kBridge);
            desk.mix(before, block);
            EXPECT_EQ(desk.card.songFrame(), frame);
            const Sound sound = desk.mix(kLength, block);
            ASSERT_EQ(sound.size(), run.size() - static_cast<std::size_t>(frame) * 2) << frame;
            EXPECT_EQ(loudestDifference(sound, run, static_cast<std::size_t>(frame)), 0) << frame << " " << block;
            EXPECT_EQ(desk.card.songFrame(), kLength);
        }
}

TEST(Cue, InTheMiddleAndBehindTheEndAndBackAgain) {
    const Sound run = Desk().mix(kLength);
    Desk desk;
    desk.mix(100000);
    for (const std::int64_t frame : {400000LL, 20000LL, static_cast<long long>(kLength) + 5, 300LL,
                                     static_cast<long long>(kLength) + 500000, 5000LL, 300000LL}) {
        desk.cue(frame);
        desk.mix(kBridge);
        const Sound sound = desk.mix(3000);
        if (frame > kLength) {
            EXPECT_TRUE(sound.empty());
            EXPECT_EQ(desk.card.songFrame(), kLength);
            desk.held = true;
        } else {
            EXPECT_EQ(loudestDifference(sound, run, static_cast<std::size_t>(frame)), 0) << frame;
            EXPECT_EQ(desk.card.songFrame(), frame + 3000);
        }
    }
}

TEST(Cue, WithEffectsItIsWithinAHundredDecibels) {
    Desk straight;
    straight.attachAll();
    const Sound run = straight.mix(kLength);
    for (const std::int64_t frame : {50000, 400000}) {
        Desk desk;
        desk.attachAll();
        desk.cue(frame);
        desk.mix(kBridge);
        EXPECT_LT(decibels(loudestDifference(desk.mix(60000), run, static_cast<std::size_t>(frame))), -100) << frame;
    }
}

TEST(Cue, AnotherPlaceIsNotHeardAsAClick) {
    Card card;
    const auto recorder = std::make_shared<Recorder>();
    const Sound tone = sine(100, 0.4, kLength);
    card.listen(recorder);
    card.play(std::make_shared<Channel>(std::make_shared<MemorySource>(tone), false), false);
    Sound out(882);
    for (const std::int64_t frame : {70000, 5, 200123, 0, 110}) {
        for (int i = 0; i < 10; ++i) card.mix(out.data(), 441);
        card.cue(frame);
    }
    const Sound& sound = recorder->sound;
    for (std::size_t i = 2; i < sound.size(); ++i) ASSERT_LT(std::abs(sound[i] - sound[i - 2]), 0.012F) << i / 2;
}

TEST(Cue, APauseLosesAndRepeatsNothing) {
    const Sound run = Desk().mix(kLength);
    Desk desk;
    desk.cue(200000);
    desk.mix(kBridge);
    std::size_t at = 200000;
    for (const std::size_t frames : {1U, 439U, 1000U, 63U, 5000U}) {
        const Sound sound = desk.mix(frames);
        EXPECT_EQ(loudestDifference(sound, run, at), 0) << at;
        at += frames;
        desk.card.hold(desk.held = true);
        Sound nothing(200);
        EXPECT_EQ(desk.card.mix(nothing.data(), 100), 0U);
        EXPECT_EQ(desk.card.songFrame(), static_cast<std::int64_t>(at));
    }
}

TEST(Cue, ALoopIsTheRunBetweenItsMarksEveryTime) {
    const Sound run = Desk().mix(kLength);
    constexpr std::size_t kBegin = 100000, kEnd = 104321;
    for (const std::size_t block : {100U, 441U, 8192U}) {
        Desk desk;
        desk.card.loop(kBegin, kEnd);
        desk.cue(102000);
        desk.mix(kBridge, block);
        EXPECT_EQ(loudestDifference(desk.mix(kEnd - 102000, block), run, 102000), 0);
        for (int round = 0; round < 3; ++round) {
            desk.mix(kBridge, block);
            EXPECT_EQ(loudestDifference(desk.mix(kEnd - kBegin, block), run, kBegin), 0) << round;
        }
        desk.card.loop(0, 0);
        desk.mix(kBridge, block);
    }
}

// Cues that come one after the other while the card mixes: what is handed out is whole, and ends where the last led.
TEST(Cue, UnderACueAtAnyTimeNothingIsLost) {
    const Sound run = Desk().mix(kLength);
    Desk desk;
    desk.card.hold(desk.held = false);
    std::atomic<bool> done = false;
    std::size_t mixed = 0;
    const auto mix = [&] {
        Sound out(882);
        desk.card.hold(false);  // it may have come to the end
        mixed += desk.card.mix(out.data(), 441);
    };
    std::thread mixing([&] {
        while (!done) mix();
    });
    for (std::int64_t i = 0; i < 200; ++i) {
        desk.cue(i * 12345 % 400000);
        std::this_thread::yield();
    }
    done = true;
    mixing.join();
    EXPECT_EQ(desk.recorder->sound.size(), mixed * 2);
    EXPECT_EQ(desk.card.framesMixed(), mixed);
    desk.card.hold(false);
    desk.cue(300000);
    desk.mix(kBridge);
    EXPECT_EQ(loudestDifference(desk.mix(5000), run, 300000), 0);
}

TEST(Cue, AVoiceWithAPlaceSoundsOnceWithFadesWhereItBeginsAndEnds) {
    constexpr std::int64_t kVoice = 20000;
    const Sound voice = noise16(kVoice, 9);
    for (const std::int32_t earlier : {19000, 5000, 0, -3000, -50000}) {
        Card card;
        const auto recorder = std::make_shared<Recorder>();
        const auto channel = std::make_shared<Channel>(std::make_shared<MemorySource>(voice), true);
        channel->place({earlier, true});
        card.listen(recorder);
        card.play(channel, false);
        Sound out(882);
        for (int i = 0; i < 200; ++i) card.mix(out.data(), 441);
        for (std::int64_t i = 0; i < 200 * 441; ++i) {
            const std::int64_t at = i + earlier;
            const std::int64_t toEnd = std::min(at, kVoice - 1 - at);
            const float gain = toEnd < 0 ? 0 : std::min(1.0F, (static_cast<float>(toEnd) + 0.5F) / 220);
            const float expected = toEnd < 0 ? 0 : gain * voice[static_cast<std::size_t>(at) * 2];
            ASSERT_FLOAT_EQ(recorder->sound[static_cast<std::size_t>(i) * 2], expected) << earlier << " " << i;
        }
    }
}

// At any rate, to the far end, from any frame on.
TEST(Drift, ACorrectedRecordingIsTheOneOfARightClock) {
    for (const int rate : {16000, 44100, 96000})
        for (const double ppm : {-9000.0, 0.02, 60.0}) {
            decode::DriftSource source(std::make_unique<DriftingTone>(rate, 997, ppm), ppm);
            ASSERT_LE(std::abs(source.frames() - 20 * kSampleRate), 1) << rate << " " << ppm;
            Sound whole(static_cast<std::size_t>(source.frames()) * 2);
            for (std::size_t done = 0, got = 1; got > 0; done += got)
                got = source.read(&whole[done * 2], std::min<std::size_t>(1000, whole.size() / 2 - done));
            const Sound right = sine(997, 0.5, 20 * kSampleRate);
            double most = 0;
            for (std::size_t i = 1000; i < whole.size() - 1000; ++i)
                most = std::max(most, static_cast<double>(std::abs(whole[i] - right[i])));
            EXPECT_LT(decibels(most), -95) << rate << " " << ppm;
            for (const std::int64_t frame : {0, 1, 441000, 880000, 3}) {
                Sound part(2000);
                source.seek(frame);
                source.read(part.data(), 1000);
                EXPECT_EQ(loudestDifference(part, whole, static_cast<std::size_t>(frame)), 0) << rate << " " << frame;
            }
        }
}

}  // namespace
}  // namespace melvane::engine
