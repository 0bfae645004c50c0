// Finds where a voice belongs in its song: reads both files beside the card and lines them up.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "alignment/imprint.h"
#include "platform/audio_library.h"
#include "platform/music_performance.h"
#include "state/voice_place.h"

namespace melvane {

struct VoiceSearch {
    // The imprint of a file that is read elsewhere, once it is; nullptr where it has to be read for the search.
    using ImprintOf = std::function<std::shared_ptr<const Trace>(const std::function<bool(double done)>& goOn)>;

    std::string song;                   // a sound file, or
    bool isMidi = false;                // a MIDI song,
    MusicPerformance::SongReader midi;  // as it will sound; none where it can't be played
    std::string voice;                  // a sound file
    double key = 0;                     // semitones by which the singer may have heard the song shifted
    ImprintOf songImprint = {};
    ImprintOf voiceImprint = {};
};

enum class SearchEnd { found, songUnreadable, voiceUnreadable, noTrace, givenUp };

struct VoiceFound {
    SearchEnd end = SearchEnd::noTrace;
    // The moment of the recording at which the song begins, in seconds of the song's time from the recording's
    // beginning: by so much the voice has to come earlier, once its clock is put right.
    double sync = 0;
    double driftPpm = 0;                               // by how much the recording is longer than it should be
    double certainty = 0;                              // 0..1
    int cause = 0;                                     // of what is unreadable: see readingError,
    DecodingFailure decoding = DecodingFailure::none;  // or else this

    VoicePlace place() const;
};

// Waits until it is done; any thread. `goOn` is told how much is done, 0..1, and tells whether it is still wanted.
// The library outlives the call.
VoiceFound findVoice(AudioLibrary& library, const VoiceSearch& search, const std::function<bool(double done)>& goOn);

}  // namespace melvane
