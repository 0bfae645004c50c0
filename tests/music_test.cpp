// Songs through the sequencer, the synthesiser and the real library on the stepped clock.
#include "music/music.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "engine/library.h"
#include "music/performance.h"
#include "music/sequencer.h"
#include "tests/sound.h"
#include "tests/temp_dir.h"

namespace melvane::music {
namespace {

using namespace melvane::test;
using Bytes = std::vector<std::uint8_t>;

SongEvent event(double seconds, int status, int data1, int data2 = 0) {
    return {std::llround(seconds * kSampleRate), static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(data1),
            static_cast<std::uint8_t>(data2), 0};
}

Song songOf(std::vector<SongEvent> events, double end) {
    return {std::move(events), {}, std::llround(end * kSampleRate)};
}

// What the card mixes in a run of the stepped clock.
struct Stage {
    explicit Stage(std::uint32_t block = 441, CardClock clock = CardClock::stepped) : library({clock, block, ""}) {
        library.BASS_RecordInit(-1);
        library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
        music = createMusic(library, {.devicePorts = false});
        performance = music.system->createPerformance();
        performance->init();
        performance->setPort(0, 1);
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

// Three minutes with a new tempo every sixteen beats, against the tempo map in seconds.
TEST(Music, NotesBeginWithinAMillisecondOfTheTempoMap) {
    Bytes track;
    std::vector<double> beats;
    double seconds = 0;
    for (unsigned beat = 0; seconds < 180; ++beat) {
        const std::uint32_t tempo = 430001U + beat / 16 * 37123U % 500000U;
        if (beat % 16 == 0)
            for (const std::uint32_t b : {0U, 0xFFU, 0x51U, 3U, tempo >> 16, tempo >> 8 & 255, tempo & 255})
                track.push_back(static_cast<std::uint8_t>(b));
        for (const int b : {0, 0x99, 75, 127, 0x83, 0x60, 0x89, 75, 0}) track.push_back(static_cast<std::uint8_t>(b));
        beats.push_back(seconds);
        seconds += tempo / 1e6;
    }
    for (const int b : {0, 0xFF, 0x2F, 0}) track.push_back(static_cast<std::uint8_t>(b));
    const auto length = static_cast<std::uint32_t>(track.size());
    Bytes file{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 1, 0xE0, 'M', 'T', 'r', 'k'};
    for (const std::uint32_t b : {length >> 24, length >> 16, length >> 8, length})
        file.push_back(static_cast<std::uint8_t>(b));
    file.insert(file.end(), track.begin(), track.end());

    Stage stage;
    stage.performance->setMasterVolume(1200);
    const Sound sound = stage.whole(readSong(file));
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
    EXPECT_GT(beats.size(), 250U);
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
    stage.start(songOf({event(0, 0xC0, 19), event(0, 0x90, 60, 127), event(2, 0xB0, 7, 100), event(2, 0xB0, 121, 0),
                        event(3, 0x90, 64, 127)},
                       4));
    stage.run(1);
    stage.volume(0, 0);
    stage.run();
    Sound sound = stage.sound();
    EXPECT_GT(peak(sound, 0.5, 1), 0.01F);
    EXPECT_LT(peak(sound, 1.03, 1.1), peak(sound, 0.5, 1) / 5) << "what is left is the room";
    EXPECT_EQ(peak(sound, 2.1, 6), 0.0F);
    stage.play();
    stage.run();
    EXPECT_EQ(peak(stage.sound(), 0, 6), 0.0F);
    stage.performance->liftChannelSettings();
    stage.play();
    stage.run();
    EXPECT_GT(peak(stage.sound(), 0, 6), 0.01F);
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
        const auto performance = music.system->createPerformance();
        EXPECT_EQ(performance->portCount(), 1);
        EXPECT_EQ(performance->portDescription(1), "Melvane synthesizer");
        EXPECT_THROW(performance->setPort(0, 80), MusicError) << "not initialised";
        performance->init();
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
}

struct Notebook : MidiSink {
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override {
        lines.push_back({static_cast<int>(frame), status, data1, data2});
    }
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override {
        lines.push_back({static_cast<int>(frame), message[0]});
    }
    std::vector<std::vector<int>> take() { return std::exchange(lines, {}); }
    std::vector<std::vector<int>> lines;
};
using Lines = std::vector<std::vector<int>>;

SongEvent tick(int frame, int status, int data1, int data2) {
    return event(frame / 44100.0, status, data1, data2);
}

TEST(Sequencer, ANoteOffEndsWhatItsNoteOnBeganWhateverTheKey) {
    auto song = std::make_shared<Song>(Song{{tick(0, 0x90, 60, 1), tick(0, 0x99, 60, 1), tick(10, 0x90, 60, 1),
                                             tick(10, 0x99, 40, 1), tick(10, 0x90, 126, 1), tick(20, 0xA0, 60, 5),
                                             tick(20, 0x80, 60, 0), tick(20, 0x90, 60, 0), tick(20, 0x90, 1, 1)},
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
    EXPECT_EQ(notebook.take(),
              (Lines{{0, 0x90, 60, 1}, {0, 0x99, 60, 1}, {10, 0x90, 65, 1}, {10, 0x99, 40, 1}, {10, 0x90, 119, 1}}));
    sequencer.playTo(100);
    EXPECT_EQ(notebook.take(), (Lines{{20, 0xA0, 60, 5}, {20, 0x80, 60, 0}, {20, 0x90, 65, 0}, {20, 0x90, 9, 1}}));
    EXPECT_FALSE(sequencer.finished());
    sequencer.playTo(101);
    EXPECT_TRUE(sequencer.finished());
    Lines end = notebook.take();
    end.resize(5);
    EXPECT_EQ(
        end,
        (Lines{
            {100, 0x89, 60, 64}, {100, 0x89, 40, 64}, {100, 0x80, 119, 64}, {100, 0x80, 9, 64}, {100, 0xB0, 64, 0}}));
    EXPECT_EQ(sequencer.lastRelease(), 100);
}

TEST(Sequencer, TheUsersSettingsWinUntilTheyAreLiftedAndOutliveAReset) {
    const auto setAll = [](int frame) {
        return std::vector{tick(frame, 0xB2, 0, 1),  tick(frame, 0xB2, 32, 1), tick(frame, 0xC2, 9, 0),
                           tick(frame, 0xB2, 7, 99), tick(frame, 0xB2, 10, 1), tick(frame, 0xB2, 11, 77)};
    };
    auto song = std::make_shared<Song>(Song{setAll(0), {{0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}, {0xF0, 1, 0xF7}}, 100});
    for (const auto& e : {SongEvent{10, 0xF0, 0, 0, 0}, SongEvent{10, 0xF0, 0, 0, 1}, tick(20, 0xB2, 121, 0)})
        song->events.push_back(e);
    for (const auto& e : setAll(30)) song->events.push_back(e);
    const auto users = [](int frame) {
        return Lines{{frame, 0xB2, 0, 8},
                     {frame, 0xB2, 32, 0},
                     {frame, 0xC2, 5, 0},
                     {frame, 0xB2, 7, 0},
                     {frame, 0xB2, 10, 127}};
    };
    LiveChannels live;
    live.keep(PatchMessage{2, {8, 0, 5}});
    live.keep(ShortMessage{0xB2, 7, 0});
    live.keep(ShortMessage{0xB2, 10, 127});
    Notebook notebook;
    Sequencer sequencer(song, 1, notebook);
    sequencer.begin(live);
    EXPECT_EQ(notebook.take(), users(0));
    sequencer.playTo(30);
    Lines expected{{0, 0xB2, 11, 77}, {10, 0xF0}};
    for (const auto& line : users(10)) expected.push_back(line);
    expected.push_back({10, 0xF0});
    expected.push_back({20, 0xB2, 121, 0});
    for (const auto& line : users(20)) expected.push_back(line);
    EXPECT_EQ(notebook.take(), expected);
    sequencer.take(LiftMessage{}, 25);
    sequencer.playTo(40);
    EXPECT_EQ(notebook.take().size(), 6U);
}

TEST(BusMixer, AnswersAsADeviceDoes) {
    Stage stage;
    SystemMixer& mixer = *stage.music.mixer;
    MixerHandle handle = 0;
    EXPECT_NE(mixer.mixerOpen(handle, 1, 0, 0, 0), kMixerNoError);
    ASSERT_EQ(mixer.mixerOpen(handle, 0, 0, 0, 0), kMixerNoError);
    const struct {
        std::uint32_t line, type;
        std::vector<std::uint32_t> start, set;
    } cases[] = {
        {MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER, MIXERCONTROL_CONTROLTYPE_VOLUME, {32767, 32767}, {32767, 3}},
        {MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_BASS, {32768}, {65535}},
        {MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_TREBLE, {32768}, {0}},
    };
    for (const auto& c : cases) {
        MIXERLINE line{0, 0, c.line, 0, 0, ""};
        EXPECT_NE(mixer.mixerGetLineInfoA(handle, line, MIXER_GETLINEINFOF_COMPONENTTYPE), kMixerNoError);
        line.cbStruct = 168;
        ASSERT_EQ(mixer.mixerGetLineInfoA(handle, line, MIXER_GETLINEINFOF_COMPONENTTYPE), kMixerNoError);
        MIXERCONTROL control;
        MIXERLINECONTROLS controls{24, line.dwLineID, c.type, 1, 148, &control};
        ASSERT_EQ(mixer.mixerGetLineControlsA(handle, controls, MIXER_GETLINECONTROLSF_ONEBYTYPE), kMixerNoError);
        std::vector<std::uint32_t> values(c.start.size());
        MIXERCONTROLDETAILS details{24, control.dwControlID, static_cast<std::uint32_t>(values.size()), 0,
                                    4,  values.data()};
        EXPECT_EQ(mixer.mixerGetControlDetailsA(handle, details, 0), kMixerNoError);
        EXPECT_EQ(values, c.start);
        values = c.set;
        EXPECT_EQ(mixer.mixerSetControlDetails(handle, details, 0), kMixerNoError);
        values.assign(values.size(), 65536);
        EXPECT_NE(mixer.mixerSetControlDetails(handle, details, 0), kMixerNoError);
        EXPECT_EQ(mixer.mixerGetControlDetailsA(handle, details, 0), kMixerNoError);
        EXPECT_EQ(values, c.set);
        details.cbDetails = 8;
        EXPECT_NE(mixer.mixerGetControlDetailsA(handle, details, 0), kMixerNoError);
        EXPECT_NE(mixer.mixerGetLineControlsA(handle + 1, controls, MIXER_GETLINECONTROLSF_ONEBYTYPE), kMixerNoError);
    }
}

}  // namespace
}  // namespace melvane::music
