#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "music/midi_bytes.h"
#include "music/midi_messages.h"
#include "music/song.h"
#include "music/song_clock.h"
#include "music/song_text.h"
#include "music/track_reader.h"
#include "platform/audio_library.h"
#include "platform/music_performance.h"

namespace melvane::music {
namespace {

using Bytes = std::span<const std::uint8_t>;

// Damaged files neither fill the memory nor play for days.
constexpr std::size_t kMostEvents = std::size_t{1} << 20;
constexpr std::int64_t kLongestSong = std::int64_t{3 * 60 * 60} * kSampleRate;

constexpr std::string_view kHeaderName = "MThd";
constexpr std::string_view kTrackName = "MTrk";
constexpr std::size_t kChunkHeader = 8;

// Where `name` stands first; the end of `bytes` where it does not.
std::size_t find(Bytes bytes, std::string_view name) {
    return static_cast<std::size_t>(std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) - bytes.begin());
}

bool startsWith(Bytes bytes, std::string_view name) {
    return bytes.size() >= name.size() && std::equal(name.begin(), name.end(), bytes.begin());
}

// What the chunk at the front of `bytes` claims for its length; nothing where there is no chunk.
std::optional<std::size_t> chunkLength(Bytes bytes) {
    const auto printable = [](std::uint8_t c) { return c >= 0x20 && c < 0x7F; };
    if (bytes.size() < kChunkHeader || !std::all_of(bytes.begin(), bytes.begin() + 4, printable)) return {};
    return MidiBytes(bytes.subspan(4)).bigEndian(4);
}

// A length is believed where the chunk then ends as a track does, or where nothing or another chunk follows.
bool lengthHolds(Bytes content, std::size_t length) {
    constexpr std::array<std::uint8_t, 3> kEndOfTrack{0xFF, 0x2F, 0x00};
    if (length >= content.size()) return length == content.size();
    const Bytes behind = content.subspan(length);
    const auto next = chunkLength(behind);
    return startsWith(behind, kTrackName) || (next && *next <= behind.size() - kChunkHeader) ||
           (length >= kEndOfTrack.size() &&
            std::ranges::equal(content.first(length).last(kEndOfTrack.size()), kEndOfTrack));
}

// Takes the next chunk off `rest` and returns its content if it is a track. One with a wrong length goes up to the next
// track, as does what is no chunk at all.
std::optional<Bytes> takeChunk(Bytes& rest) {
    const auto claimed = chunkLength(rest);
    const bool track = claimed && startsWith(rest, kTrackName);
    const Bytes content = rest.subspan(claimed ? kChunkHeader : 1);
    const std::size_t length = claimed && lengthHolds(content, *claimed) ? *claimed : find(content, kTrackName);
    rest = content.subspan(length);
    return track ? std::optional(content.first(length)) : std::nullopt;
}

// Puts events that are counted from one beginning behind the song. False when the song ends among them.
bool append(std::vector<TrackEvent>& events, SongClock clock, Song& song) {
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) { return a.tick < b.tick; });
    const std::int64_t begin = song.endFrame;
    std::int64_t tick = 0;
    for (const TrackEvent& event : events) {
        if (!clock.advance(event.tick - tick) || begin + clock.frame() > kLongestSong) return false;
        tick = event.tick;
        song.endFrame = begin + clock.frame();
        if (event.kind == TrackEventKind::kTempo) clock.setTempo(event.value);
        if (event.kind == TrackEventKind::kChannel)
            song.events.push_back({song.endFrame, event.status, event.data1, event.data2});
        if (event.kind == TrackEventKind::kSysex)
            song.events.push_back({song.endFrame, kSystemExclusive, 0, 0, event.value});
    }
    return true;
}

// A channel goes by the name of the first track in the file that plays a note there.
void nameChannels(std::span<const TrackEvent> track, const std::string& name, Song& song) {
    for (const TrackEvent& event : track) {
        std::string& channel = song.trackNames[event.status & 0x0F];
        if ((event.status & 0xF0) == kNoteOn && event.data2 > 0 && channel.empty()) channel = toUtf8(name);
    }
}

bool isNote(const SongEvent& event) {
    return (event.status & 0xF0) == kNoteOn && event.data2 > 0;
}

}  // namespace

Song readSong(std::span<const std::uint8_t> file) {
    // The header may stand behind that of a RIFF file, or behind junk.
    Bytes rest = file.subspan(find(file, kHeaderName));
    MidiBytes header(rest);
    header.take(kChunkHeader);
    const std::uint32_t format = header.bigEndian(2);
    header.take(2);  // The number of tracks, which they tell better themselves.
    const auto division = static_cast<std::uint16_t>(header.bigEndian(2));
    if (header.overrun()) throw MusicError("The file holds no MIDI song.");

    const SongClock clock(division);
    Song song;
    std::vector<TrackEvent> events;
    bool goesOn = true;
    while (goesOn && !rest.empty() && song.events.size() < kMostEvents) {
        const auto track = takeChunk(rest);
        if (!track) continue;
        const std::size_t before = events.size();
        const std::string name = readTrack(*track, kMostEvents - song.events.size(), events, song.sysex);
        nameChannels(std::span(events).subspan(before), name, song);
        if (format != 2) continue;
        goesOn = append(events, clock, song);
        events.clear();
    }
    append(events, clock, song);
    if (std::none_of(song.events.begin(), song.events.end(), isNote)) throw MusicError("The MIDI file holds no note.");
    return song;
}

}  // namespace melvane::music
