// The channels of a MIDI song, by a search for bytes: the song's structure is not looked at, so a byte that looks like
// a message counts wherever it stands. The user-interface thread.
#pragma once

#include <string>

#include "state/midi_state.h"
#include "state/run_state.h"

namespace melvane {

// Takes the file's bytes into midiBytes and reads the channels from them. `fileName` is UTF-8. A file that can't be
// read leaves all channels unused. Pending window events run once for each channel.
void ReadFile(const std::string& fileName, MidiState& state, const DoEvents& doEvents);

// The same from the bytes in midiBytes. An unused channel keeps its instrument, volume and balance; a message whose
// data byte lies behind the end is none.
void readChannels(MidiState& state, const DoEvents& doEvents);

}  // namespace melvane
