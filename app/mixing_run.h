// One mix from the mix button to the finished MP3: both sources play together, the card's mix is captured and
// encoded while they do, and the run ends with the background.
#pragma once

#include <memory>

#include "app/environment.h"
#include "audio/Module1.h"
#include "audio/recording_input.h"
#include "effects/effect_chain.h"
#include "midi/midi_background.h"
#include "state/mix_state.h"

namespace melvane {

class MixingRun {
public:
    // Everything outlives the run.
    MixingRun(const Environment& environment, MixState& state, RecordingInput& input, EffectChain& effects,
              MidiBackground& midi);

    // Starts a run. When it does not start, RunState::failure says why.
    void mi_button_Click();
    // Ends the run, if there is one, and waits for the encoder to finish while window events go on; ten seconds at
    // most, unless the run has come to its end. Called again meanwhile, it has the encoder hurry then too.
    void stopRec();
    // Follows the run and ends it with the background, or when the encoder has gone.
    void Timer1_Timer();

    // Sets the two source volumes on what plays.
    void SetBassVolume();
    // Moves the background's key, when there is a background channel or a MIDI song.
    void applyKey();
    // Moves the vocal by the synchronisation offset, when there is a vocal channel.
    void applySyncOffset();

    // How much of the background was mixed, in this run or the last one: 0 to 1.
    double done() const;
    // The same in frames, and the background's length.
    std::int64_t framesDone() const;
    std::int64_t framesTotal() const { return framesTotal_; }
    // True from the start of mi_button_Click or stopRec to its end: window events run meanwhile, and no other
    // run may begin.
    bool busy() const { return busy_; }
    // What of it is going on: song, voice, destination and inputs are being opened, which stopRec gives up, or the
    // encoder finishes its file.
    bool opening() const { return opening_; }
    bool finishing() const { return stopping_ && run_.isMixing; }

private:
    bool canRun();
    bool readPaths();
    void freeLastRun();
    void start();
    bool openSources();
    Handle openFile(const std::string& path, std::uint32_t flags);
    void freeChannel(std::uint32_t& channel);
    bool prepareDestination();
    bool playSong();
    void startCapture();
    // Puts the finished file in its place, or beside a destination that holds more.
    RunFailure publish(std::int64_t frames);
    bool standsLonger(std::int64_t frames);
    bool usesFile(const std::string& path) const;
    void applySettings();
    bool backgroundEnded() const;
    // Which of the sources could no longer be read.
    RunFailure lostSource() const;
    // Puts the failure down and shows it in a box.
    bool refuse(RunFailure failure, BoxIcon icon);

    const Environment with_;
    RunState& run_;
    const PathFields& fields_;
    const Settings& settings_;
    RecordingInput& input_;
    EffectChain& effects_;
    MidiBackground& midi_;
    Module1 capture_;
    std::unique_ptr<Destination> destination_;  // of the run
    std::int64_t framesTotal_ = 0;
    std::int64_t framesAtEnd_ = 0;
    bool busy_ = false;
    bool opening_ = false;
    bool stopping_ = false;
    bool abandoned_ = false;     // stopped before it began
    bool stoppedEarly_ = false;  // and before the song ended
};

}  // namespace melvane
