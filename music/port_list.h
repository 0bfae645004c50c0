// The ports that a performance can play on: the built-in synthesiser and those of the machine.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "music/output_ports.h"

namespace melvane::music {

class PortList {
public:
    // Without `devicePorts` the synthesiser is the only port.
    explicit PortList(bool devicePorts) : devicePorts_(devicePorts) {}

    // Asks the machine anew.
    void refresh() {
        descriptions_ = {"Melvane synthesizer"};
        if (!devicePorts_) return;
        for (std::string& name : ports_.descriptions()) descriptions_.push_back(std::move(name));
    }
    // As found by the last refresh; the first one is the synthesiser.
    const std::vector<std::string>& descriptions() const { return descriptions_; }
    // nullptr for the synthesiser, and for a port that has gone.
    std::unique_ptr<PortSink> open(std::size_t index) const {
        return index > 0 && index < descriptions_.size() ? ports_.open(descriptions_[index]) : nullptr;
    }

private:
    const bool devicePorts_;
    OutputPorts ports_;
    std::vector<std::string> descriptions_;
};

}  // namespace melvane::music
