#include "tools/options.h"

#include <charconv>
#include <functional>
#include <string_view>
#include <vector>

#include "state/numbers.h"

namespace melvane {

namespace {

struct Option {
    std::string_view name;
    std::string_view value;  // what the value is called; empty: the option takes none
    std::string_view help;
    void (*take)(MixOptions&, const std::string& value);
};

// `count` whole numbers from `low` to `high`, joined by commas.
template <std::size_t count>
std::array<std::int16_t, count> numbers(std::string_view option, const std::string& text, int low, int high) {
    const std::vector<std::string> fields = split(text, ',');
    std::array<std::int16_t, count> values{};
    bool good = fields.size() == count;
    for (std::size_t i = 0; good && i < count; ++i) {
        const char* end = fields[i].data() + fields[i].size();
        const auto read = std::from_chars(fields[i].data(), end, values[i]);
        good = read.ec == std::errc() && read.ptr == end && values[i] >= low && values[i] <= high;
    }
    if (!good)
        throw UsageError(std::string(option) + " takes " + std::to_string(count) + " whole numbers from " +
                         std::to_string(low) + " to " + std::to_string(high) + ", joined by commas");
    return values;
}

constexpr Option kOptions[] = {
    {"--volume", "B,V", "volume of background and vocal, 0 to 100 each (100,100)",
     [](MixOptions& o, const std::string& value) { o.volume = numbers<2>("--volume", value, 0, 100); }},
    {"--overwrite", "", "replace an existing DESTINATION",
     [](MixOptions& o, const std::string&) { o.overwrite = true; }},
    {"--quiet", "", "no progress", [](MixOptions& o, const std::string&) { o.quiet = true; }},
    {"--json", "", "progress and result as JSON lines on standard output",
     [](MixOptions& o, const std::string&) { o.json = true; }},
    {"--help", "", "show this text", [](MixOptions& o, const std::string&) { o.help = true; }},
    {"--version", "", "show the version", [](MixOptions& o, const std::string&) { o.version = true; }},
};

const Option& findOption(std::string_view name) {
    for (const Option& option : kOptions)
        if (option.name == name) return option;
    throw UsageError("unknown option " + std::string(name));
}

}  // namespace

MixOptions parseOptions(std::span<const char* const> arguments) {
    MixOptions options;
    std::vector<std::string> paths;
    bool onlyPaths = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string argument = arguments[i];
        if (onlyPaths || !argument.starts_with("-") || argument == "-") {
            paths.push_back(argument);
        } else if (argument == "--") {
            onlyPaths = true;
        } else {
            const auto equals = argument.find('=');
            const Option& option = findOption(argument.substr(0, equals));
            const bool joined = equals != std::string::npos;
            if (joined && option.value.empty()) throw UsageError(std::string(option.name) + " takes no value");
            if (!joined && !option.value.empty() && ++i == arguments.size())
                throw UsageError(std::string(option.name) + " needs a value");
            option.take(options, joined ? argument.substr(equals + 1) : std::string(arguments[i]));
        }
    }
    if (options.help || options.version) return options;
    if (paths.size() != 3) throw UsageError("BACKGROUND, VOCAL and DESTINATION are needed");
    options.background = paths[0];
    options.vocal = paths[1];
    options.destination = paths[2];
    return options;
}

std::string usageText() {
    std::string text =
        "Usage: melvane-mix [options] BACKGROUND VOCAL DESTINATION\n"
        "Mixes a karaoke background and a vocal recording into one MP3 file.\n\n";
    for (const Option& option : kOptions) {
        std::string left = "  " + std::string(option.name) + " " + std::string(option.value);
        left.resize(20, ' ');
        text += left + std::string(option.help) + "\n";
    }
    text +=
        "\nNames that begin with a dash go behind --.\n"
        "Exit status: 0 done, 1 could not, 2 wrong usage, 130 or 143 interrupted (what was mixed is kept).\n";
    return text;
}

}  // namespace melvane
