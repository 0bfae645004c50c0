// Whole runs against the real library, with every knob turned: what reaches the encoder is the same on every clock,
// under load, and when the sound server vanishes.
#include <gtest/gtest.h>

#include <future>
#include <optional>

#include "app/mixer.h"
#include "app/silent_desktop.h"
#include "desktop/local_destinations.h"
#include "desktop/local_file_names.h"
#include "engine/library.h"
#include "music/music.h"
#include "tests/midi_song.h"
#include "tests/sound_server.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"

namespace melvane {
namespace {

using namespace melvane::test;
using namespace std::chrono_literals;

void nap() {
    std::this_thread::sleep_for(1ms);
}
void napAt(std::int64_t) {
    nap();
}

bool comesTrue(const std::function<bool()>& condition) {
    for (const auto end = std::chrono::steady_clock::now() + 20s; std::chrono::steady_clock::now() < end; nap())
        if (condition()) return true;
    return false;
}

// The program without its windows, with an encoder that also stores what it is given.
struct Studio {
    Studio(CardClock clock, std::uint32_t blockFrames) : library({clock, blockFrames, beside.path()}) {
        beside.write("lame.exe", "#!/bin/sh\ncat > \"$0.given\"; exec lame --quiet -f \"$@\" < \"$0.given\"\n", true);
        library.BASS_RecordInit(-1);
        library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
        mixer.emplace(
            Environment{library, *music.system, *music.mixer, names, destinations, dialogs, shell, language, nap});
        mixer->Form_Load(nullptr);
    }

    TempDir beside;
    engine::Library library;
    const music::Music music = music::createMusic(library, {.devicePorts = false});
    const LocalFileNames names;
    LocalDestinations destinations{beside / "mixes"};
    SilentDialogs dialogs;
    SilentShell shell;
    modLang language;
    std::optional<Mixer> mixer;
};

struct Outcome {
    std::string file;
    RunFailure failure = RunFailure::none;
    CardStatus card;  // shortly before the end
};

struct ClocksFixture : testing::Test {
    // `during` is called all the time, with the frames that were mixed.
    Outcome run(Studio& studio, CardClock clock, const std::string& name,
                const std::function<void(std::int64_t)>& during = napAt) const {
        Mixer& mixer = *studio.mixer;
        mixer.sourceFiles().chooseBackground(song);
        mixer.fields() = {song, voice, dir / name};
        mixer.mixingRun().mi_button_Click();
        CardStatus card;
        while (mixer.run().isMixing) {
            card = studio.library.cardStatus();
            if (clock == CardClock::stepped)
                studio.library.stepCard(10000);
            else
                during(mixer.mixingRun().framesDone());
            mixer.mixingRun().Timer1_Timer();
        }
        return {readFile(studio.beside / "lame.exe.given"), mixer.run().failure, card};
    }
    // With every knob turned.
    Outcome mix(CardClock clock, std::uint32_t blockFrames, const std::string& name,
                const std::function<void(std::int64_t)>& during = napAt) const {
        Studio studio(clock, blockFrames);
        Settings& s = studio.mixer->settings();
        s.volume = {90, 70};
        s.balanceValue = {-30, 20};
        s.toneValue = {20, 70, 40, 90};
        s.currentPreset = 9;
        for (std::size_t i = 0; i < 4; ++i) s.EffectState[i] = {-1, 0, 60};
        studio.mixer->run().key = 1.5;
        studio.mixer->run().syncOffset = -0.1F;
        return run(studio, clock, name, during);
    }
    void makeSources(std::size_t frames) {
        song = dir.write("song.wav", wavFile(noise16(frames, 1)));
        voice = dir.write("voice.wav", wavFile(noise16(frames / 3, 2)));
    }

