// Where song and voice are, and going to any place in the song: what is heard from there on is what a run has there.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "engine/decode/decoded_files.h"
#include "engine/decode/drift_source.h"
#include "engine/decode/open_source.h"
#include "engine/effects/effect.h"
#include "engine/graph/card.h"
#include "engine/graph/tempo_source.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane::engine {
namespace {

using namespace melvane::test;

constexpr std::int64_t kLength = 12 * kSampleRate;
constexpr std::size_t kBridge = 220;
constexpr int kDriftSeconds = 8;

// A tone as a recorder writes it whose clock is off by `ppm`.
class DriftingTone : public decode::NativeSource {
public:
    DriftingTone(int rate, double hertz, double ppm) : step_(2 * std::numbers::pi * hertz / (rate * (1 + ppm / 1e6))) {
        setFormat(rate, std::llround(rate * kDriftSeconds * (1 + ppm / 1e6)));
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

Sound loudSong(std::int64_t length = kLength) {
    Sound loud = noise16(static_cast<std::size_t>(length), 1, 9000);
    for (std::size_t at = 30000; at < loud.size(); at += 400000) loud[at] = 0.95F;
    return loud;
}

// A song and a voice on a card, too loud together so that the limiter works now and then.
struct Desk {
    Card card;
    std::shared_ptr<Recorder> recorder = std::make_shared<Recorder>();
    std::shared_ptr<Channel> song, voice;
    std::vector<std::shared_ptr<Effect>> effects;

    Desk()
        : Desk(std::make_shared<MemorySource>(loudSong()),
               std::make_shared<MemorySource>(noise16(5 * kSampleRate, 2, 20000))) {}
    Desk(std::shared_ptr<PcmSource> ofSong, std::shared_ptr<PcmSource> ofVoice, Place place = {})
        : song(std::make_shared<Channel>(std::move(ofSong), false)),
          voice(std::make_shared<Channel>(std::move(ofVoice), true)) {
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

// Files of all kinds, made of the same noise.
class CueOfFiles : public testing::Test {
protected:
    std::string made(const std::string& name, const std::string& command) const {
        EXPECT_EQ(std::system(("cd \"" + dir_.path() + "\" && " + command).c_str()), 0) << command;
        return dir_ / name;
    }
    std::string wav(const std::string& name, const Sound& sound) const { return dir_.write(name, wavFile(sound)); }
    // `from` as `name` says, at `rate`.
    std::string as(const std::string& name, const std::string& from, int rate) const {
        const std::string to = "-ar " + std::to_string(rate) + " " + name;
        return made(name, "ffmpeg -nostdin -v error -y -i " + from + " " + to);
    }
    std::shared_ptr<PcmSource> open(const std::string& file, double driftPpm = 0) {
        auto source = decode::openSource(file, {}, driftPpm, &decoded_);
        EXPECT_TRUE(source) << file;
        return source;
    }
    std::shared_ptr<TempoSource> openSong(const std::string& file, float key = 0) {
        auto song = std::make_shared<TempoSource>(open(file));
        song->setPitch(key);
        return song;
    }

    struct Case {
        std::string song, voice;
        Place place = {};
        double driftPpm = 0;
    };
    using Places = std::vector<std::int64_t>;
    // From `edges` on, from any place and in a loop there is no more than `within` between a run and what is heard.
    void expectTheRun(const Case& of, double within, bool effects, const Places& edges);

private:
    std::int64_t any(std::int64_t least, std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>(least, most)(random_);
    }

    const TempDir dir_;
    decode::DecodedFiles decoded_{""};
    std::mt19937 random_{11};
};

void CueOfFiles::expectTheRun(const Case& of, double within, bool effects, const Places& edges) {
    constexpr std::int64_t kHeard = 8000;
    const auto desk = [&] {
        auto made = std::make_unique<Desk>(openSong(of.song), open(of.voice, of.driftPpm), of.place);
        if (effects) made->attachAll();
        return made;
    };
    const Sound run = desk()->mix(2 * kLength);  // to its end
    const auto length = static_cast<std::int64_t>(run.size() / 2);
    const auto cued = desk();
    const auto expectRun = [&](std::int64_t from, std::int64_t frames) {
        const auto block = static_cast<std::size_t>(any(40, 5000));
        const Sound sound = cued->mix(static_cast<std::size_t>(frames), block);
        EXPECT_EQ(sound.size(), static_cast<std::size_t>(std::min(frames, length - from)) * 2);
        EXPECT_LE(loudestDifference(sound, run, static_cast<std::size_t>(from)), within)
            << of.song << " " << of.voice << " from " << from << " by " << block;
    };
    Places places = edges;
    places.push_back(any(2 * kHeard, length - 2 * kHeard));
    for (const std::int64_t frame : places) {
        cued->cue(frame);
        EXPECT_EQ(cued->card.songFrame(), frame);
        cued->card.hold(true);  // nothing of before is to be heard
        cued->held = true;
        cued->mix(std::min<std::size_t>(static_cast<std::size_t>(frame), kBridge));
        EXPECT_EQ(cued->card.songFrame(), frame);
        expectRun(frame, kHeard);
    }
    const std::int64_t end = places.back() + kHeard + 500;
    const std::int64_t begin = places.back() - 1000;
    cued->card.loop(begin, end);
    expectRun(end - 500, 500);
    for (int round = 0; round < 2; ++round) {
        cued->mix(kBridge);
        expectRun(begin, end - begin);
    }
}

constexpr double kNear = 1e-5;  // -100 dB

TEST_F(CueOfFiles, FromAnyFrameOnItIsTheRunAlsoInALoop) {
    constexpr std::int64_t kShort = 8 * kSampleRate;
    const std::string song = wav("song.wav", loudSong(kShort));
    const std::string voice = wav("voice.wav", noise16(5 * kSampleRate, 2, 20000));
    const std::vector<Case> exact = {
        {song, voice},
        {song, voice, {-70'000, true}},
        {as("song.ogg", "song.wav", 44'100), as("voice.flac", "voice.wav", 44'100), {30'000, true}},
        {as("song.mp3", "song.wav", 44'100), as("voice.m4a", "voice.wav", 44'100), {-5'000, false}},
    };
    const std::vector<Case> near = {
        {song, voice, {20'000, true}, 60},
        {as("22.wav", "song.wav", 22'050), as("48.wav", "voice.wav", 48'000)},
        {as("96.wav", "song.wav", 96'000), as("32.mp3", "voice.wav", 32'000), {-100'000, true}, -100},
        {as("48.m4a", "song.wav", 48'000), as("16.opus", "voice.wav", 48'000), {1, true}},
    };
    const Places edges = {0, 1, 219, 66'151, kShort - 1, kShort - 300};
    for (const Case& of : exact) expectTheRun(of, 0, false, edges);
    for (const Case& of : near) expectTheRun(of, kNear, false, edges);
}

TEST_F(CueOfFiles, AlsoThroughEffectsThatLast) {
    const std::string song = wav("song.wav", loudSong());
    const std::string voice = wav("voice.wav", noise16(5 * kSampleRate, 2, 20000));
    expectTheRun({song, voice}, kNear, true, {66'151});
    expectTheRun({song, voice, {-90'000, true}}, kNear, true, {kLength - 300});
}

// The place of a hit of the first 3 % of the energy, from `begin` on.
std::int64_t attack(const Sound& sound, std::int64_t begin, std::int64_t end) {
    std::vector<double> energy(1);
    for (std::int64_t i = begin; i < end; ++i) {
        const auto sample = static_cast<double>(sound[static_cast<std::size_t>(2 * i)]);
        energy.push_back(energy.back() + sample * sample);
    }
    return begin + (std::ranges::lower_bound(energy, energy.back() * 0.03) - energy.begin());
}

TEST_F(CueOfFiles, InAKeyAttacksLieWhereTheRunHasThem) {
    constexpr std::int64_t kEvery = 22'050;
    constexpr std::int64_t kTwoMs = 88;
    const std::string song = wav("hits.wav", hits(4 * kSampleRate, kEvery));
    const std::string voice = wav("nothing.wav", silence(kSampleRate));
    for (const float key : {-5.0F, 0.5F, 4.0F})
        for (const int rate : {44'100, 48'000}) {
            const std::string file = as("hits" + std::to_string(rate) + ".wav", "hits.wav", rate);
            const Sound run = Desk(openSong(file, key), open(voice)).mix(kLength);
            Desk desk(openSong(file, key), open(voice));
            for (std::int64_t hit = kEvery / 2 + 2 * kEvery; hit < 4 * kSampleRate - 2 * kEvery; hit += 3 * kEvery)
                for (const std::int64_t before : {100, 500, 3000, 12'000}) {
                    desk.card.hold(true);
                    desk.held = true;
                    desk.cue(hit - before);
                    desk.mix(kBridge);
                    const Sound sound = desk.mix(static_cast<std::size_t>(before + 5000));
                    const std::int64_t found = hit - before + attack(sound, 0, before + 5000);
                    EXPECT_NEAR(static_cast<double>(found), static_cast<double>(attack(run, hit - before, hit + 5000)),
                                kTwoMs)
                        << key << " " << rate << " " << before;
                    EXPECT_NEAR(static_cast<double>(found), static_cast<double>(hit), kTwoMs) << key << " " << before;
                }
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
            ASSERT_LE(std::abs(source.frames() - kDriftSeconds * kSampleRate), 1) << rate << " " << ppm;
            Sound whole(static_cast<std::size_t>(source.frames()) * 2);
            for (std::size_t done = 0, got = 1; got > 0; done += got)
                got = source.read(&whole[done * 2], std::min<std::size_t>(1000, whole.size() / 2 - done));
            const Sound right = sine(997, 0.5, kDriftSeconds * kSampleRate);
            double most = 0;
            for (std::size_t i = 1000; i < whole.size() - 1000; ++i)
                most = std::max(most, static_cast<double>(std::abs(whole[i] - right[i])));
            EXPECT_LT(decibels(most), -95) << rate << " " << ppm;
            for (const std::int64_t frame : {0, 1, 176400, 350000, 3}) {
                Sound part(2000);
                source.seek(frame);
                source.read(part.data(), 1000);
                EXPECT_EQ(loudestDifference(part, whole, static_cast<std::size_t>(frame)), 0) << rate << " " << frame;
            }
        }
}

}  // namespace
}  // namespace melvane::engine
