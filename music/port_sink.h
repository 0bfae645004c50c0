// Plays messages on a MIDI port at the times at which the card plays their frames.
#pragma once

#include <memory>

#include "music/midi_port.h"
#include "music/midi_sink.h"

namespace melvane::music {

// A thread of its own sends each message when it is due. Nothing here waits for the port: where it has stopped
// answering, messages are dropped.
class PortSink : public MidiSink {
public:
    explicit PortSink(std::unique_ptr<MidiPort> port);
    ~PortSink() override;
    PortSink(const PortSink&) = delete;
    PortSink& operator=(const PortSink&) = delete;

    // Mixing thread: frame 0 is about to be mixed. `secondsAhead` is the card's latency, from the mixing of a frame
    // to its hearing while the card's buffers are full; where they are empty at first that is seen from the speed at
    // which they are filled.
    void begin(double secondsAhead);
    // Mixing thread, after each block: the frames before `frame` have been mixed.
    void mixedUpTo(std::int64_t frame);
    // Mixing thread. Until the first begin messages are due at once.
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

    // Any other thread, when no more is sent: forgets what isn't due yet, ends the notes that sound and resets pedals
    // and sound on all channels. Has happened at its return, unless that takes longer than 200 ms.
    void allNotesOff();

private:
    struct Sender;
    const std::shared_ptr<Sender> sender_;  // outlives this where the port hangs
};

}  // namespace melvane::music
