// The command line of melvane-mix.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "midi/midi_background.h"
#include "state/settings.h"
#include "state/voice_place.h"

namespace melvane {

struct MixOptions {
    std::string background;
    std::string vocal;
    std::string destination;
    double key = 0;        // semitones, -5..5
    float syncOffset = 0;  // seconds, -0.6..0.6
    VoicePlace voicePlace;
    bool findsPlace = false;  // of the voice, for the mix
    bool findSync = false;    // and only tells it
    // What the other options change in the settings, in their order.
    std::vector<std::function<void(Settings&)>> changes;
    // What they change on the channels of a MIDI background.
    std::vector<std::function<void(MidiBackground&)>> channelChanges;
    std::string soundFont;  // "": the best that is installed
    bool storedSettings = false;
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
