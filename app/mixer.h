// The program without its windows: the state of a mix and the operations on it. One of these lives as long as
// the program. All of it is used on one thread, the user interface's.
#pragma once

#include "app/main_sliders.h"
#include "app/midi_background.h"
#include "app/mixing_run.h"
#include "app/source_files.h"
#include "audio/recording_input.h"
#include "effects/effect_chain.h"
#include "platform/shell.h"
#include "settings/settings_store.h"

namespace melvane {

// What the mixer works with; everything outlives it.
struct Environment {
    AudioLibrary& library;
    MusicSystem& music;
    SystemMixer& systemMixer;
    const FileNames& names;
    Dialogs& dialogs;
    Shell& shell;
    modLang& language;
    DoEvents doEvents;
};

class Mixer {
public:
    explicit Mixer(const Environment& environment);

    // Remembers the user's recording input; with a store, takes the settings from it.
    void Form_Load(const SettingsStore* store);
    // Ends a run and closes the song.
    void Form_Unload();

    RunState& run() { return run_; }
    PathFields& fields() { return fields_; }
    Settings& settings() { return settings_; }
    SourceFiles& sourceFiles() { return sourceFiles_; }
    MidiBackground& midi() { return midi_; }
    EffectChain& effects() { return effects_; }
    MixingRun& mixingRun() { return mixingRun_; }
    MainSliders& sliders() { return sliders_; }

private:
    RunState run_;
    PathFields fields_;
    Settings settings_;
    RecordingInput input_;
    MidiBackground midi_;
    SourceFiles sourceFiles_;
    EffectChain effects_;
    MixingRun mixingRun_;
    MainSliders sliders_;
};

}  // namespace melvane
