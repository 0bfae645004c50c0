// The order of a run's calls, the choice of the recording input and what a failure leaves behind.
#include <gtest/gtest.h>

#include "app/mixer.h"
#include "app/run_messages.h"
#include "app/start_checks.h"
#include "state/errors.h"
#include "tests/fake_audio_library.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;
using Calls = std::vector<std::string>;
using Inputs = std::vector<FakeAudioLibrary::Input>;

constexpr std::uint32_t kOff = BASS_INPUT_OFF;
constexpr std::uint32_t kAnalogue = BASS_INPUT_TYPE_ANALOG;
constexpr std::uint32_t kMic = BASS_INPUT_TYPE_MIC;

struct MixingRunFixture : testing::Test {
    MixingRunFixture() {
        language.InitLanguage("", "en");
        mixer.fields() = {"/music/song.mp3", "/music/voice.wav", dir / "mix.mp3"};
    }
    // Starts a run and ends it when the position is at the length.
    void mixToTheEnd() {
        mixer.mixingRun().mi_button_Click();
        library.position = library.length;
        mixer.mixingRun().Timer1_Timer();
    }
    std::string callsWith(const std::string& word) const {
        std::string found;
        for (const std::string& call : library.calls)
            if (call.find(word) != std::string::npos) found += call + "\n";
        return found;
    }
    static std::string switchedOn(const Inputs& inputs) {
        std::string names;
        for (const auto& input : inputs)
            if (!(input.setting & kOff)) names += input.name + " " + std::to_string(input.setting & 0xFFFF) + "; ";
        return names;
    }

    TempDir dir;
    FakeAudioLibrary library;
    FakeDialogs dialogs;
    FakeShell shell;
    FakeFileNames names;
    FakeMusic music;
    FakeSystemMixer systemMixer;
    modLang language;
    int events = 0;
    std::function<void()> onEvents = [] {};
    Mixer mixer{{library, music, systemMixer, names, dialogs, shell, language, [this] {
                     ++events;
                     onEvents();
                 }}};
};

TEST_F(MixingRunFixture, CallsTheLibraryInOrder) {
    mixer.settings().volume = {80, 60};
    mixer.settings().balanceValue = {-20, 103};
    mixer.run().key = -1.5;
    mixer.mixingRun().mi_button_Click();
    EXPECT_TRUE(mixer.run().isMixing);
    EXPECT_EQ(readFile(dir / "mix.mp3"), "\r\n");
    library.position = library.length - 1;
    mixer.mixingRun().Timer1_Timer();
    EXPECT_TRUE(mixer.run().isMixing);
    EXPECT_EQ(mixer.mixingRun().progressWidth(), 175);
    library.position = library.length;
    mixer.mixingRun().Timer1_Timer();
    EXPECT_FALSE(mixer.run().isMixing);
    EXPECT_EQ(mixer.mixingRun().progressWidth(), 176);
    EXPECT_EQ(mixer.run().lastMixPath, dir / "mix.mp3");
    for (const char* word : {"BASS_RecordSetInput", "BASS_ChannelSetFX", "setChannelOffset"})
        std::erase_if(library.calls, [&](const std::string& call) { return call.starts_with(word); });
    const std::string mix = dir / "mix.mp3";
    EXPECT_EQ(library.calls, (Calls{"BASS_MusicFree 0",
                                    "BASS_StreamFree 0",
                                    "BASS_MusicFree 0",
                                    "BASS_StreamFree 0",
                                    "holdCard",
                                    "BASS_StreamCreateFile /music/song.mp3 2097152",
                                    "BASS_FX_TempoCreate 1 65536",
                                    "BASS_StreamCreateFile /music/voice.wav 4",
                                    "BASS_ChannelPlay 2 0",
                                    "BASS_ChannelPlay 3 0",
                                    "holdCardAtEndOf 2",
                                    "BASS_RecordStart 44100 2 32",
                                    "BASS_Encode_Start 4 lame.exe --alt-preset standard - <" + mix + "> 0",
                                    "BASS_ChannelPlay 4 0",
                                    "BASS_ChannelSetAttributes 2 44100 80 0",
                                    "BASS_ChannelSetAttributes 3 44100 60 0",
                                    "BASS_ChannelSetAttributes 2 44100 80 -20",
                                    "BASS_ChannelSetAttributes 3 44100 60 103",
                                    "BASS_FX_TempoSet 2 -100.000000 0.000000 -1.500000",
                                    "resumeCard",
                                    "holdCard",
                                    "BASS_Encode_Stop 4",
                                    "BASS_ChannelStop 4",
                                    "BASS_StreamCreateFile " + mix + " 0",
                                    "BASS_ChannelStop 3",
                                    "BASS_MusicFree 3",
                                    "BASS_ChannelStop 2",
                                    "BASS_MusicFree 2",
                                    "resumeCard"}));
}

