// Songs through the sequencer, the synthesiser and the real library on the stepped clock.
#include "music/music.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <mutex>
#include <thread>

#include "audio/mod_Mixer.h"
#include "engine/library.h"
#include "music/chase.h"
#include "music/heard_clock.h"
#include "music/performance.h"
#include "music/sequencer.h"
#include "music/sound_fonts.h"
#include "state/errors.h"
#include "tests/fake_platform.h"
#include "tests/sound.h"
#include "tests/temp_dir.h"

namespace melvane::music {
namespace {

using namespace melvane::test;

SongEvent event(double seconds, int status, int data1, int data2 = 0) {
    return {std::llround(seconds * kSampleRate), static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(data1),
            static_cast<std::uint8_t>(data2), 0};
}

Song songOf(std::vector<SongEvent> events, double end) {
    return {std::move(events), {}, std::llround(end * kSampleRate)};
}

// What the card mixes in a run of the stepped clock.
struct Stage {
    explicit Stage(std::uint32_t block = 441, CardClock clock = CardClock::stepped, std::string font = "")
        : library({clock, block, ""}) {
        library.BASS_RecordInit(-1);
        library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
        music = createMusic(library, {.soundFont = std::move(font), .devicePorts = false});
        performance = music.system->createPerformance({});
        performance->setPort(0, 80);
        capture = library.BASS_RecordStart(kSampleRate, 2, 0, store, this);
        library.BASS_ChannelPlay(capture, false);
    }
    ~Stage() { library.BASS_ChannelStop(capture); }

    static bool store(Handle, const void* buffer, std::uint32_t length, void* user) {
        Stage& stage = *static_cast<Stage*>(user);
        const auto* samples = static_cast<const std::int16_t*>(buffer);
        const std::lock_guard lock(stage.mutex);
        for (std::uint32_t i = 0; i < length / 2; ++i) stage.stored.push_back(static_cast<float>(samples[i]) / 32768);
        return true;
    }
    void start(Song song) {
        performance->download(std::make_shared<Segment>(std::move(song)));
        play();
    }
    void play() {
        library.holdCard();
        performance->playSegment();
        library.resumeCard();
    }
    // Until the song ends, at most `seconds`.
    void run(double seconds = 1000) {
        for (auto left = static_cast<std::uint32_t>(seconds * kSampleRate); left > 0 && performance->playing();)
            left -= library.stepCard(std::min(left, 44100U));
    }
    // All that was mixed since the last call.
    Sound sound() {
        const std::uint64_t wanted = library.cardStatus().framesMixed - taken;
        Sound result;
        for (;;) {
            std::this_thread::yield();
            const std::lock_guard lock(mutex);
            if (stored.size() / 2 < wanted) continue;
            taken += wanted;
            result.swap(stored);
            return result;
        }
    }
    Sound whole(Song song) {
        start(std::move(song));
        run();
        return sound();
    }
    std::uint32_t write(std::uint32_t control, std::vector<std::uint32_t> values) {
        MIXERCONTROLDETAILS details{24, control, static_cast<std::uint32_t>(values.size()), 0, 4, values.data()};
        MixerHandle handle = 0;
        music.mixer->mixerOpen(handle, 0, 0, 0, 0);
        return music.mixer->mixerSetControlDetails(handle, details, MIXER_SETCONTROLDETAILSF_VALUE);
    }
    void volume(int channel, int value) {
        performance->sendMidi(10, kReferenceTime, static_cast<std::uint8_t>(channel), 0xB0, 7,
                              static_cast<std::uint8_t>(value));
    }

