// One mix from the mix button to the finished MP3: both sources play together, the card's mix is captured and
// encoded while they do, and the run ends with the background.
#pragma once

#include "app/midi_background.h"
#include "audio/Module1.h"
#include "audio/recording_input.h"
#include "effects/effect_chain.h"
#include "platform/audio_library.h"
#include "platform/dialogs.h"
#include "platform/file_names.h"
#include "settings/modLang.h"
#include "state/run_state.h"
#include "state/settings.h"

namespace melvane {

// What a run works with; everything outlives it.
struct MixingParts {
    AudioLibrary& library;
    RunState& run;
    const PathFields& fields;
    const Settings& settings;
    RecordingInput& input;
    EffectChain& effects;
    MidiBackground& midi;
    const modLang& language;
    Dialogs& dialogs;
    const FileNames& names;
    DoEvents doEvents;
};

class MixingRun {
public:
    static constexpr int kProgressWidth = 176;  // pixels of the progress bar

    explicit MixingRun(const MixingParts& parts);

    // Starts a run. When it does not start, RunState::failure says why.
    void mi_button_Click();
    // Ends the run, if there is one, and waits for the encoder to finish while window events go on.
    void stopRec();
    // Follows the run and ends it with the background, or when the encoder has gone.
    void Timer1_Timer();

    // Sets the two source volumes on what plays.
    void SetBassVolume();
    // Moves the background's key, when there is a background channel or a MIDI song.
    void applyKey();
    // Moves the vocal by the synchronisation offset, when there is a vocal channel.
    void applySyncOffset();

    // 0..176.
    int progressWidth() const { return progressWidth_; }
    // Frames of the background that were mixed, and its length.
    std::int64_t framesDone() const;
    std::int64_t framesTotal() const { return framesTotal_; }
    // True from the start of mi_button_Click or stopRec to its end: window events run meanwhile, and no other
    // run may begin.
    bool busy() const { return busy_; }

private:
    void start();
    bool readPaths();
    bool canRun();
    void freeBackground();
    void midiFailed();
    bool backgroundEnded() const;
    bool openSources();
    Handle openFile(const std::string& path, std::uint32_t flags);
    void freeChannel(std::uint32_t& channel);
    void endWith(RunFailure failure);
    bool prepareDestination();
    void applySettings();

    const MixingParts with_;
    AudioLibrary& library_;
    RunState& run_;
    MidiBackground& midi_;
    Module1 capture_;
    int progressWidth_ = 0;
    std::int64_t framesTotal_ = 0;
    std::int64_t framesAtEnd_ = 0;
    bool busy_ = false;
    bool stopping_ = false;
    bool abandoned_ = false;  // stopped before it began
};

}  // namespace melvane
