// Devices are stored under their numbers, which change when others come and go: within a session the name counts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace melvane {

struct KnownDevice {
    std::int32_t number = -1;  // that it was chosen or found under last
    std::string name;          // UTF-8; empty: not known yet

    // Never stored: settings are the same whatever is known of their devices.
    bool operator==(const KnownDevice&) const { return true; }
};

// Makes `number` the one of the known device among `names`, those of the numbers from 0 on. A number that is not
// the known device's stands for another choice, whose name is taken. False when the device has gone.
template <typename Number>
bool followDevice(KnownDevice& known, Number& number, const std::vector<std::string>& names) {
    const bool there = number >= 0 && std::cmp_less(number, names.size());
    if (number != known.number || known.name.empty()) {
        known = {number, there ? names[static_cast<std::size_t>(number)] : std::string()};
        return true;
    }
    if (there && names[static_cast<std::size_t>(number)] == known.name) return true;
    const auto found = std::ranges::find(names, known.name);
    if (found == names.end()) return false;
    number = static_cast<Number>(found - names.begin());
    known.number = number;
    return true;
}

}  // namespace melvane
