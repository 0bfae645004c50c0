// What the mixing run and everything around it share. Zero, false and empty at the start of the program.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/audio_library.h"
#include "state/loudness.h"
#include "state/tag_choice.h"
#include "state/voice_place.h"

namespace melvane {

using DoEvents = std::function<void()>;  // lets pending window events run once

// Why a run did not begin or did not end well.
enum class RunFailure {
    none,
    pathsMissing,
    destinationIsSource,
    destinationNotWritable,
    destinationExists,
    destinationBusy,
    backgroundUnreadable,
    vocalUnreadable,
    backgroundLost,  // it could no longer be read
    vocalLost,
    midiUnplayable,
    noThread,  // the system gives no more
    captureNotStarted,
    encoderNotStarted,  // there is none
    encoderNotRun,      // it could not be started
    encoderFailed,
    mixNotKept,  // there is no room for what is to be measured
};

// The three path fields of the main window; UTF-8, empty when nothing was chosen.
struct PathFields {
    std::string background;
    std::string vocal;
    std::string destination;

    bool operator==(const PathFields&) const = default;
};

struct RunState {
    std::string backgroundPath;
    std::string vocalPath;
    std::string destinationPath;
    std::string encodePath;  // what the encoder writes: a private file until the mix is complete
    std::string encoderCommandLine;
    std::string lastMixPath;           // what the last run produced, when it ended well
    std::string listenPath;            // the last that can be played, also after a run that failed or was refused
    std::string partPath;              // where the last run put what it had, beside a destination that stays as it was
    std::optional<Loudness> loudness;  // of what the last run produced, once it was measured
    std::optional<float> targetLoudness;  // LUFS that an unheard mix is brought to
    bool missesTarget = false;            // the last one could not be, without too much of the limiter
    bool isMidiBackground = false;
    bool mayReplace = true;  // a file that stands at the destination
    bool isMixing = false;
    bool isRehearsing = false;    // what a run would play is heard, and not recorded
    bool recordsSilence = false;  // no recording input could be switched on for the run
    std::uint32_t backgroundChannel = 0;
    std::uint32_t vocalChannel = 0;
    std::uint32_t recordChannel = 0;
    std::uint32_t lastMixStream = 0;  // playback stream over the finished file
    double key = 0;                   // semitones, -5..5
    float syncOffset = 0;             // seconds, -0.6..0.6; positive: the vocal is earlier
    VoicePlace voicePlace;
    float voiceTrim = 0;                               // dB, -24..24: how much louder the vocal goes into its effects
    bool voiceOutsideSong = false;                     // there is nothing of it to be heard, of the last that was open
    std::int32_t savedInput = 0;                       // recording input that was on when the program started
    std::int32_t savedLevel = 0;                       // its level, 0..100
    RunFailure failure = RunFailure::none;             // of the last run
    int cause = 0;                                     // error number (<cerrno>) behind it; 0: none is known
    DecodingFailure decoding = DecodingFailure::none;  // the cause where a file could not be decoded
    TagFault tagFault = TagFault::none;                // what the last mix lacks of its tags
    int tagCause = 0;                                  // as `cause`, of tags that were not written

    // What the user moves is heard at once.
    bool sounds() const { return isMixing || isRehearsing; }
};

}  // namespace melvane
