// The order of a run's calls, the choice of the recording input and what a failure leaves behind.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "app/interrupted_mixes.h"
#include "app/mixer.h"
#include "app/start_checks.h"
#include "desktop/local_destinations.h"
#include "mixing/run_messages.h"
#include "mixing/voice_search.h"
#include "tests/silent_parts.h"
#include "tests/takes.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct MixingRunFixture : SilentParts {
    MixingRunFixture() { mixer.fields() = {"/music/song.mp3", "/music/voice.wav", dir / "mix.mp3"}; }
    std::string callsWith(const std::string& word) const {
        std::string found;
        for (const std::string& call : library.calls)
            if (call.find(word) != std::string::npos) found += call + "\n";
        return found;
    }
    // The first of `steps` that is not called after the ones before it; "" when all are.
    std::string firstMissing(const Words& steps) const {
        auto from = library.calls.begin();
        for (const std::string& step : steps) {
            from = std::find(from, library.calls.end(), step);
            if (from == library.calls.end()) return step;
        }
        return "";
    }
    // Inputs with their levels.
    std::string switchedOn() const {
        std::string all;
        for (const auto& input : library.inputs)
            if (!(input.setting & BASS_INPUT_OFF))
                all += input.name + " " + std::to_string(input.setting & 0xFFFF) + "; ";
        return all;
    }

    TempDir state;
    LocalDestinations destinations{state / "mixes"};
    int events = 0;
    std::function<void()> onEvents = [] {};
    Mixer mixer{{library, music, systemMixer, names, destinations, dialogs, shell, language, [this] {
                     ++events;
                     onEvents();
                 }}};
};

TEST_F(MixingRunFixture, ARunIsSetUpBeforeItsFirstFrameAndEndsWithTheSong) {
    mixer.settings().volume = {80, 60};
    mixer.settings().balanceValue = {-20, 103};
    mixer.run().key = -1.5;
    const std::string mix = dir / "mix.mp3";
    for (const int round : {1, 2}) {
        library.calls.clear();
        library.encoderFinishes = 3;
        events = 0;
        library.position = 0;
        mixer.mixingRun().mi_button_Click();
        EXPECT_TRUE(mixer.run().isMixing) << round;
        EXPECT_EQ(readFile(mix), round == 1 ? "\r\n" : library.product);
        EXPECT_EQ(mixer.mixingRun().done(), 0);
        library.position = library.length - 1;
        mixer.mixingRun().Timer1_Timer();
        EXPECT_TRUE(mixer.run().isMixing);
        EXPECT_DOUBLE_EQ(mixer.mixingRun().done(), 439.0 / 440);
        library.position = library.length;
        mixer.mixingRun().Timer1_Timer();
        EXPECT_FALSE(mixer.run().isMixing || mixer.mixingRun().busy());
        EXPECT_EQ(callsWith("hurryEncoder"), "") << "the song came to its end";
        EXPECT_EQ(mixer.mixingRun().done(), 1);
        EXPECT_EQ(mixer.run().lastMixPath, mix);
        EXPECT_EQ(readFile(mix), library.product);
        const std::string written = mixer.run().encodePath;
        EXPECT_GE(events, 5) << "one at the start, three while the encoder finishes, one at the end";
        if (round == 2) {
            EXPECT_EQ(std::ranges::count(library.calls, "BASS_StreamFree 23"), 1) << "the mix that was opened";
            break;
        }
        for (const Words& steps :
             {Words{"holdCard", "BASS_ChannelPlay 2 0", "BASS_RecordStart 44100 2 32",
                    "BASS_Encode_Start 4 lame.exe --alt-preset standard - <" + written + "> 0", "BASS_ChannelPlay 4 0",
                    "resumeCard", "holdCard", "BASS_Encode_Stop 4", "BASS_StreamCreateFile " + written + " 0",
                    "BASS_MusicFree 2", "resumeCard"},
              Words{"holdCard", "BASS_StreamCreateFile /music/song.mp3 2097152", "BASS_FX_TempoCreate 1 65536",
                    "BASS_ChannelPlay 2 0", "holdCardAtEndOf 2", "BASS_ChannelSetAttributes 2 44100 80 -20",
                    "BASS_FX_TempoSet 2 -100.000000 0.000000 -1.500000", "resumeCard"},
              Words{"holdCard", "BASS_StreamCreateFile /music/voice.wav 4", "BASS_ChannelPlay 3 0",
                    "BASS_ChannelSetAttributes 3 44100 60 103", "resumeCard", "BASS_ChannelStop 4",
                    "BASS_ChannelStop 3", "BASS_MusicFree 3"}})
            EXPECT_EQ(firstMissing(steps), "");
    }
    mixer.mixingRun().stopRec();
    EXPECT_EQ(mixer.run().lastMixPath, mix) << "stopping when idle changes nothing";
}

