// Everything that a MIDI or karaoke file's bytes are given to.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <span>
#include <string>

#include "midi/channel_reader.h"
#include "midi/karaoke_container.h"
#include "music/song.h"
#include "platform/music_performance.h"

namespace {

using namespace melvane;

void require(bool condition) {
    if (!condition) std::abort();
}

void readNotes(std::span<const std::uint8_t> bytes) {
    try {
        const music::Song song = music::readSong(bytes);
        std::int64_t last = 0;
        for (const music::SongEvent& event : song.events) {
            require(event.frame >= last && event.status >= 0x80 && event.status <= 0xF0);
            require(event.data1 < 0x80 && event.data2 < 0x80);
            require(event.status < 0xF0 || event.sysex < song.sysex.size());
            last = event.frame;
        }
        for (const auto& message : song.sysex) {
            require(message.size() > 2 && message.front() == 0xF0 && message.back() == 0xF7);
            require(std::all_of(message.begin() + 1, message.end() - 1, [](auto byte) { return byte < 0x80; }));
        }
        require(song.endFrame >= last && song.endFrame <= std::int64_t{3} * 60 * 60 * 44100);
    } catch (const MusicError&) {
    }
}

void readKaraoke(const std::string& bytes) {
    MidiState state;
    readChannels(bytes, state, [] {});
    try {
        if (const auto container = splitContainer(bytes))
            require(container->song.size() + container->settings.size() < bytes.size());
        readStoredChannels(bytes, [](const StoredChannel& stored) { require(!std::isnan(stored.tone)); });
    } catch (const std::exception&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readNotes({data, size});
    readKaraoke(std::string(data, data + size));
    return 0;
}
