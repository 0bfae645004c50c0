#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "music/song.h"
#include "music/song_notes.h"
#include "platform/music_performance.h"

namespace melvane::music {
namespace {

constexpr std::int64_t kSecond = 44100;
constexpr std::int64_t kMinute = 60 * kSecond;

std::string big(std::uint64_t value, int bytes) {
    std::string text;
    while (bytes-- > 0) text.push_back(static_cast<char>(value >> 8 * bytes));
    return text;
}

std::string raw(std::initializer_list<int> bytes) {
    std::string text;
    for (const int byte : bytes) text.push_back(static_cast<char>(byte));
    return text;
}

// An event behind a delta time.
std::string at(unsigned ticks, const std::string& event) {
    std::string delta(1, static_cast<char>(ticks & 0x7F));
    while (ticks >>= 7) delta.insert(delta.begin(), static_cast<char>((ticks & 0x7F) | 0x80));
    return delta + event;
}
std::string at(unsigned ticks, std::initializer_list<int> event) {
    return at(ticks, raw(event));
}

std::string tempo(unsigned microseconds) {
    return raw({0xFF, 0x51, 3}) + big(microseconds, 3);
}

const std::string kEnd = raw({0xFF, 0x2F, 0});

std::string chunk(const std::string& name, const std::string& content) {
    return name + big(content.size(), 4) + content;
}
std::string track(const std::string& events) {
    return chunk("MTrk", events);
}
std::string header(unsigned format, unsigned division, unsigned tracks = 1) {
    return chunk("MThd", big(format, 2) + big(tracks, 2) + big(division, 2));
}

Song read(const std::string& bytes) {
    return readSong({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

struct Note {
    std::int64_t frame;
    int pitch;
    bool operator==(const Note&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Note& note) {
    return out << note.pitch << " at " << note.frame;
}

std::vector<Note> notes(const std::string& bytes) {
    std::vector<Note> found;
    for (const SongEvent& event : read(bytes).events)
        if ((event.status & 0xF0) == 0x90 && event.data2 > 0) found.push_back({event.frame, event.data1});
    return found;
}

using Notes = std::vector<Note>;

TEST(SongReader, tempoChangesStayOnTheFrame) {
    constexpr unsigned kDivision = 192;
    std::string tempos = at(0, tempo(0));
    std::string tune;
    long double seconds = 0;
    std::vector<Note> expected;
    for (unsigned i = 0; seconds < 600; ++i) {
        const unsigned beat = i == 0 ? 500'000 : 300'007 + i * 7919 % 700'001;
        if (i > 0) tempos += at(101, tempo(beat));
        tune += at(i == 0 ? 0 : 101, {0x90, static_cast<int>(i % 128), 1});
        expected.push_back({std::llround(seconds * kSecond), static_cast<int>(i % 128)});
        seconds += 101.0L * beat / kDivision / 1e6L;
    }
    ASSERT_GT(expected.size(), 1000U);
    EXPECT_EQ(notes(header(1, kDivision) + track(tempos + at(0, kEnd)) + track(tune)), expected);
}

TEST(SongReader, aNoteLastsUntilItIsReleasedOrStruckAgain) {
    std::string shown;
    for (const SongNote& note :
         notesOf(read(header(0, 96) + track(at(0, tempo(1'000'000)) + at(0, {0x92, 60, 9}) + at(96, {0x93, 60, 9}) +
                                            at(96, {0x92, 60, 9}) + at(96, {0x92, 60, 0}) + at(96, kEnd)))))
        shown += std::to_string(note.channel) + ": " + std::to_string(note.begin / 44'100) + "-" +
                 std::to_string(note.end / 44'100) + " ";
    EXPECT_EQ(shown, "2: 0-2 3: 1-4 2: 2-3 ");
}

TEST(SongReader, smpteTimeIsCountedInFramesWhateverTheTempo) {
    for (const auto& [rate, ticks, perSecond] :
         {std::tuple{24, 80, 1920.0L}, {25, 40, 1000.0L}, {29, 100, 3'000'000 / 1001.0L}, {30, 1, 30.0L}}) {
        const unsigned division = static_cast<unsigned>((256 - rate) << 8 | ticks);
        EXPECT_EQ(notes(header(0, division) + track(at(0, tempo(9)) + at(12345, {0x90, 60, 1}))),
                  (Notes{{std::llround(12345 / perSecond * kSecond), 60}}));
    }
}

TEST(SongReader, tracksSoundTogetherAndSequencesInARow) {
    const std::string tracks = track(at(0, tempo(1'000'000)) + at(96, {0x90, 1, 1}) + at(96, kEnd)) +
                               track(at(96, {0x91, 2, 1}) + at(0, {0x81, 2, 0}) + at(288, kEnd)) +
                               track(at(48, {0x92, 3, 1}) + at(48, {0x92, 4, 1}));
    const Notes together{{kSecond / 2, 3}, {kSecond, 1}, {kSecond, 2}, {kSecond, 4}};
    EXPECT_EQ(notes(header(0, 96) + tracks), together);
    EXPECT_EQ(notes(header(1, 96, 0) + tracks), together);
    EXPECT_EQ(read(header(1, 96) + tracks).endFrame, 4 * kSecond);
    // Each with a tempo of its own.
    EXPECT_EQ(notes(header(2, 96) + tracks),
              (Notes{{kSecond, 1}, {kSecond * 5 / 2, 2}, {kSecond * 17 / 4, 3}, {kSecond * 9 / 2, 4}}));
}

TEST(SongReader, runningStatusOutlastsOtherEvents) {
    const Song song = read(header(0, 1) + track(at(0, {0x95, 60, 1}) + at(1, {60, 0}) + at(0, {0xFF, 5, 1, 'x'}) +
                                                at(1, {62, 1}) + at(0, {0xF0, 2, 1, 0xF7}) + at(0, {62, 0}) +
                                                at(0, {0xC5, 7}) + at(1, {8}) + at(0, {0xE5, 1, 2})));
    std::string told;
    for (const SongEvent& event : song.events)
        told += std::to_string(event.frame * 2 / kSecond) + ":" + std::to_string(event.status) + "," +
                std::to_string(event.data1) + "," + std::to_string(event.data2) + " ";
    EXPECT_EQ(told, "0:149,60,1 1:149,60,0 2:149,62,1 2:240,0,0 2:149,62,0 2:197,7,0 3:197,8,0 3:229,1,2 ");
}

TEST(SongReader, exclusiveMessagesAreMadeWhole) {
    using Messages = std::vector<std::vector<std::uint8_t>>;
    const std::string note = at(0, {0x90, 60, 1});
    const Song song =
        read(header(0, 1) +
             track(at(0, {0xF0, 3, 1, 2, 0xF7}) + at(0, {0xF0, 2, 3, 4}) + at(1, tempo(500'000)) + at(1, {0xF7, 1, 5}) +
                   at(2, {0xF7, 2, 6, 0xF7}) + at(0, {0xF7, 1, 0xFA}) + at(0, {0xF7, 3, 0xF0, 7, 0xF7}) +
                   at(0, {0xF0, 1, 8}) + note + at(0, {0xF7, 2, 1, 0xF7}) +  // no end
                   at(0, {0xF0, 3, 9, 0x90, 0xF7}) + at(0, {0xF0, 0}) + at(0, {0xF0, 1, 0xF7}) + note));
    EXPECT_EQ(song.sysex, (Messages{{0xF0, 1, 2, 0xF7}, {0xF0, 3, 4, 5, 6, 0xF7}, {0xF0, 7, 0xF7}, {0xF0, 8, 0xF7}}));
    ASSERT_EQ(song.events.size(), 6U);
    EXPECT_EQ(song.events[1].frame, 2 * kSecond);
}

TEST(SongReader, chunksAreFoundBehindAndBetweenWhatIsNone) {
    const std::string first = track(at(0, {0x90, 1, 1}) + at(0, kEnd));
    const std::string second = track(at(0, {0x90, 2, 1}) + at(0, {0x80, 2, 1}) + at(0, kEnd));
    const Notes both{{0, 1}, {0, 2}};
    const std::string song = header(1, 96, 7) + first + second;
    EXPECT_EQ(notes("RIFF" + big(0, 4) + "RMIDdata" + big(0, 4) + song + "LIST" + raw({4, 0, 0, 0}) + "INFO"), both);
    EXPECT_EQ(notes("junk" + song + std::string(99, '\0')), both);
    EXPECT_EQ(notes(header(1, 96, 65535) + first + chunk("XFKM", "MTrk") + second), both);
    EXPECT_EQ(notes(header(1, 96) + first + raw({0, 0, 0}) + second), both);
    EXPECT_EQ(notes(chunk("MThd", big(1, 2) + big(2, 2) + big(96, 2) + "more") + first + second), both);
    for (const unsigned length : {0U, 3U, 9U, 12U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        const std::string wrong = "MTrk" + big(length, 4);
        EXPECT_EQ(notes(header(1, 96) + wrong + first.substr(8) + second), both) << length;
        EXPECT_EQ(notes(header(1, 96) + first + wrong + second.substr(8)), both) << length;
    }
}

TEST(SongReader, damagedEventsAreLeftOut) {
    const std::string note = at(48, {0x90, 60, 1});
    const Notes rest{{kSecond / 2, 60}};
    for (const std::string& damage : {at(0, {5}), at(0, {0x91, 0x85, 1}), at(0, {0x91, 5, 0x81}), at(0, {0xF4}),
                                      at(0, {0xFF, 0x51, 1, 9}), raw({0x80, 0x80, 0x80, 0x80, 0xF6})})
        EXPECT_EQ(notes(header(0, 48) + track(damage + note)), rest);
    // Nothing comes of what is cut off, nor of what stands behind the end.
    for (const std::string& end :
         {at(0, {0x90, 5}), at(0, {0xF0, 5, 1}), at(0, {0xFF, 1, 0xFF, 0xFF, 0xFF, 0x7F, 1}), at(0, kEnd) + note})
        EXPECT_EQ(read(header(0, 48) + track(note + end)).events.size(), 1U);
    // The song ends in front of a gap of more than ten minutes, and after three hours.
    const std::string gap = header(1, 1) + track(note + at(1201, note.substr(1)) + at(0, kEnd)) + track(at(1300, kEnd));
    EXPECT_EQ(read(header(1, 1) + track(at(0, note.substr(1)) + at(1200, kEnd)) + track(at(2401, kEnd))).endFrame,
              10 * kMinute);
    EXPECT_EQ(read(gap).endFrame, notes(gap).back().frame);
    for (const unsigned format : {1U, 2U}) {
        std::string days;
        for (int i = 0; i < 30; ++i) days += format == 1 ? at(1200, {0x90, i, 1}) : track(at(1200, {0x90, i, 1}));
        days = format == 1 ? track(days) : days + track(at(0, {0x90, 60, 1}));
        EXPECT_EQ(notes(header(format, 1) + days).back(), (Note{180 * kMinute, 17}));
    }
}

TEST(SongReader, filesWithoutASongAreRefused) {
    const std::string note = track(at(0, {0x90, 60, 1}));
    for (const std::string& bytes :
         {std::string(), std::string(9, '\0'), note, header(0, 96), header(0, 0) + note, header(0, 0xE700) + note,
          header(0, 0xE001) + note, header(0, 96) + track(at(0, {0x90, 60, 0}) + at(0, {0x80, 60, 1}))})
        EXPECT_THROW(read(bytes), MusicError);
}

TEST(SongReader, largeRubbishStaysSmall) {
    const std::size_t size = 20U << 20;
    EXPECT_THROW(read(std::string(size, '\0')), MusicError);
    for (const char filling : {'\0', '\1'}) {
        const std::string rubbish = header(1, 96) + "MTrk" + big(0xFFFFFFFF, 4) + at(0, {0x90, 1, 1});
        EXPECT_LE(read(rubbish + std::string(size, filling)).events.size(), 1U << 20);
    }
    for (const unsigned format : {1U, 2U}) {
        std::string tracks = header(format, 96, 65535) + track(at(0, {0x90, 60, 1}));
        while (tracks.size() < size) tracks += track("") + chunk("MTrk", kEnd) + "MTrk";
        EXPECT_EQ(read(tracks).events.size(), 1U);
    }
}

TEST(SongReader, AChannelGoesByTheFirstTrackThatPlaysThere) {
    const auto named = [](const std::string& name, std::initializer_list<int> channels) {
        std::string events = at(0, raw({0xFF, 3, static_cast<int>(name.size())}) + name);
        for (const int channel : channels) events += at(0, {0x90 + channel, 60, 64});
        return track(events + at(9, kEnd));
    };
    const Song song = read(header(1, 96, 4) + named("Conductor", {}) + named("G\xE9nie\n", {3, 4}) +
                           named("Głos", {4, 5}) + named("", {6}));
    EXPECT_EQ(song.trackNames[3], "Génie");
    EXPECT_EQ(song.trackNames[4], "Génie");
    EXPECT_EQ(song.trackNames[5], "Głos");
    EXPECT_EQ(song.trackNames[6] + song.trackNames[0], "");
}

}  // namespace
}  // namespace melvane::music
