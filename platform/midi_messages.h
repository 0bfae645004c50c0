// The messages of MIDI 1.0 by name.
#pragma once

#include <cstdint>

namespace melvane {

// Channels count from 0.
inline constexpr std::int16_t kMidiChannels = 16;
inline constexpr std::int16_t kPercussionChannel = 9;

// Stands behind the programs 0..127: the drums, on a channel other than theirs.
inline constexpr std::uint8_t kPercussionInstrument = 128;

// Status bytes, the channel in the low four bits.
inline constexpr std::uint8_t kNoteOff = 0x80;
inline constexpr std::uint8_t kNoteOn = 0x90;
inline constexpr std::uint8_t kKeyPressure = 0xA0;
inline constexpr std::uint8_t kControlChange = 0xB0;
inline constexpr std::uint8_t kProgramChange = 0xC0;
inline constexpr std::uint8_t kChannelPressure = 0xD0;
inline constexpr std::uint8_t kPitchBend = 0xE0;
// Without a channel; the end of the message.
inline constexpr std::uint8_t kSystemExclusive = 0xF0;
inline constexpr std::uint8_t kExclusiveEnd = 0xF7;

// Controllers.
inline constexpr std::uint8_t kBankHigh = 0;
inline constexpr std::uint8_t kVolumeController = 7;
inline constexpr std::uint8_t kBalanceController = 10;
inline constexpr std::uint8_t kExpression = 11;
inline constexpr std::uint8_t kFine = 32;  // added to a controller: the low seven bits of it
inline constexpr std::uint8_t kBankLow = kBankHigh + kFine;
inline constexpr std::uint8_t kDataEntry = 6;
inline constexpr std::uint8_t kDataIncrement = 96;
inline constexpr std::uint8_t kParameterLow = 100;  // of the registered parameter that data entry sets
inline constexpr std::uint8_t kParameterHigh = 101;
inline constexpr std::uint8_t kSustain = 64;
inline constexpr std::uint8_t kSostenuto = 66;
inline constexpr std::uint8_t kAllSoundOff = 120;
inline constexpr std::uint8_t kResetControllers = 121;
inline constexpr std::uint8_t kAllNotesOff = 123;  // and those behind it, which change the mode

}  // namespace melvane
