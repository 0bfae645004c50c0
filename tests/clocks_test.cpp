// Whole runs against the real library, with every knob turned: what reaches the encoder is the same on every clock,
// under load, and when the sound server vanishes.
#include <gtest/gtest.h>

#include <future>

#include "app/mixer.h"
#include "desktop/local_file_names.h"
#include "engine/library.h"
#include "music/music.h"
#include "tests/sound.h"
#include "tests/sound_server.h"
#include "tests/temp_dir.h"
#include "tests/wav.h"
#include "tools/console_dialogs.h"

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

// A run of eighths on a flute, five seconds long.
std::string midiSong() {
    std::string track("\0\xC0\x49", 3);
    for (const char key : std::string(20, 60)) {
        const char pitch = static_cast<char>(key + static_cast<char>(track.size() % 12));
        track += std::string("\0\x90", 2) + pitch + '\x64' + '\x30' + '\x80' + pitch + '\0';
    }
    track += std::string("\0\xFF\x2F\0", 4);
    return std::string("MThd\0\0\0\x06\0\0\0\x01\0\x60MTrk\0\0\0", 21) + static_cast<char>(track.size()) + track;
}

// One run whose encoder stores what it is given.
struct Outcome {
    std::string pcm;
    RunFailure failure = RunFailure::none;
    CardStatus card;
};

struct ClocksFixture : testing::Test {
    Outcome mix(CardClock clock, std::uint32_t blockFrames, const std::string& name,
                const std::function<void(std::int64_t)>& during = napAt) const {
        const TempDir beside;
        beside.write("lame.exe", "#!/bin/sh\nexec cat > \"$4\"\n", true);
        engine::Library library({clock, blockFrames, beside.path()});
        library.BASS_RecordInit(-1);
        library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
        const LocalFileNames names;
        ConsoleDialogs dialogs;
        ConsoleShell shell;
        modLang language;
        const music::Music music = music::createMusic(library, {.devicePorts = false});
        Mixer mixer({library, *music.system, *music.mixer, names, dialogs, shell, language, nap});
        mixer.Form_Load(nullptr);
        switchEverythingOn(mixer);
        mixer.sourceFiles().chooseBackground(song);
        mixer.fields() = {song, voice, dir / name};
        mixer.mixingRun().mi_button_Click();
        CardStatus card;
        while (mixer.run().isMixing) {
            card = library.cardStatus();
            if (clock == CardClock::stepped)
                library.stepCard(10000);
            else
                during(mixer.mixingRun().framesDone());
            mixer.mixingRun().Timer1_Timer();
        }
        return {readFile(dir / name), mixer.run().failure, card};
    }
    static void switchEverythingOn(Mixer& mixer) {
        Settings& s = mixer.settings();
        s.volume = {90, 70};
        s.balanceValue = {-30, 20};
        s.toneValue = {20, 70, 40, 90};
        s.currentPreset = 9;
        for (std::size_t i = 0; i < 4; ++i) s.EffectState[i] = {-1, 0, 60};
        mixer.run().key = 1.5;
        mixer.run().syncOffset = -0.1F;
    }
    void makeSources(std::size_t frames) {
        song = dir.write("song.wav", wavFile(noise16(frames, 1)));
        voice = dir.write("voice.wav", wavFile(noise16(frames / 3, 2)));
    }

    TempDir dir;
    std::string song;
    std::string voice;
};

TEST_F(ClocksFixture, TheBlockSizeDoesNotMatter) {
    makeSources(200000);
    const std::string reference = mix(CardClock::stepped, 4096, "a.mp3").pcm;
    ASSERT_EQ(reference.size(), 44 + 200000U * 4);
    for (const std::uint32_t block : {64U, 441U})
        EXPECT_TRUE(mix(CardClock::stepped, block, "b.mp3").pcm == reference) << block;
}

TEST_F(ClocksFixture, AMidiSongIsTheSameOnEveryClock) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    voice = dir.write("voice.wav", wavFile(noise16(kSampleRate, 2)));
    song = dir.write("song.mid", midiSong());
    const std::string reference = mix(CardClock::stepped, 4096, "a.mp3").pcm;
    ASSERT_GT(reference.size(), 5 * kSampleRate * 4U);
    EXPECT_TRUE(mix(CardClock::stepped, 64, "b.mp3").pcm == reference);
    auto machine = std::async(std::launch::async, [this] { return mix(CardClock::machine, 441, "machine.mp3"); });
    const Outcome device = mix(CardClock::device, 441, "device.mp3");
    EXPECT_TRUE(device.card.deviceOpen);
    EXPECT_TRUE(device.pcm == reference);
    EXPECT_TRUE(machine.get().pcm == reference);
}

