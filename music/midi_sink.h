// Where the sequencer's messages go: the synthesiser, or a MIDI port of the machine.
#pragma once

#include <cstdint>
#include <span>

namespace melvane::music {

// Mixing thread. `frame` is the message's place in the song, 44100 Hz from its beginning; calls come in order of time,
// up to a block ahead of it.
class MidiSink {
public:
    virtual ~MidiSink() = default;
    // A channel message, 0x80..0xEF; `data2` means nothing where the message has one data byte only.
    virtual void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) = 0;
    // A whole message from 0xF0 to 0xF7.
    virtual void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) = 0;
};

}  // namespace melvane::music