TEST_F(MixingRunFixture, ASecondRunFreesTheLastMixFirst) {
    mixToTheEnd();
    library.calls.clear();
    library.encoderFinishes = 3;
    events = 0;
    mixToTheEnd();
    EXPECT_EQ(callsWith("BASS_StreamFree"), "BASS_StreamFree 0\nBASS_StreamFree 0\nBASS_StreamFree 23\n");
    EXPECT_GE(events, 5) << "one at the start, three while the encoder finishes, one at the end";
    mixer.mixingRun().stopRec();
    EXPECT_EQ(mixer.run().lastMixPath, dir / "mix.mp3") << "stopping when idle changes nothing";
}

TEST_F(MixingRunFixture, EveryFailureLeavesTheWindowIdleAndSaysSo) {
    const std::string mix = dir / "mix.mp3";
    const std::string inside = dir / "none/mix.mp3";
    const struct {
        const char* name;
        std::function<void()> arrange;
        RunFailure failure;
        std::string message;
    } cases[] = {
        {"no paths", [&] { mixer.fields().vocal = ""; }, RunFailure::pathsMissing,
         "Source or destiny files not defined."},
        {"no background", [&] { library.unreadable = {"/music/song.mp3"}; }, RunFailure::backgroundUnreadable,
         "Mixing couldn't be initialized. The background cannot be opened: /music/song.mp3"},
        {"no vocal", [&] { library.unreadable = {"/music/voice.wav"}; }, RunFailure::vocalUnreadable,
         "Mixing couldn't be initialized. The vocal recording cannot be opened: /music/voice.wav"},
        {"destination is a source", [&] { mixer.fields().vocal = dir / "./mix.mp3"; }, RunFailure::destinationIsSource,
         "Mixing couldn't be initialized. The destination is one of the source files. Choose another name."},
        {"no folder", [&] { mixer.fields().destination = inside; }, RunFailure::destinationNotWritable,
         "Couldn 't start encoding to MP3 file... The destination cannot be written: " + inside},
        {"no capture", [&] { library.captureStarts = false; }, RunFailure::captureNotStarted,
         "Mixing couldn't be initialized. The mix could not be recorded."},
        {"no encoder", [&] { library.encoderExists = false; }, RunFailure::encoderNotStarted,
         "Couldn 't start encoding to MP3 file... The MP3 encoder was not found: lame"},
        {"encoder cannot be run", [&] { library.encoderStarts = false; }, RunFailure::encoderNotStarted,
         "Couldn 't start encoding to MP3 file... The MP3 encoder was not found: lame"},
    };
    for (const auto& c : cases) {
        library = {};
        mixer.fields() = {"/music/song.mp3", "/music/voice.wav", mix};
        c.arrange();
        mixer.mixingRun().mi_button_Click();
        EXPECT_FALSE(mixer.run().isMixing) << c.name;
        EXPECT_FALSE(mixer.mixingRun().busy()) << c.name;
        EXPECT_EQ(mixer.run().failure, c.failure) << c.name;
        EXPECT_EQ(runMessage(language, mixer.run()), c.message);
        EXPECT_EQ(mixer.run().recordChannel + mixer.run().backgroundChannel + mixer.run().vocalChannel, 0U) << c.name;
        EXPECT_EQ(callsWith("holdCard\n").empty(), callsWith("resumeCard\n").empty()) << c.name;
    }
    EXPECT_EQ(dialogs.boxes.size(), 1U) << "only the missing paths have a box";
}

TEST_F(MixingRunFixture, OpensFilesWhileWindowEventsRunAndAStopMeanwhileLeavesNothingBehind) {
    library.openingTime = std::chrono::milliseconds(300);
    onEvents = [&] {
        if (events == 1) mixer.mixingRun().stopRec();
    };
    mixer.mixingRun().mi_button_Click();
    EXPECT_GE(events, 10);
    EXPECT_FALSE(mixer.run().isMixing || mixer.mixingRun().busy());
    EXPECT_EQ(mixer.run().failure, RunFailure::none);
    EXPECT_EQ(callsWith("StreamFree 2") + callsWith("StreamFree 3"), "BASS_StreamFree 2\nBASS_StreamFree 3\n");
    EXPECT_EQ(callsWith("BASS_RecordStart") + callsWith("BASS_ChannelPlay"), "");
    EXPECT_FALSE(std::filesystem::exists(dir / "mix.mp3"));
}

TEST_F(MixingRunFixture, AnEncoderThatGoesEndsTheRun) {
    mixer.mixingRun().mi_button_Click();
    library.encoderAlive = false;
    library.encoder = EncoderState::failed;
    mixer.mixingRun().Timer1_Timer();
    EXPECT_FALSE(mixer.run().isMixing);
    EXPECT_EQ(mixer.run().failure, RunFailure::encoderFailed);
}

