// Rules without windows and sound: file names, words, knobs, the choice of files, the command line.
#include "app/main_knobs.h"
#include "app/source_files.h"
#include "audio/encoder_tag.h"
#include "audio/modAudio.h"
#include "effects/effect_knobs.h"
#include "midi/channel_knobs.h"
#include "state/errors.h"
#include "state/window_patience.h"
#include "tests/no_threads.h"
#include "tests/silent_parts.h"
#include "tools/options.h"

namespace melvane {
namespace {

using namespace melvane::test;

TEST(EncoderTag, TellsWhatWasEncoded) {
    const TempDir dir;
    const std::string titles = std::string("ID3\4\0\0\0\0\2\0", 10) + std::string(256, 't');
    for (const std::int64_t frames : {std::int64_t{0}, std::int64_t{576}, std::int64_t{577}, std::int64_t{4000000000}})
        for (const std::string& before : {std::string(), titles})
            EXPECT_EQ(taggedFrames(dir.write("mix.mp3", taggedMp3(frames, before))), frames);
    const std::string whole = taggedMp3(440);
    const std::string mono = taggedMp3(440).replace(3, 16, "\xC4") + std::string(15, ' ');
    EXPECT_EQ(taggedFrames(dir.write("mix.mp3", mono)), 440);
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(taggedFrames(dir.write("mix.mp3", whole.substr(0, length))), std::nullopt) << length;
    for (const std::size_t place : {0U, 1U, 36U}) {
        std::string broken = whole;
        broken[place] = 0;
        EXPECT_EQ(taggedFrames(dir.write("mix.mp3", broken)), std::nullopt) << place;
    }
    EXPECT_EQ(taggedFrames(dir / "none.mp3"), std::nullopt);
}

TEST(ModAudio, TakesFileNamesApart) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {R"(C:\a.b\song)", R"(b\song)", ""},
        {R"(C:\songs\my.song.mp3)", "mp3", "my.song"},
        {"song.mp3", "mp3", ""},
        {R"(C:\songs\readme)", "", ""},
        {"/home/ela/pieśń 1.MP3", "MP3", "pieśń 1"},
        {"/a.b/readme", "b/readme", ""},
        {R"(/mixed\name.kar)", "kar", R"(mixed\name)"},
        {"", "", ""},
    };
    for (const auto& [path, extension, title] : cases) {
        EXPECT_EQ(GetFileExtension(path), extension) << path;
        EXPECT_EQ(GetFileTitle(path), title) << path;
    }
    for (const char* midi : {"a.KAR", "a.mid", "a.Midi", "a.xidi"}) EXPECT_TRUE(isMidiFile(midi)) << midi;
    for (const char* other : {"a.mp3", "a.ogg", "mid", "a.mid.mp3", ""}) EXPECT_FALSE(isMidiFile(other)) << other;
}

TEST(ModAudio, PacksWords) {
    EXPECT_EQ(MakeLong(0x1234, 0x5678), 0x56781234);
    EXPECT_EQ(MakeLong(-1, -1), -1);
    EXPECT_EQ(LoWord(0x56781234), 0x1234U);
    EXPECT_THROW(MakeLong(0, 0x8000), OverflowError);
    EXPECT_EQ(AnsiToString(nullptr), "");
    FakeAudioLibrary library;
    EXPECT_TRUE(SetChannelPosition(library, 7, -4));
    EXPECT_EQ(library.calls, std::vector<std::string>{"BASS_ChannelSetPosition 7 4294967292"}) << "widened unsigned";
}

