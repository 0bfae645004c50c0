// The command line of melvane-mix, an argument a line.
#include <cmath>

#include "state/numbers.h"
#include "tests/fuzz/door.h"
#include "tools/options.h"

void melvane::fuzz::attack(std::string_view bytes) try {
    const auto lines = split(bytes, '\n');
    std::vector<const char*> arguments;
    for (const std::string& line : lines) arguments.push_back(line.c_str());
    const MixOptions options = parseOptions(arguments);
    require(std::abs(options.key.value_or(0)) <= 5 &&
            std::abs(options.sync.value_or(MixOptions::Sync{}).offset) <= 0.6F);
    Settings settings;
    for (const auto& change : options.changes) change(settings);
    requireUsable(settings);
} catch (const UsageError&) {
}
