// The channels of a MIDI song, by a search for bytes: the song's structure is not looked at, so a byte that looks like
// a message counts wherever it stands.
#pragma once

#include <string_view>

#include "state/midi_state.h"
#include "state/run_state.h"

namespace melvane {

// Fills both channel tables from the bytes of a song; pending window events run once for each channel. An unused
// channel keeps its instrument, volume and balance; a message whose data byte lies behind the end is none.
void readChannels(std::string_view bytes, MidiState& state, const DoEvents& doEvents);

}  // namespace melvane