TEST_F(ClocksFixture, AMinuteUnderLoadIsTheSameOnEveryClock) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    makeSources(60 * kSampleRate + 1234);
    const std::string reference = mix(CardClock::stepped, 4096, "stepped.mp3").pcm;
    Child load({"stress-ng", "--quiet", "--cpu", "4", "--timeout", "120"});
    auto machine = std::async(std::launch::async, [this] { return mix(CardClock::machine, 441, "machine.mp3"); });
    const Outcome device = mix(CardClock::device, 441, "device.mp3");
    EXPECT_TRUE(device.card.deviceOpen);
    EXPECT_TRUE(device.pcm == reference);
    EXPECT_TRUE(machine.get().pcm == reference);
    RecordProperty("device_underruns", static_cast<int>(device.card.deviceUnderruns));
}

TEST_F(ClocksFixture, AServerThatVanishesOrFreezesDoesNotStopTheRecording) {
    makeSources(4 * kSampleRate);
    const std::string reference = mix(CardClock::stepped, 441, "stepped.mp3").pcm;
    for (const auto lose : {&SoundServerProcess::vanish, &SoundServerProcess::freeze}) {
        SoundServerProcess server;
        ASSERT_TRUE(server.ready());
        const Outcome run = mix(CardClock::device, 441, "device.mp3", [&](std::int64_t frames) {
            nap();
            if (frames > kSampleRate) (server.*lose)();
        });
        EXPECT_EQ(run.failure, RunFailure::none);
        EXPECT_TRUE(run.pcm == reference);
        EXPECT_FALSE(run.card.deviceOpen);
    }
}

TEST_F(ClocksFixture, AFrozenServerLeavesTheCardsMix) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    server.freeze();
    engine::Library library({});
    EXPECT_TRUE(library.BASS_RecordInit(-1));
    EXPECT_STREQ(library.BASS_RecordGetInputName(0), "Stereo Mix");
    EXPECT_EQ(library.BASS_RecordGetInputName(1), nullptr);
}

TEST_F(ClocksFixture, WithoutAServerTheCardRunsSilently) {
    setenv("PULSE_SERVER", "unix:/nonexistent", 1);
    makeSources(kSampleRate);
    const std::string reference = mix(CardClock::stepped, 441, "stepped.mp3").pcm;
    const Outcome run = mix(CardClock::device, 441, "device.mp3");
    unsetenv("PULSE_SERVER");
    EXPECT_TRUE(run.pcm == reference);
}

// The null sink's monitor, forced as the mixing input, records what the device plays.
TEST_F(ClocksFixture, AForcedDeviceIsReallyRecorded) {
    SoundServerProcess server;
    ASSERT_TRUE(server.ready());
    song = dir.write("song.wav", wavFile(sine(1000, 0.5, 3 * kSampleRate)));
    voice = dir.write("voice.wav", wavFile(silence(kSampleRate)));
    const TempDir beside;
    beside.write("lame.exe", "#!/bin/sh\nexec cat > \"$4\"\n", true);
    engine::Library library({CardClock::device, 441, beside.path()});
    library.BASS_RecordInit(-1);
    library.BASS_Init(-1, kSampleRate, 0, nullptr, nullptr);
    int monitor = 1;
    while (library.BASS_RecordGetInputName(monitor) &&
           std::string(library.BASS_RecordGetInputName(monitor)).find("Monitor") == std::string::npos)
        ++monitor;
    ASSERT_TRUE(library.BASS_RecordGetInputName(monitor));
    EXPECT_NE(library.BASS_RecordGetInput(monitor) & BASS_INPUT_TYPE_MASK, BASS_INPUT_TYPE_ANALOG);
    EXPECT_FALSE(library.BASS_RecordGetInput(monitor) & BASS_INPUT_OFF) << "the server's default source is on";
    const LocalFileNames names;
    ConsoleDialogs dialogs;
    ConsoleShell shell;
    modLang language;
    const music::Music music = music::createMusic(library, {.devicePorts = false});
    Mixer mixer({library, *music.system, *music.mixer, names, dialogs, shell, language, nap});
    mixer.Form_Load(nullptr);
    mixer.settings().forceMixDevice = 1;
    mixer.settings().mixDevice = static_cast<std::int16_t>(monitor);
    mixer.fields() = {song, voice, dir / "forced.mp3"};
    mixer.mixingRun().mi_button_Click();
    while (mixer.run().isMixing) {
        nap();
        mixer.mixingRun().Timer1_Timer();
    }
    const Sound recorded = soundOfWav(readFile(dir / "forced.mp3"));
    ASSERT_GT(recorded.size() / 2, 2U * kSampleRate);
    EXPECT_NEAR(levelAt(recorded, 1000, kSampleRate, 32768), 0.5, 0.02);
}

}  // namespace
}  // namespace melvane
