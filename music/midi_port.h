// One open output port of the machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace melvane::music {

// The interfaces of the machine that have MIDI ports.
enum class MidiInterface { kAlsa, kJack };

// Every function waits as long as the machine's server does, except send.
class MidiPort {
public:
    // The names of the ports, in the interface's order; none when it doesn't work.
    static std::vector<std::string> names(MidiInterface from);
    // nullptr when it can't be opened.
    static std::unique_ptr<MidiPort> open(MidiInterface from, std::size_t index);

    // One thread. Sends at once; drops the message when the server has stopped working.
    void send(std::span<const std::uint8_t> message);

private:
    struct Connection;
    struct JackConnections;
    struct Close {
        void operator()(Connection* connection) const;
    };
    using Owned = std::unique_ptr<Connection, Close>;

    static Owned connect(MidiInterface to);
    explicit MidiPort(Owned connection);

    Owned connection_;
};

}  // namespace melvane::music
