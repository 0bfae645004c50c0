// MIDI backgrounds without sound: what is read from a song, what is sent to its player.
#include "midi/channel_reader.h"
#include "midi/song_file.h"
#include "tests/silent_parts.h"

namespace melvane {
namespace {

using namespace melvane::test;
using namespace std::string_literals;

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
        readChannels(songOf(c.bytes), state, [] {});
        const ChannelSettings& row = state.ChannelInfo[2];
        EXPECT_EQ((std::array<int, 3>{row.instrument, row.volume, row.balance}), c.values) << &c - cases;
        EXPECT_EQ(state.InitialChannel[2].volume, row.volume);
        EXPECT_EQ(row.channelNumber, 3);
        EXPECT_EQ(state.ChannelInfo[3].channelNumber, -1);
    }
}

struct MidiFixture : SilentMidi {
    const std::string bytes = songOf("\x90\x93\x99\xB3\x07\x40");

    MidiFixture() {
        names.temporaryMidi = dir / "tmp.mid";
        midi.ReadMap();
    }
};

TEST_F(MidiFixture, WithoutAMixerOneBoxSaysSo) {
    systemMixer.opens = false;
    midi.prepare();
    EXPECT_EQ(dialogs.boxes, Words{"Melvane: Couldn't open the mixer please check if a audio mixer is installed then "
                                   "retry."});
    EXPECT_FALSE(midi.lines().SetSynthBalance() || midi.lines().RestoreSpeakerTreble());
    EXPECT_EQ(midi.lines().GetSpeakerBass(), -1);
}

TEST_F(MidiFixture, UnusedChannelsKeepWhatTheyHeld) {
    int yields = 0;
    onEvents = [&] { ++yields; };
    // A note-on byte counts in the header too, a message only from the 22nd byte on.
    midi.ReadFile(dir.write("a.mid", "\x9F\xBF\x07\x40________________\xCF\x33\xC0\x20"));
    EXPECT_EQ(yields, 16);
    const ChannelSettings& row = state.ChannelInfo[15];
    EXPECT_TRUE(row.channelNumber == 16 && row.instrument == 0 && row.volume == 100);
    EXPECT_EQ(state.ChannelInfo[0].instrument, 0) << "no note, so no program";

    const std::string large = dir.write("large.mid", bytes);
    std::filesystem::resize_file(large, (64U << 20) + 1);
    for (const std::string& unreadable : {dir / "missing.mid", dir.path(), "/dev/zero"s, large}) {
        midi.PlayMidi();
        midi.ReadFile(unreadable);
        EXPECT_EQ(midi.failure(), MidiFailure::fileNotPlayable);
        EXPECT_NE(midi.failureText().find(unreadable), std::string::npos) << midi.failureText();
        EXPECT_EQ(state.midiBytes, "");
        EXPECT_TRUE(row.channelNumber == -1 && row.shown == 0 && row.switchedOn == 0);
        EXPECT_TRUE(row.state == 2 && row.balance == 64 && state.InitialChannel[15].volume == 100);
    }
    std::filesystem::resize_file(large, 64U << 20);
    midi.ReadFile(large);
    EXPECT_EQ(state.midiBytes.size(), 64U << 20);
}

TEST_F(MidiFixture, SongsAreCutOutOfContainersByteByByte) {
    const std::string block = "#VEXMidi\r\n";
    const std::string inner = bytes + "#VEXMidi\r\nx#End VEXMidi\r\n\0"s;
    const std::string file = dir.write("a.kar", inner + block + "#End VEXMidi tail");
    EXPECT_EQ(open(file), names.temporaryMidi);
    EXPECT_EQ(readFile(names.temporaryMidi), inner);
    EXPECT_EQ(state.midiBytes, inner);
    EXPECT_EQ(state.midiSettingsBlock, block);

    const std::string whole = dir.write("b.kar", bytes + block);
    EXPECT_EQ(open(whole), whole);
    EXPECT_EQ(state.midiBytes, bytes + block);
    EXPECT_EQ(state.midiSettingsBlock, "");
    EXPECT_FALSE(std::filesystem::exists(names.temporaryMidi)) << "an older song is gone";

    EXPECT_THROW(midi.ExtractMidi(dir.write("c.kar", "#End VEXMidi#VEXMidi")), InvalidArgumentError);
    const std::string itself = readFile(file);
    dir.write("tmp.mid", itself);
    EXPECT_EQ(readFile(open(names.temporaryMidi)), itself) << "it was chosen itself";
    std::filesystem::create_symlink("/dev/full", dir / "full.mid");
    for (const std::string& unwritable : {dir / "full.mid", dir / "none/tmp.mid", ""s}) {
        names.temporaryMidi = unwritable;
        EXPECT_THROW(midi.ExtractMidi(file), FileError) << unwritable;
    }
}