    TempDir dir;
    std::string song;
    std::string voice;
};

TEST_F(ClocksFixture, EveryClockGivesTheSameSamplesUnderLoad) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    makeSources(3 * kSampleRate + 1234);
    for (const std::string& source : {song, dir.write("song.mid", midiSong())}) {
        song = source;
        const std::string reference = mix(CardClock::stepped, 4096, "a.mp3").file;
        ASSERT_GT(reference.size(), 3 * kSampleRate * 4U);
        for (const std::uint32_t block : {64U, 441U})
            EXPECT_TRUE(mix(CardClock::stepped, block, "b.mp3").file == reference) << source << block;
        Child load({"stress-ng", "--quiet", "--cpu", "4", "--timeout", "60"});
        auto machine = std::async(std::launch::async, [this] { return mix(CardClock::machine, 441, "machine.mp3"); });
        const Outcome device = mix(CardClock::device, 441, "device.mp3");
        EXPECT_TRUE(device.card.deviceOpen);
        EXPECT_TRUE(device.file == reference) << source;
        EXPECT_TRUE(machine.get().file == reference) << source;
    }
}

TEST_F(ClocksFixture, AServerThatVanishesFreezesOrIsNotThereDoesNotStopTheRecording) {
    makeSources(5 * kSampleRate / 2);
    const std::string reference = mix(CardClock::stepped, 441, "stepped.mp3").file;
    EXPECT_EQ(reference.size(), 44 + 5U * kSampleRate / 2 * 4);
    for (const auto lose : {&SoundServerProcess::vanish, &SoundServerProcess::freeze}) {
        SoundServerProcess server;
        ASSERT_TRUE(server.ready());
        const Outcome made = mix(CardClock::device, 441, "device.mp3", [&](std::int64_t frames) {
            nap();
            if (frames > kSampleRate / 2) (server.*lose)();
        });
        EXPECT_EQ(made.failure, RunFailure::none);
        EXPECT_TRUE(made.file == reference);
        EXPECT_FALSE(made.card.deviceOpen);
        engine::Library library({});
        EXPECT_TRUE(library.BASS_RecordInit(-1));
        EXPECT_STREQ(library.BASS_RecordGetInputName(0), "Stereo Mix");
        EXPECT_EQ(library.BASS_RecordGetInputName(1), nullptr);
    }
    setenv("PULSE_SERVER", "unix:/nonexistent", 1);
    EXPECT_TRUE(mix(CardClock::device, 441, "device.mp3").file == reference);
    unsetenv("PULSE_SERVER");
}

TEST_F(ClocksFixture, TheDeviceIsHeldWhileSomethingPlaysAndTheCardEndsInTheMidstOfIt) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    makeSources(kSampleRate);
    engine::Library library({});
    library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
    const Handle channel = library.BASS_StreamCreateFile(false, song.c_str(), 0, 0, BASS_SAMPLE_LOOP);
    const auto plays = [&] {
        library.BASS_ChannelPlay(channel, true);
        return comesTrue(
            [&] { return library.cardStatus().deviceOpen && library.BASS_ChannelGetPosition(channel) > 0; });
    };
    EXPECT_FALSE(library.cardStatus().deviceOpen);
    EXPECT_TRUE(plays());
    library.BASS_ChannelStop(channel);
    EXPECT_TRUE(comesTrue([&] { return !library.cardStatus().deviceOpen; })) << "nothing plays any more";
    EXPECT_TRUE(plays());
}

// The null sink's monitor, forced as the mixing input, records what the device plays. Once it is lost, the rest is
// silent.
TEST_F(ClocksFixture, AForcedDeviceIsReallyRecordedUntilItIsLost) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    song = dir.write("song.wav", wavFile(sine(1000, 0.5, 3 * kSampleRate)));
    voice = dir.write("voice.wav", wavFile(silence(kSampleRate)));
    Studio studio(CardClock::device, 441);
    const auto& library = studio.library;
    int monitor = 1;
    while (library.BASS_RecordGetInputName(monitor) &&
           std::string(library.BASS_RecordGetInputName(monitor)).find("Monitor") == std::string::npos)
        ++monitor;
    ASSERT_TRUE(library.BASS_RecordGetInputName(monitor));
    EXPECT_NE(library.BASS_RecordGetInput(monitor) & BASS_INPUT_TYPE_MASK, BASS_INPUT_TYPE_ANALOG);
    EXPECT_FALSE(library.BASS_RecordGetInput(monitor) & BASS_INPUT_OFF) << "the server's default source is on";
    studio.mixer->settings().forceMixDevice = 1;
    studio.mixer->settings().mixDevice = static_cast<std::int16_t>(monitor);
    const Outcome forced = run(studio, CardClock::device, "forced.mp3", [&](std::int64_t frames) {
        nap();
        if (frames > 2 * kSampleRate) server.vanish();
    });
    EXPECT_EQ(forced.failure, RunFailure::none);
    const Sound recorded = soundOfWav(forced.file);
    ASSERT_EQ(recorded.size() / 2, 3U * kSampleRate);
    // A loaded machine's server may stutter; between two stutters the level is right.
    constexpr std::size_t kPiece = 4410;
    double loudest = 0;
    for (std::size_t piece = 5; piece < 15; ++piece)
        loudest = std::max(loudest, levelAt(recorded, 1000, piece * kPiece, kPiece));
    EXPECT_NEAR(loudest, 0.5, 0.02);
    EXPECT_EQ(levelAt(recorded, 1000, 3 * kSampleRate - 8192, 8192), 0);
}

}  // namespace
}  // namespace melvane