TEST_F(MixingRunFixture, EveryFailureLeavesTheWindowIdleAndTheDestinationAsItWas) {
    const std::string mix = dir / "mix.mp3";
    const std::string inside = dir / "none/mix.mp3";
    using Failure = RunFailure;
    const TempDir text;
    DestinationClaim other;
    const struct {
        std::function<void()> arrange;
        Failure failure;
        std::string says;
    } cases[] = {
        {[&] { mixer.fields().vocal = ""; }, Failure::pathsMissing, "files not defined"},
        {[&] { mixer.fields().background = "/song.kar"; }, Failure::midiUnplayable, "Midi"},
        {[&] { library.unreadable = {"/music/song.mp3"}; }, Failure::backgroundUnreadable,
         "There is no such file: choose it again. The background cannot be opened: /music/song.mp3"},
        {[&] { library.unreadable = {mixer.fields().vocal = "/proc/self/mem"}; }, Failure::vocalUnreadable,
         "The disk fails"},
        {[&] { library.unreadable = {mixer.fields().vocal = text.write("text.wav", "La la la")}; },
         Failure::vocalUnreadable, "holds no sound"},
        {[&] {
             library.unreadable = {mixer.fields().vocal = text.write("text.m4a", "La la la")};
             library.decodings.put(mixer.fields().vocal, Decoding{.failure = DecodingFailure::noDecoder});
         },
         Failure::vocalUnreadable, "apt install ffmpeg”. The vocal recording cannot be opened"},
        {[&] { mixer.fields().vocal = dir / "./mix.mp3"; }, Failure::destinationIsSource, "one of the source files"},
        {[&] { mixer.fields().destination = inside; }, Failure::destinationNotWritable, "no such folder"},
        {[&] { mixer.fields().destination = dir.path(); }, Failure::destinationNotWritable, "no ordinary file"},
        {[&] { other = destinations.claim(mix, true); }, Failure::destinationBusy, "Another mix"},
        {[&] { library.captureStarts = false; }, Failure::captureNotStarted, "recorded"},
        {[&] { library.capturePlays = false; }, Failure::noThread, "threads"},
        {[&] { library.encoderExists = false; }, Failure::encoderNotStarted, "apt install lame"},
        {[&] { library.encoderStarts = false; }, Failure::encoderNotRun, "lame"},
        {[&] { library.encoder = EncoderState::failed; }, Failure::encoderFailed, mix},
        {[&] { library.product = taggedMp3(439); }, Failure::encoderFailed, mix},
        {[&] { library.product = "no tag" + library.product; }, Failure::encoderFailed, mix},
        {[&] { library.product.pop_back(); }, Failure::encoderFailed, mix},
        {[&] {
             library.framesCaptured = 441;
             library.product = taggedMp3(441);
         },
         Failure::encoderFailed, mix},
        {[&] { library.framesCaptured = 0; }, Failure::none, ""},
        {[&] { library.productReadable = false; }, Failure::encoderFailed, mix},
    };
    mixer.run().listenPath = "/last.mp3";
    for (const std::string old : {"", "old mix"})
        for (const auto& c : cases) {
            if (!old.empty()) dir.write("mix.mp3", old);
            library = {};
            mixer.fields() = {"/music/song.mp3", "/music/voice.wav", mix};
            c.arrange();
            mixer.mixingRun().mi_button_Click();
            library.position = library.length;
            mixer.mixingRun().Timer1_Timer();
            other = {};
            EXPECT_FALSE(mixer.isRunning()) << c.says;
            EXPECT_EQ(mixer.run().failure, c.failure) << c.says;
            EXPECT_NE(runMessage(language, mixer.run()).find(c.says), std::string::npos) << c.says;
            EXPECT_EQ(readFile(mix), old) << c.says;
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), old.empty() ? 0 : 1)
                << c.says;
            EXPECT_EQ(mixer.run().lastMixPath + mixer.run().listenPath, "/last.mp3") << "still there to be heard";
            EXPECT_EQ(mixer.run().recordChannel + mixer.run().backgroundChannel + mixer.run().vocalChannel, 0U)
                << c.says;
            EXPECT_EQ(std::ranges::count(library.calls, "holdCard"), std::ranges::count(library.calls, "resumeCard"));
        }
    const Words boxes{"Melvane: Source or destiny files not defined.", "Melvane: Error playing Midi file"};
    EXPECT_EQ(dialogs.boxes, (Words{boxes[0], boxes[1], boxes[0], boxes[1]}));
}

