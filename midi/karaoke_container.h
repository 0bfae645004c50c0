// Karaoke files that carry a MIDI song and, behind it, a block of text with settings for its channels:
//
//     song bytes | "#VEXMidi" | lines that end with CR LF | "#End VEXMidi" | anything
//
// The last marker of each kind counts. Line: two characters, two digits of the channel 0..15, one character, then five
// numbers with commas between them: on (1), tone, volume, balance, instrument.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace melvane {

// Views into the bytes that were taken apart.
struct KaraokeContainer {
    std::string_view song;
    std::string_view settings;  // from the start marker up to the end marker
};

// None where a marker is missing. Throws InvalidArgumentError when the end marker comes first.
std::optional<KaraokeContainer> splitContainer(std::string_view bytes);

// What a line says.
struct StoredChannel {
    std::int16_t channel;
    bool on;
    double tone;
    std::int16_t volume;
    std::int16_t balance;
    std::int16_t instrument;
};

// Hands the lines of a block, with both its markers, to `take`. Throws at the first one that is wrong.
void readStoredChannels(std::string_view block, const std::function<void(const StoredChannel&)>& take);

}  // namespace melvane
