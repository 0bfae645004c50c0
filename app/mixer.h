// The program without its windows: the state of a mix and the operations on it. One of these lives as long as
// the program. All of it is used on one thread, the user interface's.
#pragma once

#include "app/main_sliders.h"
#include "app/source_files.h"
#include "audio/recording_input.h"
#include "effects/effect_chain.h"
#include "loudness/level_search.h"
#include "midi/midi_background.h"
#include "mixing/environment.h"
#include "mixing/mixing_run.h"
#include "rehearsal/rehearsal.h"
#include "settings/settings_store.h"
#include "state/mix_state.h"

namespace melvane {

class Mixer {
public:
    explicit Mixer(const Environment& environment);

    // Remembers the user's recording input; with a store, takes the settings from it.
    void Form_Load(const SettingsStore* store);
    // Ends a run and closes the song.
    void Form_Unload();

    // The levels with which song and voice fit each other, on the stepped clock: see melvane::findLevels.
    std::optional<LevelMatch> findLevels(const MeasuringProgress& goOn);
    // Sets them, live.
    void setLevels(const Levels& levels);

    // A run is under way, or begins or ends.
    bool isRunning() const { return state_.run.isMixing || mixingRun_.busy(); }

    RunState& run() { return state_.run; }
    PathFields& fields() { return state_.fields; }
    Settings& settings() { return state_.settings; }
    TagChoice& tags() { return state_.tags; }
    SourceFiles& sourceFiles() { return sourceFiles_; }
    MidiBackground& midi() { return midi_; }
    const RecordingInput& input() const { return input_; }
    EffectChain& effects() { return effects_; }
    MixingRun& mixingRun() { return mixingRun_; }
    Rehearsal& rehearsal() { return rehearsal_; }
    MainSliders& sliders() { return sliders_; }
    const MixState& state() const { return state_; }

private:
    AudioLibrary& library_;
    MixState state_;
    RecordingInput input_;
    MidiBackground midi_;
    SourceFiles sourceFiles_;
    EffectChain effects_;
    MixingRun mixingRun_;
    Rehearsal rehearsal_;
    MainSliders sliders_;
};

}  // namespace melvane