TEST_F(MixingRunFixture, SelectsTheCardsMixAndPutsTheUsersInputBack) {
    const struct {
        Inputs inputs;
        std::int16_t force, mixDevice;
        const char* inTheRun;
        const char* afterIt;
    } cases[] = {
        {{{"Mic", kAnalogue | 20}, {"Line In", kAnalogue | kOff | 5}, {"Stereo Mix", kAnalogue | kOff}},
         0,
         0,
         "Stereo Mix 100; ",
         "Mic 20; "},
        {{{"What U Hear", kAnalogue | kOff}, {"Stereo Mix", kAnalogue | 7}},
         0,
         0,
         "What U Hear 100; Stereo Mix 100; ",
         "Stereo Mix 7; "},
        {{{"stereo mix", kAnalogue | 9}}, 0, 0, "", "stereo mix 9; "},
        {{{"Mic", kMic | 3}, {"Line", kMic | 4}, {"Stereo Mix", kMic | kOff}}, 0, 0, "", "Line 4; "},
        {{{"Stereo In", kMic | kOff | 8}, {"Line", kMic | kOff}}, 0, 0, "Stereo In 100; ", "Stereo In 0; "},
        {{{"Stereo Mix", kAnalogue}, {"A", kMic | kOff}, {"B", kMic | kOff}, {"C", kMic | kOff}},
         1,
         3,
         "C 100; ",
         "Stereo Mix 0; "},
    };
    for (const auto& c : cases) {
        library.inputs = c.inputs;
        mixer.run().savedInput = mixer.run().savedLevel = 0;
        mixer.Form_Load(nullptr);
        mixer.settings().forceMixDevice = c.force;
        mixer.settings().mixDevice = c.mixDevice;
        library.position = 0;
        mixer.mixingRun().mi_button_Click();
        EXPECT_EQ(switchedOn(library.inputs), c.inTheRun);
        mixer.mixingRun().stopRec();
        EXPECT_EQ(switchedOn(library.inputs), c.afterIt);
    }
}

// The handles of a run: 2 background, 3 vocal, 4 capture, then 4 effects, 10 bands and 4 tone bands.
TEST_F(MixingRunFixture, AttachesTheEffectsInOrderAndSetsWhatTheUserChose) {
    Settings& s = mixer.settings();
    s.EffectState = {{{-1, 0, 50}, {-1, 0, 61}, {-1, 0, 15}, {-1, 0, 49}, {}}};
    s.toneValue = {0, 100, 50, 25};
    s.currentPreset = 3;
    mixer.mixingRun().mi_button_Click();
    std::string attached =
        "BASS_ChannelSetFX 3 8 1\nBASS_ChannelSetFX 3 3 1\nBASS_ChannelSetFX 3 0 1\nBASS_ChannelSetFX 3 4 1\n";
    for (int i = 0; i < 10; ++i) attached += "BASS_ChannelSetFX 3 7 0\n";
    attached += "BASS_ChannelSetFX 2 7 0\nBASS_ChannelSetFX 2 7 0\nBASS_ChannelSetFX 3 7 0\nBASS_ChannelSetFX 3 7 0\n";
    EXPECT_EQ(callsWith("BASS_ChannelSetFX"), attached);

    auto& fx = library.effects;
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -12}));
    EXPECT_EQ(fx[6], EffectRecord(EchoRecord{30, 50, 266, 266, 0}));
    EXPECT_EQ(fx[7], EffectRecord(ChorusRecord{15, 7, 50, 1, kWaveformSine, 20, kPhase90}));
    EXPECT_EQ(fx[8], EffectRecord(FlangerRecord{50, 100, -50, 4, kWaveformSine, 2, kPhaseZero}));
    const std::array<float, 10> centres = {80, 170, 310, 600, 1000, 3000, 6000, 12000, 14000, 16000};
    const std::array<float, 10> dance = {5, 3, 1, 0, 0, -2, -3, -2, 1, 1};
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_EQ(fx[static_cast<Handle>(9 + i)], EffectRecord(ParametricEqRecord{centres[i], 18, dance[i]})) << i;
    const ParametricEqRecord tones[] = {{125, 18, 10}, {12000, 18, -10}, {125, 18, 0}, {12000, 18, 5}};
    for (Handle i = 0; i < 4; ++i) EXPECT_EQ(fx[19 + i], EffectRecord(tones[i])) << i;

    EffectChain& effects = mixer.effects();
    for (std::size_t i = 0; i < 4; ++i) effects.setEffectEnabled(i, false);
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -96}));
    EXPECT_EQ(fx[6], EffectRecord(EchoRecord{0, 0, 0, 0, 0}));
    EXPECT_EQ(fx[7], EffectRecord(ChorusRecord{0, 0, 0, 0, kWaveformSine, 20, 0}));
    EXPECT_EQ(fx[8], EffectRecord(FlangerRecord{0, 0, 0, 0, kWaveformSine, 0, 0}));
    effects.setEffectLevel(0, 0);
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -96})) << "a moved knob switches its effect on, at -96 dB";
    effects.setEffectEnabled(4, true);
    EXPECT_EQ(s.EffectState[4].enabled, -1);
    effects.ApplyPreset(14);
    EXPECT_EQ(s.currentPreset, 14);
    EXPECT_EQ(std::get<ParametricEqRecord>(fx[9]).fGain, 5) << "no such preset sets nothing";
    const auto before = fx;
    for (const auto none : std::initializer_list<std::int16_t>{0, 5}) {
        effects.EnableEffect(none);
        effects.DisableEffect(none);
    }
    s.toneValue = {50, 50, 50, 2000};
    for (const Handle none : {0U, 99U}) effects.SetBassChannel(none);
    EXPECT_EQ(fx, before);
    effects.SetTrebleChannel(2);
    effects.SetBassChannel(2);
    for (const Handle i : {19U, 20U}) EXPECT_EQ(std::get<ParametricEqRecord>(fx[i]).fGain, 0);
    EXPECT_THROW(effects.SetTrebleChannel(3), OverflowError);
}

