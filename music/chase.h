// What a song has set by a place in its middle, so that it can begin there.
#pragma once

#include <array>
#include <vector>

#include "music/midi_sink.h"
#include "platform/midi_messages.h"

namespace melvane::music {

// Takes the messages before that place. Of a controller or a bend only the last one counts; those that work together
// (banks with programs, registered parameters with their data) and system exclusive ones are all kept in their order.
class Chase : public MidiSink {
public:
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

    // Sends the settings, and strikes again what sounds: keys that are down or held by the pedal.
    void tell(MidiSink& sink, std::int64_t frame) const;

private:
    struct Message {
        std::uint8_t status, data1, data2;
        std::vector<std::uint8_t> sysex;
    };
    struct Note {
        int channel;
        std::uint8_t key, velocity;
        bool down;  // or held by the pedal
    };

    void strike(int channel, std::uint8_t key, std::uint8_t velocity);
    void release(int channel, std::uint8_t key);
    void control(int channel, std::uint8_t controller, std::uint8_t value);
    void pedalUp(int channel);
    void keep(std::uint8_t status, std::uint8_t data1, std::uint8_t data2);

    std::vector<Message> messages_;  // in order of time
    std::vector<Note> notes_;
    std::array<bool, kMidiChannels> pedals_{};
};

}  // namespace melvane::music