TEST_F(MixingRunFixture, KeepsWhatItHadBesideALongerMixOrWhenASourceWasLost) {
    const std::string mix = dir.write("mix.mp3", "old mix");
    const struct {
        std::uint64_t stood;  // bytes of sound
        std::uint32_t RunState::*lost;
        RunFailure failure;
        std::string part;
    } cases[] = {{1764, nullptr, RunFailure::none, dir / "mix (part).mp3"},
                 {1760, nullptr, RunFailure::none, ""},
                 {1760, &RunState::backgroundChannel, RunFailure::backgroundLost, dir / "mix (part 2).mp3"},
                 {1764, &RunState::vocalChannel, RunFailure::vocalLost, dir / "mix (part 3).mp3"}};
    for (const auto& c : cases) {
        dir.write("mix.mp3", "old mix");
        library.lengths[mix] = c.stood;
        library.failingOnce = {mix};
        mixer.mixingRun().mi_button_Click();
        if (c.lost) library.failedChannels = {mixer.run().*c.lost};
        library.position = 880;
        if (c.lost)
            mixer.mixingRun().Timer1_Timer();
        else
            mixer.mixingRun().stopRec();
        const std::string kept = c.part.empty() ? mix : c.part;
        EXPECT_EQ(mixer.run().failure, c.failure);
        EXPECT_EQ(mixer.run().partPath, c.part);
        EXPECT_EQ(mixer.run().listenPath, kept);
        EXPECT_EQ(mixer.run().lastMixPath, c.lost ? "" : kept);
        EXPECT_EQ(readFile(kept), library.product);
        EXPECT_EQ(readFile(mix), c.part.empty() ? library.product : "old mix");
        const std::string message = runMessage(language, mixer.run());
        EXPECT_EQ(message.empty(), !c.lost);
        EXPECT_EQ(message.find(c.part) != std::string::npos, c.lost || c.part.empty()) << message;
        library.failedChannels = {};
    }
}

// With no file to be had its check fails, which says nothing of the mix.
TEST_F(MixingRunFixture, KeepsAMixThatCannotBeCheckedNow) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a sanitizer opens a pipe to look at an object";
#endif
    const std::string mix = dir.write("mix.mp3", "old mix");
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    mixer.mixingRun().mi_button_Click();
    library.position = library.length;
    library.productReadable = false;
    onEvents = [&] {
        const rlimit none{0, files.rlim_max};
        if (mixer.mixingRun().finishing()) setrlimit(RLIMIT_NOFILE, &none);
    };
    library.encoderFinishes = 3;
    mixer.mixingRun().Timer1_Timer();
    setrlimit(RLIMIT_NOFILE, &files);
    EXPECT_EQ(mixer.run().failure, RunFailure::destinationNotWritable);
    EXPECT_EQ(mixer.run().cause, EMFILE);
    EXPECT_EQ(readFile(mix), "old mix");
    EXPECT_EQ(mixer.run().partPath, dir / "mix (part).mp3");
    EXPECT_EQ(readFile(mixer.run().partPath), library.product);
    EXPECT_EQ(mixer.run().lastMixPath, "");
}

TEST_F(MixingRunFixture, AKilledRunsMixIsRemovedOnlyWhereItHoldsNoSound) {
    for (const bool plays : {true, false}) {
        if (fork() == 0) {
            std::ofstream(destinations.claim(dir / "mix.mp3", true).destination.release()->privateFile()) << "sound";
            _exit(0);
        }
        wait(nullptr);
        std::string left;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
            if (entry.path().filename().string().starts_with('.')) left = entry.path();
        (plays ? library.failingOnce : library.unreadable) = {left};
        EXPECT_EQ(bringBackMixes(destinations, library), plays ? Words{dir / "mix (part).mp3"} : Words{});
        EXPECT_EQ(readFile(dir / "mix (part).mp3"), "sound");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
    }
}

