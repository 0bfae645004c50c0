// Listening before a mix, and what the timeline knows of files: rules, outlines, and where these are kept.
#include "rehearsal/rehearsal.h"

#include <filesystem>
#include <future>
#include <random>

#include "app/mixer.h"
#include "desktop/local_destinations.h"
#include "rehearsal/place_text.h"
#include "rehearsal/time_view.h"
#include "rehearsal/waveforms.h"
#include "tests/silent_parts.h"
#include "tests/sound.h"

namespace melvane {
namespace {

using namespace melvane::test;

struct RehearsalFixture : SilentParts {
    RehearsalFixture() {
        mixer.fields() = {"/song.mp3", "/voice.wav", ""};
        library.length = 441'000 * kBytesPerFrame;
        library.lengths = {{"/voice.wav", 88'200 * kBytesPerFrame}};
    }
    // What was called since this was asked last, of these operations.
    Words calls(const std::set<std::string>& operations) {
        Words found;
        for (const std::string& call : std::exchange(library.calls, {}))
            if (operations.contains(call.substr(0, call.find(' ')))) found.push_back(call);
        return found;
    }
    Words cardCalls() {
        return calls({"holdCard", "resumeCard", "cueCard", "loopCard", "BASS_ChannelPlay", "BASS_RecordStart"});
    }

    TempDir state;
    LocalDestinations destinations{state / "mixes"};
    std::function<void()> onEvents = [] {};
    Mixer mixer{{library, music, systemMixer, names, destinations, dialogs, shell, language, [this] { onEvents(); }}};
    Rehearsal& rehearsal = mixer.rehearsal();
};

TEST_F(RehearsalFixture, PlaysWhatARunWouldFromAnywhereAndRecordsNothing) {
    mixer.run().voicePlace = {4410, 60};
    rehearsal.seek(44'100);
    rehearsal.setLoop({22'050, 66'150});
    rehearsal.play();
    EXPECT_TRUE(rehearsal.playing() && mixer.run().isRehearsing);
    EXPECT_FALSE(mixer.run().isMixing || mixer.isRunning());
    EXPECT_EQ(std::ranges::count(library.calls, "openRecording /voice.wav 60.000000 4"), 1);
    EXPECT_EQ(std::ranges::count(library.calls, "placeChannel 3 4410 1"), 1);
    EXPECT_EQ(cardCalls(), (Words{"holdCard", "BASS_ChannelPlay 2 0", "BASS_ChannelPlay 3 0", "loopCard 22050 66150",
                                  "cueCard 44100", "resumeCard"}));
    mixer.sliders().setVolume(0, 50);
    mixer.sliders().setKey(2);
    rehearsal.placeVoice({-4410, 60});
    EXPECT_EQ(calls({"BASS_ChannelSetAttributes", "BASS_FX_TempoSet", "placeChannel"}).size(), 4U) << "knobs are live";

    library.info.latency = 100;
    EXPECT_EQ(rehearsal.position(), 44'100) << "nothing before the place is heard";
    library.cardPlace = 60'000;
    EXPECT_EQ(rehearsal.position(), 60'000 - 4410) << "what leaves the card is heard later";
    rehearsal.pause();
    EXPECT_EQ(rehearsal.position(), 60'000) << "no frame is lost or repeated";
    rehearsal.step(-5);
    rehearsal.playOrPause();
    rehearsal.step(100);
    EXPECT_EQ(cardCalls(), (Words{"holdCard", "cueCard 0", "resumeCard", "cueCard 441000"}));

    library.cardPlace = 441'000;
    rehearsal.Timer1_Timer();
    EXPECT_FALSE(mixer.run().isRehearsing);
    EXPECT_EQ(rehearsal.position(), 22'050) << "from the loop again";
    EXPECT_EQ(cardCalls(), (Words{"holdCard", "loopCard 0 0", "resumeCard"})) << "the card is anybody's";
    EXPECT_EQ(rehearsal.message(), "");
}

TEST_F(RehearsalFixture, OneFileAlonePlaysAndAnotherClockReadsTheVoiceAnew) {
    mixer.fields().vocal.clear();
    rehearsal.play();
    EXPECT_EQ(cardCalls(), (Words{"holdCard", "BASS_ChannelPlay 2 0", "loopCard 0 0", "resumeCard"}));
    rehearsal.forget();
    mixer.fields() = {"", "/voice.wav", ""};
    mixer.run().voicePlace = {4410, 0};
    rehearsal.play();
    EXPECT_EQ(rehearsal.length(), 88'200);
    const std::string voice = std::to_string(mixer.run().vocalChannel);
    EXPECT_EQ(std::ranges::count(library.calls, "placeChannel " + voice + " 0 1"), 1) << "from its own beginning";
    EXPECT_EQ(std::ranges::count(library.calls, "holdCardAtEndOf " + voice), 1);
    library.cardPlace = 30'000;
    library.calls.clear();
    rehearsal.placeVoice({4410, -20});
    EXPECT_TRUE(rehearsal.playing() && rehearsal.outdated()) << "the place at once, the clock with the next play";
    rehearsal.play();
    EXPECT_EQ(std::ranges::count(library.calls, "openRecording /voice.wav -20.000000 4"), 1);
    EXPECT_EQ(cardCalls().back(), "resumeCard");
    EXPECT_TRUE(rehearsal.playing());
    mixer.fields() = {};
    rehearsal.forget();
    EXPECT_FALSE(rehearsal.canPlay());
    rehearsal.play();
    EXPECT_FALSE(mixer.run().isRehearsing);
}

TEST_F(RehearsalFixture, WhatFailsIsToldAndLeavesNothingOpen) {
    mixer.run().failure = RunFailure::encoderFailed;
    const auto plays = [this] {
        rehearsal.play();
        return rehearsal.playing();
    };
    library.unreadable = {"/voice.wav"};
    EXPECT_FALSE(plays());
    EXPECT_NE(rehearsal.message().find("The vocal recording cannot be opened: /voice.wav"), std::string::npos);
    EXPECT_EQ(library.calls.back(), "resumeCard");
    library.unreadable.clear();
    EXPECT_TRUE(plays());
    EXPECT_EQ(rehearsal.message(), "");
    library.failedChannels = {mixer.run().backgroundChannel};
    library.cardPlace = 4410;
    rehearsal.Timer1_Timer();
    EXPECT_FALSE(mixer.run().isRehearsing);
    EXPECT_EQ(rehearsal.message(), "The rehearsal ended because the background can no longer be read: /song.mp3");
    EXPECT_EQ(rehearsal.position(), 4410);
    library.failedChannels.clear();

    library.openingTime = std::chrono::milliseconds(30);
    onEvents = [this] { rehearsal.end(); };
    EXPECT_FALSE(plays()) << "given up while it opened";
    onEvents = [] {};
    EXPECT_EQ(rehearsal.message(), "");
    mixer.fields().background = dir / "none.mid";
    EXPECT_FALSE(plays());
    EXPECT_EQ(rehearsal.message(), "Error playing Midi file");
    EXPECT_EQ(mixer.run().failure, RunFailure::encoderFailed) << "the last run's";

    mixer.fields().background = "/song.mp3";
    library.card.deviceOpen = false;
    EXPECT_TRUE(plays());
    library.cardPlace += 441;
    EXPECT_TRUE(rehearsal.unheard());
}

Extremes plainly(const Sound& sound, std::int64_t begin, std::int64_t end) {
    Extremes extremes;
    begin = begin / 256 * 256;
    end = std::min((end + 255) / 256 * 256, static_cast<std::int64_t>(sound.size() / 2));
    for (auto i = static_cast<std::size_t>(2 * begin); i < static_cast<std::size_t>(2 * end); ++i) {
        const auto sample = static_cast<std::int16_t>(std::lround(sound[i] * 32767));
        extremes = {std::min(extremes.lowest, sample), std::max(extremes.highest, sample)};
    }
    return extremes;
}

TEST(WaveformPyramid, KnowsTheExtremesOfAnyPart) {
    const Sound sound = noise16(100'003, 5);
    WaveformPyramid grown(100'003);
    std::mt19937 random(7);
    for (std::size_t done = 0; done < 100'003;) {
        const std::size_t count = std::min<std::size_t>(random() % 5000, 100'003 - done);
        grown.add(sound.data() + 2 * done, count);
        done += count;
        EXPECT_EQ(grown.known(), static_cast<std::int64_t>(done / 256 * 256));
        EXPECT_EQ(grown.between(grown.known(), 100'003), Extremes{});
    }
    grown.finish();
    const WaveformPyramid again(100'003, grown.bins());
    for (int round = 0; round < 500; ++round) {
        const auto begin = static_cast<std::int64_t>(random() % 100'003);
        const auto end = begin + 1 + static_cast<std::int64_t>(random()) % (100'003 - begin);
        EXPECT_EQ(grown.between(begin, end), plainly(sound, begin, end)) << begin << " " << end;
        EXPECT_EQ(again.between(begin, end), grown.between(begin, end));
    }
    EXPECT_EQ(grown.between(-500, -1), Extremes{});
    EXPECT_EQ(WaveformPyramid(0).between(0, 1), Extremes{});
}

TEST(OutlineCache, KeepsWhatIsWholeUntilTheFileChangesOrRoomIsNeeded) {
    const TempDir dir;
    const std::string folder = dir / "made" + "/later";
    WaveformPyramid outline(600'000);
    const Sound sound = noise16(600'000, 9);
    outline.add(sound.data(), 600'000);
    outline.finish();
    const OutlineCache cache(folder, 20'000);
    const std::string file = dir.write("song.wav", "as it is");
    const auto key = OutlineCache::keyOf(file);
    EXPECT_EQ(cache.find(key), nullptr);
    cache.keep(key, outline);
    ASSERT_TRUE(cache.find(key));
    EXPECT_EQ(cache.find(key)->between(0, 600'000), outline.between(0, 600'000));
    dir.write("song.wav", "as it is now");
    EXPECT_EQ(cache.find(OutlineCache::keyOf(file)), nullptr);
    EXPECT_EQ(cache.find(OutlineCache::keyOf(dir / "missing")), nullptr);

    const std::string place = std::filesystem::directory_iterator(folder)->path();
    const std::string whole = readFile(place);
    for (const std::size_t at : {0U, 10U, 60U, 5000U}) {
        std::string broken = whole;
        broken[at] = static_cast<char>(broken[at] ^ 1);
        std::ofstream(place, std::ios::binary) << broken;
        EXPECT_EQ(cache.find(key), nullptr) << at;
        std::ofstream(place, std::ios::binary) << whole.substr(0, at);
        EXPECT_EQ(cache.find(key), nullptr) << at;
    }
    const auto now = std::filesystem::file_time_type::clock::now();
    cache.keep({"two", 1, 1}, outline);
    std::filesystem::last_write_time(place, now - std::chrono::hours(1));
    cache.keep({"three", 1, 1}, outline);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2) << "the oldest goes";
    EXPECT_TRUE(cache.find({"two", 1, 1}) && cache.find({"three", 1, 1}));
}

TEST(Waveforms, AFileIsReadOnceAndGivenUpAtOnce) {
    const TempDir dir;
    const std::string file = dir.write("song.wav", "song");
    struct Failing : MemorySource {
        using MemorySource::MemorySource;
        bool failed() const override { return true; }
    };
    std::atomic<int> opened = 0;
    std::atomic<bool> hangs = false;
    std::atomic<bool> fails = false;
    const auto open = [&](const std::string&, const std::function<bool()>& wanted) -> std::unique_ptr<PcmSource> {
        ++opened;
        while (hangs && wanted()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (hangs) return nullptr;
        if (fails) return std::make_unique<Failing>(noise16(9000, 3));
        return std::make_unique<MemorySource>(noise16(9000, 3));
    };
    Waveforms waveforms(open, OutlineCache(dir / "cache"));
    const auto read = [&](const std::string& what) {
        const auto waveform = waveforms.read(what);
        while (!waveform->finished()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return waveform;
    };
    const auto goOn = [](double) { return true; };
    auto first = waveforms.read(file);
    EXPECT_EQ(first->imprint(goOn)->size(), 2250U);
    EXPECT_EQ(first->outline()->known(), 9000);
    first.reset();
    EXPECT_EQ(read(file)->outline()->known(), 9000);
    EXPECT_EQ(opened, 1) << "then it is kept";
    fails = true;
    dir.write("song.wav", "another");
    EXPECT_TRUE(read(file)->failed());
    EXPECT_TRUE(read(file)->failed());
    EXPECT_EQ(opened, 3) << "half an outline is not kept";
    hangs = true;
    const auto hanging = waveforms.read(dir / "slow");
    hanging->forget();
    while (!hanging->finished()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(hanging->failed());
}

TEST(TimeView, ZoomsAroundAPlaceScrollsWithinItsRangeAndTurnsPages) {
    TimeView view;
    view.setWidth(700);
    view.setRange(-44'100, 44'100 * 99);
    EXPECT_TRUE(view.showsAll());
    EXPECT_DOUBLE_EQ(view.xOf(view.frameAt(300)), 300);
    const std::int64_t fixed = view.frameAt(300);
    view.zoomBy(0.125, 300);
    EXPECT_NEAR(view.xOf(fixed), 300, 0.01);
    EXPECT_FALSE(view.turnTo(fixed));
    const std::int64_t next = view.first() + view.shown();
    EXPECT_TRUE(view.turnTo(next));
    EXPECT_LE(view.first(), next);
    EXPECT_GT(view.first(), next - view.shown() / 10);
    const double before = view.framesPerPixel();
    view.setWidth(1400);
    EXPECT_DOUBLE_EQ(view.framesPerPixel(), before / 2) << "the same part on more pixels";
    view.scrollTo(1 << 30);
    EXPECT_EQ(view.first() + view.shown(), view.end());
    view.zoomBy(1e-9, 0);
    EXPECT_EQ(view.framesPerPixel(), TimeView::kFinest);
    view.zoomBy(1e9, 0);
    EXPECT_TRUE(view.showsAll());
    view.setRange(0, 44'100);
    EXPECT_TRUE(view.showsAll());
}

TEST(PlaceText, SaysWhereTheVoiceBegins) {
    modLang language;
    language.InitLanguage(FakeFileNames(), "en");
    RunState run;
    EXPECT_EQ(placeText(language, earlierOf(run)), "Voice begins with the song");
    run.voicePlace.earlier = 557'865;
    run.syncOffset = 0.1F;
    EXPECT_EQ(placeText(language, earlierOf(run)), "Voice begins 12.750 s before the song");
    EXPECT_EQ(placeText(language, -44), "Voice begins 0.001 s after the song's beginning");
    EXPECT_EQ(timeText(-2'205'000 - 22'050, 1) + " " + timeText(44'100 * 65, 0) + " " + timeText(-3, 1),
              "-0:50.5 1:05 0:00.0");
}

}  // namespace
}  // namespace melvane
