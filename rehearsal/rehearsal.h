// Song and voice as a run would mix them, heard from any place and recorded nowhere. A state of its own: what the user
// moves is live, and a run that begins ends it.
//
// Used on the user-interface thread. Places are frames of the song, at 44100 Hz.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "midi/midi_background.h"
#include "mixing/environment.h"
#include "mixing/mix_graph.h"
#include "state/mix_state.h"

namespace melvane {

class Rehearsal {
public:
    // What is played over and over; none where `end` is not behind `begin`.
    struct Loop {
        std::int64_t begin = 0;
        std::int64_t end = 0;

        bool given() const { return end > begin; }
        bool operator==(const Loop&) const = default;
    };

    // Everything outlives it; `graph` is the run's.
    Rehearsal(const Environment& environment, MixState& state, MixGraph& graph, MidiBackground& midi);

    // There is something to be heard, and no run uses it.
    bool canPlay() const;
    bool playing() const { return run_.isRehearsing && !paused_; }
    // Files are being opened: window events run meanwhile, and no run may begin.
    bool busy() const { return busy_; }

    // Goes on from where it is; opens what was chosen when nothing is open, or what is is outdated. What fails is told
    // by message().
    void play();
    void pause();
    void playOrPause() { playing() ? pause() : play(); }
    // Back to the beginning, or to that of the loop, with everything closed.
    void stop();
    // Closes everything; the place stays.
    void end();

    void seek(std::int64_t frame);
    // From what is heard.
    void step(double seconds);
    // What plays behind its end goes back to its beginning.
    void setLoop(const Loop& loop);
    const Loop& loop() const { return loop_; }
    // Other files: nothing of it holds for them.
    void forget();

    // What is heard now; while nothing plays, where it goes on.
    std::int64_t position() const;
    // Of what is open; 0 before.
    std::int64_t length() const { return run_.isRehearsing ? graph_.length() : 0; }

    // Where the voice is, live. Its clock is put right when it is opened: until then what is open is outdated.
    void placeVoice(const VoicePlace& place);
    // How much louder it is before its effects, live: dB, to a tenth, -24..24.
    void trimVoice(float decibels);
    bool outdated() const { return run_.isRehearsing && !busy_ && clock_ != run_.voicePlace.driftPpm; }

    // Follows what plays: ends it with the song, or when a file could no longer be read.
    void Timer1_Timer();

    // Why the last one did not begin or did not end well, in the current language; "" when all is well.
    std::string message() const;
    // It plays, but nobody hears it: there is no device.
    bool unheard() const;

private:
    bool open();
    void start();
    void close();
    void keepFailure(RunFailure failure);
    std::int64_t latency() const;

    const Environment with_;
    RunState& run_;
    const PathFields& fields_;
    MixGraph& graph_;
    MidiBackground& midi_;
    RunState failed_;  // as it was then; its failure is none when all is well
    std::int64_t from_ = 0;
    Loop loop_;
    double clock_ = 0;  // of the voice, as it was opened
    bool paused_ = false;
    bool busy_ = false;
    bool abandoned_ = false;
};

}  // namespace melvane
