// The command line of melvane-mix.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/command_help.h"
#include "midi/midi_background.h"
#include "state/settings.h"
#include "state/tag_choice.h"
#include "state/voice_place.h"

namespace melvane {

struct MixOptions {
    std::string background;  // this and the next two: "" where the job tells
    std::string vocal;
    std::string destination;
    std::string job;            // a document that the others change; "": none
    std::optional<double> key;  // semitones, -5..5
    struct Sync {
        float offset = 0;  // seconds, -0.6..0.6
        VoicePlace place;
    };
    std::optional<Sync> sync;
    std::optional<double> trim;      // of the vocal, dB, -24..24
    std::optional<double> loudness;  // LUFS of the mix, -40..-5
    bool matchesLevels = false;
    bool findsPlace = false;  // of the voice, for the mix
    bool findSync = false;    // and only tells it
    // What the other options change in the settings, in their order.
    std::vector<std::function<void(Settings&)>> changes;
    // What they change on the channels of a MIDI background.
    std::vector<std::function<void(MidiBackground&)>> channelChanges;
    std::string soundFont;  // "": the best that is installed
    TagChoice tags;         // what is set in it wins over the job's
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

// What the program tells of its command line.
CommandHelp toolHelp();

}  // namespace melvane