TEST(Knobs, StandForValuesAtTheirEndsTheirCentreAndBetween) {
    using Pairs = std::vector<std::pair<double, double>>;
    const struct {
        const char* name;
        Scale scale;
        Pairs valuesAt;
        Pairs positionsOf;
    } knobs[] = {
        {"volume",
         kVolumeScale,
         {{64, 100}, {65, 98}, {94, 50}, {95, 48}, {123, 1}, {124, 0}},
         {{100, 64}, {33, 105}, {0, 124}}},
        {"key", kKeyScale, {{308, -5}, {340, 0}, {341, 0.15625}, {372, 5}}, {{-5, 308}, {-2.5, 324}, {0.15625, 341}}},
        {"sync", kSyncScale, {{64, 0.6}, {93, 0.02}, {94, 0}, {124, -0.6}}, {{0.04F, 92}, {0, 94}, {-0.6F, 124}}},
        {"level", kLevelScale, {{97, 0}, {197, 100}}, {{0, 97}, {60, 157}}},
        {"tone", kToneScale, {{70, 0}, {71, 2}, {73, 5}, {100, 50}, {130, 100}}, {{49, 99}, {1, 71}, {100, 130}}},
        {"balance", balanceScale(0), {{245, -100}, {277, 0}, {281, 12}, {289, 38}, {309, 100}}, {{-50, 261}}},
        {"vocal balance", balanceScale(1), {{354, -100}, {386, 0}, {419, 103}}, {{103, 419}}},
        {"read-out", balanceReadout(1), {{370, -5}, {386, 0}, {419, 10.3125}}, {}},
        {"channel volume",
         kChannelVolumeScale,
         {{60, 128}, {61, 125}, {74, 98}, {120, 0}},
         {{2, 120}, {3, 119}, {100, 74}, {127, 61}}},
        {"switched on", kSwitchedOnVolumeScale, {{60, 129}, {61, 126}, {80, 86}, {100, 43}, {120, 0}}, {}},
        {"channel balance",
         channelBalanceScale(15),
         {{407, 0}, {408, 7}, {415, 60}, {423, 120}},
         {{7, 407}, {8, 408}, {64, 415}, {127, 423}}},
    };
    for (const auto& knob : knobs) {
        for (const auto& [position, value] : knob.valuesAt) {
            EXPECT_DOUBLE_EQ(knob.scale(static_cast<int>(position)), value) << knob.name << " at " << position;
            EXPECT_EQ(std::signbit(knob.scale(static_cast<int>(position))), value < 0) << "no -0 is shown";
        }
        for (const auto& [value, position] : knob.positionsOf)
            EXPECT_EQ(knob.scale.positionOf(value), position) << knob.name << " for " << value;
    }
    EXPECT_EQ(syncAt(94, -0.04F), -0.04F) << "the centre leaves the offset as it was";
    EXPECT_EQ(syncAt(96, 0.5F), -0.04F);
}

TEST(WindowPatience, WorkIsDoneWithoutAThreadToo) {
    const NoThreads none;
    const auto work = [owned = std::string("what the work owns")] { return owned; };
    EXPECT_EQ(whileEventsRun([] {}, work), "what the work owns");
    EXPECT_EQ(whileWanted([] {}, [] { return true; }, work), "what the work owns");
}

struct SourceFilesFixture : SilentMidi {
    PathFields& fields = mix.fields;
    SourceFiles files{mix, midi, language, dialogs, [] {}};
};

TEST_F(SourceFilesFixture, ANewBackgroundBringsItsVocalAndEmptiesTheDestination) {
    settings.recDirectory = dir.path();
    const std::string vocal = dir.write("song.wav", "");
    fields = {"", "/old.wav", "/old.mp3"};
    dialogs.nextFile = "/music/song.mp3";
    files.BR_Click(0);
    EXPECT_EQ(dialogs.lastQuestion.title, "melvane");
    EXPECT_EQ(dialogs.lastQuestion.filter, "Audio files (*mp3;*ogg;*mid;*midi;*kar)|**mp3;*ogg;*mid;*kar;*midi");
    EXPECT_EQ(fields.background, "/music/song.mp3");
    EXPECT_EQ(fields.vocal, vocal);
    EXPECT_EQ(fields.destination, "");

    fields.destination = "/kept.mp3";
    dialogs.nextFile = "";
    files.BR_Click(0);
    EXPECT_EQ(fields.destination, "/kept.mp3") << "a cancelled dialog changes nothing";
    dialogs.nextFile = "/music/unknown.mp3";
    files.BR_Click(0);
    EXPECT_EQ(fields.vocal, vocal) << "no such recording: the vocal stays";
    dialogs.nextFile = "/v.wav";
    files.BR_Click(1);
    EXPECT_EQ(dialogs.lastQuestion.start, dir.path());
    EXPECT_EQ(fields.vocal, "/v.wav");
}

