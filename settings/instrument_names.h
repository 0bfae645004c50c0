// Short English names of the instruments, the same in both languages.
#pragma once

#include <string>

namespace melvane {

// Stands behind the 128 General MIDI programs: the drum channel.
inline constexpr int kPercussionInstrument = 128;

// Name of program 0..127 or kPercussionInstrument; empty for any other number.
std::string GetInstrumentName(int program);

}  // namespace melvane
