// The command line of melvane-mix.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace melvane {

struct MixOptions {
    std::string background;
    std::string vocal;
    std::string destination;
    std::array<std::int16_t, 2> volume{100, 100};  // background, vocal; percent
    bool overwrite = false;
    bool quiet = false;
    bool json = false;
    bool help = false;
    bool version = false;
};

// What is wrong with a command line, in one line.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// `arguments` without the program's name. Options may stand anywhere before "--". Throws UsageError.
MixOptions parseOptions(std::span<const char* const> arguments);

// The text behind --help.
std::string usageText();

}  // namespace melvane
