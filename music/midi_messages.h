// The messages of MIDI 1.0 by name.
#pragma once

#include <cstdint>
#include <span>

#include "platform/music_performance.h"

namespace melvane::music {

inline constexpr int kChannels = 16;
inline constexpr int kPercussion = 9;  // the channel

// Status bytes, the channel in the low four bits. The interface names kControlChange.
inline constexpr std::uint8_t kNoteOff = 0x80;
inline constexpr std::uint8_t kNoteOn = 0x90;
inline constexpr std::uint8_t kKeyPressure = 0xA0;
inline constexpr std::uint8_t kProgramChange = 0xC0;
inline constexpr std::uint8_t kChannelPressure = 0xD0;
inline constexpr std::uint8_t kPitchBend = 0xE0;
inline constexpr std::uint8_t kSystemExclusive = 0xF0;

// Behind the programs 0..127: the drums, on a channel of the synthesiser other than theirs.
inline constexpr std::uint8_t kPercussionKit = 128;

// Controllers beside those that the interface names.
inline constexpr std::uint8_t kBankHigh = 0;
inline constexpr std::uint8_t kFine = 32;  // added to a controller: the low seven bits of it
inline constexpr std::uint8_t kBankLow = kBankHigh + kFine;
inline constexpr std::uint8_t kSustain = 64;
inline constexpr std::uint8_t kSostenuto = 66;
inline constexpr std::uint8_t kAllSoundOff = 120;
inline constexpr std::uint8_t kResetControllers = 121;
inline constexpr std::uint8_t kAllNotesOff = 123;  // and those behind it, which change the mode

inline bool isBankSelect(std::uint8_t controller) {
    return controller == kBankHigh || controller == kBankLow;
}

// Whether a system exclusive message is the universal one that sets the volume of a whole device.
inline bool isMasterVolume(std::span<const std::uint8_t> message) {
    return message.size() == 8 && message[1] == 0x7F && message[3] == 0x04 && message[4] == 0x01;
}

// Whether a system exclusive message turns General MIDI on or off, or resets a device of the GS or XG family.
inline bool isReset(std::span<const std::uint8_t> message) {
    const auto holds = [&](std::size_t at, std::uint8_t value) { return at < message.size() && message[at] == value; };
    const bool gm = holds(1, 0x7E) && holds(3, 0x09);
    const bool gs = holds(1, 0x41) && holds(3, 0x42) && holds(4, 0x12) && holds(6, 0x00) && holds(7, 0x7F);
    const bool xg =
        holds(1, 0x43) && holds(3, 0x4C) && holds(4, 0x00) && holds(5, 0x00) && (holds(6, 0x7E) || holds(6, 0x7F));
    return gm || gs || xg;
}

}  // namespace melvane::music