TEST_F(MixingRunFixture, WritesNoneOfTheFilesInUse) {
    const std::string song = dir.write("song.mid", songOf("\xFF\x2F"));
    music.soundFont = dir.write("sounds.sf2", "sounds");
    std::filesystem::create_symlink(music.soundFont, dir / "link.mp3");
    mixer.sourceFiles().chooseBackground(song);
    ASSERT_TRUE(mixer.midi().loaded()) << mixer.midi().failureText();
    for (const std::string& path : {dir / "./song.mid", dir / "link.mp3"}) {
        mixer.fields().destination = path;
        mixer.mixingRun().mi_button_Click();
        EXPECT_EQ(mixer.run().failure, RunFailure::destinationIsSource) << path;
    }
}

TEST_F(MixingRunFixture, OpensFilesWhileWindowEventsRunAndAStopMeanwhileLeavesNothingBehind) {
    library.openingTime = std::chrono::milliseconds(600);
    onEvents = [&] {
        if (events == 1) mixer.mixingRun().stopRec();
    };
    mixer.mixingRun().mi_button_Click();
    EXPECT_GE(events, 10);
    EXPECT_FALSE(mixer.run().isMixing || mixer.mixingRun().busy());
    EXPECT_EQ(mixer.run().failure, RunFailure::none);
    EXPECT_EQ(callsWith("StreamFree 2") + callsWith("voice.wav"), "BASS_StreamFree 2\n");
    EXPECT_NE(callsWith("giveUpOpening"), "");
    EXPECT_EQ(callsWith("BASS_RecordStart") + callsWith("BASS_ChannelPlay"), "");
    EXPECT_FALSE(std::filesystem::exists(dir / "mix.mp3"));
}

TEST_F(MixingRunFixture, WindowEventsRunWhileEncoderInputsAndTheFinishedFileAreLookedFor) {
    *library.diskAnswers = false;
    onEvents = [this] { mixer.mixingRun().stopRec(); };
    mixer.mixingRun().mi_button_Click();
    EXPECT_FALSE(mixer.run().isMixing || mixer.mixingRun().busy());
    EXPECT_EQ(mixer.run().failure, RunFailure::none);
    EXPECT_EQ(callsWith("BASS_StreamCreateFile"), "") << "before the encoder is found";

    *library.diskAnswers = true;
    *library.answers = false;
    onEvents = [this] {
        if (library.lastCall().starts_with("BASS_RecordStart")) mixer.mixingRun().stopRec();
    };
    mixer.mixingRun().mi_button_Click();
    EXPECT_FALSE(mixer.run().isMixing || mixer.mixingRun().busy());
    EXPECT_EQ(mixer.run().failure, RunFailure::none);
    EXPECT_NE(callsWith("giveUpOpening"), "");
    EXPECT_EQ(callsWith("BASS_Encode_Start"), "");

    *library.answers = true;
    onEvents = [] {};
    mixer.mixingRun().mi_button_Click();
    ASSERT_TRUE(mixer.run().isMixing);
    library.openingTime = std::chrono::milliseconds(100);
    library.position = library.length;
    bool opened = false;
    const std::string opening = "BASS_StreamCreateFile " + mixer.run().encodePath + " 0";
    onEvents = [&] { opened = opened || (library.lastCall() == opening && mixer.mixingRun().finishing()); };
    mixer.mixingRun().Timer1_Timer();
    EXPECT_TRUE(opened) << "while it is opened";
    EXPECT_NE(mixer.run().lastMixPath, "");
}

