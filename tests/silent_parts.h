// What a test gives to the program instead of sound and a desktop.
#pragma once

#include <gtest/gtest.h>

#include "midi/midi_background.h"
#include "settings/modLang.h"
#include "state/mix_state.h"
#include "tests/fake_audio_library.h"
#include "tests/fake_music.h"
#include "tests/fake_platform.h"
#include "tests/temp_dir.h"

namespace melvane::test {

using Words = std::vector<std::string>;

struct SilentParts : testing::Test {
    TempDir dir;
    FakeAudioLibrary library;
    FakeMusic music;
    FakeSystemMixer systemMixer;
    FakeDialogs dialogs;
    FakeShell shell;
    FakeFileNames names;
    modLang language;

    SilentParts() { language.InitLanguage(FakeFileNames(), "en"); }
};

// With the rules of a MIDI song.
struct SilentMidi : SilentParts {
    MixState mix;
    RunState& run = mix.run;
    Settings& settings = mix.settings;
    std::function<void()> onEvents = [] {};
    MidiBackground midi{music, systemMixer, run, settings, names, dialogs, [this] { onEvents(); }};
    const MidiState& state = midi.state();

    // What was sent to the player since this was asked last.
    Words sent() { return std::exchange(music.calls, {}); }
    // What was sent meanwhile is forgotten.
    std::string open(std::string fileName) {
        midi.OpenMidi(fileName);
        sent();
        return fileName;
    }
};

}  // namespace melvane::test
