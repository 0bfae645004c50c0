// Backgrounds that are MIDI songs: the song, its player, its channels, and the mixer lines that steer its sound.
#pragma once

#include <functional>
#include <string>

#include "audio/mod_Mixer.h"
#include "midi/channel_settings.h"
#include "midi/playback.h"
#include "state/midi_state.h"

namespace melvane {

class MidiBackground {
public:
    MidiBackground(MusicSystem& music, SystemMixer& systemMixer, RunState& run, Settings& settings,
                   const FileNames& names, Dialogs& dialogs, const DoEvents& doEvents);

    // At the start of the program: looks for the mixer lines and the MIDI ports.
    void prepare();
    // Loads a song; `fileName` is UTF-8.
    void open(std::string fileName);
    // Lets go of the song, whatever was loaded.
    void close();
    void applyVolumeAndBalance();
    // Bass and treble as the user wants them for a run, and as they are without one.
    void setTone();
    void restoreTone();

    MidiState state;
    mod_Mixer lines;
    MidiDevice device;
    MidiChannels channels;
    MidiPlayback playback;
};

}  // namespace melvane