    std::mutex mutex;
    Sound stored;
    std::uint64_t taken = 0;
    engine::Library library;
    Music music;
    std::unique_ptr<MusicPerformance> performance;
    Handle capture = 0;
};

constexpr std::uint32_t kVolumeControl = 1, kBassControl = 2, kTrebleControl = 3;

float peak(const Sound& sound, double from, double to) {
    float highest = 0;
    for (auto i = static_cast<std::size_t>(from * 88200); i < static_cast<std::size_t>(to * 88200) && i < sound.size();
         ++i)
        highest = std::max(highest, std::abs(sound[i]));
    return highest;
}

// An organ with its melody, claves and a held pad.
Song band(double end = 6) {
    std::vector<SongEvent> events{event(0, 0xC0, 19), event(0, 0xC1, 89), event(0, 0x91, 40, 90)};
    for (double at = 0; at < end - 0.5; at += 0.25) {
        const int key = 60 + static_cast<int>(at * 8) % 12;
        events.push_back(event(at, 0x90, key, 100));
        events.push_back(event(at, 0x99, 75, 80));
        events.push_back(event(at + 0.2, 0x80, key, 64));
    }
    std::ranges::stable_sort(events, {}, &SongEvent::frame);
    return songOf(std::move(events), end);
}

// In 16ths of a second: programs, controllers, parameters and bends that are set long before they are heard, keys that
// are held by hand or pedal, drums.
Song winding() {
    std::vector<SongEvent> events{event(0, 0xC0, 19),       event(0, 0xC1, 89),      event(0, 0xB1, 7, 90),
                                  event(0, 0xC2, 0),        event(0, 0xB2, 101, 0),  event(0, 0xB2, 100, 0),
                                  event(0, 0xB2, 6, 12),    event(1, 0xE2, 0, 0x60), event(1.5, 0xB0, 11, 60),
                                  event(2, 0xB1, 10, 20),   event(2.2, 0xC0, 48),    event(3, 0xB2, 64, 127),
                                  event(3.1, 0xB2, 7, 127), event(5.5, 0xB2, 64, 0)};
    for (double at = 0; at < 9; at += 0.25) {
        const int key = 60 + static_cast<int>(at * 8) % 12;
        for (const int channel : {0, 2, 9}) {
            const int played = channel == 9 ? 42 : key - 12 * channel;
            events.push_back(event(at, 0x90 + channel, played, 100));
            events.push_back(event(at + 0.2, 0x80 + channel, played, 64));
        }
    }
    for (double at = 0; at < 9; at += 3) {
        events.push_back(event(at, 0x91, 50, 90));
        events.push_back(event(at + 2.9, 0x81, 50, 64));
    }
    std::ranges::stable_sort(events, {}, &SongEvent::frame);
    return songOf(std::move(events), 9.5);
}

double power(const Sound& sound, std::size_t frame, std::size_t frames) {
    double sum = 0;
    for (std::size_t i = frame * 2; i < (frame + frames) * 2; ++i) sum += std::pow(static_cast<double>(sound[i]), 2);
    return sum / static_cast<double>(frames);
}

TEST(Music, FromAnyPlaceOnEachChannelIsAsLoudAsInTheWholeSong) {
    constexpr std::size_t kWindow = 4410;
    constexpr std::size_t kBridge = 220;
    for (const int channel : {0, 1, 2, 9}) {
        Stage stage;
        stage.performance->setMasterVolume(1200);
        stage.performance->solo(static_cast<std::uint16_t>(1 << channel));
        const Sound run = stage.whole(winding());
        stage.play();
        int heard = 0;
        for (const double place : {4.37, 7.0, 1.91}) {
            const auto frame = std::llround(place * kSampleRate);
            stage.run(0.5);
            stage.library.cueCard(frame);
            stage.sound();
            stage.run(9.4 - place);
            Sound sound = stage.sound();
            sound.erase(sound.begin(), sound.begin() + kBridge * 2);
            // What sounded there has ended with the pad's next chord, or the pedal's rise.
            const double ended = channel == 1                  ? 4.4 - std::fmod(place, 3)
                                 : channel == 2 && place < 5.5 ? 5.8 - place
                                                               : 0.3;
            for (auto at = static_cast<std::size_t>(ended * kSampleRate); at + kWindow < sound.size() / 2;
                 at += kWindow) {
                const double whole = power(run, static_cast<std::size_t>(frame) + at, kWindow);
                if (whole < 1e-7) continue;
                EXPECT_NEAR(10 * std::log10(power(sound, at, kWindow) / whole), 0, 0.5)
                    << channel << " from " << place << " at " << static_cast<double>(at) / kSampleRate;
                ++heard;
            }
        }
        EXPECT_GT(heard, 40) << channel;
    }
}

TEST(Music, APlaceInTheMiddleHasThePedalsAndThePressureOfItsKeys) {
    struct Sink : MidiSink {
        void send(std::int64_t, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override {
            sent.push_back({status, data1, data2});
        }
        void sendSysex(std::int64_t, std::span<const std::uint8_t>) override {}
        std::vector<std::array<int, 3>> sent;
    } sink;
    Chase chase;
    const std::array<std::array<std::uint8_t, 3>, 13> messages{{{0xA1, 60, 9},
                                                                {0xB1, 121, 0},
                                                                {0x90, 60, 100},
                                                                {0x90, 62, 90},
                                                                {0xA0, 60, 20},
                                                                {0xB0, 66, 127},
                                                                {0x90, 64, 80},
                                                                {0xA0, 60, 50},
                                                                {0x80, 60, 64},
                                                                {0x80, 64, 64},
                                                                {0x90, 65, 70},
                                                                {0xB0, 66, 100},
                                                                {0xD0, 7, 0}}};
    for (const auto& [status, data1, data2] : messages) chase.send(0, status, data1, data2);
    chase.tell(sink, 0);
    EXPECT_EQ(sink.sent, (std::vector<std::array<int, 3>>{{0xB1, 121, 0},
                                                          {0xB0, 66, 100},
                                                          {0xD0, 7, 0},
                                                          {0xB0, 66, 0},
                                                          {0x90, 60, 100},
                                                          {0x90, 62, 90},
                                                          {0xB0, 66, 100},
                                                          {0x90, 65, 70},
                                                          {0x80, 60, 64},
                                                          {0xA0, 60, 50}}));
}

TEST(Music, FromItsBeginningAndThroughPausesASongIsTheSameBitByBit) {
    Stage stage;
    const Sound run = stage.whole(winding());
    stage.play();
    stage.run(2);
    stage.sound();
    stage.library.holdCard();
    stage.library.cueCard(0);
    stage.library.resumeCard();
    for (int pause = 0; pause < 5; ++pause) {
        stage.run(0.7);
        stage.library.holdCard();
        EXPECT_EQ(stage.library.stepCard(100), 0U);
        stage.library.resumeCard();
    }
    stage.run();
    EXPECT_TRUE(stage.sound() == run);
    stage.library.cueCard(std::ssize(run));
    stage.library.resumeCard();
    stage.run(1);
    EXPECT_FALSE(stage.performance->playing()) << "behind the end";
}

TEST(Music, ASoloSilencesTheOthersAndTheLightsTellWhatSounds) {
    Stage stage;
    for (const int channel : {0, 1, 9}) stage.volume(channel, 0);
    const Sound muted = stage.whole(winding());
    stage.performance->liftChannelSettings();
    stage.performance->solo(1 << 2);
    EXPECT_TRUE(stage.whole(winding()) == muted);
    stage.play();
    stage.run(1);
    EXPECT_EQ(stage.performance->soundingChannels(), 1 << 2);
    stage.performance->solo(1 << 2 | 1 << 1);
    stage.run(1.1);
    EXPECT_EQ(stage.performance->soundingChannels(), 1 << 2 | 1 << 1);
    stage.performance->solo(0);
    stage.volume(2, 0);
    stage.run(0.05);
    EXPECT_EQ(stage.performance->soundingChannels(), 1 << 9 | 1 << 1 | 1);
    stage.performance->stop();
    EXPECT_EQ(stage.performance->soundingChannels(), 0);
}

// Anywhere between the pieces that are rendered.
TEST(Music, NotesBeginWithinAMillisecondOfTheirTime) {
    std::vector<double> beats;
    std::vector<SongEvent> strokes;
    for (double at = 0; at < 60; at += 0.25 + std::fmod(at * 7.3, 0.2)) {
        beats.push_back(at);
        strokes.push_back(event(at, 0x99, 75, 127));
    }
    Stage stage;
    stage.performance->setMasterVolume(1200);
    const Sound sound = stage.whole(songOf(strokes, 60));
    const float threshold = peak(sound, 0, 0.2F) / 8;
    std::vector<double> late;
    for (const double beat : beats) {
        // From before the beat on, so that an early note is found too.
        auto at = static_cast<std::size_t>(std::max(0.0, beat - 0.02) * kSampleRate);
        while (at * 2 < sound.size() && std::abs(sound[at * 2]) < threshold) ++at;
        late.push_back(static_cast<double>(at) / kSampleRate - beat);
    }
    // The sound's own attack, as the note at frame 0 has it.
    EXPECT_LT(late[0], 0.003);
    for (std::size_t i = 0; i < late.size(); ++i) ASSERT_NEAR(late[i], late[0], 0.001) << i;
    EXPECT_GT(beats.size(), 150U);
}

TEST(Music, TheBlockSizeAndAnEarlierPlayDoNotMatter) {
    const auto run = [](std::uint32_t block) {
        Stage stage(block);
        stage.performance->download(std::make_shared<Segment>(band()));
        std::vector<Sound> plays;
        for (int play = 0; play < 2; ++play) {
            stage.performance->liftChannelSettings();
            stage.performance->sendTranspose(0, kReferenceTime, 0, 0);
            stage.performance->setMasterVolume(0);
            stage.play();
            stage.run(1);
            stage.volume(0, 40);
            stage.performance->sendPatch(0, kReferenceTime, 1, 48, 0, 0);
            stage.performance->makeReady();
            stage.run(1);
            stage.performance->sendTranspose(0, kReferenceTime, 0, 3);
            stage.performance->setMasterVolume(600);
            EXPECT_EQ(stage.write(kVolumeControl, {32767, 10000}), kMixerNoError);
            stage.run(1);
            EXPECT_EQ(stage.write(kVolumeControl, {32767}), kMixerNoError);
            stage.run();
            plays.push_back(stage.sound());
        }
        EXPECT_EQ(plays[0].size(), plays[1].size());
        EXPECT_TRUE(plays[0] == plays[1]);
        return plays[0];
    };
    const Sound reference = run(4096);
    EXPECT_GT(peak(reference, 0, 6), 0.01F);
    for (const std::uint32_t block : {64U, 441U}) EXPECT_TRUE(run(block) == reference) << block;
}

TEST(Music, AMuteIsImmediateAndHoldsAgainstTheSong) {
    Stage stage;
    stage.start(
        songOf({event(0, 0xC0, 19), event(0, 0x90, 60, 127), event(2, 0xB0, 7, 100), event(3, 0x90, 64, 127)}, 4));
    stage.run(1);
    stage.volume(0, 0);
    stage.run();
    const Sound sound = stage.sound();
    EXPECT_GT(peak(sound, 0.5, 1), 0.01F);
    EXPECT_LT(peak(sound, 1.03, 1.1), peak(sound, 0.5, 1) / 5) << "what is left is the room";
    EXPECT_EQ(peak(sound, 2.1, 6), 0.0F);
    for (const bool lifted : {false, true}) {
        if (lifted) stage.performance->liftChannelSettings();
        stage.play();
        stage.run();
        EXPECT_EQ(peak(stage.sound(), 0, 6) > 0.01F, lifted);
    }
}

// The font can't be opened for a while, and is none then.
TEST(Music, APatchWaitsForItsSoundsAndNobodyElseForThem) {
    const TempDir dir;
    const std::string font = dir / "font.sf2";
    std::filesystem::create_symlink(findSoundFont(), font);
    Stage stage(441, CardClock::stepped, font);
    stage.start(songOf({event(0, 0xC0, 19), event(0, 0x90, 60, 127)}, 4));
    std::filesystem::remove(font);
    dir.write("font.sf2", "RIFF");
    std::signal(SIGIO, SIG_IGN);
    const int lease = open(font.c_str(), O_WRONLY);
    ASSERT_EQ(fcntl(lease, F_SETLEASE, F_WRLCK), 0);
    stage.performance->sendPatch(0, kReferenceTime, 0, 48, 0, 0);
    stage.volume(0, 0);
    stage.run(1);
    EXPECT_GT(peak(stage.sound(), 0.5, 1), 0.01F) << "what follows a patch stays behind it";
    close(lease);
    EXPECT_THROW(stage.performance->makeReady(), MusicError);
    stage.run(2);
    EXPECT_LT(peak(stage.sound(), 1, 2), 0.001F);
}

TEST(Music, ToneAndVolumeAreExactInTheMiddleAndLinear) {
    Stage stage;
    const Song note = songOf({event(0, 0xC0, 19), event(0, 0x90, 47, 100), event(3, 0x80, 47, 0)}, 3);
    const Sound plain = stage.whole(note);
    for (const std::uint32_t middle : {32767U, 32768U}) {
        stage.write(kVolumeControl, {32767, 32767});
        stage.write(kBassControl, {middle});
        stage.write(kTrebleControl, {middle});
        EXPECT_TRUE(stage.whole(note) == plain);
    }
    const double hertz = 123.47;
    const double level = levelAt(plain, hertz, 44100, 65536);
    for (const auto& [bass, gain] : {std::pair(65535U, 10.0), std::pair(0U, -10.0)}) {
        stage.write(kBassControl, {bass});
        EXPECT_NEAR(decibels(levelAt(stage.whole(note), hertz, 44100, 65536) / level), gain, 0.3);
    }
    stage.write(kBassControl, {32768});
    for (const int volume : {600, -1200}) {
        stage.performance->setMasterVolume(volume);
        EXPECT_NEAR(decibels(levelAt(stage.whole(note), hertz, 44100, 65536) / level), volume / 100.0, 0.02);
    }
    stage.performance->setMasterVolume(0);
    stage.write(kVolumeControl, {0, 16384});
    const Sound right = stage.whole(note);
    for (std::size_t i = 0; i < right.size(); i += 2) {
        ASSERT_EQ(right[i], 0.0F);
        ASSERT_NEAR(right[i + 1], plain[i + 1] / 2, 1.6F / 32768);
    }
}

TEST(Music, EndsWithTheSoundAtMostTwoSecondsBehindTheLastRelease) {
    Stage stage;
    MusicPerformance& performance = *stage.performance;
    EXPECT_EQ(performance.position(), 0);
    const auto endOf = [&](Song song) {
        const Segment segment(song);
        EXPECT_DOUBLE_EQ(segment.length(), static_cast<double>(song.endFrame) / kSampleRate + 2);
        const Sound sound = stage.whole(std::move(song));
        EXPECT_FALSE(performance.playing());
        EXPECT_NEAR(performance.position(), static_cast<double>(sound.size() / 2) / kSampleRate, 1e-9);
        EXPECT_LT(peak(sound, static_cast<double>(sound.size()) / 88200 - 0.001, 1000), 0.003F) << "cut off";
        return performance.position();
    };
    EXPECT_NEAR(endOf(songOf({event(0, 0x99, 75, 100), event(0.1, 0x89, 75, 0)}, 5)), 5, 0.0015);
    const double percussion = endOf(songOf({event(0, 0x99, 75, 100), event(0.1, 0x89, 75, 0)}, 0.5));
    EXPECT_GT(percussion, 0.5);
    EXPECT_LT(percussion, 2.1);
    // A pad whose key and pedal stay down.
    EXPECT_DOUBLE_EQ(endOf(songOf({event(0, 0xC0, 95), event(0, 0xB0, 64, 127), event(0, 0x90, 50, 127)}, 1)), 3);
    stage.play();
    stage.run(0.5);
    EXPECT_TRUE(performance.playing());
    performance.stop();
    EXPECT_FALSE(performance.playing());
    EXPECT_NEAR(performance.position(), 0.5, 1e-4);

    performance.setMasterTempo(2);
    EXPECT_NEAR(static_cast<double>(stage.whole(songOf({event(0, 0x99, 75, 100)}, 6)).size()) / 88200, 3.5, 0.6);
    EXPECT_GE(performance.position(), 6) << "in the song's time";
    for (const double none : {0.0, 0.009, 101.0, std::nan("")})
        EXPECT_THROW(performance.setMasterTempo(none), MusicError);
    for (const double last : {0.01, 100.0}) EXPECT_NO_THROW(performance.setMasterTempo(last));
}

TEST(Music, TakesTheMessagesOfItsChannels) {
    Stage stage;
    const auto takes = [&](std::uint8_t status, std::uint8_t channel) {
        try {
            stage.performance->sendMidi(0, kReferenceTime, channel, status, 1, 1);
            return true;
        } catch (const MusicError&) {
            return false;
        }
    };
    EXPECT_TRUE(takes(0x80, 0) && takes(0xEF, 15));
    EXPECT_FALSE(takes(0x7F, 0) || takes(0xF0, 0) || takes(0x80, 16));
}

// A card whose clock is a little fast or slow, whose thread comes when it can, and that is held for a while.
TEST(HeardClock, FollowsTheCardHoweverItsThreadIsWoken) {
    constexpr double kLatency = 0.02;
    using Time = HeardClock::Clock::time_point;
    const auto at = [](double seconds) {
        return Time(std::chrono::round<Time::duration>(std::chrono::duration<double>(1000 + seconds)));
    };
    for (const double rate : {44100 * 1.0003, 44100 / 1.0003}) {
        std::mt19937 random(1);
        HeardClock clock;
        clock.begin(at(0), 0, kLatency + 2048 / 44100.0);
        std::int64_t mixed = 0;
        double held = 0;
        for (double now = 0; now < 120; now += 0.001 * static_cast<double>(2 + random() % 8)) {
            if (held == 0.0 && now > 60) now += held = 0.5;
            const auto played = static_cast<std::int64_t>((now - held) * rate / 256) * 256;
            while (mixed + 441 <= played + 2048) clock.mixedUpTo(mixed += 441, at(now));
            if (now < 2 || std::abs(now - 61) < 1) continue;
            const std::chrono::duration<double> late =
                clock.heard(mixed) - at(static_cast<double>(mixed) / rate + held + kLatency);
            ASSERT_NEAR(late.count(), 0, 0.004) << now;
        }
    }
}

// For the thread sanitizer: knobs and stops while another thread mixes.
TEST(Music, LiveMessagesReachAMixingThread) {
    Stage stage(64, CardClock::machine);
    stage.performance->download(std::make_shared<Segment>(band(1)));
    for (int play = 0; play < 3; ++play) {
        stage.play();
        for (std::uint8_t i = 0; i < 60; ++i) {
            stage.performance->sendPatch(0, kReferenceTime, i % 16, i, 0, 0);
            stage.performance->sendTranspose(0, kReferenceTime, 0, i % 12);
            stage.volume(i % 16, 2 * i);
            stage.write(kVolumeControl, {32767U - i, 32767});
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
        EXPECT_GT(stage.performance->position(), 0.0);
        stage.performance->stop();
    }
    EXPECT_GT(peak(stage.sound(), 0, 9), 0.01F);
}

TEST(Music, WithoutAFontThereIsNoPort) {
    engine::Library library({CardClock::stepped, 441, ""});
    const TempDir dir;
    const std::string broken = dir.write("Żółty font.sf2", "RIFF and nothing else");
    for (const std::string& font : {dir / "none.sf2", broken}) {
        const Music music = createMusic(library, {font, false});
        EXPECT_EQ(music.system->portSearch()(), std::vector<std::string>{"Melvane synthesizer"});
        const auto performance = music.system->createPerformance({});
        try {
            performance->setPort(0, 80);
            FAIL();
        } catch (const MusicError& error) {
            EXPECT_NE(std::string(error.what()).find(font), std::string::npos);
        }
        EXPECT_THROW(performance->playSegment(), MusicError);
        EXPECT_THROW(performance->sendPatch(0, 1, 0, 1, 0, 0), MusicError);
        performance->closeDown(80);
    }
    using namespace std::string_literals;
    const auto head = [](char length) { return "RIFF"s + length + "\1\0\0sfbk"s; };
    EXPECT_TRUE(isSoundFont(dir.write("whole.sf2", head(4) + std::string(256, ' '))));
    EXPECT_FALSE(isSoundFont(dir.write("cut.sf2", head(5) + std::string(256, ' '))));
}

// What was sent, as "frame status data1 data2" in hexadecimal but for the frame; one line for each message.
struct Notebook : MidiSink {
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override {
        char text[64];
        std::snprintf(text, sizeof text, "%d %02X %02X %02X|", static_cast<int>(frame), status, data1, data2);
        lines += text;
    }
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override {
        send(frame, message[0], message[1], static_cast<std::uint8_t>(message.size()));
    }
    std::string take() { return std::exchange(lines, {}); }
    std::string lines;
};

SongEvent tick(int frame, int status, int data1, int data2) {
    return event(frame / 44100.0, status, data1, data2);
}

TEST(Sequencer, ANoteOffEndsWhatItsNoteOnBeganWhateverTheKey) {
    const auto song = std::make_shared<Song>(
        Song{{tick(0, 0x90, 60, 1), tick(0, 0x99, 60, 1), tick(10, 0x90, 60, 1), tick(10, 0x99, 40, 1),
              tick(10, 0x90, 126, 1), tick(20, 0xA0, 60, 5), tick(20, 0x80, 60, 0), tick(20, 0x90, 60, 0),
              tick(20, 0x90, 1, 1), tick(20, 0xB9, 123, 0)},
             {},
             100});
    Notebook notebook;
    Sequencer sequencer(song, 1, notebook);
    sequencer.begin({});
    sequencer.playTo(10);
    sequencer.take(TransposeMessage{0, 5}, 5);
    sequencer.take(TransposeMessage{9, 5}, 5);
    sequencer.playTo(20);
    sequencer.take(TransposeMessage{0, -4}, 15);
    EXPECT_EQ(notebook.take(), "0 90 3C 01|0 99 3C 01|10 90 41 01|10 99 28 01|10 90 77 01|");
    sequencer.playTo(100);
    EXPECT_EQ(notebook.take(), "20 A0 3C 05|20 80 3C 00|20 90 41 00|20 90 09 01|20 B9 7B 00|");
    EXPECT_FALSE(sequencer.finished());
    sequencer.playTo(101);
    EXPECT_TRUE(sequencer.finished());
    const std::string end = notebook.take();
    EXPECT_TRUE(end.starts_with("100 80 77 40|100 80 09 40|100 B0 40 00|")) << end;
    EXPECT_EQ(sequencer.lastRelease(), 100);
}

TEST(Sequencer, TheUsersSettingsWinUntilTheyAreLiftedAndOutliveAReset) {
    const auto song = std::make_shared<Song>(Song{{}, {{0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}, {0xF0, 1, 0xF7}}, 100});
    const auto setAll = [&](int frame) {
        for (const auto& [controller, value] : {std::pair{0, 1}, {32, 1}, {7, 99}, {10, 1}, {11, 77}})
            song->events.push_back(tick(frame, 0xB2, controller, value));
        song->events.push_back(tick(frame, 0xC2, 9, 0));
    };
    setAll(0);
    song->events.insert(song->events.end(), {{10, 0xF0, 0, 0, 0}, {10, 0xF0, 0, 0, 1}, tick(20, 0xB2, 121, 0)});
    setAll(30);
    const auto users = [](const std::string& frame) {
        return frame + " B2 00 08|" + frame + " B2 20 00|" + frame + " C2 05 00|" + frame + " B2 07 00|" + frame +
               " B2 0A 7F|";
    };
    LiveChannels live;
    live.keep(PatchMessage{2, {8, 0, 5}});
    live.keep(ShortMessage{0xB2, 7, 0});
    live.keep(ShortMessage{0xB2, 10, 127});
    Notebook notebook;
    Sequencer sequencer(song, 1, notebook);
    sequencer.begin(live);
    EXPECT_EQ(notebook.take(), users("0"));
    sequencer.playTo(30);
    EXPECT_EQ(notebook.take(), "0 B2 0B 4D|10 F0 7E 06|" + users("10") + "10 F0 01 03|20 B2 79 00|" + users("20"));
    sequencer.take(LiftMessage{}, 25);
    EXPECT_EQ(notebook.take(), "25 B2 00 00|25 B2 20 00|25 C2 00 00|25 B2 07 64|25 B2 27 00|25 B2 0A 40|25 B2 2A 00|")
        << "as after the song's reset";
    sequencer.take(PatchMessage{2, {8, 0, 5}}, 26);
    sequencer.playTo(40);
    notebook.take();
    sequencer.take(LiftMessage{}, 40);
    EXPECT_EQ(notebook.take(), "40 B2 00 01|40 B2 20 01|40 C2 09 00|") << "what was held back";
    song->events.push_back(tick(45, 0xB2, 7, 98));
    song->events.push_back(tick(50, 0x92, 60, 1));
    song->events.push_back(tick(60, 0xC2, 3, 0));
    const SongSettings own = Segment(*song).settings(2);
    EXPECT_TRUE(own.program == 9 && own.volume == 98 && own.balance == 1);
    EXPECT_FALSE(Segment(*song).settings(1).program);
    sequencer.begin({});
    sequencer.playTo(30);
    notebook.take();
    sequencer.playTo(40);
    EXPECT_EQ(std::ranges::count(notebook.take(), '|'), 6);
}

TEST(SynthLines, TakeBalanceAndToneAndTheMirrorOfWhatWasThere) {
    Stage stage;
    Settings settings;
    FakeDialogs dialogs;
    mod_Mixer mixer(*stage.music.mixer, settings, dialogs);
    EXPECT_EQ(mixer.OpenMixer(), 0);
    const MixerLines& lines = mixer.lines();
    EXPECT_TRUE(lines.lastFound == -1 && lines.lastReadValue == 32768);
    const std::array<std::int32_t, 3> balances[] = {{0, 32767, 32767},   {100, 0, 32767},    {-100, 32767, 0},
                                                    {1, 32439, 32767},   {-1, 32767, 32439}, {50, 16384, 32767},
                                                    {-50, 32767, 16383}, {3, 31784, 32767},  {-3, 32767, 31783}};
    for (const auto& [balance, left, right] : balances) {
        settings.balanceValue[0] = balance;
        EXPECT_TRUE(mixer.SetSynthBalance());
        std::array<std::uint32_t, 2> values{};
        MIXERCONTROLDETAILS details{24, lines.synthVolumeControl.dwControlID, 2, 0, 4, values.data()};
        EXPECT_EQ(stage.music.mixer->mixerGetControlDetailsA(lines.hMixer, details, 0), kMixerNoError);
        EXPECT_TRUE(std::cmp_equal(values[0], left) && std::cmp_equal(values[1], right)) << balance;
    }
    for (const auto& [level, value] : {std::pair<std::int16_t, int>{0, 65535}, {100, 0}, {50, 32767}}) {
        settings.toneValue = {level, 10, 1, 1};
        EXPECT_TRUE(mixer.SetSpeakerBass() && mixer.SetSpeakerTreble());
        EXPECT_EQ(mixer.GetSpeakerBass(), value);
        EXPECT_EQ(mixer.GetSpeakerTreble(), 65535 - 6554);
    }
    EXPECT_TRUE(mixer.SetControlValue(lines.hMixer, lines.speakerBassControl, 1000));
    mixer.keepSpeakerTone();
    EXPECT_TRUE(mixer.RestoreSpeakerBass() && mixer.RestoreSpeakerTreble());
    EXPECT_EQ(mixer.GetSpeakerBass(), 64535);
    EXPECT_EQ(mixer.GetSpeakerTreble(), 6554);

    settings.toneValue = {101, -1, 0, 0};
    EXPECT_THROW(mixer.SetSpeakerBass(), InvalidArgumentError);
    EXPECT_THROW(mixer.SetSpeakerTreble(), InvalidArgumentError);
    for (const std::int32_t far : {-2'000'000'000, 2'000'000'000}) {
        settings.balanceValue[0] = far;
        EXPECT_THROW(mixer.SetSynthBalance(), OverflowError);
    }
    settings.balanceValue[0] = 101;
    EXPECT_FALSE(mixer.SetSynthBalance()) << "there is nothing below 0";
    EXPECT_FALSE(mixer.SetControlValue(lines.hMixer, lines.speakerBassControl, 65536));
    EXPECT_FALSE(mixer.SetControlValue(lines.hMixer + 1, lines.speakerBassControl, 1));
    MIXERCONTROL none;
    EXPECT_FALSE(mixer.GetMixerControl(lines.hMixer, MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER,
                                       MIXERCONTROL_CONTROLTYPE_BASS, none));
    EXPECT_FALSE(mixer.GetMixerControl(lines.hMixer, 5, MIXERCONTROL_CONTROLTYPE_BASS, none));
    EXPECT_TRUE(dialogs.boxes.empty());
}

}  // namespace
}  // namespace melvane::music