TEST_F(SourceFilesFixture, DialogsStartWhereTheirKindIsOrWasTakenLast) {
    const auto startOf = [&](int index, const std::string& chosen) {
        dialogs.nextFile = chosen;
        files.BR_Click(index);
        return dialogs.lastQuestion.start;
    };
    for (const char* folder : {"songs", "voices", "gone"}) std::filesystem::create_directory(dir / folder);
    EXPECT_EQ(startOf(1, ""), "") << "the user's music";
    startOf(1, dir / "voices/v.wav");
    EXPECT_EQ(dialogs.lastQuestion.button, "Open voice");
    startOf(0, dir / "songs/s.mp3");
    EXPECT_EQ(dialogs.lastQuestion.button, "Open song");
    EXPECT_EQ(dialogs.lastQuestion.allFiles, "All files");
    EXPECT_TRUE(dialogs.lastQuestion.wider.starts_with("Sound and films|*.mp3;*.ogg;*.wav;*.mid;*.midi;*.kar;*.m4a;"));
    EXPECT_EQ(startOf(1, dir / "gone/v.wav"), dir / "voices");
    std::filesystem::remove(dir / "gone");
    EXPECT_EQ(startOf(1, ""), "");
    fields = {};
    EXPECT_EQ(startOf(0, ""), dir / "songs") << "with an empty field";
}

TEST_F(SourceFilesFixture, TheDestinationNeedsSourcesAndLeaveToOverwrite) {
    files.BR_Click(2);
    EXPECT_EQ(dialogs.boxes, std::vector<std::string>{"Melvane: First select mixing source files."});
    fields = {dir.write("song.mp3", ""), "/v.wav", ""};
    dir.write("song2.mp3", "");
    dialogs.nextFile = dir / "song2.mp3";
    dialogs.nextAnswer = BoxAnswer::no;
    files.BR_Click(2);
    EXPECT_EQ(dialogs.lastQuestion.start, dir / "song3.mp3");
    EXPECT_EQ(dialogs.boxes.back(), "Melvane: Do you want to overwrite existing file?");
    EXPECT_EQ(fields.destination, "");
    dialogs.nextAnswer = BoxAnswer::yes;
    files.BR_Click(2);
    EXPECT_EQ(fields.destination, dir / "song2.mp3");
    dialogs.nextFile = dir / "new";
    files.BR_Click(2);
    EXPECT_EQ(fields.destination, dir / "new.mp3");
    EXPECT_EQ(dialogs.boxes.size(), 3U);
}

TEST_F(SourceFilesFixture, WhatWasFinishedSinceTheDestinationWasChosenIsAskedAbout) {
    EXPECT_TRUE(files.mayReplaceDestination()) << "none";
    fields = {dir / "song.ogg", "/v.wav", ""};
    dialogs.nextFile = dir.write("old.mp3", "old");
    dialogs.nextAnswer = BoxAnswer::yes;
    for (const std::string& chosen : {dir / "old.mp3", dir / "song.mp3"}) {
        dialogs.nextFile = chosen;
        files.BR_Click(2);
        dialogs.boxes.clear();
        EXPECT_TRUE(files.mayReplaceDestination()) << "as it was when it was chosen";
        dir.write(std::filesystem::path(chosen).filename(), "a finished mix");
        for (const BoxAnswer answer : {BoxAnswer::no, BoxAnswer::cancel, BoxAnswer::yes}) {
            dialogs.nextAnswer = answer;
            EXPECT_EQ(files.mayReplaceDestination(), answer == BoxAnswer::yes);
        }
        EXPECT_EQ(dialogs.boxes, std::vector(3, std::string("Melvane: Do you want to overwrite existing file?")));
        std::filesystem::remove(chosen);
        EXPECT_TRUE(files.mayReplaceDestination()) << "it has gone";
    }
    EXPECT_EQ(dialogs.boxes.size(), 3U);
}

TEST(SourceFiles, GivesTheDestinationItsExtension) {
    const std::pair<const char*, const char*> cases[] = {
        {"/m/mix", "/m/mix.mp3"},     {"/m/mix.wav", "/m/mix.mp3"}, {"/m/mix.flac", "/m/mix..mp3"},
        {"/m/mix.mp3", "/m/mix.mp3"}, {"/m/MIX.MP3", "/m/MIX.mp3"}, {"/a.b/mix", "/a.b/mix.mp3"},
        {"/m/a.b", "/m/.mp3"},        {"/m/mix.aż", "/m/mi.mp3"},   {"/m/歌.日本", "/m/.mp3"}};
    for (const auto& [typed, path] : cases) EXPECT_EQ(withMp3Extension(typed), path);
}

