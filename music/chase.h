// What a song has set by a place in its middle, so that it can begin there.
#pragma once

#include <vector>

#include "music/held_notes.h"
#include "music/midi_sink.h"

namespace melvane::music {

// Takes the messages before that place. Of a controller, a bend or a key's pressure only the last one counts; those
// that work together (banks with programs, registered parameters with their data) and system exclusive ones are all
// kept in their order.
class Chase : public MidiSink {
public:
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

    // Sends the settings, and strikes again what sounds: keys that are down or held by a pedal.
    void tell(MidiSink& sink, std::int64_t frame) const;

private:
    struct Message {
        std::uint8_t status, data1, data2;
        std::vector<std::uint8_t> sysex;
    };

    void keep(std::uint8_t status, std::uint8_t data1, std::uint8_t data2);

    std::vector<Message> messages_;  // in order of time
    HeldNotes notes_;
};

}  // namespace melvane::music
