// One mix from the mix button to the finished MP3: both sources play together, the card's mix is captured and
// encoded while they do, and the run ends with the background.
#pragma once

#include <memory>

#include "audio/Module1.h"
#include "audio/recording_input.h"
#include "mixing/environment.h"
#include "mixing/kept_pass.h"
#include "mixing/mix_graph.h"
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
    // The same, and leaves nothing of it: what stands at the destination stays as it was.
    void cancel();
    // Follows the run and ends it with the background, or when the encoder has gone.
    void Timer1_Timer();

    // From now on each run measures what it gives the encoder, and is brought to the loudness that RunState wants, on
    // the stepped clock: `goOn` is told how far the measuring for that is, and tells whether the run is still wanted.
    void measure(MeasuringProgress goOn);
    // What sounds in it.
    MixGraph& graph() { return graph_; }

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
    void start();
    bool openSources();
    bool prepareDestination();
    bool playSong();
    bool bringToLoudness();
    void startCapture();
    // Puts the finished file in its place, or beside a destination that holds more.
    RunFailure publish(std::int64_t frames);
    bool standsLonger(std::int64_t frames);
    void writeTags();
    int prepend(const std::string& tag);
    bool hasEncoder();
    bool usesFile(const std::string& path);
    bool backgroundEnded() const;
    // Puts the failure down and shows it in a box.
    bool refuse(RunFailure failure, BoxIcon icon);

    const Environment with_;
    RunState& run_;
    const PathFields& fields_;
    const TagChoice& tags_;
    RecordingInput& input_;
    const MidiBackground& midi_;
    MixGraph graph_;
    Module1 capture_;
    MeasuringProgress measuring_;               // none: nothing is measured
    std::unique_ptr<Destination> destination_;  // of the run
    std::int64_t framesTotal_ = 0;
    std::int64_t framesAtEnd_ = 0;
    bool busy_ = false;
    bool opening_ = false;
    bool stopping_ = false;
    bool abandoned_ = false;     // stopped before it began
    bool stoppedEarly_ = false;  // and before the song ended
    bool cancelled_ = false;
};

}  // namespace melvane
