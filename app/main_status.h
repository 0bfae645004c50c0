// What the status line of the main window says of a run, of the chosen files and of the settings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/fast_mix.h"
#include "app/mixer.h"
#include "mixing/environment.h"

namespace melvane {

struct StatusLine {
    std::string text;
    std::string brief = {};  // what is to be seen where there is little room; "": the text's beginning
    bool warned = false;
    bool failed = false;

    bool operator==(const StatusLine&) const = default;
};

// What is to be told of the last run, beside what the mixer knows of it.
struct RunReport {
    bool told = false;                     // nothing was chosen since it
    bool stopped = false;                  // it was ended with the stop button
    bool fast = false;                     // it was a fast mix
    bool cancelled = false;                // that left nothing
    std::optional<LevelMatch> levels;      // that were looked for instead of a mix
    bool lacksVoice = false;               // its place was outside of the song
    bool inRehearsal = false;              // it ended while the rehearsal played that still does
    std::vector<std::string> interrupted;  // mixes that were cut off before the program started

    void begin(bool fastMix) { *this = {.told = true, .fast = fastMix}; }
};

class MainStatus {
public:
    // What the mixer does not know.
    struct Facts {
        const RunReport& report;
        std::string linedUp;               // how far the voice is lined up, or that it is; ""
        std::int32_t settingsFailure = 0;  // SettingsStore::failure()
        const FastMix* fast = nullptr;     // that is going on
        bool songUnreadable = false;
        bool voiceUnreadable = false;
        std::string lostPort = {};  // of the run: gone since it began
        std::string lostInput = {};
    };

    // Both outlive this.
    MainStatus(Mixer& mixer, const Environment& environment) : mixer_(mixer), environment_(environment) {}

    StatusLine line(const Facts& facts) const;
    // That files are being opened, and how far that is.
    std::string opening() const;
    // How far another program has decoded the first of the files that it is at.
    std::optional<std::string> decoding() const;

private:
    // With the mix's loudness, once it was measured.
    StatusLine measured(StatusLine line) const;
    StatusLine about(OwnText text, const std::string& file, bool warned = false, bool failed = false) const;
    std::string fastProgress(const FastMix& mix) const;
    StatusLine broughtBack(const std::vector<std::string>& files) const;
    StatusLine ended(const Facts& facts) const;
    StatusLine result(const Facts& facts) const;
    StatusLine unreadable(OwnText text, const std::string& file) const;
    std::string openingShare(double share) const;
    // What is heard and recorded of the run under way.
    std::string sound(const Facts& facts) const;
    // What is to be known of the song's port; empty when there is nothing.
    std::string port() const;

    Mixer& mixer_;
    const Environment& environment_;
};

}  // namespace melvane
