// What messages are and how they are put together.
#pragma once

#include <span>

#include "platform/midi_messages.h"

namespace melvane::music {

inline constexpr std::uint8_t kReleaseVelocity = 64;  // of a note off that no player chose

constexpr std::uint8_t onChannel(std::uint8_t status, int channel) {
    return static_cast<std::uint8_t>(status | channel);
}

// How many data bytes a channel message has, 1 or 2.
constexpr std::size_t dataBytes(std::uint8_t status) {
    const int kind = status & 0xF0;
    return kind == kProgramChange || kind == kChannelPressure ? 1 : 2;
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