TEST_F(MixingRunFixture, SelectsTheCardsMixAndPutsTheUsersInputBack) {
    using Inputs = std::vector<FakeAudioLibrary::Input>;
    constexpr std::uint32_t kOff = BASS_INPUT_OFF;
    constexpr std::uint32_t kAnalogue = BASS_INPUT_TYPE_ANALOG;
    constexpr std::uint32_t kMic = BASS_INPUT_TYPE_MIC;
    const auto expectInputs = [&](const Inputs& inputs, const std::string& inTheRun, const std::string& afterIt,
                                  std::int16_t detected, std::optional<std::int16_t> forced = {}) {
        library.inputs = inputs;
        mixer.run().savedInput = mixer.run().savedLevel = 0;
        mixer.Form_Load(nullptr);
        mixer.settings().forceMixDevice = forced ? 1 : 0;
        mixer.settings().mixDevice = forced.value_or(0);
        library.position = 0;
        mixer.mixingRun().mi_button_Click();
        EXPECT_EQ(switchedOn(), inTheRun);
        EXPECT_EQ(mixer.run().recordsSilence, inTheRun.empty());
        mixer.mixingRun().stopRec();
        EXPECT_EQ(switchedOn(), afterIt);
        mixer.settings().mixDevice = 5;
        RecordingInput(library, mixer.run(), mixer.settings()).DetectMixDevice();
        EXPECT_EQ(mixer.settings().mixDevice, detected);
        EXPECT_EQ(switchedOn(), "");
    };
    expectInputs({{"Mic", kAnalogue | 20}, {"Line In", kAnalogue | kOff | 5}, {"Stereo Mix", kAnalogue | kOff}},
                 "Stereo Mix 100; ", "Mic 20; ", 2);
    expectInputs({{"What U Hear", kAnalogue | kOff}, {"Stereo Mix", kAnalogue | 7}},
                 "What U Hear 100; Stereo Mix 100; ", "Stereo Mix 7; ", 1);
    expectInputs({{"stereo mix", kAnalogue | 9}}, "", "stereo mix 9; ", 5);
    expectInputs({{"Mic", kMic | 3}, {"Line", kMic | 4}, {"Stereo Mix", kMic | kOff}}, "", "Line 4; ", 2);
    expectInputs({{"Stereo In", kMic | kOff | 8}, {"Line", kMic | kOff}}, "Stereo In 100; ", "Stereo In 0; ", 0);
    expectInputs({{"Stereo Mix", kAnalogue}, {"Stereo Mic", kMic | kOff}, {"B", kMic | kOff}, {"C", kMic | kOff}},
                 "C 100; ", "Stereo Mix 0; ", 0, 3);

    // The forced one and the user's own are found again by their names.
    mixer.settings().forceMixDevice = 1;
    mixer.settings().mixDevice = 3;
    library.inputs[1].setting = kMic | 8;
    mixer.Form_Load(nullptr);
    for (const bool there : {true, false}) {
        library.inputs.erase(library.inputs.begin() + (there ? 0 : 2));
        mixer.mixingRun().mi_button_Click();
        EXPECT_EQ(switchedOn(), there ? "C 100; " : "");
        EXPECT_EQ(mixer.input().missingInput(), there ? "" : "C");
        mixer.mixingRun().stopRec();
        EXPECT_EQ(switchedOn(), "Stereo Mic 8; ");
    }
}

