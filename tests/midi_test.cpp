// MIDI backgrounds without sound: what is read from a song, what is sent to its player, and the mixer's lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "audio/mod_Mixer.h"
#include "desktop/local_file_names.h"
#include "midi/channel_reader.h"
#include "midi/file_bytes.h"
#include "midi/karaoke_container.h"
#include "midi/playback.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"

namespace melvane {
namespace {

using namespace melvane::test;
using namespace std::string_literals;
using Words = std::vector<std::string>;
using Values = std::vector<std::uint32_t>;

TEST(Mixer, WritesBalanceAndToneAndTheMirrorOfWhatWasThere) {
    FakeSystemMixer system;
    Settings settings;
    FakeDialogs dialogs;
    mod_Mixer mixer(system, settings, dialogs);
    EXPECT_EQ(mixer.OpenMixer(), 0);
    mixer.keepSpeakerTone();
    EXPECT_EQ(mixer.lines().lastFound, -1);
    EXPECT_EQ(mixer.lines().lastReadValue, 2000);
    const std::pair<int, Values> balances[] = {{0, {32767, 32767}},   {100, {0, 32767}},    {-100, {32767, 0}},
                                               {1, {32439, 32767}},   {-1, {32767, 32439}}, {50, {16384, 32767}},
                                               {-50, {32767, 16383}}, {3, {31784, 32767}},  {-3, {32767, 31783}}};
    for (const auto& [balance, values] : balances) {
        settings.balanceValue[0] = balance;
        EXPECT_TRUE(mixer.SetSynthBalance());
        EXPECT_EQ(system.values[MIXERCONTROL_CONTROLTYPE_VOLUME], values) << balance;
    }
    for (const auto& [level, value] : {std::pair<std::int16_t, int>{0, 65535}, {100, 0}, {50, 32767}}) {
        settings.toneValue = {level, 10, 1, 1};
        EXPECT_TRUE(mixer.SetSpeakerBass() && mixer.SetSpeakerTreble());
        EXPECT_EQ(mixer.GetSpeakerBass(), value);
        EXPECT_EQ(mixer.GetSpeakerTreble(), 65535 - 6554);
    }
    EXPECT_TRUE(mixer.RestoreSpeakerBass() && mixer.RestoreSpeakerTreble());
    EXPECT_EQ(mixer.GetSpeakerBass(), 64535);
    EXPECT_EQ(mixer.GetSpeakerTreble(), 63535);

    settings.toneValue = {101, -1, 0, 0};
    EXPECT_THROW(mixer.SetSpeakerBass(), InvalidArgumentError);
    EXPECT_THROW(mixer.SetSpeakerTreble(), InvalidArgumentError);
    for (const std::int32_t far : {-2'000'000'000, 2'000'000'000}) {
        settings.balanceValue[0] = far;
        EXPECT_THROW(mixer.SetSynthBalance(), OverflowError);
    }
    EXPECT_TRUE(dialogs.boxes.empty());
}

TEST(Mixer, FailsSilentlyAfterOneBoxWhenThereIsNone) {
    FakeSystemMixer system;
    const Settings settings;
    FakeDialogs dialogs;
    mod_Mixer closed(system, settings, dialogs);
    system.opens = false;
    closed.OpenMixer();
    EXPECT_EQ(dialogs.boxes, Words{"Melvane: Couldn't open the mixer please check if a audio mixer is installed then "
                                   "retry."});
    EXPECT_FALSE(closed.SetSynthBalance() || closed.SetSpeakerBass() || closed.RestoreSpeakerTreble());
    EXPECT_EQ(closed.GetSpeakerBass(), -1);
}

// A song of the 21 bytes that are not searched for messages, and what follows them.
std::string song(const std::string& bytes) {
    return "MThd\0\0\0\6\0\1\0\2\1\xE0MTrk\0\0\0"s + bytes;
}

TEST(ChannelReader, TakesTheFirstValuesThatCount) {
    const struct {
        std::string bytes;
        std::array<int, 3> values;  // instrument, volume, balance; 11 instruments were there before
    } cases[] = {
        {"\xC2\x05\x92", {5, 100, 64}},
        {"\x92\xC2\x05\xC2\x06\xB2\x07\x50\xB2\x0A\x20", {5, 80, 32}},
        {"\x92\xC2\0\xC2\xC2\x07"s, {194, 100, 64}},           // the byte behind it, whatever it is
        {"\x92\xC2\0\xB2\x07\x7F\xB2\x07\0"s, {11, 100, 64}},  // neither program 0 nor volumes 0 and 127
        {"\x92\xB2\x07\x7F\xB2\x07\x80\xB2\x07\x01", {11, 1, 64}},
        {"\x92\xB2\x0A\0\x01"s, {11, 100, 0}},
        {"\x92\xB2\x0A\0\xB2\x0A\0\xB2\x0A\x05"s, {11, 100, 0}},  // no third try
        {"\x92\xB2\x0A\xFF\xB2\x0A\xFE", {11, 100, 254}},
        {"\x92\xB2\x0A\x7F\xB2\x0A\x05", {11, 100, 127}},
        {"\x92\xC2", {11, 100, 64}},  // cut off behind the message
        {"\x92\xB2\x0A", {11, 100, 64}},
    };
    for (const auto& c : cases) {
        MidiState state;
        state.ChannelInfo[2].instrument = 11;
        state.midiBytes = song(c.bytes);
        readChannels(state, [] {});
        const ChannelSettings& row = state.ChannelInfo[2];
        EXPECT_EQ((std::array<int, 3>{row.instrument, row.volume, row.balance}), c.values) << &c - cases;
        EXPECT_EQ(state.InitialChannel[2].volume, row.volume);
        EXPECT_EQ(row.channelNumber, 3);
        EXPECT_EQ(state.ChannelInfo[3].channelNumber, -1);
    }
}

TEST(ChannelReader, UnusedChannelsKeepWhatTheyHeld) {
    const TempDir dir;
    MidiState state;
    int yields = 0;
    // A note-on byte counts in the header too, a message only from the 22nd byte on.
    ReadFile(dir.write("a.mid", "\x9F\xBF\x07\x40________________\xCF\x33\xC0\x20"), state, [&] { ++yields; });
    EXPECT_EQ(yields, 16);
    EXPECT_EQ(state.ChannelInfo[15].channelNumber, 16);
    EXPECT_EQ(state.ChannelInfo[15].instrument, 0);
    EXPECT_EQ(state.ChannelInfo[15].volume, 100);
    EXPECT_EQ(state.ChannelInfo[0].instrument, 0) << "no note, so no program";

    for (const std::string& unreadable : {dir / "missing.mid", dir.path(), "/dev/zero"s}) {
        state.InitialChannel[15] = {};
        ReadFile(unreadable, state, [] {});
        EXPECT_EQ(state.midiBytes, "");
        const ChannelSettings& row = state.ChannelInfo[15];
        EXPECT_EQ(row.channelNumber, -1);
        EXPECT_TRUE(row.shown == 0 && row.switchedOn == 0 && row.state == 2 && row.balance == 64);
        EXPECT_EQ(state.InitialChannel[15].volume, 100);
    }
}

struct MidiFixture : testing::Test {
    TempDir dir;
    FakeMusic music;
    MidiDevice device;
    MidiState state;
    Settings settings;
    RunState run;
    FakeFileNames names;
    std::function<void()> onEvents = [] {};
    const DoEvents doEvents = [this] { onEvents(); };
    MidiChannels channels{state, device, settings, doEvents};
    MidiPlayback playback{music, device, state, channels, run, settings, names, doEvents};
    const std::string bytes = song("\x90\x93\x99\xB3\x07\x40");