TEST_F(MidiFixture, SettingsLinesReachTheirChannelsUntilOneIsWrong) {
    std::string all;
    for (int c = 0; c < kMidiChannels; ++c) all += static_cast<char>(0x90 + c);
    open(dir.write("a.mid", songOf(all)));
    std::vector<double> tones;
    const auto read = [&](const std::string& lines) {
        midi.ReadMidi("#VEXMidi\r\n" + lines + "#End VEXMidi", [&](double tone) { tones.push_back(tone); });
    };
    read("ch04:1,0,90,64,25\r\n\r\nch09:1,2.5,1,1,1\r\nch 5:0,-1,90,10,3,9\r\n#VEX06:1,0,1,1,1\r\n");
    EXPECT_EQ(tones, (std::vector<double>{0, 2.5, -1}));
    EXPECT_TRUE(state.ChannelInfo[4].volume == 90 && midi.GetInstrument(4) == 25);
    EXPECT_TRUE(state.ChannelInfo[5].volume == 0 && state.ChannelInfo[5].balance == 10);
    EXPECT_TRUE(state.ChannelInfo[6].volume == 100 && state.ChannelInfo[9].volume == 100);
    EXPECT_EQ(midi.failure(), MidiFailure::none);
    EXPECT_THROW(midi.GetInstrument(16), BoundsError);
    for (const char* wrong : {"ch01:1,0,5,5", "ch16:1,0,5,5,5", "ch-1:1,0,5,5,5", "ch01:1,0,99999,5,5", "c", "ch01"}) {
        midi.PlayMidi();
        read("ch02:1,0,7,7,7\r\n"s + wrong + "\r\nch03:1,0,8,8,8\r\n");
        EXPECT_EQ(midi.failure(), MidiFailure::operationNotApplied);
    }
    EXPECT_EQ(state.ChannelInfo[2].volume, 7);
    EXPECT_TRUE(state.ChannelInfo[1].volume == 100 && state.ChannelInfo[3].volume == 100);
}

TEST_F(MidiFixture, SettingsAreSentAsTheyAreMade) {
    midi.setChannelVolume(3, 55);
    EXPECT_EQ(state.ChannelInfo[3].volume, 55) << "also without a player";
    int updates = 0;
    midi.updateChannels = [&] { ++updates; };
    midi.MidiRestore();
    EXPECT_EQ(updates, 0);
    open(dir.write("a.mid", bytes));
    EXPECT_EQ(updates, 1);

    midi.setChannelInstrument(3, 25);
    midi.setChannelVolume(3, 0x15A);
    midi.setChannelBalance(0, 10);
    midi.SetSingleChannel(5, true, 1, 1, 1);
    midi.SetSingleChannel(3, false, 90, 64, 0);
    EXPECT_EQ(state.ChannelInfo[3].switchedOn, 0);
    midi.ApplyChannelSettings();
    settings.volume[0] = 0;
    midi.SetMidiVolume();
    midi.transpose(-2.5);
    EXPECT_EQ(sent(), (Words{"sendPatch 0 1 3 25 0 0", "sendMidi 10 1 3 176 7 90", "sendMidi 0 1 0 176 10 10",
                             "sendPatch 0 1 3 0 0 0", "sendMidi 10 1 3 176 7 0", "sendMidi 0 1 3 176 10 64",
                             "setMasterVolume -3000", "sendTranspose 0 1 0 -2", "sendTranspose 0 1 3 -2"}));
    for (const std::int16_t far : {std::int16_t{781}, std::int16_t{-710}}) {
        settings.volume[0] = far;
        EXPECT_THROW(midi.SetMidiVolume(), OverflowError);
    }
    EXPECT_EQ(midi.failure(), MidiFailure::none);
    midi.setChannelBalance(16, 1);
    EXPECT_EQ(midi.failure(), MidiFailure::operationNotApplied);

    midi.MidiRestore();
    EXPECT_EQ(sent(), Words{"liftChannelSettings"});
    EXPECT_TRUE(state.ChannelInfo[3].volume == 64 && state.ChannelInfo[3].switchedOn == -1);
    EXPECT_EQ(updates, 2);
    music.messagesLeft = 1;
    midi.ApplyChannelSettings();
    EXPECT_EQ(sent(), Words{"sendPatch 0 1 0 0 0 0"}) << "ends at the first failure";
}