// The handles of a run: 2 background, 3 vocal, 4 capture, then 4 effects, 10 bands and 4 tone bands.
TEST_F(MixingRunFixture, AttachesTheEffectsInOrderAndSetsWhatTheUserChose) {
    Settings& s = mixer.settings();
    s.EffectState = {{{-1, 0, 50}, {-1, 0, 61}, {-1, 0, 15}, {-1, 0, 49}, {}}};
    s.toneValue = {0, 100, 50, 25};
    s.currentPreset = 3;
    mixer.mixingRun().mi_button_Click();
    EXPECT_TRUE(callsWith("BASS_ChannelSetFX 3")
                    .starts_with("BASS_ChannelSetFX 3 8 1\nBASS_ChannelSetFX 3 3 1\n"
                                 "BASS_ChannelSetFX 3 0 1\nBASS_ChannelSetFX 3 4 1\n"));
    auto& fx = library.effects;
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -12}));
    EXPECT_EQ(fx[6], EffectRecord(EchoRecord{30, 50, 266, 266, 0}));
    EXPECT_EQ(fx[7], EffectRecord(ChorusRecord{15, 7, 50, 1, kWaveformSine, 20, kPhase90}));
    EXPECT_EQ(fx[8], EffectRecord(FlangerRecord{50, 100, -50, 4, kWaveformSine, 2, kPhaseZero}));
    EXPECT_EQ(fx[9], EffectRecord(ParametricEqRecord{80, 18, 5}));
    EXPECT_EQ(fx[18], EffectRecord(ParametricEqRecord{16000, 18, 1}));
    const ParametricEqRecord tones[] = {{125, 18, 10}, {12000, 18, -10}, {125, 18, 0}, {12000, 18, 5}};
    for (Handle i = 0; i < 4; ++i) EXPECT_EQ(fx[19 + i], EffectRecord(tones[i])) << i;

    EffectChain& effects = mixer.effects();
    for (std::size_t i = 0; i < 4; ++i) effects.setEffectEnabled(i, false);
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -96}));
    EXPECT_EQ(fx[6], EffectRecord(EchoRecord{0, 0, 0, 0, 0}));
    EXPECT_EQ(fx[7], EffectRecord(ChorusRecord{0, 0, 0, 0, kWaveformSine, 20, 0}));
    EXPECT_EQ(fx[8], EffectRecord(FlangerRecord{0, 0, 0, 0, kWaveformSine, 0, 0}));
    effects.setEffectLevel(0, 0, false);
    EXPECT_EQ(fx[5], EffectRecord(ReverbRecord{.fReverbMix = -96})) << "a moved knob switches its effect on, at -96 dB";
    effects.setEffectEnabled(4, true);
    EXPECT_EQ(s.EffectState[4].enabled, -1);
    effects.ApplyPreset(14);
    EXPECT_EQ(s.currentPreset, 14);
    EXPECT_EQ(std::get<ParametricEqRecord>(fx[9]).fGain, 5) << "no such preset sets nothing";
    const auto before = fx;
    effects.EnableEffect(5);
    s.toneValue = {50, 50, 50, 2000};
    for (const Handle none : {0U, 99U}) effects.SetBassChannel(none);
    EXPECT_EQ(fx, before);
    effects.SetTrebleChannel(2);
    effects.SetBassChannel(2);
    for (const Handle i : {19U, 20U}) EXPECT_EQ(std::get<ParametricEqRecord>(fx[i]).fGain, 0);
    EXPECT_THROW(effects.SetTrebleChannel(3), OverflowError);
}

TEST(StartChecks, RefuseInOrder) {
    const FakeFileNames names;
    const std::set<std::string> both{"/system/lib", "/program/lib"};
    const auto expectStart = [&](const std::set<std::string>& files, std::uint32_t version, const auto& arrange,
                                 std::optional<LangEntry> message, const std::string& loaded, bool created) {
        FakeLibraryFile file;
        file.files = files;
        file.version = version;
        arrange(*file.first);
        const StartResult result = startAudioLibrary(file, names, {});
        EXPECT_EQ(result.message, message);
        EXPECT_EQ(result.library != nullptr, !message);
        EXPECT_EQ(file.loaded, loaded);
        EXPECT_EQ(!file.first, created);
    };
    const auto well = [](FakeAudioLibrary&) {};
    const auto notInitialised = [](FakeAudioLibrary& library) { library.initialises = false; };
    const auto old = [](FakeAudioLibrary& library) { library.info.dsver = 7; };
    expectStart({}, 0, well, LangEntry::libraryMissing, "", false);
    expectStart(both, 0x00020003, well, LangEntry::wrongVersion, "/program/lib", false);
    expectStart(both, 0x00020002, notInitialised, LangEntry::cannotInitialise, "/program/lib", true);
    expectStart(both, 0x00020002, old, LangEntry::interfaceTooOld, "/program/lib", true);
    expectStart({"/system/lib"}, 0x00020002, well, std::nullopt, "/system/lib", true);
}

TEST(VoiceSearch, LooksThroughALongRecordingAndReadsOnlyWhatIsNotKnown) {
    FakeAudioLibrary library;
    const Mono song = makeSong(40, 1000, 5);
    const Mono heard = record(song, makeVoice(430, 2), {321.5, 40});
    Sound stereo;
    for (const float sample : heard) stereo.insert(stereo.end(), 2, sample);
    library.readers.put("voice", stereo);
    VoiceSearch search{"song", false, nullptr, "voice"};
    search.songImprint = [&](const auto&) { return std::make_shared<const Trace>(imprint(song)); };
    double done = 0;
    const VoiceFound found = findVoice(library, search, [&](double now) {
        EXPECT_GE(now, done);
        done = now;
        return true;
    });
    EXPECT_EQ(found.end, SearchEnd::found);
    EXPECT_NEAR(found.sync, 321.5, 0.003);
    EXPECT_EQ(done, 1);
}

}  // namespace
}  // namespace melvane