    MidiFixture() {
        names.temporaryMidi = dir / "tmp.mid";
        playback.ReadMap();
    }
    std::string open(std::string fileName) {
        music.calls.clear();
        playback.OpenMidi(fileName);
        return fileName;
    }
};

TEST_F(MidiFixture, SongsAreCutOutOfContainersByteByByte) {
    const std::string block = "#VEXMidi\r\n";
    const std::string inner = bytes + "#VEXMidi\r\nx#End VEXMidi\r\n\0"s;
    const std::string file = dir.write("a.kar", inner + block + "#End VEXMidi tail");
    EXPECT_EQ(ExtractMidi(file, state, names), names.temporaryMidi);
    EXPECT_EQ(readFile(names.temporaryMidi), inner);
    EXPECT_EQ(state.midiSettingsBlock, block);

    const std::string whole = dir.write("b.kar", bytes + block);
    EXPECT_EQ(ExtractMidi(whole, state, names), whole);
    EXPECT_EQ(state.midiSettingsBlock, "");
    EXPECT_FALSE(std::filesystem::exists(names.temporaryMidi)) << "an older song is gone";

    EXPECT_THROW(ExtractMidi(dir.write("c.kar", "#End VEXMidi#VEXMidi"), state, names), InvalidArgumentError);
    EXPECT_THROW(ExtractMidi(dir / "missing.kar", state, names), FileError);
    dir.write("tmp.mid", bytes);
    EXPECT_EQ(readFile(ExtractMidi(names.temporaryMidi, state, names)), bytes) << "it was chosen itself";
    std::filesystem::create_symlink("/dev/full", dir / "full.mid");
    for (const std::string& unwritable : {dir / "full.mid", dir / "none/tmp.mid", ""s}) {
        names.temporaryMidi = unwritable;
        EXPECT_THROW(ExtractMidi(file, state, names), FileError) << unwritable;
    }
}

TEST_F(MidiFixture, SettingsLinesReachTheirChannelsUntilOneIsWrong) {
    for (std::int16_t c = 0; c < kMidiChannels; ++c) state.ChannelInfo[c].channelNumber = c;
    std::vector<double> tones;
    const auto read = [&](const std::string& lines) {
        ReadMidi("#VEXMidi\r\n" + lines + "#End VEXMidi", state, channels, [&](double tone) { tones.push_back(tone); });
    };
    read("ch04:1,0,90,64,25\r\n\r\nch09:1,2.5,1,1,1\r\nch 5:0,-1,90,10,3,9\r\n#VEX06:1,0,1,1,1\r\n");
    EXPECT_EQ(tones, (std::vector<double>{0, 2.5, -1}));
    EXPECT_TRUE(state.ChannelInfo[4].volume == 90 && state.ChannelInfo[4].instrument == 25);
    EXPECT_TRUE(state.ChannelInfo[5].volume == 0 && state.ChannelInfo[5].balance == 10);
    EXPECT_TRUE(state.ChannelInfo[6].volume == 0 && state.ChannelInfo[9].volume == 0);
    for (const char* wrong : {"ch01:1,0,5,5", "ch16:1,0,5,5,5", "ch-1:1,0,5,5,5", "ch01:1,0,99999,5,5", "c", "ch01"})
        read("ch02:1,0,7,7,7\r\n"s + wrong + "\r\nch03:1,0,8,8,8\r\n");
    EXPECT_EQ(state.ChannelInfo[2].volume, 7);
    EXPECT_TRUE(state.ChannelInfo[1].volume == 0 && state.ChannelInfo[3].volume == 0);
}

TEST_F(MidiFixture, SettingsAreSentAsTheyAreMade) {
    channels.setChannelVolume(3, 55);
    EXPECT_EQ(state.ChannelInfo[3].volume, 55) << "also without a player";
    int updates = 0;
    channels.updateChannels = [&] { ++updates; };
    channels.MidiRestore();
    EXPECT_EQ(updates, 0);
    open(dir.write("a.mid", bytes));
    EXPECT_EQ(updates, 1);

    music.calls.clear();
    channels.setChannelInstrument(3, 25);
    channels.setChannelVolume(3, 0x15A);
    channels.setChannelBalance(16, 1);
    channels.setChannelBalance(0, 10);
    channels.SetSingleChannel(5, true, 1, 1, 1);
    channels.SetSingleChannel(3, false, 90, 64, 0);
    EXPECT_EQ(state.ChannelInfo[3].switchedOn, 0);
    channels.ApplyChannelSettings();
    settings.volume[0] = 0;
    channels.SetMidiVolume();
    channels.transpose(-2.5);
    EXPECT_EQ(music.calls, (Words{"sendPatch 0 1 3 25 0 0", "sendMidi 10 1 3 176 7 90", "sendMidi 0 1 0 176 10 10",
                                  "sendPatch 0 1 3 0 0 0", "sendMidi 10 1 3 176 7 0", "sendMidi 0 1 3 176 10 64",
                                  "setMasterVolume -3000", "sendTranspose 0 1 0 -2", "sendTranspose 0 1 3 -2"}));
    for (const std::int16_t far : {std::int16_t{781}, std::int16_t{-710}}) {
        settings.volume[0] = far;
        EXPECT_THROW(channels.SetMidiVolume(), OverflowError);
    }

    music.calls.clear();
    channels.MidiRestore();
    EXPECT_EQ(music.calls, Words{"liftChannelSettings"});
    EXPECT_TRUE(state.ChannelInfo[3].volume == 64 && state.ChannelInfo[3].switchedOn == -1);
    EXPECT_EQ(updates, 2);
    music.messagesLeft = 1;
    channels.ApplyChannelSettings();
    EXPECT_EQ(music.calls.size(), 2U) << "ends at the first failure";
}

TEST_F(MidiFixture, PortsAreChosenByTheirNames) {
    const Words both = {"A Microsoft MIDI Mapper", "microsoft gs WAVETABLE synth", "x"};
    const struct {
        Words ports;
        std::int32_t before;
        std::int32_t after;
        const char* opened;
    } cases[] = {{both, -5, 2, "setPort 2 80"},   {both, 7, 2, "setPort 2 80"}, {both, 3, 3, "setPort 3 80"},
                 {both, -1, -1, "setPort 0 80"},  {both, 0, 0, "setPort 0 80"}, {{both[0]}, -5, 1, "setPort 1 80"},
                 {{"x"}, -5, -1, "setPort 0 80"}, {{}, 1, -1, "setPort 0 80"}};
    for (const auto& c : cases) {
        music.ports = c.ports;
        settings.midiPort = c.before;
        playback.ReadMap();
        EXPECT_EQ(settings.midiPort, c.after);
        EXPECT_EQ(state.midiPorts, c.ports);
        open(dir.write("a.mid", bytes));
        EXPECT_EQ(std::count(music.calls.begin(), music.calls.end(), c.opened), 1) << c.before << c.opened;
    }
}

TEST_F(MidiFixture, ASongIsOpenedPlayedAndClosed) {
    EXPECT_FALSE(playback.PlayMidi());
    playback.CloseDevice();
    playback.StopMidi();
    EXPECT_EQ(music.calls, Words{});
    run.key = 1.5;
    const std::string file = open(dir.write("a.kar", bytes + "#VEXMidi\r\nch03:1,0,9,9,9\r\n#End VEXMidi"));
    EXPECT_EQ(file, names.temporaryMidi);
    const std::string load = "loadSegment " + file;
    EXPECT_EQ(music.calls, (Words{"init", "setPort 0 80", load, "download", "setMasterTempo 1.000000",
                                  "setMasterVolume 1200", "sendTranspose 0 1 0 2", "sendTranspose 0 1 3 2"}));
    EXPECT_TRUE(playback.loaded() && state.midiLoaded == -1 && playback.length() == 3);
    EXPECT_EQ(state.ChannelInfo[3].volume, 64) << "the container's settings are not applied";
    music.calls.clear();
    EXPECT_TRUE(playback.PlayMidi() && playback.playing());
    playback.StopMidi();
    playback.CloseDevice();
    playback.CloseDevice();
    EXPECT_EQ(music.calls, (Words{"playSegment", "stop", "stop", "unload", "closeDown 80"}));
    EXPECT_FALSE(playback.loaded() || playback.playing() || device.performance || device.segment);
}

TEST_F(MidiFixture, WhatFailsIsToldAndTriedAgain) {
    const std::string file = dir.write("a.mid", bytes);
    open(dir / "missing.mid");
    EXPECT_EQ(playback.failure(), MidiFailure::fileNotPlayable);
    EXPECT_NE(playback.failureText().find("missing.mid"), std::string::npos);
    music.songLoads = false;
    open(file);
    EXPECT_EQ(playback.failure(), MidiFailure::fileNotPlayable);
    EXPECT_EQ(state.midiLoaded, -1);
    EXPECT_FALSE(playback.PlayMidi() || playback.loaded() || device.performance);

    music.songLoads = true;
    open(file);
    channels.SetSingleChannel(3, false, 64, 64, 0);
    music.portOpens = false;
    playback.reopen();
    EXPECT_EQ(playback.failure(), MidiFailure::interfaceNotInitialised);
    EXPECT_FALSE(playback.loaded());
    music.portOpens = true;
    music.calls.clear();
    playback.reopen();
    EXPECT_TRUE(playback.loaded() && playback.failure() == MidiFailure::none);
    EXPECT_EQ(music.calls.back(), "sendMidi 10 1 3 176 7 0") << "what the user switched off stays off";
    EXPECT_EQ(state.ChannelInfo[3].switchedOn, 0);
    music.plays = false;
    EXPECT_FALSE(playback.PlayMidi());
    music.calls.clear();
    playback.CloseDevice();
    playback.reopen();
    EXPECT_EQ(music.calls, (Words{"stop", "unload", "closeDown 80"}));
}

// At each of the moments where window events run, the user asks for something else.
TEST_F(MidiFixture, TheLastRequestCounts) {
    const std::string first = dir.write("a.mid", bytes);
    std::string second = dir.write("b.mid", song("\x91"));
    constexpr int kMoments = 6 + 1 + kMidiChannels;  // of closing, of the device, of reading
    for (int moment = 1; moment <= kMoments; ++moment)
        for (const bool opens : {true, false}) {
            open(first);
            int moments = 0;
            onEvents = [&] {
                if (++moments == moment) opens ? playback.OpenMidi(second) : playback.CloseDevice();
            };
            open(first);
            onEvents = [] {};
            EXPECT_GE(moments, moment);
            EXPECT_EQ(playback.loaded(), opens) << moment;
            EXPECT_EQ(device.performance != nullptr, opens) << moment;
            EXPECT_TRUE(!opens || state.ChannelInfo[1].channelNumber == 2) << moment;
        }
}

TEST(LocalFileNames, RunningProgramsShareNoTemporarySong) {
    const TempDir caches;
    setenv("XDG_CACHE_HOME", caches.path().c_str(), 1);
    const LocalFileNames one;
    auto other = std::make_unique<LocalFileNames>();
    const std::string freed = other->temporaryMidiFile();
    EXPECT_EQ(other->temporaryMidiFile(), freed);
    EXPECT_NE(one.temporaryMidiFile(), freed);
    other.reset();
    EXPECT_EQ(LocalFileNames().temporaryMidiFile(), freed);
}

}  // namespace
}  // namespace melvane