TEST(Options, AreReadFromAnywhereAndNameTheirRanges) {
    const auto parse = [](std::vector<const char*> words) { return parseOptions(words); };
    const MixOptions options = parse({"a.mp3", "--volume", "80,0", "b.wav", "--quiet", "--tone=0,10,50,100",
                                      "--balance", "-100,5", "--effects", "1,40;0,0;1,100;0,7", "--preset", "soft rock",
                                      "--key", "-2.5", "--sync", "+0.25", "--", "-c.mp3"});
    Settings settings;
    for (const auto& change : options.changes) change(settings);
    EXPECT_EQ(settings.volume, (std::array<std::int16_t, 2>{80, 0}));
    EXPECT_EQ(settings.toneValue, (std::array<std::int16_t, 4>{0, 10, 50, 100}));
    EXPECT_EQ(settings.balanceValue, (std::array<std::int32_t, 2>{-100, 5}));
    EXPECT_EQ(settings.EffectState, (std::array<EffectSwitch, 5>{{{-1, 0, 40}, {}, {-1, 0, 100}, {0, 0, 7}, {}}}));
    EXPECT_EQ(settings.currentPreset, 12);
    EXPECT_EQ(options.key, -2.5);
    ASSERT_TRUE(options.sync);
    EXPECT_EQ(options.sync->offset, 0.25F);
    EXPECT_TRUE(options.quiet && !options.json && !options.overwrite);
    EXPECT_EQ(options.destination, "-c.mp3");
    EXPECT_TRUE(parse({"--help"}).help);
    EXPECT_EQ(options.sync->place, VoicePlace{});
    const MixOptions placed = parse({"--sync", "-12.75", "a", "b", "c"});
    EXPECT_EQ(placed.sync->offset, 0);
    EXPECT_EQ(placed.sync->place, (VoicePlace{-562275, 0}));
    EXPECT_TRUE(parse({"--find-sync", "a", "b"}).findSync);
    EXPECT_EQ(parse({"--find-sync", "--job", "j"}).job, "j");
    using Faults = std::vector<std::pair<std::vector<const char*>, const char*>>;
    Faults faults{{{"a", "b"}, "DESTINATION"},
                  {{"a", "b", "c", "d"}, "DESTINATION"},
                  {{"a", "b", "c", "--find-sync"}, "--find-sync"},
                  {{"--find-sync", "--job", "j", "a"}, "--find-sync"},
                  {{"--loud"}, "--loud"},
                  {{"a", "b", "c", "--volume"}, "value"},
                  {{"--quiet=1"}, "no value"}};
    const struct {
        const char *option, *range;
        std::vector<const char*> taken, refused;
    } ranges[] = {
        {"--volume", "0 to 100", {"0,100"}, {"101,0", "-1,0", "50", "5,x", "99999999999,1", "50.5,1"}},
        {"--sync", "twelve", {"-0.6", "+43200", "auto"}, {"-43201", "inf", "+-0.1", "Auto"}},
        {"--key", "-5 to 5", {"-5", "+5"}, {"-5.1", "5.1", "nan"}},
        {"--tone", "100", {"0,100,0,100"}, {"1,2,3", "0,0,0,101"}},
        {"--balance", "-100", {"-100,100"}, {"0,101", "-101,0"}},
        {"--effects", "0 or 1", {"0,0;1,100;0,0;0,0"}, {"2,0;0,0;0,0;0,0", "0,0;0,0;0,0;0,101"}},
        {"--preset", "0 to 13", {"0", "13"}, {"14"}},
        {"--mute", "16", {"1,16"}, {"0", "17"}},
        {"--channel-balance", "127", {"1=0", "16=127"}, {"1=128", "1=-1", "0=1", "17=1"}},
    };
    for (const auto& [option, range, taken, refused] : ranges) {
        for (const char* value : taken) EXPECT_NO_THROW(parse({option, value, "a.mid", "b", "c"})) << option << value;
        for (const char* value : refused) faults.push_back({{option, value}, range});
    }
    for (const auto& [words, fault] : faults) {
        try {
            parse(words);
            ADD_FAILURE() << words.front() << " " << words.back();
        } catch (const UsageError& error) {
            EXPECT_NE(std::string(error.what()).find(fault), std::string::npos) << error.what();
        }
    }
}

}  // namespace
}  // namespace melvane
