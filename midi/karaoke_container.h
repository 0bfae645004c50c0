// Karaoke files that carry a MIDI song and, behind it, a block of text with settings for its channels:
//
//     song bytes | "#VEXMidi" | lines that end with CR LF | "#End VEXMidi" | anything
//
// The last marker of each kind counts. Line: two characters, two digits of the channel 0..15, one character, then five
// numbers with commas between them: on (1), tone, volume, balance, instrument.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "midi/channel_settings.h"
#include "platform/file_names.h"
#include "state/midi_state.h"

namespace melvane {

// Views into the bytes that were taken apart.
struct KaraokeContainer {
    std::string_view song;
    std::string_view settings;  // from the start marker up to the end marker
};

// None where a marker is missing. Throws InvalidArgumentError when the end marker comes first.
std::optional<KaraokeContainer> splitContainer(std::string_view bytes);

// The file to play (UTF-8): the temporary one with the song that was cut out, or `fileName` itself when it is no
// container. Sets midiSettingsBlock. Throws FileError when the file can't be read or the song can't be written, and as
// splitContainer.
std::string ExtractMidi(const std::string& fileName, MidiState& state, const FileNames& names);

// Hands the lines of a block, with both its markers, to SetSingleChannel, all but those of the percussion channel, and
// the tone of each to `setTone`. Ends silently at the first line that is wrong.
void ReadMidi(std::string_view block, MidiState& state, MidiChannels& channels,
              const std::function<void(double)>& setTone);

}  // namespace melvane
