// MIDI songs, bare or in a RIFF file, and what is sent when they play.
#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

#include "music/sequencer.h"
#include "platform/music_performance.h"
#include "tests/fuzz/door.h"

namespace {

using melvane::fuzz::require;

struct Listener : melvane::music::MidiSink {
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override {
        require(frame >= last && status >= 0x80 && status < 0xF0 && data1 < 0x80 && data2 < 0x80);
        last = frame;
    }
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override {
        require(frame >= last && message.size() > 2 && message.front() == 0xF0 && message.back() == 0xF7);
        require(std::all_of(message.begin() + 1, message.end() - 1, [](auto byte) { return byte < 0x80; }));
        last = frame;
    }
    std::int64_t last = 0;
};

}  // namespace

void melvane::fuzz::attack(std::string_view bytes) try {
    const auto song = std::make_shared<const music::Song>(
        music::readSong({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
    Listener listener;
    music::Sequencer player(song, 1, listener);
    player.begin({});
    player.playTo(song->endFrame + 1);
    require(player.finished() && listener.last <= song->endFrame);
    require(song->endFrame <= std::int64_t{3} * 60 * 60 * 44100);
} catch (const MusicError&) {
}