TEST_F(MidiFixture, APortIsChosenByItsNameAndMissedWhenItHasGone) {
    std::string file = dir.write("a.mid", bytes);
    const auto openedOn = [&](Words ports, bool renewed = false) {
        music.ports = std::move(ports);
        sent();
        if (renewed) {
            midi.renewPort();
        } else {
            midi.ReadMap();
            midi.OpenMidi(file);
        }
        EXPECT_EQ(state.midiPorts, music.ports);
        EXPECT_EQ(music.openPorts, 1);
        const Words all = sent();
        return *std::ranges::find_if(all, [](const std::string& call) { return call.starts_with("setPort"); }) + " " +
               midi.missingPort();
    };
    const Words both = {"A Microsoft MIDI Mapper", "microsoft gs WAVETABLE synth", "x"};
    const struct {
        Words ports;
        std::int32_t before, after;
    } cases[] = {{both, -5, 2}, {both, 7, 2},    {both, 3, 3}, {both, -1, -1},
                 {both, 0, 0},  {{"x"}, -5, -1}, {{}, 1, -1},  {{both[0]}, -5, 1}};
    for (const auto& c : cases) {
        settings.midiPort = c.before;
        EXPECT_EQ(openedOn(c.ports), "setPort " + std::to_string(std::max(c.after, 0)) + " 80 ") << c.before;
        EXPECT_EQ(settings.midiPort, c.after);
    }
    settings.midiPort = 1;
    EXPECT_EQ(openedOn({"synth", "keys", "piano"}), "setPort 1 80 ");
    EXPECT_TRUE(midi.onDevice());
    EXPECT_EQ(openedOn({"synth", "organ", "keys"}), "setPort 2 80 ");
    EXPECT_EQ(openedOn({"synth", "organ", "piano"}), "setPort 0 80 keys");
    EXPECT_FALSE(midi.onDevice());
    EXPECT_EQ(openedOn({"synth", "keys"}), "setPort 1 80 ");
    music.devicesOpen = false;
    EXPECT_EQ(openedOn({"synth", "keys"}), "setPort 1 80 keys");
    music.devicesOpen = true;
    EXPECT_EQ(openedOn({"synth", "keys"}, true), "setPort 1 80 ");
    EXPECT_EQ(openedOn({"synth"}, true), "setPort 0 80 keys");
    EXPECT_EQ(openedOn({"synth", "organ", "keys"}, true), "setPort 2 80 ");
    settings.midiPort = 0;
    EXPECT_EQ(openedOn({"synth", "keys"}), "setPort 0 80 ");
    midi.renewPort();
    EXPECT_EQ(sent(), Words{}) << "the synthesiser stays";
}

