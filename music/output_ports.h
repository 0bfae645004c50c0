// The ports that a performance can play on: the built-in synthesiser and those of the machine.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "music/port_instrument.h"

namespace melvane::music {

// Any thread. The machine is asked anew each time; a server that doesn't answer within a second counts as none, and
// none is ever started.
class OutputPorts {
public:
    // Without `devices` the synthesiser is the only port.
    explicit OutputPorts(bool devices) : devices_(devices) {}

    // Descriptions, each different from the others; the first one is the synthesiser's.
    std::vector<std::string> list() const;
    // nullptr for the synthesiser, and for a port that has gone.
    std::shared_ptr<PortInstrument> open(const std::string& description) const;

private:
    bool devices_;
};

}  // namespace melvane::music
