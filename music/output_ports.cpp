#include "music/output_ports.h"

#include <algorithm>

#include "base/patience.h"
#include "platform/music_performance.h"

namespace melvane::music {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);

struct FoundPort {
    std::string description;
    MidiInterface from;
    std::size_t index;
};

std::string madeUnique(const std::string& name, const std::vector<FoundPort>& others) {
    std::string unique = name;
    const auto taken = [&unique](const FoundPort& other) { return other.description == unique; };
    for (int number = 2; std::ranges::any_of(others, taken); ++number)
        unique = name + " (" + std::to_string(number) + ")";
    return unique;
}

std::vector<FoundPort> findPorts() {
    std::vector<FoundPort> found;
    for (const MidiInterface from : {MidiInterface::kAlsa, MidiInterface::kJack}) {
        const auto names = withPatience(kPatience, [from] { return MidiPort::names(from); });
        if (!names) continue;
        for (std::size_t i = 0; i < names->size(); ++i) found.push_back({madeUnique((*names)[i], found), from, i});
    }
    return found;
}

}  // namespace

std::vector<std::string> OutputPorts::list() const {
    std::vector<std::string> descriptions{kSynthesizerPort};
    if (devices_)
        for (FoundPort& port : findPorts()) descriptions.push_back(std::move(port.description));
    return descriptions;
}

std::shared_ptr<PortInstrument> OutputPorts::open(const std::string& description) const {
    if (!devices_) return nullptr;
    const auto ports = findPorts();
    const auto wanted = std::ranges::find(ports, description, &FoundPort::description);
    if (wanted == ports.end()) return nullptr;
    auto port = withPatience(kPatience, [from = wanted->from, at = wanted->index] { return MidiPort::open(from, at); });
    return port && *port ? std::make_shared<PortInstrument>(std::move(*port)) : nullptr;
}

}  // namespace melvane::music