TEST_F(MixingRunFixture, DetectsTheMixDeviceByNameAndType) {
    const struct {
        Inputs inputs;
        std::int16_t mixDevice;
    } cases[] = {
        {{{"What U Hear", kAnalogue}, {"Stereo Mix", kAnalogue}, {"Mic", kMic}}, 1},
        {{{"Mic", kMic}, {"Line", kAnalogue}, {"Stereo Mix", kMic}}, 2},
        {{{"Stereo Mix", kAnalogue}, {"Stereo Mic", kMic}}, 0},
        {{{"Mic", kMic}}, 5},
    };
    for (const auto& c : cases) {
        library.inputs = c.inputs;
        RunState run;
        Settings settings;
        settings.mixDevice = 5;
        RecordingInput(library, run, settings).DetectMixDevice();
        EXPECT_EQ(settings.mixDevice, c.mixDevice);
        EXPECT_EQ(switchedOn(library.inputs), "");
    }
}

class FakeLibraryFile : public AudioLibraryFile {
public:
    std::set<std::string> files;
    std::uint32_t version = 0x00020002;
    std::function<void(FakeAudioLibrary&)> arrange = [](FakeAudioLibrary&) {};
    std::string loaded;
    bool created = false;

    std::string fileName() const override { return "lib"; }
    bool exists(const std::string& path) const override { return files.contains(path); }
    bool load(const std::string& path) override {
        loaded = path;
        return true;
    }
    std::uint32_t BASS_GetVersion() const override { return version; }
    std::unique_ptr<AudioLibrary> create(const AudioLibraryOptions&) override {
        created = true;
        auto library = std::make_unique<FakeAudioLibrary>();
        arrange(*library);
        return library;
    }
};

TEST(StartChecks, RefuseInOrder) {
    const FakeFileNames names;
    const std::set<std::string> both{"/system/lib", "/program/lib"};
    const struct {
        std::set<std::string> files;
        std::uint32_t version;
        std::function<void(FakeAudioLibrary&)> arrange;
        std::optional<LangEntry> message;
        const char* loaded;
        bool created;
    } cases[] = {
        {{}, 0, {}, LangEntry::libraryMissing, "", false},
        {both, 0x00020001, {}, LangEntry::wrongVersion, "/program/lib", false},
        {both, 0x00020003, {}, LangEntry::wrongVersion, "/program/lib", false},
        {both, 0x00020002, [](auto& l) { l.initialises = false; }, LangEntry::cannotInitialise, "/program/lib", true},
        {both, 0x00020002, [](auto& l) { l.info.dsver = 7; }, LangEntry::interfaceTooOld, "/program/lib", true},
        {{"/system/lib"}, 0x00020002, [](auto&) {}, std::nullopt, "/system/lib", true},
    };
    for (const auto& c : cases) {
        FakeLibraryFile file;
        file.files = c.files;
        file.version = c.version;
        file.arrange = c.arrange;
        const StartResult result = startAudioLibrary(file, names, {});
        EXPECT_EQ(result.message, c.message);
        EXPECT_EQ(result.library != nullptr, !c.message);
        EXPECT_EQ(file.loaded, c.loaded);
        EXPECT_EQ(file.created, c.created);
    }
}

}  // namespace
}  // namespace melvane
