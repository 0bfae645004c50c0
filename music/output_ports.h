// The MIDI output ports of the machine.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "music/port_sink.h"

namespace melvane::music {

// Any thread. The machine is asked anew each time; a server that doesn't answer within a second counts as none, and
// none is ever started.
class OutputPorts {
public:
    // Each is different from the others.
    std::vector<std::string> descriptions() const;
    // nullptr when the port has gone.
    std::unique_ptr<PortSink> open(const std::string& description) const;
};

}  // namespace melvane::music