TEST_F(MidiFixture, ASongIsOpenedPlayedAndClosed) {
    EXPECT_FALSE(midi.PlayMidi());
    midi.CloseDevice();
    midi.StopMidi();
    EXPECT_EQ(sent(), Words{});
    run.key = 1.5;
    std::string file = dir.write("a.kar", bytes + "#VEXMidi\r\nch03:1,0,9,9,9\r\n#End VEXMidi");
    midi.OpenMidi(file);
    Words opening = sent();
    std::ranges::sort(opening);
    EXPECT_EQ(opening, (Words{"download", "loadSegment 27", "sendTranspose 0 1 0 2", "sendTranspose 0 1 3 2",
                              "setMasterTempo 1.000000", "setMasterVolume 1200", "setPort 0 80"}));
    EXPECT_EQ(midi.failure(), MidiFailure::none) << midi.failureText();
    EXPECT_TRUE(midi.loaded() && state.midiLoaded == -1 && midi.length() == 3);
    EXPECT_EQ(state.ChannelInfo[3].volume, 64) << "the container's settings are not applied";
    EXPECT_TRUE(midi.PlayMidi() && midi.playing() && midi.stream() != 0);
    midi.StopMidi();
    EXPECT_FALSE(midi.playing());
    midi.CloseDevice();
    EXPECT_EQ(sent(), (Words{"playSegment", "stop", "stop", "unload", "closeDown 80"}));
    EXPECT_FALSE(midi.loaded() || midi.playing() || midi.stream() || music.openPorts);
}

TEST_F(MidiFixture, WhatFailsIsToldAndTriedAgain) {
    const std::string file = dir.write("a.mid", bytes);
    open(dir / "missing.mid");
    EXPECT_EQ(midi.failure(), MidiFailure::fileNotPlayable);
    EXPECT_NE(midi.failureText().find("missing.mid"), std::string::npos);
    music.songLoads = false;
    open(file);
    EXPECT_EQ(midi.failure(), MidiFailure::fileNotPlayable);
    EXPECT_EQ(midi.failureText(), "refused: loadSegment 27");
    EXPECT_EQ(state.midiLoaded, -1);
    EXPECT_FALSE(midi.PlayMidi() || midi.loaded() || midi.length() > 0 || music.openPorts);

    music.songLoads = true;
    open(file);
    midi.SetSingleChannel(3, false, 64, 64, 0);
    music.portOpens = false;
    midi.reopen();
    EXPECT_EQ(midi.failure(), MidiFailure::interfaceNotInitialised);
    EXPECT_FALSE(midi.loaded());
    music.portOpens = true;
    midi.reopen();
    EXPECT_TRUE(midi.loaded() && midi.failure() == MidiFailure::none);
    EXPECT_EQ(sent().back(), "sendMidi 10 1 3 176 7 0") << "what the user switched off stays off";
    EXPECT_EQ(state.ChannelInfo[3].switchedOn, 0);
    music.plays = false;
    EXPECT_FALSE(midi.PlayMidi());
    EXPECT_EQ(midi.failureText(), "refused: playSegment");
    music.plays = true;
    sent();
    const std::int16_t before = state.InitialChannel[0].instrument;
    midi.setChannelInstrument(0, 25);
    midi.reopen();
    EXPECT_EQ(std::ranges::count(sent(), "sendPatch 0 1 0 25 0 0"), 2) << "also where the song has the first program";
    midi.MidiRestore();
    EXPECT_EQ(state.ChannelInfo[0].instrument, before);
    midi.reopen();
    for (const std::string& call : sent()) EXPECT_FALSE(call.starts_with("sendPatch")) << "it is the song's again";
    midi.CloseDevice();
    midi.reopen();
    EXPECT_FALSE(midi.loaded()) << "nothing is open";
}

// At each of the moments where window events run, the user asks for something else.
TEST_F(MidiFixture, TheLastRequestCounts) {
    const std::string first = dir.write("a.mid", bytes);
    std::string second = dir.write("b.mid", songOf("\x91"));
    constexpr int kMoments = 5 + 1 + kMidiChannels;  // of closing, of the device, of reading
    for (int moment = 1; moment <= kMoments; ++moment)
        for (const bool opens : {true, false}) {
            open(first);
            int moments = 0;
            onEvents = [&] {
                if (++moments == moment) opens ? midi.OpenMidi(second) : midi.CloseDevice();
            };
            open(first);
            onEvents = [] {};
            EXPECT_GE(moments, moment);
            EXPECT_EQ(midi.loaded(), opens) << moment;
            EXPECT_EQ(music.openPorts, opens ? 1 : 0) << moment;
            EXPECT_TRUE(!opens || state.ChannelInfo[1].channelNumber == 2) << moment;
        }
}

}  // namespace
}  // namespace melvane
