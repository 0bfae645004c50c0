// Everything that a MIDI or karaoke file's bytes are given to.
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "midi/channel_reader.h"
#include "midi/channel_settings.h"
#include "midi/karaoke_container.h"
#include "music/song.h"
#include "platform/music_performance.h"
#include "state/errors.h"
#include "state/settings.h"

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
            require(event.status < 0xF0 || song.sysex.at(event.sysex).back() == 0xF7);
            last = event.frame;
        }
        require(song.endFrame >= last && song.endFrame <= std::int64_t{3} * 60 * 60 * 44100);
    } catch (const MusicError&) {
    }
}

void readKaraoke(const std::string& bytes) {
    MidiState state;
    state.midiBytes = bytes;
    readChannels(state, [] {});
    MidiDevice device;
    const Settings settings;
    MidiChannels channels(state, device, settings, [] {});
    ReadMidi(bytes, state, channels, [](double) {});
    channels.ApplyChannelSettings();
    try {
        if (const auto container = splitContainer(bytes))
            require(container->song.size() + container->settings.size() < bytes.size());
    } catch (const InvalidArgumentError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readNotes({data, size});
    readKaraoke(std::string(data, data + size));
    return 0;
}
