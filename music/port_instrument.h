// A song on a MIDI port of the machine: on the card it is silence that keeps the time.
#pragma once

#include <memory>

#include "music/instrument.h"
#include "music/midi_port.h"

namespace melvane::music {

// A thread of its own sends each message when the card plays its frame. Nothing here waits for the port: where it has
// stopped answering, messages are dropped.
class PortInstrument final : public Instrument {
public:
    // Until it begins, messages are due at once.
    explicit PortInstrument(std::unique_ptr<MidiPort> port);
    // Takes over the port of `before`, which sends nothing any more, for a play of its own. `secondsAhead` is the
    // card's latency, from the mixing of a frame to its hearing while the card's buffers are full; where they are empty
    // at first that is seen from the speed at which they are filled.
    PortInstrument(const PortInstrument& before, double secondsAhead);
    // Waits until that has happened, 200 ms at most.
    ~PortInstrument() override;

    // Any thread: forgets what isn't due yet, ends the notes that sound and resets pedals and sound on all channels.
    // What is still rendered sends nothing any more.
    void stop();

    // Any thread: once what was mixed has been heard, what sounds ends; it is struck again when more is mixed behind
    // the pause.
    void pause(bool paused);

    // Any thread: takes every channel back to how a device is without a song, before the first message of this play.
    void reset();

    void begin(std::int64_t frame) override;
    void render(float* out) override;
    // What an instrument outside does is unknown.
    bool silent() const override { return false; }
    bool outside() const override { return true; }
    void send(std::int64_t frame, std::uint8_t status, std::uint8_t data1, std::uint8_t data2) override;
    void sendSysex(std::int64_t frame, std::span<const std::uint8_t> message) override;

private:
    struct Sender;
    const std::shared_ptr<Sender> sender_;  // outlives this where the port hangs
};

}  // namespace melvane::music
